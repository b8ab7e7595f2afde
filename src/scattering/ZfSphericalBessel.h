#pragma once

#include <complex>
#include <cstdint>
#include <vector>

/// Spherical Bessel functions j_l(x) and y_l(x) of orders 0 to n: y by the upward recurrence, in which it is
/// stable, j by the downward one after Miller (DLMF 3.6(iii), 10.51), normalised by x sin x + cos x and x cos
/// x.
///
/// Where |y| reaches 1e55 the orders beyond are cut off: j = 0 and y = 1e55 there. The buffers are kept
/// between calls.
class ZfSphericalBessel {
public:
    /// Orders 0 to n - 1, and one more. Nothing happens for a negative n. x >= 0.
    void Calculate(std::int32_t n, double x);

    /// j_l for l below n.
    void GetJ(std::vector<double>& j) const;
    /// h1_l = j_l + i y_l and h2_l = j_l - i y_l for l below n.
    void GetH1H2(std::vector<std::complex<double>>& h1, std::vector<std::complex<double>>& h2) const;

    double J(std::int32_t l) const { return j_[static_cast<std::size_t>(l)]; }
    double Y(std::int32_t l) const { return y_[static_cast<std::size_t>(l)]; }

private:
    void CalculateY(double x, double j0);
    void CalculateJUpwards(double x);
    void CalculateJMiller(double x);
    void CalculateJSeries(double x);

    std::int32_t n_ = 0;
    std::int32_t last_ = 0;  ///< highest order kept: n, or the one at which |y| reached its bound
    std::vector<double> j_;
    std::vector<double> y_;
};
