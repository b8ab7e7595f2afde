#include "pattern/ZfDocPattern.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>

#include "scattering/Sources.h"

namespace {

/// An emitter and atoms at 2, 3 and 4 angstrom, with coefficients of no symmetry.
ZfScatteringData SomeWaves() {
    ZfScatteringRecord record;
    record.ListScatterer = ListOf({SourceOf(3, 0, 0, 0), SourceOf(4, 2e-10, 0, 0), SourceOf(2, 0, -3e-10, 0),
                                   SourceOf(5, 0, 2.4e-10, 3.2e-10)});
    double t = 0.0;
    for (ZfFreeElectron& source : record.ListScatterer.electrons) {
        source.atomicNumber = 29;
        source.Uiso = 3e-23;
        for (std::complex<double>& a : source.A.block) {
            a = {std::sin(t), std::cos(2.0 * t)};
            t += 0.7;
        }
    }
    record.NextListScatterer = record.ListScatterer;
    ZfScatteringData data;
    data.Version = kMulti;
    data.ListScatteringData = {record};
    return data;
}

/// A pattern of 36 by 19 pixels over the whole sphere.
ZfDocPattern_EquidistantCylindrical PatternOf(std::size_t records) {
    ZfDocPattern_EquidistantCylindrical pattern;
    pattern.resolution = 10.0;
    pattern.ActivateAll(records);
    return pattern;
}

void Calculate(ZfDocPattern& pattern, ZfScatteringData& data) {
    ZfNotifyTerminateThreadCalculation notifier;
    pattern.Calculate(notifier, data, ZfFluctuation(), ZfDebye());
}

std::vector<double> Plane(const ZfDocPattern& pattern, std::size_t plane) {
    const ZfLDoubleMatrix& m = pattern.mapping.planes.at(plane);
    return {m.Data(), m.Data() + m.Count()};
}

template <class Change>
std::vector<double> PatternWith(Change change) {
    ZfScatteringData data = SomeWaves();
    ZfDocPattern_EquidistantCylindrical pattern = PatternOf(1);
    change(pattern);
    Calculate(pattern, data);
    return Plane(pattern, 0);
}

void ExpectSame(const std::vector<double>& plane, const std::vector<double>& truth) {
    ASSERT_EQ(plane.size(), truth.size());
    for (std::size_t i = 0; i < plane.size(); ++i)
        EXPECT_NEAR(plane[i], truth[i], 1e-11 * (1 + truth[i])) << i;
}

}  // namespace

TEST(ZfDocPattern, PlanesAreTheInterferenceOfTheAmplitudes) {
    ZfScatteringData data = SomeWaves();
    ZfDocPattern_EquidistantCylindrical pattern = PatternOf(1);
    pattern.mfpByEmitterDistance = true;
    pattern.meanFreePath = 8e-10;
    Calculate(pattern, data);
    ZfVectorFreeElectron list = data.ListScatteringData[0].ListScatterer;
    list.SetMeanFreePath_m(8e-10);
    std::array<std::vector<double>, 6> truth;
    for (int y = 0; y < 19; ++y) {
        for (int x = 0; x < 36; ++x) {
            const double theta = y * std::acos(-1.0) / 18;
            const double phi = x * std::acos(-1.0) / 18;
            const std::complex<double> a0 = list.DirectAmplitude(theta, phi);
            const std::complex<double> as = list.ScatteredAmplitude(theta, phi, 0);
            truth[0].push_back(std::norm(a0 + as));
            truth[1].push_back(std::norm(a0));
            truth[2].push_back(std::norm(as));
            truth[3].push_back(std::norm(std::complex<double>(0, 1) * a0 + as));
            truth[4].push_back(0.0);
            truth[5].push_back(0.0);
        }
    }
    for (std::size_t plane = 0; plane < 6; ++plane) ExpectSame(Plane(pattern, plane), truth[plane]);
}

TEST(ZfDocPattern, LimitsLeaveOutWhatStandsOnThem) {
    const std::vector<double> whole = PatternWith([](ZfDocPattern&) {});
    const auto limited = [](double upper, double lower, double depth) {
        return PatternWith([=](ZfDocPattern& pattern) {
            pattern.clusterLimit = upper;
            pattern.clusterLowerLimit = lower;
            pattern.clusterDepthLimit = depth;
        });
    };
    EXPECT_EQ(limited(9e-10, 1e-10, 9e-10), whole);
    const std::vector<double> two = limited(3.5e-10, 0, 0);
    EXPECT_NE(two, whole);
    EXPECT_EQ(limited(0, 0, 3e-10), two);  // the atom at 4 angstrom is the one above z = 3
    EXPECT_EQ(limited(3e-10, 0, 0), limited(2.5e-10, 0, 0));
    EXPECT_EQ(limited(0, 2e-10, 0), limited(0, 2.5e-10, 0));
    EXPECT_NE(limited(0, 2e-10, 0), whole);
    EXPECT_EQ(limited(0, 9e-10, 0), limited(1e-10, 0, 0));  // the emitter survives both
    EXPECT_GT(limited(1e-10, 0, 0).at(0), 0.0);
}

TEST(ZfDocPattern, DampsByTheDistanceFromTheEmitterAlone) {
    const std::vector<double> undamped = PatternWith([](ZfDocPattern&) {});
    const auto damped = [](bool byDistance, bool byDepth, double length) {
        return PatternWith([=](ZfDocPattern& pattern) {
            pattern.mfpByEmitterDistance = byDistance;
            pattern.mfpByDepth = byDepth;
            pattern.meanFreePath = length;
        });
    };
    EXPECT_EQ(damped(false, true, -3e-10), undamped);
    EXPECT_NE(damped(true, false, 3e-10), undamped);
    EXPECT_EQ(damped(true, true, 3e-10), damped(true, false, 3e-10));
    EXPECT_EQ(ErrorText([&] { damped(true, false, -3e-10); }),
              "ZfVectorFreeElectron::SetMeanFreePath_m():ERROR length_meter <0");
}

TEST(ZfDocPattern, RecordsAddUpAsIntensities) {
    ZfScatteringData data = SomeWaves();
    data.ListScatteringData.push_back(data.ListScatteringData[0]);
    data.ListScatteringData[1].ListScatterer.electrons[1].A.At(0, 0) = 9.0;
    data.ListScatteringData[1].Ratio = 0.25;
    ZfDocPattern_EquidistantCylindrical pattern = PatternOf(2);
    Calculate(pattern, data);
    const std::vector<double> both = Plane(pattern, 0);
    std::vector<double> sum(both.size(), 0.0);
    for (const std::uint32_t bit : {1U, 2U}) {
        pattern.activeRecords = {bit};
        Calculate(pattern, data);
        for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += Plane(pattern, 0)[i];
    }
    ExpectSame(both, sum);
    pattern.ActivateAll(3);
    EXPECT_EQ(ErrorText([&] { Calculate(pattern, data); }), "ERROR INDEX");
    pattern.activeRecordCount = 33;  // with the bits of 32
    data.ListScatteringData.resize(33);
    EXPECT_THROW(Calculate(pattern, data), std::out_of_range);
    pattern.planeCount = 3;
    EXPECT_EQ(ErrorText([&] { Calculate(pattern, data); }), "Error: A pattern needs four planes");
    pattern.planeCount = 6;
    pattern.ActivateAll(0);
    Calculate(pattern, data);
    EXPECT_EQ(Plane(pattern, 0), std::vector<double>(36 * 19, 0.0));
    pattern.patternType = 1;
    EXPECT_EQ(ErrorText([&] { Calculate(pattern, data); }),
              "The conbination of Version and Type is not permitted");
    data.Version = kSingle;
    EXPECT_EQ(ErrorText([&] { Calculate(pattern, data); }), "no failure");
}

// Turned by Rz(-90), a pixel shows what the pixel 90 degrees before it showed; turned by Ry(180), the poles
// change places and the azimuth is mirrored.
TEST(ZfDocPattern, OrientationTurnsThePattern) {
    const std::vector<double> plain = PatternWith([](ZfDocPattern&) {});
    const std::vector<double> aboutZ = PatternWith([](ZfDocPattern& pattern) {
        pattern.orientationAngles = {60, 0, 30};
    });
    const std::vector<double> aboutY = PatternWith([](ZfDocPattern& pattern) {
        pattern.orientationAngles = {0, 180, 0};
    });
    for (std::size_t y = 0; y < 19; ++y) {
        for (std::size_t x = 0; x < 36; ++x) {
            EXPECT_NEAR(aboutZ[y * 36 + x], plain[y * 36 + (x + 27) % 36], 1e-11 * (1 + plain[y * 36 + x]));
            EXPECT_NEAR(aboutY[y * 36 + x], plain[(18 - y) * 36 + (54 - x) % 36],
                        1e-11 * (1 + aboutY[y * 36 + x]));
        }
    }
}

TEST(ZfDocPattern, IsZeroOffTheMapAndTheSameForAnyNumberOfThreads) {
    const int before = omp_get_max_threads();
    std::vector<std::vector<double>> planes;
    for (const int threads : {1, 2, 3}) {
        omp_set_num_threads(threads);
        ZfScatteringData data = SomeWaves();
        ZfDocPattern_AzimuthalEquidistant pattern;
        pattern.resolution = 5.0;
        pattern.ActivateAll(1);
        Calculate(pattern, data);
        planes.push_back(Plane(pattern, 0));
    }
    omp_set_num_threads(before);
    EXPECT_EQ(planes[1], planes[0]);
    EXPECT_EQ(planes[2], planes[0]);
    ASSERT_EQ(planes[0].size(), 37U * 37U);
    for (int y = 0; y < 37; ++y)
        for (int x = 0; x < 37; ++x)
            EXPECT_EQ(planes[0][static_cast<std::size_t>(y * 37 + x)] != 0.0,
                      std::hypot(x - 18, y - 18) <= 18.0);
}
