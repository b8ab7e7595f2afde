#pragma once

#include <string>
#include <vector>

namespace qvre {

/// A span of numbers, low < high.
struct Span {
    double low = 0.0;
    double high = 1.0;
};

/// Ticks of an axis. Where numbers are very large or small, labels are in units of `factor`.
struct AxisTicks {
    std::vector<double> positions;
    std::vector<std::string> labels;
    std::string factor;  ///< such as "×10⁻⁵"; empty for 1
};

/// Multiples of 1, 2 or 5 times a power of ten that lie in the span, at most `most` + 1 of them (most >= 2).
AxisTicks NiceTicks(const Span& span, int most);
/// Multiples of `step`.
AxisTicks StepTicks(const Span& span, double step);

/// The span, or one around it when it is empty, so that a scale can be drawn.
Span Widened(const Span& span);

}  // namespace qvre
