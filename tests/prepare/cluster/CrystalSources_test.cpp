#include "prepare/cluster/CrystalSources.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "ErrorText.h"
#include "TempFolder.h"
#include "prepare/cluster/ClusterMaking.h"

namespace {

/// Elements and places of a cluster in an order that no source can change.
std::vector<std::string> Places(const CrystalCell& cell, const std::string& emitter,
                                std::array<int, 3> surface = {0, 0, 1}, double azimuth_deg = 0.0) {
    ClusterRequest request;
    request.cell = cell;
    request.surface = surface;
    request.azimuth_deg = azimuth_deg;
    request.emitter = emitter;
    const MadeCluster made = MakeCluster(request);
    std::vector<std::string> places;
    for (const ClusterAtom& atom : made.cluster.structures.at(0).atoms) {
        std::string place = atom.atom;
        for (int i = 0; i < 3; ++i) {
            place += " ";
            place += std::to_string(std::lround(atom.position.Data()[i] * 1e15));
        }
        places.push_back(place);
    }
    std::sort(places.begin(), places.end());
    return places;
}

constexpr const char* kCifCell = R"(data_test
_cell_length_a 5.653(1)
_cell_length_b 5.653
_cell_length_c 5.653
_cell_angle_alpha 90
_cell_angle_beta 90
_cell_angle_gamma 90
_symmetry_space_group_name_H-M 'F -4 3 m'
loop_
_atom_site_label
_atom_site_type_symbol
_atom_site_fract_x
_atom_site_fract_y
_atom_site_fract_z
_atom_site_B_iso_or_equiv
_atom_site_occupancy
)";

// GaAs four ways: a preset, a file of expressions, the space group, and the primitive, oblique cell.
TEST(CrystalSources, DescribeOneCrystal) {
    const CrystalCell preset = PresetCell("zincblende", {"Ga", "As"}, {5.653});
    const CrystalCell expressions = ParseExpressionCell(
        "lengths 5.653 5+653/1000 sqrt(pow(5.653,2)) # cubic\natom Ga 0 0 0\natom Ga 0 1/2 1/2\n"
        "atom Ga 1/2 0 1/2\natom Ga 1/2 1/2 0\natom As 1/4 1/4 1/4\natom As 3/4 3/4 1/4\n"
        "atom As 1/4 3/4 3/4\natom As 3/4 1/4 3/4\n");
    const CrystalCell cif =
        ParseCif(std::string(kCifCell) + "Ga1 Ga3+ 0 0 0 0.6 1\nAs1 As 0.25 0.25 0.25 0.5 1.0\n");
    const std::vector<std::string> places = Places(preset, "As");
    EXPECT_EQ(Places(expressions, "As"), places);
    EXPECT_EQ(Places(cif, "As"), places);
    EXPECT_EQ(cif.atoms.size(), 8U);
    EXPECT_NEAR(cif.atoms[0].Uiso_angstrom2, 0.6 / (8.0 * 9.8696044), 1e-9) << "B = 8 pi^2 U";

    // The surface (0 0 1) of the cube is (1 1 0) of these axes, and x along [0 1 0].
    const CrystalCell primitive = ParseXyzCell(
        "2\nLattice=\"0 2.8265 2.8265 2.8265 0 2.8265 2.8265 2.8265 0\" "
        "Properties=id:I:1:species:S:1:pos:R:3\n"
        "1 Ga 0 0 0\n2 As 1.41325 1.41325 1.41325\n");
    EXPECT_EQ(Places(primitive, "As", {1, 1, 0}, 90.0), places);
}

// Rutile: four oxygen atoms from one site, and U_eq = (U11 + U22 + U33)/3 for orthogonal axes.
TEST(CrystalSources, CifExpandsSitesAndTensors) {
    std::string text =
        "data_r\n_cell_length_a 4.594\n_cell_length_b 4.594\n_cell_length_c 2.959\n"
        "_cell_angle_alpha 90\n_cell_angle_beta 90\n_cell_angle_gamma 90\n"
        "_space_group_IT_number 136\nloop_\n_atom_site_label\n_atom_site_fract_x\n"
        "_atom_site_fract_y\n_atom_site_fract_z\nTi1 0 0 0\nO1 0.3053 0.3053 0\nloop_\n"
        "_atom_site_aniso_label\n_atom_site_aniso_U_11\n_atom_site_aniso_U_22\n"
        "_atom_site_aniso_U_33\n_atom_site_aniso_U_12\n_atom_site_aniso_U_13\n"
        "_atom_site_aniso_U_23\nTi1 .006 .006 .0045 0 0 0\nO1 .005 .005 .004 -.001 0 0\n";
    const CrystalCell rutile = ParseCif(text);
    EXPECT_EQ(rutile.Formula(), "TiO2");
    EXPECT_EQ(rutile.atoms.size(), 6U);
    EXPECT_NEAR(rutile.atoms[0].Uiso_angstrom2, 0.0055, 1e-12);
    EXPECT_NEAR(rutile.atoms[5].Uiso_angstrom2, 0.014 / 3.0, 1e-12);
}

// Thirds with four digits would miss the threefold axis by 1e-4 angstrom.
TEST(CrystalSources, CifThirdsAreExact) {
    const CrystalCell cobalt = ParseCif(
        "data_c\n_cell_length_a 2.507\n_cell_length_b 2.507\n_cell_length_c 4.069\n_cell_angle_alpha 90\n"
        "_cell_angle_beta 90\n_cell_angle_gamma 120\nloop_\n_symmetry_equiv_pos_as_xyz\nx,y,z\n-x,-y,-z\n"
        "loop_\n_atom_site_label\n_atom_site_fract_x\n_atom_site_fract_y\n_atom_site_fract_z\n"
        "Co1 0.3333 0.6667 0.25\n");
    EXPECT_EQ(Places(cobalt, ""), Places(PresetCell("hcp", {"Co"}, {2.507, 4.069}), ""));
}

TEST(CrystalSources, SayWhatIsWrong) {
    const auto cif = [](const std::string& sites) { return ErrorText([&] { ParseCif(kCifCell + sites); }); };
    EXPECT_EQ(cif("Ga1 Ga 0 0 0 0.6 0.5\n").substr(0, 44), "site Ga1 is partly occupied (0.500000); a cl");
    EXPECT_EQ(cif("Q1 Q 0 0 0 0.6 1\n"), "site Q1 has no element: Q");
    EXPECT_EQ(cif("Ga1 Ga ? 0 0 0.6 1\n"), "site Ga1 has no coordinates");
    EXPECT_EQ(cif("Ga1 Ga\n").substr(0, 25), "it is no valid CIF: line ");

    const auto cell = [](const std::string& text) { return ErrorText([&] { ParseExpressionCell(text); }); };
    EXPECT_EQ(cell("atom Cu 0 0 0\n"), "a line \"lengths a b c\" is missing");
    EXPECT_EQ(cell("lengths 1 1 a\n"),
              "in the line \"lengths 1 1 a\": Cannot evaluate \"a\": unknown name a");
    EXPECT_EQ(cell("atom Cu 0 0 1/$\n"),
              "in the line \"atom Cu 0 0 1/$\": Cannot evaluate \"1/$\": unexpected character");
    EXPECT_EQ(cell("atom Cu 0 0 2(3)\n"),
              "in the line \"atom Cu 0 0 2(3)\": Cannot evaluate \"2(3)\": an operator is missing");
    EXPECT_EQ(cell("atom Cu 0 0 1,2\n"),
              "in the line \"atom Cu 0 0 1,2\": Cannot evaluate \"1,2\": it goes on behind its end");
    EXPECT_EQ(cell("angles 90 90 180\n"),
              "in the line \"angles 90 90 180\": cell angles lie between 0 and 180 degrees");
    EXPECT_EQ(cell("atoms Cu 0 0 0\n"),
              "in the line \"atoms Cu 0 0 0\": a line begins with lengths, angles or atom");

    const std::string lattice = "Lattice=\"3 0 0 0 3 0 0 0 3\"\n";
    const auto xyz = [](const std::string& text) { return ErrorText([&] { ParseXyzCell(text); }); };
    EXPECT_EQ(xyz("1\ntitle\nCu 0 0 0\n").substr(0, 24), "its title has no Lattice");
    EXPECT_EQ(xyz("2\n" + lattice + "Cu 0 0 0\n"), "it has fewer atoms than its first line says");
    EXPECT_EQ(xyz("1\n" + lattice + "Cu 0 0 0x\n"), "in the line \"Cu 0 0 0x\": \"0x\" is no number");

    const TempFolder folder;
    const std::string flat = folder.Write("flat.cell", "lengths 3 3 0.2\natom Cu 0 0 0\n");
    EXPECT_EQ(ErrorText([&] { LoadCell(flat); }),
              flat +
                  ": The cell has no sensible volume: its axis c is 0.2 angstrom long and its lattice planes "
                  "along it stand 0.2 angstrom apart; check lengths (angstrom) and angles");
    EXPECT_EQ(ErrorText([&] { LoadCell(folder.Path("x.cif")); }),
              folder.Path("x.cif") + ": there is no such file");
    EXPECT_EQ(ErrorText([] { PresetCell("zincblende", {"Ga"}, {5.6}); }),
              "zincblende needs 2 element(s), 1 given: set element");
}

}  // namespace
