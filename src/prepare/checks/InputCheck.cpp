#include "prepare/checks/InputCheck.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "prepare/checks/InputChecks.h"

std::vector<InputFinding> CheckInputs(const InputSet& inputs) {
    std::vector<InputFinding> findings;
    if (inputs.cluster) CheckCluster(inputs, findings);
    if (inputs.waves) CheckWaves(inputs, findings);
    if (inputs.phaseShifts) CheckPhaseShifts(inputs, findings);
    if (inputs.fluctuation) CheckFluctuation(inputs, findings);
    return findings;
}

bool FitsTogether(const std::vector<InputFinding>& findings) {
    return std::none_of(findings.begin(), findings.end(),
                        [](const InputFinding& finding) { return finding.severity == Severity::Misfit; });
}

std::string StructurePrefix(const ZfCluster& cluster, std::size_t index) {
    if (cluster.structures.size() < 2) return {};
    std::string prefix = "structure ";
    return prefix + std::to_string(index) + ": ";
}

std::string ExactText(double value) {
    std::array<char, 32> buffer;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return {buffer.data(), end.ptr};
}
