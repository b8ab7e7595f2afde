#include "report/sphere/PolynomialFit.h"

#include <cstddef>

namespace qvre {

PolynomialFit::PolynomialFit(int degree, const std::vector<double>& x, const std::vector<double>& y,
                             const std::vector<double>& weight) {
    std::vector<double> last(x.size(), 0.0);
    std::vector<double> p(x.size(), 1.0);
    double lastNorm = 1.0;
    for (int d = 0; d <= degree; ++d) {
        double norm = 0.0;
        double shift = 0.0;
        double projection = 0.0;
        for (std::size_t i = 0; i < x.size(); ++i) {
            const double weighted = weight[i] * p[i];
            norm += weighted * p[i];
            shift += weighted * p[i] * x[i];
            projection += weighted * y[i];
        }
        const Term term{shift / norm, d == 0 ? 0.0 : norm / lastNorm, projection / norm};
        terms_.push_back(term);
        for (std::size_t i = 0; i < x.size(); ++i) {
            const double next = (x[i] - term.a) * p[i] - term.b * last[i];
            last[i] = p[i];
            p[i] = next;
        }
        lastNorm = norm;
    }
}

double PolynomialFit::At(double x) const {
    double last = 0.0;
    double p = 1.0;
    double sum = 0.0;
    for (const Term& term : terms_) {
        sum += term.coefficient * p;
        const double next = (x - term.a) * p - term.b * last;
        last = p;
        p = next;
    }
    return sum;
}

}  // namespace qvre
