#include "recipe/RecipeSurface.h"

#include <fmt/format.h>

#include <filesystem>
#include <variant>

namespace qvre {

namespace {

/// A length in any unit, or percent.
LayerSpacing SpacingOf(const std::string& text, const NamedValues& parameters) {
    const std::string unit = SplitQuantity(text).unit;
    const bool isPercent = unit == "percent" || unit == "%";
    const bool isLength = !unit.empty() && !isPercent;
    if (!isLength && NamesInQuantity(text).empty()) return ParseLayerSpacing(text);
    return {ParseQuantity(text, isPercent ? RecipeUnit::kPercent : RecipeUnit::kAngstrom, parameters),
            isPercent};
}

LayerSpacing SpacingOf(const RecipeTable::Scalar& scalar, const NamedValues& parameters) {
    if (const auto* text = std::get_if<std::string>(&scalar)) return SpacingOf(*text, parameters);
    if (const auto* whole = std::get_if<std::int64_t>(&scalar)) return {static_cast<double>(*whole), false};
    return {std::get<double>(scalar), false};
}

/// The list `spacing`, or the keys d12, d23, ... one by one.
void ReadSpacings(RecipeTable& section, Relaxation& relaxation) {
    if (section.Has("spacing")) {
        const std::vector<RecipeTable::Scalar> spacings = section.Scalars("spacing");
        section.Made("spacing", [&] {
            for (std::size_t i = 0; i < spacings.size(); ++i)
                AddSpacing(fmt::format("d{}{}", i + 1, i + 2), SpacingOf(spacings[i], section.Parameters()),
                           relaxation);
        });
    }
    for (const char* key : {"d12", "d23"}) section.Has(key);  // known, and so are those of deeper layers
    for (const std::string& key : section.Keys()) {
        if (key.size() < 3 || key[0] != 'd' || key.find_first_not_of("0123456789", 1) != std::string::npos)
            continue;
        LayerSpacing spacing;
        if (section.HasText(key))
            spacing = section.Made(key, [&] { return SpacingOf(*section.Text(key), section.Parameters()); });
        else
            spacing.value = *section.Number(key, RecipeUnit::kAngstrom);
        section.Made(key, [&] { AddSpacing(key, spacing, relaxation); });
    }
}

AtomMove ReadMove(RecipeTable section) {
    AtomMove move;
    move.layer = section.Count("layer", 1);
    if (move.layer < 0) section.Fail("layer", "counts from 1, the topmost; 0 are the adsorbates");
    move.element = section.Text("element", "");
    if (section.Has("at")) {
        const std::vector<double> at = section.Numbers("at", RecipeUnit::kNone);
        if (at.size() != 2) section.Fail("at", "has to be two fractions of the surface cell");
        move.at = {at[0], at[1]};
    }
    const std::vector<double> by = section.Numbers("by", RecipeUnit::kAngstrom);
    if (by.size() != 3) section.Fail("by", "has to be the move along x, y and z, angstrom");
    move.by = {by[0], by[1], by[2]};
    move.keepsSymmetry = section.Flag("symmetric", true);
    section.RefuseUnread();
    return move;
}

Relaxation ReadRelaxation(RecipeTable section) {
    Relaxation relaxation;
    ReadSpacings(section, relaxation);
    relaxation.shift_angstrom = section.Numbers("shift", RecipeUnit::kAngstrom);
    for (RecipeTable& layer : section.Sections("rumple")) {
        relaxation.rumple_angstrom.emplace_back();
        for (const std::string& element : layer.Keys())
            relaxation.rumple_angstrom.back()[element] = *layer.Number(element, RecipeUnit::kAngstrom);
    }
    for (const std::vector<double>& xy : section.NumberLists("lateral", RecipeUnit::kAngstrom)) {
        if (xy.size() != 2) section.Fail("lateral", "has to hold two numbers for each layer, along x and y");
        relaxation.lateral_angstrom.push_back({xy[0], xy[1]});
    }
    for (RecipeTable& atoms : section.Sections("atoms")) relaxation.moves.push_back(ReadMove(atoms));
    section.RefuseUnread();
    return relaxation;
}

/// Wood's notation, or a matrix as [[1, 1], [-1, 1]].
std::string SuperstructureText(RecipeTable& section) {
    if (!section.Has("superstructure") || section.HasText("superstructure"))
        return section.Text("superstructure", "");
    const std::vector<std::vector<double>> rows = section.NumberLists("superstructure", RecipeUnit::kNone);
    if (rows.size() != 2 || rows[0].size() != 2 || rows[1].size() != 2)
        section.Fail("superstructure", "has to be like \"c(2x2)\", or a matrix like [[1, 1], [-1, 1]]");
    return fmt::format("{:g} {:g} {:g} {:g}", rows[0][0], rows[0][1], rows[1][0], rows[1][1]);
}

Adsorbate ReadAdsorbate(RecipeTable section, const RecipeFolder& place) {
    const std::string element = section.Text("element", "");
    const std::string molecule = section.Text("molecule", "");
    if (element.empty() == molecule.empty())
        section.Fail("element", "give one of element and molecule (an .xyz file)");
    Adsorbate adsorbate = section.Made("element", [&] { return AtomicAdsorbate(element); });
    if (!molecule.empty()) {
        adsorbate.name = std::filesystem::path(molecule).stem().string();
        adsorbate.atoms = section.Made("molecule", [&] { return LoadMolecule(place.Path(molecule)); });
    }
    adsorbate.site = section.Text("site", "");
    if (section.Has("at") != adsorbate.site.empty())
        section.Fail("site", "give one of site (a name like hollow) and at (two fractions)");
    if (section.Has("at")) {
        const std::vector<double> at = section.Numbers("at", RecipeUnit::kNone);
        if (at.size() != 2) section.Fail("at", "has to be two fractions of the surface cell");
        adsorbate.place = {at[0], at[1]};
    }
    if (!section.Has("height")) section.Fail("height", "is missing: angstrom over the topmost nuclei");
    adsorbate.height_angstrom = *section.Number("height", RecipeUnit::kAngstrom);
    adsorbate.tilt_deg = section.Number("tilt", RecipeUnit::kDegree, 0.0);
    adsorbate.turn_deg = section.Number("turn", RecipeUnit::kDegree, 0.0);
    adsorbate.superstructure = SuperstructureText(section);
    adsorbate.coverage = section.Number("coverage", RecipeUnit::kNone);
    section.RefuseUnread();
    return adsorbate;
}

}  // namespace

SurfaceStructure ReadSurfaceStructure(RecipeTable& cluster, const RecipeFolder& place) {
    SurfaceStructure structure;
    structure.relaxation = ReadRelaxation(cluster.Section("relax"));
    for (RecipeTable& adsorbate : cluster.Sections("adsorbate"))
        structure.adsorbates.push_back(ReadAdsorbate(adsorbate, place));
    if (cluster.HasWord("domains")) {
        cluster.OneOf("domains", {"symmetry"});
        structure.takesAllDomains = true;
    }
    structure.domainWeights = cluster.Numbers("domain-weights", RecipeUnit::kNone);
    return structure;
}

}  // namespace qvre
