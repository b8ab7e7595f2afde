#include "crystal/ZfParser.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <utility>

namespace {

constexpr double kPi = 3.141592653589793;

std::string Repeat(const std::string& piece, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += piece;
    return text;
}

std::string ErrorOf(ZfParser& parser, const std::string& text) {
    try {
        parser.Calculate(text);
    } catch (const ZfError& error) {
        return error.message;
    } catch (const char* bare) {
        return std::string("bare:") + bare;
    }
    return "no error";
}

// The expected values are C++'s own reading of the expressions, but for the cases that say why.
TEST(ZfParser, Values) {
    const std::pair<const char*, double> cases[] = {
        {"1/2", 0.5},
        {"3/4", 0.75},
        {" 1\t+ 2 ", 3.0},
        {"1-2-3", -4.0},
        {"8/4/2", 1.0},
        {"2+3*4-6/2", 11.0},
        {"(2+3)*(4-6)/2", -5.0},
        {"((((7))))", 7.0},
        {"-2*3", -6.0},
        {"2*-3", -6.0},
        {"-(1+2)*+4", -12.0},
        {"2-3", -1.0},
        {"(2)-3", -1.0},
        {"7%3", 1.0},
        {"7.9%3.9", 1.0},
        {"-7%3", -1.0},
        {"-2147483648%-1", 0.0},
        {".5+1.25e2", 125.5},
        {"12E+2", 1200.0},
        {"5e-1", 0.5},
        {"5e+-1", 0.5},
        {"3e", 3.0},
        {"4.", 4.0},
        {"1)+5", 1.0},  // evaluation ends at a bracket that closes nothing
        {"1,5", 1.0},
        {"max(1,2)-1", 1.0},
        {"max(9,max(1,2))", 9.0},  // an inner call must not overwrite an outer argument
        {"pow(2,min(3,4))", 8.0},
        {"atan2(1,-1)/pi()", 0.75},
        {"radian(180)", kPi},
        {"degree(pi())", 180.0},
        {"fabs(-2)+sqrt(9)+ln(exp(1))+log10(1000)", 9.0},
        {"acos(2)+asin(-1.5)", 0.0},
        {"acos(-1)+asin(1)", 1.5 * kPi},
        {"step(0)+step(-0.1)", 1.0},
    };
    ZfParser parser;
    for (const auto& [text, value] : cases)
        EXPECT_DOUBLE_EQ(parser.Calculate(text), value) << '"' << text << '"';
}

TEST(ZfParser, FunctionsFollowTheirIdentities) {
    ZfParser parser;
    for (const char* text : {"sin(0.3)*sin(0.3)+cos(0.3)*cos(0.3)", "cosh(0.3)*cosh(0.3)-sinh(0.3)*sinh(0.3)",
                             "tan(0.3)*cos(0.3)/sin(0.3)", "tanh(0.3)*cosh(0.3)/sinh(0.3)", "tan(atan(1))"})
        EXPECT_NEAR(parser.Calculate(text), 1.0, 1e-15) << text;
    const double random = parser.Calculate("rand()");
    EXPECT_GE(random, 0.0);
    EXPECT_EQ(random, std::floor(random));
}

TEST(ZfParser, FunctionObjectsDescribeThemselves) {
    ZfParser parser;
    EXPECT_EQ(parser.functions.size(), 23u);
    EXPECT_EQ(parser.functions.at("pow")->Usage(), "pow(x,y): return x^y");
    for (const auto& [name, function] : parser.functions) {
        EXPECT_EQ(function->Usage().substr(0, name.size() + 1), name + "(");
        try {
            function->SetParameter(function->ParameterCount(), 1.0);
            ADD_FAILURE() << name;
        } catch (const ZfError& error) {
            EXPECT_EQ(error.message, "error: Parameter is too many.");
        }
    }
}

TEST(ZfParser, AParameterIsItsFirstLetter) {
    ZfParser parser;
    EXPECT_EQ(parser.Calculate("a-1"), -1.0);
    parser.parameters[15] = 2.0;
    parser.parameters[25] = 0.5;
    EXPECT_EQ(parser.Calculate("pi*z_1"), 1.0);
}

TEST(ZfParser, Errors) {
    const std::pair<const char*, const char*> cases[] = {
        {"1/0", "error: Divide by 0."},
        {"1%0", "error: Divide by 0."},
        {"1%0.5", "error: The right operand of % is cut to 0."},
        {"1%3e9", "error: An operand of % is out of the integer range."},
        {"-2147483649%2", "error: An operand of % is out of the integer range."},
        {"sqrt(-1)%2", "error: An operand of % is out of the integer range."},
        {"1%sqrt(-1)", "error: An operand of % is out of the integer range."},
        {"foo(1)", "error:unknown function:foo"},
        {"max(1)", "error: More parameter is required."},
        {"sin(1,2)", "error: bad function parameter:sin"},
        {"sin(1", "error: bad function parameter:sin"},
        {"pi(1)", "error: bad function parameter:pi"},
        {"(1+2", "error: right bracker ')' is required."},
        {"max((1,2),3)", "error: right bracker ')' is required."},
        {"1*", "error:a parameter for the oeprand:*"},
        {"/2", "error:a parameter for the oeprand:/"},
        {"-", "error:a parameter for the oeprand:unary -"},
        {"+", "error:a parameter for the oeprand:unary +"},
        {"Pi", "undefined parameter"},
        {"_a", "undefined parameter"},
        {"ln(0)", "ln(x): bad parameter x<=0"},
        {"log10(-1)", "log10(x): bad parameter x<=0"},
        {"", "error: An expression has no value."},
        {" ()", "error: An expression has no value."},
        {"sin()", "error: An expression has no value."},
        {"$", "bare:\x8e\x9a\x8b\xe5\x89\xf0\x90\xcd\x83\x47\x83\x89\x81\x5b\x81\x42"},
        {"1 .", "bare:\x8e\x9a\x8b\xe5\x89\xf0\x90\xcd\x83\x47\x83\x89\x81\x5b\x81\x42"},
        {"1\xe9", "bare:\x8e\x9a\x8b\xe5\x89\xf0\x90\xcd\x83\x47\x83\x89\x81\x5b\x81\x42"},
    };
    ZfParser parser;
    for (const auto& [text, message] : cases) {
        EXPECT_EQ(ErrorOf(parser, text), message) << '"' << text << '"';
        EXPECT_EQ(parser.Calculate("1+1"), 2.0) << "after " << text;
    }
    parser.lexer.names[kTokenTimes].clear();
    EXPECT_EQ(ErrorOf(parser, "1+1"), "Err");
}

TEST(ZfParser, LongAndDeepExpressions) {
    ZfParser parser;
    EXPECT_EQ(parser.Calculate(Repeat("1+", 200000) + "1"), 200001.0);
    EXPECT_EQ(parser.Calculate(Repeat("(", 200000) + "3" + Repeat(")", 200000)), 3.0);
    EXPECT_EQ(parser.Calculate(Repeat("fabs(", 1000) + "-3" + Repeat(")", 1000)), 3.0);
    EXPECT_EQ(ErrorOf(parser, Repeat("fabs(", 200000)), "error: Function calls are nested too deep:fabs");
    EXPECT_EQ(ErrorOf(parser, std::string(std::size_t{5} << 20, '1')), "error: The expression is too long.");
    EXPECT_EQ(parser.Calculate("1/1e" + std::string(10000, '9')), 0.0);
}

}  // namespace
