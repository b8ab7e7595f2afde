#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "foundation/Console.h"
#include "foundation/ZfError.h"
#include "scattering/ScattererLists.h"
#include "scattering/ZfScatteringData.h"
#include "xml/ZfBarnFile.h"

using namespace qvre;

namespace {

void RefuseLaterPasses(std::int32_t muIndex) {
    if (muIndex != 0) throw ZfError("This is not support full multi-scattering calc.");
}

void ClearTable(ZfFreeElectron& source, std::int32_t size) {
    source.A.SetSize(size);
    source.A.Zero();
}

const PhaseShiftRecord& PhaseShiftOf(const ZfScatteringRecord& record,
                                     const ZfPhaseShiftDocument& phaseShifts, std::int32_t entry) {
    return CheckedAt(phaseShifts.records, record.phaseShiftIndex.VectorValueAt(entry));
}

/// Square of the radius at which the phase shifts of an entry end.
double RadiusSquaredOf(const ZfScatteringRecord& record, const ZfPhaseShiftDocument& phaseShifts,
                       std::int32_t entry) {
    const std::vector<double>& lnX = PhaseShiftOf(record, phaseShifts, entry).radial.LnX;
    const double radius = std::exp(CheckedAt(lnX, static_cast<std::int64_t>(lnX.size()) - 1));
    return radius * radius;
}

/// Whether an atom stands within its own radius of the line from the origin of the coordinates to `target`,
/// on the side of the target: the atoms that matter for the forward scattering of fast electrons.
bool StandsNearLine(const ZfLDoubleMatrix& atom, const ZfLDoubleMatrix& target, double targetSquared,
                    double radiusSquared) {
    const double* r = atom.Data();
    const double* p = target.Data();
    const double d = r[0] * p[0] + r[1] * p[1] + r[2] * p[2];
    if (0.0 > d) return false;
    const double q = NormSquared(atom) * targetSquared - d * d - radiusSquared * targetSquared;
    return !(q > 0.0);
}

void PrintLoop(const char* name, std::int32_t index, std::int32_t count) {
    ConsoleLine(name + std::to_string(index) + "/" + std::to_string(count));
}

/// The sources that an entry sees by a method, those excepted that stand exactly where it does. For entries
/// in rising order.
class SourceFinder {
public:
    SourceFinder(std::int32_t method, const ZfScatteringRecord& record,
                 const ZfPhaseShiftDocument& phaseShifts)
        : method_(method), record_(record), phaseShifts_(phaseShifts) {}
    SeenSources SourcesOf(std::int32_t at);

private:
    std::int32_t method_;
    const ZfScatteringRecord& record_;
    const ZfPhaseShiftDocument& phaseShifts_;
    std::vector<double> radiiSquared_ = {0.0};
};

SeenSources SourceFinder::SourcesOf(std::int32_t at) {
    const std::vector<ZfFreeElectron>& atoms = record_.NextListScatterer.electrons;
    while (method_ == kMulti && std::ssize(radiiSquared_) < at)
        radiiSquared_.push_back(
            RadiusSquaredOf(record_, phaseShifts_, static_cast<std::int32_t>(radiiSquared_.size())));
    const ZfLDoubleMatrix& target = atoms[static_cast<std::size_t>(at)].position;
    const double targetSquared = NormSquared(target);
    SeenSources seen = {0};
    for (std::int32_t i = 1; i < at && method_ != kSingle; ++i) {
        const auto entry = static_cast<std::size_t>(i);
        if (method_ == kSlowMulti ||
            StandsNearLine(atoms[entry].position, target, targetSquared, radiiSquared_[entry]))
            seen.push_back(i);
    }
    std::erase_if(seen, [&](std::int32_t i) {
        return std::equal(target.Data(), target.Data() + 3,
                          atoms[static_cast<std::size_t>(i)].position.Data());
    });
    return seen;
}

/// Whether the atoms of two records see the same sources: same places, same phase shifts.
bool SeeTheSame(const ZfScatteringRecord& a, const ZfScatteringRecord& b) {
    const std::vector<ZfFreeElectron>& atoms = a.NextListScatterer.electrons;
    const std::vector<ZfFreeElectron>& others = b.NextListScatterer.electrons;
    const auto samePlace = [](const ZfFreeElectron& p, const ZfFreeElectron& q) {
        return std::equal(p.position.Data(), p.position.Data() + 3, q.position.Data());
    };
    const auto count = static_cast<std::int32_t>(a.atomLabels.size());
    if (a.ListScatterer.Ek_eV != b.ListScatterer.Ek_eV || a.atomLabels.size() != b.atomLabels.size() ||
        !std::equal(atoms.begin(), atoms.end(), others.begin(), others.end(), samePlace))
        return false;
    for (std::int32_t at = 1; at < count; ++at)
        if (a.phaseShiftIndex.VectorValueAt(at) != b.phaseShiftIndex.VectorValueAt(at)) return false;
    return true;
}

/// By atom, up to the first that cannot be computed: whoever comes to that one meets the failure.
std::vector<SeenSources> SourcesOfAll(std::int32_t method, const ZfScatteringRecord& record,
                                      const ZfPhaseShiftDocument& phaseShifts) {
    std::vector<SeenSources> all = {{}};
    if (!(record.ListScatterer.Ek_eV > 0.0)) return all;
    SourceFinder finder(method, record, phaseShifts);
    try {
        for (std::int32_t at = 1; at < std::ssize(record.atomLabels); ++at) {
            SeenSources seen = finder.SourcesOf(at);
            if (seen.empty() || PhaseShiftOf(record, phaseShifts, at).scatteringFactors.VectorSize() <= 0)
                break;
            all.push_back(std::move(seen));
        }
    } catch (const ZfError&) {
        // told when its turn comes
    } catch (const std::out_of_range&) {
        // so is a record without a radius
    }
    return all;
}

/// Puts the emitted wave back on entry 0 and takes over the waves of this pass.
void FinishPass(ZfScatteringRecord& record) {
    const ZfLmComplexTable& emitted = record.ListScatterer.electrons.front().A;
    ZfLmComplexTable& next = record.NextListScatterer.electrons.front().A;
    for (std::int32_t l = 0; l < emitted.L; ++l)
        for (std::int32_t m = -l; m <= l; ++m) next.At(l, m) += emitted.At(l, m);
    record.ListScatterer = record.NextListScatterer;
}

}  // namespace

void ZfScatteringData::Calculate(ZfNotifyTerminate& notifier, Cluster& cluster,
                                 const std::vector<EmittedWave>& waves,
                                 const ZfPhaseShiftDocument& phaseShifts) {
    struct Release {
        ~Release() { structure.reset(); }
        std::shared_ptr<StructureScattering>& structure;
    } const release{structure_};
    EWCount = static_cast<std::int32_t>(waves.size());
    StCount = static_cast<std::int32_t>(cluster.structures.size());
    AtCount = 0;
    MuCount = MultiScattering;
    ListScatteringData.clear();
    for (StIndex = 0; StIndex < StCount; ++StIndex) {
        PrintLoop("StIndex", StIndex, StCount);
        for (EWIndex = 0; EWIndex < EWCount; ++EWIndex) {
            PrintLoop("EWIndex", EWIndex, EWCount);
            ZfScatteringRecord& record =
                AddScatteringRecord(*this, cluster, StIndex, waves, EWIndex, phaseShifts);
            AtCount = static_cast<std::int32_t>(record.atomLabels.size());
            ConsoleLine("EXIT add scattering data");
            if (EWIndex == 0) PlanStructure(cluster, waves, phaseShifts);
            for (MuIndex = 0; MuIndex < MuCount; ++MuIndex) {
                PrintLoop("MulIndex:", MuIndex, MuCount);
                for (AtIndex = 0; AtIndex < AtCount; ++AtIndex) {
                    ConsolePrint("StIndex: %d/%d, EWIndex: %d/%d, MuIndex: %d/%d, AtIndex: %d / %d\n",
                                 StIndex + 1, StCount, EWIndex + 1, EWCount, MuIndex + 1, MuCount,
                                 AtIndex + 1, AtCount);
                    if (notifier.IsTerminated()) return;
                    if (Version == kSingle) CalculateSingle(record, phaseShifts, MuIndex, AtIndex);
                    if (Version == kSlowMulti) CalculateSlowMulti(record, phaseShifts, MuIndex, AtIndex);
                    if (Version == kMulti) OneCalculateVer2(record, phaseShifts, MuIndex, AtIndex);
                }
                FinishPass(record);
            }
        }
    }
    if (fileName.empty()) return;
    ZfBarnFile file(fileName, "w");
    Exchange(file);
    file.Save();
}

/// Makes ready to compute all waves of the structure at hand together, from the records as they will come.
void ZfScatteringData::PlanStructure(Cluster& cluster, const std::vector<EmittedWave>& waves,
                                     const ZfPhaseShiftDocument& phaseShifts) {
    structure_.reset();
    if (Version != kSingle && Version != kSlowMulti && Version != kMulti) return;
    std::vector<ZfScatteringRecord> records = {ListScatteringData.back()};
    std::vector<std::vector<SeenSources>> seen;
    // Every record sorts the atoms anew, which by depth may change their order again.
    std::vector<ClusterAtom>& atoms = CheckedAt(cluster.structures, StIndex).atoms;
    const std::vector<ClusterAtom> order = atoms;
    try {
        ZfScatteringData rest;
        rest.atomOrder = atomOrder;
        for (std::int32_t w = 1; w < EWCount; ++w)
            records.push_back(std::move(AddScatteringRecord(rest, cluster, StIndex, waves, w, phaseShifts)));
    } catch (const ZfError&) {
        // told when its turn comes
    }
    atoms = order;
    seen.reserve(records.size());
    for (const ZfScatteringRecord& record : records)
        seen.push_back(!seen.empty() && SeeTheSame(record, records.front())
                           ? seen.front()
                           : SourcesOfAll(Version, record, phaseShifts));
    settings_.tolerance = EPS;
    settings_.nearTie = nearTie;
    structure_ = std::make_shared<StructureScattering>(std::move(records), std::move(seen), phaseShifts,
                                                       Version == kSlowMulti
                                                           ? StructureScattering::Order::kSuccessive
                                                           : StructureScattering::Order::kIndependent,
                                                       settings_);
}

void ZfScatteringData::CalculateSingle(ZfScatteringRecord& record, const ZfPhaseShiftDocument& phaseShifts,
                                       std::int32_t muIndex, std::int32_t atIndex) {
    RefuseLaterPasses(muIndex);
    if (atIndex == 0) {
        // Size 1 whatever the emitted wave has: the end of the pass then refuses a larger one.
        ClearTable(record.NextListScatterer.electrons.front(), 1);
        return;
    }
    ScatterAtEntry(kSingle, record, phaseShifts, atIndex);
}

void ZfScatteringData::CalculateSlowMulti(ZfScatteringRecord& record, const ZfPhaseShiftDocument& phaseShifts,
                                          std::int32_t muIndex, std::int32_t atIndex) {
    RefuseLaterPasses(muIndex);
    if (atIndex == 0) {
        ClearTable(record.NextListScatterer.electrons.front(), record.ListScatterer.electrons.front().A.L);
        return;
    }
    ScatterAtEntry(kSlowMulti, record, phaseShifts, atIndex);
}

void ZfScatteringData::OneCalculateVer2(ZfScatteringRecord& record, const ZfPhaseShiftDocument& phaseShifts,
                                        std::int32_t muIndex, std::int32_t atIndex) {
    ConsolePrint("OneCalculateVer2: start\n");
    RefuseLaterPasses(muIndex);
    targetEnergy = record.ListScatterer.Ek_eV;
    const std::vector<ZfFreeElectron>& now = record.ListScatterer.electrons;
    if (atIndex == 0) {
        ZfFreeElectron& emitter = record.NextListScatterer.electrons.front();
        emitter = now.front();
        emitter.A.Zero();
        return;
    }
    const ZfLDoubleMatrix& target = now[static_cast<std::size_t>(atIndex)].position;
    ConsolePrint("Target atom positoin(r2)(x,y,z)=(%g)(%g,%g,%g)\n", NormSquared(target), target.Data()[0],
                 target.Data()[1], target.Data()[2]);
    ScatterAtEntry(kMulti, record, phaseShifts, atIndex);
}

/// Scatters at an atom what it sees by a method: as computed together with the other atoms of the structure,
/// or this one alone.
void ZfScatteringData::ScatterAtEntry(std::int32_t method, ZfScatteringRecord& record,
                                      const ZfPhaseShiftDocument& phaseShifts, std::int32_t atIndex) {
    ZfFreeElectron& target = record.NextListScatterer.electrons[static_cast<std::size_t>(atIndex)];
    const ScatteredWave* const wave = structure_ ? structure_->Wave(static_cast<std::size_t>(record.EWIndex),
                                                                    static_cast<std::size_t>(atIndex))
                                                 : nullptr;
    if (wave) {
        TellEmitters(wave->emitters);
        CurrSize_l_ = wave->table->L;
        lastLevel = wave->level;
        const double k = record.ListScatterer.electrons.front().k;
        firstGroupKr = k * (settings_.Tables(CurrSize_l_)->grid.groupKr.front() / k);
        target.A = *wave->table;
        return;
    }
    const SeenSources sources = SourceFinder(method, record, phaseShifts).SourcesOf(atIndex);
    const PhaseShiftRecord& phaseShift = PhaseShiftOf(record, phaseShifts, atIndex);
    ZfVectorFreeElectron local;
    for (const std::int32_t i : sources)
        local.electrons.push_back(i == 0 ? record.ListScatterer.electrons.front()
                                         : record.NextListScatterer.electrons[static_cast<std::size_t>(i)]);
    local.electrons.push_back(target);
    local.SetEnergy_eV(record.ListScatterer.Ek_eV);
    ZfVectorFreeElectron seen;
    local.ShiftOrigin(seen, static_cast<std::int32_t>(local.electrons.size()) - 1);
    seen.SetEnergy_eV(record.ListScatterer.Ek_eV);
    ScatterAtAtom(target, seen, phaseShift);
}

void ZfScatteringData::TellEmitters(std::int32_t count) {
    currentEmitters = count;
    ConsolePrint("Current N Emitter=%d\n", currentEmitters);
}

void ZfScatteringData::ScatterAtAtom(ZfFreeElectron& target, const ZfVectorFreeElectron& seen,
                                     const PhaseShiftRecord& phaseShift) {
    ZfFreeElectron temporary;
    ExpandAroundOrigin(temporary, seen, phaseShift);
    ApplyPhaseShift(target, temporary, phaseShift);
}

void ZfScatteringData::ExpandAroundOrigin(ZfFreeElectron& temporary, const ZfVectorFreeElectron& seen,
                                          const PhaseShiftRecord& phaseShift) {
    const ZfWaveVectorFreeElectron wave(&seen);
    TellEmitters(static_cast<std::int32_t>(seen.electrons.size()));
    CurrSize_l_ = phaseShift.scatteringFactors.VectorSize();
    if (CurrSize_l_ <= 0) throw ZfError("Please set CurrSize_l_");
    if (wave.WaveNumber() == 0.0) throw ZfError("A wave of zero energy cannot be scattered");

    settings_.tolerance = EPS;
    settings_.nearTie = nearTie;
    ExpandedWave expanded = ExpandWave(seen, CurrSize_l_, settings_);
    for (std::complex<double>& c : expanded.table.block) c *= 0.5;

    temporary.SetEnergy_eV(wave.KineticEnergy());
    temporary.position = Vector3(0.0, 0.0, 0.0);
    temporary.A = expanded.table;
    temporary.B = expanded.table;
    lastLevel = expanded.level;
    const double k = seen.electrons.front().k;
    firstGroupKr = k * (settings_.Tables(CurrSize_l_)->grid.groupKr.front() / k);
}

void ZfScatteringData::ApplyPhaseShift(ZfFreeElectron& target, const ZfFreeElectron& temporary,
                                       const PhaseShiftRecord& phaseShift) const {
    target.A = Scattered(temporary.A, phaseShift);
}
