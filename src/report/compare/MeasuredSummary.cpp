#include "report/compare/MeasuredSummary.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <optional>
#include <utility>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr double kRingWidth_deg = 0.25;
constexpr double kSame_deg = 1e-3;
constexpr std::size_t kMostLines = 12;  ///< of a list

/// A step to a neighbour longer than this many usual ones is a gap.
constexpr double kGap = 1.6;

using Numbers = std::vector<double>;

/// Points of one polar angle by their azimuth, 0 to 360 degrees, each azimuth once.
struct Ring {
    double theta = 0.0;
    Numbers phi;
    Numbers value;  ///< modulation about the mean of the ring
    double step = 360.0;

    /// Between the neighbours on both sides; nothing in a gap.
    std::optional<double> At(double azimuth) const;
};

double Wrapped(double phi) {
    const double wrapped = phi - 360.0 * std::floor(phi / 360.0);
    return wrapped >= 360.0 - kSame_deg ? 0.0 : wrapped;
}

double Median(Numbers values) {
    if (values.empty()) return 0.0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// The differences of a rising list.
Numbers Steps(const Numbers& values) {
    Numbers steps;
    for (std::size_t i = 1; i < values.size(); ++i) steps.push_back(values[i] - values[i - 1]);
    return steps;
}

std::optional<double> Ring::At(double azimuth) const {
    const double at = Wrapped(azimuth);
    const std::size_t n = phi.size();
    const auto right = static_cast<std::size_t>(std::lower_bound(phi.begin(), phi.end(), at) - phi.begin());
    const std::size_t after = right % n;
    const std::size_t before = (right + n - 1) % n;
    if (const double here = Wrapped(at - phi[before] + kSame_deg); here < 2.0 * kSame_deg)
        return value[before];
    if (const double here = Wrapped(phi[after] - at + kSame_deg); here < 2.0 * kSame_deg) return value[after];
    const double width = Wrapped(phi[after] - phi[before]);
    if (n < 2 || width > kGap * step) return std::nullopt;
    const double part = Wrapped(at - phi[before]) / width;
    return (1.0 - part) * value[before] + part * value[after];
}

/// Sorts the points of a ring and takes its mean away.
void Settle(Ring& ring, std::vector<std::pair<double, double>>& points, bool isChi) {
    std::sort(points.begin(), points.end());
    for (const auto& [phi, value] : points) {
        if (!ring.phi.empty() && phi - ring.phi.back() < kSame_deg) continue;
        ring.phi.push_back(phi);
        ring.value.push_back(value);
    }
    const double mean =
        std::accumulate(ring.value.begin(), ring.value.end(), 0.0) / static_cast<double>(ring.value.size());
    for (double& value : ring.value) value = isChi || mean == 0.0 ? value - mean : value / mean - 1.0;
    if (ring.phi.size() > 1) ring.step = Median(Steps(ring.phi));
}

std::vector<Ring> Rings(const MeasuredPattern& pattern) {
    const bool isChi = pattern.intensity.empty();
    const Numbers& values = isChi ? pattern.chi : pattern.intensity;
    std::vector<std::size_t> order(values.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t i, std::size_t j) { return pattern.theta[i] < pattern.theta[j]; });
    std::vector<Ring> rings;
    std::vector<std::pair<double, double>> points;
    for (const std::size_t i : order) {
        if (rings.empty() || pattern.theta[i] - rings.back().theta >= kRingWidth_deg) {
            if (!rings.empty()) Settle(rings.back(), points, isChi);
            points.clear();
            rings.emplace_back();
            rings.back().theta = pattern.theta[i];
        }
        points.emplace_back(Wrapped(pattern.phi[i]), values[i]);
    }
    if (!rings.empty()) Settle(rings.back(), points, isChi);
    return rings;
}

std::string Number(double value) {
    return fmt::format("{:.6g}", std::round(value * 1e4) / 1e4 + 0.0);
}

/// "9 to 75 in steps of 3", or the steps that occur.
std::string Progression(const Numbers& values, const char* unit) {
    if (values.size() == 1) return Number(values[0]) + " " + unit;
    const Numbers steps = Steps(values);
    const auto [low, high] = std::minmax_element(steps.begin(), steps.end());
    const bool even = *high - *low < 0.02 * *high;
    return fmt::format("{} to {} {} in steps of {}", Number(values.front()), Number(values.back()), unit,
                       even ? Number(Median(steps)) : Number(*low) + " to " + Number(*high));
}

std::string Points(std::size_t count) {
    return fmt::format("{} point{}", count, count == 1 ? "" : "s");
}

std::string ValueRange(const Numbers& values) {
    const auto [low, high] = std::minmax_element(values.begin(), values.end());
    return *low == *high ? Number(*low) : fmt::format("{} to {}", Number(*low), Number(*high));
}

/// The arc that holds all azimuths: first to last, which may be beyond 360.
struct Sector {
    double first = 0.0;
    double last = 360.0;
    bool full = true;
};

Sector SectorOf(const std::vector<Ring>& rings) {
    Numbers all;
    double step = 0.0;
    for (const Ring& ring : rings) {
        all.insert(all.end(), ring.phi.begin(), ring.phi.end());
        if (ring.phi.size() > 2) step = std::max(step, ring.step);
    }
    std::sort(all.begin(), all.end());
    double widest = all.front() + 360.0 - all.back();
    Sector sector{all.front(), all.back(), false};
    for (std::size_t i = 1; i < all.size(); ++i)
        if (all[i] - all[i - 1] > widest) {
            widest = all[i] - all[i - 1];
            sector = {all[i], all[i - 1] + 360.0, false};
        }
    sector.full = step > 0.0 && widest <= kGap * step;
    return sector;
}

/// Gaps within the rings, other than the one outside the sector.
std::vector<std::string> Gaps(const std::vector<Ring>& rings, const Sector& sector) {
    std::vector<std::string> gaps;
    for (const Ring& ring : rings) {
        if (ring.phi.size() < 3) continue;
        for (std::size_t i = 0; i < ring.phi.size(); ++i) {
            const double from = ring.phi[i];
            const double to = i + 1 < ring.phi.size() ? ring.phi[i + 1] : ring.phi[0] + 360.0;
            if (to - from <= kGap * ring.step) continue;
            const double outside = sector.full ? 0.0 : 360.0 - (sector.last - sector.first);
            const bool aroundOutside = Wrapped(sector.last - from) + outside <= to - from + kSame_deg;
            if (!sector.full && aroundOutside) continue;
            gaps.push_back(fmt::format("polar angle {}, azimuth {} to {}", Number(ring.theta), Number(from),
                                       Number(to)));
        }
    }
    return gaps;
}

/// Correlation of the data with themselves at the azimuth that `image` gives for each, and its pairs.
struct Likeness {
    double xy = 0.0;
    double xx = 0.0;
    double yy = 0.0;
    std::size_t pairs = 0;

    double Correlation() const { return xx > 0.0 && yy > 0.0 ? xy / std::sqrt(xx * yy) : 0.0; }
};

template <class Image>
Likeness LikenessUnder(const std::vector<Ring>& rings, std::size_t stride, const Image& image) {
    Likeness sum;
    std::size_t count = 0;
    for (const Ring& ring : rings) {
        if (ring.phi.size() < 4) continue;
        for (std::size_t i = 0; i < ring.phi.size(); ++i) {
            if (count++ % stride != 0) continue;
            const std::optional<double> other = ring.At(image(ring.phi[i]));
            if (!other) continue;
            sum.xy += ring.value[i] * *other;
            sum.xx += ring.value[i] * ring.value[i];
            sum.yy += *other * *other;
            ++sum.pairs;
        }
    }
    return sum;
}

/// In hundredths, and never -0.
std::string CorrelationText(double correlation) {
    return fmt::format("{:.2f}", std::round(100.0 * correlation) / 100.0 + 0.0);
}

constexpr std::size_t kFewestPairs = 12;

std::string Turns(const std::vector<Ring>& rings, std::size_t stride) {
    std::string text;
    for (const double turn : {60.0, 90.0, 120.0, 180.0}) {
        const Likeness likeness = LikenessUnder(rings, stride, [turn](double phi) { return phi + turn; });
        if (likeness.pairs < kFewestPairs) continue;
        text += fmt::format("    {:g} degrees: {}, of {} pairs\n", turn,
                            CorrelationText(likeness.Correlation()), likeness.pairs);
    }
    return text.empty() ? text : "  correlation of the data with themselves turned by\n" + text;
}

/// The mirror plane through the normal in which the data are most alike, where half of them have an image.
std::string Mirror(const std::vector<Ring>& rings, std::size_t stride, std::size_t points) {
    double best = -2.0;
    double azimuth = 0.0;
    for (double plane = 0.0; plane < 180.0; plane += 1.0) {
        const Likeness likeness =
            LikenessUnder(rings, stride, [plane](double phi) { return 2.0 * plane - phi; });
        if (likeness.pairs < kFewestPairs || 2 * likeness.pairs * stride < points) continue;
        if (likeness.Correlation() <= best + 1e-9) continue;  // the first of equal ones
        best = likeness.Correlation();
        azimuth = plane;
    }
    if (best < -1.0) return {};
    return fmt::format("  best mirror plane at azimuth {:g} degrees: correlation {}\n", azimuth,
                       CorrelationText(best));
}

std::string Symmetry(const std::vector<Ring>& rings, std::size_t points) {
    constexpr std::size_t kMostPoints = 20000;  // of a large table some serve
    const std::size_t stride = 1 + points / kMostPoints;
    return Turns(rings, stride) + Mirror(rings, stride, points);
}

std::string Azimuths(const std::vector<Ring>& rings, const Sector& sector) {
    Numbers steps;
    for (const Ring& ring : rings)
        if (ring.phi.size() > 2) steps.push_back(ring.step);
    const std::string step = steps.empty() ? "" : ", steps of " + ValueRange(steps) + " degrees";
    if (sector.full) return "  azimuths all around" + step + "\n";
    return fmt::format("  azimuths {} to {} degrees, a sector of {}{}\n", Number(sector.first),
                       Number(sector.last), Number(sector.last - sector.first), step);
}

std::string Listed(const std::vector<std::string>& items) {
    std::string text;
    for (std::size_t i = 0; i < std::min(items.size(), kMostLines); ++i) text += "    " + items[i] + "\n";
    if (items.size() > kMostLines) text += fmt::format("    ... and {} more\n", items.size() - kMostLines);
    return text;
}

/// The signed polar angles of a scan through the normal at one azimuth; nothing where there are others.
std::optional<Numbers> PolarScan(const std::vector<Ring>& rings) {
    const double azimuth = rings.back().phi.front();
    Numbers angles;
    for (const Ring& ring : rings)
        for (const double phi : ring.phi) {
            const double apart = Wrapped(phi - azimuth + kSame_deg) - kSame_deg;
            const bool opposite = std::abs(apart - 180.0) < kSame_deg;
            if (!opposite && apart > kSame_deg && ring.theta > kSame_deg) return std::nullopt;
            angles.push_back(opposite ? -ring.theta : ring.theta);
        }
    std::sort(angles.begin(), angles.end());
    return angles;
}

/// Whether most points lie on rings of even steps, and not on the lattice of a picture or anywhere.
bool AreEven(const std::vector<Ring>& rings, std::size_t directions) {
    if (rings.size() > 1 && directions < 3 * rings.size()) return false;
    std::size_t even = 0;
    std::size_t all = 0;
    for (const Ring& ring : rings)
        for (const double step : Steps(ring.phi)) {
            ++all;
            if (std::abs(step - ring.step) < 0.05 * ring.step) ++even;
        }
    return 4 * even >= 3 * all;
}

std::string Arrangement(const std::vector<Ring>& rings, std::size_t directions) {
    Numbers polar;
    for (const Ring& ring : rings) polar.push_back(ring.theta);
    if (rings.size() == 1)
        return fmt::format("  an azimuthal scan at polar angle {} degrees\n", Number(polar[0]));
    if (!AreEven(rings, directions))
        return fmt::format("  {} directions, not on even rings, polar angles {} to {} degrees\n", directions,
                           Number(polar.front()), Number(polar.back()));
    return fmt::format("  {} rings, polar angles {}\n", rings.size(), Progression(polar, "degrees"));
}

std::string Directions(const MeasuredPattern& pattern) {
    const std::vector<Ring> rings = Rings(pattern);
    const std::size_t points = pattern.theta.size();
    std::size_t directions = 0;
    for (const Ring& ring : rings) directions += ring.phi.size();
    std::string text;
    if (directions < points)
        text = fmt::format("  {} in a direction that occurred before\n", Points(points - directions));
    if (directions == 1)
        return text + fmt::format("  one direction: polar angle {}, azimuth {} degrees\n",
                                  Number(rings[0].theta), Number(rings[0].phi[0]));
    if (const std::optional<Numbers> scan = PolarScan(rings))
        return text + fmt::format("  a polar scan at azimuth {} degrees: {}\n",
                                  Number(rings.back().phi.front()), Progression(*scan, "degrees"));
    const Sector sector = SectorOf(rings);
    text += Arrangement(rings, directions);
    if (!AreEven(rings, directions)) return text;
    text += Azimuths(rings, sector);
    const std::vector<std::string> gaps = Gaps(rings, sector);
    if (!gaps.empty()) text += fmt::format("  gaps in azimuth: {}\n", gaps.size()) + Listed(gaps);
    return text + Symmetry(rings, points);
}

std::string ValuesOf(const MeasuredTable& table) {
    std::string text;
    for (const Quantity quantity : {kIntensity, kChi, kSigma, kEnergy, kAlpha})
        if (!table[quantity].empty())
            text += fmt::format("  {} {}{}\n", QuantityName(quantity), ValueRange(table[quantity]),
                                quantity == kEnergy  ? " eV"
                                : quantity == kAlpha ? " degrees"
                                                     : "");
    return text;
}

}  // namespace

std::string MeasuredSummary(const MeasuredTable& table, const ScanDirection& direction) {
    const std::size_t points = table.Points();
    std::string text = "measured table\n  " + table.form + "\n" + Listed(table.columns);
    text += fmt::format("  {}{}\n", Points(points),
                        table.leftOut > 0 ? fmt::format(", {} left out: empty or not a number", table.leftOut)
                                          : std::string());
    text += ValuesOf(table);
    try {
        return text + Directions(PatternOf(table, direction));
    } catch (const ZfError& error) {
        return text + "  to compare with it: " + error.message + "\n";
    }
}

}  // namespace qvre
