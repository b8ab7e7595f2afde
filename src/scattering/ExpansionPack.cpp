#include "scattering/ExpansionPack.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "scattering/LevelRefinement.h"

namespace qvre {

namespace {

constexpr double kExpansionRadius_m = 2e-10;  ///< any but 0

/// Sources nearer to the largest sphere than this, as a ratio of radii, would need too many orders.
constexpr double kNearestRatio = 1.02;
/// Beyond, the phase of the source would lose digits.
constexpr double kLargestKR = 1e4;
/// Part of a source's wave that may be cut off.
constexpr double kOrderTolerance = 1e-16;

/// The same once the wave is there, of the root mean square on the sphere.
constexpr double kCutOff = 2e-15;

// What decides between the two, in nanoseconds of one core: a translation, by the cube of its order; a source
// at a point, and of it each (l, m); points of the levels that most expansions come to.
constexpr double kTranslationTime = 0.1;
constexpr double kPointTime = 8.0;
constexpr double kElementTime = 0.19;
constexpr double kUsualPoints = 6000.0;

/// Orders tried first; a source that needs more has them computed then.
constexpr std::int32_t kUsualOrder = 128;

/// Root of the summed squares over m of each l.
std::vector<double> DegreeNorms(const ZfLmComplexTable& table) {
    std::vector<double> norms;
    for (std::int32_t l = 0; l < table.L; ++l) {
        double sum = 0.0;
        for (std::int32_t m = -l; m <= l; ++m) sum += std::norm(table.At(l, m));
        norms.push_back(std::sqrt(sum));
    }
    return norms;
}

/// Bounds for what an order L of a translated wave brings on a sphere: |S^m_Ll| <= sqrt((2L+1) (2l+1))
/// |h_(L+l)|.
struct OrderBound {
    /// (2L+1) |j_L| sum of sqrt(2l+1) |A_l| |h_(L+l)|
    double operator()(std::int32_t L) const {
        double sum = 0.0;
        for (std::size_t l = 0; l < weights.size(); ++l) {
            const PackedComplex& h = (*radial)[static_cast<std::size_t>(L) + l];
            sum += weights[l] * (std::abs(h.re[lane]) + std::abs(h.im[lane]));
        }
        return (2.0 * L + 1.0) * std::abs((*bessel)[static_cast<std::size_t>(L)]) * sum;
    }

    std::vector<double> weights;  ///< sqrt(2l+1) |A_l| kOrderScale^-l
    const std::vector<PackedComplex>* radial;
    const std::vector<double>* bessel;
    std::size_t lane;
};

/// First L from `first` on at which the bound is below the limit; `end` if none is. The bound falls with L
/// there.
std::int32_t FirstBelow(const OrderBound& bound, double limit, std::int32_t first, std::int32_t end) {
    std::int32_t above = first - 1;
    std::int32_t below = end;
    while (below - above > 1) {
        const std::int32_t middle = (above + below) / 2;
        (bound(middle) <= limit ? below : above) = middle;
    }
    return below;
}

/// The order up to which waves count on a sphere: what lies beyond is below kCutOff of the root mean square
/// there, for every one of them. Exact, for turning back leaves the power of an order as it is.
std::int32_t NeededOrder(const std::vector<PackedComplex>& power, const std::vector<double>& bessel,
                         std::int32_t order) {
    std::array<double, kTranslationPack> rest{};
    const auto onSphere = [&](std::int32_t L, std::size_t lane) {
        const auto i = static_cast<std::size_t>(L);
        return power[i].re[lane] * bessel[i] * bessel[i];
    };
    for (std::int32_t L = 0; L < order; ++L)
        for (std::size_t lane = 0; lane < kTranslationPack; ++lane) rest[lane] += onSphere(L, lane);
    for (double& limit : rest) limit *= kCutOff * kCutOff;
    std::array<double, kTranslationPack> sum{};
    for (std::int32_t L = order; L > 0; --L) {
        for (std::size_t lane = 0; lane < kTranslationPack; ++lane) {
            sum[lane] += onSphere(L - 1, lane);
            if (sum[lane] > rest[lane]) return L;
        }
    }
    return 1;
}

}  // namespace

ZfSphereExpansion& ExpansionScratch::Direct(const std::shared_ptr<const ExpansionTables>& tables) {
    ZfSphereExpansion& expansion = direct[tables->lSize];
    expansion.Use(tables);
    return expansion;
}

ExpandedWave SampleWave(const ZfVectorFreeElectron& seen,
                        const std::shared_ptr<const ExpansionTables>& tables, double tolerance,
                        ExpansionScratch& scratch) {
    ZfSphereExpansion& expansion = scratch.Direct(tables);
    expansion.tolerance = tolerance;
    ExpandedWave wave;
    expansion.Expand(wave.table, ZfWaveVectorFreeElectron(&seen), kExpansionRadius_m);
    wave.level = expansion.level;
    wave.lastError = expansion.lastError;
    return wave;
}

ExpansionPack::ExpansionPack(std::shared_ptr<const ExpansionTables> tables, double tolerance, double nearTie)
    : tables_(std::move(tables)),
      tolerance_(tolerance),
      nearTie_(nearTie),
      nothingTranslated_(std::isinf(nearTie)),
      orders_(static_cast<std::size_t>(tables_->grid.Groups()), 1) {}

/// The order from which on a source of this l size is sooner sampled.
std::int32_t ExpansionPack::LargestOrderFor(std::int32_t lSize) const {
    const double perPoint = kPointTime + kElementTime * lSize * lSize;
    const double sampled = perPoint * kUsualPoints * static_cast<double>(orders_.size());
    return std::min(kLargestOrder, static_cast<std::int32_t>(std::cbrt(sampled / kTranslationTime)));
}

/// The order that a source needs on the largest sphere, whose geometry is in place; 0 if it needs too many.
std::int32_t ExpansionPack::OrderOf(std::size_t lane, const ZfFreeElectron& source,
                                    const ExpansionScratch& scratch) const {
    const std::vector<double>& groupKr = tables_->grid.groupKr;
    const auto largest = std::max_element(groupKr.begin(), groupKr.end());
    OrderBound bound;
    bound.weights = DegreeNorms(source.A);
    bound.radial = &scratch.geometry.radial;
    bound.bessel = &tables_->Bessel()[static_cast<std::size_t>(largest - groupKr.begin())];
    bound.lane = lane;
    const double limit = kOrderTolerance * *std::max_element(bound.weights.begin(), bound.weights.end()) /
                         (scratch.geometry.kR.re[lane] + *largest);
    double power = 1.0;
    for (std::size_t l = 0; l < bound.weights.size(); ++l, power /= kOrderScale)
        bound.weights[l] *= std::sqrt(2.0 * static_cast<double>(l) + 1.0) * power;
    const auto computed = static_cast<std::int32_t>(scratch.geometry.radial.size()) - source.A.L + 1;
    const std::int32_t end = std::min(computed, LargestOrderFor(source.A.L));
    const std::int32_t order = FirstBelow(bound, limit, static_cast<std::int32_t>(*largest) + 1, end);
    return order < end ? order : 0;
}

void ExpansionPack::Add(const Row& row, ExpansionScratch& scratch) {
    if (nothingTranslated_) return;
    const std::vector<double>& groupKr = tables_->grid.groupKr;
    const double largestX = *std::max_element(groupKr.begin(), groupKr.end());
    const auto tooNear = [&](std::size_t lane) {
        sampled_[lane].push_back(row[lane]);
        scratch.geometry.Remove(lane);
    };
    std::array<bool, kTranslationPack> taken{};
    std::int32_t lSize = 0;
    scratch.geometry.Clear();
    for (std::size_t lane = 0; lane < kTranslationPack; ++lane) {
        if (!row[lane].source) continue;
        const ZfFreeElectron& source = *row[lane].source;
        if (!source.IsPlaneWave && source.A.L == 0 && source.B.L == 0) continue;
        scratch.geometry.Set(lane, row[lane].displacement.data(), source.k);
        const double kR = scratch.geometry.kR.re[lane];
        if (source.IsPlaneWave || source.B.L > 0 || source.A.L > kLargestTranslatedL ||
            !(kR > kNearestRatio * largestX && kR < kLargestKR)) {
            tooNear(lane);
            continue;
        }
        taken[lane] = true;
        lSize = std::max(lSize, source.A.L);
    }
    if (lSize == 0) return;

    scratch.geometry.CalculateRadial(kUsualOrder + lSize);
    std::int32_t order = 0;
    for (std::size_t lane = 0; lane < kTranslationPack; ++lane) {
        if (!taken[lane]) continue;
        const ZfFreeElectron& source = *row[lane].source;
        std::int32_t needed = OrderOf(lane, source, scratch);
        const std::int32_t largest = LargestOrderFor(source.A.L);
        if (needed == 0 && std::ssize(scratch.geometry.radial) < largest + lSize && largest > kUsualOrder) {
            scratch.geometry.CalculateRadial(largest + lSize);
            needed = OrderOf(lane, source, scratch);
        }
        if (needed == 0) {
            taken[lane] = false;
            tooNear(lane);
        }
        order = std::max(order, needed);
    }
    if (order == 0) return;

    const auto elements = static_cast<std::size_t>(lSize) * static_cast<std::size_t>(lSize);
    scratch.sources.assign(elements, PackedComplex());
    for (std::size_t lane = 0; lane < kTranslationPack; ++lane) {
        if (!taken[lane]) continue;
        translated_[lane] = true;
        const ZfLmComplexTable& table = row[lane].source->A;
        for (std::size_t i = 0; i < table.block.size(); ++i) scratch.sources[i].Set(lane, table.block[i]);
    }
    MoveWaves(scratch.sources, lSize, scratch.geometry, order, scratch.translation);
    std::int32_t kept = 1;
    for (std::size_t g = 0; g < orders_.size(); ++g) {
        const std::int32_t needed = NeededOrder(scratch.translation.power, tables_->Bessel()[g], order);
        orders_[g] = std::max(orders_[g], needed);
        kept = std::max(kept, needed);
    }
    const auto size = static_cast<std::size_t>(kept) * static_cast<std::size_t>(kept);
    if (waves_.empty() && !scratch.spare.empty()) {
        waves_ = std::move(scratch.spare.back());
        scratch.spare.pop_back();
        waves_.clear();
    }
    if (waves_.size() < size) waves_.resize(size);
    AddMoved(kept, waves_, scratch.translation);
}

/// Adds the integrals of the sampled sources of a target, level by level.
class ExpansionPack::SampledPart {
public:
    SampledPart(const std::vector<Seen>& sources, const std::shared_ptr<const ExpansionTables>& tables)
        : list_(ListOf(sources)), wave_(&list_) {
        expansion_.Use(tables);
        expansion_.Begin(wave_);
    }
    SampledPart(const SampledPart&) = delete;
    SampledPart& operator=(const SampledPart&) = delete;
    ~SampledPart() = default;

    void AddTo(PackedTable& integrals, std::size_t lane, std::int32_t level) {
        while (next_ <= level) {
            expansion_.level = next_++;
            expansion_.LevelIntegral(integral_);
        }
        for (std::size_t i = 0; i < integrals.size(); ++i)
            integrals[i].Set(lane, integrals[i].Get(lane) + integral_.block[i]);
    }

private:
    static ZfVectorFreeElectron ListOf(const std::vector<Seen>& sources) {
        ZfVectorFreeElectron list;
        list.Ek_eV = sources.front().source->Ek_eV;
        for (const Seen& seen : sources) {
            ZfFreeElectron& source = list.electrons.emplace_back(*seen.source);
            source.position = Vector3(seen.displacement[0], seen.displacement[1], seen.displacement[2]);
        }
        return list;
    }

    ZfVectorFreeElectron list_;
    ZfWaveVectorFreeElectron wave_;
    ZfSphereExpansion expansion_;
    ZfLmComplexTable integral_;
    std::int32_t next_ = 0;
};

std::array<bool, kTranslationPack> ExpansionPack::Expand(const std::array<bool, kTranslationPack>& chosen,
                                                         std::array<ExpandedWave, kTranslationPack>& waves,
                                                         ExpansionScratch& scratch) {
    std::array<bool, kTranslationPack> done{};
    std::vector<std::size_t> open;
    std::array<std::optional<SampledPart>, kTranslationPack> sampled;
    for (std::size_t lane = 0; lane < kTranslationPack; ++lane) {
        if (!chosen[lane] || nothingTranslated_ || (!translated_[lane] && !sampled_[lane].empty())) continue;
        open.push_back(lane);
        if (!sampled_[lane].empty()) sampled[lane].emplace(sampled_[lane], tables_);
    }
    if (open.empty()) return done;
    if (waves_.empty()) waves_.resize(1);

    std::array<LevelDecision, kTranslationPack> decisions;
    for (LevelDecision& decision : decisions) decision.tolerance = tolerance_;
    LevelSynthesis& synthesis = scratch.synthesis;
    synthesis.Start(*tables_, waves_, orders_);
    PackedTable& integral = scratch.integral;
    PackedTable& before = scratch.before;
    PackedTable& result = scratch.result;
    for (std::int32_t level = kFirstSynthesisedLevel; !open.empty() && synthesis.Serves(level); ++level) {
        std::swap(before, integral);
        integral = synthesis.Level(level);
        for (const std::size_t lane : open)
            if (sampled[lane]) sampled[lane]->AddTo(integral, lane, level);
        if (level < kFirstComparedLevel) {
            result = integral;
            continue;
        }
        PackedChange change;
        RefineLevel(integral, before, tables_->grid, result, change);
        std::erase_if(open, [&](std::size_t lane) {
            if (!decisions[lane].Stops(level, {change.size[lane], change.difference[lane]})) return false;
            done[lane] = decisions[lane].nearestTie >= nearTie_;
            waves[lane].level = level;
            waves[lane].lastError = decisions[lane].lastError;
            waves[lane].table.SetSize(tables_->lSize);
            for (std::size_t i = 0; i < result.size(); ++i) waves[lane].table.block[i] = result[i].Get(lane);
            return true;
        });
    }
    return done;
}

}  // namespace qvre
