#include "recipe/RecipeEnergies.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>

#include "foundation/Text.h"
#include "prepare/phases/EnergyList.h"
#include "report/compare/EnergyCurves.h"

namespace qvre {

namespace {

constexpr double kMostEnergies = 1000;
constexpr std::size_t kMostDirections = 1000;

/// As the files keep it.
double SixDigits(double value) {
    return TextToDouble(DoubleToText(value));
}

std::vector<double> Range(RecipeTable& section) {
    const auto from = section.Number("from", RecipeUnit::kElectronVolt);
    const auto to = section.Number("to", RecipeUnit::kElectronVolt);
    const auto step = section.Number("step", RecipeUnit::kElectronVolt);
    if (!from || !to || !step) section.Fail("", "give from, to and step, or values, in eV");
    if (!(*step > 0.0)) section.Fail("step", "has to be above 0");
    if (*to < *from) section.Fail("to", "lies below from: the energies have to rise");
    if ((*to - *from) / *step > kMostEnergies)
        section.Fail("step", "makes more than 1000 energies: take a larger one");
    return EnergyRange(*from, *to, *step);
}

std::vector<double> Values(RecipeTable& section) {
    const bool isList = section.Has("values");
    if (isList)
        for (const char* key : {"from", "to", "step"})
            if (section.Has(key)) section.Fail("values", "give either values, or from, to and step");
    std::vector<double> values =
        isList ? section.Numbers("values", RecipeUnit::kElectronVolt) : Range(section);
    if (values.empty()) section.Fail("values", "the list is empty");
    const char* key = isList ? "values" : "from";
    for (double& value : values) {
        value = SixDigits(value);
        if (!(value > 0.0 && value <= 1e5))
            section.Fail(key, fmt::format("{:g} eV is no energy above 0 and up to 100000 eV", value));
    }
    std::sort(values.begin(), values.end());
    if (const auto twin = std::adjacent_find(values.begin(), values.end()); twin != values.end())
        section.Fail(isList ? "values" : "step",
                     fmt::format("{:g} eV stands twice among the energies, which keep 6 digits", *twin));
    return values;
}

/// One number serves all directions of the other list.
std::vector<double> Angles(RecipeTable& section, const char* key) {
    std::vector<double> angles = section.Numbers(key, RecipeUnit::kDegree);
    if (section.Has(key) && angles.empty()) section.Fail(key, "the list is empty");
    if (angles.empty()) angles.push_back(0.0);
    if (angles.size() > kMostDirections) section.Fail(key, "has more than 1000 angles");
    return angles;
}

std::vector<PolarDirection> Directions(RecipeTable& section) {
    const std::vector<double> theta = Angles(section, "theta");
    const std::vector<double> phi = Angles(section, "phi");
    const std::size_t count = std::max(theta.size(), phi.size());
    if ((theta.size() != count && theta.size() != 1) || (phi.size() != count && phi.size() != 1))
        section.Fail("phi",
                     fmt::format("there are {} polar angles and {} azimuths: give one of each for every "
                                 "direction, or a single one for all",
                                 theta.size(), phi.size()));
    std::vector<PolarDirection> directions;
    for (std::size_t i = 0; i < count; ++i) {
        const PolarDirection one = {theta[theta.size() == 1 ? 0 : i], phi[phi.size() == 1 ? 0 : i]};
        if (!(one.theta_deg >= 0.0 && one.theta_deg < 90.0))
            section.Fail("theta",
                         fmt::format("{:g} degrees does not lie from 0, the normal, to below 90; for the "
                                     "other side add 180 to phi",
                                     one.theta_deg));
        for (const PolarDirection& other : directions)
            if (IsSameDirection(one.theta_deg, one.phi_deg, other.theta_deg, other.phi_deg))
                section.Fail(section.Has("theta") ? "theta" : "phi",
                             fmt::format("the direction theta {:g}, phi {:g} stands there twice",
                                         one.theta_deg, one.phi_deg));
        directions.push_back(one);
    }
    return directions;
}

EnergyBackgroundModel Background(RecipeTable& section, std::size_t energies) {
    constexpr int kUsualDegree = 3;
    EnergyBackgroundModel model{kUsualDegree};
    if (section.Has("background")) {
        const std::string text = section.HasWord("background")
                                     ? section.Text("background", "")
                                     : std::to_string(section.Integer("background").value_or(0));
        model = section.Made("background", [&] { return ParseEnergyBackground(text); });
    }
    if (energies < EnergiesNeeded(model))
        section.Fail(
            section.Has("background") ? "background" : "",
            fmt::format("{} needs {} energies or more, there are {}: give more energies or a lower degree",
                        model.Text(), EnergiesNeeded(model), energies));
    return model;
}

void RefuseOtherEnergies(const RecipeTable& recipe, const RecipeEnergies& energies) {
    RecipeTable emission = RecipeTable(recipe).Section("emission");
    for (const char* key : {"kinetic", "photon"})
        if (emission.Has(key)) emission.Fail(key, "the energies are those of [energies]: leave it out");
    if (emission.Has("file"))
        emission.Fail("file",
                      "ready waves have an energy of their own: with [energies] give the level instead");
    if (energies.byPhotons && emission.Flag("isotropic", false))
        RecipeTable(recipe)
            .Section("energies")
            .Fail("vary", "an isotropic source has no binding energy: vary \"kinetic\"");
    for (RecipeTable& scan : RecipeTable(recipe).Sections("scan"))
        for (const std::string& name : scan.Texts("vary"))
            if (name == "emission.kinetic" || name == "emission.photon")
                scan.Fail("vary", "the energies are those of [energies]: vary something else");
}

/// What makes sense for images alone.
void RefuseImages(const RecipeTable& recipe) {
    RecipeTable own = recipe;
    if (own.Has("picture"))
        own.Fail("picture",
                 "with [energies] no images are calculated: leave the pictures out; energies.png shows the "
                 "curves");
    if (own.HasText("series") && own.Text("series") == "asymmetry")
        own.Fail("series",
                 "\"asymmetry\" is that of two images, and with [energies] none are calculated: take \"sum\" "
                 "or \"apart\"");
    RecipeTable image = own.Section("image");
    for (const char* key : {"map", "resolution"})
        if (image.Has(key))
            image.Fail(
                key,
                "with [energies] no images are calculated: leave it out; [energies] theta and phi give "
                "the directions");
}

}  // namespace

double RecipeEnergies::Setting(double energy_eV) const {
    return byPhotons ? energy_eV : SixDigits(energy_eV + innerPotential_eV);
}

std::optional<RecipeEnergies> ReadEnergies(RecipeTable recipe) {
    RecipeTable section = recipe.Section("energies");
    if (!section.Exists()) return std::nullopt;
    RecipeEnergies energies;
    energies.byPhotons = section.OneOf("vary", {"kinetic", "photon"}).value_or("kinetic") == "photon";
    energies.values_eV = Values(section);
    energies.directions = Directions(section);
    energies.innerPotential_eV = section.NotNegative("inner-potential", RecipeUnit::kElectronVolt, 0.0);
    if (energies.innerPotential_eV > 100.0) section.Fail("inner-potential", "has to be 100 eV or less");
    energies.background = Background(section, energies.values_eV.size());
    section.RefuseUnread();
    energies.settings = fmt::format("inner-potential {}", energies.innerPotential_eV);
    for (const PolarDirection& one : energies.directions)
        energies.settings += fmt::format(" ({} {})", one.theta_deg, one.phi_deg);
    return energies;
}

void CheckBesideEnergies(const RecipeTable& recipe, const RecipeEnergies& energies) {
    RefuseOtherEnergies(recipe, energies);
    RefuseImages(recipe);
}

EnergyCompareSection ReadEnergyCompare(RecipeTable section, const RecipeEnergies& energies,
                                       const RecipeFolder& place, const std::string& measuredFile) {
    EnergyCompareSection compare;
    const std::string file = section.Text("measured", "");
    EnergyComparisonSettings& settings = compare.settings;
    settings.background = energies.background;
    if (section.HasFlag("energy-offset"))
        settings.findsOffset = section.Flag("energy-offset", false);
    else
        settings.offset_eV = section.Number("energy-offset", RecipeUnit::kElectronVolt, 0.0);
    for (const char* key : {"background", "inner-potential"})
        if (section.Has(key)) section.Fail(key, "is a key of [energies], for both curves: give it there");
    for (const std::string& key : section.Keys())
        if (key != "measured" && key != "energy-offset")
            section.Fail(key,
                         "does not compare curves over the energy: with [energies] there are measured and "
                         "energy-offset");
    if (measuredFile.empty() && file.empty()) return compare;
    std::vector<ScanDirection> calculated;
    for (const PolarDirection& one : energies.directions) calculated.push_back({one.theta_deg, one.phi_deg});
    const auto load = [&] {
        compare.measured =
            LoadMeasuredEnergies(measuredFile.empty() ? place.Path(file) : measuredFile, calculated);
        if (!energies.byPhotons)
            CheckEnergyRange(compare.measured, energies.values_eV.front(), energies.values_eV.back(),
                             settings);
    };
    if (measuredFile.empty())
        section.Made("measured", load);
    else
        load();
    return compare;
}

}  // namespace qvre
