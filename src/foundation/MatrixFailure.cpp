#include <sstream>

#include "foundation/MatrixBase.h"

namespace qvre {

void ThrowMatrixOverRange(std::int64_t col, std::int64_t row, std::int32_t colSize, std::int32_t rowSize,
                          std::int32_t colBegin, std::int32_t rowBegin, bool fastReturn) {
    std::ostringstream text;
    text << "Matrix over range. access=(" << col << "," << row << ") size=(" << colSize << "," << rowSize
         << ") begin=(" << colBegin << "," << rowBegin << ")FastReturn=" << (fastReturn ? "true" : "false");
    throw ZfError(text.str());
}

void ThrowNotVector() {
    throw ZfError("This is not vector");
}

}  // namespace qvre
