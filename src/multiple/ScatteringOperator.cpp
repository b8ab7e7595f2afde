#include "multiple/ScatteringOperator.h"

#include <omp.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numeric>

#include "foundation/Text.h"

namespace qvre {

namespace {

/// Groups of sources that one task sums up. Fixed, so that sums do not depend on the threads.
constexpr std::size_t kGroupsOfTask = 8;

/// Targets of a product that are done at once, which bounds the memory of the tasks' results.
constexpr std::size_t kTargetsTogether = 32;

/// Atoms whose distances from the centre differ by less belong to one shell. Far above the rounding of
/// positions with some decimals, far below any shift of an atom; in units of 1/k, some 1e-4 angstrom.
constexpr double kShellWidth = 1e-3;

std::size_t GroupsOf(std::size_t atoms) {
    return (atoms + kTranslationPack - 1) / kTranslationPack;
}

double Distance(const Vec3& a, const Vec3& b) {
    const Vec3 d = {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
    return std::sqrt(Dot(d, d));
}

}  // namespace

void ScatteringOperator::SourceClass::Write(std::size_t wave, std::size_t place,
                                            const std::complex<double>* table) {
    const std::size_t size = lSize * lSize;
    PackedComplex* const packed = waves[wave].data() + place / kTranslationPack * size;
    for (std::size_t l = 0; l < lSize; ++l) {
        const std::complex<double> power = IPower(static_cast<int>(l));
        for (std::size_t i = l * l; i < (l + 1) * (l + 1); ++i)
            packed[i].Set(place % kTranslationPack, power * table[i]);
    }
}

void ScatteringOperator::SourceClass::Clear() {
    for (auto& wave : waves) wave.assign(wave.size(), PackedComplex());
}

ScatteringOperator::ScatteringOperator(Scatterers scatterers, const Vec3& centre, std::size_t largestWaves)
    : scatterers_(std::move(scatterers)), largestWaves_(largestWaves) {
    MakeClasses();
    MakeShells(centre);
    weights_ = MakeCoaxialWeights(static_cast<std::int32_t>(largestLSize_));
    const auto threads = static_cast<std::size_t>(omp_get_max_threads());
    scratch_.assign(threads, PairScratch(largestLSize_, largestWaves));
    sums_.assign(threads, std::vector<PackedComplex>(largestWaves * largestLSize_ * largestLSize_));
}

void ScatteringOperator::MakeClasses() {
    for (const auto& t : scatterers_.t) {
        const auto found = std::find(lSizes_.begin(), lSizes_.end(), t.size());
        classOfSpecies_.push_back(static_cast<std::size_t>(found - lSizes_.begin()));
        if (found == lSizes_.end()) lSizes_.push_back(t.size());
    }
    offsets_ = {0};
    for (const std::size_t species : scatterers_.species) {
        const std::size_t n = scatterers_.t[species].size();
        offsets_.push_back(offsets_.back() + n * n);
        largestLSize_ = std::max(largestLSize_, n);
    }
}

std::vector<ScatteringOperator::SourceClass> ScatteringOperator::EmptyClasses() const {
    std::vector<SourceClass> classes(lSizes_.size());
    for (std::size_t c = 0; c < classes.size(); ++c) {
        classes[c].lSize = lSizes_[c];
        classes[c].waves.resize(largestWaves_);
    }
    return classes;
}

/// Returns the place of the atom among the sources of its class.
std::size_t ScatteringOperator::Append(std::vector<SourceClass>& classes, std::size_t atom,
                                       std::size_t place) const {
    SourceClass& sources = classes[ClassOf(atom)];
    if (place % kTranslationPack == 0) {
        sources.groups.emplace_back();
        for (auto& wave : sources.waves) wave.resize(sources.groups.size() * sources.lSize * sources.lSize);
        // Lanes that stay free hold no wave, but a place that is a number away from zero.
        for (std::size_t lane = 0; lane < kTranslationPack; ++lane)
            sources.groups.back().Set(lane, scatterers_.positions[atom]);
    }
    sources.groups.back().Set(place % kTranslationPack, scatterers_.positions[atom]);
    return place;
}

void ScatteringOperator::MakeShells(const Vec3& centre) {
    const std::size_t atoms = scatterers_.positions.size();
    std::vector<double> distance;
    for (const Vec3& position : scatterers_.positions) distance.push_back(Distance(position, centre));
    std::vector<std::size_t> order(atoms);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return distance[a] < distance[b]; });
    classes_ = EmptyClasses();
    place_.resize(atoms);
    std::vector<std::size_t> counts(classes_.size(), 0);
    double last = -1.0;
    for (const std::size_t atom : order) {
        if (LSize(atom) == 0) continue;
        if (shells_.empty() || distance[atom] - last > kShellWidth) {
            shells_.push_back({{}, counts, {}, {}});
            last = distance[atom];
        }
        shells_.back().atoms.push_back(atom);
        place_[atom] = counts[ClassOf(atom)]++;
        Append(classes_, atom, place_[atom]);
    }
    for (Shell& shell : shells_) {
        if (shell.atoms.size() < 2) continue;
        shell.own = EmptyClasses();
        std::vector<std::size_t> own(classes_.size(), 0);
        for (const std::size_t atom : shell.atoms)
            shell.place.push_back(Append(shell.own, atom, own[ClassOf(atom)]++));
    }
}

bool ScatteringOperator::Stop() {
    if (notifier_ != nullptr && !interrupted_) interrupted_ = notifier_->IsTerminated();
    return interrupted_;
}

std::vector<ScatteringOperator::SourceRange> ScatteringOperator::Earlier(std::size_t shell) const {
    std::vector<SourceRange> ranges;
    for (std::size_t c = 0; c < classes_.size(); ++c)
        ranges.push_back({&classes_[c], 0, GroupsOf(shells_[shell].before[c])});
    return ranges;
}

std::vector<ScatteringOperator::SourceRange> ScatteringOperator::Later(std::size_t shell) const {
    std::vector<SourceRange> ranges;
    if (shell + 1 == shells_.size()) return ranges;
    for (std::size_t c = 0; c < classes_.size(); ++c)
        ranges.push_back(
            {&classes_[c], shells_[shell + 1].before[c] / kTranslationPack, classes_[c].groups.size()});
    return ranges;
}

void ScatteringOperator::WriteSources(const std::vector<std::size_t>& atoms,
                                      const std::vector<ClusterWave>& x) {
    for (const std::size_t atom : atoms)
        for (std::size_t w = 0; w < x.size(); ++w)
            classes_[ClassOf(atom)].Write(w, place_[atom], x[w].data() + offsets_[atom]);
}

void ScatteringOperator::AddScattered(const std::vector<std::size_t>& targets,
                                      const std::vector<SourceRange>& ranges, std::vector<ClusterWave>& x) {
    const std::size_t waves = x.size();
    if (Stop()) return;
    std::vector<Task> tasks;
    std::size_t size = 0;
    for (const std::size_t target : targets) {
        for (const SourceRange& range : ranges) {
            for (std::size_t begin = range.begin; begin < range.end; begin += kGroupsOfTask) {
                const std::size_t end = std::min(begin + kGroupsOfTask, range.end);
                tasks.push_back({target, {range.sources, begin, end}, size});
                size += waves * LSize(target) * LSize(target);
            }
        }
    }
    if (collected_.size() < size) collected_.resize(size);
    const auto count = static_cast<std::int64_t>(tasks.size());
    const int threads = static_cast<int>(scratch_.size());
#pragma omp parallel for schedule(static, 1) num_threads(threads) if (count > 1)
    for (std::int64_t i = 0; i < count; ++i)
        Collect(tasks[static_cast<std::size_t>(i)], waves, static_cast<std::size_t>(omp_get_thread_num()));

    for (const Task& task : tasks) {
        const auto& t = scatterers_.t[scatterers_.species[task.target]];
        const std::complex<double>* c = collected_.data() + task.result;
        for (ClusterWave& wave : x) {
            std::complex<double>* const a = wave.data() + offsets_[task.target];
            for (std::size_t l = 0; l < t.size(); ++l)
                for (std::size_t k = l * l; k < (l + 1) * (l + 1); ++k) a[k] += t[l] * c[k];
            c += t.size() * t.size();
        }
    }
}

void ScatteringOperator::Collect(const Task& task, std::size_t waves, std::size_t thread) {
    const SourceClass& sources = *task.range.sources;
    const std::size_t targetLSize = LSize(task.target);
    const PairSetting setting = {&weights_, scatterers_.damping, sources.lSize, targetLSize};
    const std::size_t sourceSize = sources.lSize * sources.lSize;
    const std::size_t targetSize = targetLSize * targetLSize;
    std::vector<PackedComplex>& sum = sums_[thread];
    std::fill_n(sum.begin(), static_cast<std::ptrdiff_t>(waves * targetSize), PackedComplex());
    std::array<PairWave, PairScratch::kWavesTogether> ends{};
    for (std::size_t first = 0; first < waves; first += ends.size()) {
        const std::size_t together = std::min(ends.size(), waves - first);
        for (std::size_t g = task.range.begin; g < task.range.end; ++g) {
            for (std::size_t w = 0; w < together; ++w)
                ends[w] = {sources.waves[first + w].data() + g * sourceSize,
                           sum.data() + (first + w) * targetSize};
            AddWavesAt(scatterers_.positions[task.target], sources.groups[g], setting,
                       {ends.data(), together}, scratch_[thread]);
        }
    }
    for (std::size_t w = 0; w < waves; ++w)
        SumLanes(sum.data() + w * targetSize, targetLSize, collected_.data() + task.result + w * targetSize);
}

void ScatteringOperator::AddOwnShell(Shell& shell, const std::vector<ClusterWave>& y,
                                     std::vector<ClusterWave>& x) {
    if (shell.own.empty()) return;
    for (std::size_t i = 0; i < shell.atoms.size(); ++i) {
        const std::size_t atom = shell.atoms[i];
        for (std::size_t w = 0; w < y.size(); ++w)
            shell.own[ClassOf(atom)].Write(w, shell.place[i], y[w].data() + offsets_[atom]);
    }
    std::vector<SourceRange> ranges;
    for (const SourceClass& sources : shell.own) ranges.push_back({&sources, 0, sources.groups.size()});
    AddScattered(shell.atoms, ranges, x);
}

ClusterWave ScatteringOperator::Emit(std::size_t emitter, const std::vector<std::complex<double>>& table,
                                     std::size_t lSize) {
    const std::size_t largest = std::max(lSize, largestLSize_);
    const std::vector<CoaxialWeights> weights = MakeCoaxialWeights(static_cast<std::int32_t>(largest));
    PairScratch scratch(largest, 1);
    SourceClass source;
    source.lSize = lSize;
    source.groups.resize(1);
    for (std::size_t lane = 0; lane < kTranslationPack; ++lane)
        source.groups[0].Set(lane, scatterers_.positions[emitter]);
    source.waves.assign(1, std::vector<PackedComplex>(lSize * lSize));
    source.Write(0, 0, table.data());

    ClusterWave emitted(WaveSize());
    std::vector<PackedComplex> sum;
    for (std::size_t atom = 0; atom < scatterers_.positions.size(); ++atom) {
        if (atom == emitter) continue;
        const auto& t = scatterers_.t[scatterers_.species[atom]];
        sum.assign(t.size() * t.size(), PackedComplex());
        const PairWave ends = {source.waves[0].data(), sum.data()};
        AddWavesAt(scatterers_.positions[atom], source.groups[0],
                   {&weights, scatterers_.damping, lSize, t.size()}, {&ends, 1}, scratch);
        std::complex<double>* const a = emitted.data() + offsets_[atom];
        SumLanes(sum.data(), t.size(), a);
        for (std::size_t l = 0; l < t.size(); ++l)
            for (std::size_t k = l * l; k < (l + 1) * (l + 1); ++k) a[k] *= t[l];
    }
    return emitted;
}

std::vector<ClusterWave> ScatteringOperator::Scatter(const std::vector<ClusterWave>& x) {
    std::vector<std::size_t> atoms;
    for (const Shell& shell : shells_) atoms.insert(atoms.end(), shell.atoms.begin(), shell.atoms.end());
    WriteSources(atoms, x);
    std::vector<SourceRange> all;
    for (const SourceClass& sources : classes_) all.push_back({&sources, 0, sources.groups.size()});
    std::vector<ClusterWave> result(x.size(), ClusterWave(WaveSize()));
    for (std::size_t first = 0; first < atoms.size(); first += kTargetsTogether) {
        const auto begin = atoms.begin() + static_cast<std::ptrdiff_t>(first);
        const auto end =
            atoms.begin() + static_cast<std::ptrdiff_t>(std::min(first + kTargetsTogether, atoms.size()));
        AddScattered({begin, end}, all, result);
    }
    return result;
}

void ScatteringOperator::SweepOutward(std::vector<ClusterWave>& x) {
    // Places not written yet hold no wave, so a group of sources may reach into later shells.
    for (SourceClass& sources : classes_) sources.Clear();
    for (std::size_t s = 0; s < shells_.size(); ++s) {
        AddScattered(shells_[s].atoms, Earlier(s), x);
        WriteSources(shells_[s].atoms, x);
    }
}

void ScatteringOperator::SweepInward(std::vector<ClusterWave>& x) {
    for (SourceClass& sources : classes_) sources.Clear();
    for (std::size_t s = shells_.size(); s-- > 0;) {
        AddScattered(shells_[s].atoms, Later(s), x);
        WriteSources(shells_[s].atoms, x);
    }
}

std::vector<ClusterWave> ScatteringOperator::ApplyPreconditioned(const std::vector<ClusterWave>& x) {
    std::vector<ClusterWave> y = x;
    SweepInward(y);
    std::vector<ClusterWave> rest(x.size(), ClusterWave(WaveSize()));
    for (Shell& shell : shells_) AddOwnShell(shell, y, rest);
    for (std::size_t w = 0; w < x.size(); ++w)
        for (std::size_t i = 0; i < WaveSize(); ++i) rest[w][i] = x[w][i] - y[w][i] - rest[w][i];
    SweepOutward(rest);
    for (std::size_t w = 0; w < x.size(); ++w)
        for (std::size_t i = 0; i < WaveSize(); ++i) rest[w][i] += y[w][i];
    return rest;
}

double ScatteringOperator::SecondsOfProduct(std::size_t waves) const {
    std::vector<std::size_t> packs(lSizes_.size() * lSizes_.size(), 0);  // by classes of target and source
    for (std::size_t s = 0; s < shells_.size(); ++s) {
        std::vector<SourceRange> ranges = Earlier(s);
        for (const SourceRange& range : Later(s)) ranges.push_back(range);
        for (const SourceClass& own : shells_[s].own) ranges.push_back({&own, 0, own.groups.size()});
        for (const std::size_t atom : shells_[s].atoms)
            for (std::size_t r = 0; r < ranges.size(); ++r)
                packs[ClassOf(atom) * lSizes_.size() + r % lSizes_.size()] += ranges[r].end - ranges[r].begin;
    }
    const std::size_t together = std::min(waves, PairScratch::kWavesTogether);
    PairScratch scratch(largestLSize_, together);
    SourceGroup group;
    for (std::size_t lane = 0; lane < kTranslationPack; ++lane)
        group.Set(lane, {20.0 + static_cast<double>(lane), 10.0, 10.0});
    const std::vector<PackedComplex> sources(largestLSize_ * largestLSize_);
    std::vector<std::vector<PackedComplex>> targets(together, sources);
    double seconds = 0.0;
    for (std::size_t i = 0; i < packs.size(); ++i) {
        if (packs[i] == 0) continue;
        const PairSetting setting = {&weights_, scatterers_.damping, lSizes_[i % lSizes_.size()],
                                     lSizes_[i / lSizes_.size()]};
        std::vector<PairWave> ends;
        ends.reserve(targets.size());
        for (auto& target : targets) ends.push_back({sources.data(), target.data()});
        // The best of some tries: the first one finds cold caches.
        double best = 1e9;
        for (int attempt = 0; attempt < 5; ++attempt) {
            const auto start = std::chrono::steady_clock::now();
            AddWavesAt({0.0, 0.0, 0.0}, group, setting, ends, scratch);
            const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
            best = std::min(best, time.count());
        }
        seconds +=
            best * static_cast<double>(packs[i]) * static_cast<double>(waves) / static_cast<double>(together);
    }
    return seconds;
}

double ScatteringOperator::Bytes() const {
    double packed = 0.0;
    for (const SourceClass& sources : classes_)
        packed += static_cast<double>(sources.groups.size() * sources.lSize * sources.lSize);
    packed *= 2.0 * static_cast<double>(largestWaves_);  // shells hold their own copies
    const double perThread =
        static_cast<double>(largestWaves_ * 6 * largestLSize_ * largestLSize_) * sizeof(PackedComplex);
    return packed * sizeof(PackedComplex) + static_cast<double>(scratch_.size()) * perThread;
}

}  // namespace qvre
