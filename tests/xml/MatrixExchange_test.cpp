#include <gtest/gtest.h>

#include <numeric>

#include "ErrorText.h"
#include "XmlText.h"
#include "xml/ZfBarnXml.h"

namespace {

template <class Member>
std::string Written(Member matrix, const std::string& format) {
    ZfBarnXml xml("w");
    xml.Matrix("m", matrix, format);
    return xml.Document();
}

template <class Member>
bool Read(const std::string& text, Member& matrix) {
    ZfBarnXml xml("r");
    xml.Parse(text);
    return xml.Matrix("m", matrix, "");
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

std::string TextMatrix(int colSize, int rowSize, const std::string& elements) {
    return Tag("m", Tag("zf_matrix", Shape(colSize, rowSize) + Tag("elements", elements)));
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
    EXPECT_EQ(back.At(0, 5), 2.0F);
    EXPECT_EQ(back.At(-1, 6), 3.0F);
    ZfLDoubleMatrix digits(1, 2);
    digits.At(0, 0) = -1.23456789e-300;
    digits.At(0, 1) = 0.0;
    EXPECT_NE(Written(digits, "t").find("\n-1.234568e-300,\n0.000000e+00,\n"), std::string::npos);
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
    ZfDoubleMatrix wrong = Counting<ZfDoubleMatrix>(1, 3);
    EXPECT_FALSE(Read(Written(l, "b"), wrong));
    EXPECT_EQ(wrong.RowSize, 3);
    EXPECT_TRUE(Read("<m><TDoubleMatrixBinary>" + ends + wide + "</TDoubleMatrixBinary></m>", wrong));
    EXPECT_EQ(wrong.At(1, 0), 2.0);
    ZfLDoubleMatrix other;
    EXPECT_FALSE(Read("<m><TDoubleMatrixBinary>" + ends + wide + "</TDoubleMatrixBinary></m>", other));
}

TEST(MatrixExchange, ElementsAreDelimitedByCommasAlone) {
    struct Case {
        int cols;
        int rows;
        std::string elements;
        const char* error;
    };
    const Case cases[] = {{2, 1, "1,2,3,", "Too manay data"},
                          {2, 1, "1,", "Data is short"},
                          {2, 1, "1,2.5", "no failure"},
                          {2, 1, "1,2", "Data is short"},  // the last byte is no value of its own
                          {2, 1, "\n1,\r\n\t2,\n", "no failure"},
                          {2, 1, "\xB1\x80 1, 2 ,", "no failure"},  // bytes from 128 on count as below 32
                          {2, 1, "x,,", "Data is short"},
                          {2, 1, "", "Data is short"},
                          {0, 0, "\n", "no failure"},
                          {2, 0, "1,", "Too manay data"},
                          {0, 2, "\n\n", "Data is short"},
                          {-1, 2, "1,", "Matrix Parameter Error"},
                          {-1, -1, "1,", "matrix creation Parameter Error"},
                          {2147483647, 2147483647, "1,2,", "Data is short"}};
    for (const Case& c : cases) {
        ZfLDoubleMatrix m;
        EXPECT_EQ(ErrorText([&] { Read(TextMatrix(c.cols, c.rows, c.elements), m); }), c.error) << c.elements;
    }
    ZfLDoubleMatrix m;
    Read(TextMatrix(2, 2, "1,2 \n3,x,1e999,"), m);
    EXPECT_EQ(m.At(1, 0), 2.0);  // "2 \n3" is one value
    EXPECT_EQ(m.At(0, 1), 0.0);
    EXPECT_EQ(m.At(1, 1), 0.0);
}

TEST(MatrixExchange, OldTextRepeatsTheLastValueOfAShortRow) {
    const std::string rows = Tag("elements", Tag("r", "1,2,3") + Tag("r", "4,5"));
    ZfDoubleMatrix m;
    ASSERT_TRUE(Read(Tag("m", Tag("LDoubleMatrix", Shape(3, 2) + rows)), m));
    EXPECT_EQ(m.At(2, 0), 3.0);
    EXPECT_EQ(m.At(2, 1), 5.0);
    EXPECT_NE(ErrorText([&] { Read(Tag("m", Tag("LDoubleMatrix", Shape(46340, 46340) + rows)), m); }),
              "no failure");
}

TEST(MatrixExchange, DamagedBinary) {
    const std::string two = Tag("base64", "00000010AAAAAAAAw/DAAAAAAAAAABAA");
    const auto read = [](const std::string& content, ZfLDoubleMatrix& m) {
        return Read(Tag("m", Tag("LDoubleMatrixBinary", content)), m);
    };
    ZfLDoubleMatrix m;
    EXPECT_TRUE(read(Shape(1, 1) + two, m));  // a longer block is cut
    EXPECT_EQ(m.At(0, 0), 1.0);
    EXPECT_FALSE(read(Shape(3, 1), m));
    EXPECT_EQ(m.At(0, 0), 1.0);
    EXPECT_FALSE(read(Shape(3, 1) + two, m));
    EXPECT_EQ(m.Count(), 1);
    EXPECT_EQ(m.At(0, 0), 0.0);
    EXPECT_TRUE(read(Shape(0, 3), m));
    EXPECT_EQ(m.RowSize, 0);
    EXPECT_EQ(ErrorText([&] { read(Shape(-1, 1) + two, m); }), "Matrix Parameter Error");
    EXPECT_EQ(ErrorText([&] { read(Shape(1, 1) + Tag("base64", "abc"), m); }), "Illigal Data");
    // "binary" wins over "base64", whatever the order in the file.
    EXPECT_TRUE(read(Shape(1, 1) + two + Tag("binary", "00000008000000000000"), m));
    EXPECT_EQ(m.At(0, 0), 0.0);
}
