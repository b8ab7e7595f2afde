#pragma once

#include <vector>

namespace qvre {

/// The polynomial of least squares through points with weights, in polynomials that are orthogonal on the
/// points (G. E. Forsythe, J. Soc. Ind. Appl. Math. 5, 74 (1957)): no system of equations, and no loss of
/// digits at high degrees. More points of different abscissa than the degree are needed.
class PolynomialFit {
public:
    PolynomialFit(int degree, const std::vector<double>& x, const std::vector<double>& y,
                  const std::vector<double>& weight);

    double At(double x) const;

private:
    /// Of the three-term recurrence p' = (x - a) p - b p".
    struct Term {
        double a = 0.0;
        double b = 0.0;
        double coefficient = 0.0;
    };

    std::vector<Term> terms_;
};

}  // namespace qvre
