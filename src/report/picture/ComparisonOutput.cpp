#include "report/picture/ComparisonOutput.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iterator>

#include "foundation/Constants.h"
#include "foundation/ReplacedFile.h"
#include "foundation/ZfError.h"
#include "report/picture/Canvas.h"
#include "report/picture/DiscPicture.h"

namespace qvre {

namespace {

std::string Extension(const std::string& path) {
    return std::filesystem::path(path).extension().string();
}

/// How b is shown. Where no positive scale brings it nearer to a, it is shown as it is.
struct ShownB {
    explicit ShownB(const CompareResult& result)
        : isScaled(result.agreement.scale > 0.0),
          scale(isScaled ? result.agreement.scale : 1.0),
          R(isScaled ? result.agreement.scaledR : result.agreement.R),
          chi(result.chiB) {
        for (double& value : chi) value *= scale;
    }

    bool isScaled;
    double scale;
    double R;  ///< of a and what is shown
    std::vector<double> chi;
};

std::string DifferenceTable(const CompareResult& result) {
    const Agreement& agreement = result.agreement;
    const ShownB b(result);
    std::string text = fmt::format(
        "# R = {:.9g}\n"
        "# scale of b = {:.9g}\n"
        "# R with the scale = {:.9g}\n"
        "# correlation = {:.9g}\n"
        "# rotation of b = {:.9g} degrees\n"
        "# chi_b is turned{}; angles in degrees\n"
        "theta,phi,chi_a,chi_b,difference\n",
        agreement.R, agreement.scale, agreement.scaledR, agreement.correlation, result.rotation,
        b.isScaled ? " and scaled" : ", not scaled");
    for (std::size_t i = 0; i < b.chi.size(); ++i)
        fmt::format_to(std::back_inserter(text), "{:.9g},{:.9g},{:.9g},{:.9g},{:.9g}\n", result.theta[i],
                       result.phi[i], result.chiA[i], b.chi[i], result.chiA[i] - b.chi[i]);
    return text;
}

/// Degrees between neighbouring directions, if they fill the belt of polar angles that they span.
double Spacing(const CompareResult& result) {
    const auto [low, high] = std::minmax_element(result.theta.begin(), result.theta.end());
    const double belt = 2.0 * kPi * (std::cos(*low * kDegree) - std::cos(*high * kDegree));
    return std::sqrt(belt / static_cast<double>(result.theta.size())) / kDegree;
}

/// An azimuthal map of one pixel a degree. A pixel takes the mean of the directions around it, weighed with a
/// Gaussian of the width of their spacing, and 0 where there are none near.
SphereImage Spread(const CompareResult& result, const std::vector<double>& values) {
    constexpr std::int32_t kSide = 181;
    constexpr std::int32_t kCentre = 90;
    const double sigma = std::clamp(0.6 * Spacing(result), 0.5, 5.0);
    const auto reach = static_cast<std::int32_t>(std::ceil(2.5 * sigma));
    std::vector<double> sums(std::size_t{kSide} * kSide);
    std::vector<double> weights(sums.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (result.theta[i] > 90.0) continue;
        const double phi = Radians(result.phi[i]);
        const double x = kCentre + result.theta[i] * std::cos(phi);
        const double y = kCentre + result.theta[i] * std::sin(phi);
        const auto column = static_cast<std::int32_t>(std::lround(x));
        const auto row = static_cast<std::int32_t>(std::lround(y));
        for (std::int32_t r = std::max(0, row - reach); r <= std::min(kSide - 1, row + reach); ++r) {
            for (std::int32_t c = std::max(0, column - reach); c <= std::min(kSide - 1, column + reach);
                 ++c) {
                const double distance = std::hypot(c - x, r - y) / sigma;
                const double weight = result.weight[i] * std::exp(-distance * distance / 2.0);
                const std::size_t pixel = static_cast<std::size_t>(r) * kSide + static_cast<std::size_t>(c);
                sums[pixel] += weight * values[i];
                weights[pixel] += weight;
            }
        }
    }
    for (std::size_t pixel = 0; pixel < sums.size(); ++pixel)
        sums[pixel] = weights[pixel] > 0.0 ? sums[pixel] / weights[pixel] : 0.0;
    return {SphereMap::kAzimuthalEquidistant, kSide, kSide, std::move(sums)};
}

/// The polar angles of the directions, and half a spacing beyond.
Span ComparedBelt(const CompareResult& result) {
    const double margin = Spacing(result) / 2.0;
    const auto [low, high] = std::minmax_element(result.theta.begin(), result.theta.end());
    return {*low <= 2.0 * margin ? 0.0 : *low - margin, *high + margin};
}

void DrawDifference(const CompareResult& result, const std::string& path) {
    const ShownB b(result);
    std::vector<double> difference(b.chi.size());
    std::transform(result.chiA.begin(), result.chiA.end(), b.chi.begin(), difference.begin(), std::minus<>());
    DiscPicture plot;
    plot.images.push_back({Spread(result, result.chiA), "a: " + result.nameA});
    plot.images.push_back({Spread(result, b.chi), fmt::format("b: {}, turned {:.1f}\u00B0, times {:.3g}",
                                                              result.nameB, result.rotation, b.scale)});
    plot.images.push_back({Spread(result, difference), fmt::format("a \u2212 b, R = {:.3f}", b.R)});
    plot.quantity = "\u03C7";
    plot.shownTheta_deg = ComparedBelt(result);
    plot.colours = ColourMap::kDiverging;
    plot.symmetricRange = true;
    DrawDiscs(plot, path);
}

}  // namespace

void CheckDifferenceFile(const std::string& path) {
    if (Extension(path) != ".csv" && !Canvas::CanWrite(path))
        throw ZfError("A difference is written as .csv, .png, .svg or .pdf, not as " + path);
}

void WriteDifference(const CompareResult& result, const std::string& path) {
    CheckDifferenceFile(path);
    if (Extension(path) == ".csv")
        WriteWholeFile(path, DifferenceTable(result));
    else
        DrawDifference(result, path);
}

}  // namespace qvre
