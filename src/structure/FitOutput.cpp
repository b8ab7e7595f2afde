#include "structure/FitOutput.h"

#include <fmt/format.h>

#include <vector>

#include "foundation/ReplacedFile.h"
#include "prepare/cluster/CifWriting.h"
#include "prepare/cluster/ClusterWriting.h"
#include "structure/FitFiles.h"
#include "structure/FitJson.h"
#include "structure/FitReportText.h"
#include "structure/FitTables.h"

namespace qvre {

namespace {

void WriteStructure(const FitReport& report, const std::string& folder) {
    const std::string title = fmt::format("{}, R = {:.4f}", report.title, report.best.evaluation.r);
    if (!report.cluster.structures.empty())
        WriteCluster(report.cluster, folder + fit_files::kBestCluster, {.titles = {title}});
    if (!report.cell.atoms.empty())
        WriteWholeFile(folder + fit_files::kBestCell, CellAsCif(report.cell, report.title));
}

void WriteData(const FitReport& report, const std::string& folder) {
    std::vector<std::string> names;
    for (const FittedData& data : report.data) names.push_back(data.name);
    const std::vector<std::string> parts = fit_files::PartsOfNames(names);
    for (std::size_t i = 0; i < parts.size(); ++i)
        WriteWholeFile(folder + fit_files::Comparison(parts[i]), ComparisonTable(report.data[i]));
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
}

}  // namespace qvre
