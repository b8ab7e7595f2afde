#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "TempFolder.h"
#include "front/Program.h"
#include "report/PngPicture.h"
#include "report/SphereFunctions.h"

namespace {

struct Outcome {
    int status = 0;
    std::string errors;
};

Outcome Plot(const std::vector<std::string>& arguments) {
    std::vector<const char*> list = {"qvre", "plot"};
    for (const std::string& argument : arguments) list.push_back(argument.c_str());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = RunProgram(static_cast<int>(list.size()), list.data());
    testing::internal::GetCapturedStdout();
    return {status, testing::internal::GetCapturedStderr()};
}

/// Forward focusing along the normal and the four directions at 45 degrees, of 1 - (1 - cos)/0.01 near each
/// axis, on top of I0 = 1 + z/2; chi is 1 at the spots and 0 far from them.
double Spots(double x, double y, double z) {
    const double s = std::sqrt(0.5);
    double chi = std::exp((z - 1) / 0.01);
    for (const double along : {s * x + s * z, s * y + s * z, -s * x + s * z, -s * y + s * z})
        chi += std::exp((along - 1) / 0.01);
    return (1 + z / 2) * (1 + chi);
}

double Smooth(double /*x*/, double /*y*/, double z) {
    return 1 + z / 2;
}

struct Files {
    explicit Files(SphereMap map)
        : image(WriteImageFile(folder.Path("i.xml_img"), Sampled(map, 2.0, Spots))),
          reference(WriteImageFile(folder.Path("i0.xml_img"), Sampled(map, 2.0, Smooth))),
          picture(folder.Path("chi.png")) {}

    std::size_t Count() const {
        const std::filesystem::directory_iterator files(folder.Path(""));
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }

    TempFolder folder;
    std::string image;
    std::string reference;
    std::string picture;
};

TEST(PlotCommand, ShowsForwardFocusing) {
    for (const SphereMap map : {SphereMap::AzimuthalEquidistant, SphereMap::EquidistantCylindrical}) {
        const Files files(map);
        ASSERT_EQ(
            Plot({files.image, "--i0", files.reference, "-o", files.picture, "--range", "-1", "1"}).status,
            0);
        const PngPicture png(files.picture);
        PlotRequest request;
        request.images = {LoadSphereImage(files.image)};
        const PatternLayout layout(request);
        const auto seen = [&](double theta, double phi) {
            return png.At(layout.Direction(View::AzimuthalEquidistant, 0, theta * kDegree, phi * kDegree));
        };
        for (const double phi : {0.0, 90.0, 180.0, 270.0}) {
            EXPECT_LT(Difference(seen(45, phi), ColourAt(ColourMap::Diverging, 1.0)), 0.05) << phi;
            EXPECT_LT(Difference(seen(45, phi + 45), ColourAt(ColourMap::Diverging, 0.5)), 0.05) << phi;
        }
        EXPECT_LT(Difference(seen(0, 0), ColourAt(ColourMap::Diverging, 1.0)), 0.05);
    }
}

TEST(PlotCommand, OperationsActInTheOrderOfTheExperiment) {
    const Files files(SphereMap::EquidistantCylindrical);
    const auto plot = [&files](std::vector<std::string> more) {
        more.insert(more.begin(),
                    {files.image, "--i0", files.reference, "-o", files.picture, "--range", "-1", "1"});
        EXPECT_EQ(Plot(more).status, 0);
        return PngPicture(files.picture);
    };
    PlotRequest request;
    request.images = {LoadSphereImage(files.image)};
    const PatternLayout layout(request);
    // sin(45) sqrt(50/40): the spots move to 52.2 degrees, where a view of the parallel momentum has radius
    // 0.79.
    const PngPicture refracted =
        plot({"--energy", "50", "--inner-potential", "10", "--view", "orthographic"});
    const double outside = std::asin(std::sqrt(0.5 * 50 / 40));
    EXPECT_LT(Difference(refracted.At(layout.Direction(View::Orthographic, 0, outside, 0)),
                         ColourAt(ColourMap::Diverging, 1.0)),
              0.06);
    // Eight spots of half the height at 45 degrees.
    const PngPicture folded = plot({"--fold", "8"});
    EXPECT_LT(
        Difference(folded.At(layout.Direction(View::AzimuthalEquidistant, 0, 45 * kDegree, 45 * kDegree)),
                   ColourAt(ColourMap::Diverging, 0.75)),
        0.05);
    // The mean of exp((cos - 1)/w) over a cone is w (1 - exp(-(1 - c)/w))/(1 - c).
    const PngPicture blurred = plot({"--acceptance", "10"});
    const double cap = (1 - std::cos(10 * kDegree)) / 0.01;
    EXPECT_LT(Difference(blurred.At(layout.Direction(View::AzimuthalEquidistant, 0, 0, 0)),
                         ColourAt(ColourMap::Diverging, 0.5 + 0.5 * (1 - std::exp(-cap)) / cap)),
              0.05);
    EXPECT_EQ(Plot({files.image, files.image, "-o", files.folder.Path("cut.svg"), "--polar-cut", "0"}).status,
              0);
    EXPECT_NE(files.folder.Read("cut.svg").find("<svg"), std::string::npos);
}

TEST(PlotCommand, ExitCodesAndNothingLeftBehind) {
    const Files files(SphereMap::AzimuthalEquidistant);
    const Files other(SphereMap::EquidistantCylindrical);
    const std::string& image = files.image;
    const std::string& out = files.picture;
    const std::vector<std::vector<std::string>> badUsage = {
        {image},
        {"-o", out},
        {image, "-o", files.folder.Path("a.jpg")},
        {image, "-o", out, "--view", "mercator"},
        {image, "-o", out, "--fold", "0"},
        {image, "-o", out, "--range", "2", "1"},
        {image, "-o", out, "--acceptance", "60"},
        {image, "-o", out, "--energy", "100"},
        {image, "-o", out, "--inner-potential", "10"},
        {image, "-o", out, "--polar-cut", "0", "--azimuthal-cut", "45"},
        {image, "-o", out, "--i0", image, "--i0", image},
    };
    for (const auto& arguments : badUsage) EXPECT_EQ(Plot(arguments).status, 2) << arguments.back();
    EXPECT_EQ(Plot({"--help"}).status, 0);
    const Outcome missing = Plot({files.folder.Path("no.xml_img"), "-o", out});
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.errors.find("there is no such file"), std::string::npos);
    const Outcome mixed = Plot({image, "--i0", other.reference, "-o", out});
    EXPECT_EQ(mixed.status, 1);
    EXPECT_NE(mixed.errors.find("the same -M"), std::string::npos);
    EXPECT_EQ(Plot({image, "-o", out, "--energy", "100", "--inner-potential", "200"}).status, 1);
    EXPECT_EQ(files.Count(), 2U);
}

}  // namespace
