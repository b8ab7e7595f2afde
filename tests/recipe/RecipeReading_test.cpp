#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "ErrorText.h"
#include "TempFolder.h"
#include "recipe/RecipeCases.h"
#include "recipe/RecipeTable.h"

using std::literals::string_view_literals::operator""sv;

namespace {

std::string LabelsOf(const RecipeCase& one) {
    std::string labels;
    for (const RecipeVariation& variation : one.variations) labels += variation.label + " ";
    return labels;
}

}  // namespace

TEST(RecipeReading, QuantitiesTakeUnitsOfTheirKindOnly) {
    EXPECT_DOUBLE_EQ(ParseQuantity("1.4866 keV", RecipeUnit::kElectronVolt), 1486.6);
    EXPECT_DOUBLE_EQ(ParseQuantity(" 0.361nm ", RecipeUnit::kAngstrom), 3.61);
    EXPECT_DOUBLE_EQ(ParseQuantity("-45", RecipeUnit::kDegree), -45.0);
    EXPECT_EQ(ErrorText([] { ParseQuantity("300 C", RecipeUnit::kKelvin); }),
              "the unit \"C\" does not serve here; give K, kelvin");
    EXPECT_EQ(ErrorText([] { ParseQuantity("3 eV", RecipeUnit::kNone); }),
              "the unit \"eV\" does not serve here; give the plain number");
    EXPECT_EQ(ErrorText([] { ParseQuantity("warm", RecipeUnit::kKelvin); }), "\"warm\" is no number");
    EXPECT_EQ(ErrorText([] { ParseQuantity("nan", RecipeUnit::kKelvin); }), "\"nan\" is no number");
}

TEST(RecipeReading, MistakesAreNamedWithTheirLine) {
    const toml::table recipe =
        toml::parse("[cluster]\nraduis = 6\natoms = 1.5\nsurface = [0, 1]\n"sv, "r.toml"sv);
    RecipeTable cluster = RecipeTable(&recipe, "recipe").Section("cluster");
    cluster.Number("radius", RecipeUnit::kAngstrom);
    EXPECT_EQ(ErrorText([&] { cluster.Integer("atoms"); }),
              "r.toml line 3: [cluster] atoms: has to be a whole number");
    EXPECT_EQ(ErrorText([&] { cluster.Vector("surface"); }),
              "r.toml line 4: [cluster] surface: has to be a list of three numbers");
    EXPECT_EQ(ErrorText([&] { cluster.RefuseUnread(); }),
              "r.toml line 2: [cluster] raduis: there is no such key; did you mean radius?");
}

// TOML keeps whole numbers of 64 bits; beyond 2^53 not all of them are doubles.
TEST(RecipeReading, OneValueIsWhatStandsThereOrRefused) {
    const toml::table recipe = toml::parse(
        "[s]\nkept = 9007199254740992\nlost = 9007199254740993\nlist = [1, 2]\nwords = [\"a\"]\n"sv,
        "r.toml"sv);
    RecipeTable section = RecipeTable(&recipe, "recipe").Section("s");
    EXPECT_EQ(section.Number("kept", RecipeUnit::kNone), 9007199254740992.0);
    EXPECT_EQ(ErrorText([&] { section.Number("lost", RecipeUnit::kNone); }),
              "r.toml line 3: [s] lost: has more digits than a number keeps");
    const std::string noList = "takes one value, not a list";
    EXPECT_EQ(ErrorText([&] { section.Number("list", RecipeUnit::kNone); }),
              "r.toml line 4: [s] list: " + noList);
    for (const auto& read :
         std::vector<std::function<void()>>{[&] { section.Integer("list"); }, [&] { section.Text("words"); },
                                            [&] { section.Flag("list", false); }})
        EXPECT_TRUE(ErrorText(read).ends_with(noList));
}

TEST(RecipeReading, ListsMakeASeriesAndAScanMakesGroups) {
    const std::vector<RecipeGroup> groups = ExpandRecipe(
        "[emission]\nkinetic = [560, 600.5]\n[thermal]\n"
        "temperature = [100, 300]\ndebye = { Cu = 343 }\n"
        "[scan]\nvary = \"thermal.debye.Cu\"\nfrom = 300\nto = 400\nsteps = 3\n",
        "r.toml");
    ASSERT_EQ(groups.size(), 3U);
    EXPECT_DOUBLE_EQ(groups[1].scanned, 350.0);
    ASSERT_EQ(groups[1].cases.size(), 4U);
    EXPECT_EQ(LabelsOf(groups[1].cases[2]), "debye.Cu_350 600.5eV 100K ");
    EXPECT_EQ(groups[1].cases[2].settings["thermal"]["debye"]["Cu"].value<int>(), 350);
    EXPECT_EQ(groups[1].cases[2].settings["emission"]["kinetic"].value<double>(), 600.5);
}

TEST(RecipeReading, SeriesAndScansThatMakeNoSenseAreRefused) {
    std::string many = "1";
    for (int i = 2; i <= 40; ++i) many += ", " + std::to_string(i);
    const std::string scan = "[scan]\nvary = \"phases.zero\"\nvalues = ";
    const std::pair<std::string, std::string> cases[] = {
        {"[thermal]\ntemperature = []\n", "r.toml line 2: [thermal] temperature: the list is empty"},
        {"[thermal]\ntemperature = [1, 2, 1]\n", "r.toml line 2: [thermal] temperature: 1 stands twice in"},
        {"[thermal]\ntemperature = [1, [2]]\n", "r.toml line 2: [thermal] temperature: takes one value"},
        {"[thermal]\ntemperature = [9007199254740993]\n", "r.toml line 2: [thermal] temperature: has more"},
        {"[thermal]\ntemperature = [1\n", "r.toml line "},
        {"[thermal]\ntemperature = [" + many + "]\n[emission]\nkinetic = [" + many + "]\n",
         "r.toml line 2: [thermal] temperature: makes more than 1000"},
        {"[thermal]\ntemperature = [" + many + "]\n" + scan + "[" + many + "]\n",
         "r.toml line 4: [scan] vary: makes, with the series, more than 1000"},
        {scan + "[1, 2]\nfrom = 1\n", "r.toml line 3: [scan] values: give either"},
        {"[scan]\nvary = \"phases.zero\"\nfrom = 1\nto = 2\nsteps = 1001\n",
         "r.toml line 2: [scan] vary: give"},
    };
    for (const auto& [text, message] : cases)
        EXPECT_TRUE(ErrorText([&] { ExpandRecipe(text, "r.toml"); }).starts_with(message)) << message;
}

TEST(RecipeReading, WhatIsNoRecipeIsSaidToBeNone) {
    const TempFolder folder;
    EXPECT_NE(ErrorText([&] { ReadRecipe(folder.Path("")); }).find(" is a folder, not a recipe"),
              std::string::npos);
    EXPECT_EQ(ErrorText([&] { ReadRecipe(folder.Path("none.toml")); }),
              folder.Path("none.toml") + ": there is no such file");
    folder.Write("large.toml", "");
    std::filesystem::resize_file(folder.Path("large.toml"), std::uintmax_t{1} << 30U);
    EXPECT_EQ(ErrorText([&] { ReadRecipe(folder.Path("large.toml")); }),
              folder.Path("large.toml") + " is too large to be a recipe");
}
