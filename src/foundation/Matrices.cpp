#include "foundation/Matrices.h"

#include <cmath>
#include <functional>

using namespace qvre;

namespace {

/// Runs an operation and reports any failure inside it under the operator's own text.
template <class Operation>
void ReportAs(const char* text, Operation operation) {
    try {
        operation();
    } catch (const ZfError&) {
        throw ZfError(text);
    }
}

/// Element-wise result of two matrices; the shape comes from `shape`.
template <class Matrix, class Function>
Matrix Combine(const Matrix& a, const Matrix& b, const Matrix& shape, Function function) {
    Matrix result;
    result.CopyShape(shape);
    std::transform(a.Data(), a.Data() + a.Count(), b.Data(), result.Data(), function);
    result.FastReturn = true;
    return result;
}

template <class Matrix>
Matrix AddAny(const Matrix& a, const Matrix& b) {
    Matrix result;
    ReportAs("+ operator Error", [&] {
        a.CheckSameShape(b);
        result = Combine(a, b, b, std::plus<>());
    });
    result.FastReturn = true;
    return result;
}

ZfLDoubleMatrix RotationZ(double t) {
    ZfLDoubleMatrix m(3, 3);
    m.Identity();
    m.At(0, 0) = std::cos(t);
    m.At(1, 0) = -std::sin(t);
    m.At(0, 1) = std::sin(t);
    m.At(1, 1) = std::cos(t);
    return m;
}

ZfLDoubleMatrix RotationY(double t) {
    ZfLDoubleMatrix m(3, 3);
    m.Identity();
    m.At(0, 0) = std::cos(t);
    m.At(2, 0) = std::sin(t);
    m.At(0, 2) = -std::sin(t);
    m.At(2, 2) = std::cos(t);
    return m;
}

}  // namespace

double NormSquared(const ZfLDoubleMatrix& vector) {
    vector.VectorSize();
    double sum = 0.0;
    for (std::int64_t i = 0; i < vector.Count(); ++i) sum += vector.Data()[i] * vector.Data()[i];
    return sum;
}

ZfLDoubleMatrix Scale(const ZfLDoubleMatrix& a, double factor) {
    ZfLDoubleMatrix result;
    ReportAs("* operator Error", [&] {
        result.CopyShape(a);
        std::transform(a.Data(), a.Data() + a.Count(), result.Data(),
                       [factor](double e) { return e * factor; });
    });
    result.FastReturn = true;
    return result;
}

ZfLDoubleMatrix Add(const ZfLDoubleMatrix& a, const ZfLDoubleMatrix& b) {
    return AddAny(a, b);
}

ZfLComplexMatrix Add(const ZfLComplexMatrix& a, const ZfLComplexMatrix& b) {
    return AddAny(a, b);
}

void AddInPlace(ZfLDoubleMatrix& a, const ZfLDoubleMatrix& b) {
    a.CheckSameShape(b);
    for (std::int64_t i = 0; i < a.Count(); ++i) a.Data()[i] += b.Data()[i];
}

ZfLDoubleMatrix Subtract(const ZfLDoubleMatrix& a, const ZfLDoubleMatrix& b) {
    ZfLDoubleMatrix result;
    ReportAs("- operator Error", [&] {
        a.CheckSameShape(b);
        result = Combine(a, b, b, std::minus<>());
    });
    result.FastReturn = true;
    return result;
}

ZfLDoubleMatrix Multiply(const ZfLDoubleMatrix& a, const ZfLDoubleMatrix& b) {
    if (a.ColSize != b.RowSize) throw ZfError("Matrix * operation: Size Illigal");
    if (a.ColBegin != b.RowBegin) throw ZfError("Matrix * operation: begin err");
    ZfLDoubleMatrix r;
    ReportAs(" * operator Error", [&] {
        r.SetSize(b.ColSize, a.RowSize);
        r.RowBegin = a.RowBegin;
        r.ColBegin = b.ColBegin;
        // The columns start at those of a: with a begin of its own in b, a column outside the result fails.
        for (std::int32_t col = a.ColBegin; col < r.ColBegin + r.ColSize; ++col) {
            for (std::int32_t row = r.RowBegin; row < r.RowBegin + r.RowSize; ++row) {
                double sum = 0.0;
                for (std::int32_t k = a.ColBegin; k < a.ColBegin + a.ColSize; ++k)
                    sum += a.ValueAt(k, row) * b.ValueAt(col, k);
                r.At(col, row) = sum;
            }
        }
    });
    r.FastReturn = true;
    return r;
}

ZfLDoubleMatrix MultiplyElements(const ZfLDoubleMatrix& a, const ZfLDoubleMatrix& b) {
    if (!a.SameShape(b)) throw ZfError("Matrix is not same size");
    return Combine(a, b, a, std::multiplies<>());
}

ZfLDoubleMatrix DivideElements(const ZfLDoubleMatrix& a, const ZfLDoubleMatrix& b) {
    if (!a.SameShape(b)) throw ZfError("Matrix size is not same");
    return Combine(a, b, a, [](double x, double y) { return y == 0.0 ? 0.0 : x / y; });
}

ZfLDoubleMatrix EulerRotation(double x1, double x2, double x3) {
    ZfLDoubleMatrix inner;
    inner = Multiply(RotationY(x2), RotationZ(x1));
    return Multiply(RotationZ(x3), inner);
}

namespace qvre {

ZfLDoubleMatrix Vector3(double x, double y, double z) {
    ZfLDoubleMatrix v(3);
    v.VectorAt(0) = x;
    v.VectorAt(1) = y;
    v.VectorAt(2) = z;
    return v;
}

}  // namespace qvre
