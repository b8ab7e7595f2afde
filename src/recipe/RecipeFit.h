#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <toml++/toml.h>

#include "foundation/Words.h"

namespace qvre {

/// How the least misfit is looked for.
enum class FitSearch : std::uint8_t {
    kLocal,   ///< down the valley of the start
    kGlobal,  ///< points that fill the room between the bounds, an evolution strategy, then down the best
              ///< valleys
    kSobol    ///< points that fill the room evenly, then down the best valleys among them
};

template <>
inline constexpr auto kWords<FitSearch> = std::to_array<Word<FitSearch>>({{"local", FitSearch::kLocal},
                                                                          {"global", FitSearch::kGlobal},
                                                                          {"sobol", FitSearch::kSobol}});

/// How a valley is gone down.
enum class FitDescent : std::uint8_t { kGaussNewton, kDerivativeFree };

template <>
inline constexpr auto kWords<FitDescent> = std::to_array<Word<FitDescent>>(
    {{"gauss-newton", FitDescent::kGaussNewton}, {"bobyqa", FitDescent::kDerivativeFree}});

/// Whose phase shifts and radial integrals an evaluation takes.
enum class FitPhases : std::uint8_t {
    kKept,  ///< those of the start, and from the first minimum on those of it
    kEach   ///< its own
};

template <>
inline constexpr auto kWords<FitPhases> = std::to_array<Word<FitPhases>>({{"kept", FitPhases::kKept},
                                                                          {"each", FitPhases::kEach}});

/// Whether the calculated modulation is multiplied by the factor that fits best.
enum class FitAmplitude : std::uint8_t { kFree, kFixed };

template <>
inline constexpr auto kWords<FitAmplitude> =
    std::to_array<Word<FitAmplitude>>({{"free", FitAmplitude::kFree}, {"fixed", FitAmplitude::kFixed}});

/// A measurement that is made up to try a fit on: the section [fit.simulate]. A data set with a measured file
/// has its directions, another one a grid in a sector.
struct FitSimulation {
    std::map<std::string, double>
        truth;  ///< values of parameters in their units, fitted or not; the others are at their start
    std::map<std::string, double>
        shake;  ///< how far the start of a fitted one is from the truth; none: a quarter of the room
    double counts = 10000.0;    ///< mean of a direction; the noise is the square root of each
    double rotation_deg = 0.0;  ///< of the sample
    double thetaOffset_deg = 0.0;
    std::array<double, 2> theta_deg = {0.0, 70.0};
    std::array<double, 2> phi_deg = {0.0, 120.0};
    double step_deg = 3.0;
};

/// The section [fit].
struct RecipeFit {
    std::vector<std::string> parameters;         ///< in the order of the list; without a list all with bounds
    std::map<std::string, std::string> derived;  ///< expressions of parameters by their names
    FitSearch search = FitSearch::kLocal;
    FitDescent descent = FitDescent::kGaussNewton;
    FitPhases phases = FitPhases::kKept;
    FitAmplitude amplitude = FitAmplitude::kFree;
    std::uint64_t seed = 1;
    int evaluations = 0;  ///< most of them of the search, errors aside; 0: by the number of parameters
    int population = 0;   ///< of a generation; 0: by the number of parameters
    int minima = 4;       ///< valleys that are gone down after a search
    bool findsErrors = true;
    std::optional<double> independentData;  ///< N, where the user knows better
    FitSimulation simulation;
};

/// Throws ZfError with the line for words and numbers out of range, parameters that are unknown, expressions
/// or without bounds, and a fit of nothing.
RecipeFit ReadFit(const toml::table& recipe);

}  // namespace qvre
