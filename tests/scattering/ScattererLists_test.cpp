#include "scattering/ScattererLists.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Cluster.h"

namespace {

/// The order in which SetListFromCluster leaves the atoms.
std::string Order(Cluster& cluster, const std::vector<EmittedWave>& waves, std::int32_t atomOrder) {
    ZfScatteringRecord record;
    SetListFromCluster(record, cluster, waves, 0, atomOrder);
    std::string text;
    for (const std::string& label : record.atomLabels) text += label;
    return text;
}

EmittedWave PlaneWave(double beta, double gamma) {
    EmittedWave wave = EmittedSWave();
    wave.IsPlaneWave = true;
    wave.PlaneWaveBeta_deg = beta;
    wave.PlaneWaveGamma_deg = gamma;
    return wave;
}

}  // namespace

TEST(ScattererLists, MakeEveryAtomASource) {
    Cluster cluster = ClusterOf({AtomAt("b", 0, 0, 3), AtomAt("a", 0, 0, 0), AtomAt("c", 2, 0, 0)});
    cluster.structures[0].atoms[0].U.SetSize(1, 1);
    cluster.structures[0].atoms[0].U.At(0, 0) = 5e-23;
    ZfPhaseShiftDocument phaseShifts;
    for (const char* name : {"c", "b", "a", "a", "c"})
        phaseShifts.records.push_back(PhaseShiftOf(name, 2, 1.0));
    phaseShifts.records[0].Ek_eV = std::nextafter(kEnergy_eV, 1000.0);  // not this one: the last bit differs
    ZfScatteringData data;
    const ZfScatteringRecord& record =
        AddScatteringRecord(data, cluster, 0, {EmittedSWave()}, 0, phaseShifts);
    EXPECT_EQ(record.atomLabels, (std::vector<std::string>{"a", "c", "b"}));
    for (const ZfVectorFreeElectron* list : {&record.ListScatterer, &record.NextListScatterer}) {
        EXPECT_EQ(list->Ek_eV, kEnergy_eV);
        EXPECT_EQ(list->electrons.at(0).A.At(0, 0), std::complex<double>(3.0, 1.0));
        const ZfFreeElectron& b = list->electrons.at(2);
        EXPECT_EQ(b.Uiso, 5e-23);
        EXPECT_EQ(b.position.VectorValueAt(2), 3 * 1e-10);
        EXPECT_EQ(b.atomicNumber, 29);
        EXPECT_EQ(b.k, SWave(0, 0, 0).k);
    }
    EXPECT_EQ(record.phaseShiftIndex.VectorValueAt(0), 2);
    EXPECT_EQ(record.phaseShiftIndex.VectorValueAt(1), 4);
}

TEST(ScattererLists, FollowTheFirstEmittedWaveIfThatIsPlane) {
    // Along -x: the atom at the origin first all the same.
    Cluster cluster =
        ClusterOf({AtomAt("n", -3, 0, 0), AtomAt("p", 2, 0, 0), AtomAt("o", 0, 0, 0), AtomAt("q", 4, 1, 0)});
    const std::vector<EmittedWave> waves = {PlaneWave(90, 180), EmittedSWave(), PlaneWave(60, 30)};
    EXPECT_EQ(Order(cluster, waves, 0), "oqpn");
    EXPECT_EQ(Order(cluster, {waves[1], waves[0]}, 0), "opnq");
    ZfScatteringRecord record;
    SetListFromCluster(record, cluster, waves, 0, 0);
    SetEmittedWave(record, waves, 2);
    const ZfFreeElectron& emitter = record.NextListScatterer.electrons[0];
    EXPECT_TRUE(emitter.IsPlaneWave);
    EXPECT_NEAR(emitter.planeWaveVector.VectorValueAt(0), emitter.k * 0.75, 1e-4);
    EXPECT_NEAR(emitter.planeWaveVector.VectorValueAt(2), emitter.k / 2, 1e-4);

    Cluster layers = ClusterOf({AtomAt("e", 0, 0, 0), AtomAt("a", 1, 0, -4), AtomAt("b", 0, 2, 2),
                                AtomAt("c", 3, 0, 2), AtomAt("d", 0, 3, -4)});
    EXPECT_EQ(Order(layers, {EmittedSWave()}, 1), "cbeda");  // from the top, outward atoms first
}

TEST(ScattererLists, PhaseShiftIndexIsASignedByte) {
    Cluster cluster = ClusterOf({AtomAt("x", 0, 0, 0)});
    ZfPhaseShiftDocument phaseShifts;
    phaseShifts.records.assign(127, PhaseShiftOf("other", 1, 1.0));
    phaseShifts.records.push_back(PhaseShiftOf("x", 1, 1.0));
    ZfScatteringData data;
    const auto add = [&] { AddScatteringRecord(data, cluster, 0, {EmittedSWave()}, 0, phaseShifts); };
    EXPECT_EQ(ErrorText(add), "no failure");
    EXPECT_EQ(data.ListScatteringData[0].phaseShiftIndex.VectorValueAt(0), 127);
    phaseShifts.records.insert(phaseShifts.records.begin(), PhaseShiftOf("other", 1, 1.0));
    EXPECT_EQ(ErrorText(add), "Error: There is no phase shift data");
}

TEST(ScattererLists, RefuseWhatTheyCannotUse) {
    Cluster cluster = ClusterOf({AtomAt("x", 0, 0, 0)});
    ZfScatteringRecord record;
    const auto fill = [&] { SetListFromCluster(record, cluster, {EmittedSWave()}, 0, 0); };
    EXPECT_EQ(ErrorText([&] { Order(cluster, {}, 0); }), "Emitted wave is not defined");
    cluster.structures[0].atoms[0].U.SetSize(3, 3);
    EXPECT_EQ(ErrorText(fill), "U aniso is not supported");
    cluster.structures[0].atoms.clear();
    fill();
    EXPECT_EQ(ErrorText([&] { SetEmittedWave(record, {EmittedSWave()}, 1); }), "out of range");
    EXPECT_EQ(ErrorText([&] { SetEmittedWave(record, {EmittedSWave()}, 0); }), "Structure has no atoms");
}
