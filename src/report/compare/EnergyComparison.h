#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "report/compare/EnergyCurves.h"
#include "report/compare/MeasuredPattern.h"
#include "report/compare/ReliabilityFactor.h"

namespace qvre {

/// Measured values over the kinetic energy in one direction.
struct MeasuredEnergyCurve {
    double theta_deg = 0.0;
    double phi_deg = 0.0;
    std::vector<double> kinetic_eV;  ///< rising; values of equal energies are averaged
    std::vector<double> value;       ///< an intensity or, in a table of chi alone, 1 + chi
};

/// The curves of a table, sorted by the directions in which `calculated` lies; a table without angles has the
/// single direction that is calculated. Throws ZfError with the file's name for a table without energies, and
/// for directions that are not calculated.
std::vector<MeasuredEnergyCurve> LoadMeasuredEnergies(const std::string& path,
                                                      const std::vector<ScanDirection>& calculated);

struct EnergyComparisonSettings {
    EnergyBackgroundModel background;  ///< that both lose, at the measured energies
    double offset_eV = 0.0;            ///< added to the measured energies
    bool findsOffset = false;          ///< the best one from -10 to 10 eV
};

/// Entry i of the lists belongs to point i.
struct ComparedEnergyCurve {
    double theta_deg = 0.0;
    double phi_deg = 0.0;
    std::vector<double> kinetic_eV;  ///< measured, the offset added
    std::vector<double> measured;    ///< chi
    std::vector<double> calculated;  ///< chi, not scaled
};

struct EnergyComparison {
    Agreement agreement;  ///< over the points of all directions
    double offset_eV = 0.0;
    bool isOffsetAtEnd = false;  ///< of those that were tried
    std::size_t leftOut = 0;     ///< measured points beyond the energies of the calculation
    std::vector<ComparedEnergyCurve> curves;
};

/// Throws ZfError when too few of the measured points, with the offset, lie between two energies.
void CheckEnergyRange(const std::vector<MeasuredEnergyCurve>& measured, double lowest_eV, double highest_eV,
                      const EnergyComparisonSettings& settings);

/// Compares chi(E) of both at the measured energies. The calculated intensity between its energies is that of
/// a cubic spline; then both lose the same kind of background, found at the same energies. An offset that is
/// looked for has the least R scaled, and at least 4/5 of the points that lie in the range without it. Throws
/// ZfError.
EnergyComparison CompareEnergies(const std::vector<EnergyCurve>& calculated,
                                 const std::vector<MeasuredEnergyCurve>& measured,
                                 const EnergyComparisonSettings& settings);

}  // namespace qvre
