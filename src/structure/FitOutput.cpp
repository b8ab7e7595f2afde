#include "structure/FitOutput.h"

#include <fmt/format.h>

#include <vector>

#include "foundation/ReplacedFile.h"
#include "prepare/cluster/CifWriting.h"
#include "prepare/cluster/ClusterWriting.h"
#include "report/picture/Canvas.h"
#include "structure/FitFiles.h"
#include "structure/FitJson.h"
#include "structure/FitNumbers.h"
#include "structure/FitPictures.h"
#include "structure/FitReportText.h"
#include "structure/FitTables.h"

namespace qvre {

namespace {

void WriteStructure(const FitReport& report, const std::string& folder) {
    const std::string title = fmt::format("{}, R = {}", report.title, RText(report.best.evaluation.r));
    if (!report.cluster.structures.empty())
        WriteCluster(report.cluster, folder + fit_files::kBestCluster, {.titles = {title}});
    if (!report.cell.atoms.empty())
        WriteWholeFile(folder + fit_files::kBestCell, CellAsCif(report.cell, report.title));
}

void WriteData(const FitReport& report, const std::string& folder) {
    const std::vector<std::string> parts = fit_files::PartsOfNames(report.data);
    for (std::size_t i = 0; i < parts.size(); ++i)
        WriteWholeFile(folder + fit_files::Comparison(parts[i]), ComparisonTable(report.data[i]));
}

void WritePictures(const FitReport& report, const std::string& folder) {
    const std::vector<FitPicture> pictures = FitPictures(report);
    for (const FitPicture& picture : pictures) {
        if (report.isRunning && !picture.isOfRun) continue;
        Canvas canvas(folder + picture.file);
        picture.draw(canvas);
        canvas.Finish();
    }
    if (report.isRunning || pictures.empty()) return;
    Canvas pages(folder + fit_files::kPages);
    for (const FitPicture& picture : pictures) picture.draw(pages);
    pages.Finish();
}

}  // namespace

void WriteFitReport(const FitReport& report, const std::string& folder) {
    const std::string in = folder + "/";
    WriteWholeFile(in + fit_files::kText, FitReportText(report));
    WriteWholeFile(in + fit_files::kJson, FitAsJson(report));
    if (report.best.point.empty()) return;
    WriteStructure(report, in);
    WriteData(report, in);
    if (!report.levels.empty()) WriteWholeFile(in + fit_files::kProfiles, ProfileTable(report));
    WritePictures(report, in);
}

}  // namespace qvre
