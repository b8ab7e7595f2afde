#include <gtest/gtest.h>

#include "ErrorText.h"
#include "TempFolder.h"
#include "input/Cluster.h"

namespace {

/// What loading prints, then the failure, if any.
std::string Load(Cluster& cluster, const std::string& path) {
    testing::internal::CaptureStdout();
    const std::string error = ErrorText([&] { ZfLoadCluster(cluster, path); });
    return testing::internal::GetCapturedStdout() + error;
}

constexpr const char* kUiso = "Properties=\"species:S:1:pos:R:3:Uiso:R:1\"";

}  // namespace

TEST(ClusterFile, XyzFrames) {
    const TempFolder folder;
    const std::string text = std::string("\n2\nany title\nGa 0 0 0\n\nAs\t1,2, 3\r\n1 atom\nx ") + kUiso +
                             " y\nSi 0.5 0 x 0.01\n3\ntoo few lines\nH 9 9 9";
    Cluster cluster;
    EXPECT_EQ(Load(cluster, folder.Write("a.b.xyz", text)),
              "loaded cluster 3\nThe number of atoms in cluster2\nno failure");
    const std::vector<Structure>& s = cluster.structures;
    ASSERT_EQ(s.size(), 3U);
    EXPECT_EQ(s[0].atoms[1].name, "As");
    EXPECT_EQ(s[0].atoms[1].position.VectorValueAt(2), 3 * 1e-10);
    EXPECT_EQ(s[1].atoms[0].position.VectorValueAt(2), 0.0);
    EXPECT_EQ(s[1].atoms[0].U.ValueAt(0, 0), 0.01 * 1e-20);
    EXPECT_EQ(s[2].atoms.size(), 1U);  // neither sorted nor validated: it lies off the origin

    // The blank title vanishes, the first atom becomes the title, and the next count line is an atom short.
    Load(cluster, folder.Write("f.xyz", "2\n\nA 0 0 0\nB 1 1 1\n"));
    EXPECT_EQ(cluster.structures.at(0).atoms.size(), 1U);
}

TEST(ClusterFile, Faults) {
    const TempFolder folder;
    const std::string title = std::string("title should include :") + kUiso;
    const std::pair<const char*, std::string> cases[] = {
        {"1\nt\nA 0 0", "File is not XYZ structure"},
        {"1\nt\nA 0 0 0 1", title + "\n please see https://github.com/libAtoms/extxyz"},
        {"0\nt\n", "Cluster is empity"}};
    Cluster cluster;
    for (const auto& [text, error] : cases)
        EXPECT_TRUE(Load(cluster, folder.Write("f.xyz", text)).ends_with(error)) << text;
    for (const char* path : {"a.XML_CL", "a.xyz/b", "a.xyz\\b", ".xyz", "a.", ""})
        EXPECT_EQ(Load(cluster, path), "Cannot load cluster file. Please use .xyz or .xml_cl") << path;
    EXPECT_EQ(Load(cluster, "no/such.xyz"), "FILE CANNOT OPEN:no/such.xyz");
    EXPECT_EQ(Load(cluster, "no/such.xml_cl"), "no/such.xml_cl: Cannot File Open");
}
