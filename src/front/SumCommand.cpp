#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "front/Commands.h"
#include "front/SharedOptions.h"
#include "report/sphere/ImageSum.h"

namespace qvre {

namespace {

constexpr double kLargestWeight = 1e30;

constexpr const char* kExamples =
    "Examples, with the images of runs under light of either hand, or of two domains:\n"
    "  qvre sum left/pattern.xml_img right/pattern.xml_img -o unpolarised.xml_img --weights 0.5,0.5\n"
    "  qvre sum left/i0.xml_img right/i0.xml_img -o unpolarised_i0.xml_img --weights 0.5,0.5\n"
    "  qvre sum --asymmetry left/pattern.xml_img right/pattern.xml_img -o dichroism.xml_img\n"
    "  qvre plot dichroism.xml_img -o dichroism.png\n"
    "Images of parts that do not interfere add; I0 images need the same weights. See docs/pictures.md.";

struct SumOptions {
    std::vector<std::string> images;
    std::vector<double> weights;
    bool asymmetry = false;
    std::string output;
};

void Check(const SumOptions& options) {
    CheckOutput(options.output, ".xml_img");
    if (options.asymmetry && options.images.size() != 2)
        throw CLI::ValidationError("--asymmetry is that of two images");
    if (options.asymmetry && !options.weights.empty())
        throw CLI::ValidationError("--asymmetry takes both images as they are, without --weights");
    if (!options.weights.empty() && std::all_of(options.weights.begin(), options.weights.end(),
                                                [](double weight) { return weight == 0.0; }))
        throw CLI::ValidationError("--weights: all are 0, which leaves nothing of the images");
    if (!options.weights.empty() && options.weights.size() != options.images.size())
        throw CLI::ValidationError("--weights has to give a number for each of the " +
                                   std::to_string(options.images.size()) + " images, and gives " +
                                   std::to_string(options.weights.size()));
}

void Run(const SumOptions& options) {
    Check(options);
    if (options.asymmetry) {
        const std::string leftOut = SaveAsymmetry(options.images[0], options.images[1], options.output);
        if (!leftOut.empty()) std::printf("%s: 0 there\n", leftOut.c_str());
    } else {
        std::vector<WeightedImage> members;
        for (std::size_t i = 0; i < options.images.size(); ++i)
            members.push_back({options.images[i], options.weights.empty() ? 1.0 : options.weights[i]});
        SumImages(members, options.output);
    }
    std::printf("%s written\n", options.output.c_str());
}

}  // namespace

void AddSumCommand(CLI::App& program) {
    const auto options = std::make_shared<SumOptions>();
    CLI::App& command = *program.add_subcommand("sum", "Add images, or take the asymmetry of two");
    command.add_option("IMAGE", options->images, "Images (.xml_img) on the same map, I or I0")
        ->required()
        ->type_name("FILE");
    command
        .add_option("--weights", options->weights,
                    "A factor for each image, separated by commas. Default 1 each")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->check(Between(-kLargestWeight, kLargestWeight))
        ->type_name("W,W,...");
    command.add_flag("--asymmetry", options->asymmetry,
                     "(A - B)/(A + B) of two images instead, for light of either hand the dichroism");
    command.add_option("-o,--output", options->output, "Image (.xml_img)")->required()->type_name("FILE");
    command.footer(kExamples);
    command.callback([options] { Run(*options); });
}

}  // namespace qvre
