#include "prepare/atomic/FreeAtom.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <memory>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"
#include "solver/CubicSpline.h"

namespace qvre {

namespace {

constexpr double kMixing = 0.4;      // part of the new field that is taken
constexpr double kConverged = 1e-4;  // of r V, hartree bohr
constexpr int kMostRounds = 200;
constexpr double kStep = 0.01;       // of ln r
constexpr double kPrecision = 1e-9;  // of the energies, over the square of the nuclear charge

/// An electron of some elements stands in a higher shell than the order tells.
struct Promotion {
    int atomicNumber;
    int fromN, fromL;
    int toN, toL;
    int electrons;
};

constexpr std::array<Promotion, 17> kPromotions = {{{24, 4, 0, 3, 2, 1},
                                                    {29, 4, 0, 3, 2, 1},
                                                    {41, 5, 0, 4, 2, 1},
                                                    {42, 5, 0, 4, 2, 1},
                                                    {44, 5, 0, 4, 2, 1},
                                                    {45, 5, 0, 4, 2, 1},
                                                    {46, 5, 0, 4, 2, 2},
                                                    {47, 5, 0, 4, 2, 1},
                                                    {57, 4, 3, 5, 2, 1},
                                                    {58, 4, 3, 5, 2, 1},
                                                    {64, 4, 3, 5, 2, 1},
                                                    {78, 6, 0, 5, 2, 1},
                                                    {79, 6, 0, 5, 2, 1},
                                                    {89, 5, 3, 6, 2, 1},
                                                    {90, 5, 3, 6, 2, 2},
                                                    {91, 5, 3, 6, 2, 1},
                                                    {92, 5, 3, 6, 2, 1}}};

void Add(std::vector<AtomicShell>& shells, int n, int l, int electrons) {
    const auto shell = std::find_if(shells.begin(), shells.end(),
                                    [&](const AtomicShell& s) { return s.n == n && s.l == l; });
    if (shell == shells.end())
        shells.push_back({n, l, electrons});
    else
        shell->electrons += electrons;
}

/// Values on the radii of the orbitals.
struct Mesh {
    std::vector<double> r;
    std::vector<double> x;  // ln r
};

double ExchangePotentialOf(double density) {
    return -1.5 * std::cbrt(3.0 * density / kPi);
}

/// r V of the charge of all electrons but their exchange: the nucleus and Poisson's equation for the number
/// of electrons a bohr, `radial` = 4 pi r^2 rho.
std::vector<double> ElectrostaticRV(const Mesh& mesh, const std::vector<double>& radial, int atomicNumber) {
    const std::size_t size = mesh.r.size();
    const double h = mesh.x[1] - mesh.x[0];
    std::vector<double> inside(size, 0.0);   // electrons inside r
    std::vector<double> outside(size, 0.0);  // integral of radial/r from r on
    for (std::size_t i = 1; i < size; ++i)
        inside[i] = inside[i - 1] + 0.5 * h * (radial[i] * mesh.r[i] + radial[i - 1] * mesh.r[i - 1]);
    for (std::size_t i = size - 1; i > 0; --i)
        outside[i - 1] = outside[i] + 0.5 * h * (radial[i] + radial[i - 1]);
    std::vector<double> rv(size);
    for (std::size_t i = 0; i < size; ++i) rv[i] = -atomicNumber + inside[i] + mesh.r[i] * outside[i];
    return rv;
}

/// The field of a table of r V over ln r: that of the bare nucleus before it, Latter's tail behind it.
RadialPotential FieldOf(const Mesh& mesh, const std::vector<double>& rv, int atomicNumber) {
    struct Table {
        std::vector<double> x, rv, second;
    };
    auto table = std::make_shared<Table>();
    table->x = mesh.x;
    table->rv = rv;
    table->second = SplineSecondDerivatives(mesh.x, rv, 0.0, 0.0);
    return [table = std::shared_ptr<const Table>(table), atomicNumber](double r) {
        const double x = std::log(r);
        if (x <= table->x.front()) return -atomicNumber / r;
        if (x >= table->x.back()) return -1.0 / r;
        return SplineValue(table->x, table->rv, table->second, x) / r;
    };
}

/// Electrons a bohr of all shells in a field, on the mesh. `energies` of the shells are those of a field
/// nearby, and become those of this one.
std::vector<double> RadialDensity(const Mesh& mesh, const std::vector<AtomicShell>& shells,
                                  const RadialPotential& field, std::vector<double>& energies) {
    std::vector<double> radial(mesh.r.size(), 0.0);
    for (std::size_t s = 0; s < shells.size(); ++s) {
        BoundState state{field, shells[s].n, shells[s].l, RadialEquation::kScalarRelativistic};
        state.step = kStep;
        state.precision = kPrecision;
        state.guess = energies[s];
        const CoreOrbital orbital = BoundOrbital(state);
        energies[s] = orbital.energy;
        for (std::size_t i = 0; i < radial.size(); ++i)
            radial[i] += shells[s].electrons * orbital.P[i] * orbital.P[i];
    }
    return radial;
}

std::vector<double> NewRV(const Mesh& mesh, const std::vector<double>& radial, int atomicNumber) {
    std::vector<double> rv = ElectrostaticRV(mesh, radial, atomicNumber);
    for (std::size_t i = 0; i < rv.size(); ++i) {
        const double r = mesh.r[i];
        const double exchange = r * ExchangePotentialOf(radial[i] / (4.0 * kPi * r * r));
        rv[i] = std::min(rv[i] + exchange, -1.0);
    }
    return rv;
}

}  // namespace

std::vector<AtomicShell> GroundState(int atomicNumber) {
    std::vector<AtomicShell> shells;
    int left = atomicNumber;
    for (int sum = 1; left > 0; ++sum)
        for (int l = (sum - 1) / 2; l >= 0 && left > 0; --l) {
            const int electrons = std::min(left, 2 * (2 * l + 1));
            shells.push_back({sum - l, l, electrons});
            left -= electrons;
        }
    for (const Promotion& p : kPromotions)
        if (p.atomicNumber == atomicNumber) {
            Add(shells, p.fromN, p.fromL, -p.electrons);
            Add(shells, p.toN, p.toL, p.electrons);
        }
    shells.erase(std::remove_if(shells.begin(), shells.end(),
                                [](const AtomicShell& shell) { return shell.electrons == 0; }),
                 shells.end());
    return shells;
}

bool IsOccupied(int atomicNumber, int n, int l) {
    const std::vector<AtomicShell> shells = GroundState(atomicNumber);
    return std::any_of(shells.begin(), shells.end(),
                       [&](const AtomicShell& shell) { return shell.n == n && shell.l == l; });
}

RadialPotential SelfConsistentField(const ScreenedAtom& start) {
    const int z = start.atomicNumber;
    const std::vector<AtomicShell> shells = GroundState(z);
    Mesh mesh;
    mesh.r = LogarithmicRadii(kStep, 1);
    std::vector<double> rv, energies(shells.size(), 0.0);
    for (const double r : mesh.r) {
        mesh.x.push_back(std::log(r));
        rv.push_back(r * SlaterField(start, r));
    }
    for (int round = 0; round < kMostRounds; ++round) {
        const RadialPotential field = FieldOf(mesh, rv, z);
        const std::vector<double> next = NewRV(mesh, RadialDensity(mesh, shells, field, energies), z);
        double change = 0.0;
        for (std::size_t i = 0; i < rv.size(); ++i) {
            change = std::max(change, std::abs(next[i] - rv[i]));
            rv[i] += kMixing * (next[i] - rv[i]);
        }
        if (change < kConverged) return FieldOf(mesh, rv, z);
    }
    throw ZfError("The field of the free atom " + start.symbol + " does not become self-consistent");
}

BoundState CoreState(const ScreenedAtom& atom, CoreField core, int n, int l) {
    if (core == CoreField::kAnalytical) return {[atom](double r) { return SlaterField(atom, r); }, n, l};
    return {SelfConsistentField(atom), n, l, RadialEquation::kScalarRelativistic};
}

}  // namespace qvre
