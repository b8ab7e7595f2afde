#include "scattering/ThermalModels.h"

#include <gtest/gtest.h>

#include "Sources.h"

namespace {

ZfDebye Weights() {
    ZfDebye debye;
    debye.weights = {0.0, 1.008, 4.0026};
    return debye;
}

ZfVectorFreeElectron HydrogenAndHelium() {
    ZfVectorFreeElectron list = ListOf({SWave(0, 0, 0), SWave(1e-10, 0, 0)});
    list.electrons[0].atomicNumber = 1;
    list.electrons[1].atomicNumber = 2;
    for (ZfFreeElectron& e : list.electrons) e.Uiso = 5e-22;
    return list;
}

ZfFluctuation DebyeDocument() {
    ZfFluctuation f;
    f.Temperature_K_ = 300.0;
    f.DebyeElement_ = {"H", "He", "H"};
    f.DebyeTemperature_K_ = {110.0, 26.0, 1.0};
    f.IsUseUisoDebyeModel_ = true;
    return f;
}

}  // namespace

TEST(ThermalModels, FlagsChooseTheModel) {
    ZfFluctuation f = DebyeDocument();
    ZfVectorFreeElectron list = HydrogenAndHelium();
    ApplyThermalModel(f, list, Weights());
    // 3 hbar^2 T / (M kB theta^2), the first of two entries of an element.
    const double hydrogen =
        3.3363705433969256e-68 * 300.0 / (1.008 * 1.66053873e-27 * 1.380658e-23 * 12100.0);
    EXPECT_NEAR(list.electrons[0].Uiso / hydrogen, 1.0, 1e-14);
    EXPECT_NEAR(list.electrons[1].Uiso / hydrogen, 1.008 / 4.0026 * 110.0 * 110.0 / (26.0 * 26.0), 1e-12);

    f.IsUseUisoEinsteinModel_ = true;
    ApplyThermalModel(f, list, Weights());
    for (const ZfFreeElectron& e : list.electrons) EXPECT_NEAR(e.Uiso, 5.9171e-23, 1e-27);

    f.IsUseUisoInCluster_ = true;
    f.Temperature_K_ = 0.0;
    ApplyThermalModel(f, list, Weights());
    EXPECT_GT(list.electrons[0].Uiso, 0.0);
    f.IsUseUisoInCluster_ = false;
    ApplyThermalModel(f, list, Weights());
    EXPECT_EQ(list.electrons[0].Uiso, 0.0);
}

TEST(ThermalModels, DebyeNeedsEveryElementOfTheList) {
    ZfVectorFreeElectron list = HydrogenAndHelium();
    ZfFluctuation f = DebyeDocument();
    f.DebyeElement_ = {"He"};  // the emitter is missing
    EXPECT_EQ(ErrorText([&] { SetDebyeModel(f, list, Weights()); }),
              "SetDebyeModel():Atomic Number is not defined");
    list.electrons[0].atomicNumber = 0;
    EXPECT_EQ(ErrorText([&] { SetDebyeModel(f, list, Weights()); }), "SetDebyeModel():Atomic Number is zero");
    f.DebyeElement_ = {"H", "He", "H", "He"};
    EXPECT_THROW(SetDebyeModel(f, list, Weights()), std::out_of_range);
}
