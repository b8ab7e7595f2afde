#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numeric>

#include "ErrorText.h"
#include "foundation/Constants.h"
#include "pattern/ZfSphericalMapping.h"
#include "pattern/ZfSphericalMappingConvert.h"

namespace {

double Area(const ZfSphericalMapping& map) {
    return std::accumulate(map.pixelWeight.Data(), map.pixelWeight.Data() + map.pixelWeight.Count(), 0.0);
}

void ExpectSize(const ZfSphericalMapping& map, std::int32_t width, std::int32_t height) {
    ASSERT_EQ(map.planes.size(), 2U);
    for (const ZfLDoubleMatrix* m : {&map.planes[0], &map.planes[1], &map.directionX, &map.pixelWeight})
        EXPECT_EQ(std::pair(m->ColSize, m->RowSize), std::pair(width, height));
}

void ExpectDirection(const ZfSphericalMapping& map, std::int32_t px, std::int32_t py, double x, double y,
                     double z) {
    EXPECT_NEAR(map.directionX.ValueAt(px, py), x, 1e-15);
    EXPECT_NEAR(map.directionY.ValueAt(px, py), y, 1e-15);
    EXPECT_NEAR(map.directionZ.ValueAt(px, py), z, 1e-15);
}

}  // namespace

TEST(SphericalMapping, AzimuthalEquidistantIsTheUpperHemisphere) {
    const ZfSphericalMapping map = CreateAzimuthalEquidistantMapping(2, 1.0);
    EXPECT_EQ(map.name, "AzimuthalEquidistant");
    ExpectSize(map, 181, 181);
    ExpectDirection(map, 90, 90, 0, 0, 1);
    ExpectDirection(map, 180, 90, 1, 0, 0);  // exactly 90 degrees is inside
    ExpectDirection(map, 90, 135, 0, std::sqrt(0.5), std::sqrt(0.5));
    ExpectDirection(map, 180, 180, 0, 0, 0);
    EXPECT_EQ(map.pixelWeight.ValueAt(180, 180), 0.0);
    EXPECT_NEAR(map.pixelWeight.ValueAt(90, 90), kPi * kPi / 32400, 1e-15);
    EXPECT_NEAR(Area(map) / (2 * kPi), 1.0, 2e-3);
    // A resolution that does not divide 180 still spans 90 degrees.
    const ZfSphericalMapping odd = CreateAzimuthalEquidistantMapping(2, 0.7);
    ExpectSize(odd, 258, 258);
    EXPECT_NEAR(Area(odd) / (2 * kPi), 1.0, 2e-3);
    for (const double resolution : {0.0, -200.0, 1e-12})
        EXPECT_EQ(ErrorText([&] { CreateAzimuthalEquidistantMapping(2, resolution); }),
                  "matrix creation Parameter Error");
    EXPECT_EQ(ErrorText([] { CreateAzimuthalEquidistantMapping(2, 1e-4); }), "Cannot Get Memory");
}

TEST(SphericalMapping, EquidistantCylindricalIsTheWholeSphere) {
    const ZfSphericalMapping map = CreateEquidistantCylindricalMapping(2, 1.0);
    EXPECT_EQ(map.name, "EquidistantCylindrical");
    ExpectSize(map, 360, 181);
    ExpectDirection(map, 17, 0, 0, 0, 1);
    ExpectDirection(map, 90, 90, 0, 1, 0);
    ExpectDirection(map, 180, 45, -std::sqrt(0.5), 0, std::sqrt(0.5));
    // Half a row of pixels around a pole.
    EXPECT_NEAR(map.pixelWeight.ValueAt(5, 180), kPi * kPi * kPi / (4.0 * 180 * 180 * 360), 1e-18);
    EXPECT_NEAR(Area(map) / (4 * kPi), 1.0, 1e-4);
}

TEST(SphericalMapping, OtherMaps) {
    ExpectDirection(CreateOneDimensionalMapping(2, 0.5), 60, 0, 0.5, 0, std::sqrt(0.75));
    ExpectDirection(CreateOrthographicMapping(2, 101), 80, 50, 0.6, 0, 0.8);
    ExpectDirection(CreateGnomonicMapping(2, 60.0, 101), 100, 50, std::sqrt(0.75), 0, 0.5);
    ExpectDirection(CreateStereographicMapping(2, 90.0, 99), 50, 50, 0, 0, 1);  // its centre is (W + 1)/2
}

TEST(SphericalMappingConvert, PixelsComeBack) {
    const std::unique_ptr<ZfSphericalMappingConvert> converters[] = {
        std::make_unique<ZfConvertAzimuthalEquidistantMap>(),
        std::make_unique<ZfConvertEquidistantCylindricalMap>(), std::make_unique<ZfConvertGnomonicMap>(60.0),
        std::make_unique<ZfConvertStereographicMap>(75.0), std::make_unique<ZfConvertOrthographicMap>()};
    for (const auto& converter : converters) {
        // A drawing rectangle is an image with real corners; the centre of the stereographic map differs.
        const double edge = converter->Name() == "Stereographic" ? 42 : 40;
        for (int i = 0; i < 17 * 15; ++i) {  // the pole rows of the cylinder have no azimuth
            const double px = 2.5 * (i % 17);
            const double py = 2.5 * (i / 17) + 2.5;
            double x, y, z, weight, qx, qy;
            if (!converter->PixelToDirection(x, y, z, weight, px, py, 41, 41)) continue;
            EXPECT_NEAR(x * x + y * y + z * z, 1.0, 1e-14);
            converter->DirectionToPixel(qx, qy, 41, 41, x, y, z);
            EXPECT_NEAR(std::hypot(qx - px, qy - py), 0.0, 1e-10) << converter->Name();
            if (!converter->DirectionToPlane(qx, qy, 0, edge, 0, edge, x, y, z)) continue;
            EXPECT_NEAR(std::hypot(qx - px, qy - py), 0.0, 1e-10) << converter->Name();
        }
    }
}

TEST(SphericalMappingConvert, TellsWhatLiesOffTheMap) {
    double px = 0.0;
    double py = 0.0;
    const ZfConvertEquidistantCylindricalMap cylinder;
    // Azimuths within half a pixel below 0 stay negative; others wrap into the right half.
    EXPECT_TRUE(cylinder.DirectionToPixel(px, py, 360, 181, std::cos(0.005), -std::sin(0.005), 0));
    EXPECT_NEAR(px, -Degrees(0.005), 1e-12);
    EXPECT_TRUE(cylinder.DirectionToPixel(px, py, 360, 181, std::cos(0.01), -std::sin(0.01), 0));
    EXPECT_NEAR(px, 360 - Degrees(0.01), 1e-12);
    EXPECT_FALSE(ZfConvertAzimuthalEquidistantMap().DirectionToPixel(px, py, 101, 101, 0.6, 0, -0.8));
}
