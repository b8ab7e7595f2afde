#include "report/sphere/ImageSum.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "ErrorText.h"
#include "TempFolder.h"
#include "image/ZfDocData.h"
#include "report/SphereFunctions.h"
#include "xml/ZfQBarnFile.h"

namespace {

constexpr double kFloat = 1e-6;  // files hold 32-bit numbers

double Even(double, double, double z) {
    return 2.0 + z;
}

double Odd(double x, double y, double) {
    return x * y;
}

class ImageFiles : public testing::Test {
protected:
    template <class Function>
    std::string Write(const std::string& name, SphereMap map, double resolution, Function f,
                      const std::string& layer = "1", const std::string& title = "") {
        ZfDocData document;
        document.OnlyImage() = StoredPixels(Sampled(map, resolution, f));
        ZfDocData::SetInfoString(document.infoString, "cluster.preset", "Cu");
        ZfDocData::SetInfoString(document.infoString, "cluster.emitter-layer", layer);
        ZfDocData::SetInfoValue(document.infoValue, "energy", 560.0);
        if (!title.empty()) ZfDocData::SetInfoString(document.infoString, "Title", title);
        ZfQBarnFile file(folder_.Path(name), "w");
        document.SaveLoad(file);
        file.Save();
        return folder_.Path(name);
    }

    TempFolder folder_;
};

TEST_F(ImageFiles, AddWithTheirWeights) {
    for (const SphereMap map : kMaps) {
        const std::string even = Write("even.xml_img", map, 3.0, Even, "1", "first");
        const std::string odd = Write("odd.xml_img", map, 3.0, Odd, "2");
        SumImages({{even, 0.5}, {odd, -3.0}}, folder_.Path("sum.xml_img"));
        const LoadedImage sum = LoadSphereImage(folder_.Path("sum.xml_img"));
        EXPECT_EQ(sum.image.Map(), map);
        for (const SpherePixel& p : sum.image.Pixels())
            EXPECT_NEAR(p.value, 0.5 * At(Even, p.theta, p.phi) - 3.0 * At(Odd, p.theta, p.phi), 2 * kFloat);
        const auto& texts = sum.information.texts;
        EXPECT_EQ(texts.at("cluster.preset"), std::vector<std::string>{"Cu"});
        EXPECT_EQ(texts.at("cluster.emitter-layer"), (std::vector<std::string>{"1", "2"}));
        EXPECT_EQ(texts.at("sum.of"), (std::vector<std::string>{"even.xml_img", "odd.xml_img"}));
        EXPECT_EQ(sum.information.numbers.at("sum.weights"), (std::vector<double>{0.5, -3.0}));
        EXPECT_EQ(sum.information.numbers.at("energy"), std::vector<double>{560.0});
        EXPECT_EQ(sum.title, "sum");  // that of one member is not that of all
        SumImages({{even}, {even}}, folder_.Path("twice.xml_img"));
        EXPECT_EQ(LoadSphereImage(folder_.Path("twice.xml_img")).information.texts.at("sum.of"),
                  (std::vector<std::string>{even, even}));
    }
}

TEST_F(ImageFiles, AsymmetryIsOddAndBelowOne) {
    for (const SphereMap map : kMaps) {
        const auto plus = [](double x, double y, double z) { return Even(x, y, z) + Odd(x, y, z); };
        const auto minus = [](double x, double y, double z) { return Even(x, y, z) - Odd(x, y, z); };
        const std::string a = Write("a.xml_img", map, 3.0, plus);
        const std::string b = Write("b.xml_img", map, 3.0, minus);
        EXPECT_EQ(SaveAsymmetry(a, b, folder_.Path("d.xml_img")), "");
        const LoadedImage loaded = LoadSphereImage(folder_.Path("d.xml_img"));
        EXPECT_TRUE(loaded.IsAsymmetry());
        EXPECT_FALSE(LoadSphereImage(a).IsAsymmetry());
        for (const SpherePixel& p : loaded.image.Pixels())
            EXPECT_NEAR(p.value, At(Odd, p.theta, p.phi) / At(Even, p.theta, p.phi), kFloat);
        EXPECT_EQ(ErrorText([&] {
                      SumImages({{a}, {folder_.Path("d.xml_img")}}, folder_.Path("x.xml_img"));
                  }),
                  folder_.Path("d.xml_img") +
                      ": it is an asymmetry, which does not add: add the intensities, and take it of them");
    }
}

// Both images vanish along z = 0 as z^2, which is below 0.01 for the tenth of the hemisphere next to the
// horizon.
TEST_F(ImageFiles, AsymmetryIsLeftOutWhereBothAreFaint) {
    const auto a = [](double, double, double z) { return 1.5 * z * z; };
    const auto b = [](double, double, double z) { return 0.5 * z * z; };
    const SphereImage first = Sampled(kMaps[0], 1.0, a);
    const ModulationFunction asymmetry = AsymmetryOf(first, Sampled(kMaps[0], 1.0, b));
    EXPECT_NEAR(asymmetry.Value(1.4, 0.3), 0.5, 1e-3);
    EXPECT_TRUE(std::isnan(asymmetry.Value(1.5, 0.3)));
    EXPECT_NEAR(asymmetry.LeftOut(), 0.1, 0.01);
    const std::string text = SaveAsymmetry(Write("a.xml_img", kMaps[0], 1.0, a),
                                           Write("b.xml_img", kMaps[0], 1.0, b), folder_.Path("d.xml_img"));
    EXPECT_EQ(text.substr(0, 20), "asymmetry left out i");
    EXPECT_EQ(LoadSphereImage(folder_.Path("d.xml_img")).image.Value(1.55, 0.3), 0.0);
}

TEST_F(ImageFiles, ThatDoNotFitAreNamed) {
    const std::string a = Write("a.xml_img", kMaps[0], 3.0, Even);
    const std::string output = folder_.Path("x.xml_img");
    const auto failure = [&](const std::string& b) {
        return ErrorText([&] { SumImages({{a}, {b}}, output); });
    };
    const std::string both = a + " and " + folder_.Path("b.xml_img") + ": ";
    EXPECT_EQ(
        failure(Write("b.xml_img", kMaps[1], 3.0, Even)),
        both +
            "The images are on different maps, AzimuthalEquidistant and EquidistantCylindrical: calculate "
            "both on the same");
    EXPECT_EQ(failure(Write("b.xml_img", kMaps[0], 2.0, Even)),
              both +
                  "The images have different sizes, 61 x 61 and 91 x 91 pixels: calculate both with the same "
                  "resolution");
    EXPECT_EQ(ErrorText([&] {
                  SumImages({{a, 1e39}}, output);
              }),
              "The values are too large for the 32-bit numbers of an image: take smaller weights");
    const std::string dark = Write("dark.xml_img", kMaps[0], 3.0, [](auto...) { return 0.0; });
    EXPECT_NE(ErrorText([&] { SaveAsymmetry(dark, dark, output); }), "no failure");
    EXPECT_FALSE(std::filesystem::exists(output));
}

}  // namespace
