#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>

#include "foundation/Constants.h"
#include "pattern/ZfDocPattern.h"

using namespace qvre;

namespace {

const std::string kFolder = std::string(QVRE_EXAMPLES) + "/cu001_small/";

/// The pattern of Cu(001) at 560 eV on a cylindrical map of 5 degrees, which has every four-fold image of a
/// pixel.
struct Cu001 {
    Cu001() {
        ZfLoadCluster(cluster, kFolder + "cluster_uiso.xml_cl");
        ZfLoadEmittedWave(waves, kFolder + "emitter.xml_emt");
        ZfLoadPhaseShift(phaseShifts, kFolder + "phaseshift.xml_ph");
        data.Version = kMulti;
        data.MultiScattering = 1;
        ZfNotifyTerminateThreadCalculation notifier;
        data.Calculate(notifier, cluster, waves, phaseShifts);
        pattern.resolution = 5.0;
        pattern.ActivateAll(data.ListScatteringData.size());
        pattern.Calculate(notifier, data, Fluctuation(), ZfDebye());
    }
    double At(int plane, int theta, int phi) const {
        return pattern.mapping.planes.at(static_cast<std::size_t>(plane))
            .ValueAt(((phi % 360 + 360) % 360) / 5, theta / 5);
    }

    Cluster cluster;
    std::vector<EmittedWave> waves;
    ZfPhaseShiftDocument phaseShifts;
    ZfScatteringData data;
    ZfDocPattern_EquidistantCylindrical pattern;
};

}  // namespace

TEST(Cu001, HasTheSymmetryOfTheCrystal) {
    const Cu001 cu;
    ASSERT_EQ(cu.data.ListScatteringData.size(), 3U);
    for (int theta = 0; theta <= 180; theta += 5) {
        // 1 + beta P2(cos theta): the direct wave of Cu 2p in light along z, whatever the azimuth.
        const double c = std::cos(Radians(theta));
        for (int phi = 0; phi < 90; phi += 5) {
            EXPECT_NEAR(cu.At(1, theta, phi), 1.0 + 1.386 * (1.5 * c * c - 0.5), 1e-3);
            const double value = cu.At(0, theta, phi);
            for (const int turned : {phi + 90, phi + 180, phi + 270, -phi, 90 - phi})
                EXPECT_NEAR(cu.At(0, theta, turned) / value, 1.0, 1e-9)
                    << theta << " " << phi << " " << turned;
        }
    }
}
