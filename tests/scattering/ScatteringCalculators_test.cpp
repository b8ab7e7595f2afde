#include <gtest/gtest.h>

#include <filesystem>
#include <random>

#include "ClosedForms.h"
#include "Cluster.h"
#include "TempFolder.h"
#include "scattering/ScattererLists.h"

namespace {

struct Calculation {
    Calculation(std::int32_t method, const Cluster& atoms, std::int32_t lSize = 3) : cluster(atoms) {
        data.Version = method;
        data.MultiScattering = 1;
        phaseShifts.records = {PhaseShiftOf("Cu", lSize, 1.0)};
    }
    const std::vector<ZfFreeElectron>& Run(ZfNotifyTerminate& notifier) {
        data.Calculate(notifier, cluster, waves, phaseShifts);
        return data.ListScatteringData.at(0).ListScatterer.electrons;
    }
    const std::vector<ZfFreeElectron>& Run() {
        ZfNotifyTerminateThreadCalculation notifier;
        return Run(notifier);
    }

    ZfScatteringData data;
    Cluster cluster;
    std::vector<EmittedWave> waves = {EmittedSWave()};
    ZfPhaseShiftDocument phaseShifts;
};

const Cluster kRow = ClusterOf({AtomAt("Cu", 0, 0, 0), AtomAt("Cu", 2.5, 0, 0), AtomAt("Cu", 5.5, 0.9, 0)});

}  // namespace

// A source (3 + i) h_0 Y_00 at the emitter makes of each atom t_l c_lm / 2.
TEST(ScatteringCalculators, ScatterTheEmittedWaveAtEachAtom) {
    for (const std::int32_t method : {kSingle, kSlowMulti, kMulti}) {
        const ClusterAtom other = AtomAt("Cu", 1.9, 0, 0);  // nearer; SINGLE does not see it
        const ClusterAtom emitter = AtomAt("Cu", 0, 0, 0);
        const ClusterAtom atom = AtomAt("Cu", -1.2, 1.9, 0.8);
        Calculation run(
            method, method == kSingle ? ClusterOf({emitter, other, atom}) : ClusterOf({emitter, atom}), 5);
        run.phaseShifts.records[0].radial.LnX.clear();  // nobody asks for the radius of an atom here
        const std::vector<ZfFreeElectron>& waves = run.Run();
        EXPECT_EQ(waves.at(0).A.block, run.waves[0].coeff.block) << "the emitted wave is not back";
        ASSERT_EQ(waves.back().A.L, 5);
        EXPECT_EQ(run.data.StIndex, 1) << "the counters stand where the loops ended";
        const ZfLmComplexTable truth = TableOfSWave(Vector3(1.2e-10, -1.9e-10, -0.8e-10), waves.back().k, 5);
        EXPECT_LT(RelativeError(waves.back().A, truth,
                                [&](std::int32_t l) {
                                    return run.phaseShifts.records[0].scatteringFactors.VectorValueAt(l) *
                                           std::complex<double>(1.5, 0.5);
                                }),
                  0.01);
        EXPECT_EQ(run.data.ListScatteringData[0].NextListScatterer.electrons.back().A.block,
                  waves.back().A.block);
    }
}

// The line runs from the origin of the coordinates to the target; an atom joins when it stands within its
// own radius of the line and not behind the origin.
TEST(ScatteringCalculators, MultiFiltersByTheLineToTheTarget) {
    const auto sources = [](const ClusterAtom& candidate, double radius) {
        Calculation run(kMulti, ClusterOf({AtomAt("Cu", 0, 0, 0), candidate, AtomAt("far", 0, 0, 9)}), 1);
        run.phaseShifts.records = {PhaseShiftOf("far", 1, 50.0), PhaseShiftOf("Cu", 1, radius)};
        run.Run();
        return run.data.currentEmitters;
    };
    EXPECT_EQ(sources(AtomAt("Cu", 1.19, 0, 5), 1.2), 2);
    EXPECT_EQ(sources(AtomAt("Cu", 1.21, 0, 5), 1.2), 1);
    EXPECT_EQ(sources(AtomAt("Cu", 0, 0, -3), 1.2), 1);  // behind the origin
    EXPECT_EQ(sources(AtomAt("Cu", 0, 2, 0), 2.5), 2);   // beside it counts by its distance alone
}

TEST(ScatteringCalculators, FailWhereTheMethodNeedsMore) {
    TempFolder folder;
    Calculation run(kMulti, kRow);
    run.data.fileName = folder.Path("w.xml_sf");
    run.phaseShifts.records[0].radial.LnX.clear();  // the radius of an intermediate atom
    EXPECT_EQ(ErrorText([&] { run.Run(); }), "out of range");
    EXPECT_EQ(run.data.AtIndex, 2) << "the first that has one between";
    EXPECT_FALSE(std::filesystem::exists(run.data.fileName));
    run.data.Version = kSlowMulti;
    run.Run();
    EXPECT_TRUE(std::filesystem::exists(run.data.fileName));

    run.data.Version = kSingle;
    run.waves[0].coeff.SetSize(2);  // refused after all atoms
    run.waves[0].coeff.At(1, 0) = 1.0;
    EXPECT_EQ(ErrorText([&] { run.Run(); }), "Illegal l value");
    EXPECT_NE(run.data.ListScatteringData[0].NextListScatterer.electrons[2].A.At(1, 0), 0.0);
    run.data.MultiScattering = 2;
    run.waves = {EmittedSWave()};
    EXPECT_EQ(ErrorText([&] { run.Run(); }), "This is not support full multi-scattering calc.");
    run.data.MultiScattering = 1;
    run.phaseShifts.records[0].scatteringFactors.SetVectorSize(0);
    EXPECT_EQ(ErrorText([&] { run.Run(); }), "Please set CurrSize_l_");
    run.phaseShifts.records[0] = PhaseShiftOf("Cu", 3, 1.0);
    run.waves[0].Ek = run.phaseShifts.records[0].Ek_eV = 0.0;
    EXPECT_EQ(ErrorText([&] { run.Run(); }), "A wave of zero energy cannot be scattered");
}

TEST(ScatteringCalculators, StopWhenTheNotifierSaysSo) {
    struct Impatient : ZfNotifyTerminate {
        bool IsTerminated() override { return ++polls == 3; }
        int polls = 0;
    } notifier;
    TempFolder folder;
    Calculation run(kMulti, kRow);
    run.data.fileName = folder.Path("w.xml_sf");
    run.Run(notifier);
    const std::vector<ZfFreeElectron>& next = run.data.ListScatteringData.at(0).NextListScatterer.electrons;
    EXPECT_EQ(next[1].A.L, 3);
    EXPECT_EQ(next[2].A.L, 0);
    EXPECT_FALSE(std::filesystem::exists(run.data.fileName));

    // What the run had prepared with its phase shifts is gone.
    ZfScatteringData data = run.data;
    run.phaseShifts.records[0].scatteringFactors.VectorAt(0) = 0.0;
    data.OneCalculateVer2(data.ListScatteringData[0], run.phaseShifts, 0, 2);
    EXPECT_EQ(data.ListScatteringData[0].NextListScatterer.electrons[2].A.At(0, 0), 0.0);
}

TEST(ScatteringCalculators, AWaveOfASizeAloneIsZero) {
    for (const std::int32_t method : {kSlowMulti, kMulti}) {
        Calculation run(method, kRow);
        run.waves[0].coeff.SetZero(3);
        for (const ZfFreeElectron& atom : run.Run())
            for (std::int32_t l = 0; l < 3; ++l) EXPECT_EQ(atom.A.At(l, -l), 0.0) << l;
    }
}

// Packs of atoms with the same l size run side by side and end in any order.
TEST(ScatteringCalculators, AtomsOfManyLSizesAreThoseOfOneAtATime) {
    const std::vector<std::string> names = {"two", "three", "five", "six"};
    std::mt19937 random(1);  // NOLINT(cert-msc51-cpp): the same clusters in every run
    for (int cluster = 0; cluster < 12; ++cluster) {
        std::vector<ClusterAtom> atoms;
        for (int i = 0; i < 27; ++i)
            atoms.push_back(
                AtomAt(names[random() % 4], 2.6 * (i % 3) + 0.01 * i, 2.6 * (i / 3 % 3), 2.6 * (i / 9)));
        Calculation run(kSlowMulti, kRow);
        run.cluster.structures[0].atoms = atoms;
        run.phaseShifts.records = {PhaseShiftOf("two", 2, 1.0), PhaseShiftOf("three", 3, 1.0),
                                   PhaseShiftOf("five", 5, 1.0), PhaseShiftOf("six", 6, 1.0)};
        run.waves = {EmittedSWave(), EmittedSWave()};
        run.Run();
        for (std::size_t wave = 0; wave < 2; ++wave) {
            ZfScatteringData one;
            ZfScatteringRecord& record = AddScatteringRecord(
                one, run.cluster, 0, run.waves, static_cast<std::int32_t>(wave), run.phaseShifts);
            for (std::int32_t at = 0; at < std::ssize(atoms); ++at) {
                one.CalculateSlowMulti(record, run.phaseShifts, 0, at);
                if (at == 0) continue;
                const auto& together = run.data.ListScatteringData[wave].ListScatterer.electrons;
                const auto i = static_cast<std::size_t>(at);
                EXPECT_LT(RelativeError(together[i].A, record.NextListScatterer.electrons[i].A,
                                        [](std::int32_t) { return 1.0; }),
                          1e-10)
                    << cluster << " " << at;
            }
        }
    }
}
