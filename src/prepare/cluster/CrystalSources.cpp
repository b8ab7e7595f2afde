#include "prepare/cluster/CrystalSources.h"

#include <filesystem>

#include "foundation/FileReading.h"
#include "foundation/ZfError.h"
#include "prepare/cluster/CellCheck.h"

namespace qvre {

namespace {

CrystalCell ParseCell(const std::string& extension, const std::string& text) {
    if (extension == ".cif") return ParseCif(text);
    if (extension == ".cell") return ParseExpressionCell(text);
    return ParseXyzCell(text);
}

}  // namespace

CrystalCell LoadCell(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    if (extension != ".cif" && extension != ".cell" && extension != ".xyz" && extension != ".extxyz")
        throw ZfError("Cannot tell the format of " + path +
                      ": a crystal is a .cif, .xyz, .extxyz or .cell file");
    return Naming(path, [&] {
        CrystalCell cell = ParseCell(extension, ReadTextFile(path));
        CheckCell(cell);
        return cell;
    });
}

}  // namespace qvre
