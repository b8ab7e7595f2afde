#include "input/ZfDebye.h"

#include <gtest/gtest.h>

#include <QtGlobal>

#include "ErrorText.h"
#include "TempFolder.h"
#include "input/Fluctuation.h"
#include "input/ZfAtomName.h"

namespace {

std::string LoadError(ZfDebye& debye, const std::string& text) {
    const QtMessageHandler before = qInstallMessageHandler([](auto, const auto&, const QString&) {});
    const std::string error = ErrorText([&] { debye.LoadAtomicWeight(text); });
    qInstallMessageHandler(before);
    return error;
}

}  // namespace

TEST(ZfAtomName, SymbolsAndNumbers) {
    ZfAtomName name;
    for (const auto& [symbol, number] : {std::pair("", 0), {"Cu", 29}, {"Bj", 97}, {"Lr", 103}}) {
        name.SetName(symbol);
        EXPECT_EQ(name.GetAtomicNumber(), number);
    }
    for (const char* symbol : {"fe", "FE", " Fe", "Bk", "Rf"})
        EXPECT_EQ(ErrorText([&] { name.SetName(symbol); }), "Error in element name") << symbol;
    EXPECT_EQ(ErrorText([&] { name.SetAtomicNumber(104); }), "out of range");
    EXPECT_EQ(ErrorText([&] { name.SetAtomicNumber(-1); }), "out of range");
    EXPECT_EQ(name.name, "Lr");
}

TEST(ZfDebye, WeightTable) {
    ZfDebye debye;
    EXPECT_EQ(ErrorText([&] { debye.CalcUiso(300, 1, 100); }), "Atomic weight parameter is not loaded");
    LoadError(debye, "1 H hydrogen 1.008\r\n2,He,helium,4.0026\r\t3 Li x 6.94 more\n4 Be y 9");
    EXPECT_EQ(debye.weights, (std::vector<double>{0.0, 1.008, 4.0026, 6.94, 9.0}));
    EXPECT_EQ(ErrorText([&] { debye.GetAtoicWeight(5); }),
              "ZfDebye::GetAtoicWeight(), not good atomic number=5");
    for (const char* text : {"2 H x 1\n", "1 H x 1\n\n2 He x 4\n", "1 H x\n", "1 H x 1\n1 H x 1\n"})
        EXPECT_EQ(LoadError(debye, text), "Debye:LoadAtomicWeight File: order is not correct.") << text;
}

TEST(Fluctuation, KeepsWhatIsAbsent) {
    const TempFolder folder;
    Fluctuation f;
    f.Temperature_K_ = 77.0;
    ZfLoadFluctuation(f, folder.Write("f",
                                      "<DocFluctuation><DebyeElement_><r>Cu</r></DebyeElement_>"
                                      "<DebyeTemperature_K_><i>343</i></DebyeTemperature_K_>"
                                      "<IsUseUisoDebyeModel_>true</IsUseUisoDebyeModel_></DocFluctuation>"));
    ZfLoadFluctuation(f, folder.Write("f", "<Other></Other>"));
    EXPECT_EQ(f.Temperature_K_, 77.0);
    EXPECT_EQ(f.DebyeElement_, std::vector<std::string>{"Cu"});
    EXPECT_EQ(f.DebyeTemperature_K_, std::vector<double>{343.0});
    EXPECT_TRUE(f.IsUseUisoDebyeModel_ && !f.IsUseUisoEinsteinModel_);
}
