#include <gtest/gtest.h>

#include <complex>
#include <set>
#include <string>
#include <vector>

#include "RunQvre.h"
#include "TempFolder.h"
#include "foundation/Constants.h"
#include "input/EmittedWave.h"

namespace {

const std::string kCluster = QVRE_EXAMPLES "/cu001_small/cluster.xml_cl";

}  // namespace

TEST(EmitCommand, WritesTheWavesAndTellsTheEnergy) {
    const TempFolder folder;
    const std::string file = folder.Path("emitter.xml_emt");
    const QvreResult outcome =
        RunQvre("emit " + kCluster +
                " --level 2p3/2 --photon Al --fermi 9 --circular right --along 1,0,-1 -o " + file);
    for (const char* text : {"emitter.xml_emt: Cu 2p3/2, 3 waves\n", "beta = 1.40", "cross section    0.23",
                             "orbital          calculated at 944.8 eV below the vacuum\n",
                             "photon 1486.6 eV - binding energy 932.7 eV + Fermi energy above the muffin-tin "
                             "zero 9 eV\n"})
        EXPECT_PRED_FORMAT2(testing::IsSubstring, text, outcome.output);
    std::vector<EmittedWave> waves;
    ZfLoadEmittedWave(waves, file);
    ASSERT_EQ(waves.size(), 3U);
    double sum = 0.0;
    for (const EmittedWave& wave : waves) {
        EXPECT_EQ(wave.Ek, 562.9);
        for (const std::complex<double>& a : wave.coeff.block) sum += std::norm(a);
    }
    EXPECT_NEAR(sum, 4.0 * kPi, 1e-4);  // 6 digits
}

// delta_l of the photoelectron is the phase shift of the emitter, whatever the physics that both are made by.
TEST(EmitCommand, TakesThePhysicsOfThePhaseShifts) {
    const TempFolder folder;
    std::set<std::string> phases;
    for (const std::string physics :
         {"", "--exchange slater", "--exchange none", "--relativistic", "--zero -9", "--zero=-2"}) {
        const std::string emission =
            RunQvre("emit " + kCluster + " --level 1s --kinetic 560 --polarisation 0,0,1 " + physics +
                    " -o " + folder.Path("e.xml_emt"))
                .output;
        const std::string shifts =
            RunQvre("phases " + kCluster + " --energy 560 " + physics + " -o " + folder.Path("p.xml_ph"))
                .output;
        const std::size_t begin = emission.find(", phase ") + 7;
        const std::string phase = emission.substr(begin, emission.find(' ', begin + 1) - begin);
        EXPECT_PRED_FORMAT2(testing::IsSubstring, phase, shifts) << physics;
        phases.insert(phase);
    }
    EXPECT_EQ(phases.size(), 6U) << "each choice counts";
}

// Left circular light, of helicity +1 along z, lifts an s level to m = +1.
TEST(EmitCommand, TellsLeftFromRight) {
    const TempFolder folder;
    for (const auto& [light, m] : {std::pair{"left", 1}, {"right", -1}}) {
        RunQvre("emit --free --element C --level 1s --kinetic 560 --along 0,0,1 -o " +
                folder.Path("e.xml_emt") + " --circular " + light);
        std::vector<EmittedWave> waves;
        ZfLoadEmittedWave(waves, folder.Path("e.xml_emt"));
        ASSERT_EQ(waves.size(), 1U);
        EXPECT_GT(std::abs(waves[0].coeff.At(1, m)), 1.0) << light;
        EXPECT_EQ(std::abs(waves[0].coeff.At(1, -m)), 0.0) << light;
    }
}
