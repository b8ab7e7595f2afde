#include "pattern/ZfDocPattern.h"

#include <algorithm>
#include <cmath>
#include <complex>

#include "foundation/Console.h"
#include "foundation/ZfError.h"
#include "scattering/FarFieldKernel.h"
#include "scattering/SphericalHarmonics.h"
#include "scattering/ThermalModels.h"

namespace {

constexpr double kAtEmitterSquared_m2 = 1e-22;
constexpr std::size_t kWordBits = 32;

double Radians(double degrees) {
    return degrees * kPi / 180;
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

bool ZfDocPattern::IsLeftOut(const ZfFreeElectron& source) const {
    const double q = NormSquared(source.position);
    const double upper = clusterLimit * clusterLimit;
    const double lower = clusterLowerLimit * clusterLowerLimit;
    if (upper > 0 && q >= upper) return true;
    if (clusterDepthLimit > 0 && source.position.VectorValueAt(2) > clusterDepthLimit) return true;
    return q > kAtEmitterSquared_m2 && lower >= q;
}

void ZfDocPattern::SetUpRecord(const ZfScatteringData& data, std::int64_t record) {
    if (record >= static_cast<std::int64_t>(data.ListScatteringData.size())) throw ZfError("ERROR INDEX");
    const ZfVectorFreeElectron& list =
        data.ListScatteringData[static_cast<std::size_t>(record)].ListScatterer;
    scatteredWave = list;
    std::erase_if(scatteredWave.electrons,
                  [this](const ZfFreeElectron& source) { return IsLeftOut(source); });
    scatteredWave.SetMeanFreePath_m(mfpByEmitterDistance ? meanFreePath : 0.0);
    if (emitterPhase != 0.0 && !scatteredWave.electrons.empty())
        TurnPhase(scatteredWave.electrons[0].A, emitterPhase);
    lOverride = 0;
    directWave = list;
    directWave.electrons.resize(std::min<std::size_t>(directWave.electrons.size(), 1));
}

ZfDocPattern::PixelDirections ZfDocPattern::Directions() const {
    const double* r = orientation.Data();
    PixelDirections directions;
    for (std::int64_t i = 0; i < mapping.pixelWeight.Count(); ++i) {
        if (mapping.pixelWeight.Data()[i] == 0.0) continue;
        const double dx = mapping.directionX.Data()[i];
        const double dy = mapping.directionY.Data()[i];
        const double dz = mapping.directionZ.Data()[i];
        const double vx = r[0] * dx + r[1] * dy + r[2] * dz;
        const double vy = r[3] * dx + r[4] * dy + r[5] * dz;
        const double vz = r[6] * dx + r[7] * dy + r[8] * dz;
        const double length = std::sqrt(vx * vx + vy * vy + vz * vz);
        directions.pixel.push_back(static_cast<std::size_t>(i));
        directions.x.push_back(vx / length);
        directions.y.push_back(vy / length);
        directions.z.push_back(vz / length);
    }
    for (std::vector<double>* axis : {&directions.x, &directions.y, &directions.z})
        axis->resize(axis->size() + kKernelPadding, 0.0);
    return directions;
}

void ZfDocPattern::AddPixel(std::size_t pixel, std::complex<double> direct, std::complex<double> scattered) {
    mapping.planes[0].Data()[pixel] += std::norm(direct + scattered);
    mapping.planes[1].Data()[pixel] += std::norm(direct);
    mapping.planes[2].Data()[pixel] += std::norm(scattered);
    mapping.planes[3].Data()[pixel] +=
        std::norm(std::complex<double>(-direct.imag(), direct.real()) + scattered);
}

// In both forms a pixel belongs to one thread, and its sum has one order: the same bits for any number of
// threads.

void ZfDocPattern::AddRecord(ZfNotifyTerminate& notifier, const PixelDirections& directions) {
    if (lOverride > 0 || !ZfFarField::Serves(scatteredWave)) {
        AddRecordPixelByPixel(notifier, directions);
        return;
    }
    constexpr std::size_t kBlock = ZfFarField::kBlock;
    const ZfFarField farField(scatteredWave);
    const std::size_t pixels = directions.pixel.size();
    const auto blocks = static_cast<std::int64_t>((pixels + kBlock - 1) / kBlock);

#pragma omp parallel if (blocks > 1)
    {
        std::vector<double> scratch;
        std::array<std::array<double, kBlock + kKernelPadding>, 4> out;
        const ZfFarField::Amplitudes amplitudes = {out[0].data(), out[1].data(), out[2].data(),
                                                   out[3].data()};
#pragma omp for schedule(dynamic)
        for (std::int64_t b = 0; b < blocks; ++b) {
            if (notifier.IsTerminated()) continue;
            const std::size_t first = static_cast<std::size_t>(b) * kBlock;
            const std::size_t count = std::min(kBlock, pixels - first);
            farField.Calculate({directions.x.data() + first, directions.y.data() + first,
                                directions.z.data() + first, count},
                               scratch, amplitudes);
            for (std::size_t i = 0; i < count; ++i)
                AddPixel(directions.pixel[first + i], {out[0][i], out[1][i]}, {out[2][i], out[3][i]});
        }
    }
}

/// For tables and clusters beyond what the vector kernels take.
void ZfDocPattern::AddRecordPixelByPixel(ZfNotifyTerminate& notifier, const PixelDirections& directions) {
    scatteredWave.PrepareNorms();
    const auto pixels = static_cast<std::int64_t>(directions.pixel.size());
#pragma omp parallel for schedule(static)
    for (std::int64_t p = 0; p < pixels; ++p) {
        const auto i = static_cast<std::size_t>(p);
        if (notifier.IsTerminated()) continue;
        try {
            const double theta = std::acos(directions.z[i]);
            const double phi = directions.x[i] == 0.0 && directions.y[i] == 0.0
                                   ? 0.0
                                   : std::atan2(directions.y[i], directions.x[i]);
            const std::complex<double> scattered = scatteredWave.ScatteredAmplitude(theta, phi, lOverride);
            AddPixel(directions.pixel[i], scatteredWave.DirectAmplitude(theta, phi), scattered);
        } catch (...) {  // NOLINT(bugprone-empty-catch): the pixel keeps the sum it had
        }
    }
}

void ZfDocPattern::Calculate(ZfNotifyTerminate& notifier, ZfScatteringData& data,
                             const ZfFluctuation& fluctuation, const ZfDebye& debye) {
    PrepareCalculation(data, fluctuation, debye);
    const PixelDirections directions = Directions();
    for (std::int64_t s = 0; s < activeRecordCount; ++s) {
        if (notifier.IsTerminated()) break;
        ConsoleLine("START: STRUCTURE LOOP=" + std::to_string(s) + "/" + std::to_string(activeRecordCount));
        if (!IsActive(s)) continue;
        SetUpRecord(data, s);
        AddRecord(notifier, directions);
        ConsoleLine("END: STRUCTURE LOOP=" + std::to_string(s));
    }
}
