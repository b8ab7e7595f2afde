#include "structure/SeriesCalculation.h"

#include <filesystem>
#include <utility>

#include "recipe/MethodChoice.h"
#include "recipe/RecipeSettings.h"

namespace qvre {

namespace {

/// Of one evaluation, for a fit takes hundreds.
constexpr double kAffordableEvaluation_s = 4.0;

/// Refuses what a fit does not compare, at its line.
void CheckMembers(const std::vector<RecipeCase>& members) {
    RecipeTable recipe(&members.front().settings, "recipe");
    if (members.size() > 1 && recipe.Text("series", "sum") != "sum")
        recipe.Fail("series",
                    "a fit compares the sum of a series; give members that are apart as data sets, [[data]]");
}

}  // namespace

SeriesCalculation::SeriesCalculation(RecipeSource source, FitPhases phases)
    : source_(std::move(source)), place_{std::filesystem::path(source_.path).parent_path().string()} {
    const std::vector<RecipeGroup> groups = ExpandRecipe(source_);
    const std::vector<RecipeCase>& members = groups.front().cases;
    CheckMembers(members);
    const MethodChoice choice = ChooseMethod(groups, place_, kAffordableEvaluation_s);
    isSmooth_ = choice.method == kFull || choice.method == kSingle;
    methodText_ = choice.remark.empty() ? "method " + std::string(WordFor(choice.method)) : choice.remark;
    for (const RecipeCase& one : members)
        models_.push_back(
            std::make_unique<RecipeModel>(one, place_, choice.method, phases == FitPhases::kKept));
    const ImageRequest image =
        ReadImageSection(RecipeTable(&members.front().settings, "recipe").Section("image")).request;
    map_ = std::make_unique<MapDirections>(image.map, image.resolution);
}

std::vector<RecipeCase> SeriesCalculation::Members(const NamedValues& values) const {
    RecipeSource source = source_;
    source.values = values;
    return std::move(ExpandRecipe(source).front().cases);
}

std::vector<PreparedCase> SeriesCalculation::Inputs(const std::vector<RecipeCase>& members) const {
    std::vector<PreparedCase> inputs;
    for (std::size_t i = 0; i < members.size(); ++i) inputs.push_back(models_[i]->Prepare(members[i]));
    return inputs;
}

PatternImages SeriesCalculation::Images(const std::vector<RecipeCase>& members) const {
    CountedIntensity sum;
    double kinetic_eV = 0.0;
    for (std::size_t i = 0; i < members.size(); ++i) {
        const PreparedCase prepared = models_[i]->Prepare(members[i]);
        kinetic_eV = prepared.kinetic_eV;
        const CountedIntensity own = models_[i]->Intensity(prepared, map_->directions);
        sum.pattern.resize(own.pattern.size());
        sum.direct.resize(own.direct.size());
        for (std::size_t k = 0; k < own.pattern.size(); ++k) {
            sum.pattern[k] += own.pattern[k];
            sum.direct[k] += own.direct[k];
        }
    }
    return {map_->Image(std::move(sum.pattern)), map_->Image(std::move(sum.direct)), kinetic_eV};
}

}  // namespace qvre
