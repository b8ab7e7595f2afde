#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "scattering/ExpansionTables.h"
#include "scattering/LevelSynthesis.h"
#include "scattering/WaveTranslation.h"
#include "scattering/ZfSphereExpansion.h"

namespace qvre {

/// What a thread needs to expand waves; kept from one pack to the next.
struct ExpansionScratch {
    ZfSphereExpansion& Direct(const std::shared_ptr<const ExpansionTables>& tables);

    TranslationGeometry geometry;
    PackedTable sources;
    TranslationScratch translation;
    LevelSynthesis synthesis;
    PackedTable integral;
    PackedTable before;
    PackedTable result;
    std::vector<PackedTable> spare;                    ///< tables of packs that are done
    std::map<std::int32_t, ZfSphereExpansion> direct;  ///< by l size
};

/// An expanded wave, sum of table(l,m) j_l Y_lm, and how it ended.
struct ExpandedWave {
    ZfLmComplexTable table;
    std::int32_t level = 0;
    double lastError = -1.0;
};

/// The waves around eight targets of one l size, expanded as ZfSphereExpansion does it, by the same
/// quadrature with the same levels. Sources are translated to the targets instead of being sampled, and the
/// integrals of the levels synthesised; a source that is too near for that is sampled, and its integrals
/// added.
class ExpansionPack {
public:
    /// A source as a target sees it; none where the target sees no further one.
    struct Seen {
        const ZfFreeElectron* source = nullptr;
        std::array<double, 3> displacement{};  ///< m, from the target to the source
    };
    using Row = std::array<Seen, kTranslationPack>;

    /// `nearTie`: relative distance of an error from the tolerance within which the translated wave may
    /// decide otherwise than the sampled one. Infinite: always, so that nothing is translated.
    ExpansionPack(std::shared_ptr<const ExpansionTables> tables, double tolerance, double nearTie);

    /// Adds one source to each target.
    void Add(const Row& row, ExpansionScratch& scratch);

    /// Ends the pack and leaves its memory to later ones.
    void Release(ExpansionScratch& scratch) { scratch.spare.push_back(std::move(waves_)); }

    /// Expands the waves of the chosen targets, as far as their sources are added. The sources of a row must
    /// still be there. False for a target that has to be sampled: all its sources are near, or a decision is
    /// so close that the rounding of the translation might turn it.
    std::array<bool, kTranslationPack> Expand(const std::array<bool, kTranslationPack>& chosen,
                                              std::array<ExpandedWave, kTranslationPack>& waves,
                                              ExpansionScratch& scratch);

private:
    class SampledPart;

    std::int32_t LargestOrderFor(std::int32_t lSize) const;
    std::int32_t OrderOf(std::size_t lane, const ZfFreeElectron& source,
                         const ExpansionScratch& scratch) const;

    std::shared_ptr<const ExpansionTables> tables_;
    double tolerance_;
    double nearTie_;
    bool nothingTranslated_;
    PackedTable waves_;                                        ///< c(L,M) kOrderScale^L of all sources so far
    std::vector<std::int32_t> orders_;                         ///< by group: to which order they count
    std::array<bool, kTranslationPack> translated_{};          ///< targets with a translated source
    std::array<std::vector<Seen>, kTranslationPack> sampled_;  ///< sources that are too near
};

/// The same for one target, by sampling alone.
ExpandedWave SampleWave(const ZfVectorFreeElectron& seen,
                        const std::shared_ptr<const ExpansionTables>& tables, double tolerance,
                        ExpansionScratch& scratch);

}  // namespace qvre
