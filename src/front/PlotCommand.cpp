#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <numbers>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/ZfError.h"
#include "front/Commands.h"
#include "report/Canvas.h"
#include "report/PatternCuts.h"
#include "report/PatternPicture.h"
#include "report/SphereOperations.h"

namespace {

constexpr double kDegree = std::numbers::pi / 180;
constexpr double kHighestEnergy = 1e6;    // eV
constexpr double kLargestNumber = 1e300;  // whose difference is still finite

constexpr const char* kExamples =
    "Examples, after\n"
    "  cmd_qvre -C cluster.xml_cl -F emitter.xml_emt -P phaseshift.xml_ph -W wave.xml_sf -I pattern.xml_img "
    "-I0 "
    "i0.xml_img\n"
    "in examples/cu001_small:\n"
    "  qvre plot pattern.xml_img --i0 i0.xml_img -o chi.png\n"
    "  qvre plot pattern.xml_img --i0 i0.xml_img --fold 4 --mirror 0 --acceptance 2 --view stereographic -o "
    "chi.pdf\n"
    "  qvre plot pattern.xml_img --i0 i0.xml_img --energy 560 --inner-potential 12 --polar-cut 0 --polar-cut "
    "45 -o "
    "cut.svg\n";

struct PlotOptions {
    std::vector<std::string> images;
    std::vector<std::string> references;  ///< I0
    std::string output;
    std::string view = "equidistant";
    std::string colours;  ///< empty: by the quantity
    std::vector<double> range;
    std::string title;
    std::vector<std::string> captions;
    double rings = 30.0;
    double width = 0.0;
    int perRow = 3;
    int fold = 1;
    std::optional<double> mirror;
    double acceptance = 0.0;
    double energy = 0.0;
    std::optional<double> innerPotential;
    std::vector<double> polarCuts;
    std::vector<double> azimuthalCuts;
};

const std::map<std::string, View> kViews = {{"equidistant", View::AzimuthalEquidistant},
                                            {"stereographic", View::Stereographic},
                                            {"orthographic", View::Orthographic}};
const std::map<std::string, ColourMap> kColourMaps = {
    {"viridis", ColourMap::Viridis}, {"grey", ColourMap::Grey}, {"diverging", ColourMap::Diverging}};

/// Checks for a name of the table.
template <class Value>
CLI::Validator OneOf(const std::map<std::string, Value>& table) {
    std::vector<std::string> names;
    names.reserve(table.size());
    for (const auto& entry : table) names.push_back(entry.first);
    return CLI::IsMember(names).description("");
}

/// A number of the closed range; CLI::Range lets NaN pass.
CLI::Validator Between(double low, double high) {
    const auto check = [low, high](const std::string& text) {
        double value = 0.0;
        if (CLI::detail::lexical_cast(text, value) && value >= low && value <= high) return std::string();
        char reason[96];
        std::snprintf(reason, sizeof reason, "has to be a number from %g to %g", low, high);
        return std::string(reason);
    };
    return {check, ""};
}

/// In the order of the experiment: the surface, the sample's domains, the analyser.
SphereImage Measured(SphereImage image, const PlotOptions& options) {
    if (options.innerPotential) image = Refracted(image, options.energy, *options.innerPotential);
    if (options.fold > 1 || options.mirror) {
        const auto mirror =
            options.mirror ? std::optional<double>(*options.mirror * kDegree) : std::optional<double>();
        image = SymmetryAverage(image, options.fold, mirror);
    }
    if (options.acceptance > 0.0) image = AcceptanceAverage(image, options.acceptance * kDegree);
    return image;
}

LoadedImage Prepared(const PlotOptions& options, std::size_t index) {
    LoadedImage loaded = LoadSphereImage(options.images[index]);
    if (index < options.captions.size()) loaded.title = options.captions[index];
    loaded.image = Measured(std::move(loaded.image), options);
    if (options.references.empty()) return loaded;
    const std::string& path = options.references[options.references.size() == 1 ? 0 : index];
    const SphereImage reference = Measured(LoadSphereImage(path).image, options);
    try {
        loaded.image = Modulation(loaded.image, reference);
    } catch (const ZfError& error) {
        throw ZfError(options.images[index] + " and " + path + ": " + error.message);
    }
    return loaded;
}

void CheckUsage(const PlotOptions& options) {
    const std::size_t count = options.references.size();
    if (count > 1 && count != options.images.size())
        throw CLI::ValidationError("--i0", "give one I0 image for all images, or one for each");
    if (!Canvas::CanWrite(options.output))
        throw CLI::ValidationError("--output", "the name has to end in .png, .svg or .pdf");
    if (options.captions.size() > options.images.size())
        throw CLI::ValidationError("--caption", "there are more captions than images");
    if (options.innerPotential && options.energy == 0.0)
        throw CLI::ValidationError(
            "--inner-potential",
            "the image does not tell its energy, add --energy with that of the calculation");
    if (options.energy != 0.0 && !options.innerPotential)
        throw CLI::ValidationError("--energy", "it is used for refraction only, add --inner-potential");
    if (!options.range.empty() && !(options.range[0] < options.range[1]))
        throw CLI::ValidationError("--range", "the first number has to be the lower one");
    if (!options.polarCuts.empty() && !options.azimuthalCuts.empty())
        throw CLI::ValidationError("--polar-cut", "polar and azimuthal cuts need a picture each");
}

std::string Quantity(const PlotOptions& options) {
    return options.references.empty() ? "I (arb. units)" : "χ = (I − I₀)/I₀";
}

std::optional<Span> AskedRange(const PlotOptions& options) {
    if (options.range.empty()) return std::nullopt;
    return Span{options.range[0], options.range[1]};
}

std::string Degrees(double angle) {
    char text[32];
    std::snprintf(text, sizeof text, "%g°", angle);
    return text;
}

/// What the legend says of one cut; what is common to all lines is left to the axis.
std::string CutLabel(const PlotOptions& options, const LoadedImage& loaded, const char* angleName,
                     double angle, std::size_t cuts) {
    const std::string place = angleName + (" = " + Degrees(angle));
    if (options.images.size() == 1) return cuts == 1 ? "" : place;
    return cuts == 1 ? loaded.title : loaded.title + ", " + place;
}

void DrawCuts(const PlotOptions& options, const std::vector<LoadedImage>& images) {
    const bool polar = !options.polarCuts.empty();
    const std::vector<double>& angles = polar ? options.polarCuts : options.azimuthalCuts;
    std::vector<Curve> curves;
    for (const LoadedImage& loaded : images) {
        for (const double angle : angles) {
            curves.push_back(polar ? PolarCut(loaded.image, angle * kDegree)
                                   : AzimuthalCut(loaded.image, angle * kDegree));
            curves.back().label = CutLabel(options, loaded, polar ? "φ" : "θ", angle, angles.size());
        }
    }
    LineAxes axes;
    axes.title = options.title.empty() && images.size() == 1 ? images.front().title : options.title;
    axes.xLabel = polar ? "polar angle θ (degrees)" : "azimuth φ (degrees)";
    if (angles.size() == 1) axes.xLabel += (polar ? ", φ = " : ", θ = ") + Degrees(angles.front());
    axes.yLabel = Quantity(options);
    axes.xRange = polar ? Span{-90.0, 90.0} : Span{0.0, 360.0};
    axes.yRange = AskedRange(options);
    axes.xStep = polar ? 30.0 : 60.0;
    axes.width = options.width;
    DrawLines(curves, axes, options.output);
}

void DrawImages(const PlotOptions& options, std::vector<LoadedImage> images) {
    const bool modulation = !options.references.empty();
    PlotRequest request;
    request.images = std::move(images);
    request.title = options.title;
    request.quantity = Quantity(options);
    request.view = kViews.at(options.view);
    const std::string usual = modulation ? "diverging" : "viridis";
    request.colours = kColourMaps.at(options.colours.empty() ? usual : options.colours);
    request.range = AskedRange(options);
    request.symmetricRange = modulation;
    request.ringStep_deg = options.rings;
    request.panelsPerRow = options.perRow;
    request.width = options.width;
    const Span range = ColourRange(request.images, false);
    DrawPattern(request, options.output);
    std::printf("%s from %.4g to %.4g\n", modulation ? "chi" : "I", range.low, range.high);
}

void Plot(const PlotOptions& options) {
    CheckUsage(options);
    std::vector<LoadedImage> images;
    for (std::size_t i = 0; i < options.images.size(); ++i) images.push_back(Prepared(options, i));
    if (options.polarCuts.empty() && options.azimuthalCuts.empty())
        DrawImages(options, std::move(images));
    else
        DrawCuts(options, images);
    std::printf("%s written\n", options.output.c_str());
}

void AddDataOptions(CLI::App& command, PlotOptions& options) {
    command.add_option("images", options.images, "Images (.xml_img), drawn side by side on one scale")
        ->required()
        ->type_name("FILE");
    command
        .add_option(
            "--i0", options.references,
            "I0 image, one for all, or once more for each image: draws chi = (I - I0)/I0 instead of I")
        ->allow_extra_args(false)
        ->type_name("FILE");
    command.add_option("-o,--output", options.output, "Picture: .png, .svg or .pdf")
        ->required()
        ->type_name("FILE");
    command
        .add_option("--fold", options.fold, "Average over an N-fold rotation axis along the surface normal")
        ->check(CLI::Range(1, 360))
        ->type_name("N")
        ->capture_default_str();
    command.add_option("--mirror", options.mirror, "Average over a mirror plane at this azimuth, degrees")
        ->type_name("PHI")
        ->check(Between(-360.0, 360.0));
    command
        .add_option("--acceptance", options.acceptance,
                    "Average over a cone of this half angle, degrees (0: none, at most 45)")
        ->type_name("ANGLE")
        ->check(Between(0.0, 45.0))
        ->capture_default_str();
    command
        .add_option(
            "--inner-potential", options.innerPotential,
            "Refraction at the surface: the vacuum level above the zero of the kinetic energy inside, eV")
        ->type_name("V0")
        ->check(Between(0.0, kHighestEnergy));
    command
        .add_option("--energy", options.energy,
                    "Kinetic energy of the calculation (inside), eV, for the refraction")
        ->type_name("E")
        ->check(Between(1e-3, kHighestEnergy));
}

void AddPictureOptions(CLI::App& command, PlotOptions& options) {
    command
        .add_option("--view", options.view,
                    "equidistant (azimuthal equidistant), stereographic or orthographic")
        ->check(OneOf(kViews))
        ->type_name("NAME")
        ->capture_default_str();
    command
        .add_option("--colours", options.colours,
                    "viridis (default for I), grey or diverging (default for chi)")
        ->check(OneOf(kColourMaps))
        ->type_name("NAME");
    command
        .add_option("--range", options.range,
                    "Ends of the colours or of the axis of cuts; default: all values")
        ->expected(2)
        ->check(Between(-kLargestNumber, kLargestNumber))
        ->type_name("LOW HIGH");
    command.add_option("--title", options.title, "Title; default: that of the file")->type_name("TEXT");
    command
        .add_option("--caption", options.captions,
                    "Title of an image, once more for the next; default: that of the file")
        ->allow_extra_args(false)
        ->type_name("TEXT");
    command.add_option("--rings", options.rings, "Step of the polar rings, degrees")
        ->type_name("STEP")
        ->check(Between(5.0, 90.0))
        ->capture_default_str();
    command.add_option("--per-row", options.perRow, "Images in a row")
        ->type_name("N")
        ->check(CLI::Range(1, 100))
        ->capture_default_str();
    command
        .add_option("--width", options.width,
                    "Width of the picture: pixels for PNG (800 for one image), mm for SVG and PDF (85)")
        ->type_name("SIZE");
    command
        .add_option("--polar-cut", options.polarCuts,
                    "Line plot against the polar angle, -90 to 90 degrees, along this azimuth, degrees; any "
                    "number of times")
        ->allow_extra_args(false)
        ->type_name("PHI")
        ->check(Between(-360.0, 360.0));
    command
        .add_option("--azimuthal-cut", options.azimuthalCuts,
                    "Line plot against the azimuth, 0 to 360 degrees, at this polar angle, degrees; any "
                    "number of times")
        ->allow_extra_args(false)
        ->type_name("THETA")
        ->check(Between(0.0, 90.0));
}

}  // namespace

void AddPlotCommand(CLI::App& program) {
    CLI::App* const command = program.add_subcommand("plot", "Draws patterns as PNG, SVG or PDF");
    const auto options = std::make_shared<PlotOptions>();
    AddDataOptions(*command, *options);
    AddPictureOptions(*command, *options);
    command->footer(kExamples);
    command->callback([options] { Plot(*options); });
}
