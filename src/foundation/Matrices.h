#pragma once

#include <complex>
#include <cstdint>

#include "foundation/MatrixBase.h"

// The members of the matrix family. ZfLDoubleMatrix and ZfDoubleMatrix hold the same elements under different
// names in files, so they are types of their own.

/// Geometry, tensors, tables, images in calculation.
class ZfLDoubleMatrix final : public qvre::MatrixBase<ZfLDoubleMatrix, double> {
    using MatrixBase::MatrixBase;
};

/// Image pixels and conversion.
class ZfDoubleMatrix final : public qvre::MatrixBase<ZfDoubleMatrix, double> {
    using MatrixBase::MatrixBase;
};

/// Stored patterns and image planes.
class ZfFloatMatrix final : public qvre::MatrixBase<ZfFloatMatrix, float> {
    using MatrixBase::MatrixBase;
};

/// Phase factors and amplitudes.
class ZfLComplexMatrix final : public qvre::MatrixBase<ZfLComplexMatrix, std::complex<double>> {
    using MatrixBase::MatrixBase;
};

/// Index tables.
class ZfLongMatrix final : public qvre::MatrixBase<ZfLongMatrix, std::int32_t> {
    using MatrixBase::MatrixBase;
};

/// Small index vectors.
class ZfCharMatrix final : public qvre::MatrixBase<ZfCharMatrix, std::int8_t> {
    using MatrixBase::MatrixBase;
};

/// Sum of the squares of a vector's elements, added in order. Throws ZfError for a matrix that is no vector.
double NormSquared(const ZfLDoubleMatrix& vector);

// Element-wise results have the shape of the operand, or of b; Multiply is the matrix product. All throw
// ZfError on shapes that do not fit.
ZfLDoubleMatrix Scale(const ZfLDoubleMatrix& a, double factor);
ZfLDoubleMatrix Add(const ZfLDoubleMatrix& a, const ZfLDoubleMatrix& b);
ZfLComplexMatrix Add(const ZfLComplexMatrix& a, const ZfLComplexMatrix& b);
void AddInPlace(ZfLDoubleMatrix& a, const ZfLDoubleMatrix& b);
ZfLDoubleMatrix Subtract(const ZfLDoubleMatrix& a, const ZfLDoubleMatrix& b);
ZfLDoubleMatrix Multiply(const ZfLDoubleMatrix& a, const ZfLDoubleMatrix& b);
ZfLDoubleMatrix MultiplyElements(const ZfLDoubleMatrix& a, const ZfLDoubleMatrix& b);
ZfLDoubleMatrix DivideElements(const ZfLDoubleMatrix& a,
                               const ZfLDoubleMatrix& b);  ///< 0 where b is exactly 0

/// Rz(x3) Ry(x2) Rz(x1), angles in radians, acting on column vectors.
ZfLDoubleMatrix EulerRotation(double x1, double x2, double x3);

namespace qvre {

/// The column vector (x, y, z).
ZfLDoubleMatrix Vector3(double x, double y, double z);

}  // namespace qvre
