#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <list>

#include "ErrorText.h"
#include "TempFolder.h"
#include "foundation/Text.h"
#include "prepare/cluster/SurfaceBuilding.h"
#include "prepare/cluster/Terminations.h"
#include "recipe/RecipeInputs.h"
#include "recipe/RecipePictures.h"
#include "recipe/RecipeSettings.h"

using namespace qvre;

// What each key of a recipe sets, in which unit, and what holds without it.

namespace {

std::string Text(double number) {
    return DoubleToText(number);
}
std::string Text(const std::string& text) {
    return text;
}
std::string Text(const std::optional<double>& number) {
    return number ? DoubleToText(*number) : "none";
}
std::string Text(const ClusterDomain& domain) {
    return DoubleToText(domain.turn_deg) + (domain.isMirrored ? "m" : "");
}
template <class Container>
std::string List(const Container& items) {
    std::string text;
    for (const auto& item : items) text += (text.empty() ? "" : " ") + Text(item);
    return text;
}
std::string Text(const std::map<std::string, double>& numbers) {
    std::string text;
    for (const auto& [name, number] : numbers) text += name + "=" + Text(number) + " ";
    return text;
}
/// The parts of the light: "(1,0,0)", "(0.707107,0.707107i,0)".
std::string Text(const std::vector<LightVector>& light) {
    std::string text;
    for (const LightVector& part : light) {
        std::string axes;
        for (const std::complex<double>& a : part) {
            axes += axes.empty() ? "(" : ",";
            axes += std::abs(a.imag()) < 1e-12 ? Text(a.real()) : Text(a.imag()) + "i";
        }
        text += axes + ")";
    }
    return text;
}

using Fields = std::map<std::string, std::string>;
using Lines = std::vector<std::pair<std::string, std::string>>;

RecipeTable Section(const std::string& lines) {
    static std::list<toml::table> recipes;  // a section refers to its recipe
    recipes.push_back(toml::parse("[s]\n" + lines + "\n", std::string("r.toml")));
    return RecipeTable(&recipes.back(), "recipe").Section("s");
}

/// "azimuth 0; layers 3; ", without the fields that are as in `before`.
std::string Told(const Fields& fields, const Fields& before = {}) {
    std::string text;
    for (const auto& [name, value] : fields)
        if (!before.contains(name) || before.at(name) != value) text += name + " " + value + "; ";
    return text;
}

/// The fields of a section with the lines that it cannot do without, and what each further line changes.
template <class Reader>
void ExpectFields(const Reader& read, const std::string& needed, const std::string& fields,
                  const Lines& changes) {
    const Fields before = read(Section(needed));
    EXPECT_EQ(Told(before), fields);
    for (const auto& [line, changed] : changes)
        EXPECT_EQ(Told(read(Section(needed + line)), before), changed) << needed << line;
}

std::string YesNo(bool flag) {
    return flag ? "yes" : "no";
}

const ClusterFacts kCopper = {{"Cu"}, {"Cu"}, "Cu"};

}  // namespace

TEST(RecipeRequests, Cluster) {
    const TempFolder folder;
    folder.Write("a.cell", "lengths 4 4 4\natom Po 0 0 0\n");
    const auto read = [&](const RecipeTable& section) {
        const ClusterRequest r = ReadClusterRequest(section, {folder.Path("")});
        return Fields{{"surface", List(r.surface)},
                      {"azimuth", Text(r.azimuth_deg)},
                      {"domains", List(r.domains)},
                      {"emitter", r.emitter},
                      {"sites", List(r.sites)},
                      {"layers", List(r.layers)},
                      {"top", r.top},
                      {"bowl", YesNo(r.Shape() == ClusterShape::kParaboloid)},
                      {"all", YesNo(r.allEmitters)},
                      {"depth", Text(r.depth_angstrom)},
                      {"termination", r.termination},
                      {"tolerance", Text(LayerTolerance_angstrom(r))},
                      {"radius", Text(r.size_angstrom)},
                      {"atoms", Text(r.atoms)},
                      {"debye", Text(r.debye_K)},
                      {"temperature", Text(r.temperature_K)},
                      {"cell", r.cell.Formula() + " " + Text(r.cell.axes.column_copy(0).length())}};
    };
    ExpectFields(read, "preset = \"Cu\"\n",
                 "all no; atoms 200; azimuth 0; bowl no; cell Cu 3.61; debye ; depth 0; domains 0; emitter ; "
                 "layers 3; "
                 "radius 0; sites ; surface 0 0 1; temperature 300; termination ; tolerance 0.01; top ; ",
                 {{"surface = [1, 1, -2]", "surface 1 1 -2; "},
                  {"azimuth = \"1 rad\"", "azimuth 57.2958; "},
                  {"domains = [0, 90]", "domains 0 90; "},
                  {"emitter = \"Cu\"", "emitter Cu; "},
                  {"sites = [2]", "sites 2; "},
                  {"emitter-layer = 5", "layers 5; "},
                  {"top = \"Cu\"", "top Cu; "},
                  {"layer-tolerance = \"20 pm\"", "tolerance 0.2; "},
                  {"emitters = \"all\"\ndepth = \"1 nm\"", "all yes; bowl yes; depth 10; tolerance 0.3; "},
                  {"emitters = \"all\"\ndepth = 4\ntermination = 1\nshape = \"hemisphere\"",
                   "all yes; depth 4; termination 1; tolerance 0.3; "},
                  {"emitters = \"all\"\ndepth = 0\ntermination = \"Cu / Cu\"",
                   "all yes; bowl yes; termination Cu / Cu; tolerance 0.3; "},
                  {"shape = \"hemisphere\"", ""},
                  {"shape = \"paraboloid\"", "bowl yes; "},
                  {"radius = \"0.7 nm\"", "radius 7; "},
                  {"radius = 7", "radius 7; "},
                  {"atoms = 50", "atoms 50; "},
                  {"debye = { Cu = 343 }", "debye Cu=343 ; "},
                  {"temperature = 77", "temperature 77; "}});
    EXPECT_EQ(read(Section("preset = \"fcc\"\nelements = \"Ni\"\nlattice = \"0.352 nm\"")).at("cell"),
              "Ni 3.52");
    EXPECT_EQ(read(Section("cell = \"a.cell\"")).at("cell"), "Po 4");
}

// The keys one by one against heights and places counted by hand: fcc(001) of spacing 2 angstrom.
TEST(RecipeRequests, SurfaceStructure) {
    const TempFolder folder;
    folder.Write("co.xyz", "2\n\nC 0 0 1\nO 0 0 2\n");
    const auto read = [&](const std::string& more) {
        return ReadClusterRequest(
            Section("preset = \"fcc\"\nelements = \"Ni\"\nlattice = 4\nemitters = \"all\"\nemitter = "
                    "\"Ni\"\ndepth = 9\n" +
                    more),
            {folder.Path("")});
    };
    /// How far atoms lie below the first, from above: "O -1, Ni 1.2".
    const auto depths = [&](const std::string& more, std::size_t atoms) {
        const CrystalCell cell = OnBuiltSurface(read(more)).cell;
        std::string text;
        for (std::size_t i = 0; i < atoms; ++i)
            text += cell.atoms[i].element + " " +
                    DoubleToText(
                        std::round(1e6 * (cell.Position(cell.atoms[0]).z - cell.Position(cell.atoms[i]).z)) /
                            1e6 +
                        0.0) +
                    "; ";
        return text;
    };
    const std::pair<std::string, std::string> cases[] = {
        {"spacing = [\"-5 percent\", 2.1, \"0.19 nm\"]", "Ni 0; Ni 1.9; Ni 4; Ni 5.9; "},
        {"d23 = \"5%\"", "Ni 0; Ni 2; Ni 4.1; Ni 6.1; "},
        {"d12 = \"190 pm\"", "Ni 0; Ni 1.9; Ni 3.9; Ni 5.9; "},
        {"shift = [0.1, \"-0.2 angstrom\"]", "Ni 0; Ni 2.3; Ni 4.1; Ni 6.1; "},
        {"rumple = [{}, { Ni = 0.3 }]", "Ni 0; Ni 1.7; Ni 4; Ni 6; "},
        {"[[s.relax.atoms]]\nlayer = 2\nelement = \"Ni\"\nat = [0.5, 0.5]\nby = [0, 0, \"10 pm\"]",
         "Ni 0; Ni 1.9; Ni 4; Ni 6; "}};
    for (const auto& [keys, told] : cases) EXPECT_EQ(depths("[s.relax]\n" + keys, 4), told) << keys;
    const std::string molecule = "[[s.adsorbate]]\nmolecule = \"co.xyz\"\nat = [0.5, 0.5]\nheight = 0.8\n";
    EXPECT_EQ(depths(molecule, 4), "O 0; C 1; Ni 1.8; Ni 3.8; ");
    EXPECT_EQ(depths(molecule + "tilt = 60\ncoverage = 1", 4), "O 0; C 0.5; Ni 1.3; Ni 3.3; ");
    EXPECT_EQ(depths(molecule + "superstructure = [[1, 1], [-1, 1]]\ncoverage = 0.5", 5),
              "O 0; C 1; Ni 1.8; Ni 1.8; Ni 3.8; ");
    const ClusterRequest rows = OnBuiltSurface(
        read("domains = \"symmetry\"\ndomain-weights = [3, 1]\n" + molecule + "superstructure = \"p(2x1)\""));
    EXPECT_EQ(List(rows.domains), "0 90");
    EXPECT_EQ(rows.domains.at(0).weight, 3.0);
}

TEST(RecipeRequests, Emission) {
    const auto read = [](const RecipeTable& section) {
        const WavesRequest r = ReadWavesRequest(section, kCopper);
        return Fields{{"level", r.emission.level.Name()},     {"weight", Text(r.emission.weight)},
                      {"kinetic", Text(r.energy.kinetic_eV)}, {"photon", Text(r.energy.photon_eV)},
                      {"binding", Text(r.energy.binding_eV)}, {"fermi", Text(r.energy.fermi_eV)},
                      {"isotropic", YesNo(r.isotropic)},      {"light", Text(r.light)},
                      {"core", WordFor(r.emission.core)}};
    };
    ExpectFields(read, "level = \"2p3/2\"\nkinetic = \"0.5 keV\"\n",
                 "binding none; core self-consistent; fermi 10; isotropic no; kinetic 500; level 2p3/2; "
                 "light (0,0,1); photon 0; "
                 "weight 1; ",
                 {{"weight = 2.5", "weight 2.5; "},
                  {"core = \"analytical\"", "core analytical; "},
                  {"polarisation = [2, 0, 0]", "light (1,0,0); "},
                  {"unpolarised-along = [0, 0, -1]", "light " + Text(UnpolarisedLight({0, 0, -1})) + "; "},
                  // Helicity +1 along z: e1 + i e2 up to a common phase.
                  {"circular = \"left\"\nalong = [0, 0, 1]", "light (0.707107,0.707107i,0); "},
                  {"circular = \"right\"\nalong = [0, 0, 1]", "light (0.707107,-0.707107i,0); "}});
    const std::string level = "level = \"2p\"\n";
    const std::string photon =
        "binding none; core self-consistent; fermi 10; isotropic no; kinetic 0; level 2p; light (0,0,1); "
        "photon ";
    ExpectFields(read, level + "photon = \"Al\"\n", photon + "1486.6; weight 1; ",
                 {{"fermi = 7.5", "fermi 7.5; "}});
    ExpectFields(read, level + "photon = \"Mg\"\n", photon + "1253.6; weight 1; ", {});
    ExpectFields(read, level + "photon = \"Ag\"\n", photon + "2984.3; weight 1; ", {});
    ExpectFields(read, level + "photon = \"1.2 keV\"\n", photon + "1200; weight 1; ",
                 {{"binding = \"0.93 keV\"", "binding 930; "}});
    const Fields isotropic = read(Section("kinetic = 600\nisotropic = true\nweight = 3"));
    EXPECT_EQ(isotropic.at("isotropic") + isotropic.at("kinetic") + isotropic.at("weight"), "yes6003");
}

TEST(RecipeRequests, PhaseShifts) {
    const auto read = [](const RecipeTable& section) {
        const PhaseShiftRequest r = ReadPhaseShiftRequest(section, kCopper);
        return Fields{{"Slater", YesNo(r.exchange == ExchangeKind::kSlater)},
                      {"Furness-McCarthy", YesNo(r.exchange == ExchangeKind::kFurnessMcCarthy)},
                      {"relativity", YesNo(r.equation == RadialEquation::kScalarRelativistic)},
                      {"radius", Text(r.radius_angstrom)},
                      {"zero", Text(r.zero_eV)},
                      {"lmax", Text(r.limits.lMax)},
                      {"cut", Text(r.limits.cut_deg)}};
    };
    ExpectFields(read, "",
                 "Furness-McCarthy yes; Slater no; cut 0.3; lmax 20; radius ; relativity no; zero none; ",
                 {{"exchange = \"furness\"", ""},
                  {"exchange = \"slater\"", "Furness-McCarthy no; Slater yes; "},
                  {"exchange = \"none\"", "Furness-McCarthy no; "},
                  {"relativistic = true", "relativity yes; "},
                  {"relativistic = false", ""},
                  {"radius = { Cu = \"120 pm\" }", "radius Cu=1.2 ; "},
                  {"zero = -12.5", "zero -12.5; "},
                  {"lmax = 12", "lmax 12; "},
                  {"cut = \"0.01 rad\"", "cut 0.572958; "}});
}

TEST(RecipeRequests, Vibrations) {
    const auto read = [](const RecipeTable& section) {
        const VibrationRequest r = ReadVibrationRequest(section, kCopper);
        return Fields{{"temperature", Text(r.temperature_K)},
                      {"Debye", YesNo(r.model == VibrationModel::kDebye)},
                      {"Einstein", YesNo(r.model == VibrationModel::kEinstein)},
                      {"debye", Text(r.debyeTemperature_K)},
                      {"uiso", Text(r.uiso_angstrom2)}};
    };
    ExpectFields(read, "", "Debye yes; Einstein no; debye ; temperature 300; uiso ; ",
                 {{"temperature = \"77 K\"", "temperature 77; "},
                  {"model = \"debye\"", ""},
                  {"model = \"einstein\"", "Debye no; Einstein yes; "},
                  {"model = \"cluster\"", "Debye no; "},
                  {"debye = { Cu = 343 }", "debye Cu=343 ; "},
                  {"uiso = { Cu = 0.0072 }", "uiso Cu=0.0072 ; "},
                  {"B = { Cu = 0.55 }", "uiso Cu=0.00696583 ; "}});
}

TEST(RecipeRequests, MeanFreePath) {
    const auto read = [](RecipeTable section) {
        const std::optional<MeanFreePathRequest> r = ReadMeanFreePath(section);
        if (!r) return Fields{{"given", "no"}};
        return Fields{{"length", Text(r->length_angstrom)}, {"gap", Text(r->gap_eV)}};
    };
    EXPECT_EQ(read(Section("")).at("given"), "no");
    ExpectFields(read, "imfp = \"TPP-2M\"\n", "gap 0; length none; ", {{"gap = 8.9", "gap 8.9; "}});
    ExpectFields(read, "imfp = \"1.4 nm\"\n", "gap 0; length 14; ", {});
    ExpectFields(read, "imfp = 14\n", "gap 0; length 14; ", {});
    const auto refused = [&](const std::string& lines) { return ErrorText([&] { read(Section(lines)); }); };
    for (const char* text : {"\"TPP\"", "\"\"", "\"angstrom\""})
        EXPECT_EQ(refused(std::string("imfp = ") + text),
                  "r.toml line 2: [s] imfp: has to be a length such as \"14 angstrom\", or \"TPP-2M\"");
    EXPECT_EQ(
        refused("imfp = 0"),
        "r.toml line 2: [s] imfp: The mean free path has to lie between 0.5 and 100000 angstrom, not 0");
    EXPECT_EQ(refused("imfp = \"TPP-2M\"\ngap = 31"),
              "r.toml line 3: [s] gap: The band gap has to lie between 0 and 30 eV, not 31");
    for (const char* text : {"gap = 1", "imfp = 14\ngap = 1"})
        EXPECT_PRED_FORMAT2(testing::IsSubstring, "gap: is a setting of imfp = \"TPP-2M\"", refused(text));
}

TEST(RecipeRequests, ScatteringAndImage) {
    const auto scattering = [](const RecipeTable& section) {
        const ScatteringSection r = ReadScatteringSection(section);
        return Fields{{"method", r.method ? WordFor(*r.method) : "open"},
                      {"tolerance", Text(r.request.full.tolerance)}};
    };
    ExpectFields(scattering, "", "method open; tolerance 1e-05; ",
                 {{"method = \"SINGLE\"", "method SINGLE; "},
                  {"method = \"SLOWMULTI\"", "method SLOWMULTI; "},
                  {"method = \"MULTI\"", "method MULTI; "},
                  {"method = \"FULL\"", "method FULL; "},
                  {"method = \"FULL\"\ntolerance = 0.001", "method FULL; tolerance 0.001; "}});
    const auto image = [](const RecipeTable& section) {
        const ImageRequest r = ReadImageSection(section).request;
        return Fields{{"map", WordFor(r.map)},
                      {"resolution", Text(r.resolution)},
                      {"path", Text(r.emergence.meanFreePath)},
                      {"limit", Text(r.emergence.limits.largest)},
                      {"lower", Text(r.emergence.limits.smallest)}};
    };
    ExpectFields(image, "", "limit 0; lower 0; map AE; path 0; resolution 1; ",
                 {{"map = \"AE\"", ""},
                  {"map = \"EC\"", "map EC; "},
                  {"resolution = 2.5", "resolution 2.5; "},
                  {"mean-free-path = \"4 nm\"", "path 4e-09; "},
                  {"limit = 8", "limit 8e-10; "},
                  {"lower-limit = 2", "lower 2e-10; "}});
}

std::string BackgroundText(const std::optional<BackgroundModel>& background) {
    if (!background) return "none";
    return background->degree ? std::to_string(*background->degree) : "mean";
}

TEST(RecipeRequests, Comparison) {
    const TempFolder folder;
    std::string asked;  // on the command line
    const auto read = [&](const RecipeTable& section) {
        const RunComparison r = ReadCompareSection(section, {folder.Path("")}, asked);
        return Fields{
            {"measured", std::filesystem::path(r.request.measured).filename()},
            {"theta", Text(r.request.thetaMin) + " " + Text(r.request.thetaMax)},
            {"background", BackgroundText(r.request.background)},
            {"rotate", YesNo(r.request.searched.rotation)},
            {"rotation", Text(r.request.setting.rotation)},
            {"offset", r.request.searched.thetaOffset ? "found" : Text(r.request.setting.thetaOffset)},
            {"tilt", r.request.searched.tilt
                         ? "found"
                         : Text(r.request.setting.tilt) + " " + Text(r.request.setting.tiltAzimuth)},
            {"fold", Text(r.request.instrument.fold)},
            {"mirror", Text(r.request.instrument.mirror)},
            {"acceptance", Text(r.request.instrument.acceptance)},
            {"potential", Text(r.request.instrument.innerPotential)},
            {"energy", Text(r.request.instrument.energy)},
            {"scan", Text(r.request.scan.theta) + " " + Text(r.request.scan.phi)},
            {"sigma", WordFor(r.request.sigma)},
            {"difference", r.difference}};
    };
    // Five rings of two points.
    std::string points;
    std::string pointsOfChi;
    for (int i = 0; i < 10; ++i) {
        const std::string place = fmt::format("{},{},{}", 10 * (i / 2 + 1), 90 * (i % 2), 5 + i * i % 7);
        points += place + "\n";
        pointsOfChi += fmt::format("{},{}\n", place, i * i % 5);
    }
    folder.Write("chi.csv", "theta,phi,intensity,chi\n" + pointsOfChi);
    folder.Write("m.csv", "theta,phi,intensity\n" + points);
    ExpectFields(
        read, "measured = \"chi.csv\"\n",
        "acceptance 0; background none; difference ; energy 0; fold 1; measured chi.csv; mirror none; "
        "offset 0; potential none; rotate no; rotation 0; scan none none; sigma none; theta 0 90; tilt 0 0; ",
        {{"theta = [15, \"1 rad\"]", "theta 15 57.2958; "},
         {"background = \"mean\"", "background mean; "},
         {"background = 2", "background 2; "},
         {"rotate = true", "rotate yes; "},
         {"rotation = \"0.5 rad\"", "rotation 28.6479; "},
         {"theta-offset = true", "offset found; "},
         {"theta-offset = -1.5", "offset -1.5; "},
         {"tilt = true", "tilt found; "},
         {"tilt = [1.5, 30]", "tilt 1.5 30; "},
         {"fold = 3", "fold 3; "},
         {"mirror = 15", "mirror 15; "},
         {"acceptance = 3", "acceptance 3; "},
         {"inner-potential = 12", "potential 12; "},
         {"energy = \"1 keV\"\ninner-potential = 12", "energy 1000; potential 12; "},
         {"sigma = \"counts\"", "sigma counts; "},
         {"difference = \"d.svg\"", "difference d.svg; "}});
    EXPECT_EQ(read(Section("measured = \"m.csv\"")).at("background"), "3");
    folder.Write("scan.csv", "phi,counts\n0,5\n10,7\n20,6\n");
    EXPECT_EQ(read(Section("measured = \"scan.csv\"\nmeasured-theta = 40")).at("scan"), "40 none");
    folder.Write("polar.csv", "theta,counts\n0,5\n10,7\n20,6\n30,9\n50,4\n");
    EXPECT_EQ(read(Section("measured = \"polar.csv\"\nmeasured-phi = 30")).at("scan"), "none 30");
    // An azimuthal scan has too few polar angles for a cubic.
    EXPECT_EQ(read(Section("measured = \"m.csv\"\ntheta = [15, 25]")).at("background"), "mean");
    asked = folder.Path("m.csv");
    EXPECT_EQ(read(Section("measured = \"none.csv\"")).at("measured"), "m.csv");
}

TEST(RecipeRequests, Pictures) {
    const auto read = [](RecipeTable section) {
        toml::table recipe;
        recipe.insert("picture", toml::parse(section.Content()));
        RecipeTable whole(&recipe, "recipe");
        const RecipePicture r = ReadPictures(whole).at(0);
        const PatternPlot drawn = PlotOf(r, "I", "I0", "out.png");
        return Fields{{"file", r.plot.output},
                      {"drawn", List(drawn.images) + "/" + List(drawn.references)},
                      {"view", WordFor(r.plot.view)},
                      {"background", BackgroundText(drawn.background)},
                      {"colours", r.plot.colours ? WordFor(*r.plot.colours) : ""},
                      {"range", List(r.plot.range)},
                      {"title", r.plot.title},
                      {"fold", Text(r.plot.instrument.fold)},
                      {"mirror", Text(r.plot.instrument.mirror)},
                      {"acceptance", Text(r.plot.instrument.acceptance)},
                      {"energy", Text(r.plot.instrument.energy)},
                      {"potential", Text(r.plot.instrument.innerPotential)},
                      {"polar", List(r.plot.polarCuts)},
                      {"azimuthal", List(r.plot.azimuthalCuts)},
                      {"rings", Text(r.plot.rings)},
                      {"width", Text(r.plot.width)}};
    };
    ExpectFields(read, "",
                 "acceptance 0; azimuthal ; background none; colours ; drawn I/I0; energy 0; file "
                 "pattern.png; fold 1; "
                 "mirror none; polar ; potential none; range ; rings 30; title ; view equidistant; width 0; ",
                 {{"file = \"a.svg\"", "file a.svg; "},
                  {"quantity = \"chi\"", ""},
                  {"quantity = \"intensity\"", "drawn I/; "},
                  {"quantity = \"direct\"", "drawn I0/; "},
                  {"background = 3", "background 3; drawn I/; "},
                  {"background = \"mean\"", "background mean; drawn I/; "},
                  {"view = \"stereographic\"", "view stereographic; "},
                  {"colours = \"grey\"", "colours grey; "},
                  {"range = [-0.5, 1]", "range -0.5 1; "},
                  {"title = \"a title\"", "title a title; "},
                  {"fold = 4", "fold 4; "},
                  {"mirror = 45", "mirror 45; "},
                  {"acceptance = 2", "acceptance 2; "},
                  {"inner-potential = 12\nenergy = \"0.6 keV\"", "energy 600; potential 12; "},
                  {"polar-cuts = [0, 45]", "polar 0 45; "},
                  {"azimuthal-cuts = 30", "azimuthal 30; "},
                  {"rings = 15", "rings 15; "},
                  {"width = 800", "width 800; "}});
}
