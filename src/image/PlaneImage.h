#pragma once

#include <string>

#include "foundation/Matrices.h"
#include "image/ZfDocData.h"

namespace qvre {

/// Saves one plane of a map, narrowed to 32-bit floats, as the document's only image. Throws ZfError when the
/// file cannot be written.
void SavePlane(ZfDocData& image, const ZfLDoubleMatrix& plane, const std::string& fileName);

}  // namespace qvre
