#include "structure/BestStructure.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "foundation/Interruption.h"
#include "foundation/ZfError.h"
#include "prepare/phases/PhaseShiftFile.h"

namespace qvre {

namespace {

using Settings = std::vector<std::pair<std::string, RecipeTable::Scalar>>;

/// A calculation that is better in one respect.
struct Betterment {
    std::string what;
    Settings settings;
};

std::size_t LargestStructure(const Cluster& cluster) {
    std::size_t atoms = 0;
    for (const Structure& structure : cluster.structures) atoms = std::max(atoms, structure.atoms.size());
    return atoms;
}

std::vector<Betterment> BettermentsOf(const FitPlan& plan, const Cluster& cluster) {
    std::vector<Betterment> all;
    toml::table recipe = ParseRecipe(plan.text, plan.recipePath);
    const bool hasOwnPhases = recipe.at_path("phases.file").is_string();
    constexpr double kLarger = 1.5;
    const std::size_t atoms = LargestStructure(cluster);
    const auto more = static_cast<std::int64_t>(kLarger * static_cast<double>(atoms));
    if (const auto radius = recipe.at_path("cluster.radius").value<double>())
        all.push_back({fmt::format("clusters of {:.4g} instead of {:.4g} angstrom",
                                   std::cbrt(kLarger) * *radius, *radius),
                       {{"cluster.radius", std::cbrt(kLarger) * *radius}}});
    else if (!recipe.at_path("cluster.file").is_string() && !recipe.at_path("cluster.radius"))
        all.push_back({fmt::format("clusters of about {} instead of {} atoms", more, atoms),
                       {{"cluster.atoms", more}}});
    if (!hasOwnPhases) {
        const double cut_deg = recipe.at_path("phases.cut").value_or(PhaseShiftLimits().cut_deg);
        all.push_back(
            {fmt::format("phase shifts down to {:g} instead of {:g} degrees", 0.2 * cut_deg, cut_deg),
             {{"phases.cut", 0.2 * cut_deg}}});
    }
    return all;
}

/// R of the best structure by a better calculation; what the recipe does not take leaves it as it is.
double BetterR(const FitPlan& plan, const NamedValues& best, const FitPoint& point,
               const Settings& settings) {
    std::vector<std::unique_ptr<FitDataSet>> sets;
    for (std::size_t i = 0; i < plan.sources.size(); ++i) {
        RecipeSource source = plan.sources[i];
        source.values = best;
        source.settings.insert(source.settings.end(), settings.begin(), settings.end());
        sets.push_back(std::make_unique<FitDataSet>(source, plan.weights[i], plan.fit));
    }
    StructureObjective objective(plan.space, std::move(sets));
    const Evaluation evaluation = std::move(objective.Evaluate({point}).front());
    if (!evaluation.failure.empty()) throw ZfError(evaluation.failure);
    return evaluation.r;
}

}  // namespace

void DescribeBest(const FitPlan& plan, const StructureObjective& objective, FitReport& report) {
    const NamedValues best = objective.ValuesAt(report.best.point);
    report.data.clear();
    report.convergence.clear();
    for (const auto& set : objective.DataSets()) report.data.push_back(set->Fitted(best));
    PreparedCase inputs = std::move(objective.DataSets().front()->Inputs(best).front());
    report.cluster = std::move(inputs.inputs.cluster);
    report.cell = std::move(inputs.surface);
    for (const Betterment& one : BettermentsOf(plan, report.cluster)) {
        try {
            report.convergence.push_back({one.what, BetterR(plan, best, report.best.point, one.settings)});
        } catch (const Interruption&) {
            throw;
        } catch (const ZfError&) {  // NOLINT(bugprone-empty-catch): not every recipe has what is made better
        }
    }
}

}  // namespace qvre
