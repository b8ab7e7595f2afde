#include "solver/CubicSpline.h"

#include <algorithm>
#include <cstddef>

namespace qvre {

// The equations at the points are
//     h_i/6 s_i-1 + (h_i + h_i+1)/3 s_i + h_i+1/6 s_i+1 = d_i+1 - d_i
// with h_i = x_i - x_i-1 and d_i = (y_i - y_i-1)/h_i; an end with a slope has the half row
//     h/3 s_end + h/6 s_neighbour = +-(d - slope).
// Elimination downwards leaves s_i = right_i - upper_i s_i+1.
std::vector<double> SplineSecondDerivatives(const std::vector<double>& x, const std::vector<double>& y,
                                            double firstSlope, double lastSlope) {
    const std::size_t last = x.size() - 1;
    const auto width = [&x](std::size_t i) { return x[i] - x[i - 1]; };
    const auto slope = [&](std::size_t i) { return (y[i] - y[i - 1]) / width(i); };

    std::vector<double> upper(x.size(), 0.0);
    std::vector<double> right(x.size(), 0.0);
    if (firstSlope <= kNaturalEnd) {
        upper[0] = 0.5;
        right[0] = 3.0 / width(1) * (slope(1) - firstSlope);
    }
    for (std::size_t i = 1; i < last; ++i) {
        const double lower = width(i) / 6.0;
        const double pivot = (width(i) + width(i + 1)) / 3.0 - lower * upper[i - 1];
        upper[i] = width(i + 1) / 6.0 / pivot;
        right[i] = (slope(i + 1) - slope(i) - lower * right[i - 1]) / pivot;
    }
    if (lastSlope <= kNaturalEnd) {
        const double lower = width(last) / 6.0;
        const double pivot = width(last) / 3.0 - lower * upper[last - 1];
        right[last] = (lastSlope - slope(last) - lower * right[last - 1]) / pivot;
    }

    std::vector<double>& second = right;
    for (std::size_t i = last; i-- > 0;) second[i] -= upper[i] * second[i + 1];
    return second;
}

double SplineValue(const std::vector<double>& x, const std::vector<double>& y,
                   const std::vector<double>& second, double at) {
    const auto above = std::upper_bound(x.begin() + 1, x.end() - 1, at);
    const std::size_t i = static_cast<std::size_t>(above - x.begin());
    const double h = x[i] - x[i - 1];
    const double a = (x[i] - at) / h;
    const double b = (at - x[i - 1]) / h;
    return a * y[i - 1] + b * y[i] +
           ((a * a * a - a) * second[i - 1] + (b * b * b - b) * second[i]) * (h * h) / 6.0;
}

}  // namespace qvre
