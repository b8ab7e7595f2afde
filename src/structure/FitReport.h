#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "fit/EvaluationTable.h"
#include "fit/FitErrors.h"
#include "fit/LocalFit.h"
#include "fit/ParameterSpace.h"
#include "fit/RLevel.h"
#include "fit/Trial.h"
#include "input/Cluster.h"
#include "prepare/cluster/CrystalCell.h"
#include "report/compare/PatternComparison.h"

namespace qvre {

/// One measured pattern beside what the best structure makes of it.
struct FittedData {
    std::string name;
    double weight = 1.0;           ///< of its misfit
    double independentData = 0.0;  ///< N of its R level
    CompareResult compared;        ///< chiA measured, chiB calculated, by direction
    double amplitude = 1.0;        ///< by which chiB is multiplied to fit chiA
    double r = 0.0;                ///< with this amplitude
};

/// How R changes at the best structure when the calculation becomes better.
struct ConvergenceCheck {
    std::string what;  ///< "clusters of 150 atoms instead of 100"
    double r = 0.0;
};

/// All that is known of a fit, at its end or while it runs.
struct FitReport {
    /// The noise error of a parameter, as far as there is one.
    std::optional<double> NoiseOf(std::size_t parameter) const {
        return noise ? noise->sigma[parameter] : std::nullopt;
    }

    /// Mean over the data, by which chi-squared is larger than without weights.
    double MeanWeight() const {
        double sum = 0.0;
        double count = 0.0;
        for (const FittedData& one : data) {
            const auto directions = static_cast<double>(one.compared.Directions());
            sum += one.weight * directions;
            count += directions;
        }
        return count > 0.0 ? sum / count : 1.0;
    }

    std::string title = {};
    std::string recipe = {};       ///< path
    std::string calculation = {};  ///< "FULL, phase shifts of the start"
    std::string search = {};       ///< "Gauss-Newton from the start"
    bool isRunning = false;
    FitStop stop = FitStop::kFailed;
    std::string detail = {};  ///< why it failed
    int evaluations = 0;
    double seconds = 0.0;  ///< of all evaluations, as one after the other

    ParameterSpace space;
    Trial start = {};
    Trial best = {};
    double independentData = 0.0;
    bool isSmooth = true;    ///< false for a method that jumps where the order of atoms changes
    bool hasSigmas = false;  ///< measured ones, so that chi-squared tells how well the model fits
    std::optional<NoiseErrors> noise = {};
    std::vector<RLevelError> levels = {};  ///< by parameter, as far as they are known
    std::vector<Trial> rivals = {};
    std::vector<ConvergenceCheck> convergence = {};

    std::vector<FittedData> data = {};
    CrystalCell cell = {};  ///< best surface, along its third axis; no atoms: not known
    Cluster cluster = {};   ///< of the best structure
    std::vector<EvaluationRecord> records = {};
};

}  // namespace qvre
