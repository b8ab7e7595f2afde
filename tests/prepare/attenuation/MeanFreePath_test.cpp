#include "prepare/attenuation/MeanFreePath.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "ErrorText.h"
#include "prepare/cluster/CrystalSources.h"
#include "prepare/thermal/AtomicWeights.h"

namespace {

const ZfDebye kWeights = LoadAtomicWeights(QVRE_DATA "/AtomicWeight.txt");
const ValenceElectrons kValence(QVRE_DATA "/valence_electrons.csv");

SolidDensity Solid(const std::string& preset, const std::vector<std::string>& elements,
                   const std::vector<double>& lattice) {
    return DensityOfCrystal(PresetCell(preset, elements, lattice), kWeights, kValence);
}

Cluster ExampleCluster(const std::string& name) {
    Cluster cluster;
    ZfLoadCluster(cluster, QVRE_EXAMPLES "/" + name);
    return cluster;
}

}  // namespace

// At 1000 eV, calculated from optical data, to whole angstrom (S. Tanuma, C. J. Powell, D. R. Penn, Surf.
// Interface Anal. 17, 911 (1991)). The authors find the formula 10 percent off on the average.
TEST(MeanFreePath, TppAgreesWithCalculationsFromOpticalData) {
    constexpr double kFormula = 0.13;
    const std::tuple<const char*, const char*, double, double> published[] = {
        {"fcc", "Al", 4.05, 23.0},  {"diamond", "Si", 5.431, 25.0}, {"bcc", "Fe", 2.866, 16.0},
        {"fcc", "Ni", 3.524, 15.0}, {"fcc", "Cu", 3.615, 16.0},     {"fcc", "Ag", 4.086, 15.0},
        {"fcc", "Au", 4.078, 14.0}};
    for (const auto& [preset, element, a, length] : published)
        EXPECT_NEAR(Tpp2m_angstrom(Solid(preset, {element}, {a}), 0.0, 1000.0) / length, 1.0, kFormula)
            << element;
}

// Silicon dioxide, whose wide gap counts: 3.8 nm for Si 2p electrons of Al K-alpha light (C. J. Powell, A.
// Jablonski, J. Phys. Chem. Ref. Data 28, 19 (1999)). Without the gap the formula gives 3.3 nm.
TEST(MeanFreePath, TppOfAnInsulator) {
    const SolidDensity silica{2.2, (28.085 + 2.0 * 15.999) / 3.0, 16.0 / 3.0};
    EXPECT_NEAR(Tpp2m_angstrom(silica, 8.9, 1384.0), 38.0, 1.0);
}

// The formula by hand, at 60 eV, where its last term counts: Ep = 35.87 eV, beta = 0.01224, gamma = 0.06381,
// C = 0.5586, D = 21.14.
TEST(MeanFreePath, TppOfSlowElectrons) {
    EXPECT_NEAR(Tpp2m_angstrom({8.96, 63.546, 11.0}, 0.0, 60.0), 3.59, 0.01);
}

// At the speed of light no electron goes further for more energy: above 1 MeV only the slow rise of the
// logarithm's denominator is left, whereas the non-relativistic form goes on like E/ln E.
TEST(MeanFreePath, RelativisticElectronsGainLittle) {
    const SolidDensity copper = Solid("fcc", {"Cu"}, {3.615});
    const double atRest = 510998.95;
    EXPECT_NEAR(Tpp2m_angstrom(copper, 0.0, 20.0 * atRest) / Tpp2m_angstrom(copper, 0.0, 10.0 * atRest), 1.0,
                0.02);
}

TEST(SolidDensity, OfCrystalAndCluster) {
    constexpr double kHandbook = 0.004;
    const SolidDensity copper = Solid("fcc", {"Cu"}, {3.615});
    EXPECT_NEAR(copper.density_g_cm3 / 8.94, 1.0, kHandbook);
    const SolidDensity rutile = DensityOfCrystal(LoadCell(QVRE_EXAMPLES "/rutile.cif"), kWeights, kValence);
    EXPECT_NEAR(rutile.density_g_cm3 / 4.25, 1.0, kHandbook);
    EXPECT_DOUBLE_EQ(rutile.valenceElectrons, 16.0 / 3.0);
    const SolidDensity crystal = Solid("zincblende", {"As", "Ga"}, {5.653});
    const SolidDensity cut = DensityOfCluster(ExampleCluster("gaas001/cluster.xml_cl"), kWeights, kValence);
    EXPECT_NEAR(cut.density_g_cm3 / crystal.density_g_cm3, 1.0, 0.01);
    EXPECT_NEAR(Tpp2m_angstrom(cut, 1.4, 1400.0) / Tpp2m_angstrom(crystal, 1.4, 1400.0), 1.0, 0.01);
}

// Whatever lies on a slab, its inside is the solid.
TEST(SolidDensity, OfSlabs) {
    for (const auto& [cell, element, lattice] :
         {std::tuple{"o_ni001", "Ni", 3.524}, {"co_cu110", "Cu", 3.615}, {"pt111", "Pt", 3.924}}) {
        const CrystalCell slab = LoadCell(std::string(QVRE_EXAMPLES "/surfaces/") + cell + ".cell");
        const SolidDensity inside = DensityOfCrystal(slab, kWeights, kValence);
        EXPECT_NEAR(inside.density_g_cm3 / Solid("fcc", {element}, {lattice}).density_g_cm3, 1.0, 1e-3)
            << cell;
    }
}

TEST(SolidDensity, AdsorbedAtomsDoNotCount) {
    Cluster cluster = ExampleCluster("gaas001/cluster.xml_cl");
    const SolidDensity bare = DensityOfCluster(cluster, kWeights, kValence);
    ClusterAtom oxygen;
    oxygen.name = oxygen.atom = "O";
    oxygen.SetPositionAngstrom(Vector3(0.7, 0.7, 12.0));
    cluster.structures[0].atoms.push_back(oxygen);
    EXPECT_NEAR(DensityOfCluster(cluster, kWeights, kValence).density_g_cm3, bare.density_g_cm3, 1e-9);
}

TEST(SolidDensity, RefusesWhatDoesNotTellIt) {
    CrystalCell slab = PresetCell("fcc", {"Cu"}, {3.615});
    slab.axes = slab.axes.multiply(gemmi::Mat33(1, 0, 0, 0, 1, 0, 0, 0, 3));
    for (CellAtom& atom : slab.atoms) atom.fractional.z /= 3.0;
    EXPECT_EQ(ErrorText([&] { DensityOfCrystal(slab, kWeights, kValence); }),
              "The cell has an empty layer of 9.0375 angstrom and is too thin to tell the density of the "
              "solid: give the mean free path as a length");
    Cluster half = ExampleCluster("gaas001/cluster.xml_cl");
    std::erase_if(half.structures[0].atoms, [](const ClusterAtom& atom) {
        return atom.atom == "Ga" && NormSquared(atom.position) > 1e-19;
    });
    EXPECT_EQ(
        ErrorText([&] { DensityOfCluster(half, kWeights, kValence); }),
        "The cluster is too small to tell the density of the solid: give the mean free path as a length");
    Cluster pair;
    pair.structures.resize(1);
    for (const double x : {0.0, 2.0}) {
        ClusterAtom& atom = pair.structures[0].atoms.emplace_back();
        atom.name = atom.atom = "N";
        atom.SetPositionAngstrom(Vector3(x, 0.0, 0.0));
    }
    EXPECT_EQ(
        ErrorText([&] { DensityOfCluster(pair, kWeights, kValence); }),
        "The cluster is too small to tell the density of the solid: give the mean free path as a length");
}

TEST(MeanFreePath, Texts) {
    const SolidDensity copper = Solid("fcc", {"Cu"}, {3.615});
    EXPECT_EQ(ErrorText([&] { Tpp2m_angstrom(copper, 0.0, 20.0); }),
              "TPP-2M has no meaning at 20 eV, it holds from 50 eV on: give the mean free path as a length");
    MeanFreePathRequest formula;
    EXPECT_EQ(MeanFreePathWarning(formula, 50.0), "");
    EXPECT_EQ(MeanFreePathWarning(formula, 49.0),
              "TPP-2M holds from 50 to 200000 eV, and 49 eV lies outside");
    EXPECT_EQ(MeanFreePathText(formula, copper, 1119.0),
              "16.8 angstrom at 1119 eV (TPP-2M: 8.93 g/cm^3, 11 valence electrons in 63.546 u, gap 0 eV)");
    formula.gap_eV = 40.0;
    EXPECT_EQ(ErrorText([&] { CheckMeanFreePath(formula); }),
              "The band gap has to lie between 0 and 30 eV, not 40");
    formula = {-3.0};
    EXPECT_EQ(ErrorText([&] { CheckMeanFreePath(formula); }),
              "The mean free path has to lie between 0.5 and 100000 angstrom, not -3");
}
