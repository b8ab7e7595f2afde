#include <algorithm>
#include <cmath>

#include "foundation/Console.h"
#include "foundation/ZfError.h"
#include "scattering/ScattererLists.h"
#include "scattering/ZfScatteringData.h"
#include "xml/ZfBarnFile.h"

namespace {

constexpr double kExpansionRadius_m = 2e-10;

void RefuseLaterPasses(std::int32_t muIndex) {
    if (muIndex != 0) throw ZfError("This is not support full multi-scattering calc.");
}

void ClearTable(ZfFreeElectron& source, std::int32_t size) {
    source.A.SetSize(size);
    source.A.Zero();
}

const ZfPhaseShiftRecord& PhaseShiftOf(const ZfScatteringRecord& record,
                                       const ZfPhaseShiftDocument& phaseShifts, std::int32_t entry) {
    return CheckedAt(phaseShifts.records, record.phaseShiftIndex.VectorValueAt(entry));
}

/// Whether an atom stands within its own radius of the line from the origin of the coordinates to `target`,
/// on the side of the target: the atoms that matter for the forward scattering of fast electrons.
bool StandsNearLine(const ZfLDoubleMatrix& atom, const ZfLDoubleMatrix& target, double targetSquared,
                    const ZfPhaseShiftRecord& phaseShift) {
    const std::vector<double>& lnX = phaseShift.radial.LnX;
    const double radius = std::exp(CheckedAt(lnX, static_cast<std::int64_t>(lnX.size()) - 1));
    const double* r = atom.Data();
    const double* p = target.Data();
    const double d = r[0] * p[0] + r[1] * p[1] + r[2] * p[2];
    if (0.0 > d) return false;
    const double q = NormSquared(atom) * targetSquared - d * d - radius * radius * targetSquared;
    return !(q > 0.0);
}

void PrintLoop(const char* name, std::int32_t index, std::int32_t count) {
    ConsoleLine(name + std::to_string(index) + "/" + std::to_string(count));
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

void ZfScatteringData::Calculate(ZfNotifyTerminate& notifier, ZfCluster& cluster,
                                 const std::vector<ZfEmittedWave>& waves,
                                 const ZfPhaseShiftDocument& phaseShifts) {
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

void ZfScatteringData::CalculateSingle(ZfScatteringRecord& record, const ZfPhaseShiftDocument& phaseShifts,
                                       std::int32_t muIndex, std::int32_t atIndex) {
    RefuseLaterPasses(muIndex);
    if (atIndex == 0) {
        // Size 1 whatever the emitted wave has: the end of the pass then refuses a larger one.
        ClearTable(record.NextListScatterer.electrons.front(), 1);
        return;
    }
    const std::vector<ZfFreeElectron>& now = record.ListScatterer.electrons;
    ZfVectorFreeElectron local;
    local.electrons = {now.front(), now[static_cast<std::size_t>(atIndex)]};
    ScatterLast(local, record, phaseShifts, atIndex);
}

void ZfScatteringData::CalculateSlowMulti(ZfScatteringRecord& record, const ZfPhaseShiftDocument& phaseShifts,
                                          std::int32_t muIndex, std::int32_t atIndex) {
    RefuseLaterPasses(muIndex);
    const std::vector<ZfFreeElectron>& now = record.ListScatterer.electrons;
    std::vector<ZfFreeElectron>& next = record.NextListScatterer.electrons;
    if (atIndex == 0) {
        ClearTable(next.front(), now.front().A.L);
        return;
    }
    ZfVectorFreeElectron local;
    local.electrons.push_back(now.front());
    local.electrons.insert(local.electrons.end(), next.begin() + 1, next.begin() + atIndex + 1);
    ScatterLast(local, record, phaseShifts, atIndex);
}

void ZfScatteringData::OneCalculateVer2(ZfScatteringRecord& record, const ZfPhaseShiftDocument& phaseShifts,
                                        std::int32_t muIndex, std::int32_t atIndex) {
    ConsolePrint("OneCalculateVer2: start\n");
    RefuseLaterPasses(muIndex);
    targetEnergy = record.ListScatterer.Ek_eV;
    const std::vector<ZfFreeElectron>& now = record.ListScatterer.electrons;
    std::vector<ZfFreeElectron>& next = record.NextListScatterer.electrons;
    if (atIndex == 0) {
        next.front() = now.front();
        next.front().A.Zero();
        return;
    }
    const ZfLDoubleMatrix& target = now[static_cast<std::size_t>(atIndex)].position;
    const double targetSquared = NormSquared(target);
    ConsolePrint("Target atom positoin(r2)(x,y,z)=(%g)(%g,%g,%g)\n", targetSquared, target.Data()[0],
                 target.Data()[1], target.Data()[2]);
    ZfVectorFreeElectron local;
    local.electrons.push_back(now.front());
    for (std::int32_t i = 1; i < atIndex; ++i) {
        const ZfFreeElectron& candidate = next[static_cast<std::size_t>(i)];
        if (StandsNearLine(candidate.position, target, targetSquared, PhaseShiftOf(record, phaseShifts, i)))
            local.electrons.push_back(candidate);
    }
    local.electrons.push_back(next[static_cast<std::size_t>(atIndex)]);
    ScatterLast(local, record, phaseShifts, atIndex);
}

/// Scatters at the last entry of `local` the waves of the others.
void ZfScatteringData::ScatterLast(ZfVectorFreeElectron& local, ZfScatteringRecord& record,
                                   const ZfPhaseShiftDocument& phaseShifts, std::int32_t atIndex) {
    local.SetEnergy_eV(record.ListScatterer.Ek_eV);
    ZfVectorFreeElectron seen;
    local.ShiftOrigin(seen, static_cast<std::int32_t>(local.electrons.size()) - 1);
    seen.SetEnergy_eV(record.ListScatterer.Ek_eV);
    ScatterAtAtom(record.NextListScatterer.electrons[static_cast<std::size_t>(atIndex)], seen,
                  PhaseShiftOf(record, phaseShifts, atIndex));
}

void ZfScatteringData::ScatterAtAtom(ZfFreeElectron& target, const ZfVectorFreeElectron& seen,
                                     const ZfPhaseShiftRecord& phaseShift) {
    ZfFreeElectron temporary;
    ExpandAroundOrigin(temporary, seen, phaseShift);
    ApplyPhaseShift(target, temporary, phaseShift);
}

void ZfScatteringData::ExpandAroundOrigin(ZfFreeElectron& temporary, const ZfVectorFreeElectron& seen,
                                          const ZfPhaseShiftRecord& phaseShift) {
    const ZfWaveVectorFreeElectron wave(&seen);
    currentEmitters = static_cast<std::int32_t>(seen.electrons.size());
    ConsolePrint("Current N Emitter=%d\n", currentEmitters);
    CurrSize_l_ = phaseShift.scatteringFactors.VectorSize();
    if (CurrSize_l_ <= 0) throw ZfError("Please set CurrSize_l_");
    if (wave.WaveNumber() == 0.0) throw ZfError("A wave of zero energy cannot be scattered");

    ZfSphereExpansion& expansion = expansions_[CurrSize_l_];
    expansion.tolerance = EPS;
    expansion.lSize = CurrSize_l_;
    ZfLmComplexTable table;
    expansion.Expand(table, wave, kExpansionRadius_m);
    for (std::complex<double>& c : table.block) c *= 0.5;

    temporary.SetEnergy_eV(wave.KineticEnergy());
    temporary.position = Vector3(0.0, 0.0, 0.0);
    temporary.A = table;
    temporary.B = table;
    lastLevel = expansion.level;
    firstGroupKr = seen.electrons.front().k * expansion.grid.groupRadius.front();
}

void ZfScatteringData::ApplyPhaseShift(ZfFreeElectron& target, const ZfFreeElectron& temporary,
                                       const ZfPhaseShiftRecord& phaseShift) const {
    ClearTable(target, CurrSize_l_);
    for (std::int32_t l = 0; l < CurrSize_l_; ++l) {
        const std::complex<double> t = phaseShift.scatteringFactors.VectorValueAt(l);
        for (std::int32_t m = -l; m <= l; ++m) {
            const std::complex<double> a = temporary.A.At(l, m);
            target.A.At(l, m) = {t.real() * a.real() - t.imag() * a.imag(),
                                 t.imag() * a.real() + t.real() * a.imag()};
        }
    }
}
