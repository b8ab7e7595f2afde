#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "prepare/atomic/ContinuumWave.h"
#include "prepare/atomic/MuffinTin.h"
#include "prepare/phases/PhaseShiftFile.h"
#include "prepare/phases/PhaseShiftTable.h"
#include "prepare/phases/Surroundings.h"

namespace qvre {

/// Which phase shifts are wanted, and by which physics.
struct PhaseShiftRequest {
    std::vector<AtomSurroundings> species;
    std::vector<double> energies_eV;  ///< above the muffin-tin zero
    ExchangeKind exchange = ExchangeKind::kFurnessMcCarthy;
    RadialEquation equation = RadialEquation::kSchroedinger;
    PhaseShiftLimits limits;
    std::map<std::string, double> radius_angstrom;  ///< by name; otherwise half the nearest distance
    std::optional<double> zero_eV;                  ///< otherwise the average between the spheres
    int radialPoints = 0;  ///< points of the tables P and L of the wave inside the atom; 0: none
    std::string crystal;   ///< for the origin that a record tells
};

/// What one species gave at one energy.
struct PhaseShiftRow {
    PhaseShiftList list;  ///< all l up to the largest asked for
    double zero_eV = 0.0;
    std::int32_t size = 0;  ///< l that went into the record
};

struct PhaseShiftResult {
    ZfPhaseShiftDocument document;  ///< species by species, each at all energies
    std::vector<PhaseShiftRow> rows;
    std::vector<std::string> warnings;
};

/// Half the nearest distance, so that the spheres of like atoms touch, or the radius asked for; angstrom.
double MuffinTinRadius(const PhaseShiftRequest& request, const AtomSurroundings& species);

/// The sites of species whose cell is known, as far as muffin-tin zeros need them.
std::vector<MuffinTinSite> MuffinTinSites(const PhaseShiftRequest& request, const ScreeningTable& table);

/// The muffin-tin zero at a kinetic energy (eV), hartree: the one asked for, or the average between the
/// spheres of `sites`, those of the request. Throws ZfError when there is neither.
double CrystalZero(const PhaseShiftRequest& request, const std::vector<MuffinTinSite>& sites,
                   double energy_eV);

/// Throws ZfError for what is out of range whatever the species are: limits, radii, zero, radial points, and
/// energies where some are given.
void CheckSettings(const PhaseShiftRequest& request);

/// Throws ZfError as CheckSettings, for records that no document takes, elements without a field, and
/// surroundings that leave the muffin-tin zero open.
PhaseShiftResult CalculatePhaseShifts(const PhaseShiftRequest& request, const ScreeningTable& table);

/// The phase shifts of a published table at energies within it, for the atoms that `atoms` names, with radius
/// and nearest distance. Throws ZfError as above.
PhaseShiftResult PhaseShiftsOfTable(const PhaseShiftTable& table, const PhaseShiftList& atoms,
                                    const std::vector<double>& energies_eV, const PhaseShiftLimits& limits,
                                    bool linear);

/// A line for each species and energy: name, Ek, muffin-tin radius and zero, phase shifts in degrees.
std::string PhaseShiftListing(const std::vector<PhaseShiftRow>& rows);

}  // namespace qvre
