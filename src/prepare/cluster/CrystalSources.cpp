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

struct Format {
    const char* extension;
    Reader read;
};

constexpr std::array<Format, 9> kFormats = {{{".cif", ParseCif},
                                             {".mmcif", ParseCif},
                                             {".mcif", ParseCif},
                                             {".cell", ParseExpressionCell},
                                             {".xyz", ParseXyzCell},
                                             {".extxyz", ParseXyzCell},
                                             {".vasp", ParsePoscar},
                                             {".poscar", ParsePoscar},
                                             {".contcar", ParsePoscar}}};

Reader ReaderFor(const std::string& path) {
    const std::filesystem::path file(path);
    const std::string name = file.filename().string();
    if (name.starts_with("POSCAR") || name.starts_with("CONTCAR")) return ParsePoscar;
    std::string extension = file.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const Format& format : kFormats)
        if (extension == format.extension) return format.read;
    throw ZfError(
        "Cannot tell the format of " + path +
        ": a crystal is a .cif, .mmcif, .xyz, .extxyz, .vasp or .cell file, or named POSCAR or CONTCAR");
}

}  // namespace

CrystalCell LoadCell(const std::string& path) {
    const Reader read = ReaderFor(path);
    return Naming(path, [&] {
        CrystalCell cell = read(ReadTextFile(path));
        CheckCell(cell);
        return cell;
    });
}

}  // namespace qvre
