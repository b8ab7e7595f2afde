#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/ZfError.h"
#include "front/Commands.h"
#include "front/SharedOptions.h"
#include "report/picture/PatternPlot.h"

namespace qvre {

namespace {

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

/// Values beyond the ends of the scale have the colours of the ends.
void PrintValues(const PatternPlotSummary& shown) {
    std::printf("%s from %.4g to %.4g", shown.quantity.c_str(), shown.values.low, shown.values.high);
    const Span& ends = *shown.colours;
    if (shown.values.low < ends.low || shown.values.high > ends.high)
        std::printf(", colours from %.4g to %.4g", ends.low, ends.high);
    std::printf("\n");
}

void Plot(const PatternPlot& plot) {
    try {
        CheckPatternPlot(plot);
    } catch (const ZfError& error) {
        throw CLI::ValidationError(error.message);
    }
    const PatternPlotSummary shown = DrawPatternPlot(plot);
    if (shown.colours) PrintValues(shown);
    for (const std::string& leftOut : shown.leftOut) std::printf("%s\n", leftOut.c_str());
    std::printf("%s written\n", plot.output.c_str());
}

void AddFiles(CLI::App& command, PatternPlot& options) {
    command.add_option("IMAGE", options.images, "Images (.xml_img), drawn side by side on one scale")
        ->required()
        ->type_name("FILE");
    command
        .add_option(
            "--i0", options.references,
            "I0 image, one for all, or once more for each image: draws chi = (I - I0)/I0 instead of I")
        ->allow_extra_args(false)
        ->type_name("FILE");
    AddBackground(command, options.background);
    command
        .add_option("--asymmetry", options.partners,
                    "Second image B, one for all, or once more for each: draws (A - B)/(A + B), for light of "
                    "either hand the dichroism")
        ->allow_extra_args(false)
        ->type_name("FILE");
    command.add_option("-o,--output", options.output, "Picture: .png, .svg or .pdf")
        ->required()
        ->type_name("FILE");
}

void AddTreatment(CLI::App& command, PatternPlot& options) {
    AddInstrument(command, options.instrument);
}

void AddScales(CLI::App& command, PatternPlot& options) {
    command
        .add_option("--view", options.view,
                    "equidistant (azimuthal equidistant), stereographic or orthographic")
        ->transform(WordOf<View>())
        ->option_text("NAME=" + WordFor(options.view));
    command
        .add_option("--colours", options.colours,
                    "viridis (default for I), grey or diverging (default for chi)")
        ->transform(WordOf<ColourMap>())
        ->option_text("NAME");
    command
        .add_option("--range", options.range,
                    "Ends of the colours or of the axis of cuts; default: all values, of chi those in 99 "
                    "percent of the directions")
        ->expected(2)
        ->check(Between(-kLargestNumber, kLargestNumber))
        ->type_name("LOW HIGH");
}

void AddLayout(CLI::App& command, PatternPlot& options) {
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
}

void AddCuts(CLI::App& command, PatternPlot& options) {
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
    CLI::App* const command = program.add_subcommand("plot", "Draw patterns as PNG, SVG or PDF");
    const auto options = std::make_shared<PatternPlot>();
    for (const auto add : {AddFiles, AddTreatment, AddScales, AddLayout, AddCuts}) add(*command, *options);
    command->footer(kExamples);
    command->callback([options] { Plot(*options); });
}

}  // namespace qvre
