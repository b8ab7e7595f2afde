#include "experiment/CountedIntensity.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <span>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"
#include "scattering/FarField.h"

namespace qvre {

namespace {

using Complex = std::complex<double>;
using Records = std::span<const ZfScatteringRecord>;

/// Sources times directions, some 50 ms of work, above which further threads are worth their start.
constexpr std::size_t kWorthThreads = 10'000'000;

/// Far fields of all waves of one structure in one direction.
struct WaveAmplitudes {
    explicit WaveAmplitudes(std::size_t waves) : direct(waves), total(waves) {}

    std::vector<Complex> direct;
    std::vector<Complex> total;
};

/// The lists of a structure's waves within the limits.
std::vector<ZfVectorFreeElectron> ListsOf(Records records, const CountingRequest& request) {
    const bool isStraight = request.inelasticMeanFreePath > 0.0 && !request.arePathsDamped;
    std::vector<ZfVectorFreeElectron> lists;
    for (const ZfScatteringRecord& record : records) {
        ZfVectorFreeElectron& list = lists.emplace_back(record.ListScatterer);
        std::erase_if(list.electrons,
                      [&](const ZfFreeElectron& source) { return request.limits.LeaveOut(source); });
        // exp(-2 r/length) is exp(-r/(2 lambda)) for a length of 4 lambda.
        list.SetMeanFreePath_m(isStraight ? 4.0 * request.inelasticMeanFreePath : request.meanFreePath);
    }
    return lists;
}

/// The far fields of the waves of one structure.
class StructureFarField {
public:
    StructureFarField(std::vector<ZfVectorFreeElectron> lists, const SurfaceEscape& escape)
        : lists_(std::move(lists)), escape_(escape) {
        const auto canShare = [this](const ZfVectorFreeElectron& list) {
            return FarField::Serves(list) && FarField::CanShare(lists_.front(), list);
        };
        if (std::all_of(lists_.begin(), lists_.end(), canShare))
            for (std::size_t first = 0; first < lists_.size(); first += FarField::kMostWaves)
                batches_.emplace_back(
                    std::span(lists_).subspan(first, std::min(FarField::kMostWaves, lists_.size() - first)),
                    escape_);
        else
            for (const ZfVectorFreeElectron& list : lists_) list.PrepareNorms();
    }

    std::size_t SourceCount() const { return lists_.size() * lists_.front().electrons.size(); }

    /// Calls take(direction, amplitudes) for each direction of a task.
    template <class Take>
    void ForEachDirection(const FarFieldDirections& all, const FarFieldDirections::Task& task,
                          const Take& take) const {
        if (batches_.empty())
            OneByOne(all, task, take);
        else
            ByBatches(all, task, take);
    }

private:
    template <class Take>
    void ByBatches(const FarFieldDirections& all, const FarFieldDirections::Task& task,
                   const Take& take) const {
        std::vector<double> scratch;
        std::vector<std::vector<FarField::Amplitudes>> fields(batches_.size());
        for (std::size_t b = 0; b < batches_.size(); ++b)
            batches_[b].Calculate(all, task, scratch, fields[b]);
        WaveAmplitudes waves(lists_.size());
        const std::size_t first = all.FirstDirection(task);
        for (std::size_t i = first; i < all.EndDirection(task); ++i) {
            for (std::size_t w = 0; w < lists_.size(); ++w) {
                const FarField::Amplitudes& field =
                    fields[w / FarField::kMostWaves][w % FarField::kMostWaves];
                waves.direct[w] = field.direct[i - first];
                waves.total[w] = field.direct[i - first] + field.scattered[i - first];
            }
            take(all.directions[i], waves);
        }
    }

    /// For tables and clusters beyond what the vector kernels take.
    template <class Take>
    void OneByOne(const FarFieldDirections& all, const FarFieldDirections::Task& task,
                  const Take& take) const {
        WaveAmplitudes waves(lists_.size());
        for (std::size_t i = all.FirstDirection(task); i < all.EndDirection(task); ++i) {
            const FarFieldDirections::Direction& u = all.directions[i];
            const double theta = std::acos(u.z);
            const double phi = u.x == 0.0 && u.y == 0.0 ? 0.0 : std::atan2(u.y, u.x);
            for (std::size_t w = 0; w < lists_.size(); ++w) {
                const ZfVectorFreeElectron list = Escaping(lists_[w], u.z);
                waves.direct[w] = list.DirectAmplitude(theta, phi);
                waves.total[w] = waves.direct[w] + list.ScatteredAmplitude(theta, phi, 0);
            }
            take(u, waves);
        }
    }

    ZfVectorFreeElectron Escaping(const ZfVectorFreeElectron& list, double cosine) const {
        ZfVectorFreeElectron escaping = list;
        if (!(escape_.meanFreePath > 0.0)) return escaping;
        for (ZfFreeElectron& source : escaping.electrons) {
            const double depth = std::max(0.0, escape_.surface - source.position.Data()[2]);
            const double way = depth / std::max(cosine, kFarFieldGrazing);
            for (Complex& a : source.A.block) a *= std::exp(-way / (2.0 * escape_.meanFreePath));
        }
        return escaping;
    }

    std::vector<ZfVectorFreeElectron> lists_;
    SurfaceEscape escape_;
    std::vector<FarField> batches_;  // none: no vector kernel serves
};

/// How the waves of a structure make up intensities.
class WaveCombination {
public:
    WaveCombination(const CountingRequest& request, std::size_t records) : light_(request.light) {
        if (!request.source) return;
        transitions_.emplace(*request.source);
        waves_ = transitions_->UnitWaveCount();
        if (records % waves_ != 0)
            throw ZfError(fmt::format("The {} scattered waves are not the {} unit waves of each structure",
                                      records, waves_));
        if (light_.frame == LightFrame::kSample) fixed_ = AmplitudesFor({0.0, 0.0, 1.0});
    }

    std::size_t WaveCount() const { return waves_; }

    /// Adds what the waves count in a direction to a pattern and its direct part.
    void Add(const FarFieldDirections::Direction& u, const WaveAmplitudes& waves, double weight,
             double& pattern, double& direct) const {
        if (!transitions_) {
            pattern += weight * std::norm(waves.total[0]);
            direct += weight * std::norm(waves.direct[0]);
            return;
        }
        std::vector<Complex> turned;
        if (fixed_.empty()) turned = AmplitudesFor({u.x, u.y, u.z});
        const std::vector<Complex>& amplitudes = fixed_.empty() ? turned : fixed_;
        for (std::size_t first = 0; first < amplitudes.size(); first += waves_) {
            Complex total;
            Complex alone;
            for (std::size_t w = 0; w < waves_; ++w) {
                total += amplitudes[first + w] * waves.total[w];
                alone += amplitudes[first + w] * waves.direct[w];
            }
            pattern += weight * std::norm(total);
            direct += weight * std::norm(alone);
        }
    }

private:
    /// Of the unit waves, for each part of the light and each sublevel.
    std::vector<Complex> AmplitudesFor(const Vec3& k) const {
        std::vector<Complex> amplitudes;
        for (const LightVector& part : light_.parts) {
            const LightVector eps = InSample(part, light_.frame, k);
            for (std::size_t m = 0; m < transitions_->SublevelCount(); ++m)
                for (std::size_t w = 0; w < waves_; ++w)
                    amplitudes.push_back(transitions_->Amplitude(eps, m, w));
        }
        return amplitudes;
    }

    Light light_;
    std::optional<DipoleTransitions> transitions_;
    std::size_t waves_ = 1;
    std::vector<Complex> fixed_;  // of light that stays with the sample
};

void CheckEmitters(const CountingRequest& request, Records records) {
    std::size_t structures = 0;
    for (const ZfScatteringRecord& record : records)
        structures = std::max(structures, static_cast<std::size_t>(std::max(record.StIndex, 0)) + 1);
    if (request.emitters.size() != structures)
        throw ZfError(
            fmt::format("There are {} structures, but emitters of {}", structures, request.emitters.size()));
}

/// Carries the first exception out of a parallel loop.
class LoopFailure {
public:
    template <class Body>
    void Try(const Body& body) {
        try {
            body();
        } catch (...) {
#pragma omp critical(qvre_loop_failure)
            if (!failure_) failure_ = std::current_exception();
        }
    }
    void Rethrow() const {
        if (failure_) std::rethrow_exception(failure_);
    }

private:
    std::exception_ptr failure_;
};

}  // namespace

CountedIntensity CountIntensity(const ZfScatteringData& data, const FarFieldDirections& directions,
                                const CountingRequest& request, ZfNotifyTerminate& notifier,
                                double& progress) {
    const Records records = data.ListScatteringData;
    const WaveCombination combination(request, records.size());
    const std::size_t waves = combination.WaveCount();
    const std::size_t groups = records.size() / waves;
    CheckEmitters(request, records);
    CountedIntensity counted;
    std::size_t numbers = 0;
    for (const FarFieldDirections::Direction& u : directions.directions)
        numbers = std::max(numbers, u.index + 1);
    counted.pattern.resize(numbers);
    counted.direct.resize(numbers);
    for (std::size_t group = 0; group < groups && !notifier.IsTerminated(); ++group) {
        const Records own = records.subspan(group * waves, waves);
        const EmitterShare& share =
            request.emitters[static_cast<std::size_t>(std::max(own.front().StIndex, 0))];
        const SurfaceEscape escape = {request.inelasticMeanFreePath, share.depth_angstrom * kAngstrom_m};
        const StructureFarField field(ListsOf(own, request), escape);
        const auto tasks = static_cast<std::int64_t>(directions.tasks.size());
        LoopFailure failure;
#pragma omp parallel for schedule(dynamic) if (field.SourceCount() * directions.directions.size() > \
                                               kWorthThreads)
        for (std::int64_t t = 0; t < tasks; ++t) {
            if (notifier.IsTerminated()) continue;
            const auto add = [&](const FarFieldDirections::Direction& u, const WaveAmplitudes& at) {
                if (request.inelasticMeanFreePath > 0.0 && !(u.z > 0.0)) return;  // into the sample
                combination.Add(u, at, share.weight, counted.pattern[u.index], counted.direct[u.index]);
            };
            failure.Try([&] {
                field.ForEachDirection(directions, directions.tasks[static_cast<std::size_t>(t)], add);
            });
        }
        failure.Rethrow();
        progress = static_cast<double>(group + 1) / static_cast<double>(groups);
    }
    return counted;
}

}  // namespace qvre
