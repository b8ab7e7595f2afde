#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "report/picture/AxisTicks.h"

namespace qvre {

class Canvas;

/// Points of one line; a value that is not finite leaves a gap.
struct Curve {
    std::string label;  ///< in the legend; empty: not named there
    std::vector<double> x;
    std::vector<double> y;
    bool markers = true;  ///< where the axes draw any
    bool line = true;     ///< that joins the points
    bool dashed = false;
    double width = 0.9;                      ///< points
    double dot = 1.6;                        ///< radius of its markers, points
    std::optional<std::size_t> colour = {};  ///< its number; unset: the place among the curves
};

struct LineAxes {
    std::string title;
    std::string xLabel;  ///< with the unit
    std::string yLabel;
    std::optional<Span> xRange;     ///< unset: that of the points
    std::optional<Span> yRange;     ///< unset: that of the points and a margin
    double xStep = 0.0;             ///< of ticks; 0: chosen
    bool markers = false;           ///< a dot at every point
    std::vector<Curve> below = {};  ///< in a flat plot of its own over the same abscissas, such as residuals
    std::string belowLabel;
    double width = 0.0;  ///< of the picture, pixels for PNG, mm for SVG and PDF; 0: 800 pixels or 85 mm
};

/// Draws curves over common axes to a .png, .svg or .pdf. Throws ZfError when no curve has a finite point, x
/// and y of one differ in length, or the file cannot be written; nothing is left behind then.
void DrawLines(const std::vector<Curve>& curves, const LineAxes& axes, const std::string& path);

/// The same as the next page of a canvas.
void DrawLines(const std::vector<Curve>& curves, const LineAxes& axes, Canvas& canvas);

}  // namespace qvre
