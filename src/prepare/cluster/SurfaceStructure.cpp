#include "prepare/cluster/SurfaceStructure.h"

#include <fmt/format.h>

#include <cmath>
#include <filesystem>
#include <sstream>

#include "foundation/FileReading.h"
#include "foundation/StrictNumber.h"
#include "foundation/ZfError.h"
#include "input/ZfAtomName.h"

namespace qvre {

namespace {

std::vector<std::string> Fields(const std::string& text, char separator) {
    std::vector<std::string> fields;
    std::istringstream stream(text);
    std::string field;
    while (std::getline(stream, field, separator)) {
        field.erase(0, field.find_first_not_of(' '));
        field.erase(field.find_last_not_of(' ') + 1);
        fields.push_back(field);
    }
    return fields;
}

bool TakeEnd(std::string& text, const std::string& end) {
    if (!text.ends_with(end)) return false;
    text.erase(text.size() - end.size());
    text.erase(text.find_last_not_of(' ') + 1);
    return true;
}

}  // namespace

std::vector<MoleculeAtom> LoadMolecule(const std::string& path) {
    return Naming(path, [&] { return ParseXyzMolecule(ReadTextFile(path)); });
}

LayerSpacing ParseLayerSpacing(const std::string& text) {
    std::string number = text;
    const bool isPercent = TakeEnd(number, "percent") || TakeEnd(number, "%");
    if (!isPercent && !TakeEnd(number, "angstrom")) TakeEnd(number, "A");
    try {
        return {StrictNumber(number, "spacing"), isPercent};
    } catch (const ZfError&) {
        throw ZfError("\"" + text + R"(" is no spacing: write it like "-3 percent" or "1.75 angstrom")");
    }
}

void AddSpacing(const std::string& key, const LayerSpacing& spacing, Relaxation& relaxation) {
    constexpr std::size_t kDeepest = 20;
    for (std::size_t i = 0; i < kDeepest; ++i) {
        if (key != fmt::format("d{}{}", i + 1, i + 2)) continue;
        if (relaxation.spacing.size() <= i) relaxation.spacing.resize(i + 1);
        if (relaxation.spacing[i]) throw ZfError("the spacing " + key + " is given twice");
        relaxation.spacing[i] = spacing;
        return;
    }
    throw ZfError("\"" + key + "\" is no spacing of neighbouring layers: these are d12, d23, ... to d2021");
}

Adsorbate AtomicAdsorbate(const std::string& element) {
    try {
        ZfAtomName().SetName(element);
    } catch (const ZfError&) {
        throw ZfError(
            "\"" + element +
            "\" is no element symbol, written as in the periodic table, like Fe; a molecule comes from an "
            ".xyz file");
    }
    Adsorbate adsorbate;
    adsorbate.name = element;
    adsorbate.atoms = {{element, gemmi::Vec3(), 0.0}};
    return adsorbate;
}

Adsorbate ParseAdsorbate(const std::string& text) {
    const std::vector<std::string> fields = Fields(text, ',');
    const auto fail = [&](const std::string& why) {
        throw ZfError("\"" + text + "\" is no adsorbate" + why +
                      ": write element or .xyz file, site, height and superstructure, such as "
                      "O,hollow,0.8,c(2x2)");
    };
    if (fields.size() < 3 || fields.size() > 4) fail("");
    Adsorbate adsorbate;
    if (fields[0].find('.') == std::string::npos) {
        adsorbate = AtomicAdsorbate(fields[0]);
    } else {
        adsorbate.atoms = LoadMolecule(fields[0]);
        adsorbate.name = std::filesystem::path(fields[0]).stem().string();
    }
    try {
        const std::vector<std::string> place = Fields(fields[1], '/');
        if (place.size() == 2)
            adsorbate.place = {StrictNumber(place[0], "site"), StrictNumber(place[1], "site")};
        else
            adsorbate.site = fields[1];
        adsorbate.height_angstrom = StrictNumber(fields[2], "height");
    } catch (const ZfError& error) {
        fail(", " + error.message);
    }
    if (fields.size() == 4) adsorbate.superstructure = fields[3];
    return adsorbate;
}

}  // namespace qvre
