#pragma once

#include <functional>
#include <vector>

#include "fit/EvaluationTable.h"
#include "fit/FitProblem.h"
#include "fit/LocalFit.h"

namespace qvre {

/// Points from which different minima may be reached, the best first: evaluations that are better than all of
/// their 2n + 1 nearest neighbours in the unit cube of n parameters (A. Torn, S. Viitanen, J. Global Optim.
/// 5, 267 (1994)).
std::vector<FitPoint> ValleyPoints(const ParameterSpace& space, const std::vector<EvaluationRecord>& records,
                                   std::size_t most);

/// Goes down from a point.
using LocalFitter = std::function<LocalFit(const FitPoint& start)>;

/// The different minima that local fits reach from the starts, the best first. Two ends are one minimum if
/// they are closer than a hundredth of the room in every parameter, or if the misfit at three points between
/// them is nowhere above both; where an evaluation between fails, they are two. Fits that fail are passed
/// over.
std::vector<Trial> DistinctMinima(FitProblem& problem, const std::vector<FitPoint>& starts,
                                  const LocalFitter& goDown);

/// Those minima other than the first whose R lies within the level of the first.
std::vector<Trial> RivalsOf(const std::vector<Trial>& minima, double independentData);

}  // namespace qvre
