#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "report/compare/EnergyComparison.h"
#include "report/compare/PatternComparison.h"

namespace qvre {

/// One piece of work of a run, which makes files of the result folder from files and settings.
struct RunStep {
    std::string name;                  ///< shown to the user
    std::string key;                   ///< fingerprint of everything that the outputs depend on
    std::vector<std::string> outputs;  ///< file names in the folder
    /// Leaves its outputs whole or not at all; returns what the user should know, in lines. Throws ZfError.
    std::function<std::string()> make;
    bool isOneOfMany = false;  ///< like others before: told in the log file alone
};

/// A setting or parameter that a scan varies.
struct ScannedSetting {
    std::string name;
    std::string unit = {};  ///< empty: that of the key
};

/// What a run ends with: a pattern with the image of its direct wave, by file names in the result folder.
struct RunResult {
    std::string label;  ///< the settings that tell it from the others; empty for a single one
    std::string image;
    std::string directImage;
    std::string key;                 ///< fingerprint of the images
    std::vector<double> scanned{};   ///< values of the scanned settings
    std::string member{};            ///< of a series that is kept apart
    double kinetic_eV = 0.0;         ///< inside; 0: several
    double largestKinetic_eV = 0.0;  ///< inside, of several
    std::vector<std::string> clusters{};
    std::optional<CompareRequest> comparison{};  ///< of its own, where a scan varies how it is compared
    std::string imageLabel{};                    ///< the part of the label that tells its images
};

/// What an energy scan ends with, by file names in the result folder.
struct EnergyResult {
    std::string ComparisonTable() const;
    std::string ComparisonPicture() const;

    std::string label;              ///< the settings that tell it from the others; empty for a single one
    std::string table;              ///< of its curves
    std::vector<double> scanned{};  ///< values of the scanned settings
    std::string member{};           ///< of a series that is kept apart
    EnergyComparisonSettings comparison{};
};

/// Name of a file of which every result has one: with its label, "chi_300K.png".
std::string LabelledName(const std::string& label, const std::string& name);

struct RunComparison {
    CompareRequest
        request;  ///< of the first result, without the images; no measured file: no comparison is asked for
    std::string difference;  ///< file name of the difference of each result; empty: none
};

/// Everything that a run does. The steps stand in an order in which each finds its inputs. A step that
/// several calculations share, such as the scattered wave under two temperatures, stands there once.
struct RunPlan {
    std::string title;
    std::string origin;                   ///< where the plan comes from, for the log
    std::string remarks;                  ///< what the user should know before it starts, in lines
    std::string folder;                   ///< of the results
    std::vector<ScannedSetting> scanned;  ///< one or two; empty without a scan
    std::vector<RunStep> steps;
    std::vector<RunResult> results;
    std::vector<EnergyResult> energyResults;  ///< in place of the results
    RunComparison comparison;
    std::vector<MeasuredEnergyCurve> measuredEnergies;  ///< that an energy scan is compared with
};

/// What the comparison of a plan writes into the folder: the differences that are asked for, and of a scan
/// the table and the plot.
std::vector<std::string> ComparisonOutputs(const RunPlan& plan);

/// All file names in the folder that the plan writes, the record of the run aside.
std::vector<std::string> OutputsOf(const RunPlan& plan);

}  // namespace qvre
