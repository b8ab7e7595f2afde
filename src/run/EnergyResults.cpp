#include "run/EnergyResults.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "foundation/ReplacedFile.h"
#include "foundation/Text.h"
#include "report/picture/LinePlot.h"
#include "run/RunProgress.h"
#include "run/ScanOutput.h"

namespace qvre {

namespace {

struct ComparedEnergies {
    const EnergyResult* result;
    EnergyComparison compared;
};

std::string ResultLine(const ComparedEnergies& one) {
    const Agreement& a = one.compared.agreement;
    return fmt::format(
        "{:<24} R {:.4f}  scaled {:.4f} (by {:.3g})  correlation {:.4f}  energy offset {:g} eV",
        one.result->label.empty() ? "comparison" : one.result->label, a.R, a.scaledR, a.scale, a.correlation,
        one.compared.offset_eV);
}

std::string Remarks(const EnergyComparison& compared) {
    std::string text;
    if (compared.leftOut > 0)
        text += fmt::format("measured points beyond the energies of the calculation: {}\n", compared.leftOut);
    if (compared.isOffsetAtEnd)
        text +=
            "note: the energy offset lies at the end of those that were tried: give one nearer as "
            "energy-offset\n";
    return text;
}

std::string ComparisonTable(const EnergyComparison& compared) {
    const Agreement& a = compared.agreement;
    std::string text = fmt::format(
        "# R = {:.9g}\n# scale of the calculation = {:.9g}\n# R with the scale = {:.9g}\n"
        "# correlation = {:.9g}\n# energy offset = {:.9g} eV, added to the measured energies\n"
        "# chi_calculated is not scaled; energies in eV, angles in degrees\n"
        "energy,theta,phi,chi_measured,chi_calculated\n",
        a.R, a.scale, a.scaledR, a.correlation, compared.offset_eV);
    for (const ComparedEnergyCurve& curve : compared.curves)
        for (std::size_t i = 0; i < curve.kinetic_eV.size(); ++i)
            text += fmt::format("{:.9g},{:.9g},{:.9g},{:.9g},{:.9g}\n", curve.kinetic_eV[i], curve.theta_deg,
                                curve.phi_deg, curve.measured[i], curve.calculated[i]);
    return text;
}

double LargestChi(const EnergyComparison& compared, double scale) {
    double largest = 0.0;
    for (const ComparedEnergyCurve& curve : compared.curves)
        for (std::size_t i = 0; i < curve.measured.size(); ++i)
            largest = std::max({largest, std::abs(curve.measured[i]), std::abs(scale * curve.calculated[i])});
    return largest;
}

/// The curves of one direction over each other; those of several stand above each other.
void DrawComparison(const ComparedEnergies& one, const std::string& path) {
    const Agreement& a = one.compared.agreement;
    const bool isScaled = a.scale > 0.0;
    const double scale = isScaled ? a.scale : 1.0;
    const double distance = 2.0 * LargestChi(one.compared, scale);
    const bool isAlone = one.compared.curves.size() == 1;
    std::vector<Curve> lines;
    double shift = 0.0;
    for (const ComparedEnergyCurve& curve : one.compared.curves) {
        const std::string direction =
            fmt::format(", \u03B8 {:g}\u00B0, \u03C6 {:g}\u00B0", curve.theta_deg, curve.phi_deg);
        Curve measured{"measured" + direction, curve.kinetic_eV, {}};
        Curve calculated{fmt::format("calculated, times {:.2f}", scale), curve.kinetic_eV, {}};
        for (std::size_t i = 0; i < curve.measured.size(); ++i) {
            measured.y.push_back(curve.measured[i] + shift);
            calculated.y.push_back(scale * curve.calculated[i] + shift);
        }
        lines.push_back(std::move(measured));
        lines.push_back(std::move(calculated));
        shift -= distance;
    }
    LineAxes axes;
    axes.title = fmt::format("R = {:.3f}{}", isScaled ? a.scaledR : a.R, isScaled ? " with the scale" : "");
    axes.xLabel = "kinetic energy (eV)";
    axes.yLabel = isAlone ? "\u03C7" : fmt::format("\u03C7, shifted by {:.2g} a direction", distance);
    DrawLines(lines, axes, path);
}

std::string ScanTable(const ComparedScan& scan, const std::vector<ComparedEnergies>& results) {
    std::string text = ScanColumns(scan) + "R,R scaled,scale,correlation,energy offset\n";
    for (std::size_t i = 0; i < results.size(); ++i) {
        const Agreement& a = results[i].compared.agreement;
        text += PointFields(scan.points[i]) + ScanFields({a.R, a.scaledR, a.scale, a.correlation}) +
                DoubleToText(results[i].compared.offset_eV) + "\n";
    }
    return text;
}

void TellScan(const RunPlan& plan, const std::vector<ComparedEnergies>& results, const ResultFolder& folder,
              RunLog& log) {
    ComparedScan scan{plan.scanned, {}, 0.0};
    for (const ComparedEnergyCurve& curve : results.front().compared.curves)
        if (!curve.kinetic_eV.empty())
            scan.independentData += IndependentEnergies(curve.kinetic_eV.back() - curve.kinetic_eV.front());
    for (const ComparedEnergies& one : results)
        scan.points.push_back({one.result->scanned, one.compared.agreement, one.result->member});
    WriteWholeFile(folder.Path("scan.csv"), ScanTable(scan, results));
    DrawScan(scan, folder.Path("scan.png"));
    log.Line(BestOfScan(scan));
}

}  // namespace

void CompareEnergyResults(const RunPlan& plan, ResultFolder& folder, RunLog& log) {
    if (plan.measuredEnergies.empty()) return;
    std::vector<ComparedEnergies> results;
    for (const EnergyResult& result : plan.energyResults) {
        InterruptRequest::ThrowIfPending();
        results.push_back({&result, CompareEnergies(LoadEnergyCurves(folder.Path(result.table)),
                                                    plan.measuredEnergies, result.comparison)});
        const ComparedEnergies& last = results.back();
        log.Line(ResultLine(last));
        log.Indented(Remarks(last.compared));
        WriteWholeFile(folder.Path(result.ComparisonTable()), ComparisonTable(last.compared));
        DrawComparison(last, folder.Path(result.ComparisonPicture()));
    }
    if (!plan.scanned.empty()) TellScan(plan, results, folder, log);
    folder.Remember({"comparison", {}, ComparisonOutputs(plan), {}});
}

}  // namespace qvre
