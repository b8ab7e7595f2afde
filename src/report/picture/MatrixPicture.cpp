#include "report/picture/MatrixPicture.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"
#include "report/picture/Canvas.h"
#include "report/picture/ColourMap.h"

namespace qvre {

namespace {

// Points, on a page as wide as a column.
constexpr double kTop = 22.0;
constexpr double kGap = 4.0;
constexpr double kBarBlock = 34.0;
constexpr double kBarWidth = 9.0;
constexpr double kRight = 6.0;
constexpr double kWidestCell = 34.0;
constexpr double kLabel = 7.5;
constexpr double kTickLabel = 6.5;
constexpr double kWidestName = 70.0;

struct Grid {
    double left = 0.0;
    double cell = 0.0;
    double side = 0.0;
};

/// Names of any length leave the cells their room.
Grid GridOf(const MatrixPicture& picture) {
    Canvas ruler("ruler.svg");  // never written
    ruler.BeginPage(kColumnWidth, 1.0);
    double widest = 0.0;
    for (const std::string& name : picture.names)
        widest = std::max(widest, ruler.TextWidth(name, {.size = kLabel}));
    Grid grid;
    grid.left = std::min(widest, kWidestName) + 3 * kGap;
    const auto count = static_cast<double>(picture.names.size());
    grid.cell = std::min(kWidestCell, (kColumnWidth - grid.left - kBarBlock - kRight) / count);
    grid.side = count * grid.cell;
    return grid;
}

/// With a true minus sign, which has the width of a plus.
std::string NumberText(double value) {
    constexpr double kNearZero = 0.005;
    if (!std::isfinite(value)) return "\u2013";
    if (value == 1.0) return "1";
    return fmt::format("{}{:.2f}", value <= -kNearZero ? "\u2212" : "", std::abs(value));
}

void DrawCell(Canvas& canvas, double value, double x, double y, double side) {
    if (std::isfinite(value)) {
        canvas.SetColour(ColourAt(ColourMap::kDiverging, (value + 1.0) / 2.0));
        canvas.FilledRectangle(x, y, side, side);
    }
    constexpr double kDark = 0.75;  // of the colours' ends
    const bool isDark = std::abs(value) > kDark;
    canvas.SetColour(isDark ? Colour{1.0, 1.0, 1.0} : Colour{});
    const std::string text = NumberText(value);
    canvas.Text(x + side / 2, y + side / 2, text, {.size = std::min(kLabel, 0.32 * side)});
}

void DrawBar(Canvas& canvas, const Grid& grid) {
    const double x = grid.left + grid.side + 2.5 * kGap;
    canvas.Gradient(x, kTop, kBarWidth, grid.side, ColourMap::kDiverging);
    canvas.SetColour({});
    canvas.SetLine(0.6);
    canvas.Rectangle(x, kTop, kBarWidth, grid.side);
    for (const auto& [fraction, text] : {std::pair{0.0, "\u22121"}, {0.5, "0"}, {1.0, "1"}})
        canvas.Text(x + kBarWidth + 3, kTop + grid.side * (1.0 - fraction), text,
                    {.size = kTickLabel, .alignX = 1.0});
}

}  // namespace

void DrawMatrix(const MatrixPicture& picture, Canvas& canvas) {
    if (picture.names.empty()) throw ZfError("There is no value to draw");
    const Grid grid = GridOf(picture);
    const double bottom = kTop + grid.side;
    canvas.BeginPage(kColumnWidth, bottom + grid.left);
    canvas.FittedText(kColumnWidth / 2, 10, kColumnWidth - 8, picture.title, {.size = 9.0, .bold = true});
    for (std::size_t i = 0; i < picture.names.size(); ++i) {
        const double at = (static_cast<double>(i) + 0.5) * grid.cell;
        for (std::size_t j = 0; j < picture.names.size(); ++j)
            DrawCell(canvas, picture.values.at(i).at(j), grid.left + static_cast<double>(j) * grid.cell,
                     kTop + at - grid.cell / 2, grid.cell);
        canvas.SetColour({});
        canvas.Text(grid.left - kGap, kTop + at, picture.names[i], {.size = kLabel, .alignX = -1.0});
        canvas.Text(grid.left + at, bottom + kGap, picture.names[i],
                    {.size = kLabel, .alignX = -1.0, .turn = kPi / 2});
    }
    canvas.SetColour({});
    canvas.SetLine(0.7);
    canvas.Rectangle(grid.left, kTop, grid.side, grid.side);
    DrawBar(canvas, grid);
}

}  // namespace qvre
