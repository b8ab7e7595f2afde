#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "fit/FitErrors.h"
#include "fit/LocalFit.h"
#include "fit/Objectives.h"
#include "fit/RLevel.h"
#include "structure/FitReport.h"

/// A fit whose errors have closed forms. Two spacings of layers of the true values 1.772 and 2.041 angstrom:
/// two residuals are linear in them, with the errors 0.008 and 0.02 and the correlation asked for, and a
/// hundred are 1 whatever they are. So s^2 = 100/(102 - 2) = 1, R = (100 + q)/1000 with the quadratic form q
/// of the errors, and the R level of 200 independent data lies at q = 10: half widths of sqrt(10) errors.
class LinearFit {
public:
    static constexpr double kSigma12 = 0.008;
    static constexpr double kSigma23 = 0.02;

    explicit LinearFit(double correlation = 0.5, double lower12 = 1.2)
        : space_({{.name = "d12", .start = 1.9, .lower = lower12, .upper = 2.2, .unit = "angstrom"},
                  {.name = "d23",
                   .start = 2.1,
                   .lower = 1.8,
                   .upper = 2.3,
                   .unit = "angstrom",
                   .restraint = Restraint{2.03, 0.4}}},
                 {{"d13", "d12 + d23", "angstrom"}}),
          objective_(
              [correlation](const FitPoint& p) {
                  const double u = (p[0] - 1.772) / kSigma12;
                  const double v = (p[1] - 2.041) / kSigma23;
                  std::vector<double> residuals(100, 1.0);
                  residuals.push_back(u);
                  residuals.push_back((v - correlation * u) / std::sqrt(1.0 - correlation * correlation));
                  return residuals;
              },
              1000.0) {}

    FitReport Report() {
        FitProblem problem(space_, objective_);
        const LocalFit fit = FitByGaussNewton(problem, space_.Start());
        FitReport report{.title = "Ni(001) relaxed",
                         .recipe = "ni.toml",
                         .calculation = "FULL",
                         .search = "Gauss-Newton from the start",
                         .stop = fit.stop,
                         .evaluations = fit.evaluations,
                         .seconds = 12.0,
                         .space = space_,
                         .best = fit.best,
                         .independentData = 200.0};
        report.noise = NoiseErrorsAt(problem, fit.best);
        for (std::size_t i = 0; i < space_.parameters.size(); ++i)
            report.levels.push_back(RLevelErrorAt(problem, fit.best, i, report.independentData,
                                                  report.noise->sigma[i].value_or(0.0)));
        return report;
    }

private:
    ParameterSpace space_;
    FunctionObjective objective_;
};

inline EvaluationRecord FailedEvaluation(const std::string& reason) {
    EvaluationRecord record;
    record.failure = reason;
    return record;
}
