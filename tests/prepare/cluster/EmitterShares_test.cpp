#include "prepare/cluster/EmitterShares.h"

#include <gtest/gtest.h>

#include "ErrorText.h"
#include "TempFolder.h"
#include "prepare/cluster/ClusterMaking.h"
#include "prepare/cluster/CrystalSources.h"

namespace {

// The table is read by other programs too: its text is fixed.
TEST(EmitterShares, ComeBackFromTheirTable) {
    const TempFolder folder;
    const std::string path = folder.Path("a.emitters.csv");
    EXPECT_EQ(EmitterSharesBeside(folder.Path("a.xyz")), path);
    SaveEmitterShares({{0.0, 1.0, "O", 3, 1}, {2.359, 4.0, "Ti", 1, 2}}, path);
    EXPECT_EQ(folder.Read("a.emitters.csv"),
              "structure,element,site,layer,depth,weight\n1,O,3,1,0.000000,1\n2,Ti,1,2,2.359000,4\n");
    const std::vector<EmitterShare> shares = LoadEmitterShares(path);
    ASSERT_EQ(shares.size(), 2U);
    EXPECT_EQ(shares[1].depth_angstrom, 2.359);
    EXPECT_EQ(shares[1].weight, 4.0);
    EXPECT_EQ(shares[1].element, "Ti");
    EXPECT_EQ(shares[1].site, 1);
    EXPECT_EQ(shares[1].layer, 2);
}

TEST(EmitterShares, SayWhatIsWrong) {
    const TempFolder folder;
    const auto load = [&](const std::string& rows) {
        const std::string path = folder.Write("e.csv", "structure,depth,weight\n" + rows);
        return ErrorText([&] { LoadEmitterShares(path); }).substr(path.size() + 2);
    };
    EXPECT_EQ(load("1,-0.1,1\n"), "depth: -0.1 is below 0");
    EXPECT_EQ(load("1,0,-1\n"), "weight: -1 is below 0");
    EXPECT_EQ(load("1,0,1\n3,1,1\n"),
              "row 2 is of structure 3: a row for each structure is needed, in their order, from 1");
    EXPECT_EQ(load("1,0,0\n2,1,0\n"), "no structure has a weight above 0");
    EXPECT_EQ(load(""), "no structure has a weight above 0");
}

// The cluster alone tells the depth that the crystal told.
TEST(EmitterShares, OfAClusterHaveItsDepths) {
    ClusterRequest request;
    request.cell = PresetCell("Cu", {}, {});
    request.layers = {1, 4};
    const MadeCluster made = MakeCluster(request);
    const std::vector<EmitterShare> known = SharesOf(made);
    const std::vector<EmitterShare> found = SharesOf(made.cluster);
    ASSERT_EQ(found.size(), 2U);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_NEAR(known[i].depth_angstrom, i == 0 ? 0.0 : 3 * 3.61 / 2, 1e-9);
        EXPECT_NEAR(found[i].depth_angstrom, known[i].depth_angstrom, 1e-9);
        EXPECT_EQ(found[i].element, "Cu");
    }
}

}  // namespace
