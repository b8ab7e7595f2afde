#include "recipe/RecipePictures.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <set>

namespace qvre {

namespace {

/// In place of I0.
std::optional<BackgroundModel> ReadPictureBackground(RecipeTable& section, PictureQuantity quantity) {
    if (quantity != PictureQuantity::kModulation && section.Has("background"))
        section.Fail("background", "is what I is divided by for the quantity \"chi\"");
    return ReadBackgroundModel(section);
}

RecipePicture ReadPicture(RecipeTable& section) {
    RecipePicture picture;
    PatternPlot& plot = picture.plot;
    plot.output = section.Text("file", "pattern.png");
    CheckResultName(section, "file", plot.output);
    picture.quantity = section.Word("quantity", picture.quantity);
    plot.background = ReadPictureBackground(section, picture.quantity);
    plot.images = {"image"};  // the checks ask for one
    plot.view = section.Word("view", plot.view);
    plot.colours = section.Word<ColourMap>("colours");
    plot.range = section.Numbers("range", RecipeUnit::kNone);
    if (!plot.range.empty() && plot.range.size() != 2)
        section.Fail("range", "has to be a list of two numbers");
    plot.title = section.Text("title", "");
    plot.instrument = ReadInstrument(section);
    plot.polarCuts = section.Numbers("polar-cuts", RecipeUnit::kDegree);
    plot.azimuthalCuts = section.Numbers("azimuthal-cuts", RecipeUnit::kDegree);
    plot.rings = section.Number("rings", RecipeUnit::kDegree, plot.rings);
    plot.width = section.NotNegative("width", RecipeUnit::kNone, plot.width);
    section.RefuseUnread();
    PatternPlot complete = plot;  // the energy comes with the waves
    if (plot.instrument.innerPotential && plot.instrument.energy == 0.0)
        complete.instrument.energy = *plot.instrument.innerPotential + 1.0;
    section.Made("file", [&] { CheckPatternPlot(complete); });
    picture.settings = section.Content();
    return picture;
}

}  // namespace

void CheckResultName(const RecipeTable& section, const std::string& key, const std::string& name) {
    if (std::filesystem::path(name).has_parent_path())
        section.Fail(key, "has to be a name without a folder; pictures go into the result folder");
    const auto isControl = [](unsigned char c) { return c < 0x20 || c == 0x7f; };
    if (std::any_of(name.begin(), name.end(), isControl)) section.Fail(key, "holds a control character");
    if (name.starts_with('.')) section.Fail(key, "may not begin with a dot: the file would be hidden");
}

std::optional<BackgroundModel> ReadBackgroundModel(RecipeTable& section) {
    if (!section.Has("background")) return std::nullopt;
    const std::string text = section.HasWord("background")
                                 ? section.Text("background", "")
                                 : std::to_string(section.Integer("background").value_or(0));
    return section.Made("background", [&] { return ParseBackgroundModel(text); });
}

void CheckRefraction(const RecipeTable& section, const Instrument& instrument, double energy_eV) {
    if (energy_eV > 0.0 && instrument.innerPotential && *instrument.innerPotential >= energy_eV)
        section.Fail("inner-potential",
                     fmt::format("{:g} eV are not below the kinetic energy inside, {:g} eV",
                                 *instrument.innerPotential, energy_eV));
}

Instrument ReadInstrument(RecipeTable& section) {
    Instrument instrument;
    const std::int64_t fold = section.Integer("fold").value_or(instrument.fold);
    if (fold < 1 || fold > 360) section.Fail("fold", "has to lie between 1 and 360");
    instrument.fold = static_cast<int>(fold);
    instrument.mirror = section.Number("mirror", RecipeUnit::kDegree);
    instrument.acceptance = section.NotNegative("acceptance", RecipeUnit::kDegree, instrument.acceptance);
    if (instrument.acceptance > 45.0) section.Fail("acceptance", "has to be 45 degrees or less");
    instrument.innerPotential = section.Number("inner-potential", RecipeUnit::kElectronVolt);
    instrument.energy = section.NotNegative("energy", RecipeUnit::kElectronVolt, instrument.energy);
    if (instrument.innerPotential && *instrument.innerPotential < 0.0)
        section.Fail("inner-potential", "has to be 0 or more");
    if (instrument.energy != 0.0 && !instrument.innerPotential)
        section.Fail("energy", "is used for refraction only: give inner-potential too");
    CheckRefraction(section, instrument, instrument.energy);
    return instrument;
}

std::vector<RecipePicture> ReadPictures(RecipeTable& recipe) {
    std::vector<RecipeTable> sections = recipe.Sections("picture");
    if (sections.empty() && !recipe.Has("scan")) sections.emplace_back(nullptr, "[[picture]]");
    std::vector<RecipePicture> pictures;
    std::set<std::string> names;
    for (RecipeTable& section : sections) {
        pictures.push_back(ReadPicture(section));
        const std::string& name = pictures.back().plot.output;
        if (!names.insert(name).second)
            section.Fail("file", "another picture has the name " + name + " already");
    }
    return pictures;
}

PatternPlot PlotOf(const RecipePicture& picture, const std::string& image, const std::string& directImage,
                   const std::string& output) {
    PatternPlot plot = picture.plot;
    plot.images = {picture.quantity == PictureQuantity::kDirect ? directImage : image};
    if (picture.quantity == PictureQuantity::kModulation && !plot.background) plot.references = {directImage};
    plot.output = output;
    return plot;
}

}  // namespace qvre
