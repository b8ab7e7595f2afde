#include "structure/StructureObjective.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <exception>
#include <optional>
#include <utility>

#include "foundation/Interruption.h"
#include "run/RunProgress.h"

namespace qvre {

StructureObjective::StructureObjective(const ParameterSpace& space,
                                       std::vector<std::unique_ptr<FitDataSet>> sets)
    : space_(space), sets_(std::move(sets)) {}

NamedValues StructureObjective::ValuesAt(const FitPoint& point) const {
    NamedValues values;
    for (std::size_t i = 0; i < point.size(); ++i) values[space_.parameters[i].name] = point[i];
    return values;
}

double StructureObjective::IndependentData() const {
    double sum = 0.0;
    for (const auto& set : sets_)
        if (set->Weight() > 0.0) sum += set->IndependentData();
    return sum;
}

double StructureObjective::SolvedAlong() const {
    double sum = 0.0;
    for (const auto& set : sets_)
        if (set->Weight() > 0.0) sum += set->SolvedAlong();
    return sum;
}

void StructureObjective::KeepSettingsOf(const FitPoint& point) {
    for (const auto& set : sets_) set->KeepSettingOf(ValuesAt(point));
}

void StructureObjective::SearchSettings() {
    for (const auto& set : sets_) set->SearchSettings();
}

bool StructureObjective::HasSigmas() const {
    return std::all_of(sets_.begin(), sets_.end(), [](const auto& set) { return set->HasSigmas(); });
}

/// R of all is the mean over the independent data, as their sets are weighted.
Evaluation StructureObjective::EvaluateOne(const FitPoint& point) const {
    const auto start = std::chrono::steady_clock::now();
    const NamedValues values = ValuesAt(point);
    Evaluation evaluation;
    double weights = 0.0;
    try {
        for (const auto& set : sets_) {
            DataEvaluation own = set->Evaluate(values);
            const double weight = set->Weight() * set->IndependentData();
            weights += weight;
            evaluation.r += weight * own.r;
            evaluation.dataSetR.push_back(own.r);
            if (set->Weight() > 0.0)
                evaluation.residuals.insert(evaluation.residuals.end(), own.residuals.begin(),
                                            own.residuals.end());
        }
        evaluation.r /= weights;
    } catch (const Interruption&) {
        throw;
    } catch (const ZfError& error) {
        evaluation = {};
        evaluation.failure = error.message;
    }
    evaluation.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return evaluation;
}

std::vector<Evaluation> StructureObjective::Evaluate(const std::vector<FitPoint>& points) {
    std::vector<Evaluation> evaluations(points.size());
    std::exception_ptr stop;
    const auto count = static_cast<std::int64_t>(points.size());
#pragma omp parallel for schedule(dynamic) if (count > 1)
    for (std::int64_t k = 0; k < count; ++k) {
        const auto i = static_cast<std::size_t>(k);
        try {
            if (!InterruptRequest::IsPending()) evaluations[i] = EvaluateOne(points[i]);
        } catch (...) {
#pragma omp critical(qvre_objective)
            stop = std::current_exception();
        }
    }
    InterruptRequest::ThrowIfPending();
    if (stop) std::rethrow_exception(stop);
    return evaluations;
}

}  // namespace qvre
