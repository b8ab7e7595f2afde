#include "scattering/ThermalModels.h"

#include <gtest/gtest.h>

#include "Sources.h"

TEST(ThermalModels, FlagsChooseTheModel) {
    ZfDebye weights;
    weights.weights = {0.0, 1.008, 4.0026};
    ZfVectorFreeElectron list = ListOf({SWave(0, 0, 0), SWave(1e-10, 0, 0)});
    ZfFreeElectron& emitter = list.electrons[0];
    emitter.atomicNumber = 1;
    list.electrons[1].atomicNumber = 2;
    Fluctuation f;
    f.Temperature_K_ = 300.0;
    f.DebyeElement_ = {"H", "He", "H"};  // the first of two entries of an element
    f.DebyeTemperature_K_ = {110.0, 26.0, 1.0};
    f.IsUseUisoDebyeModel_ = true;
    const auto error = [&] { return ErrorText([&] { ApplyThermalModel(f, list, weights); }); };
    EXPECT_EQ(error(), "no failure");
    // 3 hbar^2 T / (M kB theta^2)
    const double hydrogen =
        3.3363705433969256e-68 * 300.0 / (1.008 * 1.66053873e-27 * 1.380658e-23 * 12100.0);
    EXPECT_NEAR(emitter.Uiso / hydrogen, 1.0, 1e-14);
    EXPECT_NEAR(list.electrons[1].Uiso / hydrogen, 1.008 / 4.0026 * 110.0 * 110.0 / (26.0 * 26.0), 1e-12);
    f.DebyeElement_ = {"He"};  // the emitter is missing
    EXPECT_EQ(error(), "SetDebyeModel():Atomic Number is not defined");
    emitter.atomicNumber = 0;
    EXPECT_EQ(error(), "SetDebyeModel():Atomic Number is zero");
    f.DebyeElement_ = {"He", "Li", "He", "H"};
    EXPECT_EQ(error(), "out of range");

    f.IsUseUisoEinsteinModel_ = true;
    error();
    EXPECT_NEAR(emitter.Uiso, 5.9171e-23, 1e-27);
    f.IsUseUisoInCluster_ = true;
    f.Temperature_K_ = 0.0;
    error();
    EXPECT_GT(emitter.Uiso, 0.0);
    f.IsUseUisoInCluster_ = false;
    error();
    EXPECT_EQ(emitter.Uiso, 0.0);
}
