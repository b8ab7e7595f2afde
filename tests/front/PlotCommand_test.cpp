#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "TempFolder.h"
#include "foundation/Constants.h"
#include "front/Program.h"
#include "report/SphereFunctions.h"
#include "report/picture/PngPicture.h"

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

struct Files {
    explicit Files(SphereMap map)
        : image(WriteImageFile(folder.Path("i.xml_img"), Sampled(map, 2.0, Spots))),
          reference(WriteImageFile(folder.Path("i0.xml_img"),
                                   Sampled(map, 2.0, [](double, double, double z) { return 1 + z / 2; }))),
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

/// The picture of chi from -1 to 1 with more options.
class ChiPicture {
public:
    ChiPicture(const Files& files, std::vector<std::string> options,
               const std::vector<std::string>& range = {"--range", "-1", "1"})
        : png_(Draw(files, std::move(options), range)) {
        request_.images = {LoadSphereImage(files.image)};
    }

    /// How far the colour at a direction (degrees) is from that of chi.
    double Off(double chi, double theta, double phi, View view = View::kAzimuthalEquidistant) const {
        const PicturePoint point = DiscLayout(request_).Direction(view, 0, theta * kDegree, phi * kDegree);
        return Difference(png_.At(point), ColourAt(ColourMap::kDiverging, 0.5 + 0.5 * chi));
    }

private:
    static PngPicture Draw(const Files& files, std::vector<std::string> options,
                           const std::vector<std::string>& range) {
        options.insert(options.begin(), {files.image, "--i0", files.reference, "-o", files.picture});
        options.insert(options.end(), range.begin(), range.end());
        EXPECT_EQ(Plot(options).status, 0);
        return PngPicture(files.picture);
    }

    PngPicture png_;
    DiscPicture request_;
};

constexpr double kPixel = 0.05;  // of a colour part, half a pixel off

TEST(PlotCommand, ShowsForwardFocusing) {
    for (const SphereMap map : kMaps) {
        const ChiPicture picture(Files(map), {});
        for (const double phi : {0.0, 90.0, 180.0, 270.0}) {
            EXPECT_LT(picture.Off(1.0, 45.0, phi), kPixel) << phi;
            EXPECT_LT(picture.Off(0.0, 45.0, phi + 45.0), kPixel) << phi;
        }
        EXPECT_LT(picture.Off(1.0, 0.0, 0.0), kPixel);
        const ChiPicture whole(Files(map), {}, {});  // from -1 to 1, with 0 in the middle
        EXPECT_LT(whole.Off(1.0, 45.0, 90.0), kPixel);
        EXPECT_LT(whole.Off(0.0, 45.0, 135.0), kPixel);
    }
}

TEST(PlotCommand, OperationsActOnBothImages) {
    const Files files(SphereMap::kEquidistantCylindrical);
    const ChiPicture refracted(files,
                               {"--energy", "50", "--inner-potential", "10", "--view", "orthographic"});
    const double outside = std::asin(std::sqrt(0.5 * 50 / 40)) / kDegree;
    EXPECT_LT(refracted.Off(1.0, outside, 0.0, View::kOrthographic), kPixel);
    EXPECT_LT(ChiPicture(files, {"--fold", "8"}).Off(0.5, 45.0, 45.0),
              kPixel);  // eight spots of half the height
    EXPECT_LT(ChiPicture(files, {"--mirror", "22.5"}).Off(0.5, 45.0, 45.0), kPixel);
    // The mean of exp((cos - 1)/w) over a cone is w (1 - exp(-(1 - c)/w))/(1 - c).
    const double cap = (1 - std::cos(10 * kDegree)) / 0.01;
    EXPECT_LT(ChiPicture(files, {"--acceptance", "10"}).Off((1 - std::exp(-cap)) / cap, 0.0, 0.0), kPixel);
    const std::string cut = files.folder.Path("cut.svg");
    for (const auto& [option, angle] : {std::pair{"--polar-cut", "0"}, {"--azimuthal-cut", "45"}})
        EXPECT_EQ(Plot({files.image, files.image, "-o", cut, option, angle}).status, 0);
    EXPECT_NE(files.folder.Read("cut.svg").find("<svg"), std::string::npos);
}

TEST(PlotCommand, ExitCodesAndNothingLeftBehind) {
    const Files files(SphereMap::kAzimuthalEquidistant);
    const Files other(SphereMap::kEquidistantCylindrical);
    const auto outcome = [&files](std::vector<std::string> more) {
        more.insert(more.begin(), {files.image, "-o", files.picture});
        return Plot(more);
    };
    const std::vector<std::vector<std::string>> badUsage = {
        {"--view", "mercator"},
        {"--fold", "0"},
        {"--range", "2", "1"},
        {"--energy", "100"},
        {"--acceptance", "60"},
        {"--mirror", "nan"},
        {"--inner-potential", "10"},

        {"--polar-cut", "0", "--azimuthal-cut", "45"},
        {"--i0", files.image, "--i0", files.image},
    };
    for (const auto& options : badUsage) EXPECT_EQ(outcome(options).status, 2) << options.front();
    EXPECT_EQ(Plot({files.image}).status, 2);
    EXPECT_EQ(Plot({files.image, "-o", files.folder.Path("a.jpg")}).status, 2);
    EXPECT_EQ(Plot({"--help"}).status, 0);
    const std::pair<std::vector<std::string>, const char*> failures[] = {
        {{files.folder.Path("no.xml_img")}, "there is no such file"},
        {{"--i0", other.reference}, "calculate both on the same"},
        {{"--energy", "100", "--inner-potential", "200"}, "below the kinetic energy"}};
    for (const auto& [options, reason] : failures) {
        const Outcome failed = outcome(options);
        EXPECT_EQ(failed.status, 1) << reason;
        EXPECT_NE(failed.errors.find(reason), std::string::npos) << failed.errors;
    }
    EXPECT_EQ(files.Count(), 2U);
}

}  // namespace
