#include <gtest/gtest.h>

#include <tuple>

#include "image/ZfCRMsg.h"
#include "image/ZfRegion.h"

namespace {

ZfCRMsg Message(const std::string& text) {
    ZfCRMsg message;
    message.ParseText(text);
    return message;
}

/// What another object of the same class reads of the text that `saved` writes.
template <class Record>
Record ThroughText(Record& saved) {
    ZfBarnXml out("w");
    saved.Exchange(out, "record");
    ZfBarnXml in("r");
    in.Parse(out.Document());
    Record loaded;
    EXPECT_TRUE(loaded.Exchange(in, "record"));
    return loaded;
}

}  // namespace

TEST(ZfCRMsg, TellsCommandsFromReplies) {
    const ZfCRMsg command = Message("put/Stage/12.5mm");
    EXPECT_EQ(command.kind, ZfCRMsg::kCommand);
    EXPECT_EQ(command.code, -1);
    EXPECT_EQ(command.CommandText(), "put/Stage/12.5mm");
    EXPECT_EQ(command.GetObject(), "Stage");

    const ZfCRMsg reply = Message("Stage/put/OK/12.5/at /limit/");
    EXPECT_EQ(reply.kind, ZfCRMsg::kReply);
    EXPECT_EQ(reply.GetCommand(), "put");
    EXPECT_EQ(reply.GetObject(), "Stage");
    EXPECT_EQ(reply.GetStatus(), "OK");
    EXPECT_EQ(reply.GetValue(), "12.5");
    EXPECT_EQ(reply.GetDetail(), "at /limit/");
    EXPECT_EQ(reply.ReplyText(), "Stage/put/OK/12.5/at /limit/");

    for (const char* text : {"", "a", "a/b", "a/b/c/d"}) {
        const ZfCRMsg unknown = Message(text);
        EXPECT_EQ(unknown.kind, ZfCRMsg::kUnknown) << text;
        EXPECT_EQ(unknown.CommandText(), "//") << text;
    }
}

TEST(ZfCRMsg, RefusesTheStatusOfACommandByABareText) {
    const ZfCRMsg command = Message("put/Stage/1");
    const auto message = [&command](auto get) -> std::string {
        try {
            (command.*get)();
        } catch (const char* text) {
            return text;
        }
        return "";
    };
    EXPECT_EQ(message(&ZfCRMsg::GetStatus), "Illigal Message Access.");
    EXPECT_EQ(message(&ZfCRMsg::GetDetail), "Illigal Message Access.");
}

TEST(ZfCRMsg, SplitsNumberAndUnit) {
    const std::tuple<const char*, bool, double, const char*> cases[] = {{"12.5mm", true, 12.5, "mm"},
                                                                        {"about -3e2 K", true, -300.0, " K"},
                                                                        {"1eV", true, 1.0, "eV"},
                                                                        {"x=1eV", true, 0.0, "eV"},
                                                                        {"1 to 5 eV", true, 1.0, " eV"},
                                                                        {"none", false, 0.0, ""},
                                                                        {"-", true, 0.0, "-"},
                                                                        {".", true, 0.0, ""},
                                                                        {"", false, 0.0, ""}};
    for (const auto& [value, found, number, unit] : cases) {
        double readNumber = 99.0;
        std::string readUnit = "old";
        EXPECT_EQ(Message(std::string("put/X/") + value).GetNumericValue(readNumber, readUnit), found)
            << value;
        EXPECT_EQ(readNumber, number) << value;
        EXPECT_EQ(readUnit, unit) << value;
    }
}

TEST(SurveyRecords, PairsAndRegionsComeBackFromTheirText) {
    ZfCRMsgList list;
    list.pairs = {{Message("get/A<B/"), Message("A<B/get/OK/1/&")},
                  {Message("no message"), {}},
                  {Message("put/C/2"), {}}};
    const ZfCRMsgList read = ThroughText(list);
    ASSERT_EQ(read.pairs.size(), 3U);
    EXPECT_EQ(read.pairs[0].command.CommandText(), "get/A<B/");
    EXPECT_EQ(read.pairs[0].reply.ReplyText(), "A<B/get/OK/1/&");
    EXPECT_EQ(read.pairs[1].command.kind, ZfCRMsg::kUnknown);
    EXPECT_EQ(read.pairs[2].command.GetValue(), "2");

    ZfRegion region;
    region.Left = 1.5F;
    region.Height = -2.0F;
    region.Name = "edge";
    region.points = {{1.0F, 2.0F}, {3.0F, 4.0F}};
    EXPECT_TRUE(ThroughText(region).points.empty()) << "a rectangle has no points";
    region.ReginType = ZfRegion::kPolygon;
    const ZfRegion polygon = ThroughText(region);
    EXPECT_EQ(polygon.Left, 1.5F);
    EXPECT_EQ(polygon.Height, -2.0F);
    EXPECT_EQ(polygon.Name, "edge");
    ASSERT_EQ(polygon.points.size(), 2U);
    EXPECT_EQ(polygon.points[1].y, 4.0F);
}
