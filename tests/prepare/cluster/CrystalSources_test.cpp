#include "prepare/cluster/CrystalSources.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>

#include "ErrorText.h"
#include "prepare/cluster/ClusterMaking.h"
#include "prepare/cluster/ElementCrystals.h"
#include "prepare/thermal/AtomicWeights.h"
#include "prepare/thermal/Elements.h"

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

    // POSCAR with these axes: by a factor, by the volume with the positions scaled alike, and by three
    // factors.
    const std::string fcc = "0 .5 .5\n.5 0 .5\n.5 .5 0\n";
    const std::string ionsDirect =
        "Ga_d As/0ab1\n1 1\nSelective dynamics\nDirect\n0 0 0 T T F\n.25 .25 .25 T T T\n";
    const std::string volume = std::to_string(-5.653 * 5.653 * 5.653 / 4.0);
    for (const std::string& text :
         {"GaAs\n5.653\n" + fcc + ionsDirect + "\n0 0 0\n0 0 0\n",
          "GaAs\r\n5.653\r\n" + fcc + "Ga As\n1 1\nCartesian\n0 0 0\n.25 .25 .25\n",
          "GaAs\n" + volume + "\n0 2 2\n2 0 2\n2 2 0\nGa As\n1 1\nkartesisch\n0 0 0\n1 1 1\n",
          "GaAs\n5.653 5.653 5.653\n" + fcc + "Ga As\n1 1\nDirect\n0 0 0\n.25 .25 .25\n"})
        EXPECT_EQ(Places(ParsePoscar(text), "As", {1, 1, 0}, 90.0), places) << text;
}

// Cartesian atoms to three digits, expanded by the space group; a second model does not count.
TEST(CrystalSources, MmcifBringsCartesianAtoms) {
    const std::string head =
        "data_g\n_cell.length_a 5.652\n_cell.length_b 5.652\n_cell.length_c 5.652\n_cell.angle_alpha 90\n"
        "_cell.angle_beta 90\n_cell.angle_gamma 90\n_symmetry.space_group_name_H-M 'F -4 3 m'\nloop_\n"
        "_atom_site.id\n_atom_site.type_symbol\n_atom_site.label_alt_id\n_atom_site.Cartn_x\n"
        "_atom_site.Cartn_y\n_atom_site.Cartn_z\n_atom_site.occupancy\n_atom_site.B_iso_or_equiv\n"
        "_atom_site.pdbx_PDB_model_num\n";
    const CrystalCell cell = ParseCif(head +
                                      "1 GA . 0 0 0 1 0.6 1\n2 AS . 1.413 1.413 1.413 1 0.5 1\n"
                                      "1 GA . 1 0 0 1 0.6 2\n");
    EXPECT_EQ(Places(cell, "As"), Places(PresetCell("zincblende", {"Ga", "As"}, {5.652}), "As"));
    EXPECT_NEAR(cell.atoms[0].Uiso_angstrom2, 0.6 / (8.0 * 9.8696044), 1e-9);
    const auto error = [&](const char* row) { return ErrorText([&] { ParseCif(head + row); }); };
    EXPECT_EQ(error("1 Ga A 0 0 0 1 0.6 1\n").substr(0, 20), "site 1 is disordered");
    EXPECT_EQ(error("1 Ga . 0 0 0 .5 0.6 1\n").substr(0, 25), "site 1 is partly occupied");
    EXPECT_EQ(error("1 Ga . 0 ? 0 1 0.6 1\n"), "site 1 has no coordinates");
}

// The densities that handbooks give from weighing, in g/cm^3, tell a wrong digit of a lattice constant.
TEST(CrystalSources, ElementsHaveTheirDensities) {
    const std::map<std::string, double> densities = {
        {"Ac", 10.07}, {"Ag", 10.50}, {"Al", 2.70},  {"Au", 19.3},  {"Ba", 3.59}, {"Be", 1.85},  {"Ca", 1.55},
        {"Cd", 8.65},  {"Ce", 6.77},  {"Co", 8.86},  {"Cr", 7.19},  {"Cs", 1.90}, {"Cu", 8.96},  {"Dy", 8.55},
        {"Er", 9.07},  {"Eu", 5.24},  {"Fe", 7.87},  {"Gd", 7.90},  {"Ge", 5.32}, {"Hf", 13.3},  {"Ho", 8.80},
        {"Ir", 22.6},  {"K", 0.862},  {"Li", 0.534}, {"Lu", 9.84},  {"Mg", 1.74}, {"Mo", 10.2},  {"Na", 0.97},
        {"Nb", 8.57},  {"Ni", 8.90},  {"Os", 22.6},  {"Pb", 11.34}, {"Pd", 12.0}, {"Pt", 21.45}, {"Ra", 5.5},
        {"Rb", 1.53},  {"Re", 21.0},  {"Rh", 12.4},  {"Ru", 12.4},  {"Sc", 2.99}, {"Si", 2.33},  {"Sr", 2.60},
        {"Ta", 16.6},  {"Tb", 8.23},  {"Tc", 11.4},  {"Th", 11.7},  {"Ti", 4.51}, {"Tl", 11.85}, {"Tm", 9.32},
        {"V", 6.10},   {"W", 19.3},   {"Y", 4.47},   {"Yb", 6.95},  {"Zn", 7.14}, {"Zr", 6.51}};
    constexpr double kGramsPerDalton = 1.66054;  // and cubic angstrom, in g/cm^3
    const ZfDebye weights = LoadAtomicWeights(QVRE_DATA "/AtomicWeight.txt");
    EXPECT_EQ(ElementCrystals().size(), densities.size());
    for (const ElementCrystal& crystal : ElementCrystals()) {
        const CrystalCell cell = PresetCell(crystal.element, {}, {});
        const double mass =
            static_cast<double>(cell.atoms.size()) * weights.GetAtoicWeight(AtomicNumberOf(crystal.element));
        const double density = kGramsPerDalton * mass / cell.axes.determinant();
        EXPECT_NEAR(density / densities.at(crystal.element), 1.0, 0.02) << crystal.element << " " << density;
        if (std::string(crystal.type) != "hcp") continue;
        const double ratio = crystal.c / crystal.a;
        EXPECT_TRUE(ratio > 1.56 && ratio < 1.9) << crystal.element;
    }
    EXPECT_EQ(Places(PresetCell("hcp", {"Co"}, {}), ""), Places(PresetCell("Co", {}, {}), ""));
    EXPECT_EQ(
        ErrorText([] { PresetCell("Fe", {"Co"}, {}); }),
        "Fe has its element and lattice constant; element and lattice belong to a structure type such as "
        "fcc");
    EXPECT_EQ(ErrorText([] { PresetCell("fcc", {"Fe"}, {}); }),
              "fcc needs the lattice constant a in angstrom: set lattice");
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
    const std::pair<std::string, const char*> lines[] = {
        {"lengths 1 1 a", "Cannot evaluate \"a\": unknown name a"},
        {"atom Cu 0 0 1/$", "Cannot evaluate \"1/$\": unexpected character"},
        {"atom Cu 0 0 2(3)", "Cannot evaluate \"2(3)\": an operator is missing"},
        {"atom Cu 0 0 1,2", "Cannot evaluate \"1,2\": it goes on behind its end"},
        {"angles 90 90 180", "cell angles lie between 0 and 180 degrees"},
        {"atoms Cu 0 0 0", "a line begins with lengths, angles or atom"}};
    for (const auto& [line, reason] : lines) EXPECT_EQ(cell(line), "in the line \"" + line + "\": " + reason);

    const std::string lattice = "Lattice=\"3 0 0 0 3 0 0 0 3\"\n";
    const auto xyz = [](const std::string& text) { return ErrorText([&] { ParseXyzCell(text); }); };
    EXPECT_EQ(xyz("1\ntitle\nCu 0 0 0\n").substr(0, 24), "its title has no Lattice");
    EXPECT_EQ(xyz("2\n" + lattice + "Cu 0 0 0\n"), "it has fewer atoms than its first line says");
    EXPECT_EQ(xyz("1\n" + lattice + "Cu 0 0 0x\n"), "in the line \"Cu 0 0 0x\": \"0x\" is no number");

    const std::string cube = "t\n1\n3 0 0\n0 3 0\n0 0 3\n";
    const std::pair<std::string, const char*> poscars[] = {
        {"t\n", "line 2: it ends here, and there should be the scale"},
        {"t\n1\n1 0 0\n1 0\n", "line 4: there should be three components of a lattice vector"},
        {"t\n1\n1 0 0\n1 0 0\n0 0 1\n", "its lattice has no volume"},
        {cube + "2 1\nDirect\n",
         "line 6: numbers of atoms stand where the elements should; put a line with the elements, such as Ti "
         "O, "
         "above them (the format of VASP 5)"},
        {cube + "Ti O\n1\n", "line 7: there are 1 numbers of atoms for 2 elements"},
        {cube + "Ti\n1.5\nDirect\n", "line 7: 1.5 is no number of atoms"},
        {cube + "Ti\n1\n0 0 0\n", "line 8: there should be Direct or Cartesian, in front of the positions"},
        {cube + "Ti\n2\nDirect\n0 0 0\n",
         "line 10: it ends here, and there should be the position of an atom"},
        {cube + "Ti\n1\nDirect\n0 0 T\n", "line 9: \"T\" is no number"}};
    for (const auto& [text, reason] : poscars)
        EXPECT_EQ(ErrorText([&] { ParsePoscar(text); }), reason) << text;
    EXPECT_EQ(ErrorText([] { LoadCell("a.txt"); }),
              "Cannot tell the format of a.txt: a crystal is a .cif, .mmcif, .xyz, .extxyz, .vasp or .cell "
              "file, or "
              "named POSCAR or CONTCAR");
    for (const char* name : {"/nonexistent/POSCAR", "/nonexistent/CONTCAR.relaxed", "/nonexistent/a.VASP"})
        EXPECT_EQ(ErrorText([name] { LoadCell(name); }), std::string(name) + ": there is no such file");
}

}  // namespace
