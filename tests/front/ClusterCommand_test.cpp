#include <gtest/gtest.h>

#include "RunQvre.h"
#include "TempFolder.h"

// The files that ship were made independently: order, digits and titles are theirs.
TEST(ClusterCommand, MakesTheExamplesToTheByte) {
    const TempFolder folder;
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"cu001_small/", "--preset Cu --layer 3 --atoms 60 --digits 6", " --debye Cu=343"},
        {"gaas001/",
         "--preset zincblende --element Ga As --lattice 5.653 --emitter As --layer 5 --radius 10.855 "
         "--digits 6",
         " --debye As=360 Ga=360 --temperature 300"}};
    for (const auto& [name, arguments, displacements] : cases)
        for (const std::string extension : {".xyz", ".xml_cl"})
            for (const bool moving : {false, true}) {
                RunQvre("cluster " + arguments + (moving ? displacements : "") + " -o " +
                        folder.Path("cluster" + extension));
                EXPECT_EQ(
                    folder.Read("cluster" + extension),
                    FileText(QVRE_EXAMPLES "/" + name + (moving ? "cluster_uiso" : "cluster") + extension));
            }
}

TEST(ClusterCommand, ShortestCommandSummarises) {
    const TempFolder folder;
    const QvreResult result = RunQvre("cluster --preset Cu -o " + folder.Path("c.xml_cl"));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output,
              folder.Path("c.xml_cl") +
                  ": 1 structure, without displacements\n"
                  "structure 0: Cu(001) emitter in layer 3, hemisphere radius 9.89 A\n"
                  "  207 atoms, emitter Cu (site 1), surface plane Cu at z = 3.6100 angstrom\n"
                  "  14 shells around the emitter: 12 at 2.553, 6 at 3.610, 24 at 4.421, 12 at 5.105, 20 at "
                  "5.708, ... angstrom\n"
                  "  nearest neighbour Cu at 2.5527 angstrom, size 9.886 angstrom\n"
                  "  point symmetry 4mm about z, a mirror plane at azimuth 0 degrees\n");
}

TEST(ClusterCommand, TurnsTheCrystal) {
    const TempFolder folder;
    const QvreResult result =
        RunQvre("cluster --preset Cu --surface 1,1,1 --azimuth 17 --domains 0,90 -o " + folder.Path("c.xyz"));
    for (const char* text : {"structure 0: Cu(111)", "a mirror plane at azimuth 17 degrees",
                             "a mirror plane at azimuth 47 degrees", "domain turned by 90 degrees"})
        EXPECT_PRED_FORMAT2(testing::IsSubstring, text, result.output);
}
