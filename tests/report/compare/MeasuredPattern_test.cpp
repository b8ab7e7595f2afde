#include "report/compare/MeasuredPattern.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ErrorText.h"
#include "TempFolder.h"
#include "foundation/Constants.h"

namespace {

using Numbers = std::vector<double>;

constexpr double kRounding = 1e-12;

// Each holds the points (10, 20) with 300 and (11.5, -20) with 400.
TEST(MeasuredPattern, TakesTheUsualTables) {
    for (const char* text :
         {"10,20,300\n11.5,-20,4e2\n", "# made today\n\n10 20 300 # first\n 11.5\t-20  400\n",
          "phi; Counts ;theta\r\n20; 300; 10\r\n-20;+400;11.5\r\n",
          "Azimuth,remark,POLAR,i\n20,bad,10,300\n-20,,11.5,400",
          // free lines in front, names with units, a name in a comment, lines that end as on an old Mac
          "Sample Ag(111), clean\nDate: 2024-05-01 12:30\nhv = 1486.6 eV\n\n10 20 300\n11.5 -20 400\n",
          "theta (deg) phi (deg) Intensity (arb. units)\n10 20 300\n11.5 -20 400\n",
          "# phi counts theta\n20 300 10\n-20 400 11.5\n", "10 20 300\r11.5 -20 400\r",
          "\u03b8 (\u00b0)\t\u03c6 (\u00b0)\tPeak area\n10\t20\t300\n11.5\t-20\t400\n",
          // Origin: names, units and comments in a line each; a spreadsheet: quotes, separators without
          // fields
          "Polar angle\tAzimuth\tCounts\ndeg\tdeg\tcts\n\t\tAg 3d\n10\t20\t300\n11.5\t-20\t400\n",
          "sep=;\n\"theta\";\"phi\";\"I\";;\n\"10\";\"20\";\"300\";;\n11,5;-20;400;;\n",
          // decimal commas
          "10,0 20,0 300,0\n11,5 -20,0 400\n", "10,0\t20\t3,0E+02\n11,5\t-20\t400,0\n",
          // what is left out
          "10,20,300\n10,20,\n10,20,NaN\n10,,7\n11.5,-20,400\n10,20,--\n",
          // radians and Fortran's exponents
          "polar [rad];phi_deg;I\n0.17453292519943295;20;3.0D+02\n0.20071286397934790;-20;400\n",
          // a block for each ring
          "theta = 10\nphi counts\n20 300\ntheta: 11.5 deg\nphi counts\n-20 400\n",
          // Igor text
          "IGOR\nWAVES/D/O\ttheta, phi, 'counts'\nBEGIN\n\t10\t20\t300\n\t11.5\t-20\t400\nEND\n"
          "X SetScale/P x 0,1,\"\", theta; SetScale y 0,0,\"\", theta\n",
          "IGOR\rWAVES phi\rBEGIN\r20\r-20\rEND\rWAVES theta\rBEGIN\r10\r11.5\rEND\rWAVES "
          "ag3d\rBEGIN\r300\r400\r"
          "END\r"}) {
        SCOPED_TRACE(text);
        const MeasuredPattern pattern = ParseMeasuredPattern(text);
        ASSERT_EQ(pattern.theta.size(), 2U);
        EXPECT_DOUBLE_EQ(pattern.theta[0], 10.0);
        EXPECT_DOUBLE_EQ(pattern.theta[1], 11.5);
        EXPECT_EQ(pattern.phi, (Numbers{20, -20}));
        EXPECT_EQ(pattern.intensity, (Numbers{300, 400}));
        EXPECT_TRUE(pattern.chi.empty());
        EXPECT_TRUE(pattern.sigma.empty());
        EXPECT_TRUE(pattern.energy.empty());
    }
}

TEST(MeasuredPattern, TakesFurtherColumns) {
    const MeasuredPattern pattern =
        ParseMeasuredPattern("theta phi chi counts dI Ekin\n1 2 -0.5 100 10 560\n1 3 nan 100 10 560\n");
    EXPECT_EQ(pattern.chi, Numbers{-0.5});
    EXPECT_EQ(pattern.intensity, Numbers{100});
    EXPECT_EQ(pattern.sigma, Numbers{10});
    EXPECT_EQ(pattern.energy, Numbers{560});
    for (const char* name :
         {"sigma", "Error", "err", "counts error", "error of I", "Standard deviation", "std. dev."})
        EXPECT_EQ(ParseMeasuredPattern(std::string("theta,phi,I,") + name + "\n1,2,3,4\n").sigma, Numbers{4})
            << name;
    for (const char* name :
         {"dI/I", "I0", "photon energy (eV)", "Binding energy", "theta offset", "E - EF"}) {
        const MeasuredPattern other =
            ParseMeasuredPattern(std::string("theta,phi,I,") + name + "\n1,2,3,4\n");
        EXPECT_TRUE(other.sigma.empty() && other.energy.empty()) << name;
    }
}

TEST(MeasuredPattern, TakesMatrices) {
    for (const char* text :
         {"\t0\t3\t6\n10\t1\t2\t3\n20\t4\t5\t\n", "0 3 6\n10 1 2 3\n20 4 5 NaN\n",
          "theta\\phi,0,3,6\n10,1,2,3\n20,4,5,\n", "Ag 3d, counts\ntheta/phi;0;3;6\n10;1;2;3\n20;4;5,0;\n",
          "IGOR\nWAVES/S/N=(2,3)\tmap\nBEGIN\n\t1\t2\t3\n\t4\t5\tNAN\nEND\n"
          "X SetScale/P x 10,10,\"deg\", map; SetScale/I y 0,6,\"deg\", map; SetScale d 0,0,\"cts\", map\n",
          "IGOR\nWAVES/N=(2, 3) map\nBEGIN\n1 2 3\n4 5 NAN\nEND\nWAVES polar\nBEGIN\n10\n20\nEND\n"
          "X SetScale y 0,9,\"deg\", map\n"}) {
        SCOPED_TRACE(text);
        const MeasuredPattern pattern = ParseMeasuredPattern(text);
        EXPECT_EQ(pattern.theta, (Numbers{10, 10, 10, 20, 20}));
        EXPECT_EQ(pattern.phi, (Numbers{0, 3, 6, 0, 3}));
        EXPECT_EQ(pattern.intensity, (Numbers{1, 2, 3, 4, 5}));
    }
    // The other way round: by the values beyond 90 degrees, by the names.
    for (const char* text :
         {"0 10 20 30\n0 1 2 3\n120 4 5 6\n240 7 8 9\n",
          "phi\\theta 10 20 30\n0 1 2 3\n120 4 5 6\n240 7 8 9\n",
          "Phi [deg]\ttheta=10\ttheta=20\ttheta=30\n0\t1\t2\t3\n120\t4\t5\t6\n240\t7\t8\t9\n",
          "phi\\theta\t10\u00b0\t20\u00b0\t30 deg\n0\t1\t2\t3\n120\t4\t5\t6\n240\t7\t8\t9\n",
          "phi 10 20 30\n0 1 2 3\n120 4 5 6\n240 7 8 9\n"}) {
        SCOPED_TRACE(text);
        const MeasuredPattern pattern = ParseMeasuredPattern(text);
        EXPECT_EQ(pattern.theta, (Numbers{10, 20, 30, 10, 20, 30, 10, 20, 30}));
        EXPECT_EQ(pattern.phi, (Numbers{0, 0, 0, 120, 120, 120, 240, 240, 240}));
    }
}

// A polar scan through the normal, and what a scan leaves to the settings.
TEST(MeasuredPattern, CompletesScans) {
    const MeasuredPattern through = ParseMeasuredPattern("theta,phi,I\n-10,30,1\n0,30,2\n10,30,3\n");
    EXPECT_EQ(through.theta, (Numbers{10, 0, 10}));
    EXPECT_EQ(through.phi, (Numbers{210, 30, 30}));

    const char* azimuthal = "phi,counts\n0,1\n3,2\n";
    const char* either = "0 1\n3 2\n";
    for (const char* text : {azimuthal, either, "angle;counts\n0;1\n3;2\n",
                             "IGOR\nWAVES scan\nBEGIN\n1\n2\nEND\nX SetScale/P x 0,3,\"deg\", scan\n"}) {
        const MeasuredPattern scan = ParseMeasuredPattern(text, {45.0, {}});
        EXPECT_EQ(scan.theta, (Numbers{45, 45})) << text;
        EXPECT_EQ(scan.phi, (Numbers{0, 3})) << text;
    }
    const MeasuredPattern polar = ParseMeasuredPattern(either, {{}, 30.0});
    EXPECT_EQ(polar.theta, (Numbers{0, 3}));
    EXPECT_EQ(polar.phi, (Numbers{30, 30}));
    const MeasuredPattern series =
        ParseMeasuredPattern("Kinetic energy (eV)\tI\n300\t1\n305\t2\n", {10.0, 0.0});
    EXPECT_EQ(series.energy, (Numbers{300, 305}));
    EXPECT_EQ(series.theta, (Numbers{10, 10}));

    const auto error = [](const char* text, const ScanDirection& direction) {
        return ErrorText([&] { ParseMeasuredPattern(text, direction); });
    };
    EXPECT_EQ(error(azimuthal, {}), "the table does not tell the polar angle: set measured-theta");
    EXPECT_EQ(error(azimuthal, {45.0, 0.0}), "the table has its own azimuth: leave measured-phi away");
    EXPECT_EQ(error(azimuthal, {95.0, {}}), "measured-theta lies between -90 and 90 degrees");
    EXPECT_EQ(error("phi,pole,I\n1,2,3\n", {}),
              "the table does not tell the polar angle (skipped: column 2 \"pole\"): set measured-theta");
    EXPECT_EQ(
        error(either, {}),
        "the table has one angle: set measured-theta if it is the azimuth, measured-phi if it is the polar "
        "angle, both if it is the kinetic energy");
    EXPECT_EQ(error("100 1\n103 2\n", {{}, 0.0}),
              "the polar angle 100 does not lie between -90 and 90 degrees");
}

// The letters of the extension are the columns; along the slit the direction leaves the plane of theta.
TEST(MeasuredPattern, TakesColumnsByTheExtension) {
    const TempFolder folder;
    const MeasuredPattern plain =
        LoadMeasuredPattern(folder.Write("a.etpis", "560 10 20 300 17\n560 11.5 -20 400 20\n"));
    EXPECT_EQ(plain.energy, (Numbers{560, 560}));
    EXPECT_EQ(plain.theta, (Numbers{10, 11.5}));
    EXPECT_EQ(plain.phi, (Numbers{20, -20}));
    EXPECT_EQ(plain.intensity, (Numbers{300, 400}));
    EXPECT_EQ(plain.sigma, (Numbers{17, 20}));

    const MeasuredPattern slit =
        LoadMeasuredPattern(folder.Write("b.etpai", "560 40 20 0 1\n560 40 20 7 1\n560 0 20 -7 1\n"));
    EXPECT_EQ(slit.theta[0], 40.0);
    const double theta = slit.theta[1] * qvre::kDegree;
    const double apart = (slit.phi[1] - 20.0) * qvre::kDegree;
    EXPECT_NEAR(std::sin(theta) * std::sin(apart), std::sin(7.0 * qvre::kDegree), kRounding)
        << "the component along the axis of the polar rotation";
    EXPECT_NEAR(std::atan2(std::sin(theta) * std::cos(apart), std::cos(theta)), 40.0 * qvre::kDegree,
                kRounding)
        << "in the plane of theta";
    EXPECT_NEAR(slit.theta[2], 7.0, 1e-7) << "at the normal, where the cosine is flat";
    EXPECT_NEAR(slit.phi[2], 20.0 - 90.0, kRounding);

    EXPECT_EQ(LoadMeasuredPattern(folder.Write("c.etp", "560 10 20 300\n")).intensity, Numbers{300});
    const std::string bare = folder.Write("d.etp", "60 10 0\n");
    EXPECT_EQ(ErrorText([&] { LoadMeasuredPattern(bare); }),
              bare + ": line 1: there are 3 fields instead of 4, the letters of .etpi");

    const std::string path = folder.Write("c.tpi", "560 10 20 300\n");
    EXPECT_EQ(ErrorText([&] { LoadMeasuredPattern(path); }),
              path + ": line 1: there are 4 fields instead of 3, the letters of .tpi");
}

TEST(MeasuredPattern, ErrorsNameTheLine) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "there are no points in the table"},
        {"theta,phi,I\n", "there are no points in the table"},
        {"1,2,3\n1,2\n", "line 2: there are 2 fields instead of 3"},
        {"10,5,20,0,100,3\n",
         "line 1: there are 6 columns without names: name them in a line above them, such as "
         "theta,phi,intensity,sigma; with decimal commas numbers are separated by semicolons or tabs"},
        {"10 20 1,500\n10 20.5 700\n",
         "line 2: \"1,500\" has a comma and \"20.5\" a point: write all numbers with one decimal sign, and "
         "none "
         "between thousands"},
        {"#\n1,2,nan\n", "no point has a value: all 1 are empty or not a number"},
        {"1,2,3x\n", "line 1: \"3x\" is not a number"},
        {"theta,phi,I\n1,2x,3\n", "line 2: \"2x\" is not a number"},
        {"1,2,1e999\n", "line 1: \"1e999\" is not a number"},
        {"1 2 3\nend of data\n", "line 2: \"end\" is not a number"},
        {"90.5,2,3\n", "line 1: the polar angle 90.5 does not lie between -90 and 90 degrees"},
        {"theta,phi,I,sigma\n1,2,3,-4\n", "line 2: the standard deviation -4 is below 0"},
        {"theta,phi,I,energy\n1,2,3,0\n", "line 2: the kinetic energy 0 eV is not above 0"},
        {"theta,phi\n1,2\n",
         "line 1: the columns \"theta\", \"phi\" are not enough or not known; known are theta or polar, phi "
         "or "
         "azimuth, energy, intensity or counts, chi, sigma; a line that is no line of names begins with #"},
        {"scan,E=10,E=20,E=30\n0,1,2,3\n3,4,5,6\n6,7,8,9\n",
         "line 1: the columns \"scan\", \"E=10\", \"E=20\", \"E=30\" are not enough or not known; known are "
         "theta or polar, phi or "
         "azimuth, energy, intensity or counts, chi, sigma; a line that is no line of names begins with #"},
        {"theta,phi,I,counts\n", "line 1: there are two columns for the quantity \"counts\""},
        {"theta\\phi 0 3 6\n10 1 2 3\n20 1 2\n", "line 3: there are 3 fields instead of the 4 of the matrix"},
        {"theta\\phi 0 3 6\n100 1 2 3\n",
         "line 2: the polar angle 100 does not lie between -90 and 90 degrees"},
        {"IGOR\nWAVES theta phi I\nBEGIN\n1 2\nEND\n", "line 4: there are 2 numbers instead of 3"},
        {"IGOR\nWAVES theta phi I\nBEGIN\n1 2 3\n", "the last block of waves has no END"},
        {"IGOR\nWAVES/N=(1,2) map\nBEGIN\n1 2\nEND\n",
         "the wave map has no angles along its rows: it needs X SetScale x, as in X SetScale/P x "
         "0,1,\"deg\", map"}};
    for (const auto& [text, message] : cases)
        EXPECT_EQ(ErrorText([t = text] { ParseMeasuredPattern(t); }), message) << text;
    EXPECT_EQ(ErrorText([] { LoadMeasuredPattern("/nonexistent/data.csv"); }),
              "/nonexistent/data.csv: there is no such file");
}

}  // namespace
