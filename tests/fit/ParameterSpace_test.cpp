#include "fit/ParameterSpace.h"

#include <gtest/gtest.h>

#include "ErrorText.h"

namespace {

const FitParameter kSpacing = {"d12", 1.8, 1.5, 2.1, "angstrom"};

std::string Refusal(const std::vector<FitParameter>& parameters,
                    const std::vector<DerivedQuantity>& derived = {}) {
    return ErrorText([&] { ParameterSpace(parameters, derived); });
}

FitParameter With(FitParameter parameter, const std::function<void(FitParameter&)>& change) {
    change(parameter);
    return parameter;
}

TEST(ParameterSpace, RefusesByName) {
    const auto with = [](const std::function<void(FitParameter&)>& change) {
        return Refusal({With(kSpacing, change)});
    };
    EXPECT_EQ(Refusal({}), "there is no parameter to fit");
    EXPECT_EQ(Refusal({kSpacing, kSpacing}), "there are two parameters of the name d12");
    EXPECT_EQ(with([](auto& of) { of.lower = 2.1; }), "parameter d12: its bounds 2.1 to 2.1 leave no room");
    EXPECT_EQ(with([](auto& of) { of.start = 1.4; }),
              "parameter d12: its start 1.4 lies outside of its bounds 1.5 to 2.1");
    EXPECT_EQ(with([](auto& of) { of.upper = INFINITY; }), "parameter d12: its bounds have to be finite");
    EXPECT_EQ(with([](auto& of) {
                  of.restraint = {1.8, 0.0};
              }),
              "parameter d12: the +- of its restraint has to be a positive number");
    for (const std::string name : {"", "2d", "d 12", "sin", "pi", "d-1"})
        EXPECT_EQ(
            with([&](auto& of) { of.name = name; }),
            "\"" + name +
                "\" cannot name a parameter: use letters, digits and _, a letter first, and no name of a "
                "function");
}

TEST(ParameterSpace, FollowsDefinitionsInAnyOrder) {
    const ParameterSpace space(
        {kSpacing, {"h", 0.9, 0.0, 2.0, "angstrom"}},
        {{"twice", "2*bond", ""}, {"bond", "sqrt(h^2 + side^2)", ""}, {"side", "d12 - 0.6", ""}});
    const std::vector<double> values = space.Derived({1.8, 0.9});
    EXPECT_DOUBLE_EQ(values[0], 3.0);
    EXPECT_DOUBLE_EQ(values[1], 1.5);
    EXPECT_DOUBLE_EQ(values[2], 1.2);
}

// A parameter in nanometres beside a constant in angstrom.
TEST(ParameterSpace, CountsInTheUnitsOfExpressions) {
    std::vector<FitParameter> parameters = {{"d", 0.18, 0.1, 0.3, "nm"}};
    parameters[0].plain = 10.0;
    const ParameterSpace space(parameters, {{"sum", "d + a", "angstrom"}}, {{"a", 3.6}});
    EXPECT_DOUBLE_EQ(space.Derived({0.2})[0], 5.6);
}

TEST(ParameterSpace, RefusesUnknownAndCircularDefinitions) {
    EXPECT_EQ(Refusal({kSpacing}, {{"d23", "2*d13", ""}}),
              "d23 = 2*d13: there is no parameter d13 (there are d12, d23)");
    EXPECT_EQ(Refusal({kSpacing}, {{"x", "x + d12", ""}}), "the definition of x goes in a circle: x -> x");
    EXPECT_EQ(Refusal({kSpacing}, {{"w", "x", ""}, {"x", "d12 + y", ""}, {"y", "z", ""}, {"z", "x", ""}}),
              "the definition of x goes in a circle: x -> y -> z -> x");
}

TEST(ParameterSpace, MeetsItsBoundsToTheLastBit) {
    const ParameterSpace space({{"p", 0.3, 0.1, 0.7, ""}});
    EXPECT_EQ(space.FromUnit({1.0}), FitPoint{0.7});
    EXPECT_EQ(space.FromUnit({0.0}), FitPoint{0.1});
    for (const double p : {0.2, 0.3, 0.55}) EXPECT_DOUBLE_EQ(space.FromUnit(space.ToUnit({p}))[0], p);
}

}  // namespace
