#include "reference/PlainFullScattering.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <utility>

#include "foundation/Constants.h"
#include "foundation/Text.h"
#include "scattering/SphericalHarmonics.h"

using namespace qvre;

namespace plain {
namespace {

using Complex = std::complex<double>;

/// Nodes and weights of Gauss and Legendre on (-1, 1) (DLMF 3.5(v)).
struct GaussLegendre {
    explicit GaussLegendre(std::size_t n) {
        for (std::size_t i = 0; i < n; ++i) {
            double x = std::cos(kPi * (static_cast<double>(i) + 0.75) / (static_cast<double>(n) + 0.5));
            double slope = 1.0;
            for (int step = 0; step < 20; ++step) {
                double before = 0.0;
                double now = 1.0;
                for (std::size_t l = 0; l < n; ++l) {
                    const auto order = static_cast<double>(l);
                    const double next = ((2.0 * order + 1.0) * x * now - order * before) / (order + 1.0);
                    before = now;
                    now = next;
                }
                slope = static_cast<double>(n) * (x * now - before) / (x * x - 1.0);
                x -= now / slope;
            }
            nodes.push_back(x);
            weights.push_back(2.0 / ((1.0 - x * x) * slope * slope));
        }
    }
    std::vector<double> nodes;
    std::vector<double> weights;
};

/// Translation as its formula is written, with the integral of three harmonics by quadrature:
///     G_LM,lm = 4 pi sum over lambda of i^(L + lambda - l) h_lambda(kd) Y_lambda,m-M(-d)
///                   integral of Y_lm conj(Y_LM) conj(Y_lambda,m-M).
class PlainTranslation {
public:
    explicit PlainTranslation(std::int32_t lSize)
        : lSize_(lSize), gauss_(static_cast<std::size_t>(2 * lSize)) {
        for (const double x : gauss_.nodes)
            LegendreTable(norm_, theta_.emplace_back(), 2 * lSize, std::acos(x));
    }

    void SetDisplacement(const Vec3& d, double k) {
        const double R = std::sqrt(Dot(d, d));
        HarmonicTable(norm_, wave_, 2 * lSize_, std::acos(-d[2] / R), std::atan2(-d[1], -d[0]));
        for (std::int32_t l = 0; l < wave_.L; ++l) {
            const auto order = static_cast<unsigned>(l);
            const Complex h(std::sph_bessel(order, k * R), std::sph_neumann(order, k * R));
            for (std::int32_t m = -l; m <= l; ++m) wave_.At(l, m) *= h;
        }
    }

    Complex At(std::int32_t L, std::int32_t M, std::int32_t l, std::int32_t m) const {
        Complex sum = 0.0;
        const std::int32_t mu = m - M;
        for (std::int32_t lambda = std::max(std::abs(L - l), std::abs(mu)); lambda <= L + l; ++lambda) {
            double integral = 0.0;
            for (std::size_t i = 0; i < theta_.size(); ++i)
                integral += gauss_.weights[i] * theta_[i].At(l, m) * theta_[i].At(L, M) *
                            theta_[i].At(lambda, mu) / std::sqrt(kTwoPi);
            sum += std::conj(IPower(L + lambda - l)) * wave_.At(lambda, mu) * integral;
        }
        return 4.0 * kPi * sum;
    }

private:
    std::int32_t lSize_;
    GaussLegendre gauss_;
    ZfLmDoubleTable norm_;
    std::vector<ZfLmDoubleTable> theta_;
    ZfLmComplexTable wave_;
};

using Matrix = std::vector<std::vector<Complex>>;

/// Gaussian elimination; the right side stands in the last column.
std::vector<Complex> SolveDense(Matrix a) {
    const std::size_t n = a.size();
    for (std::size_t c = 0; c < n; ++c) {
        std::size_t pivot = c;
        for (std::size_t r = c; r < n; ++r)
            if (std::abs(a[r][c]) > std::abs(a[pivot][c])) pivot = r;
        std::swap(a[c], a[pivot]);
        for (std::size_t r = c + 1; r < n; ++r) {
            const Complex factor = a[r][c] / a[c][c];
            for (std::size_t i = c; i <= n; ++i) a[r][i] -= factor * a[c][i];
        }
    }
    std::vector<Complex> x(n);
    for (std::size_t r = n; r-- > 0;) {
        x[r] = a[r][n];
        for (std::size_t i = r + 1; i < n; ++i) x[r] -= a[r][i] * x[i];
        x[r] /= a[r][r];
    }
    return x;
}

}  // namespace

std::vector<ZfLmComplexTable> SolveFullScattering(const FullScatteringRequest& request,
                                                  const EmissionFromAtom& emission) {
    struct Place {
        std::size_t atom;
        std::int32_t l, m;
    };
    std::vector<Place> places;
    std::int32_t largest = emission.table.L;
    for (std::size_t i = 0; i < request.positions.size(); ++i) {
        const auto n = static_cast<std::int32_t>(request.listOfSpecies[request.species[i]].t.size());
        largest = std::max(largest, n);
        for (std::int32_t l = 0; l < n; ++l)
            for (std::int32_t m = -l; m <= l; ++m) places.push_back({i, l, m});
    }
    PlainTranslation translation(largest);
    Matrix matrix(places.size(), std::vector<Complex>(places.size() + 1));
    for (std::size_t r = 0; r < places.size(); ++r) matrix[r][r] = 1.0;
    const auto fill = [&](std::size_t to, std::size_t from) {
        Vec3 d = request.positions[from];
        for (std::size_t a = 0; a < 3; ++a) d[a] -= request.positions[to][a];
        translation.SetDisplacement(d, request.k);
        const double damping =
            request.meanFreePath > 0.0 ? std::exp(-std::sqrt(Dot(d, d)) / (2.0 * request.meanFreePath)) : 1.0;
        const auto& t = request.listOfSpecies[request.species[to]].t;
        for (std::size_t r = 0; r < places.size(); ++r) {
            if (places[r].atom != to) continue;
            const Complex factor = damping * t[static_cast<std::size_t>(places[r].l)];
            const auto tG = [&](std::int32_t l, std::int32_t m) {
                return factor * translation.At(places[r].l, places[r].m, l, m);
            };
            for (std::size_t c = 0; c < places.size(); ++c)
                if (places[c].atom == from) matrix[r][c] = -tG(places[c].l, places[c].m);
            if (from != emission.emitter) continue;
            for (std::int32_t l = 0; l < emission.table.L; ++l)
                for (std::int32_t m = -l; m <= l; ++m) matrix[r].back() += tG(l, m) * emission.table.At(l, m);
        }
    };
    for (std::size_t to = 0; to < request.positions.size(); ++to)
        for (std::size_t from = 0; from < request.positions.size(); ++from)
            if (to != from) fill(to, from);
    const std::vector<Complex> x = SolveDense(matrix);
    std::vector<ZfLmComplexTable> tables(request.positions.size());
    for (std::size_t i = 0; i < tables.size(); ++i)
        tables[i].SetSize(static_cast<std::int32_t>(request.listOfSpecies[request.species[i]].t.size()));
    for (std::size_t i = 0; i < places.size(); ++i)
        tables[places[i].atom].At(places[i].l, places[i].m) = x[i];
    return tables;
}

}  // namespace plain
