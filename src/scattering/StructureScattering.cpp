#include "scattering/StructureScattering.h"

#include <omp.h>

#include <algorithm>
#include <atomic>

namespace qvre {

namespace {

/// Packs behind the one at hand whose sources are added as soon as they are ready: enough for the threads,
/// few enough to stay in memory. Later packs get all theirs at once.
constexpr std::size_t kWindow = 64;

/// Atoms finished at a time: enough that a later pack, once in the cache, is given several sources.
constexpr std::size_t kBlock = 8;

}  // namespace

const std::shared_ptr<const ExpansionTables>& ExpansionSettings::Tables(std::int32_t lSize) {
    std::shared_ptr<const ExpansionTables>& entry = tables[lSize];
    if (!entry) entry = std::make_shared<const ExpansionTables>(lSize);
    return entry;
}

ExpandedWave ExpandWave(const ZfVectorFreeElectron& seen, std::int32_t lSize, ExpansionSettings& settings) {
    if (settings.scratch.empty()) settings.scratch.resize(1);
    ExpansionScratch& scratch = settings.scratch.front();
    const std::shared_ptr<const ExpansionTables>& tables = settings.Tables(lSize);
    if (seen.Ek_eV > 0.0) {
        ExpansionPack pack(tables, settings.tolerance, settings.nearTie);
        for (const ZfFreeElectron& source : seen.electrons) {
            const double* const p = source.position.Data();
            pack.Add({{{&source, {p[0], p[1], p[2]}}}}, scratch);
        }
        std::array<ExpandedWave, kTranslationPack> waves;
        if (pack.Expand({true}, waves, scratch)[0]) return std::move(waves[0]);
    }
    return SampleWave(seen, tables, settings.tolerance, scratch);
}

ZfLmComplexTable Scattered(const ZfLmComplexTable& outgoing, const PhaseShiftRecord& phaseShift) {
    ZfLmComplexTable table(outgoing.L);
    std::size_t i = 0;
    for (std::int32_t l = 0; l < outgoing.L; ++l) {
        const std::complex<double> t = phaseShift.scatteringFactors.VectorValueAt(l);
        for (std::int32_t m = -l; m <= l; ++m, ++i) {
            const std::complex<double> a = outgoing.block[i];
            table.block[i] = {t.real() * a.real() - t.imag() * a.imag(),
                              t.imag() * a.real() + t.real() * a.imag()};
        }
    }
    return table;
}

StructureScattering::StructureScattering(std::vector<ZfScatteringRecord> records,
                                         std::vector<std::vector<SeenSources>> seen,
                                         const ZfPhaseShiftDocument& phaseShifts, Order order,
                                         ExpansionSettings& settings)
    : records_(std::move(records)),
      seen_(std::move(seen)),
      phaseShifts_(phaseShifts),
      order_(order),
      settings_(settings) {
    for (const ZfScatteringRecord& record : records_) waves_.emplace_back(record.atomLabels.size());
    for (ZfScatteringRecord& record : records_)
        record.NextListScatterer.electrons.front() = record.ListScatterer.electrons.front();
    settings_.scratch.resize(static_cast<std::size_t>(omp_get_max_threads()));
    if (order_ == Order::kIndependent)
        PlanIndependent();
    else
        PlanSuccessive();
}

const PhaseShiftRecord& StructureScattering::PhaseShift(const Target& target) const {
    const std::int8_t index =
        records_[target.record].phaseShiftIndex.VectorValueAt(static_cast<std::int32_t>(target.atom));
    return phaseShifts_.records[static_cast<std::size_t>(index)];
}

/// Packs the targets of equal l size and depth, those of the most sources first: the depth of an atom is one
/// more than that of the deepest source it sees.
void StructureScattering::PlanIndependent() {
    std::map<std::pair<std::size_t, std::int32_t>, Pack> groups;
    for (std::size_t r = 0; r < records_.size(); ++r) {
        std::vector<std::size_t> depth = {0};
        for (std::size_t atom = 1; atom < seen_[r].size(); ++atom) {
            std::size_t deepest = 0;
            for (const std::int32_t source : seen_[r][atom])
                deepest = std::max(deepest, depth[static_cast<std::size_t>(source)]);
            depth.push_back(deepest + 1);
            groups[{deepest, LSize({r, atom})}].push_back({r, atom});
        }
    }
    for (auto& [key, targets] : groups) {
        std::stable_sort(targets.begin(), targets.end(), [this](const Target& a, const Target& b) {
            return seen_[a.record][a.atom].size() > seen_[b.record][b.atom].size();
        });
        if (steps_.size() <= key.first) steps_.resize(key.first + 1);
        for (std::size_t first = 0; first < targets.size(); first += kTranslationPack)
            steps_[key.first].emplace_back(targets.begin() + static_cast<std::ptrdiff_t>(first),
                                           targets.begin() + static_cast<std::ptrdiff_t>(std::min(
                                                                 first + kTranslationPack, targets.size())));
        settings_.Tables(key.second);
    }
}

/// Packs targets of equal l size in the order of the list.
void StructureScattering::PlanSuccessive() {
    std::map<std::int32_t, std::size_t> open;  // pack by l size
    std::size_t atoms = 0;
    for (const auto& seen : seen_) atoms = std::max(atoms, seen.size());
    for (std::size_t atom = 1; atom < atoms; ++atom) {
        for (std::size_t r = 0; r < records_.size(); ++r) {
            if (atom >= seen_[r].size()) continue;
            const std::int32_t lSize = LSize({r, atom});
            const auto [entry, isNew] = open.try_emplace(lSize, growing_.size());
            if (!isNew && growing_[entry->second].targets.size() == kTranslationPack)
                entry->second = growing_.size();
            if (entry->second == growing_.size()) growing_.emplace_back();
            growing_[entry->second].targets.push_back({r, atom});
            settings_.Tables(lSize);
        }
    }
}

const ScatteredWave* StructureScattering::Wave(std::size_t record, std::size_t atom) {
    if (record >= waves_.size() || atom >= seen_[record].size()) return nullptr;
    const ScatteredWave& wave = waves_[record][atom];
    while (!wave.table)
        if (!Advance()) return nullptr;
    return &wave;
}

bool StructureScattering::Advance() {
    return order_ == Order::kIndependent ? AdvanceIndependent() : AdvanceSuccessive();
}

/// work(i, scratch) for all i below `count`; false if one has thrown. Its atoms are then left without a wave,
/// and whoever needs them computes them again and meets the failure.
template <class Work>
bool StructureScattering::InParallel(std::size_t count, const Work& work) {
    std::atomic<bool> good = true;
    const auto size = static_cast<std::int64_t>(count);
#pragma omp parallel for schedule(dynamic) if (size > 1)
    for (std::int64_t i = 0; i < size; ++i) {
        try {
            work(static_cast<std::size_t>(i),
                 settings_.scratch[static_cast<std::size_t>(omp_get_thread_num())]);
        } catch (...) {
            good = false;
        }
    }
    return good;
}

bool StructureScattering::AdvanceIndependent() {
    if (step_ >= steps_.size()) return false;
    const std::vector<Pack>& packs = steps_[step_++];
    const bool good = InParallel(
        packs.size(), [&](std::size_t i, ExpansionScratch& scratch) { ExpandPack(packs[i], scratch); });
    if (!good) step_ = steps_.size();
    return true;
}

void StructureScattering::ExpandPack(const Pack& pack, ExpansionScratch& scratch) {
    ExpansionPack expansion(settings_.tables.at(LSize(pack.front())), settings_.tolerance, settings_.nearTie);
    std::array<bool, kTranslationPack> chosen{};
    std::size_t sources = 0;
    for (std::size_t lane = 0; lane < pack.size(); ++lane) {
        chosen[lane] = true;
        sources = std::max(sources, seen_[pack[lane].record][pack[lane].atom].size());
    }
    for (std::size_t s = 0; s < sources; ++s) {
        ExpansionPack::Row row;
        for (std::size_t lane = 0; lane < pack.size(); ++lane) {
            const SeenSources& seen = seen_[pack[lane].record][pack[lane].atom];
            if (s < seen.size()) row[lane] = SeenFrom(pack[lane], seen[s]);
        }
        expansion.Add(row, scratch);
    }
    Finish(pack, expansion, chosen, scratch);
    expansion.Release(scratch);
}

/// The atoms of the next packs are finished by one task; the others add to later packs what was finished
/// before.
bool StructureScattering::AdvanceSuccessive() {
    std::size_t first = 0;
    while (first < growing_.size() && growing_[first].targets.back().atom < finished_) ++first;
    if (first == growing_.size()) return false;
    const std::size_t ready = finished_;
    // Packs of other l sizes may end before those in front of them.
    std::size_t last = first;
    std::size_t end = growing_[first].targets.back().atom + 1;
    while (last + 1 < growing_.size() && end < ready + kBlock)
        end = std::max(end, growing_[++last].targets.back().atom + 1);
    std::vector<GrowingPack*> later;
    for (std::size_t p = last + 1; p < std::min(last + kWindow, growing_.size()); ++p)
        if (growing_[p].targets.front().atom >= end) later.push_back(&growing_[p]);
    const bool good = InParallel(later.size() + 1, [&](std::size_t i, ExpansionScratch& scratch) {
        if (i > 0) {
            AddUpTo(*later[i - 1], ready, scratch);
            return;
        }
        for (std::size_t atom = ready; atom < end; ++atom) FinishAtom(atom, scratch);
    });
    finished_ = end;
    for (std::size_t p = first; p < growing_.size() && growing_[p].targets.front().atom < end; ++p)
        if (growing_[p].targets.back().atom < end && growing_[p].expansion) {
            growing_[p].expansion->Release(settings_.scratch.front());
            growing_[p].expansion.reset();
        }
    if (!good) growing_.clear();
    return true;
}

/// Adds the sources before place `end` that the targets of a pack see.
void StructureScattering::AddUpTo(GrowingPack& pack, std::size_t end, ExpansionScratch& scratch) {
    if (!pack.expansion)
        pack.expansion = std::make_unique<ExpansionPack>(settings_.tables.at(LSize(pack.targets.front())),
                                                         settings_.tolerance, settings_.nearTie);
    for (; pack.added < end; ++pack.added) {
        ExpansionPack::Row row;
        for (std::size_t lane = 0; lane < pack.targets.size(); ++lane) {
            const Target& target = pack.targets[lane];
            const SeenSources& seen = seen_[target.record][target.atom];
            const auto source = static_cast<std::int32_t>(pack.added);
            if (std::binary_search(seen.begin(), seen.end(), source)) row[lane] = SeenFrom(target, source);
        }
        pack.expansion->Add(row, scratch);
    }
}

void StructureScattering::FinishAtom(std::size_t atom, ExpansionScratch& scratch) {
    for (GrowingPack& pack : growing_) {
        if (pack.targets.front().atom > atom) break;
        std::array<bool, kTranslationPack> chosen{};
        bool any = false;
        for (std::size_t lane = 0; lane < pack.targets.size(); ++lane)
            any = (chosen[lane] = pack.targets[lane].atom == atom) || any;
        if (!any) continue;
        AddUpTo(pack, atom, scratch);
        Finish(pack.targets, *pack.expansion, chosen, scratch);
    }
}

void StructureScattering::Finish(const Pack& targets, ExpansionPack& expansion,
                                 const std::array<bool, kTranslationPack>& chosen,
                                 ExpansionScratch& scratch) {
    std::array<ExpandedWave, kTranslationPack> expanded;
    const std::array<bool, kTranslationPack> done = expansion.Expand(chosen, expanded, scratch);
    for (std::size_t lane = 0; lane < targets.size(); ++lane) {
        if (!chosen[lane]) continue;
        const Target& target = targets[lane];
        if (!done[lane]) expanded[lane] = Sample(target, scratch);
        ScatteredWave& wave = waves_[target.record][target.atom];
        wave.level = expanded[lane].level;
        wave.emitters = static_cast<std::int32_t>(seen_[target.record][target.atom].size());
        for (std::complex<double>& c : expanded[lane].table.block) c *= 0.5;
        ZfLmComplexTable& table = records_[target.record].NextListScatterer.electrons[target.atom].A;
        table = Scattered(expanded[lane].table, PhaseShift(target));
        wave.table = &table;
    }
}

/// The direct evaluation.
ExpandedWave StructureScattering::Sample(const Target& target, ExpansionScratch& scratch) const {
    ZfVectorFreeElectron seen;
    for (const std::int32_t source : seen_[target.record][target.atom]) {
        const ExpansionPack::Seen entry = SeenFrom(target, source);
        seen.electrons.push_back(*entry.source);
        seen.electrons.back().position =
            Vector3(entry.displacement[0], entry.displacement[1], entry.displacement[2]);
    }
    seen.SetEnergy_eV(records_[target.record].ListScatterer.Ek_eV);
    return SampleWave(seen, settings_.tables.at(LSize(target)), settings_.tolerance, scratch);
}

ExpansionPack::Seen StructureScattering::SeenFrom(const Target& target, std::int32_t source) const {
    const std::vector<ZfFreeElectron>& atoms = records_[target.record].NextListScatterer.electrons;
    const ZfFreeElectron& electron = atoms[static_cast<std::size_t>(source)];
    const double* const r = electron.position.Data();
    const double* const t = atoms[target.atom].position.Data();
    return {&electron, {r[0] - t[0], r[1] - t[1], r[2] - t[2]}};
}

}  // namespace qvre
