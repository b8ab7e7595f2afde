#include "input/ZfEmittedWave.h"

#include <gtest/gtest.h>

#include "ErrorText.h"

namespace {

std::vector<ZfEmittedWave> Read(const std::string& items) {
    ZfBarnXml xml("r");
    xml.Parse("<emitted_wave_data><data><list_emitter>" + items +
              "</list_emitter></data></emitted_wave_data>");
    std::vector<ZfEmittedWave> waves;
    ExchangeEmittedWaves(xml, waves);
    return waves;
}

std::string Coefficients(ZfLmComplexTable table, const std::string& format) {
    ZfBarnXml xml("w");
    ExchangeCoefficients(xml, "coeff", table, format);
    return xml.Document();
}

}  // namespace

TEST(ZfEmittedWave, WritesToTheByteAndReadsBack) {
    std::vector<ZfEmittedWave> waves(1);
    waves[0].Ek = 1234567.0;
    waves[0].coeff.SetSize(1);
    waves[0].coeff.At(0, 0) = {1.0, -0.5};
    ZfBarnXml xml("w");
    ExchangeEmittedWaves(xml, waves);
    const std::string item =
        "<i><Ek>1.23457e+06</Ek>\n<Ratio>1</Ratio>\n<coeff><Size_l>1</Size_l>\n<Value><l><m><r>1</r>\n"
        "<i>-0.5</i>\n</m>\n</l>\n</Value>\n</coeff>\n<IsPlaneWave>false</IsPlaneWave>\n"
        "<PlaneWaveBeta_deg>0</PlaneWaveBeta_deg>\n<PlaneWaveGamma_deg>0</PlaneWaveGamma_deg>\n</i>\n";
    EXPECT_EQ(xml.Document(), "<emitted_wave_data><data><list_emitter>" + item +
                                  "</list_emitter>\n</data>\n</emitted_wave_data>\n");
    const auto back = Read(item + "<i><Ratio>2</Ratio></i><i><Ek>x</Ek></i>");
    ASSERT_EQ(back.size(), 3U);
    EXPECT_EQ(back[0].coeff.At(0, 0), std::complex<double>(1.0, -0.5));
    EXPECT_EQ(back[1].Ek, 1000.0);
    EXPECT_EQ(back[1].Ratio, 2.0);
    EXPECT_EQ(back[1].coeff.L, 0);
    EXPECT_EQ(back[2].Ek, 0.0);
}

TEST(ZfEmittedWave, BinaryCoefficientsKeepAllBits) {
    ZfLmComplexTable table(2);
    table.At(0, 0) = {1.0, -0.5};
    table.At(1, 0) = {2.0, 0.0};
    table.At(1, 1) = {0.0, 0.1};
    const std::string text = Coefficients(table, "b");
    EXPECT_EQ(text.substr(0, 72),
              "<coeff><Size_l>2</Size_l>\n<base64>00000040AAAAAAAAw/DAAAAAAAA4/CAAAAAAAA");
    const auto waves = Read("<i>" + text + "</i>");
    EXPECT_EQ(waves[0].coeff.block, table.block);
    EXPECT_EQ(ErrorText([&] { Coefficients(table, "bb"); }), "Write Format Error");
}

TEST(ZfEmittedWave, DamagedCoefficients) {
    const auto error = [](const std::string& content) {
        return ErrorText([&] { Read("<i><coeff>" + content + "</coeff></i>"); });
    };
    const std::string two = "<Size_l>2</Size_l>";
    const std::string one = "<base64>00000010AAAAAAAAw/DAAAAAAAA4/CAA</base64>";
    EXPECT_EQ(error("<Size_l>1</Size_l>" + one), "no failure");
    EXPECT_EQ(error(two + one), "Invalid Tag Name:coeff <> i");
    EXPECT_EQ(error(two + "<base64>00000010</base64>"), "Size Error");
    EXPECT_EQ(error(two), "no failure");
    const std::string m = "<m><r>1</r></m>";
    const std::string l0 = "<l>" + m + "</l>";
    EXPECT_EQ(error(two + "<Value>" + l0 + "<l>" + m + m + m + "</l></Value>"), "no failure");
    EXPECT_EQ(error(two + "<Value>" + l0 + "<l>" + m + m + "</l></Value>"), "Invalid Tag Name:l <> m");
    EXPECT_EQ(error(two + "<Value>" + l0 + "</Value>"), "Invalid Tag Name:Value <> m");
    EXPECT_EQ(error("<Size_l>-1</Size_l>"), "Error");
    EXPECT_EQ(error("<Size_l>65536</Size_l>"), "Cannot allocate memory");
}

TEST(ZfLmTable, IndexAndHandOver) {
    ZfLmComplexTable table(3);
    EXPECT_EQ(ErrorText([&] { table.At(3, 0); }), "Illegal l value");
    EXPECT_EQ(table.lmIndex(2, -1), 5);
    EXPECT_EQ(ErrorText([&] { table.At(1, -2); }), "Illegal m value");

    table.transferable = true;
    ZfLmComplexTable owner;
    owner = std::move(table);
    const ZfLmComplexTable copy(owner);  // the flag has not travelled: nothing is taken
    EXPECT_EQ(owner.L, 3);
    EXPECT_EQ(copy.block.size(), 9U);
    owner.transferable = true;
    ZfLmComplexTable taken;
    taken = owner;
    EXPECT_EQ(taken.L, 3);
    EXPECT_EQ(owner.L, 0);
    EXPECT_TRUE(owner.block.empty());
}
