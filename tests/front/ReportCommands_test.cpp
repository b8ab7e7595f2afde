#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "TempFolder.h"
#include "front/RunQvre.h"
#include "report/SphereFunctions.h"

namespace {

class ReportCommands : public testing::Test {
protected:
    ReportCommands() {
        const auto map = SphereMap::kAzimuthalEquidistant;
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

TEST_F(ReportCommands, AnExportedTableComparesWithItsImage) {
    const std::string table = folder_.Path("data.csv");
    const QvreResult exported = RunQvre({"export", image_, "--i0", i0_, "-o", table});
    EXPECT_EQ(exported.status, 0) << exported.errors;
    EXPECT_EQ(exported.output, table + ": 37 x 37 pixels, 1009 on the map, I, I0 and chi\n");

    const std::string difference = folder_.Path("difference.csv");
    const QvreResult compared = RunQvre({"compare", image_, "--i0", i0_, "--measured", table, "--theta", "10",
                                         "70", "--rotate", "-o", difference});
    EXPECT_EQ(compared.status, 0) << compared.errors;
    EXPECT_NE(
        compared.output.find("rotation of b: 0.000 degrees\nR: 0.000000\nR with b scaled by 1: 0.000000\n"
                             "correlation: 1.000000\n"),
        std::string::npos)
        << compared.output;
    EXPECT_NE(folder_.Read("difference.csv").find("\ntheta,phi,chi_a,chi_b,difference\n"), std::string::npos);

    const QvreResult drawn = RunQvre(
        {"compare", image_, image_, "--background", "2", "--i0", i0_, "-o", folder_.Path("difference.png")});
    EXPECT_EQ(drawn.status, 0) << drawn.errors;
    EXPECT_EQ(folder_.Read("difference.png").substr(1, 3), "PNG");
}

TEST_F(ReportCommands, FailuresAndBadUsage) {
    const std::string table = folder_.Write("data.csv", "1,2,3\n1,2,x\n");
    const std::pair<std::vector<std::string>, int> cases[] = {
        {{"export", image_}, 2},
        {{"export", "wave.xml_sf", "--i0", i0_, "-o", folder_.Path("out.h5")}, 2},
        {{"compare", image_}, 2},
        {{"compare", image_, image_, "--measured", table}, 2},
        {{"compare", image_, "--i0-b", i0_, "--measured", table}, 2},
        {{"compare", image_, image_, "--background", "x"}, 2},
        {{"compare", image_, image_, "--theta", "10"}, 2},
        {{"compare", image_, "--measured", table, "--background", "1", "-o", table}, 2},
        {{"compare", image_, "--measured", table, "--background", "1", "-o", folder_.Path("out.png")}, 1},
        {{"compare", image_, image_, "--i0", i0_, "--i0-b", i0_, "-o", folder_.Path("out.gif")}, 1},
        {{"compare", image_, i0_, "--i0", i0_, "--i0-b", i0_, "-o", folder_.Path("out.csv")}, 1},
        {{"export", image_, "--i0", table, "-o", folder_.Path("out.csv")}, 1},
        {{"export", image_, "-o", folder_.Path("none/out.csv")}, 1}};
    for (const auto& [arguments, status] : cases) {
        const QvreResult result = RunQvre(arguments);
        EXPECT_EQ(result.status, status) << result.errors;
        EXPECT_NE(result.errors, "");
        EXPECT_EQ(result.output, "");
    }
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder_.Path(""))) ++files;
    EXPECT_EQ(files, 3U);
}

}  // namespace
