#include <gtest/gtest.h>

#include <numeric>
#include <utility>
#include <vector>

#include "ErrorText.h"
#include "XmlText.h"

namespace {

template <class Member>
std::string Written(Member matrix, const std::string& format) {
    ZfBarnXml xml("w");
    xml.Matrix("m", matrix, format);
    return xml.Document();
}

template <class Member>
bool Read(const std::string& text, Member& matrix) {
    return XmlReader(text).Matrix("m", matrix, "");
}

template <class Member>
Member Counting(int colSize, int rowSize) {
    Member m(colSize, rowSize);
    std::iota(m.Data(), m.Data() + m.Count(), typename Member::Element{1});
    return m;
}

std::string Shape(int colSize, int rowSize) {
    return Tag("ColSize", std::to_string(colSize)) + Tag("RowSize", std::to_string(rowSize));
}

/// The failure of reading a text matrix, if any.
std::string TextError(ZfLDoubleMatrix& m, int colSize, int rowSize, const std::string& elements) {
    const std::string matrix = Tag("zf_matrix", Shape(colSize, rowSize) + Tag("elements", elements));
    return ErrorText([&] { Read(Tag("m", matrix), m); });
}

}  // namespace

TEST(MatrixExchange, TextToTheByte) {
    const std::string expected =
        "<m><zf_matrix><ColSize>2</ColSize>\n<ColBegin>-1</ColBegin>\n<RowSize>2</RowSize>\n"
        "<RowBegin>5</RowBegin>\n<elements>\n1.000000e+00,2.000000e+00,\n3.000000e+00,4.000000e+00,\n"
        "</elements>\n</zf_matrix>\n</m>\n";
    ZfLDoubleMatrix m = Counting<ZfLDoubleMatrix>(2, 2);
    m.ColBegin = -1;
    m.RowBegin = 5;
    EXPECT_EQ(Written(m, "t"), expected);
    ZfFloatMatrix back;
    ASSERT_TRUE(Read(expected, back));
    EXPECT_EQ(back.At(-1, 6), 3.0F);
    EXPECT_NE(Written(ZfLDoubleMatrix(), "t").find("<elements>\n</elements>"), std::string::npos);
}

TEST(MatrixExchange, EachMemberHasItsOwnName) {
    const std::string ends =
        "<ColSize>2</ColSize>\n<ColBegin>0</ColBegin>\n<RowSize>1</RowSize>\n<RowBegin>0</RowBegin>\n";
    // 1.0 and 2.0 as little-endian doubles, 1.0 and 2.0 as floats, by hand.
    const std::string wide = "<base64>00000010AAAAAAAAw/DAAAAAAAAAABAA</base64>\n";
    const std::string narrow = "<base64b>AACAPwAAAEA=</base64b>\n";
    const auto l = Counting<ZfLDoubleMatrix>(2, 1);
    const auto d = Counting<ZfDoubleMatrix>(2, 1);
    const auto f = Counting<ZfFloatMatrix>(2, 1);
    EXPECT_EQ(Written(l, "b"), "<m><LDoubleMatrixBinary>" + ends + wide + "</LDoubleMatrixBinary>\n</m>\n");
    EXPECT_EQ(Written(d, "b"), "<m><ZfDoubleMatrixBinary>" + ends + wide + "</ZfDoubleMatrixBinary>\n</m>\n");
    EXPECT_EQ(Written(f, "bb"),
              "<m><ZfFloatMatrixBinary>" + ends + narrow + "</ZfFloatMatrixBinary>\n</m>\n");
    EXPECT_EQ(ErrorText([&] { Written(f, "binary"); }), "Write format error");

    ZfFloatMatrix back;
    EXPECT_TRUE(Read(Written(f, "bb"), back));
    EXPECT_EQ(back.At(1, 0), 2.0F);
    ZfDoubleMatrix other = Counting<ZfDoubleMatrix>(1, 3);
    EXPECT_FALSE(Read(Written(l, "b"), other));
    EXPECT_EQ(other.RowSize, 3);
    const std::string older = "<m><TDoubleMatrixBinary>" + ends + wide + "</TDoubleMatrixBinary></m>";
    EXPECT_TRUE(Read(older, other));
    EXPECT_EQ(other.At(1, 0), 2.0);
    ZfLDoubleMatrix wrong;
    EXPECT_FALSE(Read(older, wrong));
}

TEST(MatrixExchange, ElementsAreDelimitedByCommasAlone) {
    ZfLDoubleMatrix m;
    // The last byte is no value of its own; bytes from 128 on count as below 32.
    const std::pair<const char*, std::vector<const char*>> cases[] = {
        {"no failure", {"1,2.5", "\n1,\r\n\t2,\n", "\xB1\x80 1, 2 ,"}},
        {"Too manay data", {"1,2,3,"}},
        {"Data is short", {"1,2", "x,,", ""}}};
    for (const auto& [error, texts] : cases)
        for (const char* text : texts) EXPECT_EQ(TextError(m, 2, 1, text), error) << text;
    EXPECT_EQ(TextError(m, 2, 0, "1,"), "Too manay data");
    EXPECT_EQ(TextError(m, -1, 2, "1,"), "Matrix Parameter Error");
    EXPECT_EQ(TextError(m, 2147483647, 2147483647, "1,2,"), "Data is short");
    EXPECT_EQ(TextError(m, 2, 2, "1,2 \n3,x,1e999,"), "no failure");
    EXPECT_EQ(m.At(1, 0), 2.0);  // "2 \n3" is one value
    EXPECT_EQ(m.At(0, 1), 0.0);
    EXPECT_EQ(m.At(1, 1), 0.0);
}

TEST(MatrixExchange, OldTextRepeatsTheLastValueOfAShortRow) {
    const std::string rows = Tag("elements", Tag("r", "1,2,3") + Tag("r", "4,5"));
    ZfDoubleMatrix m;
    ASSERT_TRUE(Read(Tag("m", Tag("LDoubleMatrix", Shape(3, 2) + rows)), m));
    EXPECT_EQ(m.At(2, 1), 5.0);
}

TEST(MatrixExchange, DamagedBinary) {
    const std::string two = Tag("base64", "00000010AAAAAAAAw/DAAAAAAAAAABAA");
    const auto read = [](const std::string& content, ZfLDoubleMatrix& m) {
        return Read(Tag("m", Tag("LDoubleMatrixBinary", content)), m);
    };
    ZfLDoubleMatrix m;
    EXPECT_TRUE(read(Shape(1, 1) + two, m));  // a longer block is cut
    EXPECT_EQ(m.At(0, 0), 1.0);
    EXPECT_FALSE(read(Shape(3, 1) + two, m));
    EXPECT_EQ(m.Count(), 1);
    EXPECT_EQ(m.At(0, 0), 0.0);
    EXPECT_EQ(ErrorText([&] { read(Shape(1, 1) + Tag("base64", "abc"), m); }), "Illigal Data");
    // "binary" wins over "base64", whatever the order in the file.
    EXPECT_TRUE(read(Shape(1, 1) + two + Tag("binary", "00000008000000000000"), m));
    EXPECT_EQ(m.At(0, 0), 0.0);
}
