#include "prepare/phases/PhaseShifts.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"

namespace {

constexpr double kCompleteEnough = 0.6;
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

void WarnOfGaps(const PhaseShiftRequest& request, std::vector<std::string>& warnings) {
    for (const AtomSurroundings& species : request.species) {
        if (species.completeness >= kCompleteEnough) continue;
        std::string text = species.name + ": no atom of this name has its neighbours all around it";
        if (species.completeness > 0.0) {
            char part[64];
            std::snprintf(part, sizeof part, " (about %.0f%% are there)", species.completeness * 100.0);
            text += part;
        }
        warnings.push_back(text +
                           "; its field lacks those of the missing ones. Take a larger cluster, or the "
                           "crystal.");
    }
}

/// Points of ln(r/m) that a file of 7 digits keeps.
std::vector<double> TablePoints(int count, double radius_angstrom) {
    std::vector<double> points;
    points.reserve(static_cast<std::size_t>(count));
    const double begin = FirstLogRadius();
    const double end = std::log(radius_angstrom * 1e-10);
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
        for (const double energy : request_.energies_eV) zeros.push_back(Zero(energy));
        for (std::size_t s = 0; s < request_.species.size(); ++s)
            for (std::size_t e = 0; e < zeros.size(); ++e) Add(s, request_.energies_eV[e], zeros[e]);
        return std::move(result_);
    }

private:
    double Zero(double energy_eV) const {
        if (request_.zero_eV) return *request_.zero_eV / kHartree_eV;
        if (sites_.empty())
            throw ZfError(
                "The cluster is too small for a muffin-tin zero: no atom has neighbours all around "
                "it. Take a larger cluster, or give the zero (--zero).");
        return MuffinTinZero(sites_, request_.exchange, energy_eV / kHartree_eV);
    }

    void Add(std::size_t s, double energy_eV, double zero) {
        const AtomSurroundings& species = request_.species[s];
        PhaseShiftRow row;
        row.list = {species.name,
                    species.element,
                    energy_eV,
                    {},
                    MuffinTinRadius(request_, species),
                    species.NearestDistance() * kBohr_angstrom,
                    Origin(request_)};
        row.zero_eV = zero * kHartree_eV;
        const MuffinTinPotential potential{&fields_[s], request_.exchange, energy_eV / kHartree_eV, zero};
        ContinuumRequest equation{potential,
                                  row.list.radius_angstrom / kBohr_angstrom,
                                  energy_eV,
                                  request_.limits.lMax + 1,
                                  request_.equation,
                                  {},
                                  1.0};
        if (request_.radialPoints > 0)
            equation.tablePoints = TablePoints(request_.radialPoints, row.list.radius_angstrom);
        ContinuumWave wave = SolveContinuum(equation);
        for (const double delta : wave.delta) row.list.degrees.push_back(Degrees(delta));
        row.size = LimitedSize(row.list, request_.limits, result_.warnings);
        ZfPhaseShiftRecord record = MakePhaseShiftRecord(row.list, row.size);
        if (request_.radialPoints > 0) KeepTables(record.radial, equation.tablePoints, wave, row.size);
        result_.document.records.push_back(record);
        result_.rows.push_back(row);
    }

    static void KeepTables(ZfRadialTables& radial, const std::vector<double>& points, ContinuumWave& wave,
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

void CheckRadius(const PhaseShiftRequest& request, const std::string& name, double radius) {
    const bool known = std::any_of(request.species.begin(), request.species.end(),
                                   [&](const AtomSurroundings& species) { return species.name == name; });
    if (!known) throw ZfError("There are no atoms of the name \"" + name + "\" whose radius is given");
    if (!(radius > 0.01)) throw ZfError("The radius of \"" + name + "\" has to be above 0.01 angstrom");
}

void Check(const PhaseShiftRequest& request) {
    CheckEnergies(request.energies_eV, request.species.size());
    if (request.limits.lMax < 0 || request.limits.lMax > 60)
        throw ZfError("The largest l has to lie between 0 and 60");
    if (request.radialPoints != 0 && (request.radialPoints < 2 || request.radialPoints > kMostRadialPoints))
        throw ZfError("The tables of the radial wave need 2 to 1000 points");
    for (const AtomSurroundings& species : request.species)
        if (!(MuffinTinRadius(request, species) < species.NearestDistance() * kBohr_angstrom))
            throw ZfError("The radius of \"" + species.name +
                          "\" reaches the nearest neighbour: take a smaller radius");
    for (const auto& given : request.radius_angstrom) CheckRadius(request, given.first, given.second);
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

PhaseShiftResult CalculatePhaseShifts(const PhaseShiftRequest& request, const ScreeningTable& table) {
    Check(request);
    return Calculation(request, table).Run();
}

PhaseShiftResult PhaseShiftsOfTable(const PhaseShiftTable& table, const PhaseShiftList& atoms,
                                    const std::vector<double>& energies_eV, const PhaseShiftLimits& limits,
                                    bool linear) {
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
    char number[128];
    for (const PhaseShiftRow& row : rows) {
        std::snprintf(number, sizeof number, "%-6s %7g %8.3f %7.4f %3d ", row.list.name.c_str(),
                      row.list.energy_eV, row.zero_eV, row.list.radius_angstrom, row.size);
        text += number;
        for (std::int32_t l = 0; l < row.size; ++l) {
            std::snprintf(number, sizeof number, " %8.3f", row.list.degrees[static_cast<std::size_t>(l)]);
            text += number;
        }
        text += '\n';
    }
    return text;
}
