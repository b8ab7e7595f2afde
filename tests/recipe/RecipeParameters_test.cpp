#include "recipe/RecipeParameters.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "ErrorText.h"
#include "TempFolder.h"
#include "prepare/cluster/SurfaceBuilding.h"
#include "recipe/RecipeCases.h"
#include "recipe/RecipeInputs.h"
#include "recipe/RecipeTable.h"

using std::literals::string_view_literals::operator""sv;

namespace {

const NamedValues kNumbers = {{"a", 3.61}, {"A", 2.0}, {"phi0", 15.0}};

TEST(RecipeParameters, AQuantityMayBeAnExpressionWithAUnit) {
    const std::tuple<const char*, RecipeUnit, double> cases[] = {
        {"a", RecipeUnit::kAngstrom, 3.61},           {"2*a nm", RecipeUnit::kAngstrom, 72.2},
        {"phi0 + 30", RecipeUnit::kDegree, 45.0},     {"a/2 A", RecipeUnit::kAngstrom, 1.805},  // the unit
        {"a * A", RecipeUnit::kAngstrom, 7.22},  // the parameter
        {"14 angstrom", RecipeUnit::kAngstrom, 14.0}, {"-45", RecipeUnit::kDegree, -45.0},
    };
    for (const auto& [text, unit, value] : cases)
        EXPECT_NEAR(ParseQuantity(text, unit, kNumbers), value, 1e-12) << text;
    EXPECT_EQ(ErrorText([] { ParseQuantity("2*b", RecipeUnit::kNone, kNumbers); }),
              "\"2*b\" is no number: there is no parameter b; there are A, a, phi0");
    EXPECT_EQ(ErrorText([] { ParseQuantity("a eV", RecipeUnit::kDegree, kNumbers); }),
              "the unit \"eV\" does not serve here; give deg, degree, degrees, rad");
    EXPECT_EQ(ErrorText([] { ParseQuantity("a + ", RecipeUnit::kDegree, kNumbers); }),
              "\"a + \" is no number");
}

TEST(RecipeParameters, AreReadInTheOrderOfTheirLinesAndCountInPlainUnits) {
    const toml::table recipe = toml::parse(
        "[parameters]\n"
        "d = { start = 0.19, lower = 0.17, upper = 0.21, unit = \"nm\", restraint = \"0.19 +- 0.005\" }\n"
        "twice = \"2*d - b\"\n"
        "b = 0.1\n"
        "a = \"361 pm\"\n"
        "c = { start = 2, restraint = \"1.9 \u00B1 0.2\" }\n"sv);
    const std::vector<RecipeParameter> parameters = ReadParameters(recipe);
    ASSERT_EQ(parameters.size(), 5U);
    EXPECT_EQ(parameters[4].restraint->sigma, 0.2);
    EXPECT_EQ(parameters[0].name, "d");
    EXPECT_EQ(parameters[0].upper, 0.21);
    ASSERT_TRUE(parameters[0].restraint);
    EXPECT_EQ(parameters[0].restraint->sigma, 0.005);
    EXPECT_EQ(parameters[1].expression, "2*d - b");
    EXPECT_DOUBLE_EQ(parameters[1].start, 3.7);
    EXPECT_EQ(parameters[3].unit, "pm");
    const NamedValues numbers = ParameterValues(parameters, {{"d", 0.2}});
    EXPECT_DOUBLE_EQ(numbers.at("d"), 2.0);
    EXPECT_DOUBLE_EQ(numbers.at("twice"), 3.9);
    EXPECT_DOUBLE_EQ(numbers.at("a"), 3.61);
}

const std::string kRecipe =
    "[parameters]\na = 3.61\nTD = 300\nhalf = \"a/2\"\n"
    "[cluster]\npreset = \"fcc\"\nelements = [\"Cu\"]\nlattice = \"2*half\"\natoms = 20\n"
    "[emission]\nlevel = \"2p\"\nkinetic = 60\n"
    "[thermal]\ndebye = { Cu = \"TD\" }\n";

TEST(RecipeParameters, AScanVariesWhatDependsOnTheParameter) {
    const std::vector<RecipeGroup> groups = ExpandRecipe(
        {kRecipe + "[scan]\nvary = [\"a\", \"TD\"]\nfrom = [3.5, 250]\nto = [3.7, 350]\nsteps = [3, 2]\n",
         "r.toml"});
    ASSERT_EQ(groups.size(), 6U);
    EXPECT_EQ(groups[3].scanned, (std::vector<double>{3.6, 350.0}));
    const RecipeCase& one = groups[3].cases[0];
    RecipeTable recipe(&one.settings, "recipe");
    RecipeTable cluster = recipe.Section("cluster");
    EXPECT_DOUBLE_EQ(cluster.Number("lattice", RecipeUnit::kAngstrom, 0.0), 3.6);
    ASSERT_EQ(one.variations.size(), 2U);
    EXPECT_EQ(one.variations[0].sections, std::set<std::string>{"cluster"});  // by way of half
    EXPECT_EQ(one.variations[1].sections, std::set<std::string>{"thermal"});
    EXPECT_EQ(one.variations[1].label, "TD_350");
    // The same in two tables, with values that are listed.
    const std::vector<RecipeGroup> tables = ExpandRecipe(
        {kRecipe + "[[scan]]\nvary = \"a\"\nvalues = [3.5, 3.6, 3.7]\n[[scan]]\nvary = \"TD\"\nvalues "
                   "= [250, 350]\n",
         "r.toml"});
    ASSERT_EQ(tables.size(), 6U);
    EXPECT_EQ(tables[3].scanned, groups[3].scanned);
}

// Far below the values of the scan, 0 among them, expressions may have no value; and a title is no use.
TEST(RecipeParameters, AScanTakesThemWhereItHasValues) {
    const std::vector<RecipeGroup> groups = ExpandRecipe(
        {"title = \"T\"\n[parameters]\nT = 300\nU = \"90000/T\"\n[thermal]\ntemperature = \"U\"\n"
         "[scan]\nvary = \"T\"\nvalues = [200, 300]\n",
         "r.toml"});
    ASSERT_EQ(groups.size(), 2U);
    RecipeTable recipe(&groups[0].cases[0].settings, "recipe");
    EXPECT_EQ(recipe.Section("thermal").Number("temperature", RecipeUnit::kKelvin), 450.0);
}

// Under another light the waves are not scattered again.
TEST(RecipeParameters, OfTheLightDoNotChangeTheEmission) {
    const toml::table recipe = toml::parse(
        "[parameters]\nx = 1\nE = 300\n[emission]\nkinetic = \"E\"\npolarisation = [\"x\", 0, 1]\n"sv);
    EXPECT_EQ(SectionsOfParameter(recipe, "x", ""), std::set<std::string>{"light"});
    EXPECT_EQ(SectionsOfParameter(recipe, "E", ""), std::set<std::string>{"emission"});
}

TEST(RecipeParameters, AreNoMoreThanAChainOfExpressionsMayHave) {
    const auto chain = [](int count) {
        std::string text = "[parameters]\n";
        for (int i = 0; i + 1 < count; ++i) text += fmt::format("a{:05} = \"a{:05} + 1\"\n", i, i + 1);
        return toml::parse(text + fmt::format("a{:05} = 1\n[thermal]\ntemperature = \"a00000\"\n", count - 1),
                           "r.toml"sv);
    };
    EXPECT_NO_THROW(RefuseUnusedParameters(chain(1000), ""));
    EXPECT_EQ(ErrorText([&] { RefuseUnusedParameters(chain(20000), ""); }),
              "r.toml line 1: [parameters]: has more than 1000 parameters");
}

// Where a text may be a word as well.
TEST(RecipeParameters, StandForNumbersBesideWords) {
    const std::vector<RecipeGroup> groups = ExpandRecipe(
        {"[parameters]\nd = 1.77\nL = 12\nE = 500\n[cluster.relax]\nd12 = \"d\"\nspacing = [\"d + 0.01\", "
         "\"-3 %\"]\n"
         "[emission]\nkinetic = [\"E\", \"E + 60\"]\n[image]\nimfp = \"L\"\n[phases]\nlmax = \"2*L\"\n",
         "r.toml"});
    ASSERT_EQ(groups.front().cases.size(), 2U);
    const RecipeCase& one = groups.front().cases[1];
    EXPECT_EQ(one.variations.front().label, "560eV");
    RecipeTable recipe(&one.settings, "recipe");
    EXPECT_EQ(recipe.Section("emission").Number("kinetic", RecipeUnit::kElectronVolt), 560.0);
    EXPECT_EQ(recipe.Section("phases").Count("lmax", 0), 24);
    RecipeTable image = recipe.Section("image");
    EXPECT_EQ(ReadMeanFreePath(image)->length_angstrom, 12.0);
    RecipeTable relax = recipe.Section("cluster").Section("relax");
    EXPECT_FALSE(relax.HasWord("d12"));
    EXPECT_EQ(relax.Scalars("spacing"), (std::vector<RecipeTable::Scalar>{1.78, std::string("-3 %")}));
}

/// What a section [cluster] with these lines makes, in words of full precision.
std::string Told(const std::string& lines) {
    toml::table recipe = toml::parse(
        "[parameters]\nx = 0.05\na = { start = 3.6, lower = 3, upper = 4 }\nq = { start = -3, unit = "
        "\"percent\" }\nT = 300\nphi = 30\n"
        "[cluster]\npreset = \"fcc\"\nelements = [\"Cu\"]\nemitter = \"Cu\"\nemitters = \"all\"\n" +
        lines);
    if (!recipe["cluster"].as_table()->contains("depth"))
        recipe["cluster"].as_table()->insert_or_assign("depth", 4.0);
    if (!recipe["cluster"].as_table()->contains("lattice"))
        recipe["cluster"].as_table()->insert_or_assign("lattice", 3.6);
    ResolveParameters(recipe, {});
    const ClusterRequest request =
        OnBuiltSurface(ReadClusterRequest(RecipeTable(&recipe, "recipe").Section("cluster"), {}));
    std::string told =
        fmt::format("{} {} {} {} {}\n", request.azimuth_deg, request.depth_angstrom, request.size_angstrom,
                    request.temperature_K, request.layerTolerance_angstrom.value_or(0.0));
    for (const auto& [element, debye_K] : request.debye_K) told += fmt::format("{} {}\n", element, debye_K);
    for (const ClusterDomain& domain : request.domains)
        told += fmt::format("{} {}\n", domain.turn_deg, domain.weight);
    for (const CellAtom& atom : request.cell.atoms) {
        const gemmi::Vec3 p = request.cell.Position(atom);
        told += fmt::format("{} {:.9f} {:.9f} {:.9f}\n", atom.element, p.x, p.y, p.z);
    }
    return told;
}

// Each key of a surface, with an expression and with the number that it comes to.
TEST(RecipeParameters, ServeEveryNumberOfASurface) {
    const std::string relax = "[cluster.relax]\n";
    const std::string oxygen = "[[cluster.adsorbate]]\nelement = \"O\"\nsuperstructure = \"p(2x1)\"\n";
    const std::pair<std::string, std::string> cases[] = {
        {"lattice = \"a\"\nazimuth = \"phi/2\"\nradius = \"2*a\"",
         "lattice = 3.6\nazimuth = 15\nradius = 7.2"},
        {"depth = \"a + x\"\nlayer-tolerance = \"x\"\ndomains = [0, \"phi\"]\ndomain-weights = [1, \"1 - "
         "x\"]",
         "depth = 3.65\nlayer-tolerance = 0.05\ndomains = [0, 30]\ndomain-weights = [1, 0.95]"},
        {"domains = \"phi\"\ndebye = { Cu = \"T\" }\ntemperature = \"T/2\"",
         "domains = 30\ndebye = { Cu = 300 }\ntemperature = 150"},
        {relax + "d12 = \"(1 + x)*1.8 angstrom\"\nd23 = \"q percent\"", relax + "d12 = 1.89\nd23 = \"-3%\""},
        {relax + "spacing = [\"1.9 + x\", \"-a%\", \"a/2\", \"q + 1 percent\"]\n",
         relax + "spacing = [1.95, \"-3.6 %\", 1.8, \"-2 percent\"]\n"},
        {relax + "shift = [\"x\", \"10*x pm\"]\nlateral = [[\"x\", \"-x\"]]\nrumple = [{ Cu = \"x\" }]",
         relax + "shift = [0.05, 0.005]\nlateral = [[0.05, -0.05]]\nrumple = [{ Cu = 0.05 }]"},
        {"[[cluster.relax.rumple]]\nCu = \"2*x\"\n[[cluster.relax.atoms]]\nby = [0, 0, \"x\"]",
         "[[cluster.relax.rumple]]\nCu = 0.1\n[[cluster.relax.atoms]]\nby = [0, 0, 0.05]"},
        {oxygen + "at = [\"10*x\", 0.5]\nheight = \"x nm\"", oxygen + "at = [0.5, 0.5]\nheight = 0.5"},
        {"domains = \"symmetry\"\ndomain-weights = [\"x\", \"1 - x\"]\n" + oxygen +
             "site = \"hollow\"\nheight = \"1 + x\"\ncoverage = \"10*x\"",
         "domains = \"symmetry\"\ndomain-weights = [0.05, 0.95]\n" + oxygen +
             "site = \"hollow\"\nheight = 1.05"},
    };
    for (const auto& [named, plain] : cases) EXPECT_EQ(Told(named), Told(plain)) << named;
    EXPECT_EQ(ErrorText([] { Told("[cluster.relax]\nd12 = \"y percent\""); }),
              " line 12: [cluster.relax] d12: \"y\" is no number: there is no parameter y; there are T, a, "
              "phi, q, x");
}

TEST(RecipeParameters, ACellFileNamesThem) {
    const TempFolder folder;
    folder.Write("c.cell", "lengths a a c0  # not b\natom Cu 0 0 0\natom O 0 0 z\n");
    const toml::table recipe = toml::parse(
        "[parameters]\na = 3\nc0 = 4\nz = \"1/2 + dz\"\ndz = 0.1\n[cluster]\ncell = \"c.cell\"\n"sv);
    RefuseUnusedParameters(recipe, folder.Path(""));
    EXPECT_EQ(SectionsOfParameter(recipe, "dz", folder.Path("")), std::set<std::string>{"cluster"});
    const toml::table more =
        toml::parse("[parameters]\na = 3\nb = 1\n[cluster]\ncell = \"c.cell\"\n"sv, "r.toml"sv);
    EXPECT_EQ(
        ErrorText([&] { RefuseUnusedParameters(more, folder.Path("")); }),
        "r.toml line 3: [parameters] b: nothing in the recipe depends on it: name it in a value, such as "
        "\"b\", or leave it out");
}

}  // namespace
