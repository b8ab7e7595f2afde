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
#include "report/compare/MultipoleFactor.h"
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
    "  qvre compare pattern.xml_img --measured data.csv --background mean --theta 10 70 --rotate "
    "--theta-offset "
    "find --acceptance 2\n"
    "A background is taken from the calculation in the very directions of the measurement: leave --i0 out.\n"
    "R = sum (chi_a - chi_b)^2 / sum (chi_a^2 + chi_b^2): 0 for equal patterns, 1 for unrelated ones.\n"
    "Definitions are in docs/export-and-compare.md.";

constexpr const char* kFind = "find";

struct CompareOptions {
    CompareRequest request;  ///< what is read directly
    std::string image;
    std::string second;
    std::string i0;
    std::string i0OfSecond;
    std::vector<double> theta = {0.0, 90.0};
    std::string background;
    std::optional<double> rotation;
    std::string thetaOffset;
    std::string tilt;
    std::string output;
};

/// A number, or several with commas between.
std::vector<double> Numbers(const char* option, const std::string& text, std::size_t count) {
    const std::vector<std::string> fields = CLI::detail::split(text, ',');
    std::vector<double> numbers(fields.size());
    for (std::size_t i = 0; i < fields.size(); ++i)
        if (fields.size() != count || !CLI::detail::lexical_cast(fields[i], numbers[i]) ||
            !std::isfinite(numbers[i]))
            throw CLI::ValidationError(option, "has to be " + std::string(kFind) + " or " +
                                                   (count == 1 ? "degrees" : "degrees,azimuth") + ", not " +
                                                   text);
    return numbers;
}

void ReadSetting(const CompareOptions& options, CompareRequest& request) {
    if (options.rotation && request.searched.rotation)
        throw CLI::ValidationError("Give --rotation, or have it found with --rotate");
    request.setting.rotation = options.rotation.value_or(0.0);
    request.searched.thetaOffset = options.thetaOffset == kFind;
    if (!options.thetaOffset.empty() && !request.searched.thetaOffset)
        request.setting.thetaOffset = Numbers("--theta-offset", options.thetaOffset, 1)[0];
    request.searched.tilt = options.tilt == kFind;
    if (options.tilt.empty() || request.searched.tilt) return;
    const std::vector<double> tilt = Numbers("--tilt", options.tilt, 2);
    request.setting.tilt = tilt[0];
    request.setting.tiltAzimuth = tilt[1];
}

CompareRequest RequestOf(const CompareOptions& options) {
    CompareRequest request = options.request;
    const bool isPair = !options.second.empty();
    if (isPair == !request.measured.empty())
        throw CLI::ValidationError("Give two images, or one image and --measured");
    if (!isPair && !options.i0OfSecond.empty())
        throw CLI::ValidationError("--i0-b is the I0 of a second image, and there is none");
    if (isPair) request.first = {options.image, options.i0};
    request.second =
        isPair ? ImageFiles{options.second, options.i0OfSecond} : ImageFiles{options.image, options.i0};
    if (!options.output.empty() && options.output == request.measured)
        throw CLI::ValidationError("--output would replace the measured file");
    request.thetaMin = options.theta[0];
    request.thetaMax = options.theta[1];
    ReadSetting(options, request);
    if (!options.background.empty())
        request.background =
            Usage("--background", [&options] { return ParseBackgroundModel(options.background); });
    try {
        CheckInstrument(request.instrument);
    } catch (const ZfError& error) {
        throw CLI::ValidationError(error.message);
    }
    return request;
}

void Print(const CompareResult& result, const CompareRequest& request) {
    const bool isPair = request.measured.empty();
    std::printf("a: %s\nb: %s\n", isPair ? request.first.image.c_str() : request.measured.c_str(),
                request.second.image.c_str());
    std::printf("%s: %zu, polar angles %g to %g degrees\n",
                isPair ? "directions of a grid" : "measured points", result.Directions(), request.thetaMin,
                request.thetaMax);
    std::printf("chi of a: %s\nchi of b: %s\n", result.modulationA.c_str(), result.modulationB.c_str());
    if (request.searched.rotation || request.setting.rotation != 0.0)
        std::printf("rotation of b: %.3f degrees\n", result.setting.rotation);
    const std::string setting = SettingText(request, result.setting);
    if (!setting.empty()) std::printf("%s\n", setting.c_str());
    const Agreement& agreement = result.agreement;
    std::printf("R: %.6f\n", agreement.R);
    if (agreement.scale > 0.0)
        std::printf("R with b scaled by %.6g: %.6f\n", agreement.scale, agreement.scaledR);
    else
        std::printf("R with b scaled: no factor above 0 brings b nearer to a\n");
    std::printf("R of absolute differences: %.6f\n", agreement.absoluteR);
    std::printf("R of multipoles up to l = %d: %.6f\n", kMultipoles, result.multipoleR);
    std::printf("correlation: %.6f\n", agreement.correlation);
    std::fputs(ComparisonRemarks(request, result).c_str(), stdout);
}

void Run(const CompareOptions& options) {
    const CompareRequest request = RequestOf(options);
    if (!options.output.empty()) CheckDifferenceFile(options.output);
    const CompareResult result = ComparePatterns(request);
    if (!options.output.empty()) WriteDifference(result, options.output);
    Print(result, request);
}

void AddPatterns(CLI::App& command, CompareOptions& options) {
    command.add_option("IMAGE", options.image, "Image a (.xml_img); with --measured, b")->required();
    command.add_option("SECOND", options.second, "Image b, without --measured");
    command.add_option("--i0", options.i0,
                       "I0 of the first or only image, for chi = (I - I0)/I0. Default none");
    command.add_option("--i0-b", options.i0OfSecond, "I0 of the second image. Default none");
    command.add_option("--measured", options.request.measured,
                       "Table of measured points in place of image a: theta, phi in degrees, intensity");
    command
        .add_option("--measured-theta", options.request.scan.theta,
                    "Polar angle of a measured azimuthal scan whose table has no column of it, degrees")
        ->check(Between(0.0, 90.0))
        ->type_name("ANGLE");
    command
        .add_option("--measured-phi", options.request.scan.phi,
                    "Azimuth of a measured polar scan whose table has no column of it, degrees")
        ->check(Between(-360.0, 360.0))
        ->type_name("ANGLE");
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
    command
        .add_option(
            "--sigma", options.request.sigma,
            "Weights of measured points, 1/sigma^2: sigma from the column of that name, column, or the "
            "square root of the counts, counts. Default none, all alike")
        ->transform(WordOf<SigmaSource>())
        ->option_text("NAME");
    command.add_option(
        "-o,--output", options.output,
        "Difference: a picture (.png, .svg, .pdf) or a table of theta, phi, both chi and their "
        "difference (.csv). Default none");
}

void AddSetting(CLI::App& command, CompareOptions& options) {
    command.add_flag("--rotate", options.request.searched.rotation,
                     "Find the azimuthal rotation of b with the best agreement. Default no rotation");
    command
        .add_option("--rotation", options.rotation,
                    "Rotation of b about the surface normal, from +x towards +y, degrees. Default 0")
        ->check(Between(-360.0, 360.0))
        ->type_name("ANGLE");
    command
        .add_option("--theta-offset", options.thetaOffset,
                    "True polar angle less the measured one, degrees, or find: up to 6 degrees. Default 0")
        ->type_name("ANGLE");
    command
        .add_option("--tilt", options.tilt,
                    "Lean of the surface normal from the axis of the azimuth, and the measured azimuth "
                    "towards which it leans, such as 1.5,30 degrees, or find: up to 6 degrees. Default none")
        ->type_name("ANGLE,PHI");
}

}  // namespace

void AddCompareCommand(CLI::App& program) {
    const auto options = std::make_shared<CompareOptions>();
    CLI::App& command = *program.add_subcommand(
        "compare", "R-factor and correlation of two patterns, or of a pattern and a measurement");
    AddPatterns(command, *options);
    AddTreatment(command, *options);
    AddSetting(command, *options);
    AddInstrument(command, options->request.instrument);
    command.footer(kExample);
    command.callback([options] { Run(*options); });
}

}  // namespace qvre
