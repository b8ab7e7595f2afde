#pragma once

#include <string>
#include <vector>

namespace qvre {

class Canvas;

/// Numbers from -1 to 1 between pairs of names, such as correlations.
struct MatrixPicture {
    std::string title;
    std::vector<std::string> names;
    std::vector<std::vector<double>> values;  ///< by row and column, as many as names; not finite: a dash
};

/// Draws the next page of a canvas: cells coloured from blue over white to red, with their numbers. Throws
/// ZfError without names.
void DrawMatrix(const MatrixPicture& picture, Canvas& canvas);

}  // namespace qvre
