#include "run/ResultComparison.h"

#include <fmt/format.h>

#include <cmath>

#include "foundation/ReplacedFile.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "input/EmittedWave.h"
#include "report/picture/ComparisonOutput.h"
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

std::string ScanTable(const std::string& name, const std::vector<ComparedResult>& results) {
    std::string text =
        name +
        ",R,R scaled,scale,correlation,rotation,R absolute,R multipoles,theta offset,tilt,tilt azimuth\n";
    for (const ComparedResult& one : results) {
        const Agreement& a = one.compared.agreement;
        const SampleSetting& at = one.compared.setting;
        for (const double number : {one.result->scanned, a.R, a.scaledR, a.scale, a.correlation, at.rotation,
                                    a.absoluteR, one.compared.multipoleR, at.thetaOffset, at.tilt})
            text.append(DoubleToText(number)).append(",");
        text.append(DoubleToText(at.tiltAzimuth)).append("\n");
    }
    return text;
}

void TellScan(const std::string& name, const std::vector<ComparedResult>& results, const ResultFolder& folder,
              RunLog& log) {
    WriteWholeFile(folder.Path("scan.csv"), ScanTable(name, results));
    std::vector<ScannedAgreement> scan;
    scan.reserve(results.size());
    for (const ComparedResult& one : results) scan.push_back({one.result->scanned, one.compared.agreement});
    DrawScan(name, scan, folder.Path("scan.png"));
    log.Line(BestOfScan(name, scan));
}

}  // namespace

void CompareResults(const RunPlan& plan, ResultFolder& folder, RunLog& log) {
    CompareRequest request = plan.comparison.request;
    if (request.measured.empty()) return;
    const std::string& difference = plan.comparison.difference;
    const bool isEnergyOpen = request.instrument.innerPotential && request.instrument.energy == 0.0;
    std::vector<ComparedResult> results;
    for (const RunResult& result : plan.results) {
        InterruptRequest::ThrowIfPending();
        request.second.image = folder.Path(result.image);
        // The measured points have no I0: the same background is taken from both then.
        if (!request.background) request.second.i0 = folder.Path(result.directImage);
        if (isEnergyOpen) request.instrument.energy = result.kinetic_eV;
        results.push_back({&result, ComparePatterns(request)});
        log.Line(ResultLine(results.back(), request));
        log.Indented(ComparisonRemarks(request, results.back().compared));
        if (!difference.empty())
            WriteDifference(results.back().compared, folder.Path(result.FileName(difference)));
    }
    if (!plan.scannedName.empty()) TellScan(plan.scannedName, results, folder, log);
    folder.Remember({"comparison", {}, ComparisonOutputs(plan), {}});
}

}  // namespace qvre
