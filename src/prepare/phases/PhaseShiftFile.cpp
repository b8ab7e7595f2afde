#include "prepare/phases/PhaseShiftFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "foundation/ReplacedFile.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "prepare/atomic/ContinuumWave.h"
#include "scattering/SamplingSphere.h"
#include "xml/ZfBarnXml.h"

namespace qvre {

namespace {

constexpr double kGridBegin_m = 1e-15;
constexpr int kGridIntervals = 60;
constexpr double kPrecision = 1e-6;  // of the integration, relative

/// Sizes 1 to lMax + 1 of what is not small. A whole half turn scatters like none.
std::int32_t CutSize(const PhaseShiftList& list, const PhaseShiftLimits& limits) {
    std::int32_t size = 1;
    const auto most = std::min(static_cast<std::int32_t>(list.degrees.size()), limits.lMax + 1);
    for (std::int32_t l = 1; l < most; ++l)
        if (std::abs(std::remainder(list.degrees[static_cast<std::size_t>(l)], 180.0)) >= limits.cut_deg)
            size = l + 1;
    return size;
}

std::string SamplingWarning(const PhaseShiftList& list, std::int32_t wanted, std::int32_t taken) {
    return fmt::format(
        "{} at {:g} eV: l size cut from {} to {} (l up to {}): the last sampling sphere of the expansion "
        "would "
        "have a radius of {:.3f} angstrom, too near to the neighbour at {:.3f} angstrom",
        list.name, list.energy_eV, wanted, taken, taken - 1,
        LastSamplingRadius(wanted, list.energy_eV) * 1e10, list.neighbour_angstrom);
}

std::string EnergyText(double energy) {
    return fmt::format("{:.10g}", energy);
}

}  // namespace

std::int32_t LimitedSize(const PhaseShiftList& list, const PhaseShiftLimits& limits,
                         std::vector<std::string>& warnings) {
    const std::int32_t wanted = CutSize(list, limits);
    const double widest = limits.samplingPart * list.neighbour_angstrom * 1e-10;
    std::int32_t size = wanted;
    while (size > 1 && LastSamplingRadius(size, list.energy_eV) > widest) --size;
    if (size < wanted) warnings.push_back(SamplingWarning(list, wanted, size));
    return size;
}

PhaseShiftRecord MakePhaseShiftRecord(const PhaseShiftList& list, std::int32_t size) {
    PhaseShiftRecord record;
    record.Ek_eV = list.energy_eV;
    record.AtomName = list.name;
    record.AtomElement = list.element;
    record.FileName = list.source;
    record.PhaseShiftValue.SetVectorSize(size);
    for (std::int32_t l = 0; l < size; ++l)
        record.PhaseShiftValue.VectorAt(l) = list.degrees[static_cast<std::size_t>(l)];
    record.CalculateScatteringFactors();
    record.radial.EPS_DIFF_EQ_ = kPrecision;
    const double begin = std::log(kGridBegin_m);
    const double outer = list.outer_angstrom > 0.0 ? list.outer_angstrom : list.radius_angstrom;
    const double end = std::log(outer * 1e-10);
    for (int i = 0; i <= kGridIntervals; ++i)
        record.radial.LnX.push_back(begin + (end - begin) * i / kGridIntervals);
    return record;
}

void CheckLimits(const PhaseShiftLimits& limits) {
    if (limits.lMax < 0 || limits.lMax >= kMostPartialWaves)
        throw ZfError("The largest l has to lie between 0 and " + std::to_string(kMostPartialWaves - 1));
    if (!(limits.cut_deg >= 0.0 && limits.cut_deg <= 180.0))
        throw ZfError("The cut of phase shifts has to lie between 0 and 180 degrees");
}

void CheckDigits(const std::vector<double>& energies_eV) {
    for (const double energy : energies_eV) {
        const std::string stored = DoubleToText(energy);
        if (TextToDouble(stored) != energy)
            throw ZfError("The energy " + EnergyText(energy) +
                          " eV has more than the 6 digits of a file, and would not be found: take " + stored);
    }
}

void CheckEnergies(const std::vector<double>& energies_eV, std::size_t species) {
    if (energies_eV.empty()) throw ZfError("No energy is given");
    for (std::size_t i = 0; i < energies_eV.size(); ++i) {
        const double energy = energies_eV[i];
        if (!(energy > 0.0) || !std::isfinite(energy))
            throw ZfError("The energy " + EnergyText(energy) + " eV is not above 0");
        if (energy > kHighestEnergy_eV)
            throw ZfError("The energy " + EnergyText(energy) + " eV is above " +
                          EnergyText(kHighestEnergy_eV) + " eV");
        for (std::size_t j = 0; j < i; ++j)
            if (energies_eV[j] == energy)
                throw ZfError("The energy " + DoubleToText(energy) + " eV is given twice");
    }
    const std::size_t records = energies_eV.size() * species;
    if (records > kMostPhaseShiftRecords)
        throw ZfError(std::to_string(records) + " records are more than the " +
                      std::to_string(kMostPhaseShiftRecords) +
                      " of a document: ask for fewer energies, or give atoms with like "
                      "surroundings one name");
}

void SavePhaseShifts(ZfPhaseShiftDocument& document, const std::string& path) {
    ZfBarnXml xml("w");
    document.Exchange(xml);
    WriteWholeFile(path, xml.Document());
}

}  // namespace qvre
