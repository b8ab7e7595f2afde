#include "report/compare/SettingSearch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <vector>

#include "foundation/Constants.h"

namespace qvre {

namespace {

/// A setting as the search moves it: rotation, offset of the polar angle, and the tilt as a vector along the
/// azimuths 0 and 90, degrees.
enum Axis : std::size_t { kRotation, kOffset, kTiltX, kTiltY, kAxes };
using Point = std::array<double, kAxes>;

struct Candidate {
    Point at{};
    double likeness = 0.0;
};

// A pattern of n-fold symmetry has n best rotations, equal but for what lies between its pixels.
constexpr double kEqual = 1e-4;

constexpr double kEqualTurns = 1e-3;  // degrees

SampleSetting SettingAt(const Point& p) {
    return {p[kRotation], p[kOffset], std::hypot(p[kTiltX], p[kTiltY]),
            std::atan2(p[kTiltY], p[kTiltX]) / kDegree};
}

Point PointOf(const SampleSetting& setting) {
    return {setting.rotation, setting.thetaOffset, setting.tilt * std::cos(setting.tiltAzimuth * kDegree),
            setting.tilt * std::sin(setting.tiltAzimuth * kDegree)};
}

bool IsLess(const Candidate& a, const Candidate& b) {
    return a.likeness < b.likeness;
}

double Turn(const Candidate& candidate) {
    return std::abs(Canonical(SettingAt(candidate.at)).rotation);
}

bool IsAllowed(const Point& p, const SearchedSettings& searched) {
    return (!searched.thetaOffset || std::abs(p[kOffset]) <= kLargestOffset) &&
           (!searched.tilt || std::hypot(p[kTiltX], p[kTiltY]) <= kLargestTilt + 1e-9);
}

/// 0, step, -step, 2 step, ... up to and with `largest`.
std::vector<double> Steps(double step, double largest) {
    std::vector<double> values = {0.0};
    for (int k = 1; k * step <= largest + 1e-9; ++k) values.insert(values.end(), {k * step, -k * step});
    return values;
}

/// Patterns vary over some 5 degrees; the grid of several settings is the coarser the more there are.
std::vector<Point> Grid(const Point& given, const SearchedSettings& searched) {
    const double turn = searched.tilt ? 3.0 : searched.thetaOffset ? 2.0 : 1.0;
    const double shift = searched.tilt ? 2.0 : 1.0;
    const auto along = [&given](bool isSearched, Axis axis, double step, double largest) {
        return isSearched ? Steps(step, largest) : std::vector<double>{given[axis]};
    };
    std::vector<double> rotations = along(searched.rotation, kRotation, turn, 180.0);
    if (searched.rotation) rotations.pop_back();  // -180 is 180
    std::vector<Point> grid;
    for (const double rotation : rotations)
        for (const double offset : along(searched.thetaOffset, kOffset, shift, kLargestOffset))
            for (const double x : along(searched.tilt, kTiltX, 2.0, kLargestTilt))
                for (const double y : along(searched.tilt, kTiltY, 2.0, kLargestTilt))
                    if (IsAllowed({rotation, offset, x, y}, searched))
                        grid.push_back({rotation, offset, x, y});
    return grid;
}

bool AreNear(const Point& a, const Point& b) {
    constexpr double kReach = 4.5;  // degrees: steps of the grid around a peak belong to it
    const double turn = std::abs(a[kRotation] - b[kRotation]);
    if (std::min(turn, 360.0 - turn) > kReach) return false;
    return std::abs(a[kOffset] - b[kOffset]) <= kReach &&
           std::hypot(a[kTiltX] - b[kTiltX], a[kTiltY] - b[kTiltY]) <= kReach;
}

/// The best points of a grid that are not neighbours of each other. Of equal ones the first comes first.
std::vector<Candidate> BestPoints(const std::vector<Point>& grid, const std::vector<double>& likeness) {
    constexpr std::size_t kMost = 16;
    std::vector<std::size_t> order(grid.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&likeness](std::size_t i, std::size_t j) { return likeness[i] > likeness[j]; });
    std::vector<Candidate> best;
    for (const std::size_t i : order) {
        const auto isNear = [&](const Candidate& other) { return AreNear(grid[i], other.at); };
        if (std::none_of(best.begin(), best.end(), isNear)) best.push_back({grid[i], likeness[i]});
        if (best.size() == kMost) break;
    }
    return best;
}

/// Compass search (T. G. Kolda, R. M. Lewis, V. Torczon, SIAM Rev. 45, 385 (2003)): a step along each axis,
/// both ways, and half the step when none serves.
Candidate Climbed(Candidate start, const SearchedSettings& searched, const Likeness& likeness, double step) {
    constexpr double kLastStep = 1.0 / 8192.0;  // degrees
    constexpr double kBetter = 1e-13;
    const std::array<bool, kAxes> isFree = {searched.rotation, searched.thetaOffset, searched.tilt,
                                            searched.tilt};
    while (step >= kLastStep) {
        bool isBetter = false;
        for (std::size_t axis = 0; axis < kAxes; ++axis) {
            for (const double sign : {1.0, -1.0}) {
                Candidate next = start;
                next.at[axis] += sign * step;
                if (!isFree[axis] || !IsAllowed(next.at, searched)) continue;
                next.likeness = likeness(SettingAt(next.at));
                if (next.likeness <= start.likeness + kBetter) continue;
                start = next;
                isBetter = true;
                break;
            }
        }
        if (!isBetter) step /= 2.0;
    }
    return start;
}

void Climb(std::vector<Candidate>& candidates, const SearchedSettings& searched, const Likeness& likeness,
           double step) {
    const auto count = static_cast<std::int64_t>(candidates.size());
#pragma omp parallel for schedule(dynamic)
    for (std::int64_t k = 0; k < count; ++k) {
        Candidate& candidate = candidates[static_cast<std::size_t>(k)];
        candidate = Climbed(candidate, searched, likeness, step);
    }
}

/// The last digits of the candidates that may yet be the best.
void ClimbTheBest(std::vector<Candidate>& candidates, const SearchedSettings& searched,
                  const Likeness& full) {
    constexpr double kMayWin = 0.01;
    for (Candidate& candidate : candidates) candidate.likeness = full(SettingAt(candidate.at));
    const double best = std::max_element(candidates.begin(), candidates.end(), IsLess)->likeness;
    std::erase_if(candidates, [best](const Candidate& c) { return c.likeness < best - kMayWin; });
    Climb(candidates, searched, full, 0.125);
}

/// Of candidates that serve equally well the one of the smallest rotation.
Candidate Chosen(const std::vector<Candidate>& candidates) {
    Candidate chosen = *std::max_element(candidates.begin(), candidates.end(), IsLess);
    const double least = chosen.likeness - kEqual;
    for (const Candidate& candidate : candidates)
        if (candidate.likeness >= least && Turn(candidate) < Turn(chosen) - kEqualTurns) chosen = candidate;
    return chosen;
}

SampleSetting Told(const Candidate& found, const SampleSetting& given, const SearchedSettings& searched) {
    SampleSetting setting = SettingAt(found.at);
    if (!searched.tilt) {
        setting.tilt = given.tilt;
        setting.tiltAzimuth = given.tiltAzimuth;
    }
    return Canonical(setting);
}

}  // namespace

SampleSetting BestSetting(const SampleSetting& given, const SearchedSettings& searched, const Likeness& quick,
                          const Likeness& full) {
    const std::vector<Point> grid = Grid(PointOf(given), searched);
    std::vector<double> likeness(grid.size());
    const auto nodes = static_cast<std::int64_t>(grid.size());
#pragma omp parallel for schedule(static)
    for (std::int64_t k = 0; k < nodes; ++k) {
        const auto i = static_cast<std::size_t>(k);
        likeness[i] = quick(SettingAt(grid[i]));
    }
    std::vector<Candidate> candidates = BestPoints(grid, likeness);
    Climb(candidates, searched, quick, 1.0);
    ClimbTheBest(candidates, searched, full);
    return Told(Chosen(candidates), given, searched);
}

SampleSetting SettingNear(const SampleSetting& given, const SearchedSettings& searched,
                          const Likeness& full) {
    constexpr double kStep = 0.5;  // degrees
    const Candidate start = {PointOf(given), full(given)};
    return Told(Climbed(start, searched, full, kStep), given, searched);
}

}  // namespace qvre
