#include "run/RunChecks.h"

#include <vector>

#include "foundation/ProgramFile.h"
#include "foundation/ReplacedFile.h"
#include "foundation/ZfError.h"
#include "input/Fluctuation.h"
#include "prepare/checks/InputCheck.h"
#include "prepare/thermal/AtomicWeights.h"

namespace qvre {

namespace {

std::string FindingLine(const InputFinding& finding) {
    const char* word = finding.severity == Severity::kMisfit    ? "misfit: "
                       : finding.severity == Severity::kWarning ? "warning: "
                                                                : "note: ";
    return word + finding.what + (finding.remedy.empty() ? "" : "; " + finding.remedy) + "\n";
}

std::string ReportOf(const std::vector<InputFinding>& findings) {
    std::string text;
    for (const InputFinding& finding : findings) text += FindingLine(finding);
    return text.empty() ? "The inputs fit together.\n" : text;
}

}  // namespace

std::string CheckRun(const ScatteringRequest& inputs, const std::string& fluctuationFile,
                     const std::string& atomicWeightFile, const std::set<std::string>& displaced,
                     const std::string& reportFile) {
    const LoadedInputs loaded(inputs);
    Fluctuation fluctuation;
    ZfLoadFluctuation(fluctuation, fluctuationFile);
    const ZfDebye weights = LoadAtomicWeights(atomicWeightFile);
    const DebyeTable debye(ProgramFile("debye_temperatures.csv"));
    // SINGLE of a run is exact, as FULL is: neither has the limits of the ordered methods.
    const ScatteringMethod method = inputs.method == kSingle ? kFull : inputs.method;
    const std::vector<InputFinding> findings =
        CheckInputs({&loaded.cluster,
                     &loaded.waves,
                     &loaded.phaseShifts,
                     &fluctuation,
                     &weights,
                     method,
                     &debye,
                     {inputs.clusterFile, inputs.wavesFile, inputs.phaseShiftFile, fluctuationFile},
                     displaced});
    std::string report = ReportOf(findings);
    if (!FitsTogether(findings)) throw ZfError("the inputs do not fit together\n" + report);
    WriteWholeFile(reportFile, report);
    return report;
}

}  // namespace qvre
