#include "pattern/ZfDocPattern.h"

#include <algorithm>
#include <cmath>
#include <complex>

#include "foundation/Console.h"
#include "foundation/Constants.h"
#include "foundation/ZfError.h"
#include "scattering/FarField.h"
#include "scattering/SphericalHarmonics.h"
#include "scattering/ThermalModels.h"

using namespace qvre;

namespace {

constexpr std::size_t kWordBits = 32;
constexpr std::size_t kWrittenPlanes = 4;

/// Sources times directions, some 50 ms of work, above which further threads are worth their start.
constexpr std::size_t kWorthThreads = 10'000'000;

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
    return (CheckedAt(activeRecords, bit / kWordBits) >> (bit % kWordBits) & 1U) != 0;
}

void ZfDocPattern::RenewMapping(const MappingParameters& parameters,
                                const std::function<ZfSphericalMapping()>& create) {
    if (builtMapping_.planes.empty() || parameters != mappingParameters_) {
        builtMapping_ = create();
        mappingParameters_ = parameters;
    }
    mapping = builtMapping_;
}

void ZfDocPattern::PrepareCalculation(ZfScatteringData& data, const Fluctuation& fluctuation,
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
                  [this](const ZfFreeElectron& source) { return IsLeftOut(source); });
    scatteredWave.SetMeanFreePath_m(mfpByEmitterDistance ? meanFreePath : 0.0);
    if (emitterPhase != 0.0 && !scatteredWave.electrons.empty())
        TurnPhase(scatteredWave.electrons[0].A, emitterPhase);
    lOverride = 0;
    directWave.Ek_eV = list.Ek_eV;
    directWave.meanFreePath = list.meanFreePath;
    const auto first = list.electrons.begin();
    directWave.electrons.assign(first, first + (list.electrons.empty() ? 0 : 1));
}

FarFieldDirections ZfDocPattern::Directions() const {
    const double* r = orientation.Data();
    FarFieldDirections directions;
    directions.directions.reserve(static_cast<std::size_t>(mapping.pixelWeight.Count()));
    for (std::int64_t i = 0; i < mapping.pixelWeight.Count(); ++i) {
        if (mapping.pixelWeight.Data()[i] == 0.0) continue;
        const double dx = mapping.directionX.Data()[i];
        const double dy = mapping.directionY.Data()[i];
        const double dz = mapping.directionZ.Data()[i];
        const double vx = r[0] * dx + r[1] * dy + r[2] * dz;
        const double vy = r[3] * dx + r[4] * dy + r[5] * dz;
        const double vz = r[6] * dx + r[7] * dy + r[8] * dz;
        const double length = std::sqrt(vx * vx + vy * vy + vz * vz);
        directions.Add(static_cast<std::size_t>(i), vx / length, vy / length, vz / length);
    }
    directions.Order();
    return directions;
}

void ZfDocPattern::AddPixel(std::size_t pixel, std::complex<double> direct, std::complex<double> scattered) {
    mapping.planes[0].Data()[pixel] += std::norm(direct + scattered);
    mapping.planes[1].Data()[pixel] += std::norm(direct);
    mapping.planes[2].Data()[pixel] += std::norm(scattered);
    mapping.planes[3].Data()[pixel] +=
        std::norm(std::complex<double>(-direct.imag(), direct.real()) + scattered);
}

std::vector<ZfVectorFreeElectron> ZfDocPattern::WavesFrom(const ZfScatteringData& data, std::int64_t record) {
    SetUpRecord(data, record);
    std::vector<ZfVectorFreeElectron> waves{scatteredWave};
    const auto stored = static_cast<std::int64_t>(data.ListScatteringData.size());
    const std::int64_t end = std::min(activeRecordCount, stored);
    if (!FarField::Serves(scatteredWave)) return waves;
    while (waves.size() < FarField::kMostWaves && ++record < end && IsActive(record)) {
        SetUpRecord(data, record);
        if (!FarField::Serves(scatteredWave) || !FarField::CanShare(waves.front(), scatteredWave)) break;
        waves.push_back(scatteredWave);
    }
    return waves;
}

// In both forms a pixel belongs to one thread, and its sum has one order: the same bits for any number of
// threads.

void ZfDocPattern::AddWaves(ZfNotifyTerminate& notifier, const FarFieldDirections& directions,
                            std::span<const ZfVectorFreeElectron> waves) {
    if (!FarField::Serves(waves.front())) {
        AddWavePixelByPixel(notifier, directions, waves.front());
        return;
    }
    const FarField farField(waves);
    const auto tasks = static_cast<std::int64_t>(directions.tasks.size());
    const std::size_t sources = waves.size() * waves.front().electrons.size();

#pragma omp parallel if (sources * directions.directions.size() > kWorthThreads)
    {
        std::vector<double> scratch;
        std::vector<FarField::Amplitudes> amplitudes;
#pragma omp for schedule(dynamic)
        for (std::int64_t t = 0; t < tasks; ++t) {
            if (notifier.IsTerminated()) continue;
            const FarFieldDirections::Task& task = directions.tasks[static_cast<std::size_t>(t)];
            try {
                farField.Calculate(directions, task, scratch, amplitudes);
            } catch (...) {  // NOLINT(bugprone-empty-catch): the pixels keep the sums they had
                continue;
            }
            const std::size_t first = directions.FirstDirection(task);
            for (std::size_t i = first; i < directions.EndDirection(task); ++i)
                for (const FarField::Amplitudes& wave : amplitudes)
                    AddPixel(directions.directions[i].index, wave.direct[i - first],
                             wave.scattered[i - first]);
        }
    }
}

/// For tables and clusters beyond what the vector kernels take.
void ZfDocPattern::AddWavePixelByPixel(ZfNotifyTerminate& notifier, const FarFieldDirections& directions,
                                       const ZfVectorFreeElectron& wave) {
    wave.PrepareNorms();
    const auto pixels = static_cast<std::int64_t>(directions.directions.size());
#pragma omp parallel for schedule(static)
    for (std::int64_t i = 0; i < pixels; ++i) {
        if (notifier.IsTerminated()) continue;
        const FarFieldDirections::Direction& u = directions.directions[static_cast<std::size_t>(i)];
        try {
            const double theta = std::acos(u.z);
            const double phi = u.x == 0.0 && u.y == 0.0 ? 0.0 : std::atan2(u.y, u.x);
            const std::complex<double> scattered = wave.ScatteredAmplitude(theta, phi, lOverride);
            AddPixel(u.index, wave.DirectAmplitude(theta, phi), scattered);
        } catch (...) {  // NOLINT(bugprone-empty-catch): the pixel keeps the sum it had
        }
    }
}

void ZfDocPattern::Calculate(ZfNotifyTerminate& notifier, ZfScatteringData& data,
                             const Fluctuation& fluctuation, const ZfDebye& debye) {
    PrepareCalculation(data, fluctuation, debye);
    if (mapping.planes.size() < kWrittenPlanes) throw ZfError("Error: A pattern needs four planes");
    const FarFieldDirections directions = Directions();
    recordsDone = 0;
    std::int64_t added = 0;  // records before this one are in the planes
    for (std::int64_t s = 0; s < activeRecordCount; ++s) {
        if (notifier.IsTerminated()) break;
        ConsoleLine("START: STRUCTURE LOOP=" + std::to_string(s) + "/" + std::to_string(activeRecordCount));
        if (!IsActive(s)) continue;
        if (s >= added) {
            const std::vector<ZfVectorFreeElectron> waves = WavesFrom(data, s);
            AddWaves(notifier, directions, waves);
            added = s + static_cast<std::int64_t>(waves.size());
        }
        ++recordsDone;
        ConsoleLine("END: STRUCTURE LOOP=" + std::to_string(s));
    }
}
