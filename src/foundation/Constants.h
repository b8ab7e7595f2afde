#pragma once

// Mathematical and physical constants. The physical ones come from several adjustments of CODATA. Those of
// 1986 and 1998 are not to be updated: every wave number, and with it every result, hangs on them.

namespace qvre {

constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 6.283185307179586;
constexpr double kDegree = kPi / 180;  // rad
constexpr double kDegreesPerRadian = 180.0 / kPi;
constexpr double kAngstrom_m = 1e-10;  // one angstrom in metres

constexpr double kBoltzmann_J_K = 1.380658e-23;         // CODATA 1986
constexpr double kElementaryCharge_C = 1.60217733e-19;  // CODATA 1986
constexpr double kHbar_Js = 1.054572669125102e-34;      // CODATA 1986, h / 2 pi
constexpr double kAtomicMass_kg = 1.66053873e-27;       // CODATA 1998

constexpr double kHartree_eV = 27.211386245988;    // CODATA 2018
constexpr double kBohr_angstrom = 0.529177210903;  // CODATA 2018

/// The product comes first and is then divided; times kDegree can differ in the last bit.
constexpr double Radians(double degrees) {
    return degrees * kPi / 180;
}

constexpr double Degrees(double radians) {
    return radians * 180 / kPi;
}

}  // namespace qvre
