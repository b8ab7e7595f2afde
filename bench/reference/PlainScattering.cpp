#include "reference/PlainScattering.h"

#include <cmath>
#include <complex>

#include "foundation/ZfError.h"
#include "reference/PlainExpansion.h"

namespace plain {
namespace {

/// Whether an atom stands within its own radius of the line from the origin to `target`, on the side of the
/// target.
bool StandsNearLine(const ZfFreeElectron& atom, const ZfFreeElectron& target,
                    const PhaseShiftRecord& phaseShift) {
    const std::vector<double>& lnX = phaseShift.radial.LnX;
    const double radius = std::exp(CheckedAt(lnX, static_cast<std::int64_t>(lnX.size()) - 1));
    const double* r = atom.position.Data();
    const double* p = target.position.Data();
    const double d = r[0] * p[0] + r[1] * p[1] + r[2] * p[2];
    const double targetSquared = NormSquared(target.position);
    const double q = NormSquared(atom.position) * targetSquared - d * d - radius * radius * targetSquared;
    return d >= 0.0 && q <= 0.0;
}

/// The emitter and the atoms before the target that it sees, in the frame of the target.
ZfVectorFreeElectron SourcesSeen(const ZfScatteringRecord& record, const std::vector<ZfFreeElectron>& waves,
                                 const ZfPhaseShiftDocument& phaseShifts, ScatteringMethod method,
                                 std::size_t target) {
    ZfVectorFreeElectron local;
    local.electrons.push_back(record.ListScatterer.electrons.front());
    for (std::size_t i = 1; i < target; ++i) {
        const std::int32_t index = record.phaseShiftIndex.VectorValueAt(static_cast<std::int32_t>(i));
        if (method == kSlowMulti ||
            StandsNearLine(waves[i], waves[target], CheckedAt(phaseShifts.records, index)))
            local.electrons.push_back(waves[i]);
    }
    local.electrons.push_back(waves[target]);
    local.SetEnergy_eV(record.ListScatterer.Ek_eV);
    ZfVectorFreeElectron seen;
    local.ShiftOrigin(seen, static_cast<std::int32_t>(local.electrons.size()) - 1);
    seen.SetEnergy_eV(record.ListScatterer.Ek_eV);
    seen.PrepareNorms();
    return seen;
}

}  // namespace

Scattering Scatter(const ZfScatteringRecord& record, const ZfPhaseShiftDocument& phaseShifts,
                   ScatteringMethod method, double tolerance) {
    std::vector<ZfFreeElectron> waves = record.NextListScatterer.electrons;
    waves.front().A.Zero();
    Scattering result;
    result.tables.push_back(waves.front().A);
    result.levels.push_back(0);
    for (std::size_t target = 1; target < waves.size(); ++target) {
        const ZfVectorFreeElectron seen = SourcesSeen(record, waves, phaseShifts, method, target);
        const std::int32_t index = record.phaseShiftIndex.VectorValueAt(static_cast<std::int32_t>(target));
        const ZfLComplexMatrix& t = CheckedAt(phaseShifts.records, index).scatteringFactors;
        const ZfWaveVectorFreeElectron wave(&seen);
        const Expansion expansion = Expand(wave, t.VectorSize(), tolerance);

        // Half of the regular wave comes in; of this t_l goes out.
        ZfLmComplexTable& out = waves[target].A;
        out.SetSize(t.VectorSize());
        for (std::int32_t l = 0; l < out.L; ++l)
            for (std::int32_t m = -l; m <= l; ++m)
                out.At(l, m) = t.VectorValueAt(l) * (0.5 * expansion.coefficients.At(l, m));
        result.tables.push_back(out);
        result.levels.push_back(expansion.level);
    }
    return result;
}

}  // namespace plain
