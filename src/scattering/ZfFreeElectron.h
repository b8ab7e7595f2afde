#pragma once

#include <complex>
#include <cstdint>

#include "foundation/Matrices.h"
#include "input/LmTable.h"

/// One source of an electron wave: around its position R, with rho = r - R,
///     psi(r) = sum_lm A(l,m) h1_l(k rho) Y_lm(rho) + sum_lm B(l,m) h2_l(k rho) Y_lm(rho),
/// or a plane wave A(0,0) exp(i q.rho). Lengths are metres, energies eV, angles radians.
///
/// Evaluation throws the bare text "Kinetic energy is not deined" for a negative energy.
class ZfFreeElectron {
public:
    /// Wave number k = sqrt(2 m E) / hbar. A negative energy gives not-a-number.
    void SetEnergy_eV(double energy);

    /// Direction of any length but zero, and complex amplitude. Needs the energy.
    void SetPlaneWave(const ZfLDoubleMatrix& direction, std::complex<double> amplitude);

    /// The wave at a point relative to this source. A source does not act at its own centre (k r < 0.001).
    void EvaluateAtPoint(std::complex<double>& result, double r, double theta, double phi) const;
    void ValueCartesian(std::complex<double>& result, double x, double y, double z) const;

    /// The wave at a point of the frame in which `position` stands.
    void ValueSpherical(std::complex<double>& result, double r, double theta, double phi) const;
    void ValueFromOrigin(std::complex<double>& result, double x, double y, double z) const;

    /// Fills the normalisation cache, which a parallel loop over points must find at its full size.
    void PrepareNorm() const;

    double Ek_eV = 0.0;
    double k = 0.0;                        ///< 1/m
    mutable ZfLmDoubleTable legendreNorm;  ///< cache of the evaluation
    bool IsPlaneWave = false;
    ZfLDoubleMatrix planeWaveVector = qvre::Vector3(0.0, 0.0, 0.0);  ///< 1/m
    double Uiso = 0.0;                                               ///< mean square displacement, m^2
    std::int32_t atomicNumber = 0;
    ZfLmComplexTable A;  ///< coefficients of h1_l
    ZfLmComplexTable B;  ///< of h2_l; empty except while an incoming wave is being scattered
    ZfLDoubleMatrix position = qvre::Vector3(0.0, 0.0, 0.0);  ///< m
};
