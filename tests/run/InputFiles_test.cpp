#include "run/InputFiles.h"

#include <gtest/gtest.h>

#include "ErrorText.h"
#include "TempFolder.h"
#include "foundation/Constants.h"
#include "input/EmittedWave.h"

TEST(InputFiles, AGivenBindingEnergyGoesBeforeTheTable) {
    const CoreLevel level = ParseCoreLevel("2p");
    EXPECT_EQ(KineticEnergyOf({60.0, 0.0, {}, 7.0}, {}, level), 60.0);
    EXPECT_EQ(KineticEnergyOf({0.0, 1486.6, 930.0, 7.0}, {}, level), 563.6);
}

// Phase shifts of every l up to 20 at a low energy reach beyond the neighbours.
TEST(InputFiles, KeepTheWeightAndTellTheWarnings) {
    const TempFolder folder;
    const std::string waves = folder.Path("e.xml_emt");
    WavesRequest source;
    source.isotropic = true;
    source.energy.kinetic_eV = 60.0;
    source.emission.weight = 2.0;
    MakeIsotropicWaves(source, waves);
    std::vector<EmittedWave> read;
    ZfLoadEmittedWave(read, waves);
    ASSERT_EQ(read.size(), 1U);
    EXPECT_NEAR(read[0].Ratio * std::norm(read[0].coeff.At(0, 0)), 2.0 * 4.0 * kPi, 1e-4);

    PhaseShiftRequest phases;
    phases.limits.cut_deg = 0.0;
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "warning: Cu at 60 eV: l size cut from 21 to",
                        MakePhaseShiftFile(phases, QVRE_EXAMPLES "/cu001_small/cluster.xml_cl", waves,
                                           folder.Path("p.xml_ph")));
}

// A ready cluster keeps the weights that were made with it; without them it tells the depth itself.
TEST(InputFiles, AReadyClusterBringsItsEmitters) {
    const TempFolder folder;
    const std::string cluster = folder.Write("c.xyz", "2\ncopper\nCu 0 0 0\nCu 1.8 0 1.8\n");
    const auto shares = [&] {
        CopyReadyCluster(cluster, folder.Path("cluster.xyz"), folder.Path("emitters.csv"));
        return LoadEmitterShares(folder.Path("emitters.csv")).at(0);
    };
    EXPECT_NEAR(shares().depth_angstrom, 1.8, 1e-9);
    const std::string table = folder.Write("c.emitters.csv", "structure,depth,weight\n1,3.6,2\n");
    EXPECT_EQ(shares().depth_angstrom, 3.6);
    EXPECT_EQ(shares().weight, 2.0);
    folder.Write("c.emitters.csv", "structure,depth,weight\n1,3.6,2\n2,3.6,2\n");
    EXPECT_EQ(ErrorText(shares),
              table + " has 2 rows for the 1 structures of " + cluster + ": make both anew, or remove it");
}
