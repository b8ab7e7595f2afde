#include "pattern/ZfDocPattern.h"

#include <algorithm>
#include <cmath>
#include <complex>

#include "foundation/Console.h"
#include "foundation/ZfError.h"
#include "scattering/SphericalHarmonics.h"
#include "scattering/ThermalModels.h"

namespace {

constexpr double kAtEmitterSquared_m2 = 1e-22;
constexpr std::size_t kWordBits = 32;

double Radians(double degrees) {
    return degrees * kPi / 180;
}

/// Leaves the emitter, which stands at the origin, in the list whatever the two limits of the distance are.
bool IsLeftOut(const ZfFreeElectron& source, const ZfDocPattern& limits) {
    const double q = NormSquared(source.position);
    const double upper = limits.clusterLimit * limits.clusterLimit;
    const double lower = limits.clusterLowerLimit * limits.clusterLowerLimit;
    if (upper > 0 && q >= upper) return true;
    if (limits.clusterDepthLimit > 0 && source.position.VectorValueAt(2) > limits.clusterDepthLimit)
        return true;
    return q > kAtEmitterSquared_m2 && lower >= q;
}

void TurnPhase(ZfLmComplexTable& table, double degrees) {
    const std::complex<double> phase(std::cos(Radians(degrees)), std::sin(Radians(degrees)));
    for (std::complex<double>& a : table.block) a *= phase;
}

}  // namespace

void ZfDocPattern::ActivateAll(std::size_t records) {
    activeRecords.assign((records + kWordBits - 1) / kWordBits, ~std::uint32_t{0});
    activeRecordCount = static_cast<std::int64_t>(records);
}

bool ZfDocPattern::IsActive(std::int64_t record) const {
    const auto bit = static_cast<std::size_t>(record);
    return (activeRecords[bit / kWordBits] >> (bit % kWordBits) & 1U) != 0;
}

void ZfDocPattern::PrepareCalculation(ZfScatteringData& data, const ZfFluctuation& fluctuation,
                                      const ZfDebye& debye) {
    if ((data.Version == kSlowMulti || data.Version == kMulti) && patternType == 1)
        throw ZfError("The conbination of Version and Type is not permitted");
    orientation = EulerRotation(-Radians(orientationAngles[0]), Radians(orientationAngles[1]),
                                -Radians(orientationAngles[2]));
    BuildMapping();
    for (ZfScatteringRecord& record : data.ListScatteringData) {
        ApplyThermalModel(fluctuation, record.NextListScatterer, debye);
        ApplyThermalModel(fluctuation, record.ListScatterer, debye);
    }
}

void ZfDocPattern::SetUpRecord(const ZfScatteringData& data, std::int64_t record) {
    if (record >= static_cast<std::int64_t>(data.ListScatteringData.size())) throw ZfError("ERROR INDEX");
    const ZfVectorFreeElectron& list =
        data.ListScatteringData[static_cast<std::size_t>(record)].ListScatterer;
    scatteredWave = list;
    std::erase_if(scatteredWave.electrons,
                  [this](const ZfFreeElectron& source) { return IsLeftOut(source, *this); });
    scatteredWave.SetMeanFreePath_m(mfpByEmitterDistance ? meanFreePath : 0.0);
    if (emitterPhase != 0.0 && !scatteredWave.electrons.empty())
        TurnPhase(scatteredWave.electrons[0].A, emitterPhase);
    lOverride = 0;
    directWave = list;
    directWave.electrons.resize(std::min<std::size_t>(directWave.electrons.size(), 1));
}

void ZfDocPattern::PixelDirections(ZfLDoubleMatrix& pixelTheta, ZfLDoubleMatrix& pixelPhi) const {
    const double* r = orientation.Data();
    for (std::int64_t i = 0; i < pixelTheta.Count(); ++i) {
        if (mapping.pixelWeight.Data()[i] == 0.0) {
            pixelTheta.Data()[i] = 0.0;
            pixelPhi.Data()[i] = 0.0;
            continue;
        }
        const double dx = mapping.directionX.Data()[i];
        const double dy = mapping.directionY.Data()[i];
        const double dz = mapping.directionZ.Data()[i];
        const double vx = r[0] * dx + r[1] * dy + r[2] * dz;
        const double vy = r[3] * dx + r[4] * dy + r[5] * dz;
        const double vz = r[6] * dx + r[7] * dy + r[8] * dz;
        pixelTheta.Data()[i] = std::acos(vz / std::sqrt(vx * vx + vy * vy + vz * vz));
        pixelPhi.Data()[i] = vx == 0.0 && vy == 0.0 ? 0.0 : std::atan2(vy, vx);
    }
}

void ZfDocPattern::AddRecord(ZfNotifyTerminate& notifier, const ZfLDoubleMatrix& pixelTheta,
                             const ZfLDoubleMatrix& pixelPhi) {
    scatteredWave.PrepareNorms();
    const std::int64_t pixels = pixelTheta.Count();
    double* const both = mapping.planes[0].Data();
    double* const direct = mapping.planes[1].Data();
    double* const scattered = mapping.planes[2].Data();
    double* const quadrature = mapping.planes[3].Data();

    // A pixel belongs to one thread, and its sum to one order: the same bits for any number of threads.
#pragma omp parallel for schedule(static)
    for (std::int64_t i = 0; i < pixels; ++i) {
        if (mapping.pixelWeight.Data()[i] == 0.0 || notifier.IsTerminated()) continue;
        try {
            const double theta = pixelTheta.Data()[i];
            const double phi = pixelPhi.Data()[i];
            const std::complex<double> as = scatteredWave.ScatteredAmplitude(theta, phi, lOverride);
            const std::complex<double> a0 = scatteredWave.DirectAmplitude(theta, phi);
            both[i] += std::norm(a0 + as);
            direct[i] += std::norm(a0);
            scattered[i] += std::norm(as);
            quadrature[i] += std::norm(std::complex<double>(-a0.imag(), a0.real()) + as);
        } catch (...) {  // NOLINT(bugprone-empty-catch): the pixel keeps the sum it had
        }
    }
}

void ZfDocPattern::Calculate(ZfNotifyTerminate& notifier, ZfScatteringData& data,
                             const ZfFluctuation& fluctuation, const ZfDebye& debye) {
    PrepareCalculation(data, fluctuation, debye);
    ZfLDoubleMatrix pixelTheta = mapping.directionX;
    ZfLDoubleMatrix pixelPhi = mapping.directionX;
    PixelDirections(pixelTheta, pixelPhi);
    for (std::int64_t s = 0; s < activeRecordCount; ++s) {
        if (notifier.IsTerminated()) break;
        ConsoleLine("START: STRUCTURE LOOP=" + std::to_string(s) + "/" + std::to_string(activeRecordCount));
        if (!IsActive(s)) continue;
        SetUpRecord(data, s);
        AddRecord(notifier, pixelTheta, pixelPhi);
        ConsoleLine("END: STRUCTURE LOOP=" + std::to_string(s));
    }
}
