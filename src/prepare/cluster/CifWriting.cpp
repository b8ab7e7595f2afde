#include "prepare/cluster/CifWriting.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <gemmi/cifdoc.hpp>
#include <gemmi/to_cif.hpp>
#include <map>
#include <sstream>
#include <vector>

namespace qvre {

namespace {

double Angle_deg(const gemmi::Vec3& a, const gemmi::Vec3& b) {
    return gemmi::deg(std::acos(std::clamp(a.dot(b) / (a.length() * b.length()), -1.0, 1.0)));
}

void SetCell(const gemmi::Mat33& axes, gemmi::cif::Block& block) {
    const gemmi::Vec3 a = axes.column_copy(0);
    const gemmi::Vec3 b = axes.column_copy(1);
    const gemmi::Vec3 c = axes.column_copy(2);
    const auto set = [&block](const char* tag, double value) {
        block.set_pair(tag, fmt::format("{:.8f}", value));
    };
    set("_cell_length_a", a.length());
    set("_cell_length_b", b.length());
    set("_cell_length_c", c.length());
    set("_cell_angle_alpha", Angle_deg(b, c));
    set("_cell_angle_beta", Angle_deg(a, c));
    set("_cell_angle_gamma", Angle_deg(a, b));
}

/// The name of a block holds no blanks.
std::string BlockName(std::string title) {
    for (char& letter : title)
        if (std::isalnum(static_cast<unsigned char>(letter)) == 0) letter = '_';
    return title.empty() ? "structure" : title;
}

}  // namespace

std::string CellAsCif(const CrystalCell& cell, const std::string& title) {
    gemmi::cif::Block block(BlockName(title));
    SetCell(cell.axes, block);
    block.set_pair("_space_group_name_H-M_alt", "'P 1'");
    block.set_pair("_space_group_IT_number", "1");
    block.init_loop("_space_group_symop_", {"operation_xyz"}).add_row({"'x,y,z'"});
    const bool withUiso = std::any_of(cell.atoms.begin(), cell.atoms.end(),
                                      [](const CellAtom& atom) { return atom.Uiso_angstrom2 > 0.0; });
    std::vector<std::string> tags = {"label", "type_symbol", "fract_x", "fract_y", "fract_z"};
    if (withUiso) tags.emplace_back("U_iso_or_equiv");
    gemmi::cif::Loop& sites = block.init_loop("_atom_site_", tags);
    std::map<std::string, int> counts;
    for (const CellAtom& atom : cell.atoms) {
        std::vector<std::string> row = {fmt::format("{}{}", atom.element, ++counts[atom.element]),
                                        atom.element};
        for (int i = 0; i < 3; ++i) row.push_back(fmt::format("{:.8f}", atom.fractional.at(i)));
        if (withUiso)
            row.push_back(atom.Uiso_angstrom2 > 0.0 ? fmt::format("{:.6f}", atom.Uiso_angstrom2) : "?");
        sites.add_row(row);
    }
    std::ostringstream text;
    gemmi::cif::write_cif_block_to_stream(text, block, gemmi::cif::Style::Aligned);
    return text.str();
}

}  // namespace qvre
