#include "prepare/checks/InputCheck.h"

#include <algorithm>

#include "prepare/checks/PartChecks.h"

namespace qvre {

InputFindings CheckInputs(const InputSet& inputs) {
    InputFindings findings;
    CheckNumberWords(inputs, findings);
    const InputSet sound = CheckNumbers(inputs, findings);
    if (sound.cluster) CheckCluster(sound, findings);
    if (sound.waves) CheckWaves(sound, findings);
    if (sound.phaseShifts) CheckPhaseShifts(sound, findings);
    if (sound.cluster && sound.waves && sound.phaseShifts) CheckCylinders(sound, findings);
    if (sound.fluctuation) CheckFluctuation(sound, findings);
    return findings;
}

bool FitsTogether(const InputFindings& findings) {
    return std::none_of(findings.begin(), findings.end(),
                        [](const InputFinding& finding) { return finding.severity == Severity::kMisfit; });
}

}  // namespace qvre
