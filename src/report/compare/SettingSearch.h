#pragma once

#include <functional>

#include "report/compare/SampleSetting.h"

namespace qvre {

/// What of a setting is looked for; the rest is given.
struct SearchedSettings {
    bool rotation = false;
    bool thetaOffset = false;
    bool tilt = false;

    bool Any() const { return rotation || thetaOffset || tilt; }
};

/// Offsets of the polar angle and tilts are looked for up to this size, degrees.
constexpr double kLargestOffset = 6.0;
constexpr double kLargestTilt = 6.0;

/// The larger the better; below or equal to 1. Called from several threads.
using Likeness = std::function<double(const SampleSetting&)>;

/// The setting of the largest likeness. `quick` looks at all settings on a grid, of 1 to 3 degrees, and
/// around the best of them; `full` decides about the last digits. Of settings that serve equally well it is
/// the one of the smallest rotation. The same for any number of threads.
SampleSetting BestSetting(const SampleSetting& given, const SearchedSettings& searched, const Likeness& quick,
                          const Likeness& full);

/// The setting of the largest likeness in the surroundings of `given`: a smooth function of what the likeness
/// depends on, as long as one peak stays the nearest.
SampleSetting SettingNear(const SampleSetting& given, const SearchedSettings& searched, const Likeness& full);

}  // namespace qvre
