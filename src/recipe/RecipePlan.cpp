#include "recipe/RecipePlan.h"

#include <filesystem>
#include <optional>
#include <utility>

#include "recipe/EnergySteps.h"
#include "recipe/ImageSteps.h"
#include "recipe/MethodChoice.h"
#include "recipe/RecipeCases.h"
#include "recipe/RecipeEnergies.h"
#include "recipe/RecipePictures.h"
#include "recipe/RecipeSettings.h"
#include "recipe/RecipeTable.h"
#include "recipe/RunDraft.h"

namespace qvre {

namespace {

/// What becomes of the members of a series.
enum class SeriesResult { kSum, kApart, kAsymmetry };

}  // namespace

template <>
inline constexpr auto kWords<SeriesResult> = std::to_array<Word<SeriesResult>>(
    {{"sum", SeriesResult::kSum}, {"apart", SeriesResult::kApart}, {"asymmetry", SeriesResult::kAsymmetry}});

namespace {

/// Makes the plan of one recipe.
class Planner {
public:
    Planner(const std::string& recipePath, const RecipeOptions& options)
        : draft_(recipePath, options), options_(options) {}

    RunPlan Plan();

private:
    void ReadGeneral(const RecipeCase& one);
    bool ReadComparison(const RecipeTable& section);
    std::string NothingCompared(bool hasSettings) const;
    void AddGroup(const RecipeGroup& group);
    void CompareAsScanned(RunResult& result, const RecipeGroup& group);
    void ClaimComparison();
    void CheckRefraction(const RecipeCase& one) const;

    RunDraft draft_;
    RecipeOptions options_;
    SeriesResult series_ = SeriesResult::kSum;
    std::vector<RecipePicture> pictures_;
    std::optional<RecipeEnergies> energies_;
};

RunPlan Planner::Plan() {
    const std::string text = ReadRecipe(draft_.recipePath);
    const std::vector<RecipeGroup> groups =
        ExpandRecipe({text, draft_.recipePath, options_.parameters, options_.dataSet});
    draft_.plan.origin = "recipe " + draft_.recipePath + "\n" + text;
    for (const RecipeVariation& variation : groups.front().cases.front().variations)
        if (variation.isScanned) draft_.plan.scanned.push_back({variation.Name(), variation.unit});
    ReadGeneral(groups.front().cases.front());
    const MethodChoice choice = ChooseMethod(groups, draft_.place);
    draft_.method = choice.method;
    if (!choice.remark.empty()) draft_.plan.remarks = choice.remark + "\n" + draft_.plan.remarks;
    for (const RecipeGroup& group : groups)
        if (energies_)
            AddEnergies(draft_, *energies_, series_ == SeriesResult::kApart, group);
        else
            AddGroup(group);
    ClaimComparison();
    CheckRefraction(groups.front().cases.front());
    for (const RunResult& result : draft_.plan.results)
        for (const RecipePicture& picture : pictures_) AddPicture(draft_, result, picture);
    return std::move(draft_.plan);
}

void Planner::ReadGeneral(const RecipeCase& one) {
    RecipeTable recipe(&one.settings, "recipe");
    draft_.plan.title = recipe.Text("title", std::filesystem::path(draft_.recipePath).stem().string());
    series_ = recipe.Word("series", SeriesResult::kSum);
    energies_ = ReadEnergies(recipe);
    for (const char* section : {"energies", "fit", "parameters", "scan"}) recipe.Has(section);
    const RecipeTable compare = recipe.Section("compare");
    if (!ReadComparison(compare)) draft_.plan.remarks = NothingCompared(compare.Exists());
    for (const char* section : {"cluster", "emission", "light", "phases", "thermal", "scattering", "image"})
        recipe.Section(section);
    pictures_ = ReadPictures(recipe);
    recipe.RefuseUnread();
}

/// Whether there is anything to compare with.
bool Planner::ReadComparison(const RecipeTable& section) {
    if (energies_) {
        EnergyCompareSection compare =
            ReadEnergyCompare(section, *energies_, draft_.place, options_.measuredFile);
        draft_.plan.measuredEnergies = std::move(compare.measured);
        return !draft_.plan.measuredEnergies.empty();
    }
    draft_.plan.comparison = ReadCompareSection(section, draft_.place, options_.measuredFile);
    return !draft_.plan.comparison.request.measured.empty();
}

/// A section or a scan without a measurement does less than its writer may expect.
std::string Planner::NothingCompared(bool hasSettings) const {
    if (hasSettings)
        return "note: [compare] names no measured pattern, nor does the command: nothing is compared";
    if (!draft_.plan.scanned.empty())
        return "note: a scan without a measured pattern tells no reliability factors: give [compare] "
               "measured, or the command a file to compare with";
    return {};
}

void Planner::AddGroup(const RecipeGroup& group) {
    std::vector<RunResult> members;
    for (const RecipeCase& one : group.cases) members.push_back(AddImages(draft_, one));
    if (series_ == SeriesResult::kAsymmetry) AddAsymmetry(draft_, members);
    if (members.size() > 1 && series_ == SeriesResult::kSum) members = {AddSum(draft_, members, group)};
    for (RunResult& result : members) {
        result.scanned = group.scanned;
        CompareAsScanned(result, group);
        draft_.plan.results.push_back(std::move(result));
    }
}

/// A scan of how results are compared gives each comparison its settings.
void Planner::CompareAsScanned(RunResult& result, const RecipeGroup& group) {
    const RecipeCase& one = group.cases.front();
    if (SuffixOf(one, {"compare"}).empty()) return;
    RecipeTable recipe(&one.settings, "recipe");
    result.comparison =
        ReadCompareSection(recipe.Section("compare"), draft_.place, options_.measuredFile).request;
}

void Planner::ClaimComparison() {
    for (const std::string& name : ComparisonOutputs(draft_.plan)) draft_.Claim(name, "comparison " + name);
}

/// Refraction needs one energy, and an inner potential below it.
void Planner::CheckRefraction(const RecipeCase& one) const {
    const Instrument& instrument = draft_.plan.comparison.request.instrument;
    if (!instrument.innerPotential || instrument.energy > 0.0) return;
    const RecipeTable section = RecipeTable(&one.settings, "recipe").Section("compare");
    for (const RunResult& result : draft_.plan.results) {
        if (result.kinetic_eV == 0.0)
            section.Fail("inner-potential",
                         "refracts one energy, and the calculation has several: give energy");
        qvre::CheckRefraction(section, instrument, result.kinetic_eV);
    }
}

}  // namespace

RunPlan PlanRecipe(const std::string& recipePath, const RecipeOptions& options) {
    return Planner(recipePath, options).Plan();
}

}  // namespace qvre
