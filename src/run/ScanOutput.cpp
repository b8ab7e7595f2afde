#include "run/ScanOutput.h"

#include <fmt/format.h>

#include <cmath>

#include "foundation/Constants.h"
#include "foundation/Text.h"
#include "report/picture/LinePlot.h"
#include "report/picture/MapPicture.h"

namespace qvre {

namespace {

std::string AxisLabel(const ScannedSetting& setting) {
    return setting.unit.empty() ? setting.name : setting.name + " (" + setting.unit + ")";
}

/// "a = 4.09 +- 0.03 angstrom"
std::string SettingText(const ScannedSetting& setting, const LeastR& least, std::size_t axis) {
    const std::string value =
        least.error.empty() ? DoubleToText(least.point[axis]) : WithError(least.at[axis], least.error[axis]);
    return fmt::format("{} = {}{}{}", setting.name, value, setting.unit.empty() ? "" : " ", setting.unit);
}

std::string SettingsText(const ComparedScan& scan, const LeastR& least) {
    std::string text;
    for (std::size_t i = 0; i < scan.settings.size(); ++i)
        text += (i > 0 ? ", " : "") + SettingText(scan.settings[i], least, i);
    return text;
}

ScannedR MapOf(const ComparedScan& scan) {
    std::vector<std::vector<double>> points;
    std::vector<double> R;
    for (const ScannedAgreement& one : scan.points) {
        points.push_back(one.values);
        R.push_back(one.agreement.R);
    }
    return GridOf(points, R);
}

/// The parabola as far as its R level reaches, twice.
Curve Parabola(const LeastR& least, double rise) {
    constexpr int kPoints = 41;
    Curve curve{"parabola", {}, {}, false};
    for (int i = 0; i < kPoints; ++i) {
        const double t = 3.0 * i / (kPoints - 1) - 1.5;
        curve.x.push_back(least.at[0] + t * least.error[0]);
        curve.y.push_back(least.R + t * t * rise);
    }
    return curve;
}

void DrawCurve(const ComparedScan& scan, const LeastR& least, const std::string& path) {
    Curve plain{"R", {}, {}};
    Curve scaled{"R scaled", {}, {}};
    for (const ScannedAgreement& one : scan.points) {
        plain.x.push_back(one.values[0]);
        plain.y.push_back(one.agreement.R);
        scaled.y.push_back(one.agreement.scaledR);
    }
    scaled.x = plain.x;
    std::vector<Curve> curves = {plain, scaled};
    if (!least.error.empty())
        curves.push_back(Parabola(least, least.R * std::sqrt(2.0 / scan.independentData)));
    LineAxes axes;
    if (!least.error.empty()) axes.title = SettingsText(scan, least);
    axes.xLabel = AxisLabel(scan.settings[0]);
    axes.yLabel = "reliability factor R";
    axes.markers = true;
    DrawLines(curves, axes, path);
}

void DrawMapOfScan(const ComparedScan& scan, const LeastR& least, const std::string& path) {
    const ScannedR grid = MapOf(scan);
    MapPicture picture;
    picture.title = SettingsText(scan, least);
    picture.xLabel = AxisLabel(scan.settings[0]);
    picture.yLabel = AxisLabel(scan.settings[1]);
    picture.quantity = "reliability factor R";
    picture.x = grid.axes[0];
    picture.y = grid.axes[1];
    picture.values = grid.R;
    const std::vector<double>& best = least.at.empty() ? least.point : least.at;
    picture.marked = {best[0], best[1]};
    if (!least.error.empty()) picture.lines = {{"", least.levelX, least.levelY}};
    DrawMap(picture, path);
}

}  // namespace

LeastR ComparedScan::Least() const {
    return FindLeastR(MapOf(*this), independentData);
}

std::string ScanColumns(const std::vector<ScannedSetting>& settings) {
    std::string text;
    for (const ScannedSetting& setting : settings) text += setting.name + ",";
    return text;
}

std::string ScanFields(const std::vector<double>& values) {
    std::string text;
    for (const double value : values) text += DoubleToText(value) + ",";
    return text;
}

void DrawScan(const ComparedScan& scan, const std::string& path) {
    const LeastR least = scan.Least();
    if (scan.settings.size() > 1)
        DrawMapOfScan(scan, least, path);
    else
        DrawCurve(scan, least, path);
}

std::string BestOfScan(const ComparedScan& scan) {
    const LeastR least = scan.Least();
    std::string text = fmt::format("{} has the least R; table scan.csv, {} scan.png",
                                   SettingsText(scan, least), scan.settings.size() > 1 ? "map" : "plot");
    if (least.error.empty()) return text + "\nno error of the minimum: " + least.whyNone;
    return text + fmt::format(
                      "\nR {:.4f} at the minimum of the {}; +- is where it rises by R sqrt(2/N), for N = "
                      "{:.0f} independent data (N. A. Booth et al., Surf. Sci. 387, 152 (1997))",
                      least.R, scan.settings.size() > 1 ? "quadratic surface" : "parabola",
                      scan.independentData);
}

}  // namespace qvre
