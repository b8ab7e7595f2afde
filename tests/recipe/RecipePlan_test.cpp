#include <gtest/gtest.h>

#include <algorithm>

#include "ErrorText.h"
#include "TempFolder.h"
#include "XmlText.h"
#include "recipe/RecipePlan.h"

namespace {

class RecipePlan : public testing::Test {
protected:
    /// A small recipe, with more lines in its sections.
    std::string Recipe(const std::map<std::string, std::string>& more = {}) const {
        std::map<std::string, std::string> sections = {{"cluster", "preset = \"Cu\"\natoms = 20\n"},
                                                       {"emission", "level = \"2p\"\nkinetic = 60\n"}};
        for (const auto& [section, lines] : more) sections[section] += lines + "\n";
        sections.try_emplace("scattering", "method = \"MULTI\"\n");
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
        {"emission", "polarisation = [1, 0, 0]", "images picture"},
        {"light", "frame = \"analyser\"", "images picture"},
        {"image", "resolution = 2", "checks images picture"},
        {"image", "imfp = 10", "checks images picture"},
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
    EXPECT_EQ(Changed(Keys(Recipe({{"scattering", full}})),
                      Keys(Recipe({{"scattering", full}, {"image", "imfp = 10"}}))),
              "checks scattering images picture");
}

TEST_F(RecipePlan, FullScatteringIsTakenWhereItCostsLittle) {
    const auto remarks = [&](const std::map<std::string, std::string>& more) {
        std::map<std::string, std::string> open = more;
        open.emplace("scattering", "");
        return Plan(Recipe(open)).remarks;
    };
    EXPECT_EQ(remarks({{"scattering", "method = \"MULTI\""}}), "");
    EXPECT_EQ(remarks({}), "method FULL\n");
    EXPECT_PRED_FORMAT2(
        testing::IsSubstring, "method MULTI; FULL would take about",
        remarks({{"cluster", "emitter-layer = [1, 2, 3, 4, 5, 6, 7, 8, 9]"},
                 {"phases", "lmax = 60"},
                 {"scan", "vary = \"emission.kinetic\"\nfrom = 9000\nto = 9390\nsteps = 40"}}));
    EXPECT_EQ(remarks({{"image", "mean-free-path = 20"}}),
              "method MULTI, as FULL takes no such waves or damping\n");
    // The scattered waves and what follows are those of the method.
    EXPECT_EQ(Changed(Keys(Recipe()), Keys(Recipe({{"scattering", ""}}))),
              "checks scattering images picture");
}

TEST_F(RecipePlan, AStepIsRepeatedForTheContentOfItsFiles) {
    const auto write = [&](const std::string& number) {
        folder_.Write("c.xyz", "2\ncopper\nCu 0 0 0\nCu 1.8 1.8 " + number + "\n");
        folder_.Write("a.cell", "lengths 4 4 " + number + "\natom Cu 0 0 0\n");
        folder_.Write("e.xml_emt", Tag("emitted_wave_data",
                                       Tag("data", Tag("list_emitter", Tag("i", Tag("Ratio", number))))));
        folder_.Write("p.xml_ph",
                      Tag("PhaseShiftData",
                          Tag("data", Tag("ListScatteringPhaseShift",
                                          Tag("i", Tag("Ek_eV", number) + Tag("AdditionalData", ""))))));
        folder_.Write("f.xml_flu", Tag("DocFluctuation", Tag("Temperature_K_", number)));
    };
    const std::string cluster = "[cluster]\npreset = \"Cu\"\natoms = 20\n";
    const std::string emission = "[emission]\nlevel = \"2p\"\nkinetic = 60\n";
    const std::pair<std::string, std::string> cases[] = {
        {"[cluster]\nfile = \"c.xyz\"\n" + emission, kAll},
        {"[cluster]\ncell = \"a.cell\"\natoms = 20\n" + emission, kAll},
        {cluster + "[emission]\nfile = \"e.xml_emt\"\n", kFromPhases},
        {cluster + emission + "[phases]\nfile = \"p.xml_ph\"\n", kFromPhases},
        {cluster + emission + "[thermal]\nfile = \"f.xml_flu\"\n", "thermal checks images picture"},
    };
    for (const auto& [text, repeated] : cases) {
        const std::string recipe = folder_.Write("r.toml", text + "[scattering]\nmethod = \"MULTI\"\n");
        write("3");
        const std::map<std::string, std::string> before = Keys(recipe);
        write("4");
        EXPECT_EQ(Changed(before, Keys(recipe)), repeated) << text;
    }
}

TEST_F(RecipePlan, AParameterRepeatsTheStepsThatUseIt) {
    folder_.Write("p.cell", "lengths 3.6 3.6 c\natom Cu 0 0 0\natom Cu 1/2 1/2 z\n");
    const auto keys = [&](const std::string& parameters) {
        folder_.Write(
            "r.toml",
            "[parameters]\n" + parameters +
                "[cluster]\ncell = \"p.cell\"\natoms = 20\n[emission]\nlevel = \"2p\"\nkinetic = 60\n"
                "[thermal]\ntemperature = \"T\"\n[scattering]\nmethod = \"MULTI\"\n");
        return Keys(folder_.Path("r.toml"));
    };
    const auto base = keys("c = 3.7\nz = \"c/7.4\"\nT = 300\n");
    EXPECT_EQ(Changed(base, keys("c = 3.7\nz = \"1/2\"\nT = 300\n")), "");  // the same numbers
    EXPECT_EQ(Changed(base, keys("c = 3.7\nz = \"c/7.4\"\nT = 77\n")), "thermal checks images picture");
    EXPECT_EQ(Changed(base, keys("c = 3.8\nz = \"1/2\"\nT = 300\n")), kAll);
    EXPECT_EQ(Changed(base, keys("c = 3.7\nz = 0.51\nT = 300\n")), kAll);
}

// Two numbers that act on different steps: each cluster once, each temperature of it once.
TEST_F(RecipePlan, AScanOfTwoSettingsSharesWhatTheyDoNotChange) {
    const std::vector<std::string> outputs =
        OutputsOf(Plan(Recipe({{"scan",
                                "vary = [\"cluster.azimuth\", \"thermal.temperature\"]\n"
                                "values = [[0, 1, 2], [100, 200]]"}})));
    EXPECT_EQ(std::count(outputs.begin(), outputs.end(), "cluster_azimuth_1.xyz"), 1);
    EXPECT_EQ(std::count(outputs.begin(), outputs.end(), "scatteredwave_azimuth_1.xml_sf"), 1);
    EXPECT_EQ(std::count(outputs.begin(), outputs.end(), "pattern_azimuth_1_temperature_200.xml_img"), 1);
}

TEST_F(RecipePlan, AScanOfTheComparisonCalculatesOnce) {
    folder_.Write("m.csv", "theta,phi,chi\n10,0,1\n20,0,2\n30,0,1\n");
    const std::string compare = "measured = \"m.csv\"\ndifference = \"d.csv\"";
    const RunPlan one = Plan(Recipe({{"compare", compare}}));
    const RunPlan scan = Plan(Recipe({{"compare", compare},
                                      {"scan", "vary = \"compare.theta-offset\"\nvalues = [-1, 0, 1]"},
                                      {"picture", ""}}));
    EXPECT_EQ(scan.steps.size(), one.steps.size());
    ASSERT_EQ(scan.results.size(), 3U);
    EXPECT_EQ(scan.results[2].comparison->setting.thetaOffset, 1.0);
    EXPECT_EQ(scan.results[2].image, "pattern.xml_img");
    const std::vector<std::string> outputs = OutputsOf(scan);
    EXPECT_EQ(std::count(outputs.begin(), outputs.end(), "d_theta-offset_-1.csv"), 1);
}

TEST_F(RecipePlan, ASeriesOfTemperaturesSharesItsWaves) {
    const std::vector<std::string> outputs =
        OutputsOf(Plan(Recipe({{"thermal", "temperature = [100, 300]"}})));
    EXPECT_EQ(std::count(outputs.begin(), outputs.end(), "scatteredwave.xml_sf"), 1);
}

TEST_F(RecipePlan, LightOfEitherHandSharesItsWavesAndMakesAnAsymmetry) {
    const std::string light = "circular = [\"left\", \"right\"]\nalong = [0, 0, -1]";
    std::vector<std::string> outputs =
        OutputsOf(Plan(Recipe({{"", "series = \"asymmetry\"\n"}, {"emission", light}})));
    std::sort(outputs.begin(), outputs.end());
    const std::vector<std::string> expected = {
        "asymmetry.png",        "asymmetry.xml_img",     "checks.txt",
        "cluster.emitters.csv", "cluster.xyz",           "dipole.csv",
        "emitter_left.xml_emt", "emitter_right.xml_emt", "fluctuation.xml_flu",
        "i0_left.xml_img",      "i0_right.xml_img",      "pattern_left.png",
        "pattern_left.xml_img", "pattern_right.png",     "pattern_right.xml_img",
        "phaseshift.xml_ph",    "scatteredwave.xml_sf",  "unit_waves.xml_emt"};
    EXPECT_EQ(outputs, expected);
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "is that of two members", ErrorText([&] {
                            Plan(Recipe({{"", "series = \"asymmetry\"\n"}}));
                        }));
}

TEST_F(RecipePlan, NothingComparedIsSaid) {
    EXPECT_EQ(Plan(Recipe()).remarks, "");
    EXPECT_NE(Plan(Recipe({{"compare", "rotate = true"}})).remarks.find("no measured pattern"),
              std::string::npos);
    EXPECT_NE(Plan(Recipe({{"scan", "vary = \"thermal.temperature\"\nvalues = [1, 2]"}}))
                  .remarks.find("a scan without"),
              std::string::npos);
}
