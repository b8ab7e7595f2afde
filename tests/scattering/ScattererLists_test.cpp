#include "scattering/ScattererLists.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Cluster.h"
#include "scattering/SphericalHarmonics.h"

namespace {

std::string Labels(const ZfScatteringRecord& record) {
    std::string text;
    for (const std::string& label : record.atomLabels) text += label;
    return text;
}

std::string Names(const std::vector<ZfAtom>& atoms) {
    std::string text;
    for (const ZfAtom& atom : atoms) text += atom.name;
    return text;
}

ZfEmittedWave PlaneWave(double beta, double gamma) {
    ZfEmittedWave wave = EmittedSWave();
    wave.IsPlaneWave = true;
    wave.PlaneWaveBeta_deg = beta;
    wave.PlaneWaveGamma_deg = gamma;
    return wave;
}

}  // namespace

TEST(ScattererLists, MakeEveryAtomASource) {
    ZfCluster cluster = ClusterOf({AtomAt("b", 0, 0, 3), AtomAt("a", 0, 0, 0), AtomAt("c", 2, 0, 0)});
    cluster.structures[0].atoms[0].U.SetSize(1, 1);
    cluster.structures[0].atoms[0].U.At(0, 0) = 5e-23;
    ZfPhaseShiftDocument phaseShifts;
    for (const char* name : {"c", "b", "a", "a"}) phaseShifts.records.push_back(PhaseShiftOf(name, 2, 1.0));
    phaseShifts.records[0].Ek_eV = std::nextafter(kEnergy_eV, 1000.0);  // not this one: the last bit differs
    phaseShifts.records.push_back(PhaseShiftOf("c", 2, 1.0));
    ZfEmittedWave wave = EmittedSWave();
    wave.Ratio = 0.25;
    ZfScatteringData data;
    const ZfScatteringRecord& record = AddScatteringRecord(data, cluster, 0, {wave}, 0, phaseShifts);

    EXPECT_EQ(Labels(record), "acb");
    EXPECT_EQ(Names(cluster.structures[0].atoms), "acb");
    EXPECT_EQ(record.Ratio, 0.25);
    for (const ZfVectorFreeElectron* list : {&record.ListScatterer, &record.NextListScatterer}) {
        EXPECT_EQ(list->Ek_eV, kEnergy_eV);
        EXPECT_EQ(list->electrons.at(0).A.At(0, 0), std::complex<double>(3.0, 1.0));
        EXPECT_EQ(list->electrons.at(1).A.L, 0);
        EXPECT_EQ(list->electrons.at(2).Uiso, 5e-23);
        EXPECT_EQ(list->electrons[2].position.VectorValueAt(2), 3 * 1e-10);
        EXPECT_EQ(list->electrons[2].atomicNumber, 29);
        EXPECT_EQ(list->electrons[2].k, SWave(0, 0, 0).k);
    }
    EXPECT_EQ(record.phaseShiftIndex.VectorValueAt(0), 2);
    EXPECT_EQ(record.phaseShiftIndex.VectorValueAt(1), 4);
}

TEST(ScattererLists, FollowTheFirstEmittedWaveIfThatIsPlane) {
    // Along -x: the atom at the origin first all the same.
    ZfCluster cluster =
        ClusterOf({AtomAt("n", -3, 0, 0), AtomAt("p", 2, 0, 0), AtomAt("o", 0, 0, 0), AtomAt("q", 4, 1, 0)});
    ZfScatteringRecord record;
    const std::vector<ZfEmittedWave> waves = {PlaneWave(90, 180), EmittedSWave(), PlaneWave(60, 30)};
    SetListFromCluster(record, cluster, waves, 0, 0);
    EXPECT_EQ(Labels(record), "oqpn");
    SetEmittedWave(record, waves, 2);
    const ZfFreeElectron& emitter = record.NextListScatterer.electrons[0];
    EXPECT_TRUE(emitter.IsPlaneWave);
    EXPECT_EQ(emitter.A.At(0, 0), 1.0);
    const double k = emitter.k;
    EXPECT_NEAR(emitter.planeWaveVector.VectorValueAt(0), k * std::sqrt(3.0) / 2 * std::sqrt(3.0) / 2, 1e-4);
    EXPECT_NEAR(emitter.planeWaveVector.VectorValueAt(1), k * std::sqrt(3.0) / 4, 1e-4);
    EXPECT_NEAR(emitter.planeWaveVector.VectorValueAt(2), k / 2, 1e-4);

    SetListFromCluster(record, cluster, {EmittedSWave(), PlaneWave(90, 180)}, 0, 0);
    EXPECT_EQ(Labels(record), "opnq");
    EXPECT_EQ(ErrorText([&] { SortAtomsAlongWave(cluster.structures[0].atoms, Vector3(0, 0, 0)); }),
              "ERROR: WAVE VECTOR IS ZERO");
}

TEST(ScattererLists, SortByDepthTakesLayersFromTheTopAndOutwardAtomsFirst) {
    ZfCluster cluster = ClusterOf({AtomAt("e", 0, 0, 0), AtomAt("a", 1, 0, -4), AtomAt("b", 0, 2, 2),
                                   AtomAt("c", 3, 0, 2), AtomAt("d", 0, 3, -4)});
    SortAtomsByDepth(cluster.structures[0].atoms);
    EXPECT_EQ(Names(cluster.structures[0].atoms), "cbeda");
}

TEST(ScattererLists, PhaseShiftIndexIsASignedByte) {
    ZfCluster cluster = ClusterOf({AtomAt("x", 0, 0, 0)});
    ZfPhaseShiftDocument phaseShifts;
    for (int i = 0; i < 127; ++i) phaseShifts.records.push_back(PhaseShiftOf("other", 1, 1.0));
    phaseShifts.records.push_back(PhaseShiftOf("x", 1, 1.0));
    ZfScatteringData data;
    const auto add = [&] { AddScatteringRecord(data, cluster, 0, {EmittedSWave()}, 0, phaseShifts); };
    EXPECT_EQ(ErrorText(add), "no failure");
    EXPECT_EQ(data.ListScatteringData[0].phaseShiftIndex.VectorValueAt(0), 127);
    phaseShifts.records.insert(phaseShifts.records.begin(), PhaseShiftOf("other", 1, 1.0));
    EXPECT_EQ(ErrorText(add), "Error: There is no phase shift data");
}

TEST(ScattererLists, RefuseWhatTheyCannotUse) {
    ZfCluster cluster = ClusterOf({AtomAt("x", 0, 0, 0)});
    ZfScatteringRecord record;
    const auto fill = [&] { SetListFromCluster(record, cluster, {EmittedSWave()}, 0, 0); };
    EXPECT_EQ(ErrorText([&] { SetListFromCluster(record, cluster, {}, 0, 0); }),
              "Emitted wave is not defined");
    EXPECT_THROW(SetListFromCluster(record, cluster, {EmittedSWave()}, 1, 0), std::out_of_range);
    cluster.structures[0].atoms[0].U.SetSize(3, 3);
    EXPECT_EQ(ErrorText(fill), "U aniso is not supported");
    cluster.structures[0].atoms.clear();
    fill();
    EXPECT_THROW(SetEmittedWave(record, {EmittedSWave()}, 1), std::out_of_range);
    EXPECT_EQ(ErrorText([&] { SetEmittedWave(record, {EmittedSWave()}, 0); }), "Structure has no atoms");
}
