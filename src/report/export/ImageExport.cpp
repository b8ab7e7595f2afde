#include "report/export/ImageExport.h"

#include <filesystem>

#include "foundation/ZfError.h"
#include "report/compare/ColumnNames.h"
#include "report/export/FieldTables.h"
#include "report/export/Hdf5Document.h"
#include "report/export/ImageTable.h"
#include "report/export/ImageWriters.h"

namespace qvre {

namespace {

using Writer = void (*)(const ImageTable&, const std::string&);

Writer WriterFor(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    if (extension == ".csv") return WriteImageCsv;
    if (extension == ".npy") return WriteImageNumpy;
    if (Hdf5Document::CanWrite(path)) return WriteImageHdf5;
    if (extension == ".itx") return WriteImageIgor;
    if (!ColumnLetters(path).empty()) return WriteImageColumns;
    throw ZfError("An image is written as .csv, .npy, .h5, .hdf5, .nxs, .itx, .tpi or .etpi, not as " + path);
}

}  // namespace

ExportSummary ExportImage(const ExportRequest& request) {
    const Writer write = WriterFor(request.output);
    const ImageTable table = MakeImageTable(request);
    ExportSummary summary{table.columns, table.rows, 0, {}, table.leftOut};
    for (const ImagePlane& plane : table.planes) summary.planes.push_back(plane.name);
    for (std::size_t i = 0; i < table.theta.size(); ++i) summary.pixels += table.OnMap(i) ? 1 : 0;
    write(table, request.output);
    return summary;
}

}  // namespace qvre
