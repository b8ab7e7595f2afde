#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace qvre {

/// Writes an array of 64-bit floats as a NumPy file: format version 1.0, little-endian, C order (the last
/// index runs fastest). The format is that of NumPy Enhancement Proposal 1. Throws ZfError when the file
/// cannot be written or `values` does not fill the shape.
void WriteNumpyFile(const std::string& path, const std::vector<std::size_t>& shape,
                    const std::vector<double>& values);

}  // namespace qvre
