#include <gtest/gtest.h>

#include <filesystem>

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
    EXPECT_EQ(ErrorText([] { ParseQuantity("nan", RecipeUnit::kKelvin); }), "\"nan\" is no number");
}

// TOML keeps whole numbers of 64 bits; beyond 2^53 not all of them are doubles.
TEST(RecipeReading, LargeNumbersAreKept) {
    const toml::table recipe = toml::parse("[s]\nkept = 9007199254740992\n"sv, "r.toml"sv);
    RecipeTable section = RecipeTable(&recipe, "recipe").Section("s");
    EXPECT_EQ(section.Number("kept", RecipeUnit::kNone), 9007199254740992.0);
}

TEST(RecipeReading, ListsMakeASeriesAndAScanMakesGroups) {
    const std::vector<RecipeGroup> groups =
        ExpandRecipe({"[emission]\nkinetic = [560, 600.5]\n[thermal]\n"
                      "temperature = [100, 300]\ndebye = { Cu = 343 }\n"
                      "[scan]\nvary = \"thermal.debye.Cu\"\nfrom = 300\nto = 400\nsteps = 3\n",
                      "r.toml"});
    ASSERT_EQ(groups.size(), 3U);
    EXPECT_EQ(groups[1].scanned, std::vector<double>{350.0});
    ASSERT_EQ(groups[1].cases.size(), 4U);
    EXPECT_EQ(LabelsOf(groups[1].cases[2]), "debye.Cu_350 600.5eV 100K ");
    EXPECT_EQ(groups[1].cases[2].settings["thermal"]["debye"]["Cu"].value<int>(), 350);
    EXPECT_EQ(groups[1].cases[2].settings["emission"]["kinetic"].value<double>(), 600.5);
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
