#include "prepare/atomic/CoreOrbital.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"
#include "scattering/SphericalHarmonics.h"
#include "solver/CubicSpline.h"

namespace qvre {

namespace {

constexpr double kFirstRadius = 1e-7;  // bohr
constexpr double kLight = 137.035999;  // speed of light
constexpr double kNear = 1e-3;         // of a guess of the energy
constexpr double kWeakest = -0.005;    // hartree
constexpr double kHuge = 1e100;        // a wave that large has no further node
constexpr double kFolds = 45.0;  // powers of e by which the tail falls below the wave at its turning point

/// In x = ln r the radial equation is y'' = g y with
///     P = sqrt(r) y,    g = (l + 1/2)^2 + 2 r^2 (V - E),
/// the scalar-relativistic one, of the mass M = 1 + (E - V)/(2 c^2) and its slope D = dlnM/dx,
///     P = sqrt(r M) y,  g = l(l + 1) + 2 M r^2 (V - E) - D + (1 + D)^2/4 - (dD/dx)/2.
class Equation {
public:
    explicit Equation(const BoundState& state)
        : l(state.l), step(state.step), relativistic_(state.equation == RadialEquation::kScalarRelativistic) {
        r = LogarithmicRadii(step, state.n);
        for (const double radius : r) potential.push_back(state.field(radius));
        if (relativistic_) TakeSlopes();
    }

    double G(std::size_t i, double energy) const {
        const double square = 2.0 * r[i] * r[i] * (potential[i] - energy);
        if (!relativistic_) return (l + 0.5) * (l + 0.5) + square;
        const double mass = Mass(i, energy);
        const double part = -0.5 / (kLight * kLight * mass);
        const double d = part * slope_[i];
        return l * (l + 1.0) + mass * square - d + 0.25 * (1.0 + d) * (1.0 + d) -
               0.5 * (part * curvature_[i] - d * d);
    }
    double Weight(std::size_t i, double energy) const { return 1.0 - step * step / 12.0 * G(i, energy); }

    /// P over y.
    double Amplitude(std::size_t i, double energy) const {
        return std::sqrt(relativistic_ ? r[i] * Mass(i, energy) : r[i]);
    }

    /// The regular solution close to the nucleus, to first order in r; of the scalar-relativistic equation
    /// its power there.
    double Start(std::size_t i, double energy) const {
        if (relativistic_) return std::pow(r[i], std::sqrt(std::max(0.0, G(0, energy))));
        return std::pow(r[i], l + 0.5) * (1.0 + r[i] * r[i] * potential[i] / (l + 1));
    }

    int l;
    double step;  // of x
    std::vector<double> r;
    std::vector<double> potential;

private:
    double Mass(std::size_t i, double energy) const {
        return 1.0 + (energy - potential[i]) / (2.0 * kLight * kLight);
    }

    /// Derivatives of the potential over ln r; at the ends those of -Z/r.
    void TakeSlopes() {
        const std::vector<double>& v = potential;
        for (const double value : v) {
            slope_.push_back(-value);
            curvature_.push_back(value);
        }
        for (std::size_t i = 2; i + 2 < v.size(); ++i) {
            slope_[i] = (8.0 * (v[i + 1] - v[i - 1]) - (v[i + 2] - v[i - 2])) / (12.0 * step);
            curvature_[i] =
                (16.0 * (v[i + 1] + v[i - 1]) - (v[i + 2] + v[i - 2]) - 30.0 * v[i]) / (12.0 * step * step);
        }
    }

    bool relativistic_;
    std::vector<double> slope_, curvature_;
};

/// Numerov's step from two known values to the third, each with its weight.
double Next(double before, double beforeWeight, double here, double weight, double nextWeight) {
    return ((12.0 - 10.0 * weight) * here - beforeWeight * before) / nextWeight;
}

int CountNodes(const Equation& equation, double energy) {
    int nodes = 0;
    double before = equation.Start(0, energy);
    double here = equation.Start(1, energy);
    double beforeWeight = equation.Weight(0, energy);
    double weight = equation.Weight(1, energy);
    for (std::size_t i = 1; i + 1 < equation.r.size() && std::abs(here) < kHuge; ++i) {
        const double nextWeight = equation.Weight(i + 1, energy);
        const double next = Next(before, beforeWeight, here, weight, nextWeight);
        if ((next < 0.0) != (here < 0.0)) ++nodes;
        before = here;
        here = next;
        beforeWeight = weight;
        weight = nextWeight;
    }
    return nodes;
}

/// Energies below and above that of a state.
struct Bracket {
    double low = 0.0;
    double high = 0.0;
};

/// The whole range, or where it serves a narrow one around the guess.
Bracket BracketOf(const Equation& equation, const BoundState& state) {
    const int nodes = state.n - state.l - 1;
    const double charge = -equation.r[0] * equation.potential[0];
    const Bracket all = {-charge * charge - 10.0, kWeakest};
    for (double width = kNear; state.guess < 0.0 && width < 0.1; width *= 8.0) {
        const Bracket near = {state.guess * (1.0 + width), std::min(state.guess * (1.0 - width), kWeakest)};
        if (CountNodes(equation, near.low) <= nodes && CountNodes(equation, near.high) > nodes) return near;
    }
    if (CountNodes(equation, all.high) <= nodes)
        throw ZfError("The field does not bind the level n = " + std::to_string(state.n) +
                      ", l = " + std::to_string(state.l));
    return all;
}

/// The energy at which the node of number n - l leaves the outer end, by bisection.
double BoundEnergy(const Equation& equation, const BoundState& state) {
    const int nodes = state.n - state.l - 1;
    const double charge = -equation.r[0] * equation.potential[0];
    const double precision = state.precision * (charge * charge + 10.0);
    auto [low, high] = BracketOf(equation, state);
    while (high - low > precision) {
        const double middle = 0.5 * (low + high);
        (CountNodes(equation, middle) > nodes ? high : low) = middle;
    }
    return 0.5 * (low + high);
}

std::size_t OuterTurningPoint(const Equation& equation, double energy) {
    std::size_t i = equation.r.size() - 1;
    while (i > 2 && equation.G(i, energy) > 0.0) --i;
    return i;
}

/// First point behind the turning point at which the wave has vanished.
std::size_t EndOfTail(const Equation& equation, double energy, std::size_t turn) {
    double folds = 0.0;
    std::size_t i = turn + 1;
    for (; i + 1 < equation.r.size() && folds < kFolds; ++i)
        folds += equation.step * std::sqrt(std::max(0.0, equation.G(i, energy)));
    return i;
}

/// Outwards to the turning point and inwards from the tail to it, each where it is stable.
std::vector<double> Solution(const Equation& equation, double energy) {
    const std::size_t turn = OuterTurningPoint(equation, energy);
    const std::size_t end = EndOfTail(equation, energy, turn);
    const auto step = [&](const std::vector<double>& y, std::size_t before, std::size_t here,
                          std::size_t next) {
        return Next(y[before], equation.Weight(before, energy), y[here], equation.Weight(here, energy),
                    equation.Weight(next, energy));
    };
    std::vector<double> y(equation.r.size(), 0.0);
    y[0] = equation.Start(0, energy);
    y[1] = equation.Start(1, energy);
    for (std::size_t i = 1; i < turn; ++i) y[i + 1] = step(y, i - 1, i, i + 1);
    const double matched = y[turn];
    y[end - 1] = std::exp(-kFolds);
    for (std::size_t i = end - 1; i > turn; --i) y[i - 1] = step(y, i + 1, i, i - 1);
    const double scale = matched / y[turn];
    for (std::size_t i = turn; i < end; ++i) y[i] *= scale;
    return y;
}

/// The integral over ln r, for functions that vanish at both ends: there the plain sum converges fastest.
double IntegralOverGrid(const std::vector<double>& r, const std::vector<double>& f) {
    double sum = 0.0;
    for (std::size_t i = 0; i < r.size(); ++i) sum += f[i] * r[i];
    return sum * std::log(r.back() / r.front()) / static_cast<double>(r.size() - 1);
}

void Normalise(CoreOrbital& orbital) {
    std::vector<double> square(orbital.P);
    for (double& p : square) p *= p;
    const double norm = 1.0 / std::sqrt(IntegralOverGrid(orbital.r, square));
    for (double& p : orbital.P) p *= norm;
}

}  // namespace

double SlaterField(const ScreenedAtom& atom, double r) {
    const double density = std::max(0.0, atom.Density(r));
    return std::min(atom.Potential(r) - 1.5 * std::cbrt(3.0 * density / kPi), -1.0 / r);
}

std::vector<double> LogarithmicRadii(double step, int n) {
    const double last = 50.0 + 10.0 * n * n;  // e^(-r/n) of the weakest field has vanished there
    std::vector<double> r;
    for (double x = std::log(kFirstRadius); x < std::log(last); x += step) r.push_back(std::exp(x));
    return r;
}

CoreOrbital BoundOrbital(const BoundState& state) {
    const Equation equation(state);
    CoreOrbital orbital{state.n, state.l, BoundEnergy(equation, state), equation.r, {}};
    orbital.P = Solution(equation, orbital.energy);
    for (std::size_t i = 0; i < orbital.P.size(); ++i) orbital.P[i] *= equation.Amplitude(i, orbital.energy);
    Normalise(orbital);
    return orbital;
}

double DipoleIntegral(const CoreOrbital& orbital, const std::vector<double>& u) {
    std::vector<double> integrand(orbital.P);
    for (std::size_t i = 0; i < integrand.size(); ++i) integrand[i] *= orbital.r[i] * u[i];
    return IntegralOverGrid(orbital.r, integrand);
}

double DipoleIntegral(const CoreOrbital& orbital, const ContinuumWave& wave, int l) {
    std::vector<double> x;
    for (const double r : wave.r) x.push_back(std::log(r));
    const std::vector<double>& inside = wave.u[static_cast<std::size_t>(l)];
    const std::vector<double> second =
        SplineSecondDerivatives(x, inside, kNaturalEnd * 10.0, kNaturalEnd * 10.0);
    std::vector<double> u(orbital.r.size(), 0.0);  // below the first point of the wave nothing counts
    for (std::size_t i = 0; i < u.size(); ++i) {
        const double r = orbital.r[i];
        if (orbital.P[i] == 0.0 || r < wave.r.front()) continue;
        u[i] = r < wave.radius ? SplineValue(x, inside, second, std::log(r)) : wave.Outside(l, r);
    }
    return DipoleIntegral(orbital, u);
}

}  // namespace qvre
