#include <gtest/gtest.h>

#include <cmath>

#include "RunQvre.h"
#include "TempFolder.h"
#include "foundation/Constants.h"
#include "report/SphereFunctions.h"
#include "report/picture/PngPicture.h"

namespace {

/// Forward focusing along the normal and the four directions at 45 degrees, of 1 - (1 - cos)/0.01 near each
/// axis, on top of I0 = 1 + z/2; chi is 1 at the spots and 0 far from them.
double Spots(double x, double y, double z) {
    const double s = std::sqrt(0.5);
    double chi = std::exp((z - 1) / 0.01);
    for (const double along : {s * x + s * z, s * y + s * z, -s * x + s * z, -s * y + s * z})
        chi += std::exp((along - 1) / 0.01);
    return (1 + z / 2) * (1 + chi);
}

/// The picture of chi with options, which draw it from -1 to 1 by themselves.
class ChiPicture {
public:
    explicit ChiPicture(SphereMap map, const std::string& options = "--range -1 1") {
        const TempFolder folder;
        const std::string image = WriteImageFile(folder.Path("i.xml_img"), Sampled(map, 2.0, Spots));
        const auto smooth = [](double, double, double z) { return 1 + z / 2; };
        WriteImageFile(folder.Path("i0.xml_img"), Sampled(map, 2.0, smooth));
        const QvreResult drawn = RunQvre("plot " + image + " --i0 " + folder.Path("i0.xml_img ") + options +
                                         " -o " + folder.Path("chi.png"));
        EXPECT_EQ(drawn.status, 0) << drawn.errors;
        png_ = std::make_unique<PngPicture>(folder.Path("chi.png"));
        request_.images = {{LoadSphereImage(image).image, "i"}};
    }

    /// How far the colour at a direction (degrees) is from that of chi.
    double Off(double chi, double theta, double phi, View view = View::kAzimuthalEquidistant) const {
        const PicturePoint point = DiscLayout(request_).Direction(view, 0, theta * kDegree, phi * kDegree);
        return Difference(png_->At(point), ColourAt(ColourMap::kDiverging, 0.5 + 0.5 * chi));
    }

private:
    std::unique_ptr<PngPicture> png_;
    DiscPicture request_;
};

constexpr double kPixel = 0.05;  // of a colour part, half a pixel off

}  // namespace

TEST(PlotCommand, ShowsForwardFocusing) {
    for (const SphereMap map : kMaps) {
        const ChiPicture picture(map);
        for (const double phi : {0.0, 90.0, 180.0, 270.0}) {
            EXPECT_LT(picture.Off(1.0, 45.0, phi), kPixel) << phi;
            EXPECT_LT(picture.Off(0.0, 45.0, phi + 45.0), kPixel) << phi;
        }
        EXPECT_LT(picture.Off(1.0, 0.0, 0.0), kPixel);
        const ChiPicture whole(map, "");  // from -1 to 1, with 0 in the middle
        EXPECT_LT(whole.Off(1.0, 45.0, 90.0), kPixel);
        EXPECT_LT(whole.Off(0.0, 45.0, 135.0), kPixel);
    }
}

TEST(PlotCommand, OperationsActOnBothImages) {
    const auto picture = [](const std::string& options) {
        return ChiPicture(SphereMap::kEquidistantCylindrical, options + " --range -1 1");
    };
    const double outside = std::asin(std::sqrt(0.5 * 50 / 40)) / kDegree;
    EXPECT_LT(picture("--energy 50 --inner-potential 10 --view orthographic")
                  .Off(1.0, outside, 0.0, View::kOrthographic),
              kPixel);
    EXPECT_LT(picture("--fold 8").Off(0.5, 45.0, 45.0), kPixel);  // eight spots of half the height
    EXPECT_LT(picture("--mirror 22.5").Off(0.5, 45.0, 45.0), kPixel);
    // The mean of exp((cos - 1)/w) over a cone is w (1 - exp(-(1 - c)/w))/(1 - c).
    const double cap = (1 - std::cos(10 * kDegree)) / 0.01;
    EXPECT_LT(picture("--acceptance 10").Off((1 - std::exp(-cap)) / cap, 0.0, 0.0), kPixel);
}
