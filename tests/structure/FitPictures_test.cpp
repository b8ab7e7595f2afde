#include "structure/FitPictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <set>
#include <string>

#include "ErrorText.h"
#include "LinearFit.h"
#include "TempFolder.h"
#include "report/picture/Canvas.h"
#include "report/picture/PngPicture.h"
#include "structure/ElementColours.h"
#include "structure/FitFiles.h"
#include "structure/FitOutput.h"
#include "structure/StructurePicture.h"

namespace {

constexpr double kByte = 0.005;  // colours have 8 bits
const Colour kBlue{0.0, 0.447, 0.698};
const Colour kOrange{0.835, 0.369, 0.0};

PngPicture Drawn(const std::function<void(Canvas&)>& draw) {
    const TempFolder folder;
    Canvas canvas(folder.Path("a.png"));
    draw(canvas);
    canvas.Finish();
    return PngPicture(folder.Path("a.png"));
}

PngPicture DrawnFile(const FitReport& report, const std::string& file) {
    for (const FitPicture& picture : FitPictures(report))
        if (picture.file == file) return Drawn(picture.draw);
    ADD_FAILURE() << "there is no " << file;
    return PngPicture("");
}

int Pixels(const PngPicture& png, const Colour& colour) {
    int count = 0;
    for (int row = 0; row < png.Height(); ++row)
        for (int column = 0; column < png.Width(); ++column)
            if (Difference(png.At(column, row), colour) < kByte) ++count;
    return count;
}

/// Pixels of the longest horizontal line of a colour.
int LongestRun(const PngPicture& png, const Colour& colour) {
    int longest = 0;
    for (int row = 0; row < png.Height(); ++row) {
        int run = 0;
        for (int column = 0; column < png.Width(); ++column) {
            run = Difference(png.At(column, row), colour) < kByte ? run + 1 : 0;
            longest = std::max(longest, run);
        }
    }
    return longest;
}

bool AreSame(const PngPicture& a, const PngPicture& b) {
    if (a.Width() != b.Width() || a.Height() != b.Height()) return false;
    for (int row = 0; row < a.Height(); ++row)
        for (int column = 0; column < a.Width(); ++column)
            if (Difference(a.At(column, row), b.At(column, row)) > 0.0) return false;
    return true;
}

/// Oxygen on a layer of nickel 1 angstrom below it, and palladium under it.
CrystalCell Surface() {
    CrystalCell cell;
    cell.axes = gemmi::Mat33(3.5, 0.0, 0.0, 0.0, 3.5, 0.0, 0.0, 0.0, 20.0);
    cell.atoms = {{"O", {0.0, 0.0, 0.5}}, {"Ni", {0.5, 0.5, 0.45}}, {"Pd", {0.0, 0.0, 0.36}}};
    return cell;
}

FittedData Scan() {
    FittedData data{.name = "polar", .compared = {}, .amplitude = 2.0};
    for (int i = 0; i < 40; ++i) {
        data.compared.theta.push_back(2.0 * i);
        data.compared.phi.push_back(0.0);
        data.compared.weight.push_back(1.0);
        data.compared.chiA.push_back(0.2 * std::cos(0.3 * i));
        data.compared.chiB.push_back(0.1 * std::cos(0.3 * i) + 0.02 * std::sin(i));
    }
    return data;
}

}  // namespace

TEST(StructurePicture, IsThatOfTheSurfaceWhateverTheCell) {
    const auto draw = [](const CrystalCell& cell) {
        return Drawn([&cell](Canvas& canvas) { DrawSurface(cell, "O/Ni", canvas); });
    };
    const PngPicture first = draw(Surface());
    CrystalCell moved = Surface();  // the slab now reaches through the end of the cell
    for (CellAtom& atom : moved.atoms) atom.fractional = atom.fractional + gemmi::Vec3(0.25, 0.5, 0.5625);
    EXPECT_TRUE(AreSame(first, draw(moved)));
    CrystalCell turned = Surface();  // in space
    turned.axes = gemmi::Mat33(0.0, 0.0, 20.0, 3.5, 0.0, 0.0, 0.0, 3.5, 0.0);
    EXPECT_TRUE(AreSame(first, draw(turned)));
}

TEST(StructurePicture, ShowsWhatLiesOnTop) {
    CrystalCell cell = Surface();
    cell.atoms[1].fractional.z = 0.4999;  // as high as the oxygen, so not paler
    const PngPicture png = Drawn([&cell](Canvas& canvas) { DrawSurface(cell, "", canvas); });
    // The view from above has its middle, that of the cell, at (100, 90) points of a page 240.9 wide.
    const double scale = png.Width() / kColumnWidth;
    const auto at = [&](double x, double y) {
        return png.At(static_cast<int>(x * scale), static_cast<int>(y * scale));
    };
    EXPECT_LT(Difference(at(100.0, 90.0), ElementColour("Ni")), kByte);
    // The view is 12 angstrom in 180 points wide, so the oxygen at the corners is 1.75 angstrom or 26.25
    // points off; 2 points beside the lines of the cell.
    for (const double x : {-29.0, 29.0})
        for (const double y : {-29.0, 29.0})
            EXPECT_LT(Difference(at(100.0 + x, 90.0 + y), ElementColour("O")), kByte);
}

TEST(StructurePicture, TheEmitterIsSeenThroughTheAtomsBeforeIt) {
    Structure structure;
    for (const double z : {0.0, 2.5}) {
        structure.atoms.emplace_back();
        structure.atoms.back().atom = "Cu";
        structure.atoms.back().SetPositionAngstrom(Vector3(0.0, 0.0, z));
    }
    const Colour red{0.85, 0.0, 0.1};
    const auto ring = [&] {
        return Pixels(Drawn([&](Canvas& canvas) { DrawClusterViews(structure, "", canvas); }), red);
    };
    const int withEmitter = ring();
    structure.atoms[0].SetPositionAngstrom(Vector3(0.0, 0.0, 1.2));
    EXPECT_EQ(ring(), 0);
    EXPECT_GT(withEmitter, 100);
}

TEST(FitPictures, BarsOfAProfileAreAsLongAsTheErrors) {
    const PngPicture png = DrawnFile(LinearFit().Report(), "profile_d12.png");
    EXPECT_NEAR(LongestRun(png, kBlue), std::sqrt(10.0) * LongestRun(png, kOrange), 6.0);
}

TEST(FitPictures, CorrelationsAreColoured) {
    FitReport report = LinearFit(-0.6).Report();
    const double c = report.noise->Correlation(0, 1);
    const PngPicture png = DrawnFile(report, fit_files::kCorrelations);
    const int most = Pixels(png, ColourAt(ColourMap::kDiverging, 1.0));
    const int cells = Pixels(png, ColourAt(ColourMap::kDiverging, (c + 1.0) / 2.0));
    EXPECT_GT(cells, 5000);
    EXPECT_NEAR(cells, most, 0.1 * most);  // less their numbers
}

TEST(FitPictures, TheDifferenceOfAPerfectFitIsALine) {
    FitReport report = LinearFit().Report();
    report.data = {Scan()};
    // With one scan the calculation is orange, measured points are black.
    const PngPicture with = DrawnFile(report, "data_polar.png");
    report.data[0].compared.chiB = report.data[0].compared.chiA;
    report.data[0].amplitude = 1.0;
    const PngPicture without = DrawnFile(report, "data_polar.png");  // a difference of 0 all along
    EXPECT_GT(LongestRun(without, kOrange), 0.7 * without.Width());
    EXPECT_LT(LongestRun(with, kOrange), 0.1 * with.Width());
}

TEST(FitOutput, HasAPageForEveryPictureAtTheEnd) {
    const TempFolder folder;
    FitReport report = LinearFit().Report();
    report.cell = Surface();
    report.data = {Scan()};
    report.records = {{.number = 1, .point = {}, .misfit = 120.0, .r = 0.12, .dataSetR = {}, .failure = {}},
                      FailedEvaluation("atoms 3 and 7 collide")};
    const auto files = [&folder] {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder.Path("")))
            names.insert(entry.path().filename());
        return names;
    };
    report.isRunning = true;
    WriteFitReport(report, folder.Path("."));
    std::set<std::string> expected = {"best.cif", "comparison_polar.csv", "course.png", "data_polar.png",
                                      "fit.json", "profiles.csv",         "report.txt", "structure.png"};
    EXPECT_EQ(files(), expected);
    report.isRunning = false;
    WriteFitReport(report, folder.Path("."));
    expected.insert({"correlations.png", "profile_d12.png", "profile_d23.png", "report.pdf"});
    EXPECT_EQ(files(), expected);
    EXPECT_NE(folder.Read("report.pdf").find("/Count 6\n"), std::string::npos);
    EXPECT_EQ(ErrorText([&folder] {
                  Canvas canvas(folder.Path("a.png"));
                  canvas.BeginPage(100.0, 100.0);
                  canvas.BeginPage(100.0, 100.0);
              }),
              "Cannot draw " + folder.Path("a.png") + ": only a PDF has several pages");
}
