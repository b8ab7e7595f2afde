#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Expression.h"

namespace qvre {

/// Values of the parameters, in the order and the units of their ParameterSpace.
using FitPoint = std::vector<double>;

/// Knowledge from elsewhere, "value +- sigma": a measurement more, with the residual (p - value)/sigma.
struct Restraint {
    double value = 0.0;
    double sigma = 0.0;
};

/// A number that a fit may change.
struct FitParameter {
    std::string name;
    double start = 0.0;
    double lower = 0.0;
    double upper = 0.0;
    std::string unit = {};  ///< for people; start, bounds and restraint are in it
    std::optional<Restraint> restraint = {};
    double scale = 0.0;  ///< a change that the data notice clearly; 0: a tenth of the room between the bounds
    double plain = 1.0;  ///< the unit in that of the expressions
};

/// What follows from the parameters, such as a bond length.
struct DerivedQuantity {
    std::string name;
    std::string expression;  ///< of parameters and other derived quantities, in any order
    std::string unit;
};

/// The parameters of a fit with what is derived from them. The searches work in the unit cube, where 0 is the
/// lower bound of a parameter and 1 the upper one.
class ParameterSpace {
public:
    /// Throws ZfError that names the parameter or quantity: bounds that leave no room, a start outside of
    /// them, a name given twice or no name, a restraint without a width; a derived quantity of an unknown
    /// one, or of itself.
    /// `knownNumbers` are others that expressions may name.
    explicit ParameterSpace(std::vector<FitParameter> fitParameters,
                            std::vector<DerivedQuantity> derivedQuantities = {},
                            std::map<std::string, double> knownNumbers = {});

    FitPoint Start() const;
    FitPoint ToUnit(const FitPoint& point) const;
    FitPoint FromUnit(const FitPoint& unit) const;  ///< 0 and 1 are the bounds to the last bit
    double UnitScale(std::size_t parameter) const;  ///< `scale` in the unit cube

    std::vector<double> RestraintResiduals(const FitPoint& point) const;

    /// The derived quantities, in their order; NaN where an expression has no value.
    std::vector<double> Derived(const FitPoint& point) const;

    std::vector<FitParameter> parameters;
    std::vector<DerivedQuantity> derived;
    std::map<std::string, double> constants;

private:
    struct Definition {
        Expression expression;
        std::vector<std::size_t> arguments;  // parameters first, derived quantities and constants behind
    };

    void CheckNames() const;
    void Define();
    void Order(std::size_t quantity, std::vector<std::size_t>& path);

    std::vector<Definition> definitions_;
    std::vector<std::size_t> order_;  // each derived quantity behind those that it is made of
};

}  // namespace qvre
