#include "input/EmittedWave.h"

#include <gtest/gtest.h>

#include "ErrorText.h"
#include "XmlText.h"

namespace {

std::vector<EmittedWave> Read(const std::string& items) {
    XmlReader xml(Tag("emitted_wave_data", Tag("data", Tag("list_emitter", items))));
    std::vector<EmittedWave> waves;
    ExchangeEmittedWaves(xml, waves);
    return waves;
}

std::string Coefficients(ZfLmComplexTable table, const std::string& format) {
    ZfBarnXml xml("w");
    ExchangeCoefficients(xml, "coeff", table, format);
    return xml.Document();
}

}  // namespace

TEST(EmittedWave, WritesToTheByteAndReadsBack) {
    std::vector<EmittedWave> waves(1);
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
    EXPECT_EQ(back[2].Ek, 0.0);
}

TEST(EmittedWave, BinaryCoefficientsKeepAllBits) {
    ZfLmComplexTable table(2);
    table.block = {{1.0, -0.5}, {0.0, 0.1}, {2.0, 0.0}, {1.0 / 3.0, 0.0}};
    const std::string text = Coefficients(table, "b");
    EXPECT_EQ(text.substr(0, 61), "<coeff><Size_l>2</Size_l>\n<base64>00000040AAAAAAAAw/DAAAAAAAA");
    EXPECT_EQ(Read(Tag("i", text))[0].coeff.block, table.block);
    EXPECT_EQ(ErrorText([&] { Coefficients(table, "bb"); }), "Write Format Error");
}

TEST(EmittedWave, DamagedCoefficients) {
    const std::string two = "<Size_l>2</Size_l>";
    const std::string one = "<base64>00000010AAAAAAAAw/DAAAAAAAA4/CAA</base64>";
    const std::string m = "<m><r>1</r></m>";
    const std::string l0 = Tag("l", m);
    const std::pair<std::string, const char*> cases[] = {
        {"<Size_l>1</Size_l>" + one, "no failure"},
        {two + one, "Invalid Tag Name:coeff <> i"},
        {two + "<base64>00000010</base64>", "Size Error"},
        {two + Tag("Value", l0 + Tag("l", m + m + m)), "no failure"},
        {two + Tag("Value", l0 + Tag("l", m + m)), "Invalid Tag Name:l <> m"},
        {two + Tag("Value", l0), "Invalid Tag Name:Value <> m"},
        {"<Size_l>-1</Size_l>", "Error"},
        {"<Size_l>65536</Size_l>", "Cannot allocate memory"}};
    for (const auto& c : cases)
        EXPECT_EQ(ErrorText([&] { Read(Tag("i", Tag("coeff", c.first))); }), c.second) << c.first;
}

TEST(EmittedWave, ASizeWithoutCoefficientsTakesNoMemory) {
    const EmittedWave wave = Read(Tag("i", Tag("coeff", "<Size_l>4096</Size_l>")))[0];
    EXPECT_EQ(wave.coeff.L, 4096);
    EXPECT_EQ(wave.coeff.block.capacity(), 0U);
    EXPECT_EQ(wave.coeff.At(4095, -4095), 0.0);
    const EmittedWave small = Read(Tag("i", Tag("coeff", "<Size_l>2</Size_l>")))[0];
    EXPECT_EQ(Coefficients(small.coeff, "b"), Coefficients(ZfLmComplexTable(2), "b"));
    EXPECT_EQ(Coefficients(small.coeff, "t"), Coefficients(ZfLmComplexTable(2), "t"));
}

TEST(LmTable, IndexAndHandOver) {
    ZfLmComplexTable table(3);
    EXPECT_EQ(ErrorText([&] { table.At(3, 0); }), "Illegal l value");
    EXPECT_EQ(ErrorText([&] { table.At(1, -2); }), "Illegal m value");
    EXPECT_EQ(table.lmIndex(2, -1), 5);
    table.transferable = true;
    ZfLmComplexTable owner;
    owner = std::move(table);
    const ZfLmComplexTable copy(owner);  // the flag has not travelled: nothing is taken
    EXPECT_EQ(owner.L, 3);
    EXPECT_EQ(copy.block.size(), 9U);
    owner.transferable = true;
    table = owner;
    EXPECT_EQ(table.L, 3);
    EXPECT_TRUE(owner.block.empty());
}
