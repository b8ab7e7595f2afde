#pragma once

#include <string>
#include <vector>

#include "structure/FitReport.h"

namespace qvre {

/// A part of a measured pattern and what it has of the squared differences.
struct MisfitPart {
    std::string place;  ///< "phi = 45", "theta = 12.5", "theta 10 to 15", degrees
    std::size_t points = 0;
    double r = 0.0;      ///< of these points alone, with the amplitude of all
    double share = 0.0;  ///< of the squared differences of all
};

/// Calculated chi with its amplitude.
std::vector<double> FittedChi(const FittedData& data);

/// Where R of a data set comes from: by scan or, on a map, by ring of equal polar angle; by belts of five
/// degrees where there are many rings. The part with the largest share first.
std::vector<MisfitPart> MisfitPartsOf(const FittedData& data);

}  // namespace qvre
