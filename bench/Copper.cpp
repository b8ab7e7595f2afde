#include "Copper.h"

#include <cmath>
#include <map>

#include "foundation/Constants.h"
#include "scattering/ScattererLists.h"
#include "scattering/SphericalHarmonics.h"

using namespace qvre;

namespace copper {
namespace {

constexpr double kEnergy_eV = 800.0;
constexpr double kHalfLattice_angstrom = 3.61 / 2;
constexpr double kRadius_m = 1.2763e-10;
constexpr int kSurface = 2;  // layers above the emitter

ClusterAtom AtomAt(int x, int y, int z) {
    ClusterAtom atom;
    atom.name = "Cu";
    atom.atom = "Cu";
    atom.SetPositionAngstrom(
        Vector3(kHalfLattice_angstrom * x, kHalfLattice_angstrom * y, kHalfLattice_angstrom * z));
    return atom;
}

Structure HalfSpace(std::size_t atoms) {
    const int reach = 3 + static_cast<int>(std::cbrt(static_cast<double>(atoms)));
    std::map<int, std::vector<ClusterAtom>> shells;
    for (int z = -reach; z <= kSurface; ++z)
        for (int y = -reach; y <= reach; ++y)
            for (int x = -reach; x <= reach; ++x)
                if ((x + y + z) % 2 == 0) shells[x * x + y * y + z * z].push_back(AtomAt(x, y, z));
    Structure structure;
    for (const auto& [distance, shell] : shells) {
        if (2 * structure.atoms.size() + shell.size() > 2 * atoms) break;  // nearer to `atoms` without it
        structure.atoms.insert(structure.atoms.end(), shell.begin(), shell.end());
    }
    return structure;
}

/// t_l / 2 of the wave exp(i q.r), whose direction is that from the emitter to the source.
void ScatterPlaneWave(ZfFreeElectron& source, const ZfLComplexMatrix& t) {
    const double* p = source.position.Data();
    const double r = std::sqrt(NormSquared(source.position));
    const auto amplitude = std::polar(1.0 / (source.k * r), source.k * r);
    ZfLmDoubleTable norm;
    ZfLmComplexTable y;
    HarmonicTable(norm, y, t.VectorSize(), std::acos(p[2] / r), std::atan2(p[1], p[0]));
    source.A.SetSize(t.VectorSize());
    std::complex<double> phase = kTwoPi * amplitude;  // 4 pi i^l / 2
    for (std::int32_t l = 0; l < source.A.L; ++l) {
        for (std::int32_t m = -l; m <= l; ++m)
            source.A.At(l, m) = t.VectorValueAt(l) * phase * std::conj(y.At(l, m));
        phase *= std::complex<double>(0.0, 1.0);
    }
}

}  // namespace

ZfPhaseShiftDocument PhaseShifts(std::int32_t lSize) {
    ZfPhaseShiftDocument document;
    PhaseShiftRecord& record = document.records.emplace_back();
    record.Ek_eV = kEnergy_eV;
    record.AtomName = "Cu";
    record.AtomElement = "Cu";
    record.radial.LnX = {std::log(kRadius_m)};
    record.PhaseShiftValue.SetVectorSize(lSize);
    for (std::int32_t l = 0; l < lSize; ++l) {
        const double x = l / 6.0;
        record.PhaseShiftValue.VectorAt(l) = 300.0 * std::exp(-x * x);
    }
    record.CalculateScatteringFactors();
    return document;
}

Cluster ClusterOf(std::size_t atoms) {
    Cluster cluster;
    cluster.structures.push_back(HalfSpace(atoms));
    return cluster;
}

std::vector<EmittedWave> EmittedWaves(std::size_t waves) {
    std::vector<EmittedWave> list(waves);
    for (std::size_t w = 0; w < waves; ++w) {
        const auto m = static_cast<std::int32_t>((w + 1) % 3) - 1;
        list[w].Ek = kEnergy_eV;
        list[w].coeff.SetSize(3);
        if (m == 0) list[w].coeff.At(0, 0) = {0.5, 0.2};
        list[w].coeff.At(2, m) = {-1.0, 1.5};
    }
    return list;
}

ZfScatteringRecord Record(std::size_t atoms, const ZfPhaseShiftDocument& phaseShifts) {
    Cluster cluster = ClusterOf(atoms);
    ZfScatteringData data;
    return AddScatteringRecord(data, cluster, 0, EmittedWaves(2), 1, phaseShifts);
}

ZfScatteringData ScatteredData(std::size_t atoms, std::int32_t lSize) {
    const ZfPhaseShiftDocument phaseShifts = PhaseShifts(lSize);
    ZfScatteringData data;
    data.Version = kMulti;
    data.MultiScattering = 1;
    ZfScatteringRecord& record = data.ListScatteringData.emplace_back(Record(atoms, phaseShifts));
    std::vector<ZfFreeElectron>& electrons = record.ListScatterer.electrons;
    for (std::size_t i = 1; i < electrons.size(); ++i)
        ScatterPlaneWave(electrons[i], phaseShifts.records.front().scatteringFactors);
    record.NextListScatterer = record.ListScatterer;
    return data;
}

Fluctuation RoomTemperature() {
    Fluctuation fluctuation;
    fluctuation.Temperature_K_ = 300.0;
    fluctuation.DebyeElement_ = {"Cu"};
    fluctuation.DebyeTemperature_K_ = {343.0};
    fluctuation.IsUseUisoDebyeModel_ = true;
    return fluctuation;
}

ZfDebye Weights() {
    constexpr std::size_t kCopper = 29;
    ZfDebye debye;
    debye.weights.assign(kCopper + 1, 0.0);
    debye.weights[kCopper] = 63.546;
    return debye;
}

}  // namespace copper
