#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <type_traits>

#include "foundation/ZfError.h"

namespace qvre {

/// Failures of the matrix family; kept out of line so that no text is built on a good path.
[[noreturn]] void ThrowMatrixOverRange(std::int64_t col, std::int64_t row, std::int32_t colSize,
                                       std::int32_t rowSize, std::int32_t colBegin, std::int32_t rowBegin,
                                       bool fastReturn);
[[noreturn]] void ThrowNotVector();

/// What the members of the matrix family share; `Self` is the member, `Element` its element type.
///
/// Elements are addressed (col, row), column first and fastest in storage; each axis has a begin of its own
/// that travels with the data. A vector is a matrix with one size 1. Elements are not cleared on allocation.
///
/// A matrix with `FastReturn` set is a temporary: whoever copies it takes its storage and leaves it empty.
/// The operations that return a new matrix set the flag on their result. With copy elision a named object
/// that is initialised by such a call keeps the flag, and its first copy would empty it; so assign results to
/// an object that exists (`ZfLDoubleMatrix r; r = Scale(a, 2.0);`), which clears the flag.
template <class Self, class ElementType>
class MatrixBase {
public:
    using Element = ElementType;

    MatrixBase() = default;

    /// Throws ZfError if either size is negative.
    MatrixBase(std::int32_t colSize, std::int32_t rowSize) {
        if (colSize < 0 || rowSize < 0) throw ZfError("matrix creation Parameter Error");
        Allocate(colSize, rowSize);
    }

    /// A column vector.
    explicit MatrixBase(std::int32_t size) : MatrixBase(1, size) {}

    MatrixBase(const MatrixBase& source) { Take(source); }
    MatrixBase(MatrixBase&& source) noexcept { Steal(source); }
    virtual ~MatrixBase() = default;

    MatrixBase& operator=(const MatrixBase& source) {
        FastReturn = false;
        if (this == &source || (data_ && data_ == source.data_)) return *this;
        Take(source);
        return *this;
    }

    MatrixBase& operator=(MatrixBase&& source) noexcept {
        FastReturn = false;
        if (this != &source) Steal(source);
        return *this;
    }

    /// Low-level sizing. A block of equal element count is kept with its contents.
    void Allocate(std::int32_t colSize, std::int32_t rowSize) {
        if (colSize < 0 || rowSize < 0) throw ZfError("Matrix Parameter Error");
        const std::int64_t count = std::int64_t{colSize} * rowSize;
        if (data_ && count == Count()) {
            ColSize = colSize;
            RowSize = rowSize;
            return;
        }
        data_.reset();
        ColSize = colSize;
        RowSize = rowSize;
        if (count == 0) return;
        try {
            if (count > INT32_MAX) throw std::bad_alloc();
            data_ = std::make_unique_for_overwrite<Element[]>(static_cast<std::size_t>(count));
        } catch (const std::bad_alloc&) {
            ColSize = 0;
            RowSize = 0;
            throw ZfError("Cannot Get Memory");
        }
    }

    /// Sets the begins to 0. One negative size is Allocate's failure, two are this operation's own.
    void SetSize(std::int32_t colSize, std::int32_t rowSize) {
        if (colSize < 0 && rowSize < 0) throw ZfError("matrix creation Parameter Error");
        ColBegin = 0;
        RowBegin = 0;
        Allocate(colSize, rowSize);
    }

    void SetVectorSize(std::int32_t size) {
        if (size < 0) throw ZfError("matrix creation Parameter Error");
        SetSize(1, size);
    }

    void Clear() {
        if (data_)
            std::memset(static_cast<void*>(data_.get()), 0,
                        static_cast<std::size_t>(Count()) * sizeof(Element));
    }

    template <class Other>
    void CopyShape(const Other& other) {
        SetSize(other.ColSize, other.RowSize);
        ColBegin = other.ColBegin;
        RowBegin = other.RowBegin;
    }

    /// Takes shape and elements of another member of the family, each element converted.
    template <class Other>
    void Convert(const Other& other) {
        CopyShape(other);
        std::transform(other.Data(), other.Data() + other.Count(), Data(),
                       [](const typename Other::Element& e) { return static_cast<Element>(e); });
    }

    /// Position of (col, row) in the block; the only range check. Throws ZfError.
    std::int64_t Index(std::int32_t col, std::int32_t row) const {
        const std::int64_t dc = std::int64_t{col} - ColBegin;
        const std::int64_t dr = std::int64_t{row} - RowBegin;
        if (dc < 0 || dc >= ColSize || dr < 0 || dr >= RowSize)
            ThrowMatrixOverRange(col, row, ColSize, RowSize, ColBegin, RowBegin, FastReturn);
        return ColSize * dr + dc;
    }

    Element& At(std::int32_t col, std::int32_t row) {
        return data_[static_cast<std::size_t>(Index(col, row))];
    }
    Element ValueAt(std::int32_t col, std::int32_t row) const {
        return data_[static_cast<std::size_t>(Index(col, row))];
    }

    /// A vector's index is absolute: from VectorBegin() to VectorBegin() + VectorSize() - 1.
    std::int32_t VectorSize() const {
        if ((RowSize == 0 && ColSize == 0) || ColSize == 1) return RowSize;
        if (RowSize != 1) ThrowNotVector();
        return ColSize;
    }
    std::int32_t VectorBegin() const { return IsColumn() ? RowBegin : ColBegin; }
    Element& VectorAt(std::int32_t i) { return data_[static_cast<std::size_t>(VectorIndex(i))]; }
    Element VectorValueAt(std::int32_t i) const { return data_[static_cast<std::size_t>(VectorIndex(i))]; }
    void SetVectorAt(std::int32_t i, const Element& value) { VectorAt(i) = value; }

    bool SameShape(const MatrixBase& other) const {
        return ColSize == other.ColSize && RowSize == other.RowSize && ColBegin == other.ColBegin &&
               RowBegin == other.RowBegin;
    }
    void CheckSameShape(const MatrixBase& other) const {
        if (ColSize != other.ColSize || RowSize != other.RowSize)
            throw ZfError("ColSize or RowSize is different");
        if (ColBegin != other.ColBegin) throw ZfError("ColBegin is different");
        if (RowBegin != other.RowBegin) throw ZfError("RowBegin is different");
    }

    /// 1 on every (k, k) in range, 0 elsewhere.
    void Identity() {
        Clear();
        const std::int64_t first = std::max(ColBegin, RowBegin);
        const std::int64_t end = std::min(std::int64_t{ColBegin} + ColSize, std::int64_t{RowBegin} + RowSize);
        for (std::int64_t k = first; k < end; ++k)
            At(static_cast<std::int32_t>(k), static_cast<std::int32_t>(k)) = 1;
    }

    Self& ScaleInPlace(double factor) {
        std::transform(Data(), Data() + Count(), Data(),
                       [factor](const Element& e) { return static_cast<Element>(e * factor); });
        return static_cast<Self&>(*this);
    }

    /// The element block, row by row; null when there is no element.
    Element* Data() { return data_.get(); }
    const Element* Data() const { return data_.get(); }
    std::int64_t Count() const { return std::int64_t{ColSize} * RowSize; }

    // Mutable, since the copy of a const temporary takes its storage.
    mutable std::int32_t RowSize = 0;
    mutable std::int32_t ColSize = 0;
    std::int32_t RowBegin = 0;
    std::int32_t ColBegin = 0;
    bool FastReturn = false;

private:
    bool IsColumn() const {
        if ((RowSize == 0 && ColSize == 0) || ColSize == 1) return true;
        if (RowSize != 1) ThrowNotVector();
        return false;
    }
    std::int64_t VectorIndex(std::int32_t i) const {
        return IsColumn() ? Index(ColBegin, i) : Index(i, RowBegin);
    }

    void Take(const MatrixBase& source) {
        if (source.FastReturn) {
            Steal(source);
            return;
        }
        ColBegin = source.ColBegin;
        RowBegin = source.RowBegin;
        Allocate(source.ColSize, source.RowSize);
        std::copy(source.Data(), source.Data() + source.Count(), Data());
    }

    void Steal(const MatrixBase& source) noexcept {
        ColBegin = source.ColBegin;
        RowBegin = source.RowBegin;
        ColSize = source.ColSize;
        RowSize = source.RowSize;
        data_ = std::move(source.data_);
        source.ColSize = 0;
        source.RowSize = 0;
    }

    mutable std::unique_ptr<Element[]> data_;
};

}  // namespace qvre
