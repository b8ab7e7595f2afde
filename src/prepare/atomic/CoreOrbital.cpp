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
constexpr double kStep = 0.004;        // of ln r; Numerov's error in an energy goes with its fourth power
constexpr double kWeakest = -0.005;    // hartree
constexpr double kHuge = 1e100;        // a wave that large has no further node
constexpr double kFolds = 45.0;  // powers of e by which the tail falls below the wave at its turning point

/// With P = sqrt(r) y and x = ln r the radial equation is y'' = g y, g = (l + 1/2)^2 + 2 r^2 (V - E).
struct Equation {
    Equation(const RadialPotential& field, int n, int angular) : l(angular) {
        const double last = 50.0 + 10.0 * n * n;  // e^(-r/n) of the weakest field has vanished there
        for (double x = std::log(kFirstRadius); x < std::log(last); x += kStep) r.push_back(std::exp(x));
        for (const double radius : r) potential.push_back(field(radius));
    }

    double G(std::size_t i, double energy) const {
        return (l + 0.5) * (l + 0.5) + 2.0 * r[i] * r[i] * (potential[i] - energy);
    }
    double Weight(std::size_t i, double energy) const { return 1.0 - kStep * kStep / 12.0 * G(i, energy); }

    /// The regular solution close to the nucleus, to first order in r.
    double Start(std::size_t i) const {
        return std::pow(r[i], l + 0.5) * (1.0 + r[i] * r[i] * potential[i] / (l + 1));
    }

    int l;
    std::vector<double> r;
    std::vector<double> potential;
};

/// Numerov's step from two known values to the third.
double Next(const Equation& equation, double energy, double before, std::size_t before_i, double here,
            std::size_t i, std::size_t next) {
    const double f = equation.Weight(i, energy);
    return ((12.0 - 10.0 * f) * here - equation.Weight(before_i, energy) * before) /
           equation.Weight(next, energy);
}

int CountNodes(const Equation& equation, double energy) {
    int nodes = 0;
    double before = equation.Start(0);
    double here = equation.Start(1);
    for (std::size_t i = 1; i + 1 < equation.r.size() && std::abs(here) < kHuge; ++i) {
        const double next = Next(equation, energy, before, i - 1, here, i, i + 1);
        if ((next < 0.0) != (here < 0.0)) ++nodes;
        before = here;
        here = next;
    }
    return nodes;
}

/// The energy at which the node of number n - l leaves the outer end, by bisection to the last bit or two.
double BoundEnergy(const Equation& equation, int n) {
    const int nodes = n - equation.l - 1;
    const double charge = -equation.r[0] * equation.potential[0];
    double low = -charge * charge - 10.0;
    double high = kWeakest;
    if (CountNodes(equation, high) <= nodes)
        throw ZfError("The field does not bind the level n = " + std::to_string(n) +
                      ", l = " + std::to_string(equation.l));
    while (high - low > 4e-16 * std::abs(low)) {
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
        folds += kStep * std::sqrt(std::max(0.0, equation.G(i, energy)));
    return i;
}

/// Outwards to the turning point and inwards from the tail to it, each where it is stable.
std::vector<double> Solution(const Equation& equation, double energy) {
    const std::size_t turn = OuterTurningPoint(equation, energy);
    const std::size_t end = EndOfTail(equation, energy, turn);
    std::vector<double> y(equation.r.size(), 0.0);
    y[0] = equation.Start(0);
    y[1] = equation.Start(1);
    for (std::size_t i = 1; i < turn; ++i) y[i + 1] = Next(equation, energy, y[i - 1], i - 1, y[i], i, i + 1);
    const double matched = y[turn];
    y[end - 1] = std::exp(-kFolds);
    for (std::size_t i = end - 1; i > turn; --i)
        y[i - 1] = Next(equation, energy, y[i + 1], i + 1, y[i], i, i - 1);
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

CoreOrbital BoundOrbital(const RadialPotential& field, int n, int l) {
    const Equation equation(field, n, l);
    CoreOrbital orbital{n, l, BoundEnergy(equation, n), equation.r, {}};
    orbital.P = Solution(equation, orbital.energy);
    for (std::size_t i = 0; i < orbital.P.size(); ++i) orbital.P[i] *= std::sqrt(orbital.r[i]);
    Normalise(orbital);
    return orbital;
}

bool IsOccupied(int atomicNumber, int n, int l) {
    int before = 0;
    for (int shell = 1; shell <= n + l; ++shell)
        for (int angular = (shell - 1) / 2; angular >= 0; --angular) {
            if (shell - angular == n && angular == l) return before < atomicNumber;
            before += 2 * (2 * angular + 1);
        }
    return false;
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
