#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "report/picture/LinePlot.h"

namespace qvre {

/// Values over a grid of two numbers, one cell of colour for each.
struct MapPicture {
    std::string title;
    std::string xLabel;  ///< with the unit
    std::string yLabel;
    std::string quantity;
    std::vector<double> x;                            ///< rising
    std::vector<double> y;                            ///< rising
    std::vector<double> values;                       ///< y running fastest; not finite: left white
    std::optional<std::pair<double, double>> marked;  ///< a cross
    std::vector<Curve> lines;                         ///< over the colours, white
};

/// Draws to a .png, .svg or .pdf. Throws ZfError when there is no value or the file cannot be written;
/// nothing is left behind then.
void DrawMap(const MapPicture& picture, const std::string& path);

}  // namespace qvre
