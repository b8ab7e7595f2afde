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
