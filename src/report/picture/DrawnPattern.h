#pragma once

#include <functional>
#include <string>
#include <vector>

#include "report/picture/AxisTicks.h"
#include "report/sphere/Modulation.h"

namespace qvre {

/// A function on the upper hemisphere, as pictures and cuts take it.
struct DrawnPattern {
    using Function = std::function<double(double theta, double phi)>;

    DrawnPattern(Function function, double resolution, std::string name);
    DrawnPattern(SphereImage image, std::string name);
    DrawnPattern(ModulationFunction chi, std::string name);

    Function value;         ///< angles in radians; NaN stays blank; called from several threads
    double resolution_deg;  ///< beyond which it shows nothing new
    std::string title;
};

/// Ends of the colours over the upper hemisphere and all patterns: the least and the largest value, or, with
/// `symmetric`, ends of equal size that the part kShownPart of the directions stay within, by solid angle.
Span ColourRange(const std::vector<DrawnPattern>& patterns, bool symmetric);

/// chi is large in a few directions, mostly beside those where I0 is faint, and a scale that has room for
/// them shows all others pale.
constexpr double kShownPart = 0.99;

}  // namespace qvre
