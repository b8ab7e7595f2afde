#include "scattering/ZfSphereExpansion.h"

#include <gtest/gtest.h>

#include <limits>

#include "ClosedForms.h"
#include "Sources.h"
#include "foundation/Constants.h"

namespace {

ZfLmComplexTable Expand(const ZfVectorFreeElectron& list, std::int32_t lSize, double tolerance) {
    list.PrepareNorms();
    ZfSphereExpansion expansion;
    expansion.lSize = lSize;
    expansion.tolerance = tolerance;
    ZfLmComplexTable result;
    expansion.Expand(result, ZfWaveVectorFreeElectron(&list), 2e-10);
    return result;
}

void ExpectExpansion(const ZfFreeElectron& source, const ZfLmComplexTable& truth,
                     std::complex<double> amplitude) {
    for (const double tolerance : {0.01, 0.001})
        EXPECT_LT(RelativeError(Expand(ListOf({source}), truth.L, tolerance), truth,
                                [amplitude](std::int32_t) { return amplitude; }),
                  tolerance)
            << truth.L;
}

}  // namespace

TEST(ZfSphereExpansion, ExpandsDisplacedWaves) {
    const ZfLDoubleMatrix R = Vector3(-1.9e-10, 1.3e-10, -1.1e-10);
    const ZfFreeElectron source = SWave(-1.9e-10, 1.3e-10, -1.1e-10, {0.0, 2.0});
    // exp(ik.(r - R)) = 4 pi sum i^l j_l(kr) Y_lm(r) conj(Y_lm(k)) exp(-ik.R) (Jackson, eq. 16.127).
    ZfFreeElectron wave = SourceOf(1, 1.3e-10, -0.4e-10, 0.7e-10);
    wave.SetPlaneWave(Vector3(-0.46, 0.63, 0.62), {0.6, -0.3});
    double kr = 0.0;
    for (std::int32_t i = 0; i < 3; ++i) kr += wave.planeWaveVector.VectorAt(i) * wave.position.VectorAt(i);
    for (const std::int32_t lSize : {1, 8, 9, 15}) {
        ExpectExpansion(source, TableOfSWave(R, source.k, lSize), {0.0, 2.0});
        ExpectExpansion(wave,
                        TableAlong(wave.planeWaveVector, lSize,
                                   [](std::int32_t l) { return 4.0 * kPi * std::polar(1.0, l * kPi / 2); }),
                        std::complex<double>(0.6, -0.3) * std::polar(1.0, -kr));
    }
}

TEST(ZfSphereExpansion, EndsAtOnceOnAWaveThatIsZeroOrFails) {
    for (const std::complex<double>& c : Expand(ListOf({SourceOf(3, 2e-10, 0, 0)}), 8, 0.01).block)
        EXPECT_EQ(c, 0.0);
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(ErrorText([&] { Expand(ListOf({SWave(2e-10, 0, 0, infinity)}), 8, 0.01); }),
              "The wave around an atom is not finite");
    ZfVectorFreeElectron list = ListOf({SWave(2e-10, 0, 0)});
    list.Ek_eV = -15000.0;
    EXPECT_THROW(Expand(list, 3, 0.01), const char*);  // let out of the parallel loop
    EXPECT_EQ(ErrorText([] { Expand(ListOf({}), 3, 0.01); }), "out of range");
    EXPECT_EQ(ErrorText([] { ZfWaveVectorFreeElectron(nullptr).WaveNumber(); }), "pointer is not defined");
    EXPECT_EQ(ErrorText([] { Expand(ListOf({SWave(2e-10, 0, 0)}), -1, 0.01); }), "Error");
    ZfVectorFreeElectron noAmplitude = ListOf({SourceOf(0, 2e-10, 0, 0)});
    noAmplitude.electrons[0].IsPlaneWave = true;
    EXPECT_EQ(ErrorText([&] { Expand(noAmplitude, 3, 0.01); }), "Illegal l value");
}

TEST(ZfSphereExpansion, ComparesOnceHoweverLowTheLastLevel) {
    const ZfVectorFreeElectron list = ListOf({SWave(2e-10, 0, 0)});
    ZfSphereExpansion expansion;
    expansion.lSize = 4;
    ZfLmComplexTable result;
    for (const std::int32_t maxLevel : {0, 3, 7}) {
        expansion.maxLevel = maxLevel;
        expansion.Expand(result, ZfWaveVectorFreeElectron(&list), 2e-10);
        EXPECT_EQ(expansion.level, std::max(maxLevel - 1, 5));
    }
}

TEST(ZfSphereExpansion, LevelsCanBeTakenByHand) {
    const ZfVectorFreeElectron list = ListOf({SWave(2e-10, 0, 1e-10)});
    const ZfWaveVectorFreeElectron wave(&list);
    list.PrepareNorms();
    for (const std::int32_t groupSize : {8, 4}) {
        ZfSphereExpansion whole;
        ZfSphereExpansion byHand;
        for (ZfSphereExpansion* expansion : {&whole, &byHand}) {
            expansion->lSize = 10;
            expansion->tolerance = 0.0;
            expansion->maxLevel = 9;
            expansion->grid.groupSize = groupSize;
        }
        ZfLmComplexTable truth;
        whole.Expand(truth, wave, 2e-10);
        EXPECT_EQ(whole.grid.Groups(), groupSize == 8 ? 2 : 3);

        byHand.wave = &wave;
        byHand.grid.lSize = 10;
        byHand.grid.BuildGrid();
        byHand.grid.SetWaveNumber(wave.WaveNumber());
        byHand.sum.SetSize(10);
        ZfLmComplexTable before;
        ZfLmComplexTable raw;
        for (byHand.level = 0; byHand.level < 9; ++byHand.level) {
            before = raw;
            byHand.LevelIntegral(raw);
        }
        EXPECT_EQ(byHand.points, whole.points);
        EXPECT_EQ(byHand.legendreNorm.L, 10);
        for (std::int32_t l = 0; l < 10; ++l)
            EXPECT_EQ((4.0 * raw.At(l, l) - before.At(l, l)) / 3.0 /
                          byHand.grid.besselAtGroup[static_cast<std::size_t>(l)],
                      truth.At(l, l));
    }
}
