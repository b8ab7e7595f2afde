#include <gtest/gtest.h>

#include "ErrorText.h"
#include "XmlText.h"
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
    XmlReader in(out.Document());
    Record loaded;
    EXPECT_TRUE(loaded.Exchange(in, "record"));
    return loaded;
}

}  // namespace

TEST(ZfCRMsg, TellsCommandsFromReplies) {
    const ZfCRMsg command = Message("put/Stage/12.5mm");
    EXPECT_EQ(command.CommandText(), "put/Stage/12.5mm");
    EXPECT_EQ(ErrorText([&] { command.GetStatus(); }), "bare: Illigal Message Access.");
    const ZfCRMsg reply = Message("Stage/put/OK/12.5/at /limit/");
    EXPECT_EQ(reply.GetCommand() + reply.GetObject() + reply.GetStatus(), "putStageOK");
    EXPECT_EQ(reply.GetValue(), "12.5");
    EXPECT_EQ(reply.GetDetail(), "at /limit/");
    for (const char* text : {"", "a", "a/b", "a/b/c/d"})
        EXPECT_EQ(Message(text).kind, ZfCRMsg::kUnknown) << text;
}

TEST(SurveyRecords, PairsAndRegionsComeBackFromTheirText) {
    ZfCRMsgList list;
    list.pairs = {{Message("get/A<B/"), Message("A<B/get/OK/1/&")}, {Message("no message"), {}}};
    const ZfCRMsgList read = ThroughText(list);
    ASSERT_EQ(read.pairs.size(), 2U);
    EXPECT_EQ(read.pairs[0].command.CommandText(), "get/A<B/");
    EXPECT_EQ(read.pairs[0].reply.ReplyText(), "A<B/get/OK/1/&");
    EXPECT_EQ(read.pairs[1].command.CommandText(), "//");

    ZfRegion region;
    region.Height = -2.5F;
    region.Name = "edge";
    region.points = {{1.0F, 2.0F}, {3.0F, 4.0F}};
    EXPECT_TRUE(ThroughText(region).points.empty()) << "a rectangle has no points";
    region.ReginType = ZfRegion::kPolygon;
    const ZfRegion polygon = ThroughText(region);
    EXPECT_EQ(polygon.Height, -2.5F);
    EXPECT_EQ(polygon.Name, "edge");
    ASSERT_EQ(polygon.points.size(), 2U);
    EXPECT_EQ(polygon.points[1].y, 4.0F);
}
