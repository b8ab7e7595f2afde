#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "foundation/ZfError.h"
#include "front/Commands.h"
#include "report/compare/PatternComparison.h"
#include "report/picture/ComparisonOutput.h"

namespace qvre {

namespace {

constexpr const char* kExample =
    "Examples, after\n"
    "  cmd_qvre -C cluster.xml_cl -F emitter.xml_emt -P phaseshift.xml_ph -W wave.xml_sf -I pattern.xml_img "
    "-I0 i0.xml_img\n"
    "  qvre export pattern.xml_img -o data.csv\n"
    "in examples/cu001_small, where data.csv stands for a measurement:\n"
    "  qvre compare pattern.xml_img --measured data.csv --background 4 --theta 10 70 --rotate -o "
    "difference.png\n"
    "  qvre compare pattern.xml_img pattern.xml_img --i0 i0.xml_img --i0-b i0.xml_img\n"
    "The background of a measurement that goes round the normal is best taken from the calculation too,\n"
    "without --i0.\n"
    "R = sum (chi_a - chi_b)^2 / sum (chi_a^2 + chi_b^2): 0 for equal patterns, 1 for unrelated ones.\n"
    "Definitions are in docs/export-and-compare.md.";

struct CompareOptions {
    std::string image;
    std::string second;
    std::string i0;
    std::string i0OfSecond;
    std::string measured;
    std::vector<double> theta = {0.0, 90.0};
    std::string background;
    bool rotate = false;
    std::string output;
};

CompareRequest RequestOf(const CompareOptions& options) {
    CompareRequest request;
    const bool isPair = !options.second.empty();
    if (isPair == !options.measured.empty())
        throw CLI::ValidationError("Give two images, or one image and --measured");
    if (!isPair && !options.i0OfSecond.empty())
        throw CLI::ValidationError("--i0-b is the I0 of a second image, and there is none");
    if (isPair) request.first = {options.image, options.i0};
    request.second =
        isPair ? ImageFiles{options.second, options.i0OfSecond} : ImageFiles{options.image, options.i0};
    request.measured = options.measured;
    if (!options.output.empty() && options.output == options.measured)
        throw CLI::ValidationError("--output would replace the measured file");
    request.thetaMin = options.theta[0];
    request.thetaMax = options.theta[1];
    request.rotate = options.rotate;
    try {
        if (!options.background.empty()) request.background = ParseBackgroundModel(options.background);
    } catch (const ZfError& error) {
        throw CLI::ValidationError("--background", error.message);
    }
    return request;
}

void Print(const CompareResult& result, const CompareRequest& request) {
    const bool isPair = request.measured.empty();
    std::printf("a: %s\nb: %s\n", isPair ? request.first.image.c_str() : request.measured.c_str(),
                request.second.image.c_str());
    std::printf("%s: %zu, polar angles %g to %g degrees\n",
                isPair ? "directions of a grid" : "measured points", result.theta.size(), request.thetaMin,
                request.thetaMax);
    if (request.rotate) std::printf("rotation of b: %.3f degrees\n", result.rotation);
    std::printf("R: %.6f\n", result.agreement.R);
    std::printf("R with b scaled by %.6g: %.6f\n", result.agreement.scale, result.agreement.scaledR);
    std::printf("correlation: %.6f\n", result.agreement.correlation);
}

void Run(const CompareOptions& options) {
    const CompareRequest request = RequestOf(options);
    if (!options.output.empty()) CheckDifferenceFile(options.output);
    const CompareResult result = ComparePatterns(request);
    if (!options.output.empty()) WriteDifference(result, options.output);
    Print(result, request);
    if (!options.measured.empty() && !options.i0.empty() && request.background)
        std::printf(
            "note: chi of the measurement has the background taken away, that of the image its I0;\n"
            "where the points go round the normal, both lose the same without --i0 and agree better\n");
}

void AddPatterns(CLI::App& command, CompareOptions& options) {
    command.add_option("IMAGE", options.image, "Image a (.xml_img); with --measured, b")->required();
    command.add_option("SECOND", options.second, "Image b, without --measured");
    command.add_option("--i0", options.i0,
                       "I0 of the first or only image, for chi = (I - I0)/I0. Default none");
    command.add_option("--i0-b", options.i0OfSecond, "I0 of the second image. Default none");
    command.add_option("--measured", options.measured,
                       "Table of measured points in place of image a: theta, phi in degrees, intensity");
}

void AddTreatment(CLI::App& command, CompareOptions& options) {
    command
        .add_option("--theta", options.theta,
                    "Least and greatest polar angle that take part, degrees. Default 0 90")
        ->expected(2);
    command.add_option(
        "--background", options.background,
        "For what has no I0: chi = (I - B)/B with the background B(theta), a polynomial of this "
        "degree (0 to 12) through the means over the azimuth, or the means themselves: mean. "
        "Default none");
    command.add_flag("--rotate", options.rotate,
                     "Find the azimuthal rotation of b with the best agreement. Default no rotation");
    command.add_option(
        "-o,--output", options.output,
        "Difference: a picture (.png, .svg, .pdf) or a table of theta, phi, both chi and their "
        "difference (.csv). Default none");
}

}  // namespace

void AddCompareCommand(CLI::App& program) {
    const auto options = std::make_shared<CompareOptions>();
    CLI::App& command = *program.add_subcommand(
        "compare", "R-factor and correlation of two patterns, or of a pattern and a measurement");
    AddPatterns(command, *options);
    AddTreatment(command, *options);
    command.footer(kExample);
    command.callback([options] { Run(*options); });
}

}  // namespace qvre
