#include "prepare/phases/PhaseShifts.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr double kCompleteEnough = 0.6;
/// Touching spheres of a crystal put atoms exactly on the cylinder about the way to another, as (1/2, 1/2, 0)
/// of fcc on that to (1, 1/2, 1/2). The radius that a record tells is so much larger that all of them are in,
/// whatever the last digits of a file.
constexpr double kBeyondTouching = 1e-4;
constexpr double kLargestZero_eV = 1000.0;
constexpr int kMostRadialPoints = 1000;  // their distance stays above the digits of LnX in a file

std::string Origin(const PhaseShiftRequest& request) {
    std::string text = "superposed DHFS atoms, ";
    if (!request.crystal.empty()) text += request.crystal + ", ";
    switch (request.exchange) {
        case ExchangeKind::kFurnessMcCarthy:
            text += "Furness-McCarthy exchange";
            break;
        case ExchangeKind::kSlater:
            text += "Slater exchange";
            break;
        case ExchangeKind::kNone:
            text += "no exchange";
            break;
    }
    if (request.equation == RadialEquation::kScalarRelativistic) text += ", scalar-relativistic";
    return text;
}

/// Species whose cell the cluster does not close. Where it closes that of others, it is large enough, and the
/// species stands at a surface.
void WarnOfGaps(const PhaseShiftRequest& request, std::vector<std::string>& warnings) {
    const auto isWhole = [](const AtomSurroundings& s) { return s.completeness >= kCompleteEnough; };
    const bool atSurface = std::any_of(request.species.begin(), request.species.end(), isWhole);
    for (const AtomSurroundings& species : request.species) {
        if (isWhole(species)) continue;
        warnings.push_back(fmt::format(
            "{}: no atom of this name has its neighbours all around it{}; its field {}", species.name,
            species.completeness > 0.0
                ? fmt::format(" (about {:.0f}% are there)", species.completeness * 100.0)
                : "",
            atSurface
                ? "is that of those that are there, which suits an atom at the surface. For one inside, "
                  "take a larger cluster, or the crystal."
                : "lacks those of the missing ones. Take a larger cluster, or the crystal; a single "
                  "layer of atoms has no others."));
    }
}

double OuterRadius(const PhaseShiftRequest& request, const AtomSurroundings& species) {
    const double radius = MuffinTinRadius(request, species);
    return request.radius_angstrom.contains(species.name) ? radius : radius * (1.0 + kBeyondTouching);
}

/// Points of ln(r/m) that a file of 7 digits keeps.
std::vector<double> TablePoints(int count, double outer_angstrom) {
    std::vector<double> points;
    points.reserve(static_cast<std::size_t>(count));
    const double begin = FirstLogRadius();
    const double end = std::log(outer_angstrom * 1e-10);
    for (int i = 0; i < count; ++i)
        points.push_back(std::round((begin + (end - begin) * i / (count - 1)) * 1e5) / 1e5);
    return points;
}

/// The calculation of one request, whose fields and sites are shared by all energies.
class Calculation {
public:
    Calculation(const PhaseShiftRequest& request, const ScreeningTable& table)
        : request_(request), sites_(MuffinTinSites(request, table)) {
        for (const AtomSurroundings& species : request.species)
            fields_.emplace_back(table, species.element, species.shells);
    }

    PhaseShiftResult Run() {
        WarnOfGaps(request_, result_.warnings);
        std::vector<double> zeros;
        for (const double energy : request_.energies_eV)
            zeros.push_back(CrystalZero(request_, sites_, energy));
        for (std::size_t s = 0; s < request_.species.size(); ++s)
            for (std::size_t e = 0; e < zeros.size(); ++e) Add(s, request_.energies_eV[e], zeros[e]);
        return std::move(result_);
    }

private:
    void Add(std::size_t s, double energy_eV, double zero) {
        const AtomSurroundings& species = request_.species[s];
        PhaseShiftRow row;
        row.list = {species.name,
                    species.element,
                    energy_eV,
                    {},
                    MuffinTinRadius(request_, species),
                    species.NearestDistance() * kBohr_angstrom,
                    Origin(request_),
                    OuterRadius(request_, species)};
        row.zero_eV = zero * kHartree_eV;
        const MuffinTinPotential potential{&fields_[s], request_.exchange, energy_eV / kHartree_eV, zero};
        ContinuumRequest equation{potential,         row.list.radius_angstrom / kBohr_angstrom,
                                  energy_eV,         request_.limits.lMax + 1,
                                  request_.equation, {}};
        if (request_.radialPoints > 0)
            equation.tablePoints = TablePoints(request_.radialPoints, row.list.outer_angstrom);
        ContinuumWave wave = SolveContinuum(equation);
        for (const double delta : wave.delta) row.list.degrees.push_back(Degrees(delta));
        row.size = LimitedSize(row.list, request_.limits, result_.warnings);
        PhaseShiftRecord record = MakePhaseShiftRecord(row.list, row.size);
        if (request_.radialPoints > 0) KeepTables(record.radial, equation.tablePoints, wave, row.size);
        result_.document.records.push_back(record);
        result_.rows.push_back(row);
    }

    static void KeepTables(RadialTables& radial, const std::vector<double>& points, ContinuumWave& wave,
                           std::int32_t size) {
        radial.LnX = points;
        wave.P.resize(static_cast<std::size_t>(size));
        wave.L.resize(static_cast<std::size_t>(size));
        radial.P = wave.P;
        radial.L = wave.L;
    }

    const PhaseShiftRequest& request_;
    std::vector<MuffinTinSite> sites_;
    std::vector<SuperposedField> fields_;
    PhaseShiftResult result_;
};

/// What depends on the species.
void Check(const PhaseShiftRequest& request) {
    CheckEnergies(request.energies_eV, request.species.size());
    for (const AtomSurroundings& species : request.species)
        if (!(MuffinTinRadius(request, species) < species.NearestDistance() * kBohr_angstrom))
            throw ZfError("The radius of \"" + species.name +
                          "\" reaches the nearest neighbour: take a smaller radius");
    for (const auto& given : request.radius_angstrom)
        if (std::none_of(request.species.begin(), request.species.end(),
                         [&](const AtomSurroundings& species) { return species.name == given.first; }))
            throw ZfError("There are no atoms of the name \"" + given.first + "\" whose radius is given");
}

}  // namespace

double MuffinTinRadius(const PhaseShiftRequest& request, const AtomSurroundings& species) {
    const auto given = request.radius_angstrom.find(species.name);
    if (given != request.radius_angstrom.end()) return given->second;
    return species.NearestDistance() / 2.0 * kBohr_angstrom;
}

std::vector<MuffinTinSite> MuffinTinSites(const PhaseShiftRequest& request, const ScreeningTable& table) {
    std::vector<MuffinTinSite> sites;
    for (const AtomSurroundings& species : request.species) {
        if (!(species.cellVolume > 0.0)) continue;
        sites.push_back({SuperposedField(table, species.element, species.shells),
                         MuffinTinRadius(request, species) / kBohr_angstrom,
                         std::cbrt(3.0 * species.cellVolume / (4.0 * kPi)), species.weight});
    }
    return sites;
}

void CheckSettings(const PhaseShiftRequest& request) {
    CheckLimits(request.limits);
    if (!request.energies_eV.empty()) CheckEnergies(request.energies_eV, 1);
    if (request.radialPoints != 0 && (request.radialPoints < 2 || request.radialPoints > kMostRadialPoints))
        throw ZfError("The tables of the radial wave need 2 to 1000 points");
    if (request.zero_eV && !(std::abs(*request.zero_eV) <= kLargestZero_eV))
        throw ZfError("The muffin-tin zero has to lie between -1000 and 1000 eV");
    for (const auto& [name, radius] : request.radius_angstrom)
        if (!(radius > 0.01) || !std::isfinite(radius))
            throw ZfError("The radius of \"" + name + "\" has to be above 0.01 angstrom");
}

double CrystalZero(const PhaseShiftRequest& request, const std::vector<MuffinTinSite>& sites,
                   double energy_eV) {
    if (request.zero_eV) return *request.zero_eV / kHartree_eV;
    if (sites.empty())
        throw ZfError(
            "The muffin-tin zero is open: no atom of the cluster has neighbours all around it. Take a larger "
            "cluster or, for a single layer of atoms, give the zero: in a recipe [phases] zero, on the "
            "command line the option of that name");
    return MuffinTinZero(sites, request.exchange, energy_eV / kHartree_eV);
}

PhaseShiftResult CalculatePhaseShifts(const PhaseShiftRequest& request, const ScreeningTable& table) {
    CheckSettings(request);
    Check(request);
    return Calculation(request, table).Run();
}

PhaseShiftResult PhaseShiftsOfTable(const PhaseShiftTable& table, const PhaseShiftList& atoms,
                                    const std::vector<double>& energies_eV, const PhaseShiftLimits& limits,
                                    bool linear) {
    CheckLimits(limits);
    CheckEnergies(energies_eV, 1);
    PhaseShiftResult result;
    for (const double energy : energies_eV) {
        PhaseShiftRow row{atoms, 0.0, 0};
        row.list.energy_eV = energy;
        row.list.degrees = PhasesAt(table, energy, linear);
        row.size = LimitedSize(row.list, limits, result.warnings);
        result.document.records.push_back(MakePhaseShiftRecord(row.list, row.size));
        result.rows.push_back(row);
    }
    return result;
}

std::string PhaseShiftListing(const std::vector<PhaseShiftRow>& rows) {
    std::string text =
        "# species, kinetic energy and muffin-tin zero (eV), muffin-tin radius (angstrom), number of l,\n"
        "# phase shifts of l = 0, 1, ... (degrees)\n";
    for (const PhaseShiftRow& row : rows) {
        text += fmt::format("{:<6} {:>7g} {:8.3f} {:7.4f} {:3d} ", row.list.name, row.list.energy_eV,
                            row.zero_eV, row.list.radius_angstrom, row.size);
        for (std::int32_t l = 0; l < row.size; ++l)
            text += fmt::format(" {:8.3f}", row.list.degrees[static_cast<std::size_t>(l)]);
        text += '\n';
    }
    return text;
}

}  // namespace qvre
