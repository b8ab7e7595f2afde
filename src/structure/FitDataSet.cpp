#include "structure/FitDataSet.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "foundation/ZfError.h"
#include "recipe/RecipeSettings.h"
#include "report/compare/LeastR.h"
#include "structure/FreeBackground.h"

namespace qvre {

namespace {

/// R of a good fit: without measured sigma its misfit is the number of independent data.
constexpr double kGoodR = 0.1;

constexpr const char* kOnlyName = "data";

}  // namespace

std::string NameOfData(const RecipeSource& source) {
    return source.dataSet.empty() ? kOnlyName : source.dataSet;
}

FitDataSet::FitDataSet(const RecipeSource& source, double weight, const RecipeFit& fit)
    : calculation_(source, fit.phases),
      name_(NameOfData(source)),
      weight_(weight),
      isAmplitudeFree_(fit.amplitude == FitAmplitude::kFree) {
    const std::vector<RecipeCase> members = calculation_.Members(source.values);
    const std::vector<PreparedCase> inputs = calculation_.Inputs(members);
    const auto comparison = ComparisonOf(members.front(), inputs.back().kinetic_eV);
    const Measurement& points = comparison->Points();
    double lMost = 0.0;
    for (const PreparedCase& prepared : inputs)
        lMost = std::max(lMost, LargestMomentum(prepared.inputs.cluster, prepared.kinetic_eV,
                                                comparison->Request().instrument.acceptance));
    independentData_ = std::min(static_cast<double>(points.theta.size()),
                                IndependentDirections(points.theta, points.phi, lMost));
    background_ = comparison->Request().background;
    searched_ = comparison->Request().searched;
    rings_ = static_cast<double>(PolarRings(points.theta).Count());
    measured_ = ModulationOf(points, background_);
    double unit = measured_.meanWeight;
    hasSigmas_ = !points.sigma.empty();
    if (!hasSigmas_) {
        double power = 0.0;
        for (std::size_t i = 0; i < measured_.chi.size(); ++i)
            power += measured_.weight[i] * measured_.chi[i] * measured_.chi[i];
        unit = independentData_ / (2.0 * kGoodR * power);
    }
    for (const double own : measured_.weight) variance_.push_back(1.0 / (unit * own));
}

std::shared_ptr<const MeasuredComparison> FitDataSet::ComparisonOf(const RecipeCase& one,
                                                                   double kinetic_eV) const {
    const std::string key =
        SectionText(one, "compare", false, calculation_.Place().folder) + fmt::format("{}", kinetic_eV);
    return comparison_.Get(key, [&] {
        RecipeTable section = RecipeTable(&one.settings, "recipe").Section("compare");
        CompareRequest request = ReadCompareSection(section, calculation_.Place(), {}).request;
        if (request.measured.empty())
            RecipeTable(&one.settings, "recipe")
                .Fail("compare", fmt::format("{}the fit needs a measured pattern: name its file as measured",
                                             name_ == kOnlyName ? "" : "data set " + name_ + ": "));
        if (request.instrument.innerPotential && request.instrument.energy == 0.0)
            request.instrument.energy = kinetic_eV;
        return MeasuredComparison(request);
    });
}

CompareResult FitDataSet::Compared(const NamedValues& values) const {
    const std::vector<RecipeCase> members = calculation_.Members(values);
    PatternImages images = calculation_.Images(members);
    const auto comparison = ComparisonOf(members.front(), images.kinetic_eV);
    // The measured points have no I0: the same background is taken from both then.
    std::optional<SphereImage> direct;
    if (!comparison->Request().background) direct = std::move(images.direct);
    return comparison->With(
        {std::move(images.intensity), std::move(direct), comparison->Request().instrument}, near_);
}

double FitDataSet::SolvedAlong() const {
    const double background = !background_ ? 0.0 : background_->degree ? *background_->degree + 1.0 : rings_;
    return background + (isAmplitudeFree_ ? 1.0 : 0.0) + (searched_.rotation ? 1.0 : 0.0) +
           (searched_.thetaOffset ? 1.0 : 0.0) + (searched_.tilt ? 2.0 : 0.0);
}

void FitDataSet::KeepSettingOf(const NamedValues& values) {
    SearchSettings();
    near_ = Compared(values).setting;
}

DataEvaluation FitDataSet::Evaluate(const NamedValues& values) const {
    const CompareResult compared = Compared(values);
    const Eigen::Index count = std::ssize(compared.chiA);
    Eigen::VectorXd root(count);
    for (Eigen::Index k = 0; k < count; ++k)
        root[k] = std::sqrt(weight_ / variance_[compared.number[static_cast<std::size_t>(k)]]);
    const FreeBackground background(compared.theta, compared.chiA, root, background_);
    using List = Eigen::Map<const Eigen::ArrayXd>;
    const Eigen::VectorXd a = background.WithoutIt(root.array() * List(compared.chiA.data(), count));
    const Eigen::VectorXd b = background.WithoutIt(root.array() * List(compared.chiB.data(), count));
    // The scale of R scaled makes the misfit 2 |a|^2 (1 - c), whatever the sign of the correlation c. That of
    // least squares, the same near c = 1, would vanish at c = 0, and the slope with it.
    const double factor = isAmplitudeFree_ ? a.norm() / b.norm() : 1.0;
    const Eigen::VectorXd difference = factor * b - a;

    DataEvaluation evaluation;
    evaluation.r = isAmplitudeFree_ ? compared.agreement.scaledR : compared.agreement.R;
    for (std::size_t i = 0; i < variance_.size();
         ++i)  // of directions that are left out, which is not to pay
        evaluation.residuals.push_back(measured_.chi[i] * std::sqrt(weight_ / variance_[i]));
    for (Eigen::Index k = 0; k < count; ++k)
        evaluation.residuals[compared.number[static_cast<std::size_t>(k)]] = difference[k];
    return evaluation;
}

FittedData FitDataSet::Fitted(const NamedValues& values) const {
    FittedData fitted;
    fitted.name = name_;
    fitted.weight = weight_;
    fitted.independentData = independentData_;
    fitted.compared = Compared(values);
    fitted.amplitude = isAmplitudeFree_ ? fitted.compared.agreement.scale : 1.0;
    fitted.r = isAmplitudeFree_ ? fitted.compared.agreement.scaledR : fitted.compared.agreement.R;
    return fitted;
}

}  // namespace qvre
