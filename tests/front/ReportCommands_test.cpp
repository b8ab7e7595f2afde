#include <gtest/gtest.h>

#include "TempFolder.h"
#include "front/RunQvre.h"
#include "report/SphereFunctions.h"

TEST(ReportCommands, AnExportedTableComparesWithItsImage) {
    const TempFolder folder;
    const auto map = SphereMap::kEquidistantCylindrical;
    const auto smooth = [](double, double, double z) { return 2.0 + z; };
    const auto values = [](double x, double, double z) { return (2.0 + z) * (1.0 + 0.3 * x); };
    const std::string image = WriteImageFile(folder.Path("pattern.xml_img"), Sampled(map, 5.0, values));
    const std::string i0 = WriteImageFile(folder.Path("i0.xml_img"), Sampled(map, 5.0, smooth));
    const std::string table = folder.Path("data.csv");
    const std::string both = image + " --i0 " + i0;
    const QvreResult exported = RunQvre("export " + both + " --hemisphere -o " + table);
    EXPECT_EQ(exported.output, table + ": 72 x 19 pixels, 1368 on the map, I, I0 and chi\n");

    const QvreResult compared = RunQvre("compare " + both + " --measured " + table +
                                        " --theta 10 70 --rotate -o " + folder.Path("difference.csv"));
    EXPECT_EQ(compared.status, 0) << compared.errors;
    EXPECT_PRED_FORMAT2(testing::IsSubstring,
                        "rotation of b: 0.000 degrees\nR: 0.000000\nR with b scaled by 1: 0.000000\n"
                        "correlation: 1.000000\n",
                        compared.output);
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "\ntheta,phi,chi_a,chi_b,difference\n",
                        folder.Read("difference.csv"));
    const QvreResult drawn =
        RunQvre("compare " + both + " " + image + " --background 2 -o " + folder.Path("difference.png"));
    EXPECT_EQ(drawn.status, 0) << drawn.errors;
    EXPECT_EQ(folder.Read("difference.png").substr(1, 3), "PNG");
}
