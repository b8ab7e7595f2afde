#include "scattering/ZfFreeElectron.h"

#include <algorithm>
#include <cmath>

#include "foundation/Constants.h"
#include "scattering/SphericalHarmonics.h"
#include "scattering/ZfSphericalBessel.h"

using namespace qvre;

namespace {

constexpr double kTwoElectronMass_kg = 1.82187794e-30;  // CODATA 1986

constexpr double kNearestX = 0.001;

/// Written out: operator* of std::complex also tests every product for NaN.
std::complex<double> Product(std::complex<double> a, std::complex<double> b) {
    return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

std::complex<double> UnitPhase(double angle) {
    return {std::cos(angle), std::sin(angle)};
}

enum class Kind { kOutgoing, kIncoming };

/// Sum of C(l,m) Y(l,m) h_l over one table; coefficients that are exactly zero cost nothing.
std::complex<double> SumOf(const ZfLmComplexTable& c, const ZfLmComplexTable& y,
                           const ZfSphericalBessel& bessel, Kind kind) {
    std::complex<double> sum = 0.0;
    if (c.block.empty()) return sum;
    std::size_t i = 0;
    for (std::int32_t l = 0; l < c.L; ++l) {
        const std::complex<double> h(bessel.J(l), kind == Kind::kOutgoing ? bessel.Y(l) : -bessel.Y(l));
        for (std::int32_t m = -l; m <= l; ++m, ++i) {
            if (c.block[i].real() == 0.0 && c.block[i].imag() == 0.0) continue;
            sum += Product(Product(c.block[i], y.block[i]), h);
        }
    }
    return sum;
}

/// Both halves of an incoming wave at once, from the highest l down.
std::complex<double> SumOfBoth(const ZfLmComplexTable& a, const ZfLmComplexTable& b,
                               const ZfLmComplexTable& y, const ZfSphericalBessel& bessel) {
    std::complex<double> sum = 0.0;
    for (std::int32_t l = a.L - 1; l >= 0; --l) {
        const std::complex<double> h1(bessel.J(l), bessel.Y(l));
        const std::complex<double> h2 = std::conj(h1);
        for (std::int32_t m = -l; m <= l; ++m) {
            sum += Product(Product(a.At(l, m), h1) + Product(b.At(l, m), h2), y.At(l, m));
        }
    }
    return sum;
}

}  // namespace

void ZfFreeElectron::SetEnergy_eV(double energy) {
    Ek_eV = energy;
    k = std::sqrt(energy * kTwoElectronMass_kg * kElementaryCharge_C) / kHbar_Js;
}

void ZfFreeElectron::SetPlaneWave(const ZfLDoubleMatrix& direction, std::complex<double> amplitude) {
    IsPlaneWave = true;
    const double norm = std::sqrt(NormSquared(direction));
    for (std::int32_t i = 0; i < 3; ++i) planeWaveVector.VectorAt(i) = direction.VectorValueAt(i) / norm * k;
    A.SetSize(1);
    A.At(0, 0) = amplitude;
}

void ZfFreeElectron::PrepareNorm() const {
    const std::int32_t n = std::max(A.L, B.L);
    if (n > legendreNorm.L) LegendreNormTable(legendreNorm, n);
}

void ZfFreeElectron::EvaluateAtPoint(std::complex<double>& result, double r, double theta, double phi) const {
    if (Ek_eV < 0) throw "Kinetic energy is not deined";
    if (IsPlaneWave) {
        const double* q = planeWaveVector.Data();
        double w = r * std::sin(theta) * std::sin(phi) * q[1];
        w += r * std::sin(theta) * std::cos(phi) * q[0];
        w += r * std::cos(theta) * q[2];
        result = Product(A.At(0, 0), UnitPhase(w));
        return;
    }
    result = 0.0;
    if (!(r > 0.0)) return;
    const double x = r * k;
    const std::int32_t n = std::max(A.L, B.L);
    if (x < kNearestX || n == 0) return;

    // Scratch of each thread: points are evaluated in parallel loops, which do not allocate.
    thread_local ZfSphericalBessel bessel;
    thread_local ZfLmComplexTable y;
    bessel.Calculate(n, x);
    HarmonicTable(legendreNorm, y, n, theta, phi);
    if (A.L == B.L)
        result = SumOfBoth(A, B, y, bessel);
    else
        result = SumOf(B, y, bessel, Kind::kIncoming) + SumOf(A, y, bessel, Kind::kOutgoing);
}

void ZfFreeElectron::ValueCartesian(std::complex<double>& result, double x, double y, double z) const {
    if (Ek_eV < 0) throw "Kinetic energy is not deined";
    if (IsPlaneWave) {
        const double* q = planeWaveVector.Data();
        result = Product(A.At(0, 0), UnitPhase(x * q[0] + y * q[1] + z * q[2]));
        return;
    }
    const double r = std::sqrt(x * x + y * y + z * z);
    double theta = 0.0;
    double phi = 0.0;
    if (r != 0.0) {
        theta = std::acos(z / r);
        if (x != 0.0 || y != 0.0) phi = std::atan2(y, x);
    }
    EvaluateAtPoint(result, r, theta, phi);
}

void ZfFreeElectron::ValueSpherical(std::complex<double>& result, double r, double theta, double phi) const {
    if (Ek_eV < 0) throw "Kinetic energy is not deined";
    ValueFromOrigin(result, r * std::sin(theta) * std::cos(phi), r * std::sin(theta) * std::sin(phi),
                    r * std::cos(theta));
}

void ZfFreeElectron::ValueFromOrigin(std::complex<double>& result, double x, double y, double z) const {
    const double* p = position.Data();
    ValueCartesian(result, x - p[0], y - p[1], z - p[2]);
}
