#include "recipe/RecipeInformation.h"

#include <gtest/gtest.h>

using namespace qvre;

namespace {

using Information = std::map<std::string, std::string>;

// What is stated stands as it is, in one line; what is not, with the value that holds.
TEST(RecipeInformation, TellsWhatARecipeSaysAndLeavesOut) {
    const toml::table recipe = toml::parse(R"(
title = "not a setting of the calculation"
[cluster]
preset = "Cu"
[emission]
level = "2p"
kinetic = 560
[thermal]
debye = { Cu = 343, O = 500.5 }
[image]
imfp = "14 angstrom"
)");
    EXPECT_EQ(InformationOf(recipe, kFull), (Information{{"cluster.preset", "Cu"},
                                                         {"cluster.surface", "0 0 1"},
                                                         {"cluster.emitter-layer", "3"},
                                                         {"emission.level", "2p"},
                                                         {"emission.kinetic", "560"},
                                                         {"emission.polarisation", "0 0 1"},
                                                         {"light.frame", "sample"},
                                                         {"thermal.debye", "Cu=343 O=500.5"},
                                                         {"thermal.temperature", "300"},
                                                         {"scattering.method", "FULL"},
                                                         {"image.imfp", "14 angstrom"}}));
}

TEST(RecipeInformation, KeepsNoDefaultBesideWhatTakesItsPlace) {
    const toml::table recipe = toml::parse(R"(
cluster = { preset = "Cu", emitters = "all", surface = [1, 1, 1] }
emission = { level = "1s", photon = "Al", unpolarised-along = [0.81, 0, -0.58] }
light = { frame = "analyser" }
thermal = { file = "vibrations.xml_flu" }
)");
    EXPECT_EQ(InformationOf(recipe, kMulti), (Information{{"cluster.preset", "Cu"},
                                                          {"cluster.emitters", "all"},
                                                          {"cluster.surface", "1 1 1"},
                                                          {"emission.level", "1s"},
                                                          {"emission.photon", "Al"},
                                                          {"emission.unpolarised-along", "0.81 0 -0.58"},
                                                          {"light.frame", "analyser"},
                                                          {"thermal.file", "vibrations.xml_flu"},
                                                          {"scattering.method", "MULTI"}}));
    const toml::table ready = toml::parse("cluster.file = \"c.xyz\"\nemission.isotropic = true\n");
    EXPECT_EQ(InformationOf(ready, kMulti), (Information{{"cluster.file", "c.xyz"},
                                                         {"emission.isotropic", "true"},
                                                         {"thermal.temperature", "300"},
                                                         {"scattering.method", "MULTI"}}));
}

}  // namespace
