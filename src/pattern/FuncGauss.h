#pragma once

#include <cmath>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"
#include "scattering/SphericalHarmonics.h"

/// Normal distribution of mean 0, c exp(a t^2). Throws ZfError unless sigma is positive.
struct FuncGauss {
    explicit FuncGauss(double width) : sigma(width) {
        if (!(sigma > 0.0)) throw ZfError("FuncGauss: Sigma should be positive");
        a = -1.0 / (2.0 * sigma * sigma);
        c = 1.0 / std::sqrt(qvre::kTwoPi * sigma * sigma);
    }

    double operator()(double t) const { return c * std::exp(a * t * t); }

    double sigma;
    double a = 0.0;
    double c = 0.0;
};
