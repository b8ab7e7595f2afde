#include "foundation/ZfFloatMatrix3D.h"

#include <algorithm>
#include <limits>
#include <new>

#include "foundation/ZfError.h"

namespace {

/// Element count of three sizes; a product beyond any memory counts as one that cannot be had.
std::size_t CheckedCount(std::int32_t colSize, std::int32_t rowSize, std::int32_t depthSize) {
    const std::int64_t plane = std::int64_t{colSize} * rowSize;
    if (depthSize > 0 && plane > std::numeric_limits<std::int32_t>::max() / depthSize) throw std::bad_alloc();
    return static_cast<std::size_t>(plane * depthSize);
}

}  // namespace

ZfFloatMatrix3D::ZfFloatMatrix3D(const ZfFloatMatrix3D& source) {
    *this = source;
}

ZfFloatMatrix3D& ZfFloatMatrix3D::operator=(const ZfFloatMatrix3D& source) {
    if (this == &source) return *this;
    Allocate(source.ColSize, source.RowSize, source.DepthSize);
    RowBegin = source.RowBegin;
    ColBegin = source.ColBegin;
    DepthBegin = source.DepthBegin;
    std::copy(source.Data(), source.Data() + (data_ ? source.Count() : 0), Data());
    return *this;
}

void ZfFloatMatrix3D::Allocate(std::int32_t colSize, std::int32_t rowSize, std::int32_t depthSize) {
    if (colSize < 0 || rowSize < 0 || depthSize < 0) throw ZfError("Matrix Parameter Error");
    data_.reset();
    ColSize = colSize;
    RowSize = rowSize;
    DepthSize = depthSize;
    if (colSize == 0 || rowSize == 0 || depthSize == 0) return;
    try {
        data_ = std::make_unique_for_overwrite<float[]>(CheckedCount(colSize, rowSize, depthSize));
    } catch (const std::bad_alloc&) {
        RowSize = 0;
        ColSize = 0;
        DepthSize = 0;
        throw ZfError("Cannot Get Memory");
    }
}
