#pragma once

#include <cstdint>
#include <memory>

/// A voxel block, used only as a whole: no access by index. Order of elements: column fastest, then row, then
/// depth.
class ZfFloatMatrix3D {
public:
    ZfFloatMatrix3D() = default;
    ZfFloatMatrix3D(const ZfFloatMatrix3D& source);
    ZfFloatMatrix3D(ZfFloatMatrix3D&& source) noexcept = default;
    ZfFloatMatrix3D& operator=(const ZfFloatMatrix3D& source);
    ZfFloatMatrix3D& operator=(ZfFloatMatrix3D&& source) noexcept = default;
    ~ZfFloatMatrix3D() = default;

    /// Drops the old block; elements are not cleared. Throws ZfError.
    void Allocate(std::int32_t colSize, std::int32_t rowSize, std::int32_t depthSize);

    float* Data() { return data_.get(); }
    const float* Data() const { return data_.get(); }
    std::int64_t Count() const { return std::int64_t{ColSize} * RowSize * DepthSize; }

    std::int32_t RowSize = 0;
    std::int32_t ColSize = 0;
    std::int32_t RowBegin = 0;
    std::int32_t ColBegin = 0;
    std::int32_t DepthSize = 0;
    std::int32_t DepthBegin = 0;

private:
    std::unique_ptr<float[]> data_;
};
