#pragma once

#include <optional>
#include <string>
#include <vector>

#include "report/picture/AxisTicks.h"
#include "report/picture/ColourMap.h"
#include "report/picture/DrawnPattern.h"
#include "report/sphere/ViewProjection.h"

namespace qvre {

class Canvas;

/// Pictures of one or more patterns side by side, on one scale of colours.
struct DiscPicture {
    std::vector<DrawnPattern> images;
    std::string title;  ///< over all; empty: none
    std::string quantity = "I (arb. units)";
    View view = View::kAzimuthalEquidistant;
    ColourMap colours = ColourMap::kViridis;
    std::optional<Span> range;       ///< of the colours; unset: ColourRange
    bool symmetricRange = false;     ///< ends of equal size, for a modulation
    Span shownTheta_deg{0.0, 90.0};  ///< polar angles beyond stay blank
    double ringStep_deg = 30.0;
    int panelsPerRow = 3;
    double width =
        0.0;  ///< of the picture, pixels for PNG, mm for SVG and PDF; 0: 85 mm or 800 pixels for one image
};

/// A place on the picture, in fractions of its width and height from the top left corner.
struct PicturePoint {
    double x = 0.0;
    double y = 0.0;
};

/// Where the parts of a picture are; lengths in points, y downwards.
struct DiscLayout {
    explicit DiscLayout(const DiscPicture& picture);

    PicturePoint Direction(View view, std::size_t panel, double theta, double phi) const;  ///< in fractions
    PicturePoint ColourBar(double fraction) const;  ///< middle of the bar; fraction 0 is the low end

    double width = 0.0;
    double height = 0.0;
    std::vector<PicturePoint> centres;  ///< of the discs, points
    double barX = 0.0;
    double barTop = 0.0;
    double barHeight = 0.0;
};

/// Draws to a file whose extension tells the format: .png, .svg or .pdf. Throws ZfError when there is no
/// image, an option is out of its range, or the file cannot be written; nothing is left behind then.
void DrawDiscs(const DiscPicture& picture, const std::string& path);

/// The same as the next page of a canvas.
void DrawDiscs(const DiscPicture& picture, Canvas& canvas);

}  // namespace qvre
