#include "prepare/cluster/CrystalSources.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>

#include "foundation/FileReading.h"
#include "foundation/ZfError.h"
#include "prepare/cluster/CellCheck.h"

namespace qvre {

namespace {

using Reader = CrystalCell (*)(const std::string&);

constexpr const char* kExpressionCell = ".cell";

struct Format {
    const char* extension;
    Reader read;
};

constexpr std::array<Format, 8> kFormats = {{{".cif", ParseCif},
                                             {".mmcif", ParseCif},
                                             {".mcif", ParseCif},
                                             {".xyz", ParseXyzCell},
                                             {".extxyz", ParseXyzCell},
                                             {".vasp", ParsePoscar},
                                             {".poscar", ParsePoscar},
                                             {".contcar", ParsePoscar}}};

std::string LowerExtension(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

Reader ReaderFor(const std::string& path) {
    const std::filesystem::path file(path);
    const std::string name = file.filename().string();
    if (name.starts_with("POSCAR") || name.starts_with("CONTCAR")) return ParsePoscar;
    for (const Format& format : kFormats)
        if (LowerExtension(path) == format.extension) return format.read;
    throw ZfError(
        "Cannot tell the format of " + path +
        ": a crystal is a .cif, .mmcif, .xyz, .extxyz, .vasp or .cell file, or named POSCAR or CONTCAR");
}

}  // namespace

bool IsExpressionCell(const std::string& path) {
    return LowerExtension(path) == kExpressionCell;
}

CrystalCell LoadCell(const std::string& path, const NamedConstants& constants) {
    const Reader read = IsExpressionCell(path) ? nullptr : ReaderFor(path);
    return Naming(path, [&] {
        const std::string text = ReadTextFile(path);
        CrystalCell cell = read ? read(text) : ParseExpressionCell(text, constants);
        CheckCell(cell);
        return cell;
    });
}

}  // namespace qvre
