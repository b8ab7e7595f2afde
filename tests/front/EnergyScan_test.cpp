#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "TempFolder.h"
#include "foundation/Constants.h"
#include "front/RunQvre.h"
#include "prepare/phases/PhaseShiftFile.h"
#include "report/compare/EnergyCurves.h"
#include "report/sphere/SphereImage.h"
#include "scattering/ZfFreeElectron.h"

namespace {

class EnergyScan : public testing::Test {
protected:
    std::string Run(const std::string& recipe, const std::string& results,
                    const std::string& more = "") const {
        const QvreResult result =
            RunQvre("run " + folder_.Write("r.toml", recipe) + " -o " + folder_.Path(results) + more);
        EXPECT_EQ(result.status, 0) << result.errors;
        return result.output;
    }

    std::vector<EnergyCurve> Curves(const std::string& table) const {
        return LoadEnergyCurves(folder_.Path(table));
    }

    TempFolder folder_;
};

/// Copper with a section of energies and another of the emission.
std::string Copper(const std::string& energies, const std::string& emission = "",
                   const std::string& cluster = "emitter-layer = 2", const std::string& first = "") {
    return first + "[cluster]\npreset = \"Cu\"\natoms = 20\n" + cluster + "\n[emission]\nlevel = \"2p\"\n" +
           emission + "\n[phases]\nzero = -12\n[scattering]\nmethod = \"SINGLE\"\n" +
           (energies.empty() ? "" : "[energies]\n" + energies + "\n");
}

/// Wave number in 1/angstrom.
double WaveNumber(double kinetic_eV) {
    ZfFreeElectron electron;
    electron.SetEnergy_eV(kinetic_eV);
    return electron.k * 1e-10;
}

bool IsUnchanged(const std::string& text, const std::string& file) {
    const std::size_t at = text.rfind(file);
    return at != std::string::npos && text.substr(at, text.find('\n', at) - at).ends_with("unchanged");
}

}  // namespace

// An s wave and one atom at d below, which scatters s waves: the amplitude f exp(i k d)/d comes back over a
// way that is longer by d + d cos(theta), f = sin(delta) exp(i delta)/k. The surface refracts.
TEST_F(EnergyScan, AnAtomBelowGivesItsDistance) {
    constexpr double kDistance = 2.5;
    constexpr double kDelta_deg = 40.0;
    constexpr double kInner_eV = 12.0;
    folder_.Write("c.xyz", "2\nemitter and atom\nCu 0 0 0\nAg 0 0 -2.5\n");
    ZfPhaseShiftDocument phases;
    for (double inside = 112.0; inside <= 212.0; inside += 10.0)
        for (const char* name : {"Cu", "Ag"})
            phases.records.push_back(
                MakePhaseShiftRecord({name, name, inside, {kDelta_deg}, 1.0, kDistance, "test"}, 1));
    SavePhaseShifts(phases, folder_.Path("p.xml_ph"));
    Run("[cluster]\nfile = \"c.xyz\"\n[emission]\nisotropic = true\n[phases]\nfile = \"p.xml_ph\"\n"
        "[thermal]\ntemperature = 0\n[scattering]\nmethod = \"SINGLE\"\n"
        "[energies]\nfrom = 100\nto = \"0.2 keV\"\nstep = 10\ntheta = [0, 60]\nphi = 30\ninner-potential = "
        "12\n",
        "out");
    const std::vector<EnergyCurve> curves = Curves("out/energies.csv");
    ASSERT_EQ(curves.size(), 2U);
    constexpr double kFiles = 1e-5;  // digits of phase shifts and positions
    for (const EnergyCurve& curve : curves) {
        ASSERT_EQ(curve.kinetic_eV.size(), 11U);
        for (std::size_t i = 0; i < 11; ++i) {
            const double outside = 100.0 + 10.0 * static_cast<double>(i);
            EXPECT_EQ(curve.kinetic_eV[i], outside);
            const double ratio = outside / (outside + kInner_eV);
            const double sine = std::sin(Radians(curve.theta_deg)) * std::sqrt(ratio);
            const double cosine = std::sqrt(1.0 - sine * sine);
            const double k = WaveNumber(outside + kInner_eV);
            const double size = std::sin(Radians(kDelta_deg)) / (k * kDistance);
            const double phase = k * kDistance * (1.0 + cosine) + Radians(kDelta_deg);
            EXPECT_NEAR(curve.intensity[i] / curve.direct[i],
                        1.0 + 2.0 * size * std::cos(phase) + size * size, kFiles)
                << outside;
            const double widening = ratio * std::cos(Radians(curve.theta_deg)) / cosine;
            EXPECT_NEAR(curve.direct[i], widening, kFiles);
        }
    }
}

TEST_F(EnergyScan, HasTheValuesOfTheImage) {
    const std::string light = "unpolarised-along = [1, 0, -1]\n";
    Run(Copper("values = [90, 70, 65, 80, 75]\ntheta = [20, 50, 0]\nphi = [90, 180, 0]", light), "curves");
    const std::vector<EnergyCurve> curves = Curves("curves/energies.csv");
    Run(Copper("", light + "kinetic = 80") + "[image]\nresolution = 10\n", "image");
    const SphereImage image = LoadSphereImage(folder_.Path("image/pattern.xml_img")).image;
    const SphereImage direct = LoadSphereImage(folder_.Path("image/i0.xml_img")).image;
    ASSERT_EQ(curves.size(), 3U);
    constexpr double kImageDigits = 1e-5;
    for (const EnergyCurve& curve : curves) {
        ASSERT_EQ(curve.kinetic_eV, (std::vector<double>{65, 70, 75, 80, 90}));
        const double theta = Radians(curve.theta_deg);
        const double phi = Radians(curve.phi_deg);
        EXPECT_NEAR(curve.intensity[3] / image.Value(theta, phi), 1.0, kImageDigits);
        EXPECT_NEAR(curve.direct[3] / direct.Value(theta, phi), 1.0, kImageDigits);
    }
}

TEST_F(EnergyScan, LayersAddUpOrStandApart) {
    const std::string energies = "from = 60\nto = 100\nstep = 8";
    const std::string layers = "emitter-layer = [2, 3]";
    Run(Copper(energies, "", layers), "sum");
    Run(Copper(energies, "", layers, "series = \"apart\"\n"), "apart");
    const EnergyCurve sum = Curves("sum/energies.csv").at(0);
    const EnergyCurve first = Curves("apart/energies_layer2.csv").at(0);
    const EnergyCurve second = Curves("apart/energies_layer3.csv").at(0);
    constexpr double kDigits = 1e-7;
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_NEAR(sum.intensity[i], first.intensity[i] + second.intensity[i], kDigits);
        EXPECT_NEAR(sum.direct[i], first.direct[i] + second.direct[i], kDigits);
        EXPECT_NE(first.intensity[i], second.intensity[i]);
    }
}

// 932.7 eV of Cu 2p below the Fermi level, which lies 10 eV above the muffin-tin zero.
TEST_F(EnergyScan, PhotonsGiveKineticEnergiesOutside) {
    Run(Copper("vary = \"photon\"\nfrom = 1032\nto = 1072\nstep = 10\ninner-potential = 14",
               "binding = 932\nfermi = 10"),
        "out");
    const EnergyCurve curve = Curves("out/energies.csv").at(0);
    EXPECT_EQ(curve.photon_eV, (std::vector<double>{1032, 1042, 1052, 1062, 1072}));
    EXPECT_EQ(curve.kinetic_eV, (std::vector<double>{96, 106, 116, 126, 136}));
}

TEST_F(EnergyScan, ARangeThatGrowsKeepsWhatIsDone) {
    Run(Copper("from = 60\nto = 100\nstep = 8"), "out");
    const std::string text = Run(Copper("from = 60\nto = 108\nstep = 8"), "out");
    EXPECT_TRUE(IsUnchanged(text, "intensity_100eV.csv")) << text;
    EXPECT_FALSE(IsUnchanged(text, "intensity_108eV.csv")) << text;
    EXPECT_TRUE(IsUnchanged(folder_.Read("out/run.log"), "phaseshift_100eV.xml_ph"));
    EXPECT_FALSE(IsUnchanged(text, "energies.png")) << text;
    // A further direction needs no new scattering.
    Run(Copper("from = 60\nto = 108\nstep = 8\ntheta = [0, 9]"), "out");
    EXPECT_TRUE(IsUnchanged(folder_.Read("out/run.log"), "scatteredwave_60eV.xml_sf"));
    EXPECT_EQ(Curves("out/energies.csv").size(), 2U);
}

// What an analyser would count in the directions of the calculation, and a scan that finds the lattice again.
TEST_F(EnergyScan, IsComparedWithItsOwnCurves) {
    const std::string energies = "from = 60\nto = 110\nstep = 10\ntheta = [0, 40]";
    Run(Copper(energies), "out");
    const std::string measured = folder_.Path("m.csv");
    std::filesystem::copy_file(folder_.Path("out/energies.csv"), measured);
    const std::string text = Run(Copper(energies), "out", " --compare " + measured);
    EXPECT_NE(text.find("comparison               R 0.0000  scaled 0.0000 (by 1)"), std::string::npos)
        << text;
    EXPECT_TRUE(std::filesystem::exists(folder_.Path("out/energy_comparison.png")));
    EXPECT_NE(folder_.Read("out/energy_comparison.csv").find("\n60,0,0,"), std::string::npos);

    const std::string scan = Run(Copper(energies) + "[compare]\nmeasured = \"m.csv\"\nenergy-offset = 0\n" +
                                     "[scan]\nvary = \"cluster.azimuth\"\nvalues = [0, 20]\n",
                                 "scan");
    EXPECT_NE(scan.find("cluster.azimuth = 0 has the least R"), std::string::npos) << scan;
    EXPECT_TRUE(std::filesystem::exists(folder_.Path("scan/energy_comparison_azimuth_20.csv")));
}
