#pragma once

#include <vector>

#include "multiple/FullScattering.h"

namespace plain {

/// Full multiple scattering as a matrix over all pairs of atoms, element by element, and Gaussian
/// elimination: the waves of one emission, without the cuts that the fast solution makes.
std::vector<ZfLmComplexTable> SolveFullScattering(const qvre::FullScatteringRequest& request,
                                                  const qvre::EmissionFromAtom& emission);

}  // namespace plain
