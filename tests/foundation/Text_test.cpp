#include "foundation/Text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>
#include <utility>

using namespace qvre;

TEST(Text, NumbersHaveSixDigits) {
    const std::pair<double, const char*> cases[] = {{1000.0, "1000"},    {1234567.0, "1.23457e+06"},
                                                    {999999.5, "1e+06"}, {0.000012345678, "1.23457e-05"},
                                                    {-0.0, "-0"},        {1e100, "1e+100"}};
    for (const auto& [value, text] : cases) EXPECT_EQ(DoubleToText(value), text);
    EXPECT_EQ(FloatToText(0.1F), "0.1");
    EXPECT_EQ(IntToText(-2147483648LL), "-2147483648");
}

TEST(Text, AnErrorTellsTheDigitsOfItsValue) {
    const std::tuple<double, double, const char*> cases[] = {
        {1.7724, 0.0081, "1.772 +- 0.008"}, {1.7724, 0.0183, "1.772 +- 0.018"},
        {-2.5, 0.0196, "-2.50 +- 0.02"},    {4.0862, 0.3, "4.1 +- 0.3"},
        {312.4, 17.3, "312 +- 17"},         {2.0, 0.0, "2 +- 0"}};
    for (const auto& [value, error, text] : cases) EXPECT_EQ(WithError(value, error), text);
}

TEST(Text, TakesTheNumberAtTheBeginning) {
    const std::pair<const char*, double> cases[] = {
        {"", 0.0},     {"abc", 0.0}, {"1.5abc", 1.5}, {" \t\n-2e3,", -2000.0}, {"+.5", 0.5}, {"5.", 5.0},
        {".", 0.0},    {"+-1", 0.0}, {"1e+", 0.0},    {"1.5eV", 0.0},          {"nan", 0.0}, {"0x10", 0.0},
        {"1e999", 0.0}};
    for (const auto& [text, value] : cases) EXPECT_EQ(TextToDouble(text), value) << '"' << text << '"';
    EXPECT_EQ(TextToFloat("1e39"), 0.0F);
    EXPECT_EQ(ScanDouble(" +1e"), 1.0);  // a scan leaves a broken exponent out
    EXPECT_TRUE(std::isinf(ScanDouble("inf")));
    const std::pair<const char*, int> integers[] = {
        {"", 0}, {" +7", 7}, {"-3.9", -3}, {"2147483647", 2147483647}, {"2147483648", 0}, {"x1", 0}};
    for (const auto& [text, value] : integers) EXPECT_EQ(TextToInt(text), value) << '"' << text << '"';
    EXPECT_EQ(TextToUnsigned("4294967295"), 4294967295U);
}

TEST(Text, NumberSplit) {
    // The length counts from the start of the text, so behind "xx" the number reaches into the rest.
    const std::tuple<const char*, bool, double, const char*> cases[] = {
        {"abc", false, 0.0, ""},   {"12.5eV", true, 12.5, "eV"}, {"x-1.5 y", true, -1.5, " y"},
        {"a1-2m", true, 1.0, "m"}, {"xx1eV", true, 0.0, "eV"},   {"1 to 5 eV", true, 1.0, " eV"},
        {"+", true, 0.0, "+"},     {".", true, 0.0, ""}};
    for (const auto& [text, found, number, unit] : cases) {
        double value = -1.0;
        std::string rest = "before";
        EXPECT_EQ(NumberSplit(text, value, rest), found) << text;
        EXPECT_EQ(value, number) << text;
        EXPECT_EQ(rest, unit) << text;
    }
}

TEST(Text, Splits) {
    using List = std::vector<std::string>;
    EXPECT_EQ(TokenSplit("Fe, 0.0\t1.0  a;b\vc\r\n"), (List{"Fe", "0.0", "1.0", "a;b\vc"}));
    EXPECT_EQ(LineSplit("\r\n\na b\n\n\rc"), (List{"a b", "c"}));
    EXPECT_EQ(LineSplit(""), List());
}
