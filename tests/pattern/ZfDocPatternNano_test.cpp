#include "pattern/ZfDocPatternNano.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "ErrorText.h"
#include "foundation/Constants.h"
#include "scattering/SphericalHarmonics.h"

namespace {

constexpr std::int32_t kDegrees = 14;
constexpr double kEnergy_eV = 100.0;
constexpr double kRadius_m = 1.2e-10;
constexpr double kRounding = 1e-12;

struct NeverStop final : ZfNotifyTerminate {
    bool IsTerminated() override { return false; }
};
struct StopAtOnce final : ZfNotifyTerminate {
    bool IsTerminated() override { return true; }
};

double J(std::int32_t l, double x) {
    return std::sph_bessel(static_cast<unsigned>(l), x);
}
std::complex<double> H(std::int32_t l, double x) {
    return {J(l, x), std::sph_neumann(static_cast<unsigned>(l), x)};
}
double DJ(std::int32_t l, double x) {
    return l / x * J(l, x) - J(l + 1, x);
}
std::complex<double> DH(std::int32_t l, double x) {
    return l / x * H(l, x) - H(l + 1, x);
}

double WaveNumber() {
    ZfFreeElectron electron;
    electron.SetEnergy_eV(kEnergy_eV);
    return electron.k;
}

/// Solutions r^l p = j_l(q r) of a constant potential, of any scale, and phase shifts of zero.
PhaseShiftRecord Solutions(double q, double scale = 1.0) {
    constexpr int kPoints = 2000;
    PhaseShiftRecord record;
    record.Ek_eV = kEnergy_eV;
    record.AtomName = "X";
    record.PhaseShiftValue.SetVectorSize(kDegrees);
    record.PhaseShiftValue.Clear();
    record.CalculateScatteringFactors();
    for (int i = 0; i < kPoints; ++i)
        record.radial.LnX.push_back(std::log(kRadius_m) - 8.0 * (kPoints - 1 - i) / (kPoints - 1));
    for (std::int32_t l = 0; l < kDegrees; ++l) {
        std::vector<double>& p = record.radial.P.emplace_back();
        std::vector<double>& slope = record.radial.L.emplace_back();
        for (const double lnX : record.radial.LnX) {
            const double x = q * std::exp(lnX);
            p.push_back(scale * J(l, x) / std::pow(x, l));
            slope.push_back(-scale * x * J(l + 1, x) / std::pow(x, l));
        }
    }
    return record;
}

/// A record of an emitter at the origin and atoms at `positions`, all named X, as a file gives it.
ZfScatteringRecord Cluster(const std::vector<std::array<double, 3>>& positions) {
    ZfScatteringRecord record;
    ZfFreeElectron& emitter = record.ListScatterer.electrons.emplace_back();
    emitter.A.SetSize(2);
    emitter.A.block = {{0.9, 0.1}, {0.2, -0.3}, {0.5, 0.4}, {-0.6, 0.7}};
    for (const auto& p : positions)
        record.ListScatterer.electrons.emplace_back().position = Vector3(p[0], p[1], p[2]);
    record.ListScatterer.SetEnergy_eV(kEnergy_eV);
    record.Ratio = 1.0;
    record.atomLabels.assign(positions.size() + 1, "X");
    return record;
}

/// exp(i q.r) along (1, 2, 2)/3.
ZfScatteringRecord PlaneWave(double ratio = 1.0) {
    ZfScatteringRecord record = Cluster({});
    record.ListScatterer.electrons[0].SetPlaneWave(Vector3(1.0, 2.0, 2.0), 1.0);
    record.Ratio = ratio;
    return record;
}

struct Nano : ZfDocPatternNano {
    Nano(std::vector<ZfScatteringRecord> records, const PhaseShiftRecord& phaseShift) {
        data.ListScatteringData = std::move(records);
        data.EPS = 1e-5;
        phaseShifts.records = {phaseShift};
        pDocScatteringPaseShift_ = &phaseShifts;
        ActivateAll(data.ListScatteringData.size());
    }
    Nano(const Nano&) = delete;
    Nano& operator=(const Nano&) = delete;

    void Window(double firstMiddle, double secondMiddle, double half, double step) {
        firstMin = firstMiddle - half;
        firstMax = firstMiddle + half + step / 2;
        secondMin = secondMiddle - half;
        secondMax = secondMiddle + half + step / 2;
        gridStep = step;
    }
    const ZfLDoubleMatrix& Run(ZfNotifyTerminate&& notifier = NeverStop()) {
        Calculate(notifier, data, {}, {});
        return mapping.planes[0];
    }

    ZfScatteringData data;
    ZfPhaseShiftDocument phaseShifts;
};

/// The exact wave around a well of constant potential under h1_0 Y_00 from a source at `source`: every l of
/// the addition theorem, h1_0(k|r - s|) = sum (2l+1) j_l(kr) h1_l(ks) P_l (DLMF 10.60.2), meets an inner
/// solution j_l(qr) of the same value and slope at the radius.
class Well {
public:
    Well(double inner, double radius) : k_(WaveNumber()), q_(inner), radius_(radius) {}

    std::complex<double> Inner(std::int32_t l) const {
        const double x = k_ * radius_;
        const double y = q_ * radius_;
        const std::complex<double> i(0.0, 1.0);
        return i / (x * x) / (J(l, y) * DH(l, x) - q_ / k_ * DJ(l, y) * H(l, x));
    }
    double PhaseShift_deg(std::int32_t l) const {
        const double x = k_ * radius_;
        const std::complex<double> t = 2.0 * (Inner(l) * J(l, q_ * radius_) - J(l, x)) / H(l, x);
        return std::arg(1.0 + t) / 2 / kDegree;
    }
    std::complex<double> Wave(double r, double sourceDistance, double cosine) const {
        std::complex<double> sum = 0.0;
        for (std::int32_t l = 0; l < kDegrees; ++l)
            sum += (2.0 * l + 1.0) * H(l, k_ * sourceDistance) * Inner(l) * J(l, q_ * r) *
                   std::legendre(static_cast<unsigned>(l), cosine);
        return sum / std::sqrt(4 * kPi);
    }

private:
    double k_, q_, radius_;
};

// Phase shifts, outgoing wave and radial solutions of one potential: the wave inside is that of the exact
// solution of the scattering problem, node of a component at the radius or not; the scale of the radial
// tables does not count.
TEST(ZfDocPatternNano, WaveInsideASquareWell) {
    const double nodeOfJ1 = 4.493409457909064;  // its first zero
    for (const auto& [q, mode] : {std::pair{1.4 * WaveNumber(), 0}, {nodeOfJ1 / kRadius_m, 1}}) {
        const Well well(q, kRadius_m);
        PhaseShiftRecord phaseShift = Solutions(q, mode == 0 ? 1.0 : -250.0);
        for (std::int32_t l = 0; l < kDegrees; ++l)
            phaseShift.PhaseShiftValue.VectorAt(l) = well.PhaseShift_deg(l);
        phaseShift.CalculateScatteringFactors();
        const std::array<double, 3> position = {4e-10, 1e-10, -4e-10};
        Nano nano({Cluster({position})}, phaseShift);
        nano.outputMode = mode;
        nano.sliceAxis = 1;  // y, z, x
        nano.planeHeight = position[0] - 0.1e-10;
        nano.Window(position[1], position[2], 0.5e-10, 0.1e-10);

        std::vector<ZfFreeElectron>& list = nano.data.ListScatteringData[0].ListScatterer.electrons;
        list[0].A.SetSize(1);
        list[0].A.At(0, 0) = 1.0;
        ZfVectorFreeElectron seen;
        nano.data.ListScatteringData[0].ListScatterer.ShiftOrigin(seen, 1);
        nano.data.ScatterAtAtom(list[1], seen, phaseShift);

        const ZfLDoubleMatrix& plane = nano.Run();
        const double distance = std::sqrt(NormSquared(list[1].position));
        for (std::int32_t i = 0; i < plane.ColSize; ++i) {
            for (std::int32_t j = 0; j < plane.RowSize; ++j) {
                const std::array<double, 3> d = {-0.1e-10, -0.5e-10 + 0.1e-10 * i, -0.5e-10 + 0.1e-10 * j};
                const double r = std::hypot(d[0], d[1], d[2]);
                const double dot = d[0] * position[0] + d[1] * position[1] + d[2] * position[2];
                const std::complex<double> exact = well.Wave(r, distance, -dot / r / distance);
                EXPECT_NEAR(plane.ValueAt(i, j), mode == 0 ? exact.real() : exact.imag(),
                            1e-5 * std::abs(well.Wave(r, distance, 1.0)))
                    << i << ' ' << j;
            }
        }
    }
}

// Entries that the limits take out take their phase-shift index with them; atoms off the plane need no
// tables.
TEST(ZfDocPatternNano, TablesAreThoseOfTheEntriesInThePlane) {
    PhaseShiftRecord bare = Solutions(WaveNumber());
    bare.radial.P.clear();
    Nano nano({Cluster({{0.0, 3e-10, 0.0}, {7e-10, 0.0, 0.0}})}, bare);
    nano.phaseShifts.records.push_back(Solutions(WaveNumber()));
    ZfScatteringRecord& record = nano.data.ListScatteringData[0];
    record.phaseShiftIndex.SetVectorSize(3);
    for (std::int32_t i = 0; i < 3; ++i) record.phaseShiftIndex.VectorAt(i) = i == 2 ? 1 : 0;
    nano.Window(7e-10, 0.0, 0.3e-10, 0.1e-10);
    EXPECT_EQ(ErrorText([&] { nano.Run(); }), "Please calculate phase shift.");
    nano.clusterLowerLimit = 4e-10;
    const double through = nano.Run().ValueAt(1, 2);
    nano.clusterLowerLimit = 0.0;
    nano.clusterLimit = 3e-10;
    EXPECT_NEAR(nano.Run().ValueAt(1, 2), through, 1e-6 * std::abs(through));
    nano.clusterLimit = 0.0;
    nano.planeHeight = 0.69 * kRadius_m;
    EXPECT_EQ(ErrorText([&] { nano.Run(); }), "no failure");
}

TEST(ZfDocPatternNano, MapAndAxes) {
    ZfDocPatternNano plain;
    plain.BuildMapping();
    EXPECT_EQ(plain.mapping.planes.size(), 3U);
    EXPECT_EQ(plain.mapping.planes[2].ColSize, 201);
    EXPECT_EQ(plain.mapping.pixelWeight.RowSize, 201);
    plain.gridStep = 0.0;
    EXPECT_NE(ErrorText([&] { plain.BuildMapping(); }), "no failure");

    Nano nano({PlaneWave()}, Solutions(WaveNumber()));
    nano.firstMin = -2e-10;
    nano.firstMax = 3.05e-10;
    nano.secondMin = 0.5e-10;
    nano.secondMax = 2.55e-10;
    nano.gridStep = 1e-10;
    nano.planeHeight = 4e-10;
    const double third = WaveNumber() / 3;
    const std::array<std::array<double, 3>, 3> components = {{{1, 2, 2}, {2, 2, 1}, {2, 1, 2}}};
    for (const std::int32_t slice : {0, 1, 2, 3, -1}) {
        nano.sliceAxis = slice;
        const ZfLDoubleMatrix& plane = nano.Run();
        ASSERT_EQ(plane.ColSize, 6);
        ASSERT_EQ(plane.RowSize, 3);
        const auto& q = components[slice == 1 || slice == 2 ? static_cast<std::size_t>(slice) : 0];
        for (std::int32_t i = 0; i < 6; ++i)
            for (std::int32_t j = 0; j < 3; ++j)
                EXPECT_NEAR(plane.ValueAt(i, j),
                            std::cos(third * (q[0] * (-2 + i) + q[1] * (0.5 + j) + q[2] * 4) * 1e-10),
                            kRounding)
                    << slice << ' ' << i << ' ' << j;
    }
}

TEST(ZfDocPatternNano, Output) {
    Nano nano({PlaneWave(0.5), PlaneWave(2.0)}, Solutions(WaveNumber()));
    nano.Window(0.0, 0.0, 0.0, 1e-10);
    nano.planeHeight = 3e-10;
    const double w = WaveNumber() * 2 / 3 * 3e-10;
    EXPECT_NEAR(nano.Run().ValueAt(0, 0), 2.5 * std::cos(w), kRounding);
    nano.phaseAngle = 0.3;
    EXPECT_NEAR(nano.Run().ValueAt(0, 0), 2.5 * std::cos(w - 0.3), kRounding);
    nano.outputMode = 1;
    EXPECT_NEAR(nano.Run().ValueAt(0, 0), 2.5 * std::sin(w - 0.3), kRounding);
    nano.scaleByDistance = true;
    EXPECT_NEAR(nano.Run().ValueAt(0, 0), 2.5 * 30 * std::sin(w - 0.3), 100 * kRounding);
    nano.outputMode = 2;
    EXPECT_NEAR(nano.Run().ValueAt(0, 0), 2.5 * 900, 1000 * kRounding);
    nano.activeRecords = {2U};  // the second alone
    nano.planeHeight = 4e-10;
    EXPECT_EQ(nano.Run().ValueAt(0, 0), 2000.0);  // 1600 cut before the factor
    EXPECT_EQ(nano.Run(StopAtOnce()).ValueAt(0, 0), 0.0);
}

TEST(ZfDocPatternNano, Failures) {
    Nano nano({Cluster({{0.0, 0.0, 0.0}})}, Solutions(WaveNumber()));
    nano.phaseShifts.records[0].radial.LnX.clear();
    EXPECT_EQ(ErrorText([&] { nano.Run(); }), "Please calculate phase shift.");
    nano.phaseShifts.records[0].AtomName = "Y";
    EXPECT_EQ(ErrorText([&] { nano.Run(); }), "Error: There is no phase shift data");
    nano.pDocScatteringPaseShift_ = nullptr;
    EXPECT_EQ(ErrorText([&] { nano.Run(); }),
              "ZfDocPatternNano::Calculate() ERROR: pDocScatteringPaseShift_==NULL");

    const PhaseShiftRecord good = Solutions(WaveNumber());
    ZfFreeElectron field;
    field.SetEnergy_eV(kEnergy_eV);
    field.A.SetSize(kDegrees);
    field.B.SetSize(kDegrees);
    field.B.At(1, 0) = 1.0;
    const RadialWave wave = JoinRadialWave(good.radial, field);
    EXPECT_EQ(RadialWaveAtPoint(wave, 0.0, 0.0, 0.0), 0.0);
    EXPECT_NE(RadialWaveAtPoint(wave, 1e-20, 0.0, 0.0), 0.0);  // below the first grid point
    EXPECT_EQ(ErrorText([&] { RadialWaveAtPoint(wave, 1.001 * kRadius_m, 0.0, 0.0); }),
              "Radius is not found");

    const std::function<void(RadialTables&)> faults[] = {
        [](RadialTables& t) { t.L.pop_back(); }, [](RadialTables& t) { t.P[3].pop_back(); },
        [](RadialTables& t) { t.LnX[7] = t.LnX[6]; },
        [](RadialTables& t) { t.P[2].back() = t.L[2].back() = 0.0; }, [](RadialTables& t) { t.LnX.clear(); }};
    for (const auto& fault : faults) {
        RadialTables bad = good.radial;
        fault(bad);
        EXPECT_EQ(ErrorText([&] { JoinRadialWave(bad, field); }), "Please calculate phase shift.")
            << &fault - faults;
    }
}

}  // namespace
