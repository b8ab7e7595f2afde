#include "scattering/ScattererLists.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/Constants.h"
#include "foundation/Truncate.h"
#include "foundation/ZfError.h"
#include "input/ZfAtomName.h"
#include "scattering/SphericalHarmonics.h"

using namespace qvre;

namespace {

constexpr double kAtOriginSquared_m2 = 1e-22;
constexpr double kOriginKey = -10000.0;

double IsotropicDisplacement(const ZfLDoubleMatrix& u) {
    if (u.Count() == 0) return 0.0;
    if (u.Count() != 1) throw ZfError("U aniso is not supported");
    return *u.Data();
}

ZfFreeElectron SourceAt(const ClusterAtom& atom) {
    ZfFreeElectron source;
    source.SetEnergy_eV(0.0);
    source.position = atom.position;
    ZfAtomName element;
    element.SetName(atom.atom);
    source.atomicNumber = element.GetAtomicNumber();
    source.Uiso = IsotropicDisplacement(atom.U);
    return source;
}

void SortForWave(std::vector<ClusterAtom>& atoms, const EmittedWave& wave, std::int32_t atomOrder) {
    if (wave.IsPlaneWave) {
        const double theta = Radians(wave.PlaneWaveBeta_deg);
        const double phi = Radians(wave.PlaneWaveGamma_deg);
        SortAtomsAlongWave(atoms, Vector3(std::cos(phi) * std::sin(theta), std::sin(phi) * std::sin(theta),
                                          std::cos(theta)));
    } else if (atomOrder == 0) {
        SortAtomsByDistance(atoms);
    } else if (atomOrder == 1) {
        SortAtomsByDepth(atoms);
    }
}

/// Truncates to a 32-bit integer after every addition, as lengths were once summed; with metres it comes to
/// 0.
std::int32_t TruncatedMean(const std::vector<ClusterAtom>& atoms, std::int32_t axis) {
    std::int32_t sum = 0;
    for (std::size_t i = 1; i < atoms.size(); ++i)
        sum = TruncateToInt32(sum + atoms[i].position.VectorValueAt(axis));
    return sum / (static_cast<std::int32_t>(atoms.size()) - 1);
}

}  // namespace

ZfScatteringRecord& AddScatteringRecord(ZfScatteringData& data, Cluster& cluster, std::int32_t stIndex,
                                        const std::vector<EmittedWave>& waves, std::int32_t ewIndex,
                                        const ZfPhaseShiftDocument& phaseShifts) {
    ZfScatteringRecord& record = data.ListScatteringData.emplace_back();
    SetListFromCluster(record, cluster, waves, stIndex, data.atomOrder);
    SetEmittedWave(record, waves, ewIndex);
    SetPhaseShiftIndex(record, phaseShifts);
    return record;
}

void SetListFromCluster(ZfScatteringRecord& record, Cluster& cluster, const std::vector<EmittedWave>& waves,
                        std::int32_t stIndex, std::int32_t atomOrder) {
    record.StIndex = stIndex;
    std::vector<ClusterAtom>& atoms = CheckedAt(cluster.structures, stIndex).atoms;
    if (waves.empty()) throw ZfError("Emitted wave is not defined");
    SortForWave(atoms, waves.front(), atomOrder);
    record.ListScatterer.electrons.clear();
    record.atomLabels.clear();
    for (const ClusterAtom& atom : atoms) {
        record.ListScatterer.electrons.push_back(SourceAt(atom));
        record.atomLabels.push_back(atom.name);
    }
    record.NextListScatterer = record.ListScatterer;
}

void SetEmittedWave(ZfScatteringRecord& record, const std::vector<EmittedWave>& waves, std::int32_t ewIndex) {
    record.EWIndex = ewIndex;
    const EmittedWave& wave = CheckedAt(waves, ewIndex);
    if (record.ListScatterer.electrons.empty()) throw ZfError("Structure has no atoms");
    ZfFreeElectron& emitter = record.ListScatterer.electrons.front();
    emitter.SetEnergy_eV(wave.Ek);
    emitter.A = wave.coeff;
    record.Ratio = wave.Ratio;
    if (wave.IsPlaneWave) {
        emitter.A.Zero();
        ZfLDoubleMatrix rotation;
        rotation = EulerRotation(0.0, Radians(wave.PlaneWaveBeta_deg), Radians(wave.PlaneWaveGamma_deg));
        ZfLDoubleMatrix direction;
        direction = Multiply(rotation, Vector3(0.0, 0.0, 1.0));
        emitter.SetPlaneWave(direction, 1.0);
    }
    record.ListScatterer.SetEnergy_eV(wave.Ek);
    record.NextListScatterer = record.ListScatterer;
}

void SetPhaseShiftIndex(ZfScatteringRecord& record, const ZfPhaseShiftDocument& phaseShifts) {
    const auto size = static_cast<std::int32_t>(record.ListScatterer.electrons.size());
    record.phaseShiftIndex.SetVectorSize(size);
    bool missing = false;
    for (std::int32_t i = 0; i < size; ++i) {
        const std::string& label = CheckedAt(record.atomLabels, i);
        const auto& records = phaseShifts.records;
        const auto found = std::find_if(records.begin(), records.end(), [&](const PhaseShiftRecord& r) {
            return r.Ek_eV == record.ListScatterer.Ek_eV && r.AtomName == label;
        });
        const auto index = found - records.begin();
        const bool usable = found != records.end() && index <= std::numeric_limits<std::int8_t>::max();
        record.phaseShiftIndex.VectorAt(i) = static_cast<std::int8_t>(usable ? index : -1);
        missing = missing || !usable;
    }
    if (missing) throw ZfError("Error: There is no phase shift data");
}

void SortAtomsByDepth(std::vector<ClusterAtom>& atoms) {
    if (atoms.size() < 2) return;
    const double x0 = TruncatedMean(atoms, 0);
    const double y0 = TruncatedMean(atoms, 1);
    std::vector<double> distance;
    std::vector<double> depth;
    for (const ClusterAtom& atom : atoms) {
        const double* p = atom.position.Data();
        distance.push_back(std::sqrt((p[0] - x0) * (p[0] - x0) + (p[1] - y0) * (p[1] - y0)));
        depth.push_back(-p[2]);
    }
    const double farthest = *std::max_element(distance.begin(), distance.end());
    const double deepest = *std::max_element(depth.begin(), depth.end());
    std::vector<double> keys = {distance.front()};
    for (std::size_t i = 1; i < atoms.size(); ++i)
        keys.push_back(depth[i] / deepest * 1e6 - distance[i] / farthest);
    SelectionSort(atoms, std::move(keys));
}

void SortAtomsAlongWave(std::vector<ClusterAtom>& atoms, const ZfLDoubleMatrix& direction) {
    const double length = std::sqrt(NormSquared(direction));
    if (length == 0.0) throw ZfError("ERROR: WAVE VECTOR IS ZERO");
    const double* d = direction.Data();
    std::vector<double> keys;
    for (const ClusterAtom& atom : atoms) {
        const double* p = atom.position.Data();
        const bool atOrigin = NormSquared(atom.position) < kAtOriginSquared_m2;
        keys.push_back(atOrigin ? kOriginKey
                                : p[0] * (d[0] / length) + p[1] * (d[1] / length) + p[2] * (d[2] / length));
    }
    SelectionSort(atoms, std::move(keys));
}
