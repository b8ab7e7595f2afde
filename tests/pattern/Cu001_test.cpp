#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "foundation/Constants.h"
#include "pattern/ZfDocPattern.h"

using namespace qvre;

// The pattern at 560 eV on a cylindrical map of 5 degrees, which has every four-fold image of a pixel.
TEST(Cu001, HasTheSymmetryOfTheCrystal) {
    const std::string folder = QVRE_EXAMPLES "/cu001_small/";
    Cluster cluster;
    std::vector<EmittedWave> waves;
    ZfPhaseShiftDocument phaseShifts;
    ZfLoadCluster(cluster, folder + "cluster_uiso.xml_cl");
    ZfLoadEmittedWave(waves, folder + "emitter.xml_emt");
    ZfLoadPhaseShift(phaseShifts, folder + "phaseshift.xml_ph");
    ZfScatteringData data;
    data.Version = kMulti;
    data.MultiScattering = 1;
    ZfNotifyTerminateThreadCalculation notifier;
    data.Calculate(notifier, cluster, waves, phaseShifts);
    ZfDocPattern_EquidistantCylindrical pattern;
    pattern.resolution = 5.0;
    pattern.ActivateAll(3);
    pattern.Calculate(notifier, data, Fluctuation(), ZfDebye());
    const auto at = [&](std::size_t plane, int theta, int phi) {
        return pattern.mapping.planes[plane].ValueAt((phi + 360) % 360 / 5, theta / 5);
    };
    for (int theta = 0; theta <= 180; theta += 5) {
        // 1 + beta P2(cos theta): the direct wave of Cu 2p in light along z, whatever the azimuth.
        const double c = std::cos(Radians(theta));
        for (int phi = 0; phi < 90; phi += 5) {
            EXPECT_NEAR(at(1, theta, phi), 1.0 + 1.386 * (1.5 * c * c - 0.5), 1e-3);
            const double value = at(0, theta, phi);
            for (const int turned : {phi + 90, phi + 180, phi + 270, -phi, 90 - phi})
                EXPECT_NEAR(at(0, theta, turned) / value, 1.0, 1e-9) << theta << " " << phi << " " << turned;
        }
    }
}
