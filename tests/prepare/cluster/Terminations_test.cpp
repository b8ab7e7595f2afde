#include "prepare/cluster/Terminations.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

#include "ErrorText.h"
#include "prepare/cluster/ClusterMaking.h"
#include "prepare/cluster/ClusterWriting.h"
#include "prepare/cluster/CrystalSources.h"

namespace {

using Surface = std::array<int, 3>;

CrystalCell Rutile() {
    return LoadCell(QVRE_EXAMPLES "/rutile.cif");
}

CrystalCell StrontiumTitanate() {
    return ParseExpressionCell(
        "lengths 3.905 3.905 3.905\natom Sr 0 0 0\natom Ti 1/2 1/2 1/2\n"
        "atom O 1/2 1/2 0\natom O 1/2 0 1/2\natom O 0 1/2 1/2\n");
}

/// A crystal whose top plane is rumpled by 0.1 angstrom, across the end of its cell.
CrystalCell Rumpled() {
    return ParseExpressionCell(
        "lengths 4 4 4\natom Pt 0 0 0.0125\natom O 1/2 1/2 -0.0125\natom Pt 1/2 0 1/2\n");
}

ClusterRequest AllEmitters(const CrystalCell& cell, const Surface& surface, double depth) {
    ClusterRequest request;
    request.cell = cell;
    request.surface = surface;
    request.allEmitters = true;
    request.depth_angstrom = depth;
    request.atoms = 60;
    return request;
}

std::vector<Termination> TerminationsOf(const CrystalCell& cell, const Surface& surface,
                                        double tolerance = 0.3) {
    return FindTerminations(cell, SurfaceFrame(cell, surface, tolerance));
}

/// "O 2/3; O Ti 3/3 4/6 5/6; O 1/3": the top layer of each termination with the neighbours of its atoms.
std::string Told(const std::vector<Termination>& terminations) {
    std::string text;
    for (const Termination& termination : terminations) {
        text += (text.empty() ? "" : "; ") + termination.layers[0].elements;
        for (const TopNeighbours& top : termination.neighbours)
            text += " " + std::to_string(top.left) + "/" + std::to_string(top.inBulk);
    }
    return text;
}

std::string Turns(const Termination& termination) {
    std::string text;
    for (const double turn : termination.turns_deg) text += std::to_string(std::lround(turn)) + " ";
    return text;
}

/// Atoms of the first shell around the emitter of each structure.
std::vector<int> FirstShells(const MadeCluster& made) {
    std::vector<int> atoms;
    for (const StructureSummary& structure : made.structures) atoms.push_back(structure.shells[0].atoms);
    return atoms;
}

std::vector<int> Weights(const MadeCluster& made) {
    std::vector<int> weights;
    for (const StructureSummary& structure : made.structures) weights.push_back(structure.weight);
    return weights;
}

}  // namespace

// Counted by hand on models of the crystals. Where a step leads to the same termination in another
// orientation, the turn is that between neighbouring terraces: 90 degrees of the dimer rows of Si(001), 60 of
// the two stackings of hcp.
TEST(Terminations, AreThoseOfTheCrystal) {
    const CrystalCell si = PresetCell("Si", {}, {});
    const CrystalCell gaAs = PresetCell("zincblende", {"Ga", "As"}, {5.653});
    const std::tuple<CrystalCell, Surface, std::string, std::string> cases[] = {
        {PresetCell("Cu", {}, {}), {1, 1, 1}, "Cu 9/12", ""},
        {PresetCell("Cu", {}, {}), {0, 0, 1}, "Cu 8/12", ""},
        {PresetCell("Cu", {}, {}), {11, 9, 9}, "Cu 7/12", ""},
        {PresetCell("bcc", {"Fe"}, {2.8665}), {1, 1, 0}, "Fe 6/8", ""},
        {PresetCell("hcp", {"Co"}, {2.507, 4.069}), {0, 0, 1}, "Co 9/12", "60 "},
        {si, {0, 0, 1}, "Si 2/4", "90 "},
        {si, {1, 1, 1}, "Si 3/4; Si 1/4", ""},
        {gaAs, {0, 0, 1}, "As 2/4; Ga 2/4", ""},
        {gaAs, {1, 1, 1}, "Ga 3/4; As 1/4", ""},
        {gaAs, {-1, -1, -1}, "As 3/4; Ga 1/4", ""},
        {gaAs, {1, 1, 0}, "As Ga 3/4 3/4", ""},
        {PresetCell("rocksalt", {"Na", "Cl"}, {5.64}), {0, 0, 1}, "Cl Na 5/6 5/6", ""},
        {StrontiumTitanate(), {0, 0, 1}, "O Ti 2/2 5/6; O Sr 1/2 8/12", ""},
        {Rutile(), {1, 1, 0}, "O 2/3; O Ti 3/3 4/6 5/6; O 1/3", ""}};
    for (const auto& [cell, surface, told, turns] : cases) {
        const std::vector<Termination> terminations = TerminationsOf(cell, surface);
        EXPECT_EQ(Told(terminations), told) << SurfaceName(cell, surface);
        EXPECT_EQ(Turns(terminations[0]), turns) << SurfaceName(cell, surface);
        EXPECT_FALSE(terminations[0].mirror_deg) << SurfaceName(cell, surface);
    }
    // The cut between double layers and that through them, whose spacings are 1/4 and 1/12 of the diagonal.
    const std::vector<Termination> cuts = TerminationsOf(si, {1, 1, 1});
    EXPECT_NEAR(cuts[0].layers[1].depth_angstrom, 5.43 * std::sqrt(3.0) / 12.0, 1e-9);
    EXPECT_NEAR(cuts[1].layers[1].depth_angstrom, 5.43 * std::sqrt(3.0) / 4.0, 1e-9);
}

// The crystal is one, however large its cell.
TEST(Terminations, DoNotDependOnTheCell) {
    const CrystalCell primitive = ParseXyzCell(
        "2\nLattice=\"0 2.8265 2.8265 2.8265 0 2.8265 2.8265 2.8265 0\"\n"
        "Ga 0 0 0\nAs 1.41325 1.41325 1.41325\n");
    EXPECT_EQ(Told(TerminationsOf(primitive, {1, 1, 0})), "As 2/4; Ga 2/4");
    const CrystalCell si = PresetCell("Si", {}, {});
    CrystalCell doubled = si;  // along x: no fourfold screw axis belongs to such a cell
    doubled.atoms.clear();
    for (auto& row : doubled.axes.a) row[0] *= 2.0;
    for (const CellAtom& atom : si.atoms)
        for (const double shift : {0.0, 0.5}) {
            doubled.atoms.push_back(atom);
            doubled.atoms.back().fractional.x = atom.fractional.x / 2.0 + shift;
        }
    const std::vector<Termination> terminations = TerminationsOf(doubled, {0, 0, 1});
    EXPECT_EQ(Told(terminations), "Si 2/4");
    EXPECT_EQ(Turns(terminations[0]), "90 ");
    const MadeCluster made = MakeCluster(AllEmitters(doubled, {0, 0, 1}, 3.0));
    EXPECT_EQ(made.structures.size(), 3U);
    EXPECT_EQ(made.remarks, "terraces a step away are turned by 90 degrees: domains = [0, 90] takes all\n");
}

// A glide plane along the normal, and nothing else, leads from terrace to terrace.
TEST(Terminations, MayBeMirrorImages) {
    const CrystalCell cell = ParseExpressionCell(
        "lengths 4 5 6\natom Cu 0.1 0.2 0\natom Cu 0.1 -0.2 0.5\natom O 0.45 0.1 0.2\natom O 0.45 -0.1 "
        "0.7\n");
    const std::vector<Termination> terminations = TerminationsOf(cell, {0, 0, 1});
    ASSERT_EQ(terminations.size(), 2U);
    for (const Termination& termination : terminations) {
        EXPECT_EQ(Turns(termination), "");
        EXPECT_EQ(termination.mirror_deg.value_or(-1.0), 0.0);
    }
}

TEST(Terminations, KeepARumpledPlaneTogether) {
    const std::vector<Termination> together = TerminationsOf(Rumpled(), {0, 0, 1});
    ASSERT_EQ(together.size(), 2U);
    EXPECT_EQ(together[0].layers[0].elements, "O Pt");
    EXPECT_NEAR(together[0].layers[0].rumple_angstrom, 0.1, 1e-9);
    EXPECT_EQ(TerminationsOf(Rumpled(), {0, 0, 1}, 0.09).size(), 3U);
    EXPECT_EQ(TerminationsOf(Rumpled(), {0, 0, 1}, 0.1).size(), 2U);

    // Depths count from the highest atom, layers all the same.
    ClusterRequest request = AllEmitters(Rumpled(), {0, 0, 1}, 4.1);
    request.emitter = "O";
    request.termination = "Pt O";
    std::vector<EmitterShare> shares = SharesOf(MakeCluster(request));
    ASSERT_EQ(shares.size(), 2U);
    EXPECT_NEAR(shares[0].depth_angstrom, 0.1, 1e-9);
    EXPECT_EQ(shares[0].layer, 1);
    EXPECT_NEAR(shares[1].depth_angstrom, 4.1, 1e-9);
    EXPECT_EQ(shares[1].layer, 3);

    // Single emitters count planes unless told otherwise.
    ClusterRequest single;
    single.cell = Rumpled();
    single.emitter = "O";
    single.layers = {3};
    EXPECT_EQ(MakeCluster(single).structures[0].surfaceElements, "Pt");
    EXPECT_NEAR(MakeCluster(single).structures[0].surface_angstrom, 2.05, 1e-9);
    single.layerTolerance_angstrom = 0.3;
    EXPECT_NEAR(MakeCluster(single).structures[0].surface_angstrom, 4.1, 1e-9);
    single.emitter = "Pt";
    single.sites = {1};
    single.layers = {1};
    EXPECT_NEAR(MakeCluster(single).structures[0].surface_angstrom, 0.0, 1e-9);
}

TEST(Terminations, AreChosenByNumberOrLayers) {
    ClusterRequest request = AllEmitters(Rutile(), {1, 1, 0}, 0.0);
    request.emitter = "O";
    const auto chosen = [&](const std::string& name) {
        request.termination = name;
        return MakeCluster(request).structures[0].shells[0].atoms;
    };
    // Oxygen in the bridges has two titanium neighbours, that of a plane cut apart one.
    for (const char* name : {"1", "O / O Ti", "O/Ti,O"}) EXPECT_EQ(chosen(name), 2) << name;
    for (const char* name : {"3", "O / O", "O/O/O Ti"}) EXPECT_EQ(chosen(name), 1) << name;
    const auto failure = [&](const std::string& name) {
        const std::string text = ErrorText([&] { chosen(name); });
        EXPECT_NE(
            text.find("\n  1  O on top, then O Ti at 1.267, O at 2.534, O at 3.248 angstrom; O has 2 of "
                      "3 neighbours\n"),
            std::string::npos)
            << text;
        return text.substr(0, text.find('\n'));
    };
    EXPECT_EQ(failure(""),
              "TiO2(110) has 3 terminations, one of which is to be chosen: set termination to its number, or "
              "to the elements of its topmost layers such as \"O / O Ti\"");
    EXPECT_EQ(failure("4"), "There is no termination 4: TiO2(110) has 3 terminations");
    EXPECT_EQ(failure("99999999999999999999"),
              "There is no termination 99999999999999999999: TiO2(110) has 3 terminations");
    EXPECT_EQ(failure("0"), "There is no termination 0: TiO2(110) has 3 terminations");
    EXPECT_EQ(failure("O"),
              "2 terminations begin with the topmost layers \"O\": TiO2(110) has 3 terminations");
    EXPECT_EQ(failure("Ti"),
              "There is no termination with the topmost layers \"Ti\": TiO2(110) has 3 terminations");
}

TEST(AllEmitters, StandInEachLayerDownToTheDepth) {
    const ClusterRequest request = AllEmitters(PresetCell("fcc", {"Ag"}, {4.086}), {1, 1, 1}, 16.0);
    const MadeCluster made = MakeCluster(request);
    ASSERT_EQ(made.structures.size(), 7U);
    const std::vector<EmitterShare> shares = SharesOf(made);
    for (std::size_t k = 0; k < shares.size(); ++k) {
        EXPECT_NEAR(shares[k].depth_angstrom, static_cast<double>(k) * 4.086 / std::sqrt(3.0), 1e-9);
        EXPECT_EQ(shares[k].layer, static_cast<int>(k) + 1);
        EXPECT_EQ(shares[k].weight, 1.0);
    }
    // In a crystal of one plane the layer of the emitter says as much.
    ClusterRequest single = request;
    single.allEmitters = false;
    single.layers = {1, 2, 3, 4, 5, 6, 7};
    single.shape = ClusterShape::kParaboloid;
    const MadeCluster same = MakeCluster(single);
    EXPECT_EQ(ClusterAsXyz(made.cluster, {}), ClusterAsXyz(same.cluster, {}));
    EXPECT_EQ(made.structures[2].title.substr(0, 53),
              "Ag(111) emitter in layer 3, depth 4.72 A, paraboloid ");
}

// Under one surface only its own atoms have lost neighbours.
TEST(AllEmitters, NeverMixSurfaces) {
    ClusterRequest request = AllEmitters(PresetCell("Si", {}, {}), {1, 1, 1}, 8.0);
    request.atoms = 200;
    request.termination = "1";
    EXPECT_EQ(FirstShells(MakeCluster(request)), std::vector<int>({3, 4, 4, 4, 4, 4}));
    EXPECT_EQ(MakeCluster(request).remarks, "");
    request.termination = "2";
    EXPECT_EQ(FirstShells(MakeCluster(request)), std::vector<int>({1, 4, 4, 4, 4}));
    // The paraboloid around a deep emitter is narrow and ends close behind it.
    request.termination = "1";
    request.atoms = 60;
    EXPECT_EQ(MakeCluster(request).remarks,
              "clusters of emitters from a depth of 7.054 angstrom on lack some of the nearest neighbours, "
              "those behind: ask for more atoms where backscattering counts\n");
}

// Turned or mirrored surroundings have turned patterns: only emitters that a translation brings to coincide
// are one. Those that differ but for atoms outside of their clusters are alike as well.
TEST(AllEmitters, CountWhatIsAlikeOnce) {
    ClusterRequest rutile = AllEmitters(Rutile(), {1, 1, 0}, 3.0);
    rutile.emitter = "O";
    rutile.termination = "1";
    EXPECT_EQ(Weights(MakeCluster(rutile)), std::vector<int>({1, 1, 1, 1}));

    CrystalCell row = ParseExpressionCell("lengths 18 3 3\natom Bi 0 0 0\n");
    for (int i = 1; i < 6; ++i) row.atoms.push_back({"Po", {i / 6.0, 0.0, 0.0}});
    ClusterRequest request = AllEmitters(row, {0, 0, 1}, 3.0);
    request.emitter = "Po";
    request.size_angstrom = 4.5;  // Bi is seen by its neighbours
    request.shape = ClusterShape::kHemisphere;
    request.domains = {{0.0}, {30.0}};
    const MadeCluster made = MakeCluster(request);
    EXPECT_EQ(Weights(made), std::vector<int>({1, 1, 3, 3, 1, 1, 1, 1, 3, 3, 1, 1}));
    EXPECT_EQ(made.structures[3].domain.turn_deg, 30.0);
    EXPECT_EQ(made.cluster.structures.size(), 12U);
    request.size_angstrom = 9.1;
    EXPECT_EQ(MakeCluster(request).structures.size(), 20U) << "all see it, each from elsewhere";

    for (CellAtom& atom : row.atoms) atom.element = "Po";
    row.atoms[0].element = "Bi";
    row.atoms[3].element = "Bi";
    request.cell = row;
    EXPECT_EQ(Weights(MakeCluster(request)), std::vector<int>(8, 1)) << "the smallest whole numbers";
}

// The layers of a slab end at its lower side.
TEST(AllEmitters, OfASlabAreThoseThatItHas) {
    const CrystalCell slab = ParseXyzCell(
        "3\nLattice=\"2.5 0 0 0 2.5 0 0 0 25\"\n"
        "Cu 0 0 0\nCu 1.25 1.25 1.8\nO 0 0 3.0\n");
    ClusterRequest request = AllEmitters(slab, {0, 0, 1}, 80.0);
    request.emitter = "Cu";
    const MadeCluster made = MakeCluster(request);
    ASSERT_EQ(made.structures.size(), 2U);
    EXPECT_EQ(made.structures[1].layer, 3);
    EXPECT_NEAR(made.structures[1].surface_angstrom, 3.0, 1e-9);
    for (const ClusterAtom& atom : made.cluster.structures[0].atoms)
        EXPECT_GT(atom.position.Data()[2], -1.9e-10) << "the next slab below does not belong";
    EXPECT_EQ(Told(TerminationsOf(slab, {0, 0, 1})), "O 4/4");
}

TEST(AllEmitters, SayWhatCannotBe) {
    const ClusterRequest silicon = AllEmitters(PresetCell("Si", {}, {}), {0, 0, 1}, 20.0);
    const auto failure = [&](const std::function<void(ClusterRequest&)>& change) {
        ClusterRequest request = silicon;
        change(request);
        return ErrorText([&] { MakeCluster(request); });
    };
    EXPECT_EQ(failure([](ClusterRequest& r) { r.depth_angstrom = NAN; }),
              "The depth of the emitters has to lie between 0 and 100 angstrom");
    EXPECT_EQ(failure([](ClusterRequest& r) { r.layerTolerance_angstrom = 2.5; }),
              "The layer tolerance has to lie between 0 and 2 angstrom");
    EXPECT_EQ(failure([](ClusterRequest& r) { r.sites = {1}; }),
              "All emitters below a termination are asked for: leave the sites out");
    EXPECT_EQ(failure([](ClusterRequest& r) { r.top = "Si"; }),
              "All emitters below a termination are asked for: in place of top, termination says how the "
              "crystal ends");
    EXPECT_EQ(failure([](ClusterRequest& r) { r.shape = ClusterShape::kHemisphere; }),
              "The emitter at a depth of 8.145 angstrom lies outside of its hemisphere of radius 8.031 "
              "angstrom: take the shape paraboloid, a larger cluster or a smaller depth");
    EXPECT_EQ(failure([](ClusterRequest& r) {
                  r.cell = Rutile();
                  r.surface = {1, 1, 0};
                  r.emitter = "Ti";
                  r.termination = "1";
                  r.depth_angstrom = 1.0;
              }),
              "No Ti lies within 1 angstrom below the surface: the first is at a depth of 1.267 angstrom");
    EXPECT_EQ(
        failure([](ClusterRequest& r) {
            r.surface = {1000000, 1, 0};
        }),
        "The planes of this surface lie within 0.01 angstrom of each other and make no layers: give lower "
        "Miller indices");
    EXPECT_EQ(failure([](ClusterRequest& r) {
                  r.surface = {291, 7, 1};
                  r.depth_angstrom = 100.0;
              }).substr(0, 30),
              "More than 10000 different emit");
    EXPECT_EQ(failure([](ClusterRequest& r) { r.domains.assign(100, ClusterDomain{}); }),
              "15 emitters differ, which makes 1500 structures; more than 1000 are not made: take a smaller "
              "depth or fewer domains");
}
