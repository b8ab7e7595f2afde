#pragma once

#include <vector>

#include "input/ZfPhaseShiftDocument.h"
#include "solver/CubicSpline.h"
#include "solver/ZfDiffEqFunc.h"

namespace qvre {

/// An atomic potential on the grid of a radial solution.
struct AtomicPotentialRecord {
    RadialTables radial;           ///< LnX is the grid, x = ln(r/m), strictly rising
    std::vector<double> V;         ///< eV, at the grid points
    std::vector<double> rV;        ///< eV m; set with the spline
    std::vector<double> rVSecond;  ///< second derivatives of the spline of rV over x
    double rVFirstSlope = 1e30;    ///< d(rV)/dx at the first grid point; above 9.9e29 a natural end
    double rVLastSlope = 1e30;
    double E = 0.0;  ///< eV
};

}  // namespace qvre

/// The radial Schroedinger equation of an electron in an atomic potential, in x = ln r. With R_l(r) =
/// r^l p_l(x) the equation R'' + 2 R'/r - l(l+1) R/r^2 = 2m/hbar^2 (V - E) R becomes
///     dp_l/dx = q_l,
///     dq_l/dx = r^2 2m/hbar^2 (V(r) - E) p_l - (2l + 1) q_l.
/// The regular solution is p = constant, q = 0 where r -> 0.
class ZfLnAtomicPotentialC : public ZfDiffEqFunc {
public:
    /// Throws ZfError without a record, or with spline tables that do not belong to its grid.
    void Derivative(double x, const std::vector<double>& y, std::vector<double>& result) override;

    /// The first grid point, the pair (1, 0) and the first distance of the grid. Builds the spline tables.
    /// Throws ZfError without a record, or with a bad grid.
    void InitialValues(double& x0, double& p0, double& l0, double& step) override;

    /// The potential in eV: constant below the grid, 0 from its end on, between them the spline of rV over r.
    /// The spline tables have to be there.
    double V(double x) const;

    qvre::AtomicPotentialRecord* record = nullptr;  ///< not owned

private:
    void BuildSpline();
};
