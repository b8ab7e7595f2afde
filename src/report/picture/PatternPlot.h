#pragma once

#include <optional>
#include <string>
#include <vector>

#include "report/picture/AxisTicks.h"
#include "report/picture/ColourMap.h"
#include "report/sphere/Instrument.h"
#include "report/sphere/PolarBackground.h"
#include "report/sphere/ViewProjection.h"

namespace qvre {

/// One picture of stored patterns, from the files to the file. Angles in degrees.
struct PatternPlot {
    std::vector<std::string> images;      ///< .xml_img, drawn side by side on one scale
    std::vector<std::string> references;  ///< I0, one for all or one each: draws chi = (I - I0)/I0; empty: I
    std::vector<std::string> partners;    ///< B, one for all or one each: draws the asymmetry (A - B)/(A + B)
    std::optional<BackgroundModel> background;  ///< instead of I0: draws chi = (I - B)/B
    std::string output;                         ///< .png, .svg or .pdf
    View view = View::kAzimuthalEquidistant;
    std::optional<ColourMap> colours;   ///< unset: viridis for I, diverging for chi
    std::vector<double> range;          ///< ends of the colours, or of the axis of cuts; empty: ColourRange
    std::string title;                  ///< empty: that of the file
    std::vector<std::string> captions;  ///< of the images, in place of those of the files
    double rings = 30.0;                ///< step of the polar rings
    double width = 0.0;                 ///< pixels for PNG, mm for SVG and PDF; 0: the usual one
    int perRow = 3;
    Instrument instrument;              ///< acts on I and I0
    std::vector<double> polarCuts;      ///< azimuths: line plots instead of a picture
    std::vector<double> azimuthalCuts;  ///< polar angles
};

/// What a picture shows.
struct PatternPlotSummary {
    std::string quantity;              ///< "I", "chi" or "asymmetry"
    Span values;                       ///< least and largest pixel of the upper hemisphere
    std::optional<Span> colours;       ///< ends of the scale; none for cuts
    std::vector<std::string> leftOut;  ///< LeftOutText of each image that has one
};

/// Throws ZfError for settings that contradict each other.
void CheckPatternPlot(const PatternPlot& plot);

/// Draws it; what a measurement does to a pattern acts on I and I0 in the order surface, domains, analyser.
/// Throws ZfError; nothing is left behind then.
PatternPlotSummary DrawPatternPlot(const PatternPlot& plot);

}  // namespace qvre
