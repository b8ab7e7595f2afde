#include "prepare/atomic/ContinuumWave.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"
#include "scattering/ZfFreeElectron.h"
#include "scattering/ZfSphericalBessel.h"
#include "solver/ZfLnAtomicPotentialC.h"

namespace qvre {

namespace {

constexpr double kBohr_m = kBohr_angstrom * 1e-10;
constexpr double kFirstRadius = 1e-5;           // bohr
constexpr double kBeyond = 1.05;                // the tabulated potential goes on past the sphere
constexpr std::size_t kPotentialPoints = 1201;  // spline good to 1e-8 of rV
constexpr double kRestEnergy_eV = 510998.95;    // of the electron
constexpr double kLongestStep = 0.004;          // in ln r: holds (2l + 1) h small
constexpr double kPhaseOfStep = 0.04;           // radians of the local wave in a step

/// With S = r R'/M, R = r^l p and S = r^l t the scalar-relativistic equation is
///     dp/dx = M t - l p,
///     dt/dx = -(l + 1) t + (l(l+1)/M + r^2 2m/hbar^2 (V - E)) p,
/// which does without the slope of M.
class ScalarRelativistic : public ZfLnAtomicPotentialC {
public:
    explicit ScalarRelativistic(double factor) : factor_(factor) {}

    double Mass(double x) const { return 1.0 + (record->E - V(x)) / (2.0 * kRestEnergy_eV); }

    void Derivative(double x, const std::vector<double>& y, std::vector<double>& result) override {
        const double mass = Mass(x);
        const double square = std::exp(x + x) * factor_ * (V(x) - record->E);
        result.resize(y.size());
        for (std::size_t i = 0; i < y.size() / 2; ++i) {
            const auto l = static_cast<double>(i);
            const double p = y[2 * i];
            const double t = y[2 * i + 1];
            result[2 * i] = mass * t - l * p;
            result[2 * i + 1] = -(l + 1.0) * t + (l * (l + 1.0) / mass + square) * p;
        }
    }

    /// p = r^s near the nucleus, where M falls like a power of r: s(s + 2l + 1 - D) + W - D l = 0 with
    /// D = dlnM/dlnr and W = r^2 2m/hbar^2 M (E - V).
    double Start(double x, double l) const {
        const double mass = Mass(x);
        const double d = (1.0 - mass) / mass;
        const double w = std::exp(x + x) * factor_ * mass * (record->E - V(x));
        const double b = 2.0 * l + 1.0 - d;
        const double s = 0.5 * (-b + std::sqrt(std::max(b * b - 4.0 * (w - d * l), 0.0)));
        return (s + l) / mass;
    }

private:
    double factor_;  // 2m/hbar^2, 1/(eV m^2)
};

/// Classical Runge-Kutta step of fourth order.
class RungeKutta {
public:
    explicit RungeKutta(ZfDiffEqFunc& equation) : equation_(equation) {}

    void Step(double x, double h, std::vector<double>& y) {
        equation_.Derivative(x, y, k1_);
        equation_.Derivative(x + h / 2.0, Moved(y, k1_, h / 2.0), k2_);
        equation_.Derivative(x + h / 2.0, Moved(y, k2_, h / 2.0), k3_);
        equation_.Derivative(x + h, Moved(y, k3_, h), k4_);
        for (std::size_t i = 0; i < y.size(); ++i)
            y[i] += h / 6.0 * (k1_[i] + 2.0 * (k2_[i] + k3_[i]) + k4_[i]);
    }

private:
    const std::vector<double>& Moved(const std::vector<double>& y, const std::vector<double>& slope,
                                     double h) {
        at_.resize(y.size());
        for (std::size_t i = 0; i < y.size(); ++i) at_[i] = y[i] + h * slope[i];
        return at_;
    }

    ZfDiffEqFunc& equation_;
    std::vector<double> k1_, k2_, k3_, k4_, at_;
};

void Check(const ContinuumRequest& request) {
    if (!(request.radius > kFirstRadius) || !(request.radius < 1000.0))
        throw ZfError("The radius of an atom has to lie between 1e-5 and 1000 bohr");
    if (!(request.energy_eV > 0.0) || !(request.energy_eV <= kHighestEnergy_eV))
        throw ZfError("A kinetic energy has to lie above 0 and up to 100000 eV");
    if (request.lSize < 1 || request.lSize > kMostPartialWaves)
        throw ZfError("The number of partial waves has to lie between 1 and 61");
}

AtomicPotentialRecord Tabulate(const ContinuumRequest& request) {
    AtomicPotentialRecord record;
    record.E = request.energy_eV;
    const double ratio = std::log(request.radius * kBeyond / kFirstRadius);
    for (std::size_t i = 0; i < kPotentialPoints; ++i) {
        const double part = static_cast<double>(i) / (kPotentialPoints - 1);
        const double r = kFirstRadius * std::exp(ratio * part);
        record.radial.LnX.push_back(std::log(r * kBohr_m));
        record.V.push_back(request.potential(r) * kHartree_eV);
        if (!std::isfinite(record.V.back()))
            throw ZfError("The potential of an atom is not finite: its radius is too large");
    }
    return record;
}

double WaveNumber(double energy_eV) {
    ZfFreeElectron electron;
    electron.SetEnergy_eV(energy_eV);
    return electron.k;
}

/// One integration of all l at once.
class Integration {
public:
    explicit Integration(const ContinuumRequest& request)
        : request_(request),
          record_(Tabulate(request)),
          factor_(std::pow(WaveNumber(request.energy_eV), 2) / request.energy_eV),
          relativistic_(request.equation == RadialEquation::kScalarRelativistic),
          heavy_(factor_) {
        plain_.record = &record_;
        heavy_.record = &record_;
    }

    ContinuumWave Solve() {
        const double end = std::log(request_.radius * kBohr_m);
        Start();
        Keep();
        std::size_t next = 0;
        const std::vector<double>& points = request_.tablePoints;
        while (next < points.size() && points[next] <= x_) ++next, KeepTable();
        for (; next < points.size() && points[next] < end; ++next) {
            Advance(points[next]);
            KeepTable();
        }
        Advance(end);
        wave_.radius = request_.radius;
        wave_.k = WaveNumber(request_.energy_eV) * kBohr_m * std::sqrt(relativistic_ ? OutsideMass() : 1.0);
        Match();
        if (next < points.size()) StepBeyond(points[next]);
        return std::move(wave_);
    }

private:
    std::size_t Size() const { return static_cast<std::size_t>(request_.lSize); }
    ZfDiffEqFunc& Equation() { return relativistic_ ? static_cast<ZfDiffEqFunc&>(heavy_) : plain_; }
    double OutsideMass() const { return 1.0 + request_.energy_eV / (2.0 * kRestEnergy_eV); }

    void Start() {
        double p0 = 0.0;
        double q0 = 0.0;
        double step = 0.0;
        plain_.InitialValues(x_, p0, q0, step);
        for (std::size_t l = 0; l < Size(); ++l) {
            y_.push_back(p0);
            y_.push_back(relativistic_ ? heavy_.Start(x_, static_cast<double>(l)) : q0);
        }
        nodes_.assign(Size(), 0);
        wave_.u.resize(Size());
        wave_.P.resize(Size());
        wave_.L.resize(Size());
    }

    void Advance(double to) {
        RungeKutta solver(Equation());
        while (x_ < to) {
            const double local = std::sqrt(factor_ * std::abs(record_.E - plain_.V(x_))) * std::exp(x_);
            const double step = std::min(kLongestStep, kPhaseOfStep / local);
            const double before = x_;
            const bool last = x_ + step >= to - 1e-9;
            former_ = y_;
            x_ = last ? to : x_ + step;
            solver.Step(before, x_ - before, y_);
            CountNodes();
            Keep();
        }
    }

    void CountNodes() {
        for (std::size_t l = 0; l < Size(); ++l)
            if ((former_[2 * l] < 0.0) != (y_[2 * l] < 0.0)) ++nodes_[l];
    }

    void Keep() {
        const double r = std::exp(x_) / kBohr_m;
        wave_.r.push_back(r);
        double power = 1.0;  // (r/R)^l
        for (std::size_t l = 0; l < Size(); ++l) {
            wave_.u[l].push_back(r * power * y_[2 * l]);
            power *= r / request_.radius;
        }
    }

    double SlopeOfP(std::size_t l) const {
        const auto l0 = static_cast<double>(l);
        return relativistic_ ? heavy_.Mass(x_) * y_[2 * l + 1] - l0 * y_[2 * l] : y_[2 * l + 1];
    }

    /// A single short step, in which the field goes on past the sphere.
    void StepBeyond(double to) {
        RungeKutta(Equation()).Step(x_, to - x_, y_);
        x_ = to;
        KeepTable();
    }

    void KeepTable() {
        for (std::size_t l = 0; l < Size(); ++l) {
            wave_.P[l].push_back(y_[2 * l]);
            wave_.L[l].push_back(SlopeOfP(l));
        }
    }

    void Match();

    const ContinuumRequest& request_;
    AtomicPotentialRecord record_;
    double factor_;  // 2m/hbar^2, 1/(eV m^2)
    bool relativistic_;
    ZfLnAtomicPotentialC plain_;
    ScalarRelativistic heavy_;
    double x_ = 0.0;
    std::vector<double> y_, former_;
    std::vector<int> nodes_;
    ContinuumWave wave_;
};

/// j_l and y_l with their slopes over x.
struct FreePair {
    double j = 0.0;
    double y = 0.0;
    double dj = 0.0;
    double dy = 0.0;
};

FreePair PairAt(const ZfSphericalBessel& bessel, std::int32_t l, double x) {
    FreePair pair{bessel.J(l), bessel.Y(l), 0.0, 0.0};
    pair.dj = l / x * pair.j - bessel.J(l + 1);
    pair.dy = l / x * pair.y - bessel.Y(l + 1);
    return pair;
}

/// phi_l(x) of j_l = A sin(phi), y_l = -A cos(phi), rising from 0 at x = 0 by less than 1 a unit of x.
std::vector<double> FreePhases(std::int32_t size, double x) {
    const int steps = static_cast<int>(std::ceil(x)) + 1;
    std::vector<double> phase(static_cast<std::size_t>(size), 0.0);
    ZfSphericalBessel bessel;
    for (int i = 1; i <= steps; ++i) {
        bessel.Calculate(size, x * i / steps);
        for (std::int32_t l = 0; l < size; ++l) {
            double& phi = phase[static_cast<std::size_t>(l)];
            const double angle = std::atan2(bessel.J(l), -bessel.Y(l));
            phi = angle + 2.0 * kPi * std::round((phi - angle) / (2.0 * kPi));
        }
    }
    return phase;
}

// With R_l = c A sin(phi + delta), c > 0, the nodes inside the sphere number floor((phi + delta)/pi). The
// angle is known up to full turns, so it is the one next to the middle of its half turn, also where rounding
// puts it on the wrong side of a node.
void Integration::Match() {
    const double x = wave_.k * wave_.radius;
    ZfSphericalBessel bessel;
    bessel.Calculate(request_.lSize + 1, x);
    const std::vector<double> free = FreePhases(request_.lSize, x);
    for (std::size_t l = 0; l < Size(); ++l) {
        const FreePair pair = PairAt(bessel, static_cast<std::int32_t>(l), x);
        const double value = y_[2 * l];
        const double slope = (static_cast<double>(l) * value + SlopeOfP(l)) / x;
        // The Wronskian j y' - j' y is 1/x^2.
        const double cosine = x * x * (value * pair.dy - slope * pair.y);
        const double sine = x * x * (value * pair.dj - slope * pair.j);
        const double principal = std::atan2(sine, cosine);
        const double middle = (nodes_[l] + 0.5) * kPi;
        wave_.delta.push_back(principal +
                              2.0 * kPi * std::round((middle - free[l] - principal) / (2.0 * kPi)));
        const double scale = 1.0 / std::hypot(cosine, sine);
        for (double& u : wave_.u[l]) u *= scale;
    }
}

}  // namespace

double ContinuumWave::Outside(std::int32_t l, double at) const {
    ZfSphericalBessel bessel;
    bessel.Calculate(l + 1, k * at);
    const double phase = delta[static_cast<std::size_t>(l)];
    return at * (std::cos(phase) * bessel.J(l) - std::sin(phase) * bessel.Y(l));
}

ContinuumWave SolveContinuum(const ContinuumRequest& request) {
    Check(request);
    return Integration(request).Solve();
}

double FirstLogRadius() {
    return std::log(kFirstRadius * kBohr_m);
}

}  // namespace qvre
