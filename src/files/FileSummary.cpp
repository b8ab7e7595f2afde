#include "files/FileSummary.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

#include "foundation/Constants.h"
#include "foundation/Text.h"
#include "prepare/checks/NearestNeighbours.h"
#include "scattering/ThermalModels.h"

namespace qvre {

namespace {

std::string Left(std::size_t count) {
    if (count <= kLongestList) return {};
    std::string text = "  ... and ";
    return text + std::to_string(count - kLongestList) + " more\n";
}

std::string NameCounts(const std::vector<ClusterAtom>& atoms) {
    std::map<std::string, std::size_t> counts;
    for (const ClusterAtom& atom : atoms)
        ++counts[atom.name == atom.atom ? atom.name : atom.name + " (" + atom.atom + ")"];
    std::string text;
    for (const auto& [name, count] : counts)
        text += (text.empty() ? "" : ", ") + name + " " + std::to_string(count);
    return text;
}

/// Length in angstrom to the digits that files keep, without the last bits of the factor.
std::string LengthText(double metres) {
    return DoubleToText(std::round(metres * 1e14) / 1e4 + 0.0);
}

std::string ExtentText(const std::vector<ClusterAtom>& atoms, std::int32_t axis) {
    const auto [low, high] =
        std::minmax_element(atoms.begin(), atoms.end(), [axis](const ClusterAtom& a, const ClusterAtom& b) {
            return a.position.Data()[axis] < b.position.Data()[axis];
        });
    return LengthText(low->position.Data()[axis]) + " to " + LengthText(high->position.Data()[axis]);
}

std::string DisplacementText(const std::vector<ClusterAtom>& atoms) {
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    std::size_t given = 0;
    for (const ClusterAtom& atom : atoms) {
        if (atom.U.Count() == 0) continue;
        ++given;
        low = std::min(low, *atom.U.Data() * 1e20);
        high = std::max(high, *atom.U.Data() * 1e20);
    }
    if (given == 0) return "none";
    return RangeText(low, high) + " angstrom^2 on " + Counted(given, "atom");
}

std::string StructureSummary(const std::vector<ClusterAtom>& atoms) {
    if (atoms.empty()) return "no atoms\n";
    const ClusterAtom& emitter = atoms[NearestToOrigin(atoms)];
    const std::vector<Neighbour> nearest = NearestNeighbours(atoms);
    double distance = std::numeric_limits<double>::infinity();
    for (const Neighbour& neighbour : nearest) distance = std::min(distance, neighbour.distance_angstrom);
    const double* p = emitter.position.Data();
    std::string text = Counted(atoms.size(), "atom");
    text += ": " + NameCounts(atoms) + "\n    emitter " + emitter.name + " at (" + LengthText(p[0]) + ", " +
            LengthText(p[1]) + ", " + LengthText(p[2]) + ") angstrom\n    x " + ExtentText(atoms, 0) +
            ", y " + ExtentText(atoms, 1) + ", z " + ExtentText(atoms, 2) + " angstrom\n";
    if (atoms.size() > 1) text += "    nearest neighbours " + DoubleToText(distance) + " angstrom apart\n";
    return text + "    Uiso " + DisplacementText(atoms) + "\n";
}

std::string Summary(const Cluster& cluster) {
    std::string text = "cluster\n  ";
    text += Counted(cluster.structures.size(), "structure") + "\n";
    const std::size_t shown = std::min(cluster.structures.size(), kLongestList);
    for (std::size_t s = 0; s < shown; ++s)
        text += "  " + std::to_string(s) + ": " + StructureSummary(cluster.structures[s].atoms);
    return text + Left(cluster.structures.size());
}

/// |A|^2 of each l that has some.
std::string StrengthText(const ZfLmComplexTable& coefficients) {
    std::string text;
    for (std::int32_t l = 0; l < coefficients.L; ++l) {
        double sum = 0.0;
        for (std::int32_t m = -l; m <= l; ++m) sum += std::norm(coefficients.At(l, m));
        if (sum > 0.0)
            text += (text.empty() ? "l = " : ", l = ") + std::to_string(l) + ": " + DoubleToText(sum);
    }
    return text.empty() ? "nothing" : text;
}

std::string WaveText(const EmittedWave& wave) {
    std::string text = DoubleToText(wave.Ek);
    text += " eV, ";
    if (wave.IsPlaneWave)
        return text + "plane wave at polar angle " + DoubleToText(wave.PlaneWaveBeta_deg) + ", azimuth " +
               DoubleToText(wave.PlaneWaveGamma_deg) + " degrees";
    return text + "l size " + std::to_string(wave.coeff.L) + ", |A|^2 of " + StrengthText(wave.coeff);
}

std::string Summary(const std::vector<EmittedWave>& waves) {
    std::string text = "emitted waves\n  ";
    text += Counted(waves.size(), "wave") + "\n";
    double sum = 0.0;
    for (const EmittedWave& wave : waves)
        for (const auto& c : wave.coeff.block) sum += std::norm(c);
    for (std::size_t i = 0; i < std::min(waves.size(), kLongestList); ++i)
        text += "  " + std::to_string(i) + ": " + WaveText(waves[i]) + "\n";
    return text + Left(waves.size()) + "  sum of |A|^2 " + DoubleToText(sum) + ", " +
           DoubleToText(sum / (4.0 * kPi)) + " times 4 pi\n";
}

std::string RecordText(const PhaseShiftRecord& record) {
    const std::int32_t size = record.PhaseShiftValue.VectorSize();
    std::string text = record.AtomName;
    if (record.AtomElement != record.AtomName) text += " (" + record.AtomElement + ")";
    text += ", " + DoubleToText(record.Ek_eV) + " eV, l size " + std::to_string(size);
    if (size > 0)
        text += ", " + DoubleToText(record.PhaseShiftValue.VectorValueAt(0)) + " to " +
                DoubleToText(record.PhaseShiftValue.VectorValueAt(size - 1)) + " degrees";
    if (!record.radial.LnX.empty())
        text += ", radius " + DoubleToText(std::exp(record.radial.LnX.back()) * 1e10) + " angstrom";
    if (!record.FileName.empty()) text += "; " + record.FileName;
    return text;
}

std::string Summary(const ZfPhaseShiftDocument& document) {
    std::string text = "phase shifts\n  ";
    text += Counted(document.records.size(), "record") + "\n";
    for (std::size_t i = 0; i < std::min(document.records.size(), kLongestList); ++i)
        text += "  " + std::to_string(i) + ": " + RecordText(document.records[i]) + "\n";
    return text + Left(document.records.size());
}

std::string Summary(const Fluctuation& f) {
    std::string text = "fluctuation\n  temperature ";
    text += DoubleToText(f.Temperature_K_) + " K\n  Uiso from ";
    switch (ThermalModelOf(f)) {
        case ThermalModel::kCluster:
            text += "the cluster\n";
            break;
        case ThermalModel::kEinstein:
            text += "the Einstein model\n";
            break;
        case ThermalModel::kDebye:
            text += "the Debye model\n";
            break;
        case ThermalModel::kNone:
            text += "the cluster, as no model is chosen\n";
            break;
    }
    const std::size_t pairs = std::min(f.DebyeElement_.size(), f.DebyeTemperature_K_.size());
    for (std::size_t i = 0; i < pairs; ++i)
        text += "  Debye temperature of " + f.DebyeElement_[i] + " " +
                DoubleToText(f.DebyeTemperature_K_[i]) + " K\n";
    return text;
}

}  // namespace

std::string Counted(std::size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string RangeText(double smallest, double largest) {
    const std::string low = DoubleToText(smallest);
    const std::string high = DoubleToText(largest);
    return low == high ? low : low + " to " + high;
}

std::string FileSummary(const AnyFile& file) {
    struct Visitor {
        std::int32_t imageVersion;
        std::string operator()(const Cluster& cluster) const { return Summary(cluster); }
        std::string operator()(const std::vector<EmittedWave>& waves) const { return Summary(waves); }
        std::string operator()(const ZfPhaseShiftDocument& document) const { return Summary(document); }
        std::string operator()(const Fluctuation& fluctuation) const { return Summary(fluctuation); }
        std::string operator()(const std::unique_ptr<ZfScatteringData>& data) const {
            return ScatteredWaveSummary(*data);
        }
        std::string operator()(const std::unique_ptr<ZfDocData>& document) const {
            return ImageSummary(*document, imageVersion);
        }
    };
    return file.path + ": " + std::visit(Visitor{file.imageVersion}, file.content);
}

}  // namespace qvre
