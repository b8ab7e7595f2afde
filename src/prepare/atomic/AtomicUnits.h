#pragma once

// Conversions of the atomic units in which atomic fields and orbitals are calculated (CODATA 2018).

constexpr double kHartree_eV = 27.211386245988;
constexpr double kBohr_angstrom = 0.529177210903;
