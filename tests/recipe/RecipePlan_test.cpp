#include <gtest/gtest.h>

#include <set>

#include "ErrorText.h"
#include "TempFolder.h"
#include "recipe/RecipePlan.h"

namespace {

class RecipePlan : public testing::Test {
protected:
    /// A small recipe, with more lines in its sections.
    std::string Recipe(const std::map<std::string, std::string>& more = {}) const {
        std::map<std::string, std::string> sections = {{"cluster", "preset = \"Cu\"\natoms = 20\n"},
                                                       {"emission", "level = \"2p\"\nkinetic = 60\n"}};
        for (const auto& [section, lines] : more) sections[section] += lines + "\n";
        std::string text = sections[""];
        sections.erase("");
        for (const auto& [section, lines] : sections) text += "[" + section + "]\n" + lines;
        return folder_.Write("r.toml", text);
    }

    RunPlan Plan(const std::string& recipe) const { return PlanRecipe(recipe, {folder_.Path("out"), ""}); }

    std::map<std::string, std::string> Keys(const std::string& recipe) const {
        std::map<std::string, std::string> keys;
        for (const RunStep& step : Plan(recipe).steps) keys[step.name] = step.key;
        return keys;
    }

    /// The steps that the second plan repeats.
    static std::string Changed(const std::map<std::string, std::string>& before,
                               const std::map<std::string, std::string>& after) {
        std::string names;
        for (const char* name :
             {"cluster", "emission", "phases", "thermal", "checks", "scattering", "images", "picture"})
            if (before.at(name) != after.at(name)) names += (names.empty() ? "" : " ") + std::string(name);
        return names;
    }

    TempFolder folder_;
};

const std::string kAll = "cluster emission phases thermal checks scattering images picture";
const std::string kFromPhases = "emission phases checks scattering images picture";

}  // namespace

TEST_F(RecipePlan, AStepIsRepeatedForTheSettingsThatItDependsOn) {
    const std::map<std::string, std::string> base = Keys(Recipe());
    EXPECT_EQ(Keys(Recipe()), base);
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"cluster", "azimuth = 1", kAll},
        {"emission", "weight = 2", kFromPhases},
        {"phases", "lmax = 12", kFromPhases},
        {"thermal", "temperature = 77", "thermal checks images picture"},
        {"scattering", "method = \"SINGLE\"", "checks scattering images picture"},
        {"image", "resolution = 2", "checks images picture"},
        {"picture", "width = 300", "picture"},
        {"", "title = \"another\"", "picture"},
    };
    for (const auto& [section, line, repeated] : cases)
        EXPECT_EQ(Changed(base, Keys(Recipe({{section, line}}))), repeated) << line;
    // Vibrations are part of full scattering.
    const std::string full = "method = \"FULL\"";
    EXPECT_EQ(Changed(Keys(Recipe({{"scattering", full}})),
                      Keys(Recipe({{"scattering", full}, {"thermal", "temperature = 77"}}))),
              "thermal checks scattering images picture");
}

TEST_F(RecipePlan, AStepIsRepeatedForTheContentOfItsFiles) {
    const std::string flat = "4\ncopper\nCu 0 0 0\nCu 1.8 1.8 0\nCu -1.8 1.8 0\nCu 1.8 0 ";
    const auto write = [&](const std::string& height) {
        folder_.Write("c.xyz", flat + height + "\n");
        folder_.Write("a.cell", "lengths 4 4 " + height + "\natom Cu 0 0 0\n");
        return folder_.Write(
            "f.xml_flu", "<DocFluctuation><Temperature_K_>" + height + "</Temperature_K_></DocFluctuation>");
    };
    const std::string emission = "[emission]\nlevel = \"2p\"\nkinetic = 60\n";
    const std::tuple<std::string, std::string> cases[] = {
        {"[cluster]\nfile = \"c.xyz\"\n" + emission, kAll},
        {"[cluster]\ncell = \"a.cell\"\natoms = 20\n" + emission, kAll},
        {"[cluster]\npreset = \"Cu\"\n[thermal]\nfile = \"f.xml_flu\"\n" + emission,
         "thermal checks images picture"},
    };
    for (const auto& [text, repeated] : cases) {
        const std::string recipe = folder_.Write("r.toml", text);
        write("3");
        const std::map<std::string, std::string> before = Keys(recipe);
        write("4");
        EXPECT_EQ(Changed(before, Keys(recipe)), repeated) << text;
    }
}

TEST_F(RecipePlan, WhatCannotWorkIsRefusedBeforeAnythingIsMade) {
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"cluster", "emitter-layer = 0", "r.toml line 4: [cluster] emitter-layer: There is no layer 0"},
        {"cluster", "emitter-layer = [1,\n5000]", "line 5: [cluster] emitter-layer: There is no layer 5000"},
        {"cluster", "emitter = \"Ni\"", "[cluster]: No Ni to emit"},
        {"cluster", "debye = { Zz = 300 }", "Debye temperature is given for Zz"},
        {"emission", "weight = -1", "[emission] kinetic: The weight has to be above 0"},
        {"phases", "radius = { Ga = 1.2 }",
         "line 8: [phases] radius: there are no atoms of the name Ga; the names are Cu"},
        {"phases", "lmax = 99", "[phases]: The largest l has to lie between 0 and 60"},
        {"phases", "lmax = 4294967296", "[phases] lmax: is too large"},
        {"phases", "cut = -5", "[phases]: The cut of phase shifts"},
        {"phases", "zero = 1e6", "[phases]: The muffin-tin zero"},
        {"thermal", "debye = { Ni = 300 }", "[thermal]: There is a Debye temperature for Ni"},
        {"cluster", "temperature = 1e9", "line 4: [cluster] temperature: The temperature has to be from 0"},
        {"thermal", "temperature = [300,\n-1]",
         "r.toml line 9: [thermal] temperature: The temperature has to be from 0 to 10000 kelvin, not -1"},
        {"scattering", "imfp = 10", "[scattering] imfp: is a setting of the method FULL"},
        {"scattering", "method = \"FULL\"\n[image]\nmean-free-path = 10",
         "[image] mean-free-path: is for the other methods"},
        {"image", "resolution = 200", "line 8: [image] resolution: has to lie between"},
        {"picture", "file = \"a\\u0000.png\"", "[picture] file: holds a control character"},
        {"picture", "file = \"../a.png\"", "[picture] file: has to be a name without a folder"},
        {"picture", "file = \".a.png\"", "[picture] file: may not begin with a dot"},
        {"picture", "width = 40000", "The width of a PNG has to lie between 100 and 20000 pixels"},
    };
    for (const auto& [section, line, message] : cases) {
        const std::string error = ErrorText([&, &s = section, &l = line] { Plan(Recipe({{s, l}})); });
        EXPECT_NE(error.find(message), std::string::npos) << line << ": " << error;
    }
    const std::tuple<std::string, std::string> emissions[] = {
        {"level = \"4f\"\nkinetic = 60", "[emission] level: The element Cu has no electrons in the level 4f"},
        {"level = \"2p\"\nkinetic = [60, -5]", "[emission] kinetic: has to be above 0"},
        {"level = \"2p\"\nkinetic = 60.123456", "[emission] kinetic: The energy 60.123456 eV has more than"},
        {"level = \"2p\"\nkinetic = 1e9",
         "[emission] kinetic: The kinetic energy has to lie above 0 and up to"},
        {"level = \"2p\"\nphoton = 500", "[emission] photon: The photon energy of 500 eV does not free"},
        {"level = \"2p\"\nphoton = \"Xx\"", "[emission] photon: "},
    };
    for (const auto& [lines, message] : emissions) {
        folder_.Write("r.toml", "[cluster]\npreset = \"Cu\"\natoms = 20\n[emission]\n" + lines + "\n");
        const std::string error = ErrorText([&] { Plan(folder_.Path("r.toml")); });
        EXPECT_NE(error.find(message), std::string::npos) << lines << ": " << error;
    }
    EXPECT_FALSE(std::filesystem::exists(folder_.Path("out")));
}

TEST_F(RecipePlan, OneFileIsWrittenOnce) {
    folder_.Write("m.csv", "theta,phi,chi\n10,0,1\n20,0,2\n");
    const std::string compare = "measured = \"m.csv\"\n";
    EXPECT_NE(ErrorText([&] {
                  Plan(Recipe({{"compare", compare + "difference = \"same.png\""},
                               {"picture", "file = \"same.png\""}}));
              }).find("would write same.png twice"),
              std::string::npos);
    const RunPlan plan = Plan(Recipe({{"thermal", "temperature = [100, 300]"}}));
    std::multiset<std::string> outputs;
    for (const std::string& name : OutputsOf(plan)) outputs.insert(name);
    EXPECT_EQ(outputs.count("scatteredwave.xml_sf"), 1U);
    for (const std::string& name : outputs) EXPECT_EQ(outputs.count(name), 1U) << name;
}

TEST_F(RecipePlan, NothingComparedIsSaid) {
    EXPECT_EQ(Plan(Recipe()).remarks, "");
    EXPECT_NE(Plan(Recipe({{"compare", "rotate = true"}})).remarks.find("no measured pattern"),
              std::string::npos);
    EXPECT_NE(Plan(Recipe({{"scan", "vary = \"thermal.temperature\"\nvalues = [1, 2]"}}))
                  .remarks.find("a scan without"),
              std::string::npos);
}
