// The package of the library has no formatting library of its own; the standard one serves.
#define USE_STD_SNPRINTF
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <gemmi/cif.hpp>
#include <gemmi/mmcif_impl.hpp>
#include <gemmi/smcif.hpp>
#include <string>

#include "foundation/ZfError.h"
#include "prepare/cluster/CrystalSources.h"

namespace qvre {

namespace {

constexpr double kSamePlace_angstrom = 0.1;

std::vector<gemmi::Op> OperatorsListed(gemmi::cif::Block& block) {
    std::vector<gemmi::Op> operators;
    for (const char* tag : {"_space_group_symop_operation_xyz", "_symmetry_equiv_pos_as_xyz"}) {
        for (const std::string& triplet : block.find_values(tag))
            operators.push_back(gemmi::parse_triplet(gemmi::cif::as_string(triplet)));
        if (!operators.empty()) break;
    }
    return operators;
}

const gemmi::SpaceGroup* SpaceGroupNamed(gemmi::cif::Block& block, const gemmi::SmallStructure& structure) {
    if (const gemmi::SpaceGroup* group = structure.find_spacegroup()) return group;
    for (const char* tag : {"_space_group_IT_number", "_symmetry_Int_Tables_number"})
        if (const std::string* number = block.find_value(tag))
            return gemmi::find_spacegroup_by_number(gemmi::cif::as_int(*number, 0));
    return nullptr;
}

std::vector<gemmi::Op> Operators(gemmi::cif::Block& block, const gemmi::SmallStructure& structure) {
    std::vector<gemmi::Op> operators = OperatorsListed(block);
    if (!operators.empty()) return operators;
    const gemmi::SpaceGroup* group = SpaceGroupNamed(block, structure);
    if (group == nullptr) throw ZfError("it has neither symmetry operators nor a known space group");
    for (const gemmi::Op op : group->operations()) operators.push_back(op);
    return operators;
}

/// Thirds and sixths written with four digits are meant exactly; then into [0, 1).
double Settled(double fraction) {
    constexpr double kFourDigits = 1e-4;
    const double sixth = std::round(fraction * 6.0) / 6.0;
    if (std::abs(fraction - sixth) < kFourDigits) fraction = sixth;
    fraction -= std::floor(fraction);
    return fraction > 1.0 - 1e-9 ? 0.0 : fraction;
}

void CheckSite(const gemmi::SmallStructure::Site& site) {
    const std::string where = "site " + site.label;
    if (!std::isfinite(site.fract.x + site.fract.y + site.fract.z))
        throw ZfError(where + " has no coordinates");
    if (site.element == gemmi::El::X) throw ZfError(where + " has no element: " + site.type_symbol);
    if (site.disorder_group != 0)
        throw ZfError(where + " is disordered; keep one of its alternatives, with disorder group \".\"");
    if (std::abs(site.occ - 1.0) > 1e-3)
        throw ZfError(where + " is partly occupied (" + std::to_string(site.occ) +
                      "); a cluster needs whole atoms: choose an ordered model");
}

double EquivalentU(const gemmi::SmallStructure& structure, const gemmi::SmallStructure::Site& site) {
    if (site.u_iso > 0.0) return site.u_iso;
    const double u = site.aniso.nonzero() ? structure.cell.calculate_u_eq(site.aniso) : 0.0;
    return u > 0.0 ? u : 0.0;
}

void AddImages(CrystalCell& cell, const CellAtom& site, const std::vector<gemmi::Op>& operators) {
    const std::size_t first = cell.atoms.size();
    for (const gemmi::Op& op : operators) {
        const auto& f = site.fractional;
        const auto [x, y, z] = op.apply_to_xyz({f.x, f.y, f.z});
        CellAtom image = site;
        image.fractional = gemmi::Vec3(Settled(x), Settled(y), Settled(z));
        const bool known = std::any_of(
            cell.atoms.begin() + static_cast<std::ptrdiff_t>(first), cell.atoms.end(),
            [&](const CellAtom& other) {
                return cell.DistanceFromLattice(other.fractional - image.fractional) < kSamePlace_angstrom;
            });
        if (!known) cell.atoms.push_back(image);
    }
}

bool IsMacromolecular(gemmi::cif::Block& block) {
    return bool(block.find_values("_atom_site.Cartn_x"));
}

gemmi::cif::Block& BlockWithAtoms(gemmi::cif::Document& document) {
    for (gemmi::cif::Block& block : document.blocks)
        if (block.find_values("_atom_site_label") || IsMacromolecular(block)) return block;
    throw ZfError("it has no atom sites (_atom_site_label)");
}

/// The first model of an mmCIF block as a small structure. The library's own reader of such models shifts
/// negative residue numbers, which has no meaning.
gemmi::SmallStructure SmallStructureOf(gemmi::cif::Block& block) {
    constexpr double kEightPiSquared = 78.95683520871486;  // B = 8 pi^2 U
    gemmi::SmallStructure structure;
    gemmi::impl::set_cell_from_mmcif(block, structure.cell);
    if (const std::string* name = gemmi::impl::find_spacegroup_hm_value(block))
        structure.spacegroup_hm = gemmi::cif::as_string(*name);
    gemmi::cif::Table atoms =
        block.find("_atom_site.", {"type_symbol", "Cartn_x", "Cartn_y", "Cartn_z", "?id", "?occupancy",
                                   "?B_iso_or_equiv", "?label_alt_id", "?pdbx_PDB_model_num"});
    const auto number = [](const gemmi::cif::Table::Row& row, std::size_t column, double fallback) {
        return row.has2(column) ? gemmi::cif::as_number(row[column]) : fallback;
    };
    std::string model;
    for (const gemmi::cif::Table::Row row : atoms) {
        if (row.has(8) && model.empty()) model = row[8];
        if (row.has(8) && row[8] != model) break;
        gemmi::SmallStructure::Site site;
        site.label = row.has(4) ? row.str(4) : "";
        site.type_symbol = row.str(0);
        site.element = gemmi::Element(site.type_symbol);
        site.fract =
            structure.cell.fractionalize({number(row, 1, NAN), number(row, 2, NAN), number(row, 3, NAN)});
        site.occ = number(row, 5, 1.0);
        site.u_iso = number(row, 6, 0.0) / kEightPiSquared;
        site.disorder_group = row.has2(7) ? 1 : 0;
        structure.sites.push_back(site);
    }
    return structure;
}

CrystalCell Expand(gemmi::cif::Block& block) {
    const gemmi::SmallStructure structure =
        IsMacromolecular(block) ? SmallStructureOf(block) : gemmi::make_small_structure_from_block(block);
    const gemmi::UnitCell& unit = structure.cell;
    if (!unit.is_crystal()) throw ZfError("it has no cell lengths and angles");
    CrystalCell cell;
    cell.axes = AxesOf({unit.a, unit.b, unit.c}, {unit.alpha, unit.beta, unit.gamma});
    const std::vector<gemmi::Op> operators = Operators(block, structure);
    for (const gemmi::SmallStructure::Site& site : structure.sites) {
        CheckSite(site);
        const std::string element = site.element == gemmi::El::D ? "H" : site.element.name();
        const gemmi::Vec3 place(Settled(site.fract.x), Settled(site.fract.y), Settled(site.fract.z));
        AddImages(cell, {element, place, EquivalentU(structure, site)}, operators);
    }
    return cell;
}

/// "string:150:11(3041): expected value" names a source that nobody knows.
std::string PlaceInWords(const std::string& message) {
    int line = 0;
    int column = 0;
    const std::size_t place = message.find(": ");
    if (place == std::string::npos || std::sscanf(message.c_str(), "string:%d:%d", &line, &column) != 2)
        return message;
    return "line " + std::to_string(line) + ", column " + std::to_string(column) + message.substr(place);
}

}  // namespace

CrystalCell ParseCif(const std::string& text) {
    try {
        gemmi::cif::Document document = gemmi::cif::read_string(text);
        return Expand(BlockWithAtoms(document));
    } catch (const std::exception& error) {
        throw ZfError("it is no valid CIF: " + PlaceInWords(error.what()));
    }
}

}  // namespace qvre
