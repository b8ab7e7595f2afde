#include "prepare/cluster/ClusterSelection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include "ErrorText.h"
#include "prepare/cluster/ClusterMaking.h"
#include "prepare/cluster/CrystalSources.h"

namespace {

constexpr double kRounding_angstrom = 1e-9;

gemmi::Vec3 PlaceOf(const ClusterAtom& atom) {
    const double* p = atom.position.Data();
    return {p[0] * 1e10, p[1] * 1e10, p[2] * 1e10};
}

/// All copper or nickel down to some layers below a surface.
ClusterRequest Emitters(const CrystalCell& cell, const std::array<int, 3>& surface,
                        const std::string& emitter, double depth) {
    ClusterRequest request;
    request.cell = cell;
    request.surface = surface;
    request.emitter = emitter;
    request.allEmitters = true;
    request.depth_angstrom = depth;
    request.atoms = 90;
    return request;
}

ClusterRequest Nickel(const std::string& emitter, double lattice = 3.524,
                      const std::array<int, 3>& surface = {0, 0, 1}) {
    return Emitters(PresetCell("fcc", {"Ni"}, {lattice}), surface, emitter, 4.0);
}

ClusterRequest Oxygen(const std::string& emitter, const std::string& adsorbate) {
    ClusterRequest request = Nickel(emitter);
    request.structure.adsorbates = {ParseAdsorbate(adsorbate)};
    return request;
}

ClusterRequest Rutile(double u) {
    const CrystalCell cell = ParseExpressionCell(
        "lengths 4.594 4.594 2.959\natom Ti 0 0 0\natom Ti 1/2 1/2 1/2\natom O u u 0\natom O -u -u 0\n"
        "atom O 1/2+u 1/2-u 1/2\natom O 1/2-u 1/2+u 1/2\n",
        {{"u", u}});
    ClusterRequest request = Emitters(cell, {1, 1, 0}, "Ti", 4.0);
    request.termination = "O / O Ti";
    return request;
}

/// Where each atom of the moved clusters lies against its place at the start, with what it is: calls
/// `expected` for structure, atom and place at the start.
void ExpectPlaces(
    const MadeCluster& start, const MadeCluster& moved,
    const std::function<gemmi::Vec3(std::size_t, const ClusterAtom&, const gemmi::Vec3&)>& expected) {
    ASSERT_EQ(moved.cluster.structures.size(), start.cluster.structures.size());
    for (std::size_t s = 0; s < start.cluster.structures.size(); ++s) {
        const std::vector<ClusterAtom>& before = start.cluster.structures[s].atoms;
        const std::vector<ClusterAtom>& after = moved.cluster.structures[s].atoms;
        ASSERT_EQ(after.size(), before.size());
        for (std::size_t i = 0; i < before.size(); ++i) {
            ASSERT_EQ(after[i].atom, before[i].atom);
            const gemmi::Vec3 wanted = expected(s, before[i], PlaceOf(before[i]));
            ASSERT_LT((PlaceOf(after[i]) - wanted).length(), kRounding_angstrom)
                << "structure " << s << " atom " << i;
        }
    }
}

bool IsAbove(double height, double other) {
    return height > other - 0.01;
}

}  // namespace

// By layer, by number and by size, with domains, in cells with more than one primitive cell and in built
// ones.
TEST(ClusterSelection, IsTheClusterOfItsOwnRequest) {
    ClusterRequest byLayer = Emitters(PresetCell("zincblende", {"Ga", "As"}, {5.6532}), {1, 1, 1}, "As", 0.0);
    byLayer.allEmitters = false;
    byLayer.layers = {2, 5};
    byLayer.domains = {{0.0, false, 2.0}, {60.0, true, 1.0}};
    ClusterRequest bySize = Nickel("Ni");
    bySize.size_angstrom = 9.0;
    bySize.azimuth_deg = 20.0;
    ClusterRequest rows = Oxygen("Ni", "O,hollow,0.8,p(2x1)");
    rows.structure.takesAllDomains = true;
    for (const ClusterRequest& request : {byLayer, bySize, rows, Rutile(0.305), Oxygen("O", "O,fcc,1.1")}) {
        ClusterRequest one = request;
        if (!one.structure.adsorbates.empty() && one.structure.adsorbates[0].site == "fcc")
            one.surface = {1, 1, 1};
        const MadeCluster made = MakeCluster(one);
        const MadeCluster kept = MakeCluster(one, SelectAtoms(one));
        ExpectPlaces(made, kept,
                     [](std::size_t, const ClusterAtom&, const gemmi::Vec3& place) { return place; });
        for (std::size_t s = 0; s < made.structures.size(); ++s) {
            EXPECT_EQ(kept.structures[s].title, made.structures[s].title);
            EXPECT_EQ(kept.structures[s].weight, made.structures[s].weight);
            EXPECT_NEAR(kept.structures[s].surface_angstrom, made.structures[s].surface_angstrom,
                        kRounding_angstrom);
        }
    }
}

TEST(ClusterSelection, FollowsASpacingWithoutAtomsThatComeAndGo) {
    ClusterRequest request = Nickel("Ni");
    request.structure.relaxation.spacing = {LayerSpacing{1.762, false}};
    const ClusterSelection selection = SelectAtoms(request);
    const MadeCluster start = MakeCluster(request);
    for (const double change : {-0.3, -0.0004, 0.05, 0.3}) {
        request.structure.relaxation.spacing[0]->value = 1.762 + change;
        const MadeCluster moved = MakeCluster(request, selection);
        ExpectPlaces(start, moved, [&](std::size_t s, const ClusterAtom&, gemmi::Vec3 place) {
            const double depth = start.structures[s].surface_angstrom;
            place.z += change * ((IsAbove(place.z, depth) ? 1.0 : 0.0) - (IsAbove(0.0, depth) ? 1.0 : 0.0));
            return place;
        });
        EXPECT_NEAR(moved.structures.at(1).surface_angstrom, 1.762 + change, kRounding_angstrom);
    }
}

TEST(ClusterSelection, GrowsWithTheLattice) {
    const auto silver = [](double lattice) {
        ClusterRequest request = Nickel("Ni", lattice, {1, 1, 1});
        request.structure.relaxation.spacing = {LayerSpacing{-3.0, true}};
        return request;
    };
    for (const bool isBuilt : {true, false}) {
        const auto of = [&](double lattice) {
            ClusterRequest request = silver(lattice);
            if (!isBuilt) request.structure = {};
            return request;
        };
        const ClusterSelection selection = SelectAtoms(of(4.09));
        for (const double lattice : {3.7, 4.4})
            ExpectPlaces(MakeCluster(of(4.09)), MakeCluster(of(lattice), selection),
                         [&](std::size_t, const ClusterAtom&, const gemmi::Vec3& place) {
                             return place * (lattice / 4.09);
                         });
    }
}

// Oxygen over and under the titanium atoms of one kind, and to both sides of those of the other kind, which
// is that of the emitter in every second layer.
TEST(ClusterSelection, FollowsCoordinatesInTheCell) {
    constexpr double kStart = 0.305;
    const double width = 4.594 * std::sqrt(2.0);
    const MadeCluster start = MakeCluster(Rutile(kStart));
    const ClusterSelection selection = SelectAtoms(Rutile(kStart));
    for (const double u : {0.25, 0.35}) {
        const double step = std::sqrt(2.0) * 4.594 * (u - kStart);
        const MadeCluster moved = MakeCluster(Rutile(u), selection);
        ExpectPlaces(start, moved, [&](std::size_t s, const ClusterAtom& atom, gemmi::Vec3 place) {
            if (atom.atom == "Ti") return place;
            const double above = std::remainder(place.z, width / 2.0);
            const bool isEven = std::lround(2.0 * place.z / width) % 2 == 0;
            const double centre = isEven == (start.structures[s].site == 2) ? 0.0 : width / 2.0;
            if (std::abs(above) > 0.1)
                place.z -= step * std::copysign(1.0, above);
            else
                place.x += step * std::copysign(1.0, std::remainder(place.x - centre, width));
            return place;
        });
        EXPECT_NEAR(moved.structures.at(0).surface_angstrom, start.structures.at(0).surface_angstrom - step,
                    kRounding_angstrom);
    }
}

// From one cell of the surface into the next, and around it.
TEST(ClusterSelection, FollowsAnAdsorbateThroughAFaceOfTheCell) {
    const auto at = [](double first, double second) {
        ClusterRequest request = Oxygen("Ni", "O,0/0,1.6,c(2x2)");
        request.structure.adsorbates[0].place = {first, second};
        return request;
    };
    const gemmi::Vec3 a1(3.524 / 2.0, 3.524 / 2.0, 0.0);
    const gemmi::Vec3 a2(-3.524 / 2.0, 3.524 / 2.0, 0.0);
    const ClusterSelection selection = SelectAtoms(at(0.03, 0.02));
    const MadeCluster start = MakeCluster(at(0.03, 0.02));
    for (const double back : {0.06, 1.06})
        ExpectPlaces(start, MakeCluster(at(0.03 - back, 0.02), selection),
                     [&](std::size_t, const ClusterAtom& atom, const gemmi::Vec3& place) {
                         return atom.atom == "O" ? place - a1 * back : place;
                     });
    ExpectPlaces(start, MakeCluster(at(0.03, -0.3), selection),
                 [&](std::size_t, const ClusterAtom& atom, const gemmi::Vec3& place) {
                     return atom.atom == "O" ? place - a2 * 0.32 : place;
                 });
}

// The site is that between the same atoms, also where another one has its name by then: the second layer has
// moved below the fcc hollow.
TEST(ClusterSelection, KeepsTheSiteOfAnAdsorbate) {
    const auto shifted = [](double along) {
        ClusterRequest request = Oxygen("O", "O,fcc,1.1,p(2x2)");
        request.surface = {1, 1, 1};
        request.structure.relaxation.lateral_angstrom = {{0.0, 0.0}, {0.0, along}};
        return request;
    };
    const ClusterSelection selection = SelectAtoms(shifted(0.0));
    const MadeCluster start = MakeCluster(shifted(0.0));
    const double layer = 3.524 / std::sqrt(3.0);
    for (const double along : {-1.4, 1.4})
        ExpectPlaces(start, MakeCluster(shifted(along), selection),
                     [&](std::size_t, const ClusterAtom& atom, gemmi::Vec3 place) {
                         if (atom.atom == "Ni" && std::lround((place.z + 1.1) / layer) == -1)
                             place.y += along;
                         return place;
                     });
}

/// Depth and share of each structure, in any order.
std::vector<std::pair<long, long>> SharesByDepth(const MadeCluster& made) {
    double sum = 0.0;
    for (const EmitterShare& share : SharesOf(made)) sum += share.weight;
    std::vector<std::pair<long, long>> shares;
    for (const EmitterShare& share : SharesOf(made))
        shares.emplace_back(std::lround(share.depth_angstrom * 1e6), std::lround(share.weight / sum * 1e6));
    std::sort(shares.begin(), shares.end());
    return shares;
}

/// Whether all atoms of one cluster stand in another as well.
bool IsIn(const Structure& part, const Structure& whole) {
    return std::all_of(part.atoms.begin(), part.atoms.end(), [&](const ClusterAtom& atom) {
        return std::any_of(whole.atoms.begin(), whole.atoms.end(), [&](const ClusterAtom& other) {
            return other.atom == atom.atom && (PlaceOf(other) - PlaceOf(atom)).length() < 1e-6;
        });
    });
}

// Translations, emitters and orientations that are equal at the start and are no more: what is left is what
// the moved structure has by itself, but for the edge of the clusters.
TEST(ClusterSelection, FindsWhatIsEqualAfterTheMove) {
    const auto faceCentred = [](double x) {
        const CrystalCell cell = ParseExpressionCell(
            "lengths 3.6 3.6 3.6\natom Cu 0 0 x\natom Cu 1/2 1/2 0\natom Cu 0 1/2 1/2\natom Cu 1/2 0 1/2\n",
            {{"x", x}});
        ClusterRequest request = Emitters(cell, {0, 0, 1}, "Cu", 2.5);
        request.termination = "1";
        return request;
    };
    ClusterRequest offSite = Oxygen("Ni", "O,hollow,0.8,c(2x2)");
    offSite.structure.takesAllDomains = true;
    offSite.structure.relaxation.moves = {{0, "O", {}, {0.0, 0.0, 0.0}, false}};
    ClusterRequest shifted = offSite;
    shifted.structure.relaxation.moves[0].by = {0.12, 0.05, 0.0};
    const std::tuple<ClusterRequest, ClusterRequest, std::size_t> cases[] = {
        {faceCentred(0.0), faceCentred(0.02), 4}, {offSite, shifted, 8 * 4}};
    for (const auto& [start, moved, structures] : cases) {
        const ClusterSelection selection = SelectAtoms(start);
        const MadeCluster kept = MakeCluster(moved, selection);
        ClusterRequest larger = moved;
        larger.atoms = 3 * moved.atoms;
        const MadeCluster whole = MakeCluster(larger);
        ASSERT_EQ(kept.structures.size(), structures);
        EXPECT_EQ(SharesByDepth(kept), SharesByDepth(whole));
        for (const Structure& one : kept.cluster.structures)
            EXPECT_EQ(std::count_if(whole.cluster.structures.begin(), whole.cluster.structures.end(),
                                    [&](const Structure& other) { return IsIn(one, other); }),
                      1);
    }
}

// Averaged over all of them, the pattern changes smoothly from where the oxygen atom has its full symmetry.
TEST(ClusterSelection, PartsDomainsWithTheFirstStep) {
    ClusterRequest request = Oxygen("O", "O,hollow,0.8,c(2x2)");
    request.structure.takesAllDomains = true;
    request.structure.relaxation.moves = {{0, "O", {}, {0.0, 0.0, 0.0}, false}};
    const ClusterSelection selection = SelectAtoms(request);
    EXPECT_EQ(MakeCluster(request, selection).structures.size(), 1U);
    request.structure.relaxation.moves[0].by = {1e-4, 0.0, 0.0};
    EXPECT_EQ(MakeCluster(request, selection).structures.size(), 4U);
    EXPECT_EQ(MakeCluster(request).structures.size(), 1U);  // as a coordinate of four digits may be rounded
    request.cell = ParseExpressionCell(
        "lengths 2.5 2.5 6.12\nangles 90 90 120\natom Ni 0 0 0\natom Ni 0.3333 0.6667 0.6667\n"
        "atom Ni 0.6667 0.3333 0.3333\n");
    request.structure.adsorbates = {ParseAdsorbate("O,top,1.9,p(2x2)")};
    request.structure.relaxation.moves.clear();
    EXPECT_EQ(MakeCluster(request, SelectAtoms(request)).structures.size(), 1U);
}

TEST(ClusterSelection, RefusesOtherAtomsAndThoseThatCollide) {
    const ClusterRequest start = Oxygen("O", "O,hollow,0.8,c(2x2)");
    const ClusterSelection selection = SelectAtoms(start);
    const auto failure = [&](const std::function<void(ClusterRequest&)>& change) {
        ClusterRequest moved = start;
        change(moved);
        return ErrorText([&] { MakeCluster(moved, selection); });
    };
    const std::string others =
        "The structure has other atoms, adsorbates or moves than that from which the atoms of the clusters "
        "were chosen";
    EXPECT_EQ(failure([](ClusterRequest& r) { r.cell = PresetCell("fcc", {"Cu"}, {3.6}); }), others);
    EXPECT_EQ(failure([](ClusterRequest& r) { r.structure.adsorbates.push_back(ParseAdsorbate("O,top,2")); }),
              others);
    EXPECT_EQ(failure([](ClusterRequest& r) { r.structure.adsorbates[0] = ParseAdsorbate("S,hollow,1.2"); }),
              others);
    EXPECT_EQ(failure([](ClusterRequest& r) { r.structure = {}; }), others);
    EXPECT_EQ(failure([](ClusterRequest& r) { r.structure.adsorbates[0].height_angstrom = -1.7; }),
              "O of the adsorbates and Ni in layer 2 collide: they are 0.062 angstrom apart");
    EXPECT_EQ(
        ErrorText([] { MakeCluster(Rutile(0.04), SelectAtoms(Rutile(0.305))); }),
        "Atoms 1 (Ti) and 4 (O) of the cell are 0.260 angstrom apart, images included: more than 0.5 is "
        "needed");
}
