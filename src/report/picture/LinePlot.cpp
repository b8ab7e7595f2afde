#include "report/picture/LinePlot.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"
#include "report/picture/Canvas.h"

namespace qvre {

namespace {

// Points, on a page as wide as a column.
constexpr double kLeft = 40.0;
constexpr double kRight = 10.0;
constexpr double kBottom = 30.0;
constexpr double kPlotHeight = 130.0;
constexpr double kBelowHeight = 42.0;
constexpr double kBetween = 5.0;
constexpr double kTitle = 16.0;
constexpr double kLegendLine = 10.0;
constexpr double kLegendDash = 14.0;
constexpr double kLabel = 7.5;
constexpr double kTickLabel = 6.5;

/// Colours that the colour-blind tell apart: M. Okabe, K. Ito, "Color Universal Design" (2008).
constexpr std::array<Colour, 6> kColours = {{{0.0, 0.447, 0.698},
                                             {0.835, 0.369, 0.0},
                                             {0.0, 0.620, 0.451},
                                             {0.8, 0.475, 0.655},
                                             {0.902, 0.624, 0.0},
                                             {0.0, 0.0, 0.0}}};

struct LegendEntry {
    std::size_t curve = 0;
    double x = 0.0;
    double line = 0.0;
};

/// One plot of the page.
struct Frame {
    double X(double x) const { return kLeft + (x - xs.low) / (xs.high - xs.low) * width; }
    double Y(double y) const { return top + (ys.high - y) / (ys.high - ys.low) * height; }

    Span xs;
    Span ys;
    double top = 0.0;
    double height = kPlotHeight;
    double width = kColumnWidth - kLeft - kRight;
    int mostTicks = 6;  // of the ordinate
    bool hasXLabels = true;
};

void CheckCurves(const std::vector<Curve>& curves) {
    bool anything = false;
    for (const Curve& curve : curves) {
        if (curve.x.size() != curve.y.size())
            throw ZfError(fmt::format("The line \"{}\" has {} abscissas for {} values", curve.label,
                                      curve.x.size(), curve.y.size()));
        for (std::size_t i = 0; i < curve.x.size(); ++i)
            anything = anything || (std::isfinite(curve.x[i]) && std::isfinite(curve.y[i]));
    }
    if (!anything) throw ZfError("There is no point to draw");
}

/// Of the points that are drawn.
Span RangeOf(const std::vector<Curve>& curves, std::vector<double> Curve::*axis) {
    Span range{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
    for (const Curve& curve : curves) {
        for (std::size_t i = 0; i < curve.x.size(); ++i) {
            if (!std::isfinite(curve.x[i]) || !std::isfinite(curve.y[i])) continue;
            range.low = std::min(range.low, (curve.*axis)[i]);
            range.high = std::max(range.high, (curve.*axis)[i]);
        }
    }
    return Widened(range);
}

Span WithMargin(const Span& span) {
    const double margin = 0.05 * (span.high - span.low);
    return {span.low - margin, span.high + margin};
}

Span Given(const std::optional<Span>& asked, const Span& otherwise) {
    if (!asked) return otherwise;
    if (!(std::isfinite(asked->high - asked->low) && asked->low < asked->high))
        throw ZfError("The range of an axis has to run from a lower to a higher number");
    return *asked;
}

void SetCurveStyle(Canvas& canvas, const Curve& curve, std::size_t place) {
    const std::size_t number = curve.colour.value_or(place);
    canvas.SetColour(kColours.at(number % kColours.size()));
    const std::size_t dash = curve.dashed ? 1 : number / kColours.size() % 3;
    canvas.SetLine(curve.width, dash == 0   ? std::vector<double>{}
                                : dash == 1 ? std::vector<double>{4.0, 2.0}
                                            : std::vector<double>{1.0, 1.5});
}

/// One entry after the other, in as many lines as it takes.
std::vector<LegendEntry> Legend(const std::vector<Curve>& curves, double width) {
    std::vector<LegendEntry> entries;
    Canvas ruler("ruler.svg");  // never written
    ruler.BeginPage(kColumnWidth, 1.0);
    double x = 0.0;
    double line = 0.0;
    for (std::size_t i = 0; i < curves.size(); ++i) {
        if (curves[i].label.empty()) continue;
        const double entryWidth = kLegendDash + 12 + ruler.TextWidth(curves[i].label, {.size = kTickLabel});
        if (x > 0.0 && x + entryWidth > width) {
            x = 0.0;
            line += 1.0;
        }
        entries.push_back({i, x, line});
        x += entryWidth;
    }
    return entries;
}

void DrawLegend(Canvas& canvas, const std::vector<Curve>& curves, const std::vector<LegendEntry>& entries,
                double top) {
    for (const LegendEntry& entry : entries) {
        const double x = kLeft + entry.x;
        const double y = top + entry.line * kLegendLine;
        const Curve& curve = curves[entry.curve];
        SetCurveStyle(canvas, curve, entry.curve);
        if (curve.line)
            canvas.Line(x, y, x + kLegendDash, y);
        else
            canvas.Dot(x + kLegendDash / 2, y, curve.dot);
        canvas.SetColour({});
        canvas.Text(x + kLegendDash + 3, y, curve.label, {.size = kTickLabel, .alignX = 1.0});
    }
}

void DrawCurves(Canvas& canvas, const std::vector<Curve>& curves, const Frame& frame, bool markers) {
    canvas.ClipTo(kLeft, frame.top, frame.width, frame.height);
    for (std::size_t i = 0; i < curves.size(); ++i) {
        std::vector<double> x;
        std::vector<double> y;
        for (const double value : curves[i].x) x.push_back(frame.X(value));
        for (const double value : curves[i].y) y.push_back(frame.Y(value));
        SetCurveStyle(canvas, curves[i], i);
        if (curves[i].line) canvas.Polyline(x, y);
        if (curves[i].line && !(markers && curves[i].markers)) continue;
        for (std::size_t k = 0; k < x.size(); ++k)
            if (std::isfinite(x[k]) && std::isfinite(y[k])) canvas.Dot(x[k], y[k], curves[i].dot);
    }
    canvas.EndClip();
}

void DrawFrame(Canvas& canvas, const LineAxes& axes, const std::string& yLabel, const Frame& frame) {
    const AxisTicks xTicks = axes.xStep > 0.0 ? StepTicks(frame.xs, axes.xStep) : NiceTicks(frame.xs, 7);
    const AxisTicks yTicks = NiceTicks(frame.ys, frame.mostTicks);
    const double bottom = frame.top + frame.height;
    canvas.SetColour({});
    canvas.SetLine(0.7);
    canvas.Rectangle(kLeft, frame.top, frame.width, frame.height);
    for (std::size_t i = 0; i < xTicks.positions.size(); ++i) {
        const double x = frame.X(xTicks.positions[i]);
        canvas.Line(x, bottom, x, bottom - 3);
        canvas.Line(x, frame.top, x, frame.top + 3);
        if (frame.hasXLabels)
            canvas.Text(x, bottom + 4, xTicks.labels[i], {.size = kTickLabel, .alignY = 1.0});
    }
    double widest = 0.0;
    for (std::size_t i = 0; i < yTicks.positions.size(); ++i) {
        const double y = frame.Y(yTicks.positions[i]);
        const TextStyle style{.size = kTickLabel, .alignX = -1.0};
        canvas.Line(kLeft, y, kLeft + 3, y);
        canvas.Line(kLeft + frame.width, y, kLeft + frame.width - 3, y);
        canvas.Text(kLeft - 3, y, yTicks.labels[i], style);
        widest = std::max(widest, canvas.TextWidth(yTicks.labels[i], style));
    }
    const auto withFactor = [](const std::string& label, const std::string& factor) {
        return factor.empty() ? label : label + " " + factor;
    };
    if (frame.hasXLabels)
        canvas.Text(kLeft + frame.width / 2, bottom + 20, withFactor(axes.xLabel, xTicks.factor),
                    {.size = kLabel});
    canvas.Text(std::max(6.0, kLeft - 10 - widest), frame.top + frame.height / 2,
                withFactor(yLabel, yTicks.factor), {.size = kLabel, .turn = kPi / 2});
}

}  // namespace

void DrawLines(const std::vector<Curve>& curves, const LineAxes& axes, const std::string& path) {
    Canvas canvas(path);
    DrawLines(curves, axes, canvas);
    canvas.Finish();
}

void DrawLines(const std::vector<Curve>& curves, const LineAxes& axes, Canvas& canvas) {
    CheckCurves(curves);
    Frame frame;
    frame.xs = Given(axes.xRange, RangeOf(curves, &Curve::x));
    frame.ys = Given(axes.yRange, WithMargin(RangeOf(curves, &Curve::y)));
    const std::vector<LegendEntry> legend = Legend(curves, frame.width);
    const double legendTop = axes.title.empty() ? 8.0 : kTitle + 6.0;
    const double legendHeight = legend.empty() ? 0.0 : (legend.back().line + 1) * kLegendLine;
    frame.top = legendTop + legendHeight;
    Frame below = frame;
    if (!axes.below.empty()) {
        CheckCurves(axes.below);
        below.ys = WithMargin(RangeOf(axes.below, &Curve::y));
        below.top = frame.top + kPlotHeight + kBetween;
        below.height = kBelowHeight;
        below.mostTicks = 3;
        frame.hasXLabels = false;
    }
    canvas.BeginPage(kColumnWidth, below.top + below.height + kBottom, axes.width);
    canvas.FittedText(kColumnWidth / 2, 10, kColumnWidth - 8, axes.title, {.size = 9.0, .bold = true});
    DrawLegend(canvas, curves, legend, legendTop);
    DrawCurves(canvas, curves, frame, axes.markers);
    DrawFrame(canvas, axes, axes.yLabel, frame);
    if (axes.below.empty()) return;
    DrawCurves(canvas, axes.below, below, axes.markers);
    DrawFrame(canvas, axes, axes.belowLabel, below);
}

}  // namespace qvre
