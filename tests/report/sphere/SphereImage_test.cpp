#include "report/sphere/SphereImage.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ErrorText.h"
#include "TempFolder.h"
#include "foundation/Constants.h"
#include "report/SphereFunctions.h"

namespace {

/// 1 + beta P2 and a real harmonic of degree 3 with m = 2, which changes sign at the centre and the seam.
double LowHarmonics(double x, double y, double z) {
    return 1.0 + 1.386 * (1.5 * z * z - 0.5) + 2.0 * x * y * z;
}

double Constant(double /*x*/, double /*y*/, double /*z*/) {
    return 3.0;
}

TEST(SphereImage, InterpolatesAHarmonicEverywhereOnBothMaps) {
    for (const SphereMap map : kMaps) {
        for (const double resolution : {1.0, 2.0, 1.6, 0.7}) {  // odd and even sides, steps that do not fit
            const SphereImage image = Sampled(map, resolution, LowHarmonics);
            const double h = resolution * kDegree;
            double worst = 0.0;
            for (double theta = 0.0; theta <= image.MaxTheta(); theta += 0.217 * kDegree) {
                for (double phi = -7.0; phi < 7.0; phi += 0.0931)
                    worst = std::max(worst, std::abs(image.Value(theta, phi) - At(LowHarmonics, theta, phi)));
            }
            const double thirdOrder = 0.02 * std::pow(3 * h, 3);  // (l h)^3 of cubic convolution, l = 3
            EXPECT_LT(worst, 2 * thirdOrder) << resolution << ", worst " << worst;
        }
    }
}

TEST(SphereImage, RimPolesAndSeam) {
    for (const SphereMap map : kMaps) {
        const SphereImage image = Sampled(map, 2.0, Constant);
        for (int i = 0; i < 1000; ++i)
            EXPECT_NEAR(image.Value(image.MaxTheta() - i % 7 * 1e-3, i * 0.0367), 3.0, 1e-12) << i;
    }
    const SphereImage upper = Sampled(SphereMap::kAzimuthalEquidistant, 2.0, Constant);
    EXPECT_TRUE(std::isnan(upper.Value(90.1 * kDegree, 0.0)));
    const SphereImage image = Sampled(SphereMap::kEquidistantCylindrical, 2.0, LowHarmonics);
    EXPECT_DOUBLE_EQ(image.Value(1.0, -1e-17), image.Value(1.0, 0.0));
    EXPECT_NEAR(image.Value(1.0, -0.01), image.Value(1.0, kTwoPi - 0.01), 1e-13);
}

TEST(SphereImage, PixelsTellDirectionAndValue) {
    for (const SphereMap map : kMaps) {
        const SphereImage image = Sampled(map, 3.0, LowHarmonics);
        double weights = 0.0;
        double sum = 0.0;
        for (const SpherePixel& p : image.Pixels()) {
            EXPECT_NEAR(p.value, At(LowHarmonics, p.theta, p.phi), 1e-12);
            EXPECT_NEAR(p.value, image.Value(p.theta, p.phi), 1e-12);
            weights += p.weight;
            sum += p.weight * p.value;
        }
        EXPECT_NEAR(sum / weights, 1.0, 0.01);  // both harmonics average to 0 over a half or the whole sphere
    }
}

TEST(SphereImageFile, MapByNameOrShape) {
    const TempFolder folder;
    for (const SphereMap map : kMaps) {
        const SphereImage image = Sampled(map, 3.0, LowHarmonics);
        const char* const name =
            map == SphereMap::kAzimuthalEquidistant ? "AzimuthalEquidistant" : "EquidistantCylindrical";
        for (const char* const written : {name, ""}) {
            const LoadedImage loaded =
                LoadSphereImage(WriteImageFile(folder.Path("cu 560.xml_img"), image, written));
            EXPECT_EQ(loaded.image.Map(), map);
            EXPECT_EQ(loaded.title, "cu 560");
            EXPECT_NEAR(loaded.image.Value(0.5, 2.5), image.Value(0.5, 2.5), 1e-6);
        }
        EXPECT_EQ(LoadSphereImage(WriteImageFile(folder.Path("a.xml_img"), image, name, "Cu(001)")).title,
                  "Cu(001)");
    }
}

TEST(SphereImageFile, RefusesWhatIsNoMap) {
    const TempFolder folder;
    const SphereImage image = Sampled(SphereMap::kEquidistantCylindrical, 3.0, Constant);
    const auto failure = [](const std::string& path) { return ErrorText([&] { LoadSphereImage(path); }); };
    const std::string path = folder.Path("a.xml_img");
    EXPECT_EQ(failure(folder.Write("a.xml_img", "<DataOfProcessImage><version>1</version>")),
              path + ": its version cannot be read");
    EXPECT_NE(failure(WriteImageFile(path, image, "Gnomonic")).find("\"Gnomonic\" is not known"),
              std::string::npos);
    EXPECT_NE(failure(WriteImageFile(path, image, "AzimuthalEquidistant")).find("not square"),
              std::string::npos);
    const std::string whole = folder.Read("a.xml_img");
    for (std::size_t length = 0; length < whole.size(); length += 997)
        EXPECT_NE(failure(folder.Write("a.xml_img", whole.substr(0, length))), "no failure") << length;
    ZfFloatMatrix pixels = StoredPixels(image);
    pixels.At(3, 4) = NAN;
    EXPECT_NE(ErrorText([&] {
                  SphereImage(SphereMap::kEquidistantCylindrical, pixels.ColSize, pixels.RowSize,
                              {pixels.Data(), pixels.Data() + pixels.Count()});
              }).find("column 3, row 4"),
              std::string::npos);
}

}  // namespace
