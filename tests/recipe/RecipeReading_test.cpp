#include <gtest/gtest.h>

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

TEST(RecipeReading, ListsMakeASeriesAndAScanMakesGroups) {
    const TempFolder folder;
    const std::string path =
        folder.Write("r.toml",
                     "[emission]\nkinetic = [560, 600.5]\n[thermal]\n"
                     "temperature = [100, 300]\ndebye = { Cu = 343 }\n"
                     "[scan]\nvary = \"thermal.debye.Cu\"\nfrom = 300\nto = 400\nsteps = 3\n");
    const std::vector<RecipeGroup> groups = ExpandRecipe(path);
    ASSERT_EQ(groups.size(), 3U);
    EXPECT_DOUBLE_EQ(groups[1].scanned, 350.0);
    ASSERT_EQ(groups[1].cases.size(), 4U);
    EXPECT_EQ(LabelsOf(groups[1].cases[2]), "debye.Cu_350 600.5eV 100K ");
    EXPECT_EQ(groups[1].cases[2].settings["thermal"]["debye"]["Cu"].value<int>(), 350);
    EXPECT_EQ(groups[1].cases[2].settings["emission"]["kinetic"].value<double>(), 600.5);

    folder.Write("r.toml", "[thermal]\ntemperature = []\n");
    EXPECT_EQ(ErrorText([&] { ExpandRecipe(path); }), "The list thermal.temperature is empty");
    folder.Write("r.toml", "[thermal]\ntemperature = [1\n");
    EXPECT_NE(ErrorText([&] { ExpandRecipe(path); }).find("r.toml line "), std::string::npos);
}
