#include "xml/ZfBarnXml.h"
#include "foundation/ZfADateTime.h"

#include <gtest/gtest.h>

#include <tuple>

#include "ErrorText.h"
#include "XmlText.h"

namespace {

struct Record {
    bool Exchange(ZfBarnXml& xml, const std::string& tag) { return xml.Int32(tag, number, -1); }
    std::int32_t number = 0;
};

}  // namespace

TEST(ZfBarnXml, WritesToTheByte) {
    ZfBarnXml xml("w");
    xml.OpenRack("emitted_wave_data");
    xml.OpenRack("i");
    double number = 1000.0;
    bool flag = true;
    std::string text = "a&b<c>\"d\"'";
    ZfADateTime date;
    date.FromText("2024/1/2 3:4:5");
    std::vector<double> doubles = {0.1, 1234567.0};
    std::vector<std::string> strings = {"", "&"};
    xml.LDouble("Ek", number, 0.0);
    xml.Bool("B", flag, false);
    xml.Text("T", text, "");
    xml.RawValue("R", text, "");
    xml.DateTime("D", date);
    xml.CloseRack("i");
    xml.DoubleList("L", doubles);
    xml.StringList("S", strings);
    xml.CloseRack("emitted_wave_data");
    xml.OpenRack("second top element");
    EXPECT_EQ(xml.Document(),
              "<emitted_wave_data><i><Ek>1000</Ek>\n<B>true</B>\n<T>a&amp;b&lt;c&gt;&quot;d&quot;'</T>\n"
              "<R>a&b<c>\"d\"'</R>\n<D>2024/01/02 03:04:05</D>\n</i>\n<L><i>0.1</i>\n<i>1.23457e+06</i>\n"
              "</L>\n<S><r></r>\n<r>&amp;</r>\n</S>\n</emitted_wave_data>\n");
}

TEST(ZfBarnXml, AbsentTagsAndLists) {
    XmlReader xml(
        "<?xml version=\"1.0\"?><s><r>a</r><r>ThisIsEndString[]</r><r>b</r></s><d><i>2</i><i>x</i></d>");
    double d = 3.0;
    EXPECT_FALSE(xml.Double("b", d, 7.0));
    EXPECT_EQ(d, 7.0);
    std::vector<std::string> strings = {"old"};
    EXPECT_TRUE(xml.StringList("s", strings));
    EXPECT_EQ(strings, std::vector<std::string>{"a"});  // replaced, and ended early by the end mark
    std::vector<double> doubles = {1.0};
    EXPECT_TRUE(xml.DoubleList("d", doubles));
    EXPECT_EQ(doubles, (std::vector<double>{1.0, 2.0, 0.0}));
}

TEST(ZfBarnXml, BoolTakesTwoTexts) {
    const std::tuple<const char*, bool, bool, bool> cases[] = {
        {"<b>true</b>", false, true, true},   {"<b>false</b>", true, false, true},
        {"<b>TRUE</b>", false, false, false}, {"<b> true</b>", true, true, false},
        {"<b></b>", true, true, false},       {"", true, false, false}};
    for (const auto& [text, otherwise, truth, result] : cases) {
        bool value = false;  // kept when the tag is absent: the default is not applied
        EXPECT_EQ(XmlReader(text).Bool("b", value, otherwise), result) << text;
        EXPECT_EQ(value, truth) << text;
    }
}

TEST(ZfBarnXml, ReadsConsumeInFileOrder) {
    XmlReader xml("<a><x>1</x><y>3</y><x>2</x></a><b>&amp;lt;&quot;&apos;</b>");
    ASSERT_TRUE(xml.OpenRack("a"));
    std::int32_t n = 0;
    for (const auto& [tag, value] : {std::pair("y", 3), std::pair("x", 1), std::pair("x", 2)}) {
        xml.Int32(tag, n, 0);
        EXPECT_EQ(n, value);
    }
    EXPECT_FALSE(xml.Int32("x", n, 0));
    EXPECT_EQ(ErrorText([&] { xml.CloseRack("b"); }), "Invalid Tag Name:a <> b");
    xml.CloseRack("a");
    EXPECT_EQ(ErrorText([&] { xml.CloseRack(); }), "Over CloseRack");
    std::string text;
    xml.Text("b", text, "");
    EXPECT_EQ(text, "&lt;\"&apos;");
}

TEST(ZfBarnXml, SelfClosedElementsNeedABlank) {
    XmlReader xml("<r><a/><a />tail<b x=\"1\">v</b></r>");
    ASSERT_TRUE(xml.OpenRack("r"));
    std::string value;
    EXPECT_TRUE(xml.RawValue("a", value, ""));
    EXPECT_EQ(value, "tail<b x=\"1\">v</b></r>");  // without a close tag of its own: the rest of the text
    EXPECT_FALSE(xml.RawValue("a", value, ""));
    EXPECT_TRUE(xml.OpenRack("a/"));
    xml.CloseRack();
    EXPECT_TRUE(xml.RawValue("b", value, ""));
    EXPECT_EQ(value, "v");
}

// Reading n items takes n steps: n squared would not end.
TEST(ZfBarnXml, RecordListOfManyItems) {
    ZfBarnXml writer("w");
    std::vector<Record> records(200'000);
    for (std::size_t i = 0; i < records.size(); ++i) records[i].number = static_cast<std::int32_t>(i);
    writer.RecordList("list", "i", records);

    std::vector<Record> back(3);
    ASSERT_TRUE(XmlReader(writer.Document()).RecordList("list", "i", back));
    ASSERT_EQ(back.size(), records.size());
    for (std::size_t i = 0; i < back.size(); ++i) ASSERT_EQ(back[i].number, records[i].number);
    EXPECT_TRUE(XmlReader("<list><j></j></list>").RecordList("list", "i", back));
    EXPECT_TRUE(back.empty());
}

TEST(ZfBarnXml, DeepAndBrokenNesting) {
    constexpr int kDepth = 1'000'000;
    ZfBarnXml writer("w");
    for (int i = 0; i < kDepth; ++i) writer.OpenRack("a");
    XmlReader deep(writer.Document());
    for (int i = 0; i < kDepth; ++i) ASSERT_TRUE(deep.OpenRack("a"));
    EXPECT_FALSE(deep.OpenRack("a"));

    std::string value = "x";
    EXPECT_TRUE(XmlReader("<a>text").RawValue("a", value, ""));
    EXPECT_EQ(value, "");
    XmlReader surplus("</x><a>1</b></c></c><d>2</d>");
    EXPECT_TRUE(surplus.RawValue("a", value, ""));
    EXPECT_EQ(value, "1");
    EXPECT_TRUE(surplus.RawValue("d", value, ""));
    EXPECT_EQ(value, "2");
    EXPECT_TRUE(XmlReader("<><//><?></>").OpenRack(""));
}
