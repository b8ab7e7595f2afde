#include "prepare/cluster/ClusterMaking.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "ErrorText.h"
#include "TempFolder.h"
#include "prepare/cluster/ClusterWriting.h"
#include "prepare/cluster/CrystalSources.h"

namespace {

ClusterRequest RequestFor(const CrystalCell& cell) {
    ClusterRequest request;
    request.cell = cell;
    return request;
}

CrystalCell GaAs() {
    return PresetCell("zincblende", {"Ga", "As"}, {5.653});
}

/// Numbers of atoms in the first shells around an emitter deep below the surface.
std::vector<int> BulkShells(const CrystalCell& cell, const std::string& emitter, int layer, double radius) {
    ClusterRequest request = RequestFor(cell);
    request.emitter = emitter;
    request.layers = {layer};
    request.size_angstrom = radius;
    const MadeCluster made = MakeCluster(request);
    const StructureSummary& summary = made.structures[0];
    std::vector<int> counts;
    for (const NeighbourShell& shell : summary.shells)
        if (shell.distance_angstrom < summary.surface_angstrom) counts.push_back(shell.atoms);
    return counts;
}

void ExpectBegins(std::vector<int> counts, const std::vector<int>& expected) {
    ASSERT_GE(counts.size(), expected.size());
    counts.resize(expected.size());
    EXPECT_EQ(counts, expected);
}

// Coordination sequences by distance: Conway and Sloane, Sphere Packings, Lattices and Groups, chapter 4.
TEST(Cluster, HasTheShellsOfItsCrystal) {
    ExpectBegins(BulkShells(PresetCell("Cu", {}, {}), "", 7, 23.0), {12, 6, 24, 12, 24, 8, 48, 6, 36});
    ExpectBegins(BulkShells(PresetCell("Si", {}, {}), "", 9, 23.0), {4, 12, 12, 6, 12, 24, 16, 12, 24});
    ExpectBegins(BulkShells(GaAs(), "As", 9, 23.0), {4, 12, 12, 6, 12, 24, 16, 12, 24});
    ExpectBegins(BulkShells(PresetCell("bcc", {"Fe"}, {2.8665}), "", 7, 18.0), {8, 6, 12, 24, 8});
    ExpectBegins(BulkShells(PresetCell("rocksalt", {"Na", "Cl"}, {5.64}), "Cl", 5, 23.0), {6, 12, 8, 6, 24});
    ClusterRequest request = RequestFor(GaAs());
    request.emitter = "As";
    EXPECT_EQ(MakeCluster(request).structures[0].nearestElement, "Ga");
}

TEST(Cluster, TakesTheNearestWholeShells) {
    constexpr auto hemisphere = ClusterShape::kHemisphere;
    constexpr auto paraboloid = ClusterShape::kParaboloid;
    // 14 and 26 atoms are equally near to 20; the emitter of layer 4 lies outside its hemisphere of 4
    // angstrom.
    const std::tuple<const char*, int, ClusterShape, int, std::size_t, double> cases[] = {
        {"Cu", 1, hemisphere, 20, 14, 3.610},      {"Cu", 4, hemisphere, 20, 26, 4.036},
        {"Cu", 3, hemisphere, 4000, 4004, 27.611}, {"Cu", 2, hemisphere, 4000, 3972, 27.670},
        {"Cu", 3, paraboloid, 60, 58, 8.466},      {"Cu", 3, paraboloid, 1500, 1501, 26.151},
        {"Si", 5, hemisphere, 600, 608, 17.595},   {"Diamond", 5, hemisphere, 1500, 1495, 15.625}};
    for (const auto& [preset, layer, shape, wanted, atoms, size_angstrom] : cases) {
        ClusterRequest request = RequestFor(PresetCell(preset, {}, {}));
        request.sites = {1};
        request.layers = {layer};
        request.shape = shape;
        request.atoms = wanted;
        const MadeCluster made = MakeCluster(request);
        EXPECT_EQ(made.cluster.structures[0].atoms.size(), atoms) << preset << wanted;
        EXPECT_NEAR(made.structures[0].size_angstrom, size_angstrom, 6e-4);
        request.size_angstrom = size_angstrom;
        EXPECT_EQ(MakeCluster(request).cluster.structures[0].atoms.size(), atoms) << "by size";
    }
}

TEST(Cluster, HasThePointSymmetryOfItsSurface) {
    const CrystalCell cu = PresetCell("Cu", {}, {});
    const std::tuple<CrystalCell, std::array<int, 3>, std::string> cases[] = {
        {cu, {0, 0, 1}, "4mm"},
        {cu, {1, 1, 1}, "3m"},
        {cu, {1, -1, 0}, "2mm"},
        {cu, {3, 1, 0}, "m"},
        {cu, {3, 2, 1}, "1"},
        {PresetCell("Si", {}, {}), {0, 0, 1}, "2mm"},
        {GaAs(), {-1, -1, -1}, "3m"},
        {GaAs(), {1, 1, 0}, "m"},
        {PresetCell("hcp", {"Co"}, {2.507, 4.069}), {0, 0, 1}, "3m"}};
    for (const auto& [cell, surface, symmetry] : cases)
        for (const ClusterShape shape : {ClusterShape::kHemisphere, ClusterShape::kParaboloid}) {
            ClusterRequest request = RequestFor(cell);
            request.surface = surface;
            request.emitter = cell.atoms[0].element;
            request.shape = shape;
            request.azimuth_deg = 17.0;
            for (const StructureSummary& structure : MakeCluster(request).structures)
                EXPECT_EQ(structure.symmetry.Name(), symmetry) << structure.title;
        }
}

// The two sublattices of diamond differ by a quarter turn, and so do the domains of one.
TEST(Cluster, MakesOneStructureForEachEmitterAndDomain) {
    ClusterRequest request = RequestFor(PresetCell("Si", {}, {}));
    request.layers = {3, 5};
    request.domains = {{0.0}, {90.0}};
    const MadeCluster made = MakeCluster(request);
    ASSERT_EQ(made.structures.size(), 8U);
    const auto sorted = [&](std::size_t structure) {
        std::vector<std::array<double, 3>> positions;
        for (const ClusterAtom& atom : made.cluster.structures[structure].atoms)
            positions.push_back({atom.position.Data()[0], atom.position.Data()[1], atom.position.Data()[2]});
        std::sort(positions.begin(), positions.end());
        return positions;
    };
    EXPECT_EQ(made.structures[4].layer, 5);
    EXPECT_EQ(made.structures[6].site, 5);
    EXPECT_EQ(sorted(5), sorted(6));
    EXPECT_NE(sorted(4), sorted(6));
}

// A larger cell has more atoms, and no other sites until one of them leaves its place.
TEST(Cluster, FindsTheDifferentSitesOfALargeCell) {
    const CrystalCell si = PresetCell("Si", {}, {});
    CrystalCell large = si;
    large.atoms.clear();
    for (auto& row : large.axes.a)
        for (double& component : row) component *= 3.0;
    ClusterRequest request = RequestFor(large);
    for (int i = 0; i < 27; ++i)
        for (const CellAtom& atom : si.atoms)
            request.cell.atoms.push_back(
                {atom.element, (atom.fractional + gemmi::Vec3(i / 9, i / 3 % 3, i % 3)) / 3.0});
    request.atoms = 5;
    EXPECT_EQ(MakeCluster(request).structures.size(), 2U);
    request.cell.atoms[100].fractional.x += 0.003;
    EXPECT_EQ(MakeCluster(request).structures.size(), 216U) << "no two are alike";
    EXPECT_EQ(ManyStructuresWarning(2), "");
    EXPECT_NE(ManyStructuresWarning(216).find("takes 216 times as long"), std::string::npos);
    request.domains = {{0.0}, {60.0}, {120.0}, {180.0}, {240.0}};
    EXPECT_EQ(ErrorText([&] { CheckClusterRequest(request); }),
              "216 emitters differ, which makes 1080 structures; more than 1000 are not made: take fewer "
              "sites of the emitter or fewer domains");
}

// A slab cannot be cut at another plane than its own surface.
TEST(Cluster, KeepsTheSurfacesOfASlab) {
    const CrystalCell slab = ParseXyzCell(
        "3\nLattice=\"2.5 0 0 0 2.5 0 0 0 25\"\n"
        "Cu 0 0 0\nCu 1.25 1.25 1.8\nO 0 0 3.0\n");
    ClusterRequest request = RequestFor(slab);
    request.emitter = "Cu";
    request.layers = {2};
    const MadeCluster made = MakeCluster(request);
    EXPECT_EQ(made.structures[0].surfaceElements, "O");
    for (const ClusterAtom& atom : made.cluster.structures[0].atoms)
        EXPECT_GT(atom.position.Data()[2], -1.9e-10) << "the next slab below does not belong";
    request.layers = {1};
    EXPECT_EQ(ErrorText([&] { MakeCluster(request); }), "No emitter lies in layer 1; there are in 2, 3");
}

TEST(Cluster, ComesBackFromItsFiles) {
    const TempFolder folder;
    ClusterRequest request = RequestFor(PresetCell("Cu", {}, {}));
    request.surface = {1, 1, 1};
    request.debye_K = {{"Cu", 343.0}};
    request.weightTable = QVRE_DATA "/AtomicWeight.txt";
    const Cluster made = MakeCluster(request).cluster;
    const std::pair<const char*, double> formats[] = {{"c.xyz", 1e-10}, {"c.xml_cl", 1e-5}};
    for (const auto& [name, tolerance_angstrom] : formats) {
        WriteCluster(made, folder.Path(name), {});
        Cluster read;
        ZfLoadCluster(read, folder.Path(name));
        std::vector<ClusterAtom> atoms = read.structures.at(0).atoms;
        ASSERT_EQ(atoms.size(), made.structures[0].atoms.size());
        EXPECT_NEAR(atoms[7].USquareAngstrom().At(0, 0), 0.00583961, 1e-8);
        EXPECT_EQ(FindPointSymmetry(atoms).Name(), "3m");
        for (std::size_t i = 0; i < atoms.size() && std::string(name) == "c.xyz"; ++i)
            for (int k = 0; k < 3; ++k)
                EXPECT_NEAR(atoms[i].position.Data()[k] * 1e10,
                            made.structures[0].atoms[i].position.Data()[k] * 1e10, tolerance_angstrom);
    }
}

}  // namespace
