#include "scattering/ZfVectorFreeElectron.h"

#include <algorithm>
#include <cmath>

#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "scattering/SphericalHarmonics.h"

using namespace qvre;

namespace {

struct Direction {
    double x;
    double y;
    double z;
};

Direction UnitVector(double theta, double phi) {
    return {std::sin(theta) * std::cos(phi), std::sin(theta) * std::sin(phi), std::cos(theta)};
}

/// Sum over l of (-i)^(l+1) times the sum over m of A Y. `y` may be smaller or larger than the table of the
/// source.
std::complex<double> AngularSum(const ZfLmComplexTable& a, const ZfLmComplexTable& y) {
    std::complex<double> sum = 0.0;
    for (std::int32_t l = 0; l < std::min(a.L, y.L); ++l) {
        double re = 0.0;
        double im = 0.0;
        for (std::int32_t m = -l; m <= l; ++m) {
            const std::complex<double>& c = a.At(l, m);
            const std::complex<double>& h = y.At(l, m);
            re += c.real() * h.real() - c.imag() * h.imag();
            im += c.real() * h.imag() + c.imag() * h.real();
        }
        sum += IPower(l + 1) * std::complex<double>(re, im);
    }
    return sum;
}

/// Far field of one source of a list whose emitter is `emitter`.
std::complex<double> AmplitudeOf(const ZfFreeElectron& source, const ZfFreeElectron& emitter,
                                 const ZfLmComplexTable& y, const Direction& u) {
    const double* p = source.position.Data();
    const double k = emitter.k;
    const double d = u.x * p[0] + u.y * p[1] + u.z * p[2];
    std::complex<double> a =
        AngularSum(source.A, y) * std::complex<double>(std::cos(k * d), -std::sin(k * d));
    const double uiso = source.Uiso + emitter.Uiso;
    const double rho = std::sqrt(NormSquared(source.position));
    if (uiso > 0.0 && rho > 0.0) a *= std::exp(-(1.0 - d / rho) * k * k * uiso);
    return a;
}

}  // namespace

void ZfVectorFreeElectron::SetEnergy_eV(double energy) {
    Ek_eV = energy;
    for (ZfFreeElectron& electron : electrons) electron.SetEnergy_eV(energy);
}

void ZfVectorFreeElectron::SetMeanFreePath_m(double length) {
    if (length < 0) throw ZfError("ZfVectorFreeElectron::SetMeanFreePath_m():ERROR length_meter <0");
    meanFreePath = length;
}

std::int32_t ZfVectorFreeElectron::LargestL() const {
    std::int32_t largest = 0;
    for (const ZfFreeElectron& electron : electrons) largest = std::max(largest, electron.A.L);
    return largest;
}

void ZfVectorFreeElectron::PrepareNorms() const {
    if (electrons.empty()) return;
    for (const ZfFreeElectron& electron : electrons) electron.PrepareNorm();
    const std::int32_t largest = LargestL();
    ZfLmDoubleTable& norm = electrons.front().legendreNorm;
    if (largest > norm.L) LegendreNormTable(norm, largest);
}

void ZfVectorFreeElectron::Value(std::complex<double>& result, double r, double theta, double phi) const {
    if (Ek_eV < 0) throw "Kinetic Energy is not defined";
    result = 0.0;
    std::complex<double> value;
    for (const ZfFreeElectron& electron : electrons) {
        electron.ValueSpherical(value, r, theta, phi);
        result += value;
    }
}

void ZfVectorFreeElectron::ValueFromOrigin(std::complex<double>& result, double x, double y, double z) const {
    result = 0.0;
    std::complex<double> value;
    for (const ZfFreeElectron& electron : electrons) {
        electron.ValueFromOrigin(value, x, y, z);
        result += value;
    }
}

void ZfVectorFreeElectron::ShiftOrigin(ZfVectorFreeElectron& result, std::int32_t index) {
    SetEnergy_eV(Ek_eV);
    if (index < 0 || static_cast<std::size_t>(index) >= electrons.size()) throw "index error";
    result.Ek_eV = Ek_eV;
    result.meanFreePath = meanFreePath;
    result.electrons.clear();
    const double* target = electrons[static_cast<std::size_t>(index)].position.Data();
    for (const ZfFreeElectron& electron : electrons) {
        const double* p = electron.position.Data();
        if (p[0] == target[0] && p[1] == target[1] && p[2] == target[2]) continue;
        ZfFreeElectron& shifted = result.electrons.emplace_back(electron);
        shifted.position = Vector3(p[0] - target[0], p[1] - target[1], p[2] - target[2]);
    }
}

std::complex<double> ZfVectorFreeElectron::DirectAmplitude(double theta, double phi) const {
    if (electrons.empty()) return 0.0;
    thread_local ZfLmComplexTable y;
    const ZfFreeElectron& emitter = electrons.front();
    HarmonicTable(emitter.legendreNorm, y, emitter.A.L, theta, phi);
    return AmplitudeOf(emitter, emitter, y, UnitVector(theta, phi));
}

std::complex<double> ZfVectorFreeElectron::ScatteredAmplitude(double theta, double phi,
                                                              std::int32_t lOverride) const {
    if (electrons.size() < 2) return 0.0;
    thread_local ZfLmComplexTable y;
    const ZfFreeElectron& emitter = electrons.front();
    HarmonicTable(emitter.legendreNorm, y, lOverride > 0 ? lOverride : LargestL(), theta, phi);
    const Direction u = UnitVector(theta, phi);
    const double f = meanFreePath > 0.0 ? 2.0 / meanFreePath : 0.0;
    std::complex<double> sum = 0.0;
    for (std::size_t e = 1; e < electrons.size(); ++e) {
        std::complex<double> a = AmplitudeOf(electrons[e], emitter, y, u);
        if (f > 0.0) a *= std::exp(-std::sqrt(NormSquared(electrons[e].position)) * f);
        sum += a;
    }
    return sum;
}

std::complex<double> ZfVectorFreeElectron::TotalAmplitude(double theta, double phi,
                                                          std::int32_t lOverride) const {
    return DirectAmplitude(theta, phi) + ScatteredAmplitude(theta, phi, lOverride);
}
