#include "foundation/MatrixBase.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

#include "ErrorText.h"
#include "foundation/Matrices.h"
#include "foundation/ZfFloatMatrix3D.h"

namespace {

ZfLDoubleMatrix Counting(int colSize, int rowSize, int colBegin = 0, int rowBegin = 0) {
    ZfLDoubleMatrix m(colSize, rowSize);
    m.ColBegin = colBegin;
    m.RowBegin = rowBegin;
    std::iota(m.Data(), m.Data() + m.Count(), 1.0);
    return m;
}

std::vector<double> Elements(const ZfLDoubleMatrix& m) {
    return {m.Data(), m.Data() + m.Count()};
}

}  // namespace

TEST(MatrixBase, SizesThatFail) {
    const std::string creation = "matrix creation Parameter Error";
    const std::string allocation = "Matrix Parameter Error";
    ZfFloatMatrix m;
    EXPECT_EQ(ErrorText([&] { m.SetSize(-1, 3); }), allocation);
    EXPECT_EQ(ErrorText([&] { m.SetSize(-1, -1); }), creation);
    EXPECT_EQ(ErrorText([&] { m.SetVectorSize(-1); }), creation);
    EXPECT_EQ(ErrorText([] { ZfFloatMatrix(-1, 3); }), creation);
    EXPECT_EQ(ErrorText([&] { m.SetSize(1 << 16, 1 << 16); }), "Cannot Get Memory");
    ZfFloatMatrix3D block;
    EXPECT_EQ(ErrorText([&] { block.Allocate(1 << 11, 1 << 11, 1 << 11); }), "Cannot Get Memory");
}

TEST(MatrixBase, ColumnComesFirstAndFastest) {
    ZfLDoubleMatrix m = Counting(2, 3, -1, 5);
    EXPECT_EQ(m.At(0, 5), 2.0);
    EXPECT_EQ(m.At(-1, 6), 3.0);
    m.FastReturn = true;
    EXPECT_EQ(ErrorText([&] { m.ValueAt(0, 8); }),
              "Matrix over range. access=(0,8) size=(2,3) begin=(-1,5)FastReturn=true");
}

TEST(MatrixBase, VectorsKnowAbsoluteIndices) {
    ZfLDoubleMatrix row = Counting(3, 1, -1);
    EXPECT_EQ(row.VectorAt(-1), 1.0);
    EXPECT_EQ(NormSquared(row), 14.0);
    ZfLDoubleMatrix one = Counting(1, 1, 7, 2);
    EXPECT_EQ(one.VectorAt(2), 1.0);
    EXPECT_EQ(ZfLDoubleMatrix().VectorSize(), 0);
    EXPECT_EQ(ErrorText([] { ZfLDoubleMatrix(2, 2).VectorSize(); }), "This is not vector");
    row.SetSize(0, 5);
    EXPECT_EQ(row.Data(), nullptr);
    EXPECT_EQ(row.RowSize, 5);
}

TEST(MatrixBase, ATemporaryHandsOverItsStorage) {
    ZfLDoubleMatrix temporary = Counting(2, 2, 3);
    temporary.FastReturn = true;
    const double* block = temporary.Data();
    const ZfLDoubleMatrix taken(temporary);
    EXPECT_EQ(taken.Data(), block);
    EXPECT_FALSE(taken.FastReturn);
    EXPECT_EQ(temporary.Count(), 0);

    ZfLDoubleMatrix result;
    result = Scale(taken, 2.0);
    const ZfLDoubleMatrix copy(result);  // the assignment has cleared the flag: nothing is taken
    EXPECT_EQ(Elements(copy), (std::vector<double>{2, 4, 6, 8}));
    EXPECT_EQ(Elements(result), Elements(copy));
    EXPECT_EQ(result.ColBegin, 3);
}

TEST(MatrixBase, Operations) {
    const ZfLDoubleMatrix a = Counting(2, 1);
    const ZfLDoubleMatrix shifted = Counting(2, 1, 1);
    ZfLDoubleMatrix zero = Counting(2, 1);
    zero.At(1, 0) = -0.0;
    EXPECT_EQ(Elements(DivideElements(a, zero)), (std::vector<double>{1.0, 0.0}));
    EXPECT_EQ(ErrorText([&] { DivideElements(a, shifted); }), "Matrix size is not same");
    EXPECT_EQ(ErrorText([&] { MultiplyElements(a, shifted); }), "Matrix is not same size");
    EXPECT_EQ(ErrorText([&] { Add(a, shifted); }), "+ operator Error");
    EXPECT_EQ(ErrorText([&] { Subtract(a, shifted); }), "- operator Error");
    // Rows (1 2 3) (4 5 6) times columns (1 3 5) (2 4 6).
    const ZfLDoubleMatrix b = Counting(3, 2);
    EXPECT_EQ(Elements(Multiply(b, Counting(2, 3))), (std::vector<double>{22, 28, 49, 64}));
    EXPECT_EQ(ErrorText([&] { Multiply(b, b); }), "Matrix * operation: Size Illigal");
    EXPECT_EQ(ErrorText([&] { Multiply(b, Counting(2, 3, 0, 1)); }), "Matrix * operation: begin err");
}

TEST(MatrixBase, EulerRotationTurnsAboutZYZ) {
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
