#pragma once

#include <functional>

#include "structure/FitPlan.h"
#include "structure/FitReport.h"
#include "structure/StructureObjective.h"

namespace qvre {

/// Carries out the fit of a plan: the search, the minimum, its errors and rivals.
class StructureFit {
public:
    /// Keeps references. `table` may be null. `follow` is called when there is news, not too often.
    StructureFit(const FitPlan& plan, StructureObjective& objective, EvaluationTable* table,
                 std::function<void(const FitReport&)> follow = {});

    /// An interrupt ends it with what is known. Throws ZfError when the start cannot be calculated.
    FitReport Run();

    /// How many evaluations are expected.
    static int Expected(const FitPlan& plan);

private:
    void Search();
    void FindErrors();
    void FindLevels();
    void CheckConvergence();
    void Tell();
    LocalFit Descend(const FitPoint& start);
    std::vector<FitPoint> StartsOf(const std::vector<EvaluationRecord>& records) const;

    const FitPlan& plan_;
    StructureObjective& objective_;
    FitProblem problem_;
    EvaluationTable* table_;
    std::function<void(const FitReport&)> follow_;
    FitReport report_;
};

/// Completes a report with what its best structure looks like and how its patterns compare.
void DescribeBest(const FitPlan& plan, const StructureObjective& objective, FitReport& report);

}  // namespace qvre
