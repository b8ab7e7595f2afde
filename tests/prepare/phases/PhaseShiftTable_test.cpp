#include "prepare/phases/PhaseShiftTable.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ErrorText.h"
#include "TempFolder.h"
#include "foundation/Constants.h"

namespace {

class PhaseShiftTables : public testing::Test {
protected:
    PhaseShiftTable Read(const std::string& text, const PhaseTableChoice& choice) const {
        return ReadPhaseShiftTable(folder_.Write("table", text), choice);
    }

    TempFolder folder_;
};

}  // namespace

// Fields that touch, a remark behind the energy, a largest l that the rows do not hold, an energy too many.
TEST_F(PhaseShiftTables, FixedFields) {
    const std::string text =
        " 2  3  Ry  made up\n"
        " 1.5000   ( 1)\n"
        "-0.6885 0.0524-0.1026\n"
        " 2.5000\n"
        "-0.7000-0.060010.1000\n"
        " 3.0000\n";
    const PhaseShiftTable table = Read(text, {});
    ASSERT_EQ(table.energies_eV.size(), 2U);
    EXPECT_NEAR(table.energies_eV[1], 2.5 * kHartree_eV / 2, 1e-9);
    ASSERT_EQ(table.degrees[1].size(), 3U);
    EXPECT_NEAR(table.degrees[0][2], -0.1026 * kDegreesPerRadian, 1e-9);
    EXPECT_NEAR(table.degrees[1][1], -0.06 * kDegreesPerRadian, 1e-9);
    EXPECT_NEAR(table.degrees[1][2], 10.1 * kDegreesPerRadian, 1e-9);
}

// The last line of a block can look like an energy.
TEST_F(PhaseShiftTables, Blocks) {
    const std::string block = " .1 .2 .3 .4\n .5\n";
    const std::string other = " 1. 2. 3. 4.\n 5.\n";
    const std::string text =
        " 2 -10.0 0.0 -67.8 13.7 made up\n .5512\n" + block + other + " .6615\n" + block + other;
    PhaseTableChoice choice{PhaseTableFormat::kBlocks, 2, ""};
    const PhaseShiftTable table = Read(text, choice);
    ASSERT_EQ(table.degrees[1].size(), 5U);
    EXPECT_NEAR(table.degrees[1][4], 5.0 * kDegreesPerRadian, 1e-9);
    EXPECT_NEAR(table.energies_eV[0], 0.5512 * kHartree_eV, 1e-9);
    choice.block = 3;
    EXPECT_NE(ErrorText([&] { Read(text, choice); }).find("there are 2 blocks, and no block 3"),
              std::string::npos);
}

TEST_F(PhaseShiftTables, CommaSeparated) {
    const std::string text =
        "# made up\nelement,V0_eV,Rmt_angstrom,Ek_eV,d0,d1\nCu,-5,1.27,100,170,20\nAg,-4,1.4,100,1,2\n"
        "Cu,-5,1.27,200,-175,10\n";
    const PhaseShiftTable table = Read(text, {PhaseTableFormat::kCsv, 1, "Cu"});
    EXPECT_EQ(table.radius_angstrom, 1.27);
    // 170 and -175 are 15 degrees apart, modulo 180: halfway is 177.5.
    const std::vector<double> middle = PhasesAt(table, 150, true);
    EXPECT_NEAR(std::remainder(middle[0] - 177.5, 180.0), 0.0, 1e-9);
    EXPECT_NEAR(middle[1], 15.0, 1e-9);
    EXPECT_EQ(ErrorText([&] { PhasesAt(table, 250, false); }),
              "The table ends: it reaches from 100.000 to 200.000 eV, not to 250 eV");
}

TEST_F(PhaseShiftTables, SplinesPassThroughTheTableAndAreSmooth) {
    PhaseShiftTable table;
    for (int i = 0; i <= 20; ++i) {
        table.energies_eV.push_back(100.0 + 10.0 * i);
        table.degrees.push_back({std::remainder(400.0 * std::sin(i / 10.0), 180.0)});
    }
    EXPECT_NEAR(PhasesAt(table, 140.0, false)[0], table.degrees[4][0], 1e-9);
    EXPECT_NEAR(std::remainder(PhasesAt(table, 205.0, false)[0] - 400.0 * std::sin(1.05), 180.0), 0.0, 0.01);
}

TEST_F(PhaseShiftTables, SaysWhatIsWrong) {
    const PhaseTableChoice csv{PhaseTableFormat::kCsv, 1, "Cu"};
    const std::tuple<const char*, PhaseTableChoice, const char*> bad[] = {
        {"", {}, "it holds no phase shifts"},
        {"1 2\n 1.0\n 0.1 0.2x\n", {}, "phase shift: \"0.2x\" is no number"},
        {"2 1\n 1.0\n 0.1 0.2\n 0.9\n 0.1 0.2\n", {}, "it holds fewer than two energies"},
        {"5 1\n 1.0\n 0.1 0.2\n 1.1\n 0.1 0.2\n", {}, "it is cut short: it has 2 of 5 energies"},
        {"1 -10.0\n 1.0\n 0.1 0.2\n 1.1\n 0.1 0.2\n 1.2\n 0.1 0.2\n",
         {},
         "its first line tells 1 energies and it has 3: is it a table of blocks (format blocks)?"},
        {"energy,d0\n1,2\n", csv, "its title line has to name the columns Ek_eV, d0, d1, ..."},
        {"Ek_eV,d0\n1,2\n1,2\n", csv, "the energies do not rise"},
        {"Ek_eV,d0\n1\n", csv, "line 2: it has 1 fields and the title line 2"}};
    for (const auto& [text, choice, message] : bad) {
        const PhaseTableChoice wanted = choice;
        const std::string content = text;
        EXPECT_EQ(ErrorText([&] { Read(content, wanted); }), folder_.Path("table") + ": " + message) << text;
    }
}
