#include "structure/FitAlerts.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "foundation/Text.h"
#include "prepare/cluster/ShortBonds.h"
#include "structure/FitNumbers.h"

namespace qvre {

namespace {

using Alerts = std::vector<std::string>;

std::string WithUnit(double value, const std::string& unit) {
    return DoubleToText(value) + (unit.empty() ? "" : " " + unit);
}

void TellOfEnd(const FitReport& report, Alerts& alerts) {
    if (report.isRunning || IsConverged(report.stop)) return;
    if (report.stop == FitStop::kLimit)
        alerts.push_back(
            fmt::format("not converged: the limit of {} evaluations was reached; allow more and go on",
                        report.evaluations));
    else if (report.stop == FitStop::kInterrupted)
        alerts.emplace_back("not converged: the fit was interrupted; start it again to go on");
    else
        alerts.push_back(fmt::format("not converged: the fit failed{}{}", report.detail.empty() ? "" : ": ",
                                     report.detail));
}

void TellOfAgreement(const FitReport& report, Alerts& alerts) {
    constexpr double kNothingFits = 0.5;
    constexpr double kFarAbove = 2.0;  // squared scatter beside that of the counts
    const double r = report.best.evaluation.r;
    if (r > kNothingFits)
        alerts.push_back(
            fmt::format("R = {:.2f}: nothing fits, and the errors mean nothing; search globally, check "
                        "azimuth, energy and emitters, or try another model",
                        r));
    if (!report.isSmooth)
        alerts.emplace_back(
            "the method jumps where the order of the atoms changes, and differences over small steps mean "
            "little: "
            "fit with FULL or SINGLE");
    if (!report.hasSigmas || !report.noise || !(report.noise->degreesOfFreedom > 0.0)) return;
    const double reduced = report.noise->chiSquared / (report.noise->degreesOfFreedom * report.MeanWeight());
    if (reduced > kFarAbove)
        alerts.push_back(
            fmt::format("chi-squared per degree of freedom is {:.3g}: the model misses more than noise; go "
                        "by the R level, the noise errors are too small",
                        reduced));
}

void TellOfParameters(const FitReport& report, Alerts& alerts) {
    constexpr double kStrong = 3.0;  // sigmas
    constexpr double kRounding = 1e-9;
    for (std::size_t i = 0; i < report.space.parameters.size(); ++i) {
        const FitParameter& one = report.space.parameters[i];
        const double value = report.best.point[i];
        const double near = kRounding * (one.upper - one.lower);
        const bool isLow = value - one.lower <= near;
        if (isLow || one.upper - value <= near)
            alerts.push_back(fmt::format("{} is at its {} bound, {}: widen the bounds, or doubt the model",
                                         one.name, isLow ? "lower" : "upper", WithUnit(value, one.unit)));
        if (value < 0.0 && (one.unit == "K" || one.unit == "kelvin"))
            alerts.push_back(fmt::format("{} is negative, {}: give it a lower bound above 0", one.name,
                                         WithUnit(value, one.unit)));
        if (!one.restraint) continue;
        const double pull = (value - one.restraint->value) / one.restraint->sigma;
        if (std::abs(pull) > kStrong)
            alerts.push_back(
                fmt::format("{} is {:.1f} sigma from its restraint {} +- {}: data and restraint contradict "
                            "each other; one of them is wrong",
                            one.name, std::abs(pull), DoubleToText(one.restraint->value),
                            WithUnit(one.restraint->sigma, one.unit)));
    }
}

void TellOfCorrelations(const FitReport& report, Alerts& alerts) {
    constexpr double kStrong = 0.9;
    if (!report.noise) return;
    const auto& parameters = report.space.parameters;
    for (std::size_t i = 0; i < parameters.size(); ++i)
        for (std::size_t j = i + 1; j < parameters.size(); ++j)
            if (const double c = report.noise->Correlation(i, j); std::abs(c) > kStrong)
                alerts.push_back(
                    fmt::format("{} and {} are correlated by {:.2f}: hold one of them, or add data of "
                                "another energy or angle",
                                parameters[i].name, parameters[j].name, c));
}

void TellOfMinima(const FitReport& report, Alerts& alerts) {
    for (std::size_t i = 0; i < report.levels.size(); ++i)
        if (const auto& better = report.levels[i].better)
            alerts.push_back(fmt::format(
                "the profile of {} came to a better structure, R = {} at {} = {}: fit again from there",
                report.space.parameters[i].name, RText(better->evaluation.r), report.space.parameters[i].name,
                WithUnit(better->point[i], report.space.parameters[i].unit)));
    if (!report.rivals.empty())
        alerts.push_back(fmt::format(
            "{} within the R level: the structure is not determined; add data of "
            "another energy or angle, or knowledge that excludes {}",
            report.rivals.size() == 1 ? "1 rival lies" : fmt::format("{} rivals lie", report.rivals.size()),
            report.rivals.size() == 1 ? "it" : "them"));
}

void TellOfStructure(const FitReport& report, Alerts& alerts) {
    const std::vector<ShortBond> bonds = ShortBondsOf(report.cell);
    const auto shortest = std::min_element(
        bonds.begin(), bonds.end(),
        [](const ShortBond& a, const ShortBond& b) { return a.distance / a.usual < b.distance / b.usual; });
    if (shortest != bonds.end())
        alerts.push_back(
            fmt::format("{} and {} are {:.3f} angstrom apart, where {:.2f} is usual: no such bond is "
                        "known; set bounds that exclude it",
                        report.cell.atoms[shortest->first].element,
                        report.cell.atoms[shortest->second].element, shortest->distance, shortest->usual));
    for (const Structure& structure : report.cluster.structures) {
        const auto negative = std::find_if(
            structure.atoms.begin(), structure.atoms.end(),
            [](const ClusterAtom& atom) { return atom.U.Count() == 1 && atom.U.ValueAt(0, 0) < 0.0; });
        if (negative == structure.atoms.end()) continue;
        alerts.push_back(fmt::format(
            "the mean square displacement of {} is negative: give it a lower bound of 0", negative->atom));
        break;
    }
}

void TellOfConvergence(const FitReport& report, Alerts& alerts) {
    const double r = report.best.evaluation.r;
    const double rise = RLevel(r, report.independentData) - r;
    for (const ConvergenceCheck& check : report.convergence)
        if (std::abs(check.r - r) > rise)
            alerts.push_back(
                fmt::format("R is {} instead of {} with {}, a change beyond the R level: "
                            "calculate better and fit again",
                            RText(check.r), RText(r), check.what));
}

void TellOfFailures(const FitReport& report, Alerts& alerts) {
    const auto failed = static_cast<std::size_t>(
        std::count_if(report.records.begin(), report.records.end(),
                      [](const EvaluationRecord& one) { return !one.failure.empty(); }));
    if (2 * failed <= report.records.size()) return;
    const auto last = std::find_if(report.records.rbegin(), report.records.rend(),
                                   [](const EvaluationRecord& one) { return !one.failure.empty(); });
    alerts.push_back(fmt::format("{} of {} evaluations failed ({}): set bounds that exclude such structures",
                                 failed, report.records.size(), last->failure));
}

}  // namespace

std::vector<std::string> FitAlerts(const FitReport& report) {
    Alerts alerts;
    TellOfEnd(report, alerts);
    TellOfFailures(report, alerts);
    if (report.best.point.empty()) return alerts;
    TellOfAgreement(report, alerts);
    TellOfMinima(report, alerts);
    TellOfParameters(report, alerts);
    TellOfCorrelations(report, alerts);
    TellOfStructure(report, alerts);
    TellOfConvergence(report, alerts);
    return alerts;
}

}  // namespace qvre
