#include "pattern/ZfDocScatteringPatternMatrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>

#include "ErrorText.h"
#include "Inputs.h"
#include "foundation/Constants.h"
#include "pattern/PatternTableOperations.h"
#include "pattern/ZfBlurForSPattern.h"
#include "pattern/ZfDocPattern.h"
#include "scattering/SphericalHarmonics.h"

namespace {

using Complex = std::complex<double>;

constexpr double kEnergy_eV = 500.0;

EmittedWave Wave(double energy, std::int32_t l, std::int32_t m) {
    ZfLmComplexTable table(l + 1);
    table.At(l, m) = 1.0;
    return WaveOf(energy, table);
}

/// One phase shift and one s wave: the pair that has a closed form.
class ScatteringPatternMatrix : public testing::Test {
protected:
    ScatteringPatternMatrix() {
        phaseShifts.records = {PhaseShiftsOf("bulk", kEnergy_eV, {50.0})};
        waves = {Wave(kEnergy_eV, 0, 0)};
        matrix.PDocScattering_ = &data;
        matrix.PDocScatteringPhaseShift_ = &phaseShifts;
        matrix.PDocFinalState_ = &waves;
        matrix.PDocFluctuation_ = &fluctuation;
        matrix.PDebye_ = &debye;
        matrix.phaseShiftSelection = {true};
        matrix.distanceStart = 2.5e-10;
        matrix.distanceStep = 0.4e-10;
        matrix.distanceCount = 3;
        matrix.angleCount = 41;
    }

    std::string RunText() {
        return ErrorText([this] { matrix.Run(); });
    }
    const ZfLDoubleMatrix& Pattern() { return matrix.results.at(0).pattern; }

    ZfScatteringData data;
    ZfPhaseShiftDocument phaseShifts;
    std::vector<EmittedWave> waves;
    Fluctuation fluctuation;
    ZfDebye debye;
    ZfDocScatteringPatternMatrix matrix;
};

// The s wave reaches the scatterer as h_0(kr) Y_00, leaves it times t_0/2, and arrives with the path
// difference r (1 - cos theta) and the Debye-Waller factor of both displacements.
TEST_F(ScatteringPatternMatrix, PairOfSWaves) {
    data.EPS = 1e-4;
    constexpr double kTolerance = 1e-6;  // 2 |a b| is 4e-3, to the tolerance of the expansion
    fluctuation.IsUseUisoEinsteinModel_ = true;
    fluctuation.Temperature_K_ = 600.0;
    const double uiso = 1.380658e-23 * 600 / 70;
    ZfFreeElectron electron;
    electron.SetEnergy_eV(kEnergy_eV);
    const double k = electron.k;
    const double y00 = 1 / std::sqrt(4 * kPi);
    const Complex t = std::polar(1.0, 100.0 * kDegree) - 1.0;
    const Complex i(0.0, 1.0);
    for (const int equal : {0, 1}) {
        matrix.equalAngles = equal;
        matrix.CalcPattern();
        EXPECT_EQ(matrix.State(), 3);
        EXPECT_EQ(matrix.Result(), 3);
        for (int d = 0; d < 3; ++d) {
            const double r = 2.5e-10 + d * 0.4e-10;
            for (int j = 0; j < 41; ++j) {
                const double z = equal != 0 ? std::cos(j * kPi / 40) : j / 20.0 - 1;
                const Complex a = -i * y00;
                const Complex arriving = -i * std::polar(1 / (k * r), k * r);
                const Complex b = -i * y00 * t / 2.0 * arriving * std::polar(1.0, -k * r * z) *
                                  std::exp(-(1 - z) * k * k * 2 * uiso);
                ASSERT_NEAR(matrix.directTable.ValueAt(d, j), std::norm(a), kTolerance);
                ASSERT_NEAR(matrix.scatteredTable.ValueAt(d, j), std::norm(b), kTolerance);
                ASSERT_NEAR(matrix.totalTable.ValueAt(d, j), std::norm(a + b), kTolerance) << d << " " << j;
                ASSERT_NEAR(matrix.quadratureTable.ValueAt(d, j), std::norm(i * a + b), kTolerance);
            }
        }
    }
}

// Two p waves and many phase shifts, against the scattering and the pattern of a cluster of two atoms.
TEST_F(ScatteringPatternMatrix, AgreesWithThePatternOfATwoAtomCluster) {
    phaseShifts.records = {PhaseShiftsOf("bulk", 100.0, {1.0}),
                           PhaseShiftsOf("bulk", kEnergy_eV, {80.0, 60.0, 35.0, 12.0, 4.0})};
    waves = {Wave(kEnergy_eV, 1, 1), Wave(100.0, 0, 0), Wave(kEnergy_eV, 1, 0)};
    matrix.phaseShiftSelection = {false, true};
    matrix.distanceCount = 1;
    matrix.equalAngles = 1;
    matrix.angleCount = 19;
    matrix.CalcPattern();
    EXPECT_EQ(matrix.Result(), 2);

    Cluster cluster = ClusterOf({AtomAt("bulk", 0, 0, 0), AtomAt("bulk", 0, 0, 2.5)});
    waves.erase(waves.begin() + 1);
    ZfNotifyTerminateThreadCalculation notifier;
    data.Version = kSlowMulti;
    data.MultiScattering = 1;
    data.Calculate(notifier, cluster, waves, phaseShifts);
    ZfDocPattern_EquidistantCylindrical pattern;
    pattern.resolution = 10.0;
    pattern.ActivateAll(2);
    pattern.Calculate(notifier, data, fluctuation, debye);
    const ZfLDoubleMatrix* tables[] = {&matrix.totalTable, &matrix.directTable, &matrix.scatteredTable,
                                       &matrix.quadratureTable};
    for (std::size_t plane = 0; plane < 4; ++plane)
        for (int j = 0; j < 19; ++j)
            EXPECT_NEAR(tables[plane]->ValueAt(0, j), pattern.mapping.planes[plane].ValueAt(0, j), 1e-12)
                << plane << " " << j;
}

// The mean of tables calculated over a band of energies. The s wave of constant phase shift changes by 1/k
// alone, which is second order in the 1 % of width.
TEST_F(ScatteringPatternMatrix, SmoothingIsTheMeanOverEnergies) {
    constexpr double kWidth_eV = 5.0;
    matrix.distanceStart = 15e-10;
    matrix.energyWidth = kWidth_eV;
    matrix.processType = 1;
    matrix.Run();
    const ZfLDoubleMatrix smooth = Pattern();
    const ZfLDoubleMatrix sharp = matrix.totalTable;

    ZfLDoubleMatrix mean = sharp;
    mean.Clear();
    double norm = 0.0;
    for (double e = -4.0; e <= 4.0; e += 0.5) {
        phaseShifts.records[0].Ek_eV = waves[0].Ek = kEnergy_eV + e * kWidth_eV;
        matrix.CalcPattern();
        const double w = std::exp(-e * e / 2);
        AddInPlace(mean, Scale(matrix.totalTable, w));
        norm += w;
    }
    double largestChange = 0.0;
    for (std::int64_t i = 0; i < mean.Count(); ++i) {
        EXPECT_NEAR(smooth.Data()[i], mean.Data()[i] / norm, 5e-6) << i;
        largestChange = std::max(largestChange, std::abs(smooth.Data()[i] - sharp.Data()[i]));
    }
    EXPECT_GT(largestChange, 4e-4);
}

TEST_F(ScatteringPatternMatrix, ProcessingOfKeptTables) {
    matrix.Run();
    matrix.keepTables = 1;
    const auto process = [this](int type) {
        matrix.processType = type;
        matrix.Run();
        ZfLDoubleMatrix copy = Pattern();
        return copy;
    };
    const ZfLDoubleMatrix chi = process(0);
    const std::vector<double> angstroms = {2.5, 2.9, 3.3};
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(matrix.normalisationFactors.at(i), angstroms[i], 1e-12);
    const ZfLDoubleMatrix table = process(1);
    const ZfLDoubleMatrix normalised = process(2);
    const ZfLDoubleMatrix cosine = process(3);
    const ZfLDoubleMatrix last = process(4);
    const ZfLDoubleMatrix beyondChi = process(5);
    const ZfLDoubleMatrix beyondCosine = process(6);
    for (std::int64_t i = 0; i < table.Count(); ++i) {
        const double direct = matrix.directTable.Data()[i];
        const double r = angstroms[static_cast<std::size_t>(i % 3)];
        EXPECT_EQ(table.Data()[i], matrix.totalTable.Data()[i]);
        EXPECT_NEAR(chi.Data()[i], (table.Data()[i] / direct - 1) * r, 1e-12);
        EXPECT_NEAR(normalised.Data()[i], table.Data()[i] * r, 1e-12);
        EXPECT_EQ(beyondChi.Data()[i], last.Data()[i] - chi.Data()[i]);
        EXPECT_EQ(beyondCosine.Data()[i], last.Data()[i] - cosine.Data()[i]);
    }

    // Cosine and sine of one phase.
    matrix.combineFlag = 1;
    matrix.secondProcessType = 3;
    const ZfLDoubleMatrix envelope = process(3);
    for (std::int64_t i = 0; i < envelope.Count(); ++i) EXPECT_NEAR(envelope.Data()[i], 1.0, 1e-9);

    matrix.combineFlag = 0;
    matrix.processType = 7;
    EXPECT_EQ(RunText(), "Not imprimented");
    matrix.processType = 1;
    matrix.maskType = -2;
    EXPECT_EQ(RunText(), "Proc Mask ERROR, undefined type:-2");
}

// The blur keeps the integral over the sphere and flattens. The window is Hann's: over the forward half, or,
// with the search, down to the first minimum of what has been blurred.
TEST_F(ScatteringPatternMatrix, BlurAndMask) {
    constexpr double kGrid = 2e-3;  // of 41 rows
    matrix.processType = 1;
    matrix.blurSigma = 6.0;
    matrix.Run();
    const ZfLDoubleMatrix blurred = Pattern();
    for (int d = 0; d < 3; ++d) {
        double before = 0.0;
        double after = 0.0;
        for (int j = 0; j <= 40; ++j) {
            const double cell = j == 0 || j == 40 ? 0.5 : 1.0;
            before += cell * matrix.totalTable.ValueAt(d, j);
            after += cell * blurred.ValueAt(d, j);
        }
        EXPECT_NEAR(after / before, 1.0, kGrid);
        EXPECT_LT(blurred.ValueAt(d, 40), matrix.totalTable.ValueAt(d, 40));
    }

    matrix.maskType = 2;
    matrix.Run();
    for (int d = 0; d < 3; ++d)
        for (int j = 0; j <= 40; ++j) {
            const double window = j < 20 ? 0.0 : (1.0 + std::cos(kPi * (40 - j) / 20.0)) / 2.0;
            EXPECT_NEAR(Pattern().ValueAt(d, j), window * blurred.ValueAt(d, j), 1e-12) << d << " " << j;
        }

    matrix.searchMode = 1;
    matrix.Run();
    for (int d = 0; d < 3; ++d) {
        int minimum = 39;
        while (blurred.ValueAt(d, minimum - 1) < blurred.ValueAt(d, minimum)) --minimum;
        EXPECT_GT(minimum, 20);
        EXPECT_EQ(Pattern().ValueAt(d, 40), blurred.ValueAt(d, 40));
        EXPECT_NE(Pattern().ValueAt(d, minimum + 1), 0.0);
        EXPECT_NEAR(Pattern().ValueAt(d, minimum), 0.0, 1e-12);
        EXPECT_EQ(Pattern().ValueAt(d, minimum - 1), 0.0);
    }
}

TEST_F(ScatteringPatternMatrix, Failures) {
    const std::string place = "CalcPattern():ERROR ZfDocScatteringPatternMatrix():";
    matrix.keepTables = 1;
    EXPECT_EQ(RunText(), "Error: There are no pattern tables");
    matrix.keepTables = 0;
    matrix.phaseShiftSelection = {false};
    EXPECT_EQ(RunText(), "CalcPattern():Error: Please check a phase shift");
    matrix.phaseShiftSelection = {true, true};
    EXPECT_EQ(RunText(), "CalcPattern():Error: Please check one phase shift.");
    matrix.phaseShiftSelection = {false, true};
    EXPECT_EQ(RunText(), "CalcPattern():Error: The selected phase shift does not exist");
    matrix.phaseShiftSelection = {true};
    for (const int angles : {-1, 0, 1}) {
        matrix.angleCount = angles;
        EXPECT_EQ(RunText(), "CalcPattern():Error: The grid has no distances or no angles");
    }
    matrix.angleCount = 5;
    matrix.distanceStart = 0.0;  // two atoms in one place
    EXPECT_EQ(RunText(), "Undefined Error at CalcPattern()");
    matrix.distanceStart = 2.5e-10;
    phaseShifts.records[0].AtomElement = "Xx";
    EXPECT_EQ(RunText().rfind("CalcPattern():ZfScatteringData::SetListScattererDimerOnZ()", 0), 0U);
    waves[0].Ek = 500.00000000000006;
    EXPECT_EQ(RunText(),
              "CalcPattern():Error: Emitter settings is not good. Corresponding kinetic energy is not found");

    matrix.PDebye_ = nullptr;
    EXPECT_EQ(RunText(), place + "PDebye_==NULL");
    matrix.PDocFluctuation_ = nullptr;
    EXPECT_EQ(RunText(), place + "PDocFluctuation_==NULL");
    matrix.PDocFinalState_ = nullptr;
    EXPECT_EQ(RunText(), place + "PDocFinalState_==NULL");
    matrix.PDocScatteringPhaseShift_ = nullptr;
    EXPECT_EQ(RunText(), place + "PDocScatteringPhaseShift_==NULL");
    matrix.PDocScattering_ = nullptr;
    EXPECT_EQ(RunText(), place + "PDocScattering_==NULL");
}

TEST_F(ScatteringPatternMatrix, StopsAtTheNextDistance) {
    matrix.stop = 1;
    matrix.Run();
    EXPECT_EQ(matrix.State(), 1);
    EXPECT_EQ(matrix.totalTable.ValueAt(0, 0), 0.0);
}

TEST(SetListScattererDimerOnZ, TakesTheFirst128PhaseShifts) {
    ZfScatteringRecord record;
    const auto set = [&](std::int32_t index) {
        record.SetListScattererDimerOnZ({}, kEnergy_eV, 3e-10, "bulk", "Cu", index, {}, {});
    };
    set(127);
    EXPECT_EQ(record.phaseShiftIndex.VectorValueAt(1), 127);
    EXPECT_EQ(ErrorText([&] { set(128); }),
              "ZfScatteringData::SetListScattererDimerOnZ()Error: There is no phase shift data");
}

}  // namespace
