#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "input/ZfPhaseShiftDocument.h"
#include "scattering/ExpansionPack.h"
#include "scattering/ZfScatteringRecord.h"

namespace qvre {

/// Relative distance of an error from the tolerance within which a wave is sampled instead of translated:
/// rounding moves errors by some 1e-10.
constexpr double kNearTie = 1e-8;

/// Settings and tables of the expansions of a run.
struct ExpansionSettings {
    const std::shared_ptr<const ExpansionTables>& Tables(std::int32_t lSize);

    double tolerance = 0.01;
    double nearTie = kNearTie;
    std::map<std::int32_t, std::shared_ptr<const ExpansionTables>> tables;  ///< by l size
    std::vector<ExpansionScratch> scratch;                                  ///< by thread
};

/// What an atom sends out under the wave around it.
struct ScatteredWave {
    const ZfLmComplexTable* table = nullptr;  ///< null while it is still to come
    std::int32_t level = 0;
    std::int32_t emitters = 0;  ///< sources that the atom sees
};

/// Outgoing table of an atom, t_l a(l,m), of the outgoing half a = c/2 of the wave around it, sum c j_l Y_lm.
ZfLmComplexTable Scattered(const ZfLmComplexTable& outgoing, const PhaseShiftRecord& phaseShift);

/// Expands the wave of a list around its origin. Throws ZfError if it is not finite.
ExpandedWave ExpandWave(const ZfVectorFreeElectron& seen, std::int32_t lSize, ExpansionSettings& settings);

/// The sources that an atom of a record sees, as places in its list, in rising order; 0, the emitter, is one
/// of them. Throws ZfError.
using SeenSources = std::vector<std::int32_t>;

/// All emitted waves of one structure: expands the waves around many atoms side by side, eight in a pack, and
/// packs in parallel. The results have the same bits for any number of threads.
class StructureScattering {
public:
    enum class Order {
        kIndependent,  ///< an atom waits for the sources that it sees
        kSuccessive    ///< an atom sees all before it: its sources are added as they get ready
    };

    /// `records` as they stand before the pass, one an emitted wave, of the same atoms; `seen` by wave and
    /// atom, up to the first atom whose sources cannot be told.
    StructureScattering(std::vector<ZfScatteringRecord> records, std::vector<std::vector<SeenSources>> seen,
                        const ZfPhaseShiftDocument& phaseShifts, Order order, ExpansionSettings& settings);

    /// The scattered wave of an atom, 1 and up; computes what it takes. Null where that has failed.
    const ScatteredWave* Wave(std::size_t record, std::size_t atom);

private:
    struct Target {
        std::size_t record;
        std::size_t atom;
    };
    using Pack = std::vector<Target>;
    struct GrowingPack {
        Pack targets;
        std::unique_ptr<ExpansionPack> expansion;
        std::size_t added = 0;  ///< sources added: those before this place
    };

    void PlanIndependent();
    void PlanSuccessive();
    bool Advance();
    bool AdvanceIndependent();
    bool AdvanceSuccessive();
    void AddUpTo(GrowingPack& pack, std::size_t end, ExpansionScratch& scratch);
    void FinishAtom(std::size_t atom, ExpansionScratch& scratch);
    void ExpandPack(const Pack& pack, ExpansionScratch& scratch);
    void Finish(const Pack& targets, ExpansionPack& expansion,
                const std::array<bool, kTranslationPack>& chosen, ExpansionScratch& scratch);
    ExpandedWave Sample(const Target& target, ExpansionScratch& scratch) const;
    ExpansionPack::Seen SeenFrom(const Target& target, std::int32_t source) const;
    const PhaseShiftRecord& PhaseShift(const Target& target) const;
    std::int32_t LSize(const Target& target) const {
        return PhaseShift(target).scatteringFactors.VectorSize();
    }
    template <class Work>
    bool InParallel(std::size_t count, const Work& work);

    std::vector<ZfScatteringRecord> records_;
    std::vector<std::vector<SeenSources>> seen_;
    const ZfPhaseShiftDocument& phaseShifts_;
    Order order_;
    ExpansionSettings& settings_;
    std::vector<std::vector<ScatteredWave>>
        waves_;                             ///< by record and atom; their tables stand in the records
    std::vector<std::vector<Pack>> steps_;  ///< independent: packs whose sources are ready at that step
    std::size_t step_ = 0;
    std::vector<GrowingPack> growing_;  ///< successive: in the order of their first atoms
    std::size_t finished_ = 1;          ///< successive: atoms before this one have their waves
};

}  // namespace qvre
