#include <gtest/gtest.h>

#include <filesystem>

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
                        "R of absolute differences: 0.000000\nR of multipoles up to l = 20: 0.000000\n"
                        "correlation: 1.000000\n",
                        compared.output);
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "\ntheta,phi,chi_a,chi_b,difference\n",
                        folder.Read("difference.csv"));
    const QvreResult drawn =
        RunQvre("compare " + both + " " + image + " --background 2 -o " + folder.Path("difference.png"));
    EXPECT_EQ(drawn.status, 0) << drawn.errors;
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "note: one side loses its I0 and the other a background",
                        drawn.output);
    EXPECT_EQ(folder.Read("difference.png").substr(1, 3), "PNG");
}

// A = (2 + z) (1 + x y), B = (2 + z) (1 - x y): the asymmetry is x y, their sum 4 + 2 z.
TEST(ReportCommands, AsymmetryIsOneImagePictureAndTable) {
    const TempFolder folder;
    const auto map = SphereMap::kEquidistantCylindrical;
    const auto left = [](double x, double y, double z) { return (2.0 + z) * (1.0 + x * y); };
    const auto right = [](double x, double y, double z) { return (2.0 + z) * (1.0 - x * y); };
    const std::string a = WriteImageFile(folder.Path("a.xml_img"), Sampled(map, 5.0, left));
    const std::string b = WriteImageFile(folder.Path("b.xml_img"), Sampled(map, 5.0, right));
    const std::string image = folder.Path("d.xml_img");
    const auto table = [&](const std::string& arguments) {
        const QvreResult result = RunQvre("export " + arguments + " --hemisphere -o " + folder.Path("d.csv"));
        EXPECT_EQ(result.status, 0) << result.errors;
        return folder.Read("d.csv");
    };
    EXPECT_EQ(RunQvre("sum --asymmetry " + a + " " + b + " -o " + image).output, image + " written\n");
    // theta 90, phi 45 degrees: x y = 1/2
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "theta,phi,asymmetry\n", table(image));
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "\n90,45,0.5\n", table(image));
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "theta,phi,A,B,asymmetry\n", table(a + " --asymmetry " + b));
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "\n90,45,3,1,0.5\n", table(a + " --asymmetry " + b));

    const std::string picture = folder.Path("d.png");
    for (const std::string& drawn : {image, a + " --asymmetry " + b})
        EXPECT_EQ(RunQvre("plot " + drawn + " --range -0.4 1 -o " + picture).output,
                  "asymmetry from -0.5 to 0.5, colours from -0.4 to 1\n" + picture + " written\n");
    // The mean over two-fold axes keeps it, that over mirror planes along x makes A and B equal.
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "asymmetry from -0.5 to 0.5",
                        RunQvre("plot " + a + " --asymmetry " + b + " --fold 2 -o " + picture).output);
    RunQvre("sum " + a + " " + b + " -o " + image);
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "I from 4 to 6\n",
                        RunQvre("plot " + image + " -o " + picture).output);
}

TEST(ReportCommands, FoldersTellImagesOfOneNameApart) {
    const TempFolder folder;
    const auto constant = [](double, double, double) { return 1.0; };
    std::string images;
    for (const char* run : {"cold", "warm"}) {
        std::filesystem::create_directory(folder.Path(run));
        images += WriteImageFile(folder.Path(std::string(run) + "/pattern.xml_img"),
                                 Sampled(SphereMap::kAzimuthalEquidistant, 10.0, constant)) +
                  " ";
    }
    RunQvre("plot " + images + "-o " + folder.Path("titles.png"));
    RunQvre("plot " + images + "-o " + folder.Path("captions.png") +
            " --caption cold/pattern --caption warm/pattern");
    RunQvre("plot " + images + "-o " + folder.Path("others.png") + " --caption pattern --caption pattern");
    EXPECT_EQ(folder.Read("titles.png"), folder.Read("captions.png"));
    EXPECT_NE(folder.Read("titles.png"), folder.Read("others.png"));
}
