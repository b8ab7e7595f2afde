#include <gtest/gtest.h>

#include <filesystem>

#include "ErrorText.h"
#include "TempFolder.h"
#include "foundation/Constants.h"
#include "report/SphereFunctions.h"
#include "report/picture/Canvas.h"
#include "report/picture/DiscPicture.h"
#include "report/picture/LinePlot.h"
#include "report/picture/PatternCuts.h"
#include "report/picture/PngPicture.h"

namespace {

constexpr View kViews[] = {View::kAzimuthalEquidistant, View::kStereographic, View::kOrthographic};
constexpr double kPixel = 0.03;  // of a colour part: half a pixel off, and 8 bits

double Tilted(double x, double y, double z) {
    return 0.4 * z + 0.3 * x + 0.2 * y;
}

const Colour kWhite{1.0, 1.0, 1.0};

/// A picture as it was drawn.
struct Drawn {
    explicit Drawn(const DiscPicture& asked) : request(asked), layout(asked), png(Draw(asked)) {}

    static PngPicture Draw(const DiscPicture& asked) {
        const TempFolder folder;
        DrawDiscs(asked, folder.Path("a.png"));
        return PngPicture(folder.Path("a.png"));
    }
    /// How far the colour in a direction (degrees) is from another.
    double Off(const Colour& colour, double theta, double phi, std::size_t panel = 0) const {
        const PicturePoint point = layout.Direction(request.view, panel, theta * kDegree, phi * kDegree);
        return Difference(png.At(point), colour);
    }

    DiscPicture request;
    DiscLayout layout;
    PngPicture png;
};

double Height(double, double, double z) {
    return z;
}

TEST(DiscPicture, ShowsTheFunctionAtItsDirections) {
    for (const View view : kViews) {
        DiscPicture request;
        for (const SphereMap map : kMaps) request.images.push_back({Sampled(map, 2.0, Tilted), "map"});
        request.view = view;
        request.colours = ColourMap::kGrey;
        request.range = Span{-0.5, 0.6};
        const Drawn drawn(request);
        for (const std::size_t panel : {0U, 1U}) {
            for (const double theta : {0.0, 20.0, 45.0, 70.0, 81.0}) {
                for (const double phi : {0.0, 45.0, 135.0, 179.5, 180.5, 270.0}) {
                    const double value = At(Tilted, theta * kDegree, phi * kDegree);
                    const Colour expected = ColourAt(ColourMap::kGrey, (value + 0.5) / 1.1);
                    EXPECT_LT(drawn.Off(expected, theta, phi, panel), kPixel) << theta << ' ' << phi;
                }
            }
            const PicturePoint rim = drawn.layout.Direction(view, panel, 90 * kDegree, 45 * kDegree);
            EXPECT_LT(Difference(drawn.png.At({rim.x + 0.03, rim.y - 0.03}), kWhite), 1e-9);
        }
    }
}

TEST(DiscPicture, ColourBarAndAutomaticRange) {
    DiscPicture request;
    request.images = {
        {Sampled(kMaps[1], 2.0, [](double, double, double z) { return z > -0.1 ? z : 99.0; }), ""}};
    const Span range = ColourRange(request.images, false);
    EXPECT_NEAR(range.low, 0.0, 1e-12);  // the lower hemisphere does not count
    EXPECT_NEAR(range.high, 1.0, 1e-12);
    const Drawn drawn(request);
    EXPECT_EQ(drawn.png.Width(), 800);
    const auto bar = [](const Drawn& d, double fraction) { return d.png.At(d.layout.ColourBar(fraction)); };
    for (const double fraction : {0.01, 0.5, 0.99})
        EXPECT_LT(Difference(bar(drawn, fraction), ColourAt(ColourMap::kViridis, fraction)), kPixel);
    EXPECT_LT(Difference(bar(drawn, 1.03), kWhite), 1e-9);

    // Ticks stand to the right of the bar, which reaches 4.5 points from its middle.
    request.range = Span{0.0, 0.7};
    const Drawn ticks(request);
    for (int i = 0; i < 8; ++i) {
        PicturePoint point = ticks.layout.ColourBar(i / 7.0);
        point.x += 5.5 / ticks.layout.width;
        EXPECT_EQ(ticks.png.At(point).red < 0.9, i % 2 == 0) << i;
    }
}

// Of the solid angle with a value, a hundredth is z > 0.991, of which the part nearer to the normal holds
// another one.
TEST(DiscPicture, TheRangeOfAModulationLeavesAHundredthOut) {
    const auto cap = [](double atNormal) {
        return DrawnPattern(
            [=](double theta, double) {
                const double z = std::cos(theta);
                return z > 0.995 ? atNormal : z < 0.1 ? std::nan("") : -z;
            },
            1.0, "");
    };
    for (const double atNormal : {1e30, -7.0}) {
        const Span range = ColourRange({cap(atNormal)}, true);
        EXPECT_NEAR(range.high, 0.991, 2e-3);  // rings half a degree apart
        EXPECT_EQ(range.low, -range.high);
    }
    EXPECT_EQ(ColourRange({cap(1e30)}, false).high, 1e30);
    EXPECT_NEAR(ColourRange({cap(1e30)}, false).low, -0.995, 2e-3);
    const DrawnPattern spot([](double theta, double) { return theta < 1e-3 ? 2.0 : 0.0; }, 1.0, "");
    EXPECT_EQ(ColourRange({spot}, true).high, 2.0);
    EXPECT_EQ(ColourRange({{[](double, double) { return std::nan(""); }, 1.0, ""}}, true).high, 1.0);
}

TEST(DiscPicture, DirectionsWithoutAValueStayBlank) {
    DiscPicture request;
    request.images = {
        {[](double theta, double phi) { return std::cos(phi) < 0 ? std::nan("") : theta; }, 1.0, ""}};
    const Drawn drawn(request);
    for (const double theta : {20.0, 40.0, 80.0}) {
        EXPECT_LT(drawn.Off(kWhite, theta, 170.0), 1e-9);
        EXPECT_LT(drawn.Off(ColourAt(request.colours, theta / 90.0), theta, 10.0), kPixel);
    }
}

TEST(DiscPicture, PolarAnglesThatAreNotShownStayBlank) {
    DiscPicture request;
    request.images = {{Sampled(kMaps[0], 2.0, Height), ""}};
    request.shownTheta_deg = {10.0, 70.0};
    const Drawn drawn(request);
    for (const double theta : {5.0, 12.0, 68.0, 75.0})
        EXPECT_EQ(drawn.Off(kWhite, theta, 20.0) < 1e-9, theta < 10.0 || theta > 70.0) << theta;
}

TEST(DiscPicture, RingsStandAtTheirStep) {
    DiscPicture request;
    request.images = {{Sampled(kMaps[0], 5.0, Height), ""}};
    request.view = View::kStereographic;
    request.ringStep_deg = 40.0;
    request.range = Span{1.0, 2.0};  // one colour throughout
    request.width = 2000;
    const Drawn drawn(request);
    for (const double theta : {20.0, 30.0, 40.0, 60.0, 80.0})
        EXPECT_EQ(drawn.Off(ColourAt(request.colours, 0.0), theta, 200.0) > kPixel,
                  theta == 40.0 || theta == 80.0)
            << theta;
}

TEST(DiscPicture, FormatsAndFailures) {
    const TempFolder folder;
    DiscPicture request;
    request.images = {{Sampled(kMaps[0], 5.0, Tilted), "caf\xE9 \xF0 & <b>"}};  // not UTF-8
    DrawDiscs(request, folder.Path("a.SVG"));
    EXPECT_NE(folder.Read("a.SVG").find("width=\"240.94"), std::string::npos);  // 85 mm
    request.width = 170;
    DrawDiscs(request, folder.Path("a.pdf"));
    EXPECT_EQ(folder.Read("a.pdf").substr(0, 5), "%PDF-");
    const auto failure = [&folder](const DiscPicture& bad, const std::string& name) {
        return ErrorText([&] { DrawDiscs(bad, folder.Path(name)); });
    };
    for (const char* const name : {"a.jpg", "missing/a.png"}) EXPECT_NE(failure(request, name), "no failure");
    EXPECT_NE(failure({}, "a.png"), "no failure");
    request.width = 5;
    EXPECT_NE(failure(request, "a.png"), "no failure");
    request.width = 0;
    request.range = Span{1.0, 1.0};
    EXPECT_NE(failure(request, "a.png"), "no failure");
    EXPECT_FALSE(std::filesystem::exists(folder.Path("a.png")));
}

TEST(PatternCuts, FollowTheFunction) {
    for (const SphereMap map : kMaps) {
        const DrawnPattern image(Sampled(map, 2.0, Tilted), "");
        const Curve polar = PolarCut(image, 200 * kDegree);
        EXPECT_EQ(polar.x.front(), -90.0);
        EXPECT_EQ(polar.x.back(), 90.0);
        for (std::size_t i = 0; i < polar.x.size(); ++i)  // a negative angle is the other side
            EXPECT_NEAR(polar.y[i], At(Tilted, polar.x[i] * kDegree, 200 * kDegree), 1e-4);
        const Curve azimuthal = AzimuthalCut(image, 60 * kDegree);
        for (std::size_t i = 0; i < azimuthal.x.size(); ++i)
            EXPECT_NEAR(azimuthal.y[i], At(Tilted, 60 * kDegree, azimuthal.x[i] * kDegree), 1e-4);
        EXPECT_NEAR(azimuthal.y.front(), azimuthal.y.back(), 1e-12);
        EXPECT_NE(ErrorText([&] { AzimuthalCut(image, 2.0); }), "no failure");
    }
}

struct Trace {
    double row = 0.0;  ///< mean
    int columns = 0;   ///< in which the colour occurs
};

Trace TraceOf(const PngPicture& png, const Colour& colour) {
    Trace trace;
    int pixels = 0;
    for (int column = 0; column < png.Width(); ++column) {
        const int before = pixels;
        for (int row = 0; row < png.Height(); ++row) {
            if (Difference(png.At(column, row), colour) > 0.02) continue;
            trace.row += row;
            ++pixels;
        }
        trace.columns += pixels > before ? 1 : 0;
    }
    trace.row /= pixels;
    return trace;
}

TEST(LinePlot, CurvesLieAtTheirValues) {
    const TempFolder folder;
    const double nan = std::nan("");
    LineAxes axes;
    axes.yRange = Span{-1.0, 1.0};
    DrawLines({{"", {0, 0.4, 0.5, 0.6, 1}, {0.7, 0.7, nan, 0.7, 0.7}},
               {"", {0, 1}, {0.1, 0.1}},
               {"", {0, 1}, {-0.3, -0.3}}},
              axes, folder.Path("a.png"));
    const PngPicture png(folder.Path("a.png"));
    const Trace upper = TraceOf(png, {0.0, 0.447, 0.698});
    const Trace middle = TraceOf(png, {0.835, 0.369, 0.0});
    const Trace lower = TraceOf(png, {0.0, 0.620, 0.451});
    EXPECT_GT(lower.row - middle.row, 40.0);
    EXPECT_NEAR((middle.row - upper.row) / (lower.row - middle.row), 1.5, 0.02);
    EXPECT_NEAR(upper.columns, 0.8 * middle.columns, 5);  // the gap
    const std::vector<std::vector<Curve>> nothing = {{}, {{"", {1, 2}, {nan, nan}}}, {{"", {1, 2}, {1}}}};
    for (const auto& curves : nothing)
        EXPECT_NE(ErrorText([&] { DrawLines(curves, axes, folder.Path("b.png")); }), "no failure");
    EXPECT_FALSE(std::filesystem::exists(folder.Path("b.png")));
}

TEST(AxisTicks, NiceNumbers) {
    const auto labels = [](const Span& span) {
        std::string text;
        const AxisTicks ticks = NiceTicks(span, 6);
        for (const std::string& label : ticks.labels) text += label + " ";
        return text + ticks.factor;
    };
    EXPECT_EQ(labels({0.0, 1.0}), "0.0 0.2 0.4 0.6 0.8 1.0 ");
    EXPECT_EQ(labels({-1.2, 1.3}), "−1.0 −0.5 0.0 0.5 1.0 ");
    EXPECT_EQ(labels({0.0, 3e-5}), "0.0 0.5 1.0 1.5 2.0 2.5 3.0 ×10⁻⁵");
    EXPECT_EQ(labels({1e12, 4e12}), "1.0 1.5 2.0 2.5 3.0 3.5 4.0 ×10¹²");
    EXPECT_EQ(labels({99.98, 100.01}), "99.980 99.985 99.990 99.995 100.000 100.005 100.010 ");
    EXPECT_EQ(StepTicks({-90.0, 90.0}, 30.0).labels.size(), 7U);
}

/// Of a channel of sRGB.
double Linear(double value) {
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

/// CIE lightness L* of a colour, 0 to 100.
double Lightness(const Colour& colour) {
    const double y =
        0.2126729 * Linear(colour.red) + 0.7151522 * Linear(colour.green) + 0.0721750 * Linear(colour.blue);
    return y > 216.0 / 24389 ? 116 * std::cbrt(y) - 16 : y * 24389.0 / 27;
}

TEST(ColourMap, LightnessIsUniform) {
    const double span =
        Lightness(ColourAt(ColourMap::kViridis, 1.0)) - Lightness(ColourAt(ColourMap::kViridis, 0.0));
    for (double t = 0.0; t <= 1.0; t += 0.02) {
        EXPECT_NEAR(Lightness(ColourAt(ColourMap::kGrey, t)), 100 * t, 0.1);
        EXPECT_NEAR(Lightness(ColourAt(ColourMap::kViridis, t)),
                    Lightness(ColourAt(ColourMap::kViridis, 0.0)) + t * span, 2.5)
            << t;
        EXPECT_NEAR(Lightness(ColourAt(ColourMap::kDiverging, t)),
                    Lightness(ColourAt(ColourMap::kDiverging, 1 - t)), 1.0);
    }
    // The ends and the middle as Moreland gives them.
    EXPECT_LT(Difference(ColourAt(ColourMap::kDiverging, 0.0), {59 / 255.0, 76 / 255.0, 192 / 255.0}), 0.005);
    EXPECT_LT(Difference(ColourAt(ColourMap::kDiverging, 0.5), {221 / 255.0, 221 / 255.0, 221 / 255.0}),
              0.005);
    EXPECT_LT(Difference(ColourAt(ColourMap::kDiverging, 1.0), {180 / 255.0, 4 / 255.0, 38 / 255.0}), 0.005);
}

}  // namespace
