#include "run/ScanOutput.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

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

/// The points of one member, by value, and their least R.
struct MemberScan {
    MemberScan(const ComparedScan& scan, std::string memberName) : member(std::move(memberName)) {
        for (const ScannedAgreement& point : scan.points)
            if (point.member == member) points.push_back(point);
        std::sort(points.begin(), points.end(),
                  [](const ScannedAgreement& a, const ScannedAgreement& b) { return a.values < b.values; });
        std::vector<std::vector<double>> values;
        std::vector<double> R;
        for (const ScannedAgreement& point : points) {
            values.push_back(point.values);
            R.push_back(point.agreement.R);
        }
        grid = GridOf(values, R);
        least = FindLeastR(grid, scan.independentData);
    }

    std::string member;
    std::vector<ScannedAgreement> points;
    ScannedR grid;
    LeastR least;
};

/// In the order of the recipe.
std::vector<MemberScan> MembersOf(const ComparedScan& scan) {
    std::vector<MemberScan> members;
    for (const ScannedAgreement& point : scan.points)
        if (std::none_of(members.begin(), members.end(),
                         [&](const MemberScan& known) { return known.member == point.member; }))
            members.emplace_back(scan, point.member);
    return members;
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

void AddCurves(const MemberScan& of, bool isAlone, double level, std::vector<Curve>& curves) {
    Curve plain{isAlone ? "R" : of.member, {}, {}};
    Curve scaled{"R scaled", {}, {}};
    for (const ScannedAgreement& one : of.points) {
        plain.x.push_back(one.values[0]);
        plain.y.push_back(one.agreement.R);
        scaled.y.push_back(one.agreement.scaledR);
    }
    scaled.x = plain.x;
    curves.push_back(std::move(plain));
    if (!isAlone) return;
    curves.push_back(std::move(scaled));
    if (!of.least.error.empty()) curves.push_back(Parabola(of.least, of.least.R * level));
}

void DrawCurves(const ComparedScan& scan, const std::vector<MemberScan>& members, const std::string& path) {
    const bool isAlone = members.size() == 1;
    std::vector<Curve> curves;
    for (const MemberScan& member : members)
        AddCurves(member, isAlone, std::sqrt(2.0 / scan.independentData), curves);
    const LeastR& least = members.front().least;
    LineAxes axes;
    if (isAlone && !least.error.empty()) axes.title = SettingsText(scan, least);
    axes.xLabel = AxisLabel(scan.settings[0]);
    axes.yLabel = "reliability factor R";
    axes.markers = true;
    DrawLines(curves, axes, path);
}

/// "layer3: " before what is told of a member.
std::string MemberText(const MemberScan& of) {
    return of.member.empty() ? "" : of.member + ": ";
}

void DrawMapOfScan(const ComparedScan& scan, const MemberScan& of, const std::string& path) {
    const LeastR& least = of.least;
    MapPicture picture;
    picture.title = MemberText(of) + SettingsText(scan, least);
    picture.xLabel = AxisLabel(scan.settings[0]);
    picture.yLabel = AxisLabel(scan.settings[1]);
    picture.quantity = "reliability factor R";
    picture.x = of.grid.axes[0];
    picture.y = of.grid.axes[1];
    picture.values = of.grid.R;
    const std::vector<double>& best = least.at.empty() ? least.point : least.at;
    picture.marked = {best[0], best[1]};
    if (!least.error.empty()) picture.lines = {{"", least.levelX, least.levelY}};
    DrawMap(picture, path);
}

std::string BestOf(const ComparedScan& scan, const MemberScan& of) {
    const LeastR& least = of.least;
    std::string text =
        MemberText(of) + fmt::format("{} has the least R; table scan.csv, {} scan.png",
                                     SettingsText(scan, least), scan.settings.size() > 1 ? "map" : "plot");
    if (least.error.empty()) return text + "\nno error of the minimum: " + least.whyNone;
    return text + fmt::format(
                      "\nR {:.4f} at the minimum of the {}; +- is where it rises by R sqrt(2/N), for N = "
                      "{:.0f} independent data (N. A. Booth et al., Surf. Sci. 387, 152 (1997))",
                      least.R, scan.settings.size() > 1 ? "quadratic surface" : "parabola",
                      scan.independentData);
}

}  // namespace

std::string ScanFields(const std::vector<double>& values) {
    std::string text;
    for (const double value : values) text += DoubleToText(value) + ",";
    return text;
}

std::string ScanColumns(const ComparedScan& scan) {
    std::string text;
    for (const ScannedSetting& setting : scan.settings) text += setting.name + ",";
    return scan.points.front().member.empty() ? text : text + "member,";
}

std::string PointFields(const ScannedAgreement& point) {
    return ScanFields(point.values) + (point.member.empty() ? "" : point.member + ",");
}

void DrawScan(const ComparedScan& scan, const std::string& path) {
    const std::vector<MemberScan> members = MembersOf(scan);
    if (scan.settings.size() == 1) {
        DrawCurves(scan, members, path);
        return;
    }
    DrawMapOfScan(
        scan,
        *std::min_element(members.begin(), members.end(),
                          [](const MemberScan& a, const MemberScan& b) { return a.least.R < b.least.R; }),
        path);
}

std::string BestOfScan(const ComparedScan& scan) {
    std::string text;
    for (const MemberScan& member : MembersOf(scan))
        text += (text.empty() ? "" : "\n") + BestOf(scan, member);
    return text;
}

}  // namespace qvre
