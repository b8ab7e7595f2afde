#include "crystal/ZfParser.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

#include "ErrorText.h"

namespace {

std::string Repeat(const std::string& piece, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += piece;
    return text;
}

std::string ErrorOf(ZfParser& parser, const std::string& text) {
    return ErrorText([&] { parser.Calculate(text); });
}

}  // namespace

TEST(ZfParser, Values) {
    // C++'s own reading, but that evaluation ends at a comma or bracket that closes nothing.
    const std::pair<double, std::vector<const char*>> cases[] = {
        {0.0, {"-2147483648%-1", "acos(2)+asin(-1.5)", "radian(180)-pi()", "step(-0.1)", "fabs(-2)-sqrt(4)"}},
        {1.0,
         {"8/4/2", "7.9%3.9", "max(1,2)-1", "1)+5", "1,5", "step(0)", "pi*z_1", "ln(exp(1))",
          "sin(0.3)*sin(0.3)+cos(0.3)*cos(0.3)", "cosh(0.3)*cosh(0.3)-sinh(0.3)*sinh(0.3)",
          "tan(0.3)*cos(0.3)/sin(0.3)", "tanh(0.3)*cosh(0.3)/sinh(0.3)", "tan(atan(1))"}},
        {-1.0, {"(2)-3", "-7%3", "a-1"}},
        {3.0,
         {" 1\t+ 2 ", "3e", ".3e+1", "30E-1", "4*atan2(1,-1)/pi()", "2*(acos(-1)+asin(1))/pi()",
          "log10(1000)"}},
        {-12.0, {"-(1+2)*+4", "4*-3", "1-2-3-8"}},
        {8.0, {"pow(2,min(3,4))", "2+3*4-6", "max(8,max(1,2))", "-(2+2)*(4-6)", "degree(pi())/22.5"}}};
    ZfParser parser;
    parser.parameters[15] = 2.0;  // p: a parameter is its first letter
    parser.parameters[25] = 0.5;
    for (const auto& [value, texts] : cases)
        for (const char* text : texts) EXPECT_NEAR(parser.Calculate(text), value, 1e-14) << text;
}

TEST(ZfParser, FunctionObjectsDescribeThemselves) {
    ZfParser parser;
    EXPECT_EQ(parser.functions.size(), 23u);
    EXPECT_EQ(parser.functions.at("pow")->Usage(), "pow(x,y): return x^y");
    for (const auto& entry : parser.functions) {
        ZfParserFuncBase& function = *entry.second;
        EXPECT_TRUE(function.Usage().starts_with(entry.first + "("));
        EXPECT_EQ(ErrorText([&] { function.SetParameter(function.ParameterCount(), 1.0); }),
                  "error: Parameter is too many.");
    }
}

TEST(ZfParser, Errors) {
    const std::pair<std::string, std::vector<const char*>> cases[] = {
        {"error: Divide by 0.", {"1/0", "1%0"}},
        {"error: The right operand of % is cut to 0.", {"1%0.5"}},
        {"error: An operand of % is out of the integer range.", {"-2147483649%2", "1%sqrt(-1)"}},
        {"error:unknown function:foo", {"foo(1)"}},
        {"error: More parameter is required.", {"max(1)"}},
        {"error: bad function parameter:sin", {"sin(1,2)", "sin(1"}},
        {"error: bad function parameter:pi", {"pi(1)"}},
        {"error: right bracker ')' is required.", {"max((1,2),3)", "(1+2"}},
        {"error:a parameter for the oeprand:*", {"1*"}},
        {"error:a parameter for the oeprand:/", {"/2"}},
        {"error:a parameter for the oeprand:unary -", {"-"}},
        {"undefined parameter", {"Pi", "_a"}},
        {"ln(x): bad parameter x<=0", {"ln(0)"}},
        {"log10(x): bad parameter x<=0", {"log10(-1)"}},
        {"error: An expression has no value.", {"", " ()", "sin()"}},
        {"bare: \x8e\x9a\x8b\xe5\x89\xf0\x90\xcd\x83\x47\x83\x89\x81\x5b\x81\x42", {"$", "1 .", "1\xe9"}}};
    ZfParser parser;
    for (const auto& [message, texts] : cases) {
        for (const char* text : texts) {
            EXPECT_EQ(ErrorOf(parser, text), message) << text;
            EXPECT_EQ(parser.Calculate("1+1"), 2.0) << "after " << text;
        }
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
}
