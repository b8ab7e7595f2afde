#include <gtest/gtest.h>

#include <complex>
#include <filesystem>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "RunQvre.h"
#include "TempFolder.h"
#include "foundation/Constants.h"
#include "input/EmittedWave.h"

namespace {

const std::string kCluster = QVRE_EXAMPLES "/cu001_small/cluster.xml_cl";

/// Runs `qvre emit` with words between blanks.
QvreResult Emit(const std::string& words) {
    std::istringstream stream("emit " + words);
    return RunQvre({std::istream_iterator<std::string>(stream), {}});
}

}  // namespace

TEST(EmitCommand, WritesTheWavesAndTellsTheEnergy) {
    const TempFolder folder;
    const std::string file = folder.Path("emitter.xml_emt");
    const QvreResult outcome =
        Emit(kCluster + " --level 2p3/2 --photon Al --fermi 9 --circular right --along 1,0,-1 -o " + file);
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("emitter.xml_emt: Cu 2p3/2, 3 waves\n"), std::string::npos)
        << outcome.output;
    EXPECT_NE(
        outcome.output.find("photon 1486.6 eV - binding energy 932.7 eV + Fermi energy above the muffin-tin "
                            "zero 9 eV\n"),
        std::string::npos);
    EXPECT_NE(outcome.output.find("beta = 1.38"), std::string::npos);
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
        const QvreResult emission = Emit(kCluster + " --level 1s --kinetic 560 --polarisation 0,0,1 " +
                                         physics + " -o " + folder.Path("e.xml_emt"));
        ASSERT_EQ(emission.status, 0) << emission.errors;
        std::istringstream words("phases " + kCluster + " --energy 560 " + physics + " -o " +
                                 folder.Path("p.xml_ph"));
        const QvreResult shifts = RunQvre({std::istream_iterator<std::string>(words), {}});
        ASSERT_EQ(shifts.status, 0) << shifts.errors;
        const std::string title = ", phase ";
        const std::size_t begin = emission.output.find(title) + title.size();
        const std::string phase = emission.output.substr(begin, emission.output.find(' ', begin) - begin);
        EXPECT_NE(shifts.output.find(" " + phase), std::string::npos) << physics << shifts.output << phase;
        phases.insert(phase);
    }
    EXPECT_EQ(phases.size(), 6U) << "each choice counts";
}

// Left circular light, of helicity +1 along z, lifts an s level to m = +1.
TEST(EmitCommand, TellsLeftFromRight) {
    const TempFolder folder;
    for (const auto& [light, m] : {std::pair{"left", 1}, {"right", -1}}) {
        ASSERT_EQ(Emit("--free --element C --level 1s --kinetic 560 --along 0,0,1 --circular " +
                       std::string(light) + " -o " + folder.Path("e.xml_emt"))
                      .status,
                  0);
        std::vector<EmittedWave> waves;
        ZfLoadEmittedWave(waves, folder.Path("e.xml_emt"));
        ASSERT_EQ(waves.size(), 1U);
        EXPECT_GT(std::abs(waves[0].coeff.At(1, m)), 1.0) << light;
        EXPECT_EQ(std::abs(waves[0].coeff.At(1, -m)), 0.0) << light;
    }
}

TEST(EmitCommand, BadInputLeavesNothing) {
    const TempFolder folder;
    const std::string good = kCluster + " --polarisation 0,0,1 ";
    const std::tuple<std::string, int, const char*> cases[] = {
        {kCluster + " --level 2p --kinetic 560", 2,
         "--polarisation, --unpolarised-along or --circular is required"},
        {good + "--kinetic 560", 2, "--level or --isotropic is required"},
        {good + "--level 2p", 2, "--kinetic or --photon is required"},
        {good + "--level 2p --kinetic 560 --photon Al", 2, "excludes"},
        {good + "--level 2d --kinetic 560", 2, "\"2d\" is no core level"},
        {good + "--level 2p --photon Zn", 2, "\"Zn\" is no number"},
        {kCluster + " --level 2p --kinetic 560 --polarisation 0,0,0", 2, "direction other than 0,0,0"},
        {"--polarisation 0,0,1 --level 2p --kinetic 560 --element Cu", 2,
         "--surroundings or --free is required"},
        {good + "--level 4s --photon Al", 1,
         "the measured one as binding (the calculated orbital lies at 7 eV)"},
        {good + "--level 2p --photon 900", 1, "does not free an electron bound by"},
        {good + "--level 2p --kinetic 560.12345", 1, "more than the 6 digits of a file"},
        {good + "--level 2p --kinetic 560 --element Ni", 1, "origin of the cluster is Cu, not Ni"},
        {"--free --element Xx --level 2p --kinetic 560 --polarisation 0,0,1", 1, "element \"Xx\""}};
    for (const auto& [words, status, text] : cases) {
        const QvreResult outcome = Emit(words + " -o " + folder.Path("emitter.xml_emt"));
        EXPECT_EQ(outcome.status, status) << words;
        EXPECT_NE(outcome.errors.find(text), std::string::npos) << words << "\n" << outcome.errors;
    }
    EXPECT_EQ(Emit(good + "--level 2p --kinetic 560 -o " + folder.Path("emitter.xml")).status, 2);
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path("")));
}
