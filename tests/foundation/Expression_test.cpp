#include "foundation/Expression.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "ErrorText.h"

namespace {

/// With a = 3, b = -2, c = 0.5.
double Value(const std::string& text) {
    const std::map<std::string, double> values = {{"a", 3.0}, {"b", -2.0}, {"c", 0.5}};
    const Expression expression(text);
    std::vector<double> arguments;
    for (const std::string& name : expression.names) arguments.push_back(values.at(name));
    return expression.Evaluate(arguments);
}

TEST(Expression, IsWhatAlgebraSays) {
    const std::pair<const char*, double> cases[] = {{" 1 + 2*3 ", 7.0},
                                                    {"2 - 3 - 4", -5.0},
                                                    {"12/3/2", 2.0},
                                                    {"-a^2", -9.0},
                                                    {"2^-1", 0.5},
                                                    {"2**3**2", 512.0},
                                                    {"--a - -b", 1.0},
                                                    {"(a + b)*c", 0.5},
                                                    {"1e-3*a", 3e-3},
                                                    {"sqrt(a^2 + 16)", 5.0},
                                                    {"min(a, b)", -2.0},
                                                    {"atan2(c - c, b)", M_PI},
                                                    {"sin(radians(30))", 0.5},
                                                    {"degrees(pi)*c", 90.0},
                                                    {"max(a,b)-a*(b)", 9.0}};
    for (const auto& [text, value] : cases)
        EXPECT_NEAR(Value(text), value, 1e-15 * (1.0 + std::abs(value))) << text;
    EXPECT_EQ(Expression("b + a*b - sqrt(c)").names, (std::vector<std::string>{"b", "a", "c"}));
}

TEST(Expression, TellsWhatItDoesNotUnderstand) {
    const std::pair<std::string, std::string> cases[] = {
        {"", "expression \"\": expected a number or a name at its end"},
        {"2 +", "expression \"2 +\": expected a number or a name at its end"},
        {"2 a", "expression \"2 a\": expected an operator at \"a\""},
        {"(a", "expression \"(a\": expected \")\" at its end"},
        {"min(a)", "expression \"min(a)\": expected \",\" at \")\""},
        {"sqrt a", "expression \"sqrt a\": expected \"(\" at \"a\""},
        {"root(a)", "expression \"root(a)\": there is no function root"},
        {"sqrt(b)", "expression \"sqrt(b)\": its value is not finite"},
        {"1/(a-3)", "expression \"1/(a-3)\": its value is not finite"}};
    for (const auto& [text, message] : cases) EXPECT_EQ(ErrorText([&] { Value(text); }), message);
    // Nesting that would eat up the stack.
    for (const std::string sign : {"(", "2^", "sqrt(", "-("}) {
        std::string deep;
        for (int i = 0; i < 100000; ++i) deep += sign;
        EXPECT_NE(ErrorText([&] { Value(deep); }), "no failure") << sign;
    }
}

}  // namespace
