#include "fit/ParameterSpace.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr double kScaleOfRange = 0.1;
constexpr std::size_t kMostQuantities = 1000;  // which bounds how deep derived quantities nest

void CheckParameter(const FitParameter& parameter) {
    const auto refuse = [&](const std::string& reason) {
        throw ZfError(fmt::format("parameter {}: {}", parameter.name, reason));
    };
    const double range = parameter.upper - parameter.lower;
    if (!std::isfinite(range)) refuse("its bounds have to be finite");
    if (range <= 0.0)
        refuse(fmt::format("its bounds {} to {} leave no room", parameter.lower, parameter.upper));
    if (!(parameter.start >= parameter.lower && parameter.start <= parameter.upper))
        refuse(fmt::format("its start {} lies outside of its bounds {} to {}", parameter.start,
                           parameter.lower, parameter.upper));
    if (!(parameter.scale >= 0.0 && std::isfinite(parameter.scale)))
        refuse("its scale has to be a positive number");
    if (!parameter.restraint) return;
    if (!std::isfinite(parameter.restraint->value)) refuse("the value of its restraint has to be finite");
    if (!(parameter.restraint->sigma > 0.0 && std::isfinite(parameter.restraint->sigma)))
        refuse("the +- of its restraint has to be a positive number");
}

double ValueOr(const Expression& expression, const std::vector<double>& arguments, double fallback) {
    try {
        return expression.Evaluate(arguments);
    } catch (const ZfError&) {
        return fallback;
    }
}

}  // namespace

ParameterSpace::ParameterSpace(std::vector<FitParameter> fitParameters,
                               std::vector<DerivedQuantity> derivedQuantities,
                               std::map<std::string, double> knownNumbers)
    : parameters(std::move(fitParameters)),
      derived(std::move(derivedQuantities)),
      constants(std::move(knownNumbers)) {
    if (parameters.empty()) throw ZfError("there is no parameter to fit");
    if (parameters.size() + derived.size() > kMostQuantities)
        throw ZfError("there are more than 1000 parameters and derived quantities");
    CheckNames();
    for (const FitParameter& parameter : parameters) CheckParameter(parameter);
    Define();
    std::vector<std::size_t> path;
    for (std::size_t i = 0; i < derived.size(); ++i) Order(i, path);
}

void ParameterSpace::CheckNames() const {
    std::set<std::string> names;
    const auto check = [&names](const std::string& name) {
        if (!IsQuantityName(name))
            throw ZfError(
                fmt::format("\"{}\" cannot name a parameter: use letters, digits and _, a letter "
                            "first, and no name of a function",
                            name));
        if (!names.insert(name).second)
            throw ZfError(fmt::format("there are two parameters of the name {}", name));
    };
    for (const FitParameter& parameter : parameters) check(parameter.name);
    for (const DerivedQuantity& quantity : derived) check(quantity.name);
}

void ParameterSpace::Define() {
    std::vector<std::string> known;
    for (const FitParameter& parameter : parameters) known.push_back(parameter.name);
    for (const DerivedQuantity& quantity : derived) known.push_back(quantity.name);
    for (const auto& [name, value] : constants) known.push_back(name);
    for (const DerivedQuantity& quantity : derived) {
        Definition definition{Expression(quantity.expression), {}};
        for (const std::string& name : definition.expression.names) {
            const auto found = std::find(known.begin(), known.end(), name);
            if (found == known.end())
                throw ZfError(fmt::format("{} = {}: there is no parameter {} (there are {})", quantity.name,
                                          quantity.expression, name, fmt::join(known, ", ")));
            definition.arguments.push_back(static_cast<std::size_t>(found - known.begin()));
        }
        definitions_.push_back(std::move(definition));
    }
}

/// Depth first: `path` leads to the quantity from the first that was asked for.
// NOLINTNEXTLINE(misc-no-recursion): as deep as there are derived quantities
void ParameterSpace::Order(std::size_t quantity, std::vector<std::size_t>& path) {
    if (std::find(order_.begin(), order_.end(), quantity) != order_.end()) return;
    const bool isCircle = std::find(path.begin(), path.end(), quantity) != path.end();
    path.push_back(quantity);
    if (isCircle) {
        std::vector<std::string> circle;
        for (auto at = std::find(path.begin(), path.end(), quantity); at != path.end(); ++at)
            circle.push_back(derived[*at].name);
        throw ZfError(fmt::format("the definition of {} goes in a circle: {}", derived[quantity].name,
                                  fmt::join(circle, " -> ")));
    }
    for (const std::size_t argument : definitions_[quantity].arguments)
        if (argument >= parameters.size() && argument < parameters.size() + derived.size())
            Order(argument - parameters.size(), path);
    path.pop_back();
    order_.push_back(quantity);
}

FitPoint ParameterSpace::Start() const {
    FitPoint start;
    for (const FitParameter& parameter : parameters) start.push_back(parameter.start);
    return start;
}

FitPoint ParameterSpace::ToUnit(const FitPoint& point) const {
    FitPoint unit(point.size());
    for (std::size_t i = 0; i < point.size(); ++i)
        unit[i] = (point[i] - parameters[i].lower) / (parameters[i].upper - parameters[i].lower);
    return unit;
}

FitPoint ParameterSpace::FromUnit(const FitPoint& unit) const {
    FitPoint point(unit.size());
    for (std::size_t i = 0; i < unit.size(); ++i) {
        const auto& [lower, upper] = std::pair(parameters[i].lower, parameters[i].upper);
        point[i] = unit[i] >= 1.0 ? upper : std::clamp(lower + unit[i] * (upper - lower), lower, upper);
    }
    return point;
}

double ParameterSpace::UnitScale(std::size_t parameter) const {
    const FitParameter& of = parameters[parameter];
    return of.scale > 0.0 ? std::min(of.scale / (of.upper - of.lower), 1.0) : kScaleOfRange;
}

std::vector<double> ParameterSpace::RestraintResiduals(const FitPoint& point) const {
    std::vector<double> residuals;
    for (std::size_t i = 0; i < point.size(); ++i)
        if (const auto& restraint = parameters[i].restraint)
            residuals.push_back((point[i] - restraint->value) / restraint->sigma);
    return residuals;
}

std::vector<double> ParameterSpace::Derived(const FitPoint& point) const {
    const std::size_t count = point.size();
    std::vector<double> known;  // as Define counts them
    for (std::size_t i = 0; i < count; ++i) known.push_back(point[i] * parameters[i].plain);
    known.resize(count + derived.size());
    for (const auto& [name, value] : constants) known.push_back(value);
    for (const std::size_t quantity : order_) {
        std::vector<double> arguments;
        for (const std::size_t argument : definitions_[quantity].arguments)
            arguments.push_back(known[argument]);
        known[count + quantity] = ValueOr(definitions_[quantity].expression, arguments, NAN);
    }
    const auto first = known.begin() + std::ssize(point);
    return {first, first + std::ssize(derived)};
}

}  // namespace qvre
