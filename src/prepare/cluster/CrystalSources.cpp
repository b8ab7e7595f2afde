#include "prepare/cluster/CrystalSources.h"

#include <filesystem>

#include "foundation/ZfError.h"
#include "foundation/ZfFileQt.h"

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
    if (!std::filesystem::is_regular_file(path))
        throw ZfError("Cannot read " + path + ": there is no such file");
    ZfFileQt file(QString::fromStdString(path), "r");
    std::string text;
    file.ReadAll(text);
    try {
        return ParseCell(extension, text);
    } catch (const ZfError& error) {
        throw ZfError("Cannot read the crystal " + path + ": " + error.message);
    }
}
