#pragma once

#include <string>

#include "report/export/ImageTable.h"

namespace qvre {

/// Columns by the letters of the extension, such as .tpi or .etpi: e kinetic energy (eV), t theta, p phi
/// (degrees), i intensity, separated by tabs; a line a pixel on the map. Throws ZfError for letters that an
/// image has no numbers for, for an energy that the files of the run do not tell, and for an image with more
/// than I.
void WriteImageColumns(const ImageTable& table, const std::string& path);

/// Igor text (.itx) with the waves intensity, and intensity0 or background and chi where the table has them:
/// of a cylindrical map matrices over theta and phi, of others lists beside the waves theta and phi.
void WriteImageIgor(const ImageTable& table, const std::string& path);

}  // namespace qvre
