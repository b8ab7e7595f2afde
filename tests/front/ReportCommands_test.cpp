#include <gtest/gtest.h>

#include "TempFolder.h"
#include "front/RunQvre.h"
#include "report/SphereFunctions.h"

namespace {

class ReportCommands : public testing::Test {
protected:
    ReportCommands() {
        const auto map = SphereMap::kEquidistantCylindrical;
        const auto i0 = [](double, double, double z) { return 2.0 + z; };
        WriteImageFile(image_, Sampled(map, 5.0, [&](double x, double y, double z) {
                           return i0(x, y, z) * (1.0 + 0.3 * x);
                       }));
        WriteImageFile(i0_, Sampled(map, 5.0, i0));
    }

    TempFolder folder_;
    std::string image_ = folder_.Path("pattern.xml_img");
    std::string i0_ = folder_.Path("i0.xml_img");
};

}  // namespace

TEST_F(ReportCommands, AnExportedTableComparesWithItsImage) {
    const std::string table = folder_.Path("data.csv");
    const std::string both = image_ + " --i0 " + i0_;
    const QvreResult exported = RunQvre("export " + both + " --hemisphere -o " + table);
    EXPECT_EQ(exported.output, table + ": 72 x 19 pixels, 1368 on the map, I, I0 and chi\n");

    const QvreResult compared = RunQvre("compare " + both + " --measured " + table +
                                        " --theta 10 70 --rotate -o " + folder_.Path("difference.csv"));
    EXPECT_EQ(compared.status, 0) << compared.errors;
    EXPECT_PRED_FORMAT2(testing::IsSubstring,
                        "rotation of b: 0.000 degrees\nR: 0.000000\nR with b scaled by 1: 0.000000\n"
                        "correlation: 1.000000\n",
                        compared.output);
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "\ntheta,phi,chi_a,chi_b,difference\n",
                        folder_.Read("difference.csv"));
    const QvreResult drawn =
        RunQvre("compare " + both + " " + image_ + " --background 2 -o " + folder_.Path("difference.png"));
    EXPECT_EQ(drawn.status, 0) << drawn.errors;
    EXPECT_EQ(folder_.Read("difference.png").substr(1, 3), "PNG");
}
