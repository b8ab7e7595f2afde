#include "report/picture/DiscPicture.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"
#include "report/picture/Canvas.h"

namespace qvre {

namespace {

// Points. A panel and the colour bar fill a column of 85 mm.
constexpr double kRadius = 72.0;
constexpr double kSide = 25.5;     // for azimuth labels left and right of the disc
constexpr double kAbove = 16.0;    // and above and below it
constexpr double kTitle = 14.0;    // a line for the title
constexpr double kCaption = 13.0;  // and one for the title of a panel
constexpr double kPanelWidth = 2 * (kRadius + kSide);
constexpr double kBarBlock = kColumnWidth - kPanelWidth;
constexpr double kBarWidth = 9.0;
constexpr double kLabel = 7.5;  // letters

constexpr Colour kBlack;
constexpr Colour kWhite{1.0, 1.0, 1.0};

void Check(const DiscPicture& picture) {
    if (picture.images.empty()) throw ZfError("There is no image to draw");
    if (picture.panelsPerRow < 1) throw ZfError("A row of pictures has to hold one at least");
    if (!(picture.ringStep_deg >= 5.0 && picture.ringStep_deg <= 90.0))
        throw ZfError("The step of the polar rings has to lie between 5 and 90 degrees");
    if (picture.range && !(std::isfinite(picture.range->high - picture.range->low) &&
                           picture.range->low < picture.range->high))
        throw ZfError("The range of the colours has to run from a lower to a higher number");
}

std::uint32_t Packed(const Colour& colour) {
    const auto byte = [](double part) { return static_cast<std::uint32_t>(std::lround(255 * part)); };
    return byte(colour.red) << 16 | byte(colour.green) << 8 | byte(colour.blue);
}

/// The square around the disc. Its pixels go a little beyond the rim, where the drawing cuts them off.
std::vector<std::uint32_t> DiscPixels(const DrawnPattern& image, const DiscPicture& picture,
                                      const Span& range, std::int32_t side) {
    const double beyondRim = 1.0 + 4.0 / side;
    Span shown = picture.shownTheta_deg;
    if (shown.high >= 90.0) shown.high = 180.0;
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(side) * static_cast<std::size_t>(side),
                                      0xFFFFFF);
    // One writer a row.
#pragma omp parallel for schedule(static)
    for (std::int32_t row = 0; row < side; ++row) {
        for (std::int32_t column = 0; column < side; ++column) {
            const double x = (2 * column + 1.0) / side - 1.0;
            const double y = 1.0 - (2 * row + 1.0) / side;
            const double radius = std::hypot(x, y);
            if (radius > beyondRim) continue;
            const double theta = PolarAngle(picture.view, radius);
            if (theta < shown.low * kDegree || theta > shown.high * kDegree) continue;
            const double value = image.value(theta, std::atan2(y, x));
            if (std::isnan(value)) continue;
            const double fraction = (value - range.low) / (range.high - range.low);
            pixels[static_cast<std::size_t>(row) * static_cast<std::size_t>(side) +
                   static_cast<std::size_t>(column)] = Packed(ColourAt(picture.colours, fraction));
        }
    }
    return pixels;
}

void DrawRings(Canvas& canvas, const DiscPicture& picture, const PicturePoint& centre) {
    const double azimuth = 75 * kDegree;  // away from the low-index directions, where forward focusing is
    for (const double theta : StepTicks({1.0, 89.0}, picture.ringStep_deg).positions) {
        const double radius = kRadius * DiscRadius(picture.view, theta * kDegree);
        canvas.SetColour(kWhite, 0.6);
        canvas.SetLine(0.9);
        canvas.Circle(centre.x, centre.y, radius);
        canvas.SetColour(kBlack, 0.8);
        canvas.SetLine(0.35);
        canvas.Circle(centre.x, centre.y, radius);
    }
    for (const double theta : StepTicks({1.0, 89.0}, picture.ringStep_deg).positions) {
        const double radius = kRadius * DiscRadius(picture.view, theta * kDegree);
        canvas.Text(centre.x + radius * std::cos(azimuth), centre.y - radius * std::sin(azimuth),
                    fmt::format("{:.0f}°", theta), {.size = 6.5, .halo = true});
    }
}

void DrawAzimuths(Canvas& canvas, const PicturePoint& centre) {
    canvas.SetColour(kBlack);
    canvas.SetLine(0.8);
    canvas.Circle(centre.x, centre.y, kRadius);
    canvas.SetLine(0.6);
    for (int phi = 0; phi < 360; phi += 30) {
        const double c = std::cos(phi * kDegree);
        const double s = std::sin(phi * kDegree);
        const double end = kRadius + (phi % 90 == 0 ? 4.0 : 2.5);
        canvas.Line(centre.x + kRadius * c, centre.y - kRadius * s, centre.x + end * c, centre.y - end * s);
        if (phi % 90 != 0) continue;
        canvas.Text(centre.x + (end + 2) * c, centre.y - (end + 2) * s, fmt::format("{}°", phi),
                    {.size = kLabel, .alignX = std::round(c), .alignY = -std::round(s)});
    }
}

void DrawColourBar(Canvas& canvas, const DiscPicture& picture, const DiscLayout& layout, const Span& range) {
    canvas.Gradient(layout.barX, layout.barTop, kBarWidth, layout.barHeight, picture.colours);
    canvas.SetColour(kBlack);
    canvas.SetLine(0.6);
    canvas.Rectangle(layout.barX, layout.barTop, kBarWidth, layout.barHeight);
    const AxisTicks ticks = NiceTicks(range, 6);
    const double right = layout.barX + kBarWidth;
    double widest = 0.0;
    for (std::size_t i = 0; i < ticks.positions.size(); ++i) {
        const double fraction = (ticks.positions[i] - range.low) / (range.high - range.low);
        const double y = layout.barTop + layout.barHeight * (1 - fraction);
        const TextStyle style{.size = 6.5, .alignX = 1.0};
        canvas.Line(right, y, right + 2, y);
        canvas.Text(right + 3.5, y, ticks.labels[i], style);
        widest = std::max(widest, canvas.TextWidth(ticks.labels[i], style));
    }
    if (!ticks.factor.empty())
        canvas.Text(layout.barX, layout.barTop - 6, ticks.factor, {.size = 6.5, .alignX = 1.0});
    canvas.Text(right + 3.5 + widest + 6, layout.barTop + layout.barHeight / 2, picture.quantity,
                {.size = kLabel, .turn = kPi / 2});
}

}  // namespace

DiscLayout::DiscLayout(const DiscPicture& picture) {
    const std::size_t count = picture.images.size();
    const auto perRow = std::min(count, static_cast<std::size_t>(picture.panelsPerRow));
    const std::size_t rows = (count + perRow - 1) / perRow;
    const double caption = count > 1 ? kCaption : 0.0;
    const bool titled = !picture.title.empty() || count == 1;
    const double top = titled ? kTitle + 4 : 4;
    const double panelHeight = 2 * (kRadius + kAbove) + caption;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t row = i / perRow;
        centres.push_back({(static_cast<double>(i % perRow) + 0.5) * kPanelWidth,
                           top + static_cast<double>(row) * panelHeight + caption + kAbove + kRadius});
    }
    width = static_cast<double>(perRow) * kPanelWidth + kBarBlock;
    height = top + static_cast<double>(rows) * panelHeight;
    barX = width - kBarBlock + 3;
    barHeight = 1.8 * kRadius;
    barTop = (centres.front().y + centres.back().y - barHeight) / 2;
}

PicturePoint DiscLayout::Direction(View view, std::size_t panel, double theta, double phi) const {
    const double radius = kRadius * DiscRadius(view, theta);
    return {(centres.at(panel).x + radius * std::cos(phi)) / width,
            (centres.at(panel).y - radius * std::sin(phi)) / height};
}

PicturePoint DiscLayout::ColourBar(double fraction) const {
    return {(barX + kBarWidth / 2) / width, (barTop + barHeight * (1 - fraction)) / height};
}

void DrawDiscs(const DiscPicture& picture, const std::string& path) {
    Canvas canvas(path);
    DrawDiscs(picture, canvas);
    canvas.Finish();
}

void DrawDiscs(const DiscPicture& picture, Canvas& canvas) {
    Check(picture);
    const DiscLayout layout(picture);
    const Span range = picture.range ? *picture.range : ColourRange(picture.images, picture.symmetricRange);
    canvas.BeginPage(layout.width, layout.height, picture.width);
    const bool single = picture.images.size() == 1;
    const std::string title = picture.title.empty() && single ? picture.images.front().title : picture.title;
    canvas.FittedText(layout.width / 2, 10, layout.width - 8, title, {.size = 9.0, .bold = true});
    const auto side = static_cast<std::int32_t>(std::ceil(2 * kRadius * canvas.PixelsPerPoint()));
    for (std::size_t i = 0; i < picture.images.size(); ++i) {
        const PicturePoint centre = layout.centres[i];
        canvas.DiscImage(centre.x, centre.y, kRadius, DiscPixels(picture.images[i], picture, range, side),
                         side);
        DrawRings(canvas, picture, centre);
        DrawAzimuths(canvas, centre);
        if (!single)
            canvas.FittedText(centre.x, centre.y - kRadius - kAbove - 4, kPanelWidth - 6,
                              picture.images[i].title, {.size = 8.0});
    }
    DrawColourBar(canvas, picture, layout, range);
}

}  // namespace qvre
