#include "experiment/CountedIntensity.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ErrorText.h"
#include "foundation/Constants.h"
#include "multiple/FullRecords.h"
#include "pattern/ZfDocPattern.h"
#include "scattering/FarField.h"
#include "scattering/Sources.h"

namespace {

constexpr double kAngstrom = 1e-10;

const DipoleSource kCopper2p = {{1, {0.0028, 0.0130}, {5.8, 2.45}}, 560.0, 1.0};

/// Exact single scattering of the copper example by some waves, with displacements.
ZfScatteringData Scattered(const std::vector<EmittedWave>& waves) {
    Cluster cluster;
    ZfLoadCluster(cluster, QVRE_EXAMPLES "/cu001_small/cluster.xml_cl");
    ZfPhaseShiftDocument phaseShifts;
    ZfLoadPhaseShift(phaseShifts, QVRE_EXAMPLES "/cu001_small/phaseshift.xml_ph");
    ZfScatteringData data;
    ScatterOnce(data, {cluster, waves, phaseShifts});
    for (ZfScatteringRecord& record : data.ListScatteringData)
        for (ZfFreeElectron& source : record.ListScatterer.electrons) source.Uiso = 7e-23;
    return data;
}

struct AngleList {
    std::vector<double> theta;  // degrees
    std::vector<double> phi;
};

const AngleList kSome = {{0.0, 13.0, 40.0, 62.0, 77.0, 85.0}, {0.0, 301.0, 24.0, 111.0, 200.0, 45.0}};

FarFieldDirections Directions(const AngleList& angles) {
    FarFieldDirections directions;
    for (std::size_t i = 0; i < angles.theta.size(); ++i) {
        const double theta = Radians(angles.theta[i]);
        const double phi = Radians(angles.phi[i]);
        directions.Add(i, std::sin(theta) * std::cos(phi), std::sin(theta) * std::sin(phi), std::cos(theta));
    }
    directions.Order();
    return directions;
}

CountingRequest Under(const Light& light) {
    CountingRequest request;
    request.source = kCopper2p;
    request.light = light;
    request.emitters.resize(1);
    return request;
}

CountedIntensity Count(const ZfScatteringData& data, const FarFieldDirections& directions,
                       const CountingRequest& request) {
    ZfNotifyTerminateThreadCalculation notifier;
    double progress = 0.0;
    return CountIntensity(data, directions, request, notifier, progress);
}

EmitterShare Share(double depth_angstrom, double weight) {
    EmitterShare share;
    share.depth_angstrom = depth_angstrom;
    share.weight = weight;
    return share;
}

/// An s wave and one atom 2.4 angstrom over it and 1.8 aside, which sends out a wave without symmetry.
ZfScatteringData EmitterAndAtom() {
    ZfScatteringData data;
    data.ListScatteringData.resize(1);
    data.ListScatteringData[0].ListScatterer =
        ListOf({FullSource(1, 0, 0, 0), FullSource(3, 1.8e-10, 0, 2.4e-10)});
    return data;
}

}  // namespace

// The pattern document adds up emitted waves as they stand, one for each sublevel and part of the light.
TEST(CountedIntensity, UnitWavesUnderFixedLightMakeThePatternOfItsEmittedWaves) {
    const ZfScatteringData units = Scattered(UnitWaves(kCopper2p));
    ASSERT_EQ(units.ListScatteringData.size(), 6U);
    for (const std::vector<LightVector>& parts :
         {LinearLight({1.0, -0.4, 0.7}), UnpolarisedLight({0.2, 0.1, -1.0}),
          CircularLight({1.0, 1.0, -1.0}, Handedness::kRight)}) {
        ZfScatteringData waves = Scattered(WavesUnder(kCopper2p, parts));
        ZfDocPattern_EquidistantCylindrical pattern;
        pattern.resolution = 15.0;
        pattern.ActivateAll(waves.ListScatteringData.size());
        pattern.clusterLimit = 5.0 * kAngstrom;
        pattern.meanFreePath = 20.0 * kAngstrom;
        pattern.mfpByEmitterDistance = true;
        ZfNotifyTerminateThreadCalculation notifier;
        pattern.Calculate(notifier, waves, Fluctuation(), ZfDebye());

        FarFieldDirections directions;
        const ZfSphericalMapping& map = pattern.mapping;
        for (std::int64_t i = 0; i < map.pixelWeight.Count(); ++i)
            directions.Add(static_cast<std::size_t>(i), map.directionX.Data()[i], map.directionY.Data()[i],
                           map.directionZ.Data()[i]);
        directions.Order();
        CountingRequest request = Under({parts, LightFrame::kSample});
        request.limits.largest = pattern.clusterLimit;
        request.meanFreePath = pattern.meanFreePath;
        const CountedIntensity counted = Count(units, directions, request);
        for (std::int64_t i = 0; i < map.pixelWeight.Count(); ++i) {
            const auto place = static_cast<std::size_t>(i);
            EXPECT_NEAR(counted.pattern[place], map.planes[0].Data()[i], 1e-12);
            EXPECT_NEAR(counted.direct[place], map.planes[1].Data()[i], 1e-12);
        }
    }
}

// While the sample turns, source and analyser keep their angle: the free atom sends out the same in all
// directions. One direction of such a pattern is that of a light that stands still in the turned axes.
TEST(CountedIntensity, LightOfTheAnalyserStaysWhileTheSampleTurns) {
    const ZfScatteringData units = Scattered(UnitWaves(kCopper2p));
    const double cosine = 0.6;  // of the angle between travel and analyser
    const Light light = {UnpolarisedLight({0.8, 0.0, -cosine}), LightFrame::kAnalyser};
    const CountedIntensity counted = Count(units, Directions(kSome), Under(light));
    const double beta = kCopper2p.channels.Beta();
    for (std::size_t i = 0; i < kSome.theta.size(); ++i) {
        EXPECT_NEAR(counted.direct[i], 1.0 - 0.25 * beta * (3.0 * cosine * cosine - 1.0), 1e-12);
        // The travel in the sample: the axes turned by theta about y, then by phi about z.
        const double theta = Radians(kSome.theta[i]);
        const double phi = Radians(kSome.phi[i]);
        const double x = 0.8 * std::cos(theta) - cosine * std::sin(theta);
        const double z = -0.8 * std::sin(theta) - cosine * std::cos(theta);
        const Light fixed = {UnpolarisedLight({x * std::cos(phi), x * std::sin(phi), z}),
                             LightFrame::kSample};
        EXPECT_NEAR(counted.pattern[i], Count(units, Directions(kSome), Under(fixed)).pattern[i], 1e-12);
    }
    // phi-hat lies in the surface, across the plane of emission.
    const Light across = {LinearLight({0.0, 1.0, 0.0}), LightFrame::kAnalyser};
    for (const double i0 : Count(units, Directions(kSome), Under(across)).direct)
        EXPECT_NEAR(i0, 1.0 - 0.5 * beta, 1e-12);
    const Light fixed = {LinearLight({-std::sin(Radians(24.0)), std::cos(Radians(24.0)), 0.0}),
                         LightFrame::kSample};
    EXPECT_NEAR(Count(units, Directions(kSome), Under(across)).pattern[2],
                Count(units, Directions(kSome), Under(fixed)).pattern[2], 1e-12);
}

// The way of the emitter's wave is d/cos(theta), that of an atom's its distance and (d - z)/cos(theta).
TEST(CountedIntensity, LossesFollowTheWaysToTheSurface) {
    const ZfScatteringData data = EmitterAndAtom();
    const ZfVectorFreeElectron& list = data.ListScatteringData[0].ListScatterer;
    CountingRequest request;
    request.emitters = {Share(5.0, 3.0)};
    request.inelasticMeanFreePath = 8.0 * kAngstrom;
    const FarFieldDirections directions = Directions(kSome);
    for (const bool arePathsDamped : {false, true}) {
        request.arePathsDamped = arePathsDamped;
        const CountedIntensity counted = Count(data, directions, request);
        for (std::size_t i = 0; i < kSome.theta.size(); ++i) {
            const double theta = Radians(kSome.theta[i]);
            const double phi = Radians(kSome.phi[i]);
            const double loss = std::exp(-5.0 / (16.0 * std::cos(theta)));
            const double way = (arePathsDamped ? 0.0 : 3.0) + 2.6 / std::cos(theta);
            const std::complex<double> direct = list.DirectAmplitude(theta, phi) * loss;
            const std::complex<double> scattered =
                list.ScatteredAmplitude(theta, phi, 0) * std::exp(-way / 16.0);
            EXPECT_NEAR(counted.direct[i], 3.0 * std::norm(direct), 1e-12);
            EXPECT_NEAR(counted.pattern[i], 3.0 * std::norm(direct + scattered), 1e-12);
        }
    }
    // Nothing leaves through the bulk, not from the surface itself either.
    request.emitters = {Share(0.0, 1.0)};
    EXPECT_EQ(Count(data, Directions({{120.0}, {10.0}}), request).direct[0], 0.0);
}

// A silent atom too far for the vector kernels changes the way of calculating alone.
TEST(CountedIntensity, PlainFormsServeWhatTheKernelsDoNot) {
    ZfScatteringData data = EmitterAndAtom();
    CountingRequest request;
    request.emitters = {Share(5.0, 1.0)};
    request.inelasticMeanFreePath = 8.0 * kAngstrom;
    const CountedIntensity near = Count(data, Directions(kSome), request);
    ZfVectorFreeElectron& list = data.ListScatteringData[0].ListScatterer;
    list.electrons.push_back(SWave(1.0, 0, 0, 0.0));
    ASSERT_FALSE(FarField::Serves(list));
    const CountedIntensity far = Count(data, Directions(kSome), request);
    for (std::size_t i = 0; i < near.pattern.size(); ++i)
        EXPECT_NEAR(far.pattern[i], near.pattern[i], 1e-11 * near.pattern[i]);
}

TEST(CountedIntensity, StructuresAddUpWithTheirWeights) {
    ZfScatteringData data = EmitterAndAtom();
    CountingRequest request;
    request.emitters = {Share(0.0, 1.0)};
    const double first = Count(data, Directions(kSome), request).pattern[2];
    data.ListScatteringData[0].ListScatterer.electrons[1].A.At(1, 1) = {2.0, -1.0};
    const double second = Count(data, Directions(kSome), request).pattern[2];
    data.ListScatteringData.insert(data.ListScatteringData.begin(), EmitterAndAtom().ListScatteringData[0]);
    data.ListScatteringData[1].StIndex = 1;
    request.emitters = {Share(0.0, 2.0), Share(0.0, 0.5)};
    EXPECT_NEAR(Count(data, Directions(kSome), request).pattern[2], 2.0 * first + 0.5 * second, 1e-12);

    request.emitters.pop_back();
    EXPECT_EQ(ErrorText([&] { Count(data, Directions(kSome), request); }),
              "There are 2 structures, but emitters of 1");
    request.source = kCopper2p;
    EXPECT_EQ(ErrorText([&] { Count(data, Directions(kSome), request); }),
              "The 2 scattered waves are not the 6 unit waves of each structure");
}
