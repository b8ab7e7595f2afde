#pragma once

#include <complex>
#include <cstdint>
#include <vector>

#include "scattering/ZfFreeElectron.h"

/// The sources of one energy. Entry 0 is the emitter, at the origin; its k serves the whole list.
class ZfVectorFreeElectron {
public:
    void SetEnergy_eV(double energy);       ///< of the list and every entry
    void SetMeanFreePath_m(double length);  ///< throws ZfError if negative
    std::int32_t LargestL() const;          ///< largest size of A; 0 for no entries

    /// Fills the normalisation caches of the entries, which parallel loops over points or pixels must find
    /// complete.
    void PrepareNorms() const;

    /// The summed wave at a point of the list's frame. Value throws the bare text "Kinetic Energy is not
    /// defined" while no energy is set.
    void Value(std::complex<double>& result, double r, double theta, double phi) const;
    void ValueFromOrigin(std::complex<double>& result, double x, double y, double z) const;

    /// The sources as seen from entry `index`: positions relative to it, without it and without every entry
    /// that stands exactly there. Throws the bare text "index error".
    void ShiftOrigin(ZfVectorFreeElectron& result, std::int32_t index);

    // Far field in the direction (theta, phi), without the common factor exp(ikr)/(kr): the limit of h1_l is
    // (-i)^(l+1) exp(ikr)/(kr). Each source brings its path difference exp(-i k d), with d the component of
    // its position along the direction, and its thermal damping exp(-(1 - d/rho) k^2 U), where rho is its
    // distance from the emitter and U the sum of both mean square displacements: the Debye-Waller factor of
    // the relative motion for the momentum transfer 2 k sin(theta/2) (C. S. Fadley, in Synchrotron Radiation
    // Research, Plenum 1992, vol. 1, ch. 9).
    std::complex<double> DirectAmplitude(double theta, double phi) const;
    /// Entries 1 and up, each times exp(-2 rho / meanFreePath) if there is one. lOverride above 0 replaces
    /// the size of the harmonics, otherwise the largest of the list.
    std::complex<double> ScatteredAmplitude(double theta, double phi, std::int32_t lOverride) const;
    std::complex<double> TotalAmplitude(double theta, double phi, std::int32_t lOverride) const;

    double Ek_eV = -15000.0;    ///< negative: not set yet
    double meanFreePath = 0.0;  ///< m; 0: no damping
    std::vector<ZfFreeElectron> electrons;
};
