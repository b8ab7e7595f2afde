#include <gtest/gtest.h>

#include "ErrorText.h"
#include "TempFolder.h"
#include "input/ZfCluster.h"

namespace {

struct Loaded {
    std::string output;
    std::string error;
    ZfCluster cluster;
};

Loaded Load(const std::string& path) {
    Loaded result;
    testing::internal::CaptureStdout();
    result.error = ErrorText([&] { ZfLoadCluster(result.cluster, path); });
    result.output = testing::internal::GetCapturedStdout();
    return result;
}

constexpr const char* kUiso = "Properties=\"species:S:1:pos:R:3:Uiso:R:1\"";

}  // namespace

TEST(ClusterFile, XyzFrames) {
    const TempFolder folder;
    const std::string text = std::string("\n2\nany title\nGa 0 0 0\n\nAs\t1,2, 3\r\n1 atom\nx ") + kUiso +
                             " y\nSi 0.5 0 x 0.01\n3\ntoo few lines\nH 9 9 9";
    const Loaded loaded = Load(folder.Write("a.b.xyz", text));
    EXPECT_EQ(loaded.error, "no failure");
    EXPECT_EQ(loaded.output, "loaded cluster 3\nThe number of atoms in cluster2\n");
    const std::vector<ZfStructure>& s = loaded.cluster.structures;
    ASSERT_EQ(s.size(), 3U);
    EXPECT_EQ(s[0].atoms[1].name, "As");
    EXPECT_EQ(s[0].atoms[1].atom, "As");
    EXPECT_EQ(s[0].atoms[1].position.VectorValueAt(2), 3 * 1e-10);
    EXPECT_EQ(s[0].atoms[1].U.Count(), 0);
    EXPECT_EQ(s[1].atoms[0].position.VectorValueAt(2), 0.0);
    EXPECT_EQ(s[1].atoms[0].U.ValueAt(0, 0), 0.01 * 1e-20);
    EXPECT_EQ(s[2].atoms.size(), 1U);  // neither sorted nor validated: it lies off the origin
}

TEST(ClusterFile, XyzQuirksAndFaults) {
    const TempFolder folder;
    const auto frames = [&](const std::string& text) {
        return Load(folder.Write("f.xyz", text)).cluster.structures;
    };
    // The blank title vanishes, the first atom becomes the title, and the next count line is an atom short.
    EXPECT_EQ(frames("2\n\nA 0 0 0\nB 1 1 1\n").at(0).atoms.size(), 1U);
    EXPECT_EQ(frames("1\nt\nA 0 0 0\nend\nt\nB 1 1 1\n").size(), 1U);
    EXPECT_EQ(frames("1\nt\nA 0 0 0\n1\n").size(), 1U);

    const std::pair<std::string, std::string> cases[] = {
        {"1\nt\nA 0 0", "File is not XYZ structure"},
        {"1\nt\nA 0 0 0 1 2", "File is not XYZ structure"},
        {"1\nt\nA 0 0 0 1",
         std::string("title should include :") + kUiso + "\n please see https://github.com/libAtoms/extxyz"},
        {"", "Cluster is empity"},
        {"0\nt\n", "Cluster is empity"}};
    for (const auto& [text, error] : cases) EXPECT_EQ(Load(folder.Write("f.xyz", text)).error, error) << text;
}

TEST(ClusterFile, TheExtensionChooses) {
    const TempFolder folder;
    EXPECT_EQ(
        Load(folder.Write("e.xml_cl", "<zf_crystal_structure_data></zf_crystal_structure_data>")).output,
        "loaded cluster 0\n");
    const std::string refused = "Cannot load cluster file. Please use .xyz or .xml_cl";
    for (const char* path : {"a.XML_CL", "a.xyz/b", "a.xyz\\b", ".xyz", "xyz", "a.", ""})
        EXPECT_EQ(Load(path).error, refused) << path;
    EXPECT_EQ(Load("no/such.xyz").error, "FILE CANNOT OPEN:no/such.xyz");
    EXPECT_EQ(Load("no/such.xml_cl").error, "no/such.xml_cl: Cannot File Open");
}
