#include "report/picture/MapPicture.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"
#include "report/picture/Canvas.h"
#include "report/picture/ColourMap.h"

namespace qvre {

namespace {

// Points, on a page as wide as a column.
constexpr double kLeft = 42.0;
constexpr double kTop = 22.0;
constexpr double kWidth = 135.0;
constexpr double kHeight = 130.0;
constexpr double kBottom = 30.0;
constexpr double kBarX = kLeft + kWidth + 12.0;
constexpr double kBarWidth = 9.0;
constexpr double kLabel = 7.5;
constexpr double kTickLabel = 6.5;

/// The borders of cells around rising values: halfway between neighbours.
std::vector<double> Borders(const std::vector<double>& values) {
    if (values.size() == 1)
        return {Widened({values[0], values[0]}).low, Widened({values[0], values[0]}).high};
    std::vector<double> borders = {1.5 * values[0] - 0.5 * values[1]};
    for (std::size_t i = 1; i < values.size(); ++i) borders.push_back(0.5 * (values[i - 1] + values[i]));
    borders.push_back(1.5 * values.back() - 0.5 * values[values.size() - 2]);
    return borders;
}

struct MapFrame {
    explicit MapFrame(const MapPicture& picture) : x(Borders(picture.x)), y(Borders(picture.y)) {}

    double X(double value) const { return kLeft + (value - x.front()) / (x.back() - x.front()) * kWidth; }
    double Y(double value) const { return kTop + (y.back() - value) / (y.back() - y.front()) * kHeight; }

    std::vector<double> x;  // borders of the cells
    std::vector<double> y;
};

Span RangeOf(const std::vector<double>& values) {
    Span range{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
    for (const double value : values) {
        if (!std::isfinite(value)) continue;
        range.low = std::min(range.low, value);
        range.high = std::max(range.high, value);
    }
    if (!(range.low <= range.high)) throw ZfError("There is no value to draw");
    return Widened(range);
}

void DrawCells(Canvas& canvas, const MapPicture& picture, const MapFrame& frame, const Span& range) {
    for (std::size_t i = 0; i < picture.x.size(); ++i) {
        for (std::size_t j = 0; j < picture.y.size(); ++j) {
            const double value = picture.values.at(i * picture.y.size() + j);
            if (!std::isfinite(value)) continue;
            canvas.SetColour(ColourAt(ColourMap::kViridis, (value - range.low) / (range.high - range.low)));
            const double left = frame.X(frame.x[i]);
            const double top = frame.Y(frame.y[j + 1]);
            canvas.FilledRectangle(left, top, frame.X(frame.x[i + 1]) - left, frame.Y(frame.y[j]) - top);
        }
    }
}

void DrawMarks(Canvas& canvas, const MapPicture& picture, const MapFrame& frame) {
    canvas.ClipTo(kLeft, kTop, kWidth, kHeight);
    canvas.SetColour({1.0, 1.0, 1.0});
    canvas.SetLine(0.9);
    for (const Curve& line : picture.lines) {
        std::vector<double> x;
        std::vector<double> y;
        for (const double value : line.x) x.push_back(frame.X(value));
        for (const double value : line.y) y.push_back(frame.Y(value));
        canvas.Polyline(x, y);
    }
    if (picture.marked) {
        constexpr double kArm = 4.0;
        const double x = frame.X(picture.marked->first);
        const double y = frame.Y(picture.marked->second);
        canvas.SetLine(1.3);
        canvas.Line(x - kArm, y, x + kArm, y);
        canvas.Line(x, y - kArm, x, y + kArm);
    }
    canvas.EndClip();
}

void DrawAxes(Canvas& canvas, const MapPicture& picture, const MapFrame& frame) {
    const AxisTicks xTicks = NiceTicks({frame.x.front(), frame.x.back()}, 5);
    const AxisTicks yTicks = NiceTicks({frame.y.front(), frame.y.back()}, 6);
    const double bottom = kTop + kHeight;
    canvas.SetColour({});
    canvas.SetLine(0.7);
    canvas.Rectangle(kLeft, kTop, kWidth, kHeight);
    for (std::size_t i = 0; i < xTicks.positions.size(); ++i) {
        const double x = frame.X(xTicks.positions[i]);
        canvas.Line(x, bottom, x, bottom + 3);
        canvas.Text(x, bottom + 4.5, xTicks.labels[i], {.size = kTickLabel, .alignY = 1.0});
    }
    double widest = 0.0;
    for (std::size_t i = 0; i < yTicks.positions.size(); ++i) {
        const double y = frame.Y(yTicks.positions[i]);
        const TextStyle style{.size = kTickLabel, .alignX = -1.0};
        canvas.Line(kLeft - 3, y, kLeft, y);
        canvas.Text(kLeft - 4.5, y, yTicks.labels[i], style);
        widest = std::max(widest, canvas.TextWidth(yTicks.labels[i], style));
    }
    canvas.Text(kLeft + kWidth / 2, bottom + 20, picture.xLabel + " " + xTicks.factor, {.size = kLabel});
    canvas.Text(std::max(6.0, kLeft - 11 - widest), kTop + kHeight / 2, picture.yLabel + " " + yTicks.factor,
                {.size = kLabel, .turn = kPi / 2});
}

void DrawBar(Canvas& canvas, const MapPicture& picture, const Span& range) {
    canvas.Gradient(kBarX, kTop, kBarWidth, kHeight, ColourMap::kViridis);
    canvas.SetColour({});
    canvas.SetLine(0.6);
    canvas.Rectangle(kBarX, kTop, kBarWidth, kHeight);
    const AxisTicks ticks = NiceTicks(range, 6);
    double widest = 0.0;
    for (std::size_t i = 0; i < ticks.positions.size(); ++i) {
        const double fraction = (ticks.positions[i] - range.low) / (range.high - range.low);
        const TextStyle style{.size = kTickLabel, .alignX = 1.0};
        canvas.Text(kBarX + kBarWidth + 3, kTop + kHeight * (1 - fraction), ticks.labels[i], style);
        widest = std::max(widest, canvas.TextWidth(ticks.labels[i], style));
    }
    canvas.Text(kBarX + kBarWidth + widest + 9, kTop + kHeight / 2, picture.quantity + " " + ticks.factor,
                {.size = kLabel, .turn = kPi / 2});
}

}  // namespace

void DrawMap(const MapPicture& picture, const std::string& path) {
    const Span range = RangeOf(picture.values);
    const MapFrame frame(picture);
    Canvas canvas(path);
    canvas.BeginPage(kColumnWidth, kTop + kHeight + kBottom);
    canvas.FittedText(kColumnWidth / 2, 10, kColumnWidth - 8, picture.title, {.size = 8.0, .bold = true});
    DrawCells(canvas, picture, frame, range);
    DrawMarks(canvas, picture, frame);
    DrawAxes(canvas, picture, frame);
    DrawBar(canvas, picture, range);
    canvas.Finish();
}

}  // namespace qvre
