#pragma once

#include <string>

#include "report/export/ImageTable.h"

// The formats of an exported image; docs/export-and-compare.md has the layouts. They throw ZfError.

namespace qvre {

void WriteImageCsv(const ImageTable& table, const std::string& path);
void WriteImageNumpy(const ImageTable& table, const std::string& path);
void WriteImageHdf5(const ImageTable& table, const std::string& path);  ///< NeXus

}  // namespace qvre
