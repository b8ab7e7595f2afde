#include "prepare/cluster/SurfaceBuilding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <tuple>
#include <vector>

#include "ErrorText.h"
#include "prepare/cluster/ClusterMaking.h"
#include "prepare/cluster/CrystalSources.h"
#include "prepare/cluster/SurfaceDomains.h"
#include "prepare/cluster/SurfaceSites.h"
#include "prepare/cluster/SurfaceSlab.h"

namespace {

ClusterRequest Substrate(const std::string& preset, const std::vector<double>& lattice,
                         const std::array<int, 3>& surface) {
    ClusterRequest request;
    const bool isElement = lattice.empty();
    request.cell = isElement ? PresetCell(preset, {}, {}) : PresetCell(preset, {"Ni"}, lattice);
    request.surface = surface;
    request.allEmitters = true;
    request.depth_angstrom = 0.1;
    request.atoms = 80;
    return request;
}

Adsorbate Parsed(const std::string& text) {
    return ParseAdsorbate(text);
}

SurfaceStructure With(const std::string& adsorbate) {
    SurfaceStructure structure;
    structure.adsorbates = {Parsed(adsorbate)};
    return structure;
}

ClusterRequest Having(ClusterRequest request, const SurfaceStructure& structure) {
    request.structure = structure;
    return request;
}

using Place = std::tuple<std::string, long, long, long>;

/// The atoms in steps of 0.001 angstrom, in any order.
std::vector<Place> PlacesOf(const Structure& structure) {
    std::vector<Place> places;
    for (const ClusterAtom& atom : structure.atoms) {
        const double* p = atom.position.Data();
        places.emplace_back(atom.atom, std::lround(p[0] * 1e13), std::lround(p[1] * 1e13),
                            std::lround(p[2] * 1e13));
    }
    std::sort(places.begin(), places.end());
    return places;
}

MadeCluster Example(const std::string& name, const std::string& emitter, double depth) {
    ClusterRequest request;
    request.cell = LoadCell(std::string(QVRE_EXAMPLES "/surfaces/") + name);
    request.emitter = emitter;
    request.allEmitters = true;
    request.depth_angstrom = depth;
    request.atoms = 80;
    return MakeCluster(request);
}

SurfaceSlab SlabOf(const std::string& preset, const std::vector<std::string>& elements,
                   const std::vector<double>& lattice, const std::array<int, 3>& surface) {
    const CrystalCell cell = PresetCell(preset, elements, lattice);
    const SurfaceFrame frame(cell, surface, 0.3);
    return SlabBelow(cell, surface, frame, FindTerminations(cell, frame)[0], 8.0, 4);
}

/// Heights of the atoms around the emitter within a distance, from above, with their elements.
std::multimap<double, std::string, std::greater<>> Around(const Structure& structure, double reach) {
    std::multimap<double, std::string, std::greater<>> found;
    for (const ClusterAtom& atom : structure.atoms) {
        const double* p = atom.position.Data();
        const double distance = std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]) * 1e10;
        if (distance > 0.01 && distance < reach) found.emplace(p[2] * 1e10, atom.atom);
    }
    return found;
}

}  // namespace

// The same surfaces written down atom by atom.
TEST(SurfaceBuilding, EqualsSlabsMadeByHand) {
    ClusterRequest request = Substrate("fcc", {3.524}, {0, 0, 1});
    request.emitter = "O";
    const MadeCluster oxygen = MakeCluster(Having(request, With("O,hollow,0.8,c(2x2)")));
    EXPECT_EQ(PlacesOf(oxygen.cluster.structures.at(0)),
              PlacesOf(Example("o_ni001.cell", "O", 0.1).cluster.structures.at(0)));
    EXPECT_NE(oxygen.structures.at(0).title.find("c(2x2)-O/Ni(001)"), std::string::npos);

    request.cell = PresetCell("fcc", {"Cu"}, {3.615});
    request.surface = {1, 1, 0};
    request.emitter = "C";
    request.depth_angstrom = 1.2;
    SurfaceStructure structure = With("C,top,1.87,p(2x1)");
    structure.adsorbates[0].atoms =
        ParseXyzMolecule("2\nCO\nC 0.5 0 0\nO 0.5 0 1.14\n");  // wherever the file has it
    const Cluster byHand = Example("co_cu110.cell", "C", 1.2).cluster;
    const Cluster built = MakeCluster(Having(request, structure)).cluster;
    ASSERT_EQ(built.structures.size(), byHand.structures.size());
    // The cell made by hand has rounded lengths: 1.278 and 2.556 in place of a/sqrt(8) and a/sqrt(2).
    const auto here = Around(built.structures.at(0), 5.0);
    const auto there = Around(byHand.structures.at(0), 5.0);
    ASSERT_EQ(here.size(), there.size());
    for (auto a = here.begin(), b = there.begin(); a != here.end(); ++a, ++b) {
        EXPECT_NEAR(a->first, b->first, 0.003);
        EXPECT_EQ(a->second, b->second);
    }
}

TEST(SurfaceBuilding, RelaxesLayers) {
    ClusterRequest request = Substrate("Cu", {}, {0, 0, 1});
    const double d = 3.61 / 2.0;
    SurfaceStructure structure;
    AddSpacing("d12", ParseLayerSpacing("-3 percent"), structure.relaxation);
    AddSpacing("d23", ParseLayerSpacing("1.85 angstrom"), structure.relaxation);
    request.depth_angstrom = 4.0;
    const MadeCluster made = MakeCluster(Having(request, structure));
    ASSERT_EQ(made.structures.size(), 3U);
    EXPECT_NEAR(made.structures[1].surface_angstrom, 0.97 * d, 1e-9);
    EXPECT_NEAR(made.structures[2].surface_angstrom, 0.97 * d + 1.85, 1e-9);
    EXPECT_NEAR(made.structures[0].shells[0].distance_angstrom, std::hypot(0.97 * d, 3.61 / 2.0), 1e-9);
    EXPECT_EQ(made.structures[0].symmetry.Name(), "4mm");
    // Layers without a word keep the bulk's place, also sidewards.
    EXPECT_NEAR(MakeCluster(Having(request, {})).structures[1].surface_angstrom, d, 1e-9);
}

// A slab that is built and not changed is the crystal, whatever its cell, surface and termination.
TEST(SurfaceBuilding, LeavesTheBulkAsItIs) {
    SurfaceStructure structure;
    structure.relaxation.shift_angstrom = {0.0};
    const std::tuple<CrystalCell, std::array<int, 3>, std::string> cases[] = {
        {PresetCell("Cu", {}, {}), {0, 0, 1}, ""},
        {PresetCell("Cu", {}, {}), {-1, 1, 0}, ""},
        {PresetCell("Cu", {}, {}), {1, -1, 1}, ""},
        {PresetCell("Cu", {}, {}), {2, 1, -3}, ""},
        {PresetCell("Cu", {}, {}), {7, 5, 5}, ""},
        {PresetCell("Si", {}, {}), {1, 1, 1}, "2"},
        {PresetCell("Ru", {}, {}), {1, 0, -1}, "1"},
        {PresetCell("zincblende", {"Ga", "As"}, {5.653}), {0, -1, 0}, "Ga"}};
    for (const auto& [cell, surface, termination] : cases) {
        ClusterRequest request;
        request.cell = cell;
        request.emitter = cell.atoms[0].element;
        request.surface = surface;
        request.termination = termination;
        request.allEmitters = true;
        request.depth_angstrom = 4.0;
        request.size_angstrom = 9.0;
        request.azimuth_deg = 17.0;
        const MadeCluster plain = MakeCluster(request);
        const MadeCluster built = MakeCluster(Having(request, structure));
        const auto places = [](const MadeCluster& made) {
            std::vector<std::vector<Place>> all;
            for (const Structure& one : made.cluster.structures) all.push_back(PlacesOf(one));
            std::sort(all.begin(), all.end());
            return all;
        };
        EXPECT_EQ(places(built), places(plain)) << SurfaceName(cell, surface);
    }
}

TEST(SurfaceBuilding, RumplesByElementAndShiftsSidewards) {
    ClusterRequest request = Substrate("Cu", {}, {0, 0, 1});
    request.cell = PresetCell("rocksalt", {"Mg", "O"}, {4.212});
    request.emitter = "O";
    SurfaceStructure structure;
    structure.relaxation.rumple_angstrom = {{{"O", 0.05}}};
    structure.relaxation.lateral_angstrom = {{0.1, 0.0}};
    const Structure cluster = MakeCluster(Having(request, structure)).cluster.structures.at(0);
    const auto around = Around(cluster, 2.3);
    ASSERT_EQ(around.size(), 5U);
    EXPECT_NEAR(around.begin()->first, -0.05, 1e-9);
    EXPECT_NEAR(around.rbegin()->first, -2.106 - 0.05, 1e-9);
    double below_x = 0.0;
    for (const ClusterAtom& atom : cluster.atoms)
        if (std::abs(atom.position.Data()[2] * 1e10 + 2.156) < 1e-6 &&
            std::abs(atom.position.Data()[1]) < 1e-14 && std::abs(atom.position.Data()[0]) < 1e-10)
            below_x = atom.position.Data()[0] * 1e10;
    EXPECT_NEAR(below_x, -0.1, 1e-9);
}

// Distances of the neighbours from the closed forms of the lattices: fcc(111) with three atoms around both
// hollows, below the hcp one an atom of the second layer, below the fcc one only that of the third.
TEST(SurfaceSites, AreFoundFromTheTopmostLayer) {
    const double a = 4.0;
    const double r = a / std::sqrt(2.0);
    const SurfaceSlab fcc111 = SlabOf("fcc", {"Al"}, {a}, {1, 1, 1});
    const auto belowSite = [&](const SurfaceSlab& slab, const std::string& name) {
        const gemmi::Vec3 site = SitePlace(slab, name);
        std::vector<int> layers;
        for (const SlabAtom& atom : slab.atoms) {
            const gemmi::Vec3 apart = atom.position - site;
            if (slab.Shortest({apart.x, apart.y, 0.0}).length() < 0.01 && atom.layer <= 3)
                layers.push_back(atom.layer);
        }
        return layers;
    };
    EXPECT_EQ(belowSite(fcc111, "hcp"), std::vector<int>{2});
    EXPECT_EQ(belowSite(fcc111, "fcc"), std::vector<int>{3});
    EXPECT_NEAR(SitePlace(fcc111, "fcc").length(), r / std::sqrt(3.0), 1e-9);
    EXPECT_NEAR(SitePlace(fcc111, "bridge").length(), r / 2.0, 1e-9);
    EXPECT_EQ(belowSite(SlabOf("hcp", {"Co"}, {2.507, 4.069}, {0, 0, 1}), "fcc"), std::vector<int>{});
    EXPECT_EQ(SitePlace(fcc111, "atop").length(), 0.0);
    EXPECT_NEAR(SitePlace(SlabOf("fcc", {"Al"}, {a}, {0, 0, 1}), "hollow").length(), a / 2.0, 1e-9);
    EXPECT_NEAR(SitePlace(SlabOf("fcc", {"Al"}, {a}, {1, 1, 0}), "long-bridge").length(), a / 2.0, 1e-9);
    EXPECT_NEAR(SitePlace(SlabOf("bcc", {"Fe"}, {a}, {1, 1, 0}), "bridge").length(), a * std::sqrt(3.0) / 4.0,
                1e-9);
    EXPECT_NEAR(SitePlace(SlabOf("bcc", {"Fe"}, {a}, {1, 1, 0}), "hollow").length(),
                3.0 * a / (4.0 * std::sqrt(2.0)), 1e-9);
    EXPECT_EQ(
        ErrorText([&] { SitePlace(fcc111, "hollow"); }),
        "This surface has no site \"hollow\"; it has top, bridge, fcc, hcp, or give the place as fractions "
        "of its cell");
}

TEST(Superstructure, NotationsMeetTheirMatrices) {
    const SurfaceLattice square = {gemmi::Vec3(2.5, 0, 0), gemmi::Vec3(0, 2.5, 0)};
    const SurfaceLattice hexagonal = {gemmi::Vec3(2.5, 0, 0), gemmi::Vec3(-1.25, 1.25 * std::sqrt(3.0), 0)};
    using Matrix = std::array<int, 4>;
    EXPECT_EQ(ParseSuperstructure("c(2x2)", square).matrix, (Matrix{1, 1, -1, 1}));
    EXPECT_EQ(ParseSuperstructure("(r2xr2)R45", square).matrix, (Matrix{1, 1, -1, 1}));
    EXPECT_EQ(ParseSuperstructure("p(2x1)", square).matrix, (Matrix{2, 0, 0, 1}));
    EXPECT_EQ(ParseSuperstructure("(r3xr3)R30", hexagonal).matrix, (Matrix{2, 1, -1, 1}));
    EXPECT_EQ(ParseSuperstructure("(√7x√7)R19.1°", hexagonal).matrix, (Matrix{3, 1, -1, 2}));
    EXPECT_EQ(ParseSuperstructure("-1 1 1 1", square).Cells(), 2);
    EXPECT_EQ(ParseSuperstructure("3 1 -1 2", hexagonal).CellsInside().size(), 7U);
    const std::pair<std::string, std::string> refused[] = {
        {"(r3xr3)R30",
         "The superstructure (r3xr3)R30 does not fit the lattice of this surface: give its matrix, 1 1 -1 1"},
        {"1 1 2 2", "The superstructure 1 1 2 2 has no area: its vectors are parallel"},
        {"20x20", "The superstructure 20x20 has 400 cells; more than 100 are not made"}};
    for (const auto& [text, message] : refused)
        EXPECT_EQ(ErrorText([&, &text = text] { ParseSuperstructure(text, square); }), message);
}

// The square of fcc(001) has two ways for rows; a mirror image of the substrate turns (r7xr7)R19 around.
TEST(SurfaceDomains, AreThoseOfTheSubstrate) {
    const auto domains = [](const std::array<int, 3>& surface, const std::string& adsorbate) {
        SurfaceStructure structure = With(adsorbate);
        structure.takesAllDomains = true;
        std::vector<std::pair<long, bool>> found;
        for (const ClusterDomain& domain :
             OnBuiltSurface(Having(Substrate("fcc", {3.524}, surface), structure)).domains)
            found.emplace_back(std::lround(domain.turn_deg), domain.isMirrored);
        return found;
    };
    using Domains = std::vector<std::pair<long, bool>>;
    EXPECT_EQ(domains({0, 0, 1}, "O,hollow,0.9,p(2x1)"), (Domains{{0, false}, {90, false}}));
    EXPECT_EQ(domains({0, 0, 1}, "O,hollow,0.9,c(2x2)"), (Domains{{0, false}}));
    EXPECT_EQ(domains({1, 1, 1}, "O,fcc,1.1,p(2x1)"), (Domains{{0, false}, {120, false}, {240, false}}));
    const Domains seven = domains({1, 1, 1}, "O,fcc,1.1,3 1 -1 2");
    ASSERT_EQ(seven.size(), 2U);
    EXPECT_TRUE(seven[1].second);
}

// Whether the mirror is right shows in the substrate, which has to come to itself.
TEST(SurfaceDomains, KeepTheSubstrateInPlace) {
    ClusterRequest request = Substrate("fcc", {3.524}, {1, 1, 1});
    request.emitter = "O";
    request.azimuth_deg = 17.0;
    SurfaceStructure structure = With("O,fcc,1.1,3 1 -1 2");
    structure.takesAllDomains = true;
    structure.domainWeights = {3.0, 1.0};
    const MadeCluster made = MakeCluster(Having(request, structure));
    ASSERT_EQ(made.cluster.structures.size(), 2U);
    EXPECT_EQ(SharesOf(made)[0].weight, 3.0 * SharesOf(made)[1].weight);
    std::vector<std::vector<Place>> nickel;
    for (const Structure& domain : made.cluster.structures) {
        nickel.push_back(PlacesOf(domain));
        nickel.back().erase(std::remove_if(nickel.back().begin(), nickel.back().end(),
                                           [](const Place& place) { return std::get<0>(place) != "Ni"; }),
                            nickel.back().end());
    }
    EXPECT_EQ(nickel[0], nickel[1]);
    EXPECT_NE(PlacesOf(made.cluster.structures[0]), PlacesOf(made.cluster.structures[1]));
}

TEST(SurfaceBuilding, MovesEqualAtomsTogether) {
    ClusterRequest request = Substrate("fcc", {3.524}, {0, 0, 1});
    request.emitter = "O";
    SurfaceStructure structure = With("O,hollow,0.8,p(2x2)");
    AtomMove move;
    move.by = gemmi::Vec3(0.0, 0.0, 0.1);
    structure.relaxation.moves = {move};
    const auto neighbours = Around(MakeCluster(Having(request, structure)).cluster.structures[0], 2.1);
    ASSERT_EQ(neighbours.size(), 4U);  // all four around the oxygen atom
    for (const auto& [height, element] : neighbours) EXPECT_NEAR(height, -0.7, 1e-9);
    structure.relaxation.moves[0].keepsSymmetry = false;
    EXPECT_NEAR(Around(MakeCluster(Having(request, structure)).cluster.structures[0], 2.1).rbegin()->first,
                -0.8, 1e-9);
}

TEST(SurfaceBuilding, RefusesWhatDoesNotFit) {
    const ClusterRequest request = Substrate("fcc", {3.524}, {0, 0, 1});
    const auto failure = [&](const std::function<void(SurfaceStructure&)>& change) {
        SurfaceStructure structure = With("O,hollow,0.8,c(2x2)");
        change(structure);
        return ErrorText([&] { OnBuiltSurface(Having(request, structure)); });
    };
    EXPECT_EQ(failure([](SurfaceStructure& s) { s.adsorbates[0] = Parsed("O,top,0.2"); }),
              "O of the adsorbates and Ni in layer 1 collide: they are 0.200 angstrom apart");
    EXPECT_EQ(failure([](SurfaceStructure& s) {
                  s.relaxation.rumple_angstrom = {{}, {{"Fe", 0.1}}};
              }),
              "There is no Fe in layer 2 to rumple: it holds Ni");
    EXPECT_EQ(
        failure([](SurfaceStructure& s) { s.adsorbates[0].coverage = 0.25; }),
        "The coverage 0.25 of the adsorbate O does not fit its superstructure c(2x2), which has one in 2 "
        "cells, 0.5: give another superstructure, or more adsorbates; for islands on a bare surface leave it "
        "out, as the pattern of the adsorbate does not depend on it");
    EXPECT_EQ(failure([](SurfaceStructure& s) {
                  s.relaxation.spacing = {LayerSpacing{-100.0, true}};
              }),
              "The spacing d12 would be 0 angstrom, from 1.762 in the bulk: it has to be above 0");
    EXPECT_EQ(
        failure([](SurfaceStructure& s) {
            s.relaxation.moves = {{0, "O", {}, {0.1, 0.0, 0.0}, true}};
        }),
        "Moving the O of the adsorbates by 0.1, 0, 0 breaks the symmetry of its place: move it along the "
        "symmetry elements, or give symmetric = false, which moves this one alone");
    EXPECT_EQ(failure([](SurfaceStructure& s) {
                  s.relaxation.moves = {{2, "O", {}, {0.1, 0.0, 0.0}, true}};
              }),
              "There is no O in layer 2 to move");
    EXPECT_EQ(failure([](SurfaceStructure& s) {
                  s.relaxation.moves = {{2, "Ni", std::array{0.2, 0.1}, {0.0, 0.0, 0.1}, true}};
              }),
              "There is no Ni in layer 2 at 0.2, 0.1 to move; there are at 0.5, 0.5 and 0.5, 1.5");
    EXPECT_EQ(failure([](SurfaceStructure& s) {
                  s.relaxation.spacing = {LayerSpacing{-3.0, false}};
              }),
              "The spacing d12 would be -3 angstrom, from 1.762 in the bulk: it has to be above 0; a change "
              "of it is "
              "written like \"-3 percent\"");
    EXPECT_EQ(failure([](SurfaceStructure& s) {
                  s.domainWeights = {1.0, 2.0};
              }),
              "A weight is needed for each domain, turned by 0 degrees: 2 of 1 given");
}
