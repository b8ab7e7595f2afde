#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "TempFolder.h"
#include "foundation/Text.h"
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

template <class Request>
struct Key {
    std::string line;  ///< of the recipe; empty: what holds without
    std::function<std::string(const Request&)> field;
    std::string value;
};

/// Reads the lines of a section, behind those that it cannot do without.
template <class Request, class Reader>
void ExpectFields(const std::string& needed, const std::vector<Key<Request>>& keys, const Reader& read) {
    for (const Key<Request>& key : keys) {
        const toml::table recipe = toml::parse("[s]\n" + needed + key.line + "\n", std::string("r.toml"));
        const std::string value = key.field(read(RecipeTable(&recipe, "recipe").Section("s")));
        EXPECT_EQ(value, key.value) << needed << key.line;
    }
}

const ClusterFacts kCopper = {{"Cu"}, {"Cu"}, "Cu"};

}  // namespace

TEST(RecipeRequests, Cluster) {
    using R = ClusterRequest;
    const auto read = [](const RecipeTable& section) { return ReadClusterRequest(section, {}); };
    const auto surface = [](const R& r) { return List(r.surface); };
    const auto azimuth = [](const R& r) { return Text(r.azimuth_deg); };
    const auto domains = [](const R& r) { return List(r.domains_deg); };
    const auto emitter = [](const R& r) { return r.emitter; };
    const auto sites = [](const R& r) { return List(r.sites); };
    const auto layers = [](const R& r) { return List(r.layers); };
    const auto top = [](const R& r) { return r.top; };
    const auto shape = [](const R& r) {
        return std::string(r.shape == ClusterShape::kParaboloid ? "bowl" : "half a ball");
    };
    const auto radius = [](const R& r) { return Text(r.size_angstrom); };
    const auto atoms = [](const R& r) { return Text(r.atoms); };
    const auto debye = [](const R& r) { return Text(r.debye_K); };
    const auto temperature = [](const R& r) { return Text(r.temperature_K); };
    ExpectFields<R>("preset = \"Cu\"\n",
                    {{"", surface, "0 0 1"},
                     {"surface = [1, 1, -2]", surface, "1 1 -2"},
                     {"", azimuth, "0"},
                     {"azimuth = \"1 rad\"", azimuth, "57.2958"},
                     {"", domains, "0"},
                     {"domains = [0, 90]", domains, "0 90"},
                     {"", emitter, ""},
                     {"emitter = \"Cu\"", emitter, "Cu"},
                     {"", sites, ""},
                     {"sites = [2]", sites, "2"},
                     {"", layers, "3"},
                     {"emitter-layer = 5", layers, "5"},
                     {"", top, ""},
                     {"top = \"Cu\"", top, "Cu"},
                     {"", shape, "half a ball"},
                     {"shape = \"hemisphere\"", shape, "half a ball"},
                     {"shape = \"paraboloid\"", shape, "bowl"},
                     {"", radius, "0"},
                     {"radius = \"0.7 nm\"", radius, "7"},
                     {"radius = 7", radius, "7"},
                     {"", atoms, "200"},
                     {"atoms = 50", atoms, "50"},
                     {"", debye, ""},
                     {"debye = { Cu = 343 }", debye, "Cu=343 "},
                     {"", temperature, "300"},
                     {"temperature = 77", temperature, "77"}},
                    read);

    const auto cell = [](const R& r) {
        return r.cell.Formula() + " " + Text(r.cell.axes.column_copy(0).length());
    };
    ExpectFields<R>("preset = \"fcc\"\nelements = \"Ni\"\n", {{"lattice = \"0.352 nm\"", cell, "Ni 3.52"}},
                    read);
    const TempFolder folder;
    folder.Write("a.cell", "lengths 4 4 4\natom Po 0 0 0\n");
    ExpectFields<R>("", {{"cell = \"a.cell\"", cell, "Po 4"}}, [&](const RecipeTable& section) {
        return ReadClusterRequest(section, {folder.Path("")});
    });
}

TEST(RecipeRequests, Emission) {
    using R = WavesRequest;
    const auto read = [](const RecipeTable& section) { return ReadWavesRequest(section, kCopper); };
    const auto level = [](const R& r) { return r.emission.level.Name(); };
    const auto weight = [](const R& r) { return Text(r.emission.weight); };
    const auto kinetic = [](const R& r) { return Text(r.energy.kinetic_eV); };
    const auto photon = [](const R& r) { return Text(r.energy.photon_eV); };
    const auto binding = [](const R& r) { return Text(r.energy.binding_eV); };
    const auto fermi = [](const R& r) { return Text(r.energy.fermi_eV); };
    const auto isotropic = [](const R& r) { return std::string(r.isotropic ? "yes" : "no"); };
    const auto light = [](const R& r) { return Text(r.emission.light); };
    ExpectFields<R>("level = \"2p3/2\"\nkinetic = \"0.5 keV\"\n",
                    {{"", level, "2p3/2"},
                     {"", kinetic, "500"},
                     {"", photon, "0"},
                     {"", weight, "1"},
                     {"weight = 2.5", weight, "2.5"},
                     {"", isotropic, "no"},
                     {"", light, "(0,0,1)"},
                     {"polarisation = [2, 0, 0]", light, "(1,0,0)"},
                     {"unpolarised-along = [0, 0, -1]", light, Text(UnpolarisedLight({0, 0, -1}))},
                     // Helicity +1 along z: e1 + i e2 up to a common phase.
                     {"circular = \"left\"\nalong = [0, 0, 1]", light, "(0.707107,0.707107i,0)"},
                     {"circular = \"right\"\nalong = [0, 0, 1]", light, "(0.707107,-0.707107i,0)"}},
                    read);
    ExpectFields<R>("level = \"2p\"\n",
                    {{"photon = \"Al\"", photon, "1486.6"},
                     {"photon = \"Mg\"", photon, "1253.6"},
                     {"photon = \"Ag\"", photon, "2984.3"},
                     {"photon = \"1.2 keV\"", photon, "1200"},
                     {"photon = 1200", kinetic, "0"},
                     {"photon = \"Al\"", binding, "none"},
                     {"photon = 1200\nbinding = \"0.93 keV\"", binding, "930"},
                     {"photon = \"Al\"", fermi, "10"},
                     {"photon = \"Al\"\nfermi = 7.5", fermi, "7.5"}},
                    read);
    ExpectFields<R>("kinetic = 600\nisotropic = true\n",
                    {{"", isotropic, "yes"}, {"", kinetic, "600"}, {"weight = 3", weight, "3"}}, read);
}

TEST(RecipeRequests, PhaseShifts) {
    using R = PhaseShiftRequest;
    const auto exchange = [](const R& r) {
        return std::string(r.exchange == ExchangeKind::kSlater ? "Slater"
                           : r.exchange == ExchangeKind::kNone ? "none"
                                                               : "Furness-McCarthy");
    };
    const auto equation = [](const R& r) {
        return std::string(r.equation == RadialEquation::kScalarRelativistic ? "Dirac" : "Schroedinger");
    };
    const auto radius = [](const R& r) { return Text(r.radius_angstrom); };
    const auto zero = [](const R& r) { return Text(r.zero_eV); };
    const auto lMax = [](const R& r) { return Text(r.limits.lMax); };
    const auto cut = [](const R& r) { return Text(r.limits.cut_deg); };
    ExpectFields<R>("",
                    {{"", exchange, "Furness-McCarthy"},
                     {"exchange = \"furness\"", exchange, "Furness-McCarthy"},
                     {"exchange = \"slater\"", exchange, "Slater"},
                     {"exchange = \"none\"", exchange, "none"},
                     {"", equation, "Schroedinger"},
                     {"relativistic = true", equation, "Dirac"},
                     {"relativistic = false", equation, "Schroedinger"},
                     {"", radius, ""},
                     {"radius = { Cu = \"120 pm\" }", radius, "Cu=1.2 "},
                     {"", zero, "none"},
                     {"zero = -12.5", zero, "-12.5"},
                     {"", lMax, "20"},
                     {"lmax = 12", lMax, "12"},
                     {"", cut, "0.3"},
                     {"cut = \"0.01 rad\"", cut, "0.572958"}},
                    [](const RecipeTable& section) { return ReadPhaseShiftRequest(section, kCopper); });
}

TEST(RecipeRequests, Vibrations) {
    using R = VibrationRequest;
    const auto temperature = [](const R& r) { return Text(r.temperature_K); };
    const auto model = [](const R& r) {
        return std::string(r.model == VibrationModel::kDebye      ? "Debye"
                           : r.model == VibrationModel::kEinstein ? "Einstein"
                                                                  : "as the cluster has it");
    };
    const auto debye = [](const R& r) { return Text(r.debyeTemperature_K); };
    ExpectFields<R>("",
                    {{"", temperature, "300"},
                     {"temperature = \"77 K\"", temperature, "77"},
                     {"", model, "Debye"},
                     {"model = \"debye\"", model, "Debye"},
                     {"model = \"einstein\"", model, "Einstein"},
                     {"model = \"cluster\"", model, "as the cluster has it"},
                     {"", debye, ""},
                     {"debye = { Cu = 343 }", debye, "Cu=343 "}},
                    [](const RecipeTable& section) { return ReadVibrationRequest(section, kCopper); });
}

TEST(RecipeRequests, ScatteringAndImage) {
    using S = ScatteringRequest;
    const auto method = [](const S& s) { return Text(static_cast<double>(s.method)); };
    const auto damping = [](const S& s) { return Text(s.full.meanFreePath); };
    const auto tolerance = [](const S& s) { return Text(s.full.tolerance); };
    ExpectFields<S>("",
                    {{"", method, "2"},  // as files number them
                     {"method = \"SINGLE\"", method, "0"},
                     {"method = \"SLOWMULTI\"", method, "1"},
                     {"method = \"MULTI\"", method, "2"},
                     {"method = \"FULL\"", method, "3"},
                     {"method = \"FULL\"", damping, "0"},
                     {"method = \"FULL\"\nimfp = 12", damping, "1.2e-09"},
                     {"method = \"FULL\"", tolerance, "1e-05"},
                     {"method = \"FULL\"\ntolerance = 0.001", tolerance, "0.001"}},
                    ReadScatteringSection);
    using R = ImageRequest;
    const auto map = [](const R& r) { return WordFor(r.map); };
    const auto resolution = [](const R& r) { return Text(r.resolution); };
    const auto path = [](const R& r) { return Text(r.meanFreePath); };
    const auto limit = [](const R& r) { return Text(r.clusterLimit); };
    const auto lower = [](const R& r) { return Text(r.clusterLowerLimit); };
    ExpectFields<R>("",
                    {{"", map, "AE"},
                     {"map = \"AE\"", map, "AE"},
                     {"map = \"EC\"", map, "EC"},
                     {"", resolution, "1"},
                     {"resolution = 2.5", resolution, "2.5"},
                     {"", path, "0"},
                     {"mean-free-path = \"4 nm\"", path, "4e-09"},
                     {"", limit, "0"},
                     {"limit = 8", limit, "8e-10"},
                     {"", lower, "0"},
                     {"lower-limit = 2", lower, "2e-10"}},
                    ReadImageSection);
}

TEST(RecipeRequests, Comparison) {
    using R = RunComparison;
    const TempFolder folder;
    // Five rings of two points.
    std::string points;
    std::string pointsOfChi;
    for (int i = 0; i < 10; ++i) {
        const std::string place = fmt::format("{},{},{}", 10 * (i / 2 + 1), 90 * (i % 2), 5 + i * i % 7);
        points += place + "\n";
        pointsOfChi += fmt::format("{},{}\n", place, i * i % 5);
    }
    folder.Write("m.csv", "theta,phi,intensity,chi\n" + pointsOfChi);
    const auto read = [&](const RecipeTable& section) {
        return ReadCompareSection(section, {folder.Path("")}, "");
    };
    const auto theta = [](const R& r) { return Text(r.request.thetaMin) + " " + Text(r.request.thetaMax); };
    const auto background = [](const R& r) {
        if (!r.request.background) return std::string("none");
        return r.request.background->degree ? std::to_string(*r.request.background->degree) : "mean";
    };
    const auto rotate = [](const R& r) { return std::string(r.request.rotate ? "yes" : "no"); };
    const auto difference = [](const R& r) { return r.difference; };
    const auto measured = [&](const R& r) { return r.request.measured; };
    ExpectFields<R>("measured = \"m.csv\"\n",
                    {{"", measured, folder.Path("m.csv")},
                     {"", theta, "0 90"},
                     {"theta = [15, \"1 rad\"]", theta, "15 57.2958"},
                     {"", background, "none"},
                     {"background = \"mean\"", background, "mean"},
                     {"background = 2", background, "2"},
                     {"", rotate, "no"},
                     {"rotate = true", rotate, "yes"},
                     {"", difference, ""},
                     {"difference = \"d.svg\"", difference, "d.svg"}},
                    read);
    folder.Write("m.csv", "theta,phi,intensity\n" + points);
    ExpectFields<R>("measured = \"m.csv\"\n", {{"", background, "3"}}, read);
    ExpectFields<R>(
        "measured = \"none.csv\"\n", {{"", measured, folder.Path("m.csv")}},
        [&](const RecipeTable& section) { return ReadCompareSection(section, {}, folder.Path("m.csv")); });
}

TEST(RecipeRequests, Pictures) {
    using R = RecipePicture;
    const auto read = [](const RecipeTable& section) {
        RecipeTable copy = section;
        toml::table recipe;
        recipe.insert("picture", toml::parse(copy.Content()));
        RecipeTable whole(&recipe, "recipe");
        return ReadPictures(whole).at(0);
    };
    const auto file = [](const R& r) { return r.plot.output; };
    const auto drawn = [](const R& r) {  // images, then what they are divided by
        const PatternPlot plot = PlotOf(r, "I", "I0", "out.png");
        return List(plot.images) + "/" + List(plot.references);
    };
    const auto view = [](const R& r) { return WordFor(r.plot.view); };
    const auto colours = [](const R& r) { return r.plot.colours ? WordFor(*r.plot.colours) : std::string(); };
    const auto range = [](const R& r) { return List(r.plot.range); };
    const auto title = [](const R& r) { return r.plot.title; };
    const auto fold = [](const R& r) { return Text(r.plot.fold); };
    const auto mirror = [](const R& r) { return Text(r.plot.mirror); };
    const auto acceptance = [](const R& r) { return Text(r.plot.acceptance); };
    const auto refraction = [](const R& r) {
        return Text(r.plot.energy) + " " + Text(r.plot.innerPotential);
    };
    const auto polar = [](const R& r) { return List(r.plot.polarCuts); };
    const auto azimuthal = [](const R& r) { return List(r.plot.azimuthalCuts); };
    const auto rings = [](const R& r) { return Text(r.plot.rings); };
    const auto width = [](const R& r) { return Text(r.plot.width); };
    ExpectFields<R>("",
                    {{"", file, "pattern.png"},
                     {"file = \"a.svg\"", file, "a.svg"},
                     {"", drawn, "I/I0"},
                     {"quantity = \"chi\"", drawn, "I/I0"},
                     {"quantity = \"intensity\"", drawn, "I/"},
                     {"quantity = \"direct\"", drawn, "I0/"},
                     {"", view, "equidistant"},
                     {"view = \"stereographic\"", view, "stereographic"},
                     {"", colours, ""},
                     {"colours = \"grey\"", colours, "grey"},
                     {"", range, ""},
                     {"range = [-0.5, 1]", range, "-0.5 1"},
                     {"title = \"a title\"", title, "a title"},
                     {"", fold, "1"},
                     {"fold = 4", fold, "4"},
                     {"", mirror, "none"},
                     {"mirror = 45", mirror, "45"},
                     {"", acceptance, "0"},
                     {"acceptance = 2", acceptance, "2"},
                     {"", refraction, "0 none"},
                     {"inner-potential = 12\nenergy = \"0.6 keV\"", refraction, "600 12"},
                     {"polar-cuts = [0, 45]", polar, "0 45"},
                     {"azimuthal-cuts = 30", azimuthal, "30"},
                     {"", rings, "30"},
                     {"rings = 15", rings, "15"},
                     {"width = 800", width, "800"}},
                    read);
}
