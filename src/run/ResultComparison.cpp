#include "run/ResultComparison.h"

#include <fmt/format.h>

#include <algorithm>

#include "foundation/ReplacedFile.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "input/Cluster.h"
#include "report/picture/ComparisonOutput.h"
#include "run/ModelCalculation.h"
#include "run/RunProgress.h"
#include "run/ScanOutput.h"

namespace qvre {

namespace {

struct ComparedResult {
    const RunResult* result;
    CompareResult compared;
};

std::string ResultLine(const ComparedResult& one, const CompareRequest& request) {
    const Agreement& a = one.compared.agreement;
    const std::string setting = SettingText(request, one.compared.setting);
    return fmt::format("{:<24} R {:.4f}  scaled {:.4f} (by {:.3g})  correlation {:.4f}  rotation {:g}{}{}",
                       one.result->label.empty() ? "comparison" : one.result->label, a.R, a.scaledR, a.scale,
                       a.correlation, one.compared.setting.rotation, setting.empty() ? "" : "  ", setting);
}

std::string ScanTable(const ComparedScan& scan, const std::vector<ComparedResult>& results) {
    std::string text =
        ScanColumns(scan) +
        "R,R scaled,scale,correlation,rotation,R absolute,R multipoles,theta offset,tilt,tilt azimuth\n";
    for (std::size_t i = 0; i < results.size(); ++i) {
        const Agreement& a = results[i].compared.agreement;
        const SampleSetting& at = results[i].compared.setting;
        text += PointFields(scan.points[i]) +
                ScanFields({a.R, a.scaledR, a.scale, a.correlation, at.rotation, a.absoluteR,
                            results[i].compared.multipoleR, at.thetaOffset, at.tilt}) +
                DoubleToText(at.tiltAzimuth) + "\n";
    }
    return text;
}

/// Of the clusters of a result.
double LargestMomentum(const RunResult& result, const ResultFolder& folder, double acceptance_deg) {
    double largest = 0.0;
    for (const std::string& file : result.clusters) {
        Cluster cluster;
        ZfLoadCluster(cluster, folder.Path(file));
        largest = std::max(largest, LargestMomentum(cluster, result.largestKinetic_eV, acceptance_deg));
    }
    return largest;
}

void TellScan(const RunPlan& plan, const std::vector<ComparedResult>& results, const ResultFolder& folder,
              RunLog& log) {
    const ComparedResult& first = results.front();
    ComparedScan scan{plan.scanned, {}, 0.0};
    scan.independentData = IndependentDirections(
        first.compared.theta, first.compared.phi,
        LargestMomentum(*first.result, folder, plan.comparison.request.instrument.acceptance));
    for (const ComparedResult& one : results)
        scan.points.push_back({one.result->scanned, one.compared.agreement, one.result->member});
    WriteWholeFile(folder.Path("scan.csv"), ScanTable(scan, results));
    DrawScan(scan, folder.Path("scan.png"));
    log.Line(BestOfScan(scan));
}

}  // namespace

void CompareResults(const RunPlan& plan, ResultFolder& folder, RunLog& log) {
    if (plan.comparison.request.measured.empty()) return;
    const std::string& difference = plan.comparison.difference;
    std::vector<ComparedResult> results;
    for (const RunResult& result : plan.results) {
        InterruptRequest::ThrowIfPending();
        CompareRequest request = result.comparison.value_or(plan.comparison.request);
        const bool isEnergyOpen = request.instrument.innerPotential && request.instrument.energy == 0.0;
        request.second.image = folder.Path(result.image);
        // The measured points have no I0: the same background is taken from both then.
        if (!request.background) request.second.i0 = folder.Path(result.directImage);
        if (isEnergyOpen) request.instrument.energy = result.kinetic_eV;
        results.push_back({&result, ComparePatterns(request)});
        log.Line(ResultLine(results.back(), request));
        log.Indented(ComparisonRemarks(request, results.back().compared));
        if (!difference.empty())
            WriteDifference(results.back().compared, folder.Path(LabelledName(result.label, difference)));
    }
    if (!plan.scanned.empty()) TellScan(plan, results, folder, log);
    folder.Remember({"comparison", {}, ComparisonOutputs(plan), {}});
}

}  // namespace qvre
