#include "multiple/FullScattering.h"

#include <gtest/gtest.h>
#include <hwy/targets.h>
#include <omp.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>

#include "ChainOfFive.h"
#include "Clusters.h"
#include "multiple/ScatteringOperator.h"

namespace {

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

/// The solution with a matrix, element by element.
std::vector<ZfLmComplexTable> DenseSolution(const FullScatteringRequest& request,
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

class EveryTarget : public testing::TestWithParam<std::int64_t> {
protected:
    void SetUp() override { hwy::SetSupportedTargetsForTest(GetParam()); }
    void TearDown() override { hwy::SetSupportedTargetsForTest(0); }
};

INSTANTIATE_TEST_SUITE_P(FullScattering, EveryTarget, testing::ValuesIn(hwy::SupportedAndGeneratedTargets()),
                         [](const auto& target) { return std::string(hwy::TargetName(target.param)); });

FullScatteringRequest ChainRequest() {
    FullScatteringRequest request;
    request.k = chain::kWaveNumber;
    for (int i = 0; i < 5; ++i) request.positions.push_back({0.0, 0.0, i * chain::kDistance_m});
    request.species.assign(5, 0);
    request.listOfSpecies = {{"Cu", ScatteringFactors(std::vector<Complex>(chain::kPhaseShifts.begin(),
                                                                           chain::kPhaseShifts.end()))}};
    request.waves = {{0, SWaveTable()}};
    return request;
}

/// Against the intensity of the emitted s wave, 1 / (4 pi).
double ChainIntensity(const FullScatteringRequest& request, const std::vector<ZfLmComplexTable>& tables,
                      double theta_deg) {
    return std::norm(FarFieldOf(request, tables, request.waves[0], theta_deg * kDegree, 0.0)) * 4.0 * kPi;
}

constexpr double kChainDigits = 2e-4;

}  // namespace

TEST(FullScattering, SolvesTheChainOfFive) {
    const FullScatteringRequest request = ChainRequest();
    const FullScattering solution = Solved(request);
    EXPECT_TRUE(solution.cuts.empty());
    for (const auto& direction : chain::kDirections)
        EXPECT_NEAR(ChainIntensity(request, solution.waves[0], direction.theta_deg), direction.full,
                    kChainDigits)
            << direction.theta_deg;
}

// The paths of 1 to 5 steps one by one: the operator alone.
TEST_P(EveryTarget, SumsTheOrdersOfTheChain) {
    const FullScatteringRequest request = ChainRequest();
    Scatterers atoms;
    for (const Vec3& r : request.positions) atoms.positions.push_back({0.0, 0.0, request.k * r[2]});
    atoms.species = request.species;
    atoms.t = {request.listOfSpecies[0].t};
    ScatteringOperator scattering(atoms, {0.0, 0.0, 0.0}, 1);
    ClusterWave term = scattering.Emit(0, {Complex(1.0)}, 1);
    ClusterWave sum(term.size());
    for (std::size_t order = 0; order < 5; ++order) {
        if (order > 0) term = scattering.Scatter({term})[0];
        for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += term[i];
        std::vector<ZfLmComplexTable> tables;
        for (std::size_t a = 0; a < 5; ++a) {
            tables.emplace_back(static_cast<std::int32_t>(scattering.LSize(a)));
            for (std::size_t i = 0; i < tables[a].block.size(); ++i)
                tables[a].block[i] = sum[scattering.Offset(a) + i];
        }
        for (const auto& direction : chain::kDirections)
            EXPECT_NEAR(ChainIntensity(request, tables, direction.theta_deg), direction.order[order],
                        kChainDigits)
                << direction.theta_deg << ", order " << order + 1;
    }
}

// Species of different l size, phase shifts with losses, damping, emission of a larger l size than any atom
// has, and two emitters: the matrix written out.
TEST_P(EveryTarget, AgreesWithADenseSolution) {
    FullScatteringRequest request = MixedCluster(0.2);
    request.meanFreePath = 6.0 * kAngstrom;
    request.tolerance = 1e-13;
    request.waves = {{0, EmittedTable(8)}, {3, EmittedTable(2, 1.9)}};
    const FullScattering solution = Solved(request);
    ASSERT_TRUE(solution.cuts.empty());
    static std::map<std::size_t, std::vector<ZfLmComplexTable>> dense;
    for (std::size_t w = 0; w < request.waves.size(); ++w) {
        if (!dense.contains(w)) dense[w] = DenseSolution(request, request.waves[w]);
        EXPECT_LT(Difference(solution.waves[w], dense[w]), 1e-10) << w;
    }
}

// Real phase shifts take no flux: what leaves is what the emitter sends out against the wave that comes back
// to it. With c the wave at the emitter,
//     integral of |far field|^2 = sum |E|^2 + Re sum E conj(c (1 + 2 t)).
TEST(FullScattering, KeepsTheFlux) {
    FullScatteringRequest request = MixedCluster(0.0);
    request.waves = {{0, EmittedTable(3)}};
    request.tolerance = 1e-12;
    const FullScattering solution = Solved(request);
    const GaussLegendre gauss(60);
    constexpr std::size_t azimuths = 120;
    double left = 0.0;
    for (std::size_t i = 0; i < gauss.nodes.size(); ++i)
        for (std::size_t j = 0; j < azimuths; ++j)
            left +=
                gauss.weights[i] * kTwoPi / azimuths *
                std::norm(FarFieldOf(request, solution.waves[0], request.waves[0], std::acos(gauss.nodes[i]),
                                     kTwoPi * static_cast<double>(j) / azimuths));
    double right = 0.0;
    const auto& t = request.listOfSpecies[request.species[0]].t;
    const ZfLmComplexTable& e = request.waves[0].table;
    for (std::int32_t l = 0; l < e.L; ++l) {
        for (std::int32_t m = -l; m <= l; ++m) {
            const Complex factor = t[static_cast<std::size_t>(l)];
            const Complex c = solution.waves[0][0].At(l, m) / factor;
            right += std::norm(e.At(l, m)) + (e.At(l, m) * std::conj(c * (1.0 + 2.0 * factor))).real();
        }
    }
    EXPECT_NEAR(left / right, 1.0, 1e-8);
}

// From (l, m) at one atom to (L, M) at another, and from (L, -M) back to (l, -m): the same but for the sign
// (-1)^(m + M), as for every translation.
TEST(FullScattering, IsReciprocal) {
    FullScatteringRequest request = MixedCluster(0.1);
    request.meanFreePath = 8.0 * kAngstrom;
    request.tolerance = 1e-12;
    const auto unit = [](std::int32_t l, std::int32_t m) {
        ZfLmComplexTable table(l + 1);
        table.At(l, m) = 1.0;
        return table;
    };
    request.waves = {{1, unit(2, -1)}, {5, unit(3, 2)}};
    const FullScattering solution = Solved(request);
    const Complex there = solution.waves[0][5].At(3, -2) / request.listOfSpecies[request.species[5]].t[3];
    const Complex back = solution.waves[1][1].At(2, 1) / request.listOfSpecies[request.species[1]].t[2];
    EXPECT_GT(std::abs(there), 1e-3);
    EXPECT_LT(std::abs(there + back), 1e-10 * std::abs(there));
}

// A quarter turn about the emitter of an s wave changes nothing but the phases of m.
TEST(FullScattering, KeepsTheSymmetryOfTheCluster) {
    const FullScatteringRequest request = FccCluster(40, 9);
    const FullScattering solution = Solved(request);
    const auto& r = request.positions;
    double difference = 0.0;
    std::size_t moved = 0;
    for (std::size_t i = 0; i < r.size(); ++i) {
        const auto turned = std::find_if(r.begin(), r.end(), [&](const Vec3& p) {
            return std::abs(p[0] + r[i][1]) + std::abs(p[1] - r[i][0]) + std::abs(p[2] - r[i][2]) < 1e-13;
        });
        ASSERT_NE(turned, r.end());
        const auto j = static_cast<std::size_t>(turned - r.begin());
        moved += i == j ? 0 : 1;
        for (std::int32_t l = 0; l < 9; ++l)
            for (std::int32_t m = -l; m <= l; ++m)
                difference = std::max(difference, std::abs(solution.waves[0][j].At(l, m) -
                                                           IPower(m) * solution.waves[0][i].At(l, m)));
    }
    EXPECT_GT(moved, 30);
    EXPECT_LT(difference, 1e-9);
}

TEST(FullScattering, IsTheSameForAnyOrderOfAtomsAndThreads) {
    FullScatteringRequest request = FccCluster(40, 9);
    request.listOfSpecies.push_back({"N", ScatteringFactors(SmoothPhases(7, 3.0, -0.7))});
    for (std::size_t i = 0; i < request.species.size(); i += 3) request.species[i] = 1;
    request.waves.push_back({0, EmittedTable(3)});
    const int threads = omp_get_max_threads();
    omp_set_num_threads(1);
    const FullScattering first = Solved(request);
    for (const int other : {2, 3, 5}) {
        omp_set_num_threads(other);
        const FullScattering again = Solved(request);
        for (std::size_t w = 0; w < 2; ++w)
            for (std::size_t i = 0; i < request.positions.size(); ++i)
                ASSERT_EQ(again.waves[w][i].block, first.waves[w][i].block)
                    << other << " threads, atom " << i;
    }
    omp_set_num_threads(threads);

    FullScatteringRequest reversed = request;
    std::reverse(reversed.positions.begin(), reversed.positions.end());
    std::reverse(reversed.species.begin(), reversed.species.end());
    for (EmissionFromAtom& wave : reversed.waves) wave.emitter = request.positions.size() - 1;
    FullScattering other = Solved(reversed);
    for (std::size_t w = 0; w < 2; ++w) {
        std::reverse(other.waves[w].begin(), other.waves[w].end());
        EXPECT_LT(Difference(other.waves[w], first.waves[w]), 1e-9);
    }
}

// More waves than go through the pairs together, each as if it were alone.
TEST(FullScattering, SolvesManyWavesAtOnce) {
    FullScatteringRequest request = MixedCluster(0.0);
    request.tolerance = 1e-12;
    for (std::int32_t i = 0; i < 6; ++i) request.waves.push_back({0, EmittedTable(1 + i % 3, i)});
    const FullScattering together = Solved(request);
    for (const std::size_t w : {0U, 3U, 5U}) {
        FullScatteringRequest alone = request;
        alone.waves = {request.waves[w]};
        EXPECT_LT(Difference(together.waves[w], Solved(alone).waves[0]), 1e-10) << w;
    }
}

// With b = (1 - tG) A, tables s A leave out (s - 1) b.
TEST(FullScattering, MissingScatteringIsTheResidual) {
    FullScatteringRequest request = MixedCluster(0.02);
    request.waves = {{3, EmittedTable(3)}};
    request.tolerance = 1e-11;
    std::vector<std::vector<ZfLmComplexTable>> tables = Solved(request).waves;
    EXPECT_LT(MissingScattering(request, tables)[0], 1e-10);
    std::vector<double> missing;
    for (const double factor : {2.0, 1.5}) {
        for (ZfLmComplexTable& table : tables[0])
            for (Complex& a : table.block) a *= factor;
        missing.push_back(MissingScattering(request, tables)[0]);
    }
    EXPECT_GT(missing[0], 0.1);
    EXPECT_NEAR(missing[1] / missing[0], 4.0 / 3.0, 1e-8);
}
