#include "pattern/ZfDocPattern.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <functional>

#include "foundation/Constants.h"
#include "scattering/Sources.h"

namespace {

using Plane = std::vector<double>;

/// An emitter and atoms at 2, 3 and 4 angstrom, with coefficients of no symmetry.
ZfScatteringData SomeWaves() {
    ZfScatteringData data;
    data.Version = kMulti;
    data.ListScatteringData.resize(1);
    ZfVectorFreeElectron& list = data.ListScatteringData[0].ListScatterer;
    list = ListOf({FullSource(3, 0, 0, 0), FullSource(4, 2e-10, 0, 0), FullSource(2, 0, -3e-10, 0),
                   FullSource(5, 0, 2.4e-10, 3.2e-10)});
    for (ZfFreeElectron& source : list.electrons) source.Uiso = 3e-23;
    data.ListScatteringData[0].NextListScatterer = list;
    return data;
}

/// The planes of a pattern that `change` sets up; by itself 36 by 19 pixels over the whole sphere.
template <class Pattern = ZfDocPattern_EquidistantCylindrical>
std::vector<Plane> PlanesWith(const std::function<void(ZfDocPattern&, ZfScatteringData&)>& change) {
    ZfScatteringData data = SomeWaves();
    Pattern pattern;
    pattern.resolution = 10.0;
    pattern.ActivateAll(1);
    change(pattern, data);
    ZfNotifyTerminateThreadCalculation notifier;
    pattern.Calculate(notifier, data, Fluctuation(), ZfDebye());
    std::vector<Plane> planes;
    for (const ZfLDoubleMatrix& m : pattern.mapping.planes)
        planes.emplace_back(m.Data(), m.Data() + m.Count());
    return planes;
}

void ExpectSame(const Plane& plane, const Plane& truth) {
    ASSERT_EQ(plane.size(), truth.size());
    for (std::size_t i = 0; i < plane.size(); ++i)
        EXPECT_NEAR(plane[i], truth[i], 1e-11 * (1 + truth[i])) << i;
}

Plane Limited(double upper, double lower, double depth) {
    return PlanesWith([=](ZfDocPattern& pattern, ZfScatteringData&) {
        pattern.clusterLimit = upper;
        pattern.clusterLowerLimit = lower;
        pattern.clusterDepthLimit = depth;
    })[0];
}

Plane Damped(bool byDistance, bool byDepth, double length) {
    return PlanesWith([=](ZfDocPattern& pattern, ZfScatteringData&) {
        pattern.mfpByEmitterDistance = byDistance;
        pattern.mfpByDepth = byDepth;
        pattern.meanFreePath = length;
    })[0];
}

Plane Turned(std::array<double, 3> angles) {
    return PlanesWith(
        [=](ZfDocPattern& pattern, ZfScatteringData&) { pattern.orientationAngles = angles; })[0];
}

/// Of `count` active records, those in `mask`, out of two.
Plane OfRecords(std::size_t count, std::uint32_t mask, std::int32_t type = 0) {
    return PlanesWith([&](ZfDocPattern& pattern, ZfScatteringData& data) {
        data.ListScatteringData.push_back(data.ListScatteringData[0]);
        data.ListScatteringData[1].ListScatterer.electrons[1].A.At(0, 0) = 9.0;
        data.ListScatteringData[1].Ratio = 0.25;
        pattern.ActivateAll(count);
        if (count == 2) pattern.activeRecords = {mask};
        pattern.patternType = type;
    })[0];
}

}  // namespace

TEST(ZfDocPattern, PlanesAreTheInterferenceOfTheAmplitudes) {
    const std::vector<Plane> planes = PlanesWith([](ZfDocPattern& pattern, ZfScatteringData&) {
        pattern.mfpByEmitterDistance = true;
        pattern.meanFreePath = 8e-10;
    });
    ZfVectorFreeElectron list = SomeWaves().ListScatteringData[0].ListScatterer;
    list.SetMeanFreePath_m(8e-10);
    std::vector<Plane> truth(6, Plane(36 * 19, 0.0));
    for (std::size_t i = 0; i < 36 * 19; ++i) {
        const double theta = static_cast<double>(i / 36) * 10 * kDegree;
        const double phi = static_cast<double>(i % 36) * 10 * kDegree;
        const std::complex<double> a0 = list.DirectAmplitude(theta, phi);
        const std::complex<double> as = list.ScatteredAmplitude(theta, phi, 0);
        truth[0][i] = std::norm(a0 + as);
        truth[1][i] = std::norm(a0);
        truth[2][i] = std::norm(as);
        truth[3][i] = std::norm(std::complex<double>(0, 1) * a0 + as);
    }
    for (std::size_t plane = 0; plane < 6; ++plane) ExpectSame(planes.at(plane), truth[plane]);
}

TEST(ZfDocPattern, EveryMapIsNew) {
    ZfDocPattern_AzimuthalEquidistant pattern;
    pattern.resolution = 30.0;
    pattern.BuildMapping();
    const double weight = pattern.mapping.pixelWeight.At(3, 3);
    pattern.mapping.planes[1].At(2, 1) = 5.0;
    pattern.mapping.pixelWeight.At(3, 3) = 0.0;
    pattern.BuildMapping();
    EXPECT_EQ(pattern.mapping.planes[1].At(2, 1), 0.0);
    EXPECT_EQ(pattern.mapping.pixelWeight.At(3, 3), weight);
    pattern.resolution = 45.0;
    pattern.BuildMapping();
    EXPECT_EQ(pattern.mapping.pixelWeight.ColSize, 5);
}

TEST(ZfDocPattern, LimitsLeaveOutWhatStandsOnThem) {
    const Plane whole = Limited(0, 0, 0);
    EXPECT_EQ(Limited(9e-10, 1e-10, 9e-10), whole);
    EXPECT_NE(Limited(3.5e-10, 0, 0), whole);
    EXPECT_EQ(Limited(0, 0, 3e-10), Limited(3.5e-10, 0, 0));  // the atom at 4 angstrom is above z = 3
    EXPECT_EQ(Limited(3e-10, 0, 0), Limited(2.5e-10, 0, 0));
    EXPECT_EQ(Limited(0, 2e-10, 0), Limited(0, 2.5e-10, 0));
    EXPECT_EQ(Limited(0, 9e-10, 0), Limited(1e-10, 0, 0));  // the emitter survives both

    EXPECT_EQ(Damped(false, true, -3e-10), whole);  // by depth does nothing
    EXPECT_EQ(Damped(true, true, 3e-10), Damped(true, false, 3e-10));
    EXPECT_EQ(ErrorText([&] { Damped(true, false, -3e-10); }),
              "ZfVectorFreeElectron::SetMeanFreePath_m():ERROR length_meter <0");
}

TEST(ZfDocPattern, RecordsAddUpAsIntensities) {
    Plane sum = OfRecords(2, 1);
    const Plane second = OfRecords(2, 2);
    for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += second[i];
    ExpectSame(OfRecords(2, 3), sum);
    EXPECT_EQ(OfRecords(0, 0), Plane(36 * 19, 0.0));
    EXPECT_EQ(ErrorText([] { OfRecords(3, 0); }), "ERROR INDEX");
    EXPECT_EQ(ErrorText([] { OfRecords(2, 1, 1); }), "The conbination of Version and Type is not permitted");
}

// Turned by Rz(-90), a pixel shows what the pixel 90 degrees before it showed; turned by Ry(180), the poles
// change places and the azimuth is mirrored.
TEST(ZfDocPattern, OrientationTurnsThePattern) {
    const Plane plain = Turned({0, 0, 0});
    Plane aboutZ(plain.size());
    Plane aboutY(plain.size());
    for (std::size_t i = 0; i < plain.size(); ++i) {
        aboutZ[i] = plain[i / 36 * 36 + (i + 27) % 36];
        aboutY[i] = plain[(18 - i / 36) * 36 + (54 - i % 36) % 36];
    }
    ExpectSame(Turned({60, 0, 30}), aboutZ);
    ExpectSame(Turned({0, 180, 0}), aboutY);
}

// Waves of one structure share the far field of its atoms; another structure, a record left out and more
// waves than fit side by side break the row.
TEST(ZfDocPattern, WavesOfAStructureAddUpAsEachAlone) {
    ZfScatteringData all = SomeWaves();
    const ZfScatteringRecord first = all.ListScatteringData[0];
    for (int r = 1; r < 12; ++r) {
        ZfScatteringRecord& record = all.ListScatteringData.emplace_back(first);
        for (ZfFreeElectron& source : record.ListScatterer.electrons)
            for (std::complex<double>& a : source.A.block) a *= std::polar(1.0 + 0.1 * r, 0.3 * r);
        if (r == 10) record.ListScatterer.electrons[2].position.VectorAt(1) = -3.1e-10;
        if (r == 11) record.ListScatterer.electrons[2].Uiso = 1e-23;
    }
    constexpr std::uint32_t kWithoutTheSecond = 0xFFDU;
    const auto planeOf = [&](std::size_t firstWave, std::size_t end, std::uint32_t active) {
        return PlanesWith([&](ZfDocPattern& pattern, ZfScatteringData& data) {
            const auto begin = all.ListScatteringData.begin();
            data.ListScatteringData.assign(begin + static_cast<std::ptrdiff_t>(firstWave),
                                           begin + static_cast<std::ptrdiff_t>(end));
            pattern.ActivateAll(end - firstWave);
            pattern.activeRecords = {active};
        })[3];
    };
    Plane sum(36 * 19, 0.0);
    for (std::size_t r = 0; r < 12; ++r) {
        if (r == 1) continue;
        const Plane one = planeOf(r, r + 1, 1U);
        for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += one[i];
    }
    EXPECT_EQ(planeOf(0, 12, kWithoutTheSecond), sum);
}

TEST(ZfDocPattern, IsZeroOffTheMapAndTheSameForAnyNumberOfThreads) {
    const int before = omp_get_max_threads();
    std::vector<Plane> planes;
    for (const int threads : {1, 2, 3}) {
        omp_set_num_threads(threads);
        planes.push_back(PlanesWith<ZfDocPattern_AzimuthalEquidistant>([](auto& pattern, auto& data) {
            // Many enough for threads to be started.
            dynamic_cast<ZfDocPattern_AzimuthalEquidistant&>(pattern).resolution = 0.5;
            auto& sources = data.ListScatteringData[0].ListScatterer.electrons;
            for (int i = 0; i < 100; ++i) sources.push_back(FullSource(2, 3e-10, 1e-11 * i, -2e-10));
        })[0]);
    }
    omp_set_num_threads(before);
    EXPECT_EQ(planes[1], planes[0]);
    EXPECT_EQ(planes[2], planes[0]);
    for (int i = 0; i < 361 * 361; ++i)
        ASSERT_EQ(planes[0].at(static_cast<std::size_t>(i)) != 0.0,
                  std::hypot(i % 361 - 180, i / 361 - 180) <= 180.0);
}
