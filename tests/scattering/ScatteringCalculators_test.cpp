#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "Cluster.h"
#include "TempFolder.h"
#include "scattering/ScattererLists.h"
#include "scattering/SphericalHarmonics.h"

namespace {

struct Calculation {
    Calculation(std::int32_t method, ZfCluster atoms, std::int32_t lSize = 3) : cluster(std::move(atoms)) {
        data.Version = method;
        data.MultiScattering = 1;
        phaseShifts.records = {PhaseShiftOf("Cu", lSize, 1.0)};
    }
    void Calculate() {
        ZfNotifyTerminateThreadCalculation notifier;
        data.Calculate(notifier, cluster, waves, phaseShifts);
    }
    const std::vector<ZfFreeElectron>& Result(std::size_t record = 0) const {
        return data.ListScatteringData.at(record).ListScatterer.electrons;
    }

    ZfScatteringData data;
    ZfCluster cluster;
    std::vector<ZfEmittedWave> waves = {EmittedSWave()};
    ZfPhaseShiftDocument phaseShifts;
};

/// What a source of (3 + i) h_0 Y_00 makes of an atom: t_l c_lm / 2 with c_lm of the addition theorem.
void ExpectScatteredOnce(const ZfFreeElectron& atom, const ZfPhaseShiftRecord& phaseShift) {
    const double* p = atom.position.Data();
    const double r = std::sqrt(NormSquared(atom.position));
    ZfLmDoubleTable norm;
    ZfLmComplexTable y;
    HarmonicTable(norm, y, atom.A.L, std::acos(-p[2] / r), std::atan2(-p[1], -p[0]));
    double error = 0.0;
    double size = 0.0;
    for (std::int32_t l = 0; l < atom.A.L; ++l) {
        const auto order = static_cast<unsigned>(l);
        const std::complex<double> h(std::sph_bessel(order, atom.k * r), std::sph_neumann(order, atom.k * r));
        for (std::int32_t m = -l; m <= l; ++m) {
            const std::complex<double> c =
                std::complex<double>(3.0, 1.0) * std::sqrt(4.0 * kPi) * h * std::conj(y.At(l, m));
            const std::complex<double> truth = phaseShift.scatteringFactors.VectorValueAt(l) * c / 2.0;
            error += std::norm(atom.A.At(l, m) - truth);
            size += std::norm(truth);
        }
    }
    EXPECT_LT(std::sqrt(error / size), 0.01);
}

ZfCluster Row() {
    return ClusterOf({AtomAt("Cu", 0, 0, 0), AtomAt("Cu", 2.5, 0, 0), AtomAt("Cu", 5.5, 0.9, 0)});
}

}  // namespace

TEST(ScatteringCalculators, ScatterTheEmittedWaveAtEachAtom) {
    for (const std::int32_t method : {kSingle, kSlowMulti, kMulti}) {
        Calculation run(method, ClusterOf({AtomAt("Cu", 0, 0, 0), AtomAt("Cu", -1.2, 1.9, 0.8)}), 5);
        run.phaseShifts.records[0].radial.LnX.clear();  // nobody asks for the radius of an atom here
        run.Calculate();
        ASSERT_EQ(run.Result().size(), 2U);
        EXPECT_EQ(run.Result()[0].A.block, run.waves[0].coeff.block) << "the emitted wave is not back";
        ASSERT_EQ(run.Result()[1].A.L, 5);
        EXPECT_EQ(run.Result()[1].B.L, 0);
        ExpectScatteredOnce(run.Result()[1], run.phaseShifts.records[0]);
        EXPECT_EQ(run.data.ListScatteringData[0].NextListScatterer.electrons[1].A.block,
                  run.Result()[1].A.block);
    }
}

TEST(ScatteringCalculators, DifferInTheSourcesThatAnAtomSees) {
    Calculation single(kSingle, Row());
    single.Calculate();
    EXPECT_EQ(single.data.currentEmitters, 1);
    ExpectScatteredOnce(single.Result()[2], single.phaseShifts.records[0]);
    Calculation slow(kSlowMulti, Row());
    slow.Calculate();
    EXPECT_EQ(slow.data.currentEmitters, 2);
    Calculation multi(kMulti, Row());
    multi.Calculate();
    EXPECT_EQ(multi.Result()[2].A.block, slow.Result()[2].A.block) << "the same two sources";
    EXPECT_NE(multi.Result()[2].A.block, single.Result()[2].A.block);
    EXPECT_EQ(multi.data.targetEnergy, kEnergy_eV);
    EXPECT_EQ(multi.data.CurrSize_l_, 3);
    EXPECT_EQ(multi.data.StIndex, 1);  // the counters stand where the loops ended
    EXPECT_EQ(multi.data.AtIndex, 3);
}

// The line runs from the origin of the coordinates to the target; an atom joins when it stands within its
// own radius of the line and not behind the origin.
TEST(ScatteringCalculators, MultiFiltersByTheLineToTheTarget) {
    const auto sources = [](const ZfAtom& candidate, double radius) {
        Calculation run(kMulti, ClusterOf({AtomAt("Cu", 0, 0, 0), candidate, AtomAt("far", 0, 0, 9)}), 1);
        run.phaseShifts.records = {PhaseShiftOf("far", 1, 50.0), PhaseShiftOf("Cu", 1, radius)};
        run.Calculate();
        return run.data.currentEmitters;
    };
    EXPECT_EQ(sources(AtomAt("Cu", 1.19, 0, 5), 1.2), 2);
    EXPECT_EQ(sources(AtomAt("Cu", 1.21, 0, 5), 1.2), 1);
    EXPECT_EQ(sources(AtomAt("Cu", 0, 0, -3), 1.2), 1);  // behind the origin
    EXPECT_EQ(sources(AtomAt("Cu", 0, 2, 0), 2.5), 2);   // beside it counts by its distance alone
    EXPECT_EQ(sources(AtomAt("Cu", 0, 2, 0), 1.9), 1);
}

TEST(ScatteringCalculators, FailWithoutTheRadiusOfAnIntermediateAtom) {
    TempFolder folder;
    Calculation run(kMulti, Row());
    run.data.fileName = folder.Path("w.xml_sf");
    run.phaseShifts.records[0].radial.LnX.clear();
    EXPECT_THROW(run.Calculate(), std::out_of_range);
    EXPECT_FALSE(std::filesystem::exists(run.data.fileName));
    run.data.Version = kSlowMulti;
    run.Calculate();
    EXPECT_TRUE(std::filesystem::exists(run.data.fileName));
}

TEST(ScatteringCalculators, SingleRefusesALargerEmittedWaveAfterAllAtoms) {
    Calculation run(kSingle, Row());
    run.waves[0].coeff.SetSize(2);
    run.waves[0].coeff.At(1, 0) = 1.0;
    EXPECT_EQ(ErrorText([&] { run.Calculate(); }), "Illegal l value");
    EXPECT_NE(run.data.ListScatteringData[0].NextListScatterer.electrons[2].A.At(0, 0), 0.0);

    run.waves[0].IsPlaneWave = true;
    run.Calculate();
    EXPECT_TRUE(run.Result()[0].IsPlaneWave);
}

TEST(ScatteringCalculators, RefuseWhatTheyCannotCompute) {
    Calculation run(kMulti, Row());
    run.data.MultiScattering = 2;
    EXPECT_EQ(ErrorText([&] { run.Calculate(); }), "This is not support full multi-scattering calc.");
    EXPECT_NE(run.Result()[2].A.At(0, 0), 0.0);  // the first pass is done

    run.data.MultiScattering = 1;
    run.phaseShifts.records[0].scatteringFactors.SetVectorSize(0);
    EXPECT_EQ(ErrorText([&] { run.Calculate(); }), "Please set CurrSize_l_");

    run.waves[0].Ek = 0.0;
    run.phaseShifts.records[0] = PhaseShiftOf("Cu", 3, 1.0);
    run.phaseShifts.records[0].Ek_eV = 0.0;
    EXPECT_EQ(ErrorText([&] { run.Calculate(); }), "A wave of zero energy cannot be scattered");
    run.waves[0].Ek = -1.0;
    run.phaseShifts.records[0].Ek_eV = -1.0;
    EXPECT_THROW(run.Calculate(), const char*);
}

TEST(ScatteringCalculators, StopWhenTheNotifierSaysSo) {
    struct Impatient : ZfNotifyTerminate {
        bool IsTerminated() override { return ++polls == 3; }
        int polls = 0;
    };
    TempFolder folder;
    Calculation run(kMulti, Row());
    run.data.fileName = folder.Path("w.xml_sf");
    Impatient notifier;
    run.data.Calculate(notifier, run.cluster, run.waves, run.phaseShifts);
    const std::vector<ZfFreeElectron>& next = run.data.ListScatteringData.at(0).NextListScatterer.electrons;
    EXPECT_EQ(next[1].A.L, 3);
    EXPECT_EQ(next[2].A.L, 0);
    EXPECT_FALSE(std::filesystem::exists(run.data.fileName));
}
