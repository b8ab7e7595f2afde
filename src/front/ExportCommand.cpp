#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>

#include "front/Commands.h"
#include "front/SharedOptions.h"
#include "report/export/ImageExport.h"
#include "report/export/WaveExport.h"

namespace qvre {

namespace {

constexpr const char* kExample =
    "Examples, after\n"
    "  cmd_qvre -C cluster.xml_cl -F emitter.xml_emt -P phaseshift.xml_ph -W wave.xml_sf -I pattern.xml_img "
    "-I0 i0.xml_img\n"
    "in examples/cu001_small:\n"
    "  qvre export pattern.xml_img --i0 i0.xml_img --run wave.xml_sf --run cluster.xml_cl -o pattern.csv\n"
    "  qvre export pattern.xml_img --i0 i0.xml_img -o pattern.h5\n"
    "  qvre export wave.xml_sf -o wave.h5\n"
    "In a .csv the settings stand in front of the table, in lines that begin with #; a .npy holds the "
    "numbers\n"
    "alone. The layouts, and Python that reads them, are in docs/export-and-compare.md.";

void ExportWave(const ExportRequest& request) {
    if (!request.i0.empty() || request.hemisphere || request.background || !request.partner.empty())
        throw CLI::ValidationError(
            "--i0, --background, --asymmetry and --hemisphere are for images, not for a scattered wave");
    const WaveSummary summary = ExportScatteredWave(request.image, request.runFiles, request.output);
    std::printf("%s: %zu records, %zu sources, l size up to %d\n", request.output.c_str(), summary.records,
                summary.sources, summary.largestL);
}

void CheckDivisors(const ExportRequest& request) {
    if (!request.i0.empty() && request.background)
        throw CLI::ValidationError("--i0 excludes --background: either is what I is divided by");
    if (!request.partner.empty() && (!request.i0.empty() || request.background))
        throw CLI::ValidationError("--asymmetry is that of two intensities, without --i0 and --background");
}

/// "I, I0 and chi".
std::string Listed(const std::vector<std::string>& names) {
    std::string text = names.front();
    for (std::size_t i = 1; i < names.size(); ++i) text += (i + 1 < names.size() ? ", " : " and ") + names[i];
    return text;
}

void Run(const ExportRequest& request) {
    if (request.image.ends_with(".xml_sf")) {
        ExportWave(request);
        return;
    }
    CheckDivisors(request);
    const ExportSummary summary = ExportImage(request);
    std::printf("%s: %zu x %zu pixels, %zu on the map, %s\n", request.output.c_str(), summary.columns,
                summary.rows, summary.pixels, Listed(summary.planes).c_str());
    if (!summary.leftOut.empty()) std::printf("%s\n", summary.leftOut.c_str());
}

}  // namespace

void AddExportCommand(CLI::App& program) {
    auto request = std::make_shared<ExportRequest>();
    CLI::App& command = *program.add_subcommand(
        "export", "Write a pattern as CSV, HDF5, NumPy, Igor text or columns, or a scattered wave as HDF5");
    command
        .add_option("FILE", request->image, "Image (.xml_img), or scattered wave (.xml_sf) for HDF5 alone")
        ->required();
    command.add_option("--i0", request->i0,
                       "Image of I0 of the same run; adds I0 and chi = (I - I0)/I0. Default none");
    AddBackground(command, request->background);
    command.add_option("--asymmetry", request->partner,
                       "Second image B; adds it and (A - B)/(A + B). Default none");
    command
        .add_option(
            "--run", request->runFiles,
            "Files of the run whose settings are to be written too: .xml_sf, .xml_cl, .xyz, .xml_emt, "
            ".xml_ph, .xml_flu; may be given several times. Default none")
        ->expected(1)
        ->take_all();
    command.add_flag("--hemisphere", request->hemisphere,
                     "Of an image of the whole sphere write the polar angles up to 90 degrees. Default all");
    command
        .add_option(
            "-o,--output", request->output,
            "Output; its extension tells the format: .csv, .h5, .hdf5, .nxs, .npy, .itx (Igor text), .tpi "
            "or .etpi (columns energy, theta, phi, intensity)")
        ->required();
    command.footer(kExample);
    command.callback([request] { Run(*request); });
}

}  // namespace qvre
