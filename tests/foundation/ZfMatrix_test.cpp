#include "foundation/ZfMatrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

#include "ErrorText.h"
#include "foundation/Matrices.h"
#include "foundation/ZfFloatMatrix3D.h"

namespace {

ZfLDoubleMatrix Counting(int colSize, int rowSize) {
    ZfLDoubleMatrix m(colSize, rowSize);
    std::iota(m.Data(), m.Data() + m.Count(), 1.0);
    return m;
}

std::vector<double> Elements(const ZfLDoubleMatrix& m) {
    return {m.Data(), m.Data() + m.Count()};
}

}  // namespace

TEST(ZfMatrix, SizesThatFail) {
    const std::string creation = "matrix creation Parameter Error";
    const std::string allocation = "Matrix Parameter Error";
    ZfFloatMatrix m;
    EXPECT_EQ(ErrorText([&] { m.SetSize(-1, 3); }), allocation);
    EXPECT_EQ(ErrorText([&] { m.SetSize(-1, -1); }), creation);
    EXPECT_EQ(ErrorText([&] { m.SetVectorSize(-1); }), creation);
    EXPECT_EQ(ErrorText([] { ZfFloatMatrix(-1, 3); }), creation);
    EXPECT_EQ(ErrorText([] { ZfLongMatrix v(-1); }), creation);
    EXPECT_EQ(ErrorText([&] { m.SetSize(1 << 16, 1 << 16); }), "Cannot Get Memory");
    EXPECT_EQ(m.Count(), 0);
    ZfFloatMatrix3D block;
    EXPECT_EQ(ErrorText([&] { block.Allocate(1 << 11, 1 << 11, 1 << 11); }), "Cannot Get Memory");
    EXPECT_EQ(block.Count(), 0);
}

TEST(ZfMatrix, ColumnComesFirstAndFastest) {
    ZfLDoubleMatrix m = Counting(2, 3);
    m.ColBegin = -1;
    m.RowBegin = 5;
    EXPECT_EQ(m.At(0, 5), 2.0);
    EXPECT_EQ(m.At(-1, 6), 3.0);
    EXPECT_EQ(ErrorText([&] { m.At(-2, 5); }),
              "Matrix over range. access=(-2,5) size=(2,3) begin=(-1,5)FastReturn=false");
    m.FastReturn = true;
    EXPECT_EQ(ErrorText([&] { m.ValueAt(0, 8); }),
              "Matrix over range. access=(0,8) size=(2,3) begin=(-1,5)FastReturn=true");
}

TEST(ZfMatrix, EqualCountKeepsTheBlock) {
    ZfLDoubleMatrix m = Counting(2, 3);
    const double* block = m.Data();
    m.SetSize(3, 2);
    EXPECT_EQ(m.Data(), block);
    EXPECT_EQ(m.At(2, 1), 6.0);
    m.SetSize(0, 5);
    EXPECT_EQ(m.Data(), nullptr);
    EXPECT_EQ(m.RowSize, 5);
}

TEST(ZfMatrix, VectorsKnowAbsoluteIndices) {
    ZfLDoubleMatrix row = Counting(3, 1);
    row.ColBegin = -1;
    EXPECT_EQ(row.VectorAt(-1), 1.0);
    EXPECT_EQ(NormSquared(row), 14.0);
    ZfLDoubleMatrix one = Counting(1, 1);
    one.ColBegin = 7;
    one.RowBegin = 2;
    EXPECT_EQ(one.VectorBegin(), 2);
    EXPECT_EQ(one.VectorAt(2), 1.0);
    EXPECT_EQ(ZfLDoubleMatrix().VectorSize(), 0);
    for (const auto& [col, rows] : {std::pair(2, 2), std::pair(0, 5)})
        EXPECT_EQ(ErrorText([&] { ZfLDoubleMatrix(col, rows).VectorSize(); }), "This is not vector");
}

TEST(ZfMatrix, ATemporaryHandsOverItsStorage) {
    ZfLDoubleMatrix temporary = Counting(2, 2);
    temporary.ColBegin = 3;
    temporary.FastReturn = true;
    const double* block = temporary.Data();
    const ZfLDoubleMatrix taken(temporary);
    EXPECT_EQ(taken.Data(), block);
    EXPECT_EQ(taken.ColBegin, 3);
    EXPECT_FALSE(taken.FastReturn);
    EXPECT_EQ(temporary.Count(), 0);

    ZfLDoubleMatrix result;
    result = Scale(taken, 2.0);
    const ZfLDoubleMatrix copy(result);  // the assignment has cleared the flag: nothing is taken
    EXPECT_EQ(Elements(copy), (std::vector<double>{2, 4, 6, 8}));
    EXPECT_EQ(Elements(result), Elements(copy));
    EXPECT_EQ(result.ColBegin, 3);
    EXPECT_NE(result.Data(), copy.Data());
}

TEST(ZfMatrix, ElementwiseOperations) {
    const ZfLDoubleMatrix a = Counting(2, 1);
    ZfLDoubleMatrix shifted = Counting(2, 1);
    shifted.ColBegin = 1;
    ZfLDoubleMatrix zero = Counting(2, 1);
    zero.At(1, 0) = -0.0;
    EXPECT_EQ(Elements(DivideElements(a, zero)), (std::vector<double>{1.0, 0.0}));
    EXPECT_EQ(ErrorText([&] { DivideElements(a, shifted); }), "Matrix size is not same");
    EXPECT_EQ(ErrorText([&] { MultiplyElements(a, shifted); }), "Matrix is not same size");
    EXPECT_EQ(ErrorText([&] { Add(a, shifted); }), "+ operator Error");
    EXPECT_EQ(ErrorText([&] { Subtract(a, shifted); }), "- operator Error");
    EXPECT_EQ(ErrorText([&] { AddInPlace(shifted, a); }), "ColBegin is different");
}

TEST(ZfMatrix, Product) {
    // Rows (1 2 3) (4 5 6) times columns (1 3 5) (2 4 6).
    EXPECT_EQ(Elements(Multiply(Counting(3, 2), Counting(2, 3))), (std::vector<double>{22, 28, 49, 64}));
    EXPECT_EQ(ErrorText([] { Multiply(Counting(3, 2), Counting(3, 2)); }),
              "Matrix * operation: Size Illigal");
    ZfLDoubleMatrix b = Counting(3, 3);
    b.RowBegin = 1;
    EXPECT_EQ(ErrorText([&] { Multiply(Counting(3, 3), b); }), "Matrix * operation: begin err");
    b.RowBegin = 0;
    b.ColBegin = 1;  // the columns are counted from the begin of the left operand
    EXPECT_EQ(ErrorText([&] { Multiply(Counting(3, 3), b); }), " * operator Error");
}

TEST(ZfMatrix, EulerRotationTurnsAboutZYZ) {
    constexpr double kRounding = 1e-15;
    const double b = 1.1;
    const double c = -2.0;
    // The image of z has polar angle b and azimuth c, whatever the first turn.
    ZfLDoubleMatrix z;
    z = Multiply(EulerRotation(0.3, b, c), Vector3(0, 0, 1));
    EXPECT_NEAR(z.VectorAt(0), std::sin(b) * std::cos(c), kRounding);
    EXPECT_NEAR(z.VectorAt(1), std::sin(b) * std::sin(c), kRounding);
    EXPECT_NEAR(z.VectorAt(2), std::cos(b), kRounding);
}
