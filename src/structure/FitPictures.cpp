#include "structure/FitPictures.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "foundation/Text.h"
#include "report/compare/PatternScans.h"
#include "report/picture/Canvas.h"
#include "report/picture/DirectionPattern.h"
#include "report/picture/DiscPicture.h"
#include "report/picture/LinePlot.h"
#include "report/picture/MatrixPicture.h"
#include "structure/FitFiles.h"
#include "structure/FitNumbers.h"
#include "structure/FitReportText.h"
#include "structure/MisfitParts.h"
#include "structure/StructurePicture.h"

namespace qvre {

namespace {

constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();

std::string TitleOf(const FittedData& data) {
    return fmt::format("{}, R = {}", data.name, RText(data.r));
}

std::vector<double> Residuals(const FittedData& data) {
    std::vector<double> residuals = FittedChi(data);
    for (std::size_t i = 0; i < residuals.size(); ++i) residuals[i] = data.compared.chiA[i] - residuals[i];
    return residuals;
}

/// With some room beside the points.
Span Around(const std::vector<double>& values) {
    constexpr double kRoom = 0.02;
    const auto [least, most] = std::minmax_element(values.begin(), values.end());
    const Span span = Widened({*least, *most});
    const double room = kRoom * (span.high - span.low);
    return {span.low - room, span.high + room};
}

/// As pictures write it.
std::string WithSign(const std::string& text) {
    const std::size_t place = text.find("+-");
    if (place == std::string::npos) return text;
    return fmt::format("{}\u00B1{}", text.substr(0, place), text.substr(place + 2));
}

Curve Level(const std::string& label, const Span& x, double y) {
    Curve line{label, {x.low, x.high}, {y, y}};
    line.dashed = true;
    line.markers = false;
    line.colour = 5;
    return line;
}

// Data

void DrawMaps(const FittedData& data, Canvas& canvas) {
    const auto disc = [&data](const std::vector<double>& values, const std::string& title) {
        return PatternOfDirections(data.compared.theta, data.compared.phi, values, title);
    };
    DiscPicture plot;
    plot.images.push_back(disc(data.compared.chiA, "measured"));
    plot.images.push_back(disc(FittedChi(data), fmt::format("calculated, times {:.3g}", data.amplitude)));
    plot.images.push_back(disc(Residuals(data), "measured \u2212 calculated"));
    plot.title = TitleOf(data);
    plot.quantity = "\u03C7";
    plot.colours = ColourMap::kDiverging;
    plot.symmetricRange = true;
    DrawDiscs(plot, canvas);
}

/// The largest size of a value.
double LargestOf(const std::vector<double>& values) {
    double most = 0.0;
    for (const double value : values) most = std::max(most, std::abs(value));
    return most;
}

/// Several scans stand above each other, each with its own zero.
void DrawScans(const FittedData& data, const PatternScans& lines, Canvas& canvas) {
    const char* const fixed = lines.isPolar ? "\u03C6" : "\u03B8";
    const bool isOne = lines.scans.size() == 1;
    const double step = 1.6 * LargestOf(data.compared.chiA);
    std::vector<Curve> curves;
    std::vector<double> along;
    LineAxes axes;
    for (std::size_t i = 0; i < lines.scans.size(); ++i) {
        const PatternScan& scan = lines.scans[i];
        const std::string place = isOne ? "" : fmt::format(", {} = {:.4g}\u00B0", fixed, scan.angle);
        Curve measured = CurveOfScan(scan, data.compared.chiA, "measured" + place);
        Curve calculated = CurveOfScan(scan, FittedChi(data), "calculated" + place);
        const double shift = isOne ? 0.0 : -step * static_cast<double>(i);
        for (double& value : measured.y) value += shift;
        for (double& value : calculated.y) value += shift;
        measured.line = false;
        measured.colour = isOne ? 5 : i;
        calculated.colour = isOne ? 1 : i;
        curves.push_back(measured);
        curves.push_back(calculated);
        axes.below.push_back(CurveOfScan(scan, Residuals(data), ""));
        axes.below.back().colour = calculated.colour;
        along.insert(along.end(), scan.along.begin(), scan.along.end());
    }
    axes.xRange = Around(along);
    const double range = axes.xRange->high - axes.xRange->low;
    axes.xStep = range > 200.0 ? 60.0 : range > 90.0 ? 30.0 : 0.0;
    axes.below.insert(axes.below.begin(), Level("", *axes.xRange, 0.0));
    axes.below.front().width = 0.5;
    axes.title = TitleOf(data);
    axes.xLabel = lines.isPolar ? "polar angle \u03B8 (degrees)" : "azimuth \u03C6 (degrees)";
    if (isOne) axes.xLabel += fmt::format(", {} = {:.4g}\u00B0", fixed, lines.scans.front().angle);
    axes.yLabel = isOne ? "\u03C7" : "\u03C7, shifted";
    axes.belowLabel = "difference";
    DrawLines(curves, axes, canvas);
}

void DrawData(const FittedData& data, Canvas& canvas) {
    if (const std::optional<PatternScans> lines = FewScansOf(data.compared.theta, data.compared.phi))
        DrawScans(data, *lines, canvas);
    else
        DrawMaps(data, canvas);
}

// Profiles

/// A bar with caps where its ends are known; an unknown end is the edge of the picture.
Curve Bar(const std::string& label, const std::optional<double>& low, const std::optional<double>& high,
          const Span& edge, double y, double cap) {
    Curve bar{label, {}, {}};
    const auto add = [&bar](double x, double height) {
        bar.x.push_back(x);
        bar.y.push_back(height);
    };
    if (low) {
        add(*low, y - cap);
        add(*low, y + cap);
        add(kNothing, kNothing);
    }
    add(low.value_or(edge.low), y);
    add(high.value_or(edge.high), y);
    if (high) {
        add(kNothing, kNothing);
        add(*high, y - cap);
        add(*high, y + cap);
    }
    bar.width = 1.6;
    bar.markers = false;
    return bar;
}

void DrawProfile(const FitReport& report, std::size_t parameter, Canvas& canvas) {
    const FitParameter& one = report.space.parameters[parameter];
    const RLevelError& error = report.levels[parameter];
    const double best = report.best.point[parameter];
    const double r = report.best.evaluation.r;
    const double level = RLevel(r, report.independentData);
    const std::optional<double> noise = report.NoiseOf(parameter);

    Curve profile{"R, the others optimised", {}, {}};
    for (const ProfilePoint& point : error.profile) {
        profile.x.push_back(point.value);
        profile.y.push_back(point.trial.HasFailed() ? kNothing : point.trial.evaluation.r);
    }
    const double farthest = 1.5 * noise.value_or(0.0);
    std::vector<double> shown = profile.x;
    shown.insert(shown.end(), {best - farthest, best + farthest});
    const Span x = Around(shown);
    double least = r;  // not always at the least misfit
    for (const double value : profile.y) least = std::fmin(least, value);
    const double rise = std::max(level - least, 1e-6);
    const double bottom = least - 0.62 * rise;
    const double cap = 0.06 * rise;

    std::vector<Curve> curves = {profile};
    curves.push_back(Level(fmt::format("R level {}", RText(level)), x, level));
    if (error.lower || error.upper) {
        curves.push_back(Bar(fmt::format("R level: {}", LevelText(report, parameter)), error.lower,
                             error.upper, x, least - 0.2 * rise, cap));
        curves.back().colour = 0;
    }
    if (noise) {
        curves.push_back(Bar(WithSign(fmt::format("noise: {}", WithError(best, *noise))), best - *noise,
                             best + *noise, x, least - 0.4 * rise, cap));
        curves.back().colour = 1;
    }
    Curve line{"", {best, best}, {bottom, level + 2.0 * rise}, false};
    line.width = 0.5;
    line.colour = 5;
    curves.push_back(line);
    LineAxes axes;
    axes.title = WithSign(ParameterText(report, parameter)) + (noise ? " (noise)" : "");
    axes.xLabel = one.unit.empty() ? one.name : one.name + " (" + one.unit + ")";
    axes.yLabel = "reliability factor R";
    axes.markers = true;
    axes.xRange = x;
    axes.yRange = Span{bottom, level + 0.6 * rise};
    DrawLines(curves, axes, canvas);
}

// Correlations, course

MatrixPicture CorrelationsOf(const FitReport& report) {
    MatrixPicture picture{"correlations of the noise errors", {}, {}};
    for (std::size_t i = 0; i < report.space.parameters.size(); ++i) {
        picture.names.push_back(report.space.parameters[i].name);
        picture.values.emplace_back();
        for (std::size_t j = 0; j < report.space.parameters.size(); ++j)
            picture.values.back().push_back(report.noise->sigma[i] && report.noise->sigma[j]
                                                ? i == j ? 1.0 : report.noise->Correlation(i, j)
                                                : kNothing);
    }
    return picture;
}

/// The best one falls in steps.
void DrawCourse(const FitReport& report, Canvas& canvas) {
    constexpr std::size_t kMany = 100;
    Curve each{"evaluations", {}, {}};
    Curve best{"best so far", {}, {}};
    double misfit = std::numeric_limits<double>::infinity();
    double r = kNothing;
    const auto step = [&best, &r](int number) {
        best.x.push_back(number);
        best.y.push_back(r);
    };
    for (const EvaluationRecord& record : report.records) {
        each.x.push_back(record.number);
        each.y.push_back(record.failure.empty() ? record.r : kNothing);
        step(record.number);
        if (!record.failure.empty() || !(record.misfit < misfit)) continue;
        misfit = record.misfit;
        r = record.r;
        step(record.number);
    }
    each.line = false;
    if (each.x.size() > kMany) each.dot = 0.9;
    best.width = 1.4;
    LineAxes axes;
    axes.title = fmt::format("R = {} after {} evaluations", RText(r), report.records.size());
    axes.xLabel = "evaluation";
    axes.yLabel = "reliability factor R";
    axes.xRange = Around(each.x);
    DrawLines({each, best}, axes, canvas);
}

bool HasCourse(const FitReport& report) {
    return std::any_of(report.records.begin(), report.records.end(),
                       [](const EvaluationRecord& record) { return record.failure.empty(); });
}

std::string StructureTitle(const FitReport& report) {
    return fmt::format("{}, R = {}", report.title, RText(report.best.evaluation.r));
}

}  // namespace

std::vector<FitPicture> FitPictures(const FitReport& report) {
    std::vector<FitPicture> pictures;
    if (!report.cell.atoms.empty())
        pictures.push_back({fit_files::kStructure, [&report](Canvas& canvas) {
                                DrawSurface(report.cell, StructureTitle(report), canvas);
                            }});
    else if (!report.cluster.structures.empty())
        pictures.push_back({fit_files::kStructure, [&report](Canvas& canvas) {
                                DrawClusterViews(report.cluster.structures.front(), StructureTitle(report),
                                                 canvas);
                            }});
    const std::vector<std::string> parts = fit_files::PartsOfNames(report.data);
    auto part = parts.begin();
    for (const FittedData& data : report.data)
        pictures.push_back(
            {fit_files::DataPicture(*part++), [&data](Canvas& canvas) { DrawData(data, canvas); }});
    for (std::size_t i = 0; i < report.levels.size(); ++i)
        if (!report.levels[i].profile.empty())
            pictures.push_back({fit_files::ProfilePicture(report.space.parameters[i].name),
                                [&report, i](Canvas& canvas) { DrawProfile(report, i, canvas); }, false});
    if (report.noise && report.space.parameters.size() > 1)
        pictures.push_back({fit_files::kCorrelations,
                            [&report](Canvas& canvas) { DrawMatrix(CorrelationsOf(report), canvas); },
                            false});
    if (HasCourse(report))
        pictures.push_back({fit_files::kCourse, [&report](Canvas& canvas) { DrawCourse(report, canvas); }});
    return pictures;
}

}  // namespace qvre
