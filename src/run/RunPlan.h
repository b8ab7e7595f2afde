#pragma once

#include <functional>
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

/// What a run ends with: a pattern with the image of its direct wave, by file names in the result folder.
struct RunResult {
    /// Name of a file that every result has: with its label, "chi_300K.png".
    std::string FileName(const std::string& name) const;

    std::string label;  ///< the settings that tell it from the others; empty for a single one
    std::string image;
    std::string directImage;
    std::string key;          ///< fingerprint of the images
    double scanned = 0.0;     ///< value of the scanned setting
    double kinetic_eV = 0.0;  ///< inside; 0: several
};

/// What an energy scan ends with, by file names in the result folder.
struct EnergyResult {
    std::string ComparisonTable() const;
    std::string ComparisonPicture() const;

    std::string label;     ///< the settings that tell it from the others; empty for a single one
    std::string table;     ///< of its curves
    double scanned = 0.0;  ///< value of the scanned setting
};

struct RunComparison {
    CompareRequest request;  ///< without the images; no measured file: no comparison is asked for
    std::string difference;  ///< file name of the difference of each result; empty: none
};

/// Everything that a run does. The steps stand in an order in which each finds its inputs. A step that
/// several calculations share, such as the scattered wave under two temperatures, stands there once.
struct RunPlan {
    std::string title;
    std::string origin;       ///< where the plan comes from, for the log
    std::string remarks;      ///< what the user should know before it starts, in lines
    std::string folder;       ///< of the results
    std::string scannedName;  ///< "thermal.temperature"; empty without a scan
    std::vector<RunStep> steps;
    std::vector<RunResult> results;
    std::vector<EnergyResult> energyResults;  ///< in place of the results
    RunComparison comparison;
    std::vector<MeasuredEnergyCurve> measuredEnergies;  ///< that an energy scan is compared with
    EnergyComparisonSettings energyComparison;
};

/// What the comparison of a plan writes into the folder: the differences that are asked for, and of a scan
/// the table and the plot.
std::vector<std::string> ComparisonOutputs(const RunPlan& plan);

/// All file names in the folder that the plan writes, the record of the run aside.
std::vector<std::string> OutputsOf(const RunPlan& plan);

}  // namespace qvre
