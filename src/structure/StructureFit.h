#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "fit/EvaluationTable.h"
#include "fit/FitProblem.h"
#include "fit/LocalFit.h"
#include "structure/FitPlan.h"
#include "structure/FitReport.h"
#include "structure/StructureObjective.h"

namespace qvre {

/// Carries out the fit of a plan: the search, the minimum, its errors and rivals.
class StructureFit : private FitObjective {
public:
    using Follow = std::function<void(const FitReport&)>;

    /// Keeps references. `follow` is called between evaluations, every second at the most.
    /// Throws ZfError as MakeDataSets.
    StructureFit(const FitPlan& plan, EvaluationTable& table, Follow follow = {});

    /// The start, as the first evaluation. Throws ZfError when it cannot be calculated.
    const Trial& EvaluateStart();

    /// All the rest; an interrupt ends it with what is known then.
    FitReport Run();

    /// How many evaluations are expected.
    static int Expected(const FitPlan& plan);

    /// As it is now: the phase shifts are those of the last minimum.
    const StructureObjective& Objective() const { return *objective_; }

private:
    std::vector<Evaluation> Evaluate(const std::vector<FitPoint>& points) override;
    double SolvedAlong() const override { return objective_->SolvedAlong(); }
    void Tell();
    LocalFit Descend(const FitPoint& start);
    void FillRoom(int count);
    bool Evolve(int count);
    std::vector<FitPoint> Starts();
    bool GoDown(const std::vector<FitPoint>& starts);
    bool Renew();
    bool FindErrors(bool mayMove);
    Trial BestRecord() const;
    void Count(FitReport& report) const;

    const FitPlan& plan_;
    std::shared_ptr<StructureObjective> objective_;
    EvaluationTable& table_;
    Follow follow_;
    FitProblem problem_;
    FitReport report_;
    LocalFitSettings settings_;
    std::vector<Trial> minima_;
    std::size_t renewed_ = 0;  // evaluations before the phase shifts were renewed
    std::chrono::steady_clock::time_point told_;
};

}  // namespace qvre
