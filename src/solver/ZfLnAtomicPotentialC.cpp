#include "solver/ZfLnAtomicPotentialC.h"

#include <cmath>
#include <cstddef>

#include "foundation/ZfError.h"

using namespace qvre;

namespace {

constexpr double kElectronMassTimesCharge = 1.45948576674755e-49;  // kg C
constexpr double kHbarSquared = 1.112123514465642e-68;             // J^2 s^2

void CheckGrid(const std::vector<double>& x, const std::vector<double>& v) {
    if (x.size() < 2 || v.size() != x.size())
        throw ZfError(
            "ZfLnAtomicPotentialC ERROR: the potential needs one value for each of two or more LnX");
    for (std::size_t i = 0; i < x.size(); ++i)
        if (!std::isfinite(x[i]) || (i > 0 && x[i] <= x[i - 1]))
            throw ZfError("ZfLnAtomicPotentialC ERROR: LnX has to rise from point to point");
}

}  // namespace

void ZfLnAtomicPotentialC::Derivative(double x, const std::vector<double>& y, std::vector<double>& result) {
    if (!record) throw ZfError("Error");
    const std::size_t points = record->radial.LnX.size();
    if (points < 2 || record->V.size() != points || record->rV.size() != points ||
        record->rVSecond.size() != points)
        throw ZfError("ZfLnAtomicPotentialC ERROR: the spline tables are not built");

    result.resize(y.size());
    const double factor =
        std::exp(x + x) * 2.0 * ((V(x) - record->E) * kElectronMassTimesCharge / kHbarSquared);
    for (std::size_t l = 0; l < y.size() / 2; ++l) {
        const double p = y[2 * l];
        const double q = y[2 * l + 1];
        result[2 * l] = q;
        result[2 * l + 1] = factor * p - (2.0 * static_cast<double>(l) + 1.0) * q;
    }
}

void ZfLnAtomicPotentialC::InitialValues(double& x0, double& p0, double& l0, double& step) {
    if (!record) throw ZfError("Error");
    BuildSpline();
    x0 = record->radial.LnX[0];
    p0 = 1.0;
    l0 = 0.0;
    step = record->radial.LnX[1] - record->radial.LnX[0];
}

double ZfLnAtomicPotentialC::V(double x) const {
    const std::vector<double>& grid = record->radial.LnX;
    if (x < grid.front()) return record->V.front();
    if (x >= grid.back()) return 0.0;
    return SplineValue(grid, record->rV, record->rVSecond, x) / std::exp(x);
}

void ZfLnAtomicPotentialC::BuildSpline() {
    const std::vector<double>& x = record->radial.LnX;
    CheckGrid(x, record->V);
    record->rV.resize(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) record->rV[i] = std::exp(x[i]) * record->V[i];
    record->rVSecond = SplineSecondDerivatives(x, record->rV, record->rVFirstSlope, record->rVLastSlope);
}
