#pragma once

#include <array>
#include <string>

#include "crystal/ZfCrystal.h"
#include "prepare/cluster/CrystalCell.h"
#include "prepare/cluster/CrystalSources.h"

namespace qvre {

/// The atoms of a crystal's basis, repeated along its axes.
CrystalCell CellOfCrystal(const ZfCrystal& crystal);

/// Value of an expression in which no names but these stand. Throws ZfError that quotes it.
double EvaluateExpression(const std::string& text, const NamedConstants& constants = {});

/// Unit vectors along a, b, c for the cell angles in degrees; see AxesOf.
std::array<ZfLDoubleMatrix, 3> AxisDirections(double alpha_deg, double beta_deg, double gamma_deg);

}  // namespace qvre
