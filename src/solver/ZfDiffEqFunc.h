#pragma once

#include <vector>

/// A system of ordinary differential equations dy/dx = f(x, y), as an integrator sees it. The vector y holds
/// a pair (p, dp/dx) for each l = 0, 1, ...
class ZfDiffEqFunc {
public:
    ZfDiffEqFunc() = default;
    ZfDiffEqFunc(const ZfDiffEqFunc&) = default;
    ZfDiffEqFunc& operator=(const ZfDiffEqFunc&) = default;
    virtual ~ZfDiffEqFunc() = default;

    /// `result` gets the size of y.
    virtual void Derivative(double x, const std::vector<double>& y, std::vector<double>& result) = 0;

    /// Where to start, with which pair for every l, and the first step.
    virtual void InitialValues(double& x0, double& p0, double& l0, double& step) = 0;
};
