#include "run/RunPlan.h"

#include <filesystem>

namespace qvre {

std::string LabelledName(const std::string& label, const std::string& name) {
    if (label.empty()) return name;
    const std::filesystem::path file = name;
    return file.stem().string() + "_" + label + file.extension().string();
}

std::string EnergyResult::ComparisonTable() const {
    return "energy_comparison" + (label.empty() ? "" : "_" + label) + ".csv";
}

std::string EnergyResult::ComparisonPicture() const {
    return "energy_comparison" + (label.empty() ? "" : "_" + label) + ".png";
}

std::vector<std::string> ComparisonOutputs(const RunPlan& plan) {
    std::vector<std::string> names;
    if (plan.comparison.request.measured.empty() && plan.measuredEnergies.empty()) return names;
    if (!plan.scanned.empty()) names = {"scan.csv", "scan.png"};
    for (const EnergyResult& result : plan.energyResults) {
        names.push_back(result.ComparisonTable());
        names.push_back(result.ComparisonPicture());
    }
    if (plan.comparison.difference.empty()) return names;
    for (const RunResult& result : plan.results)
        names.push_back(LabelledName(result.label, plan.comparison.difference));
    return names;
}

std::vector<std::string> OutputsOf(const RunPlan& plan) {
    std::vector<std::string> names = ComparisonOutputs(plan);
    for (const RunStep& step : plan.steps)
        names.insert(names.end(), step.outputs.begin(), step.outputs.end());
    return names;
}

}  // namespace qvre
