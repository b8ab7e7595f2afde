#include "prepare/phases/Surroundings.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ErrorText.h"
#include "TempFolder.h"
#include "foundation/Constants.h"
#include "prepare/cluster/CrystalSources.h"
#include "prepare/phases/VoronoiCell.h"

namespace {

const double kCubicBohr = std::pow(kBohr_angstrom, 3);

double Shell(const AtomSurroundings& species, std::size_t i) {
    return species.shells[i].distance * kBohr_angstrom;
}

}  // namespace

TEST(VoronoiVolume, KnowsOpenFromClosedCells) {
    std::vector<std::array<double, 3>> cube;
    for (const double s : {-2.0, 2.0})
        for (std::size_t i = 0; i < 3; ++i) cube.push_back({i == 0 ? s : 0, i == 1 ? s : 0, i == 2 ? s : 0});
    EXPECT_EQ(VoronoiVolume(cube), 0.0);  // unknown neighbours beyond could cut the corners
    cube.push_back({5.0, 5.0, 5.0});
    EXPECT_NEAR(VoronoiVolume(cube), 8.0, 1e-12);
    cube.erase(cube.begin());
    EXPECT_EQ(VoronoiVolume(cube), 0.0);
}

TEST(Surroundings, OfACrystal) {
    const double a = 5.653;
    const auto list = SurroundingsInCrystal(PresetCell("zincblende", {"Ga", "As"}, {a}));
    ASSERT_EQ(list.size(), 2U);
    EXPECT_NEAR(list[0].cellVolume * kCubicBohr, a * a * a / 8, 1e-9);
    const char* elements[] = {"As", "Ga", "As", "Ga"};
    const double counts[] = {4, 12, 12, 6};
    const double distances[] = {std::sqrt(3.0) / 4, std::sqrt(0.5), std::sqrt(11.0) / 4, 1.0};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(list[0].shells[i].element, elements[i]);
        EXPECT_EQ(list[0].shells[i].count, counts[i]);
        EXPECT_NEAR(Shell(list[0], i), a * distances[i], 1e-9);
    }
}

// The atoms of a small half crystal complete each other's view.
TEST(Surroundings, OfAClusterAreThoseOfItsCrystal) {
    Cluster cluster;
    ZfLoadCluster(cluster, QVRE_EXAMPLES "/cu001_small/cluster.xml_cl");
    const auto list = SurroundingsInCluster(cluster);
    ASSERT_EQ(list.size(), 1U);
    EXPECT_NEAR(list[0].cellVolume * kCubicBohr, std::pow(3.61, 3) / 4, 1e-3);
    EXPECT_NEAR(list[0].NearestDistance() * kBohr_angstrom, 3.61 * std::sqrt(0.5), 1e-5);
    const double counts[] = {12, 6, 24, 12};
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(list[0].shells[i].count, counts[i]) << i;
    Structure& structure = cluster.structures[0];
    for (int i = 0; structure.atoms.size() <= 128; ++i) structure.atoms.push_back(structure.atoms[0]);
    for (std::size_t i = 0; i < structure.atoms.size(); ++i) structure.atoms[i].name = std::to_string(i);
    EXPECT_EQ(ErrorText([&] { SurroundingsInCluster(cluster); }),
              "The atoms of the cluster have 129 names, and there is room for the phase shifts of 128: give "
              "atoms with like surroundings one name");
}

TEST(Surroundings, OfAListedNeighbourhood) {
    const TempFolder folder;
    const auto list = ReadSurroundings(
        folder.Write("list.txt", "# copper\nspecies Cu1 Cu 11.76 2\nCu 2.5527 12  # nearest\n\nCu 3.61 6\n"));
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].name, "Cu1");
    EXPECT_EQ(list[0].weight, 2.0);
    EXPECT_NEAR(Shell(list[0], 1), 3.61, 1e-12);
    const std::pair<const char*, const char*> bad[] = {
        {"Cu 2.5 12", R"("Cu 2.5 12": a line "species NAME ELEMENT VOLUME" has to come first)"},
        {"species Cu", R"("species Cu": wanted is: species NAME ELEMENT VOLUME [COUNT])"},
        {"species Cu Cu 12\nCu -1 2", R"("Cu -1 2": distance and count have to be above 0)"},
        {"# nothing", " holds no species"}};
    for (const auto& [text, message] : bad) {
        const std::string path = folder.Write("bad.txt", text);
        EXPECT_NE(ErrorText([&] { ReadSurroundings(path); }).find(message), std::string::npos) << text;
    }
}
