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

TEST(ZfRegion, PolygonsComeBackFromTheirText) {
    for (const bool polygon : {false, true}) {
        ZfRegion region;
        if (polygon) region.ReginType = ZfRegion::kPolygon;
        region.Height = -2.5F;
        region.points = {{1.0F, 2.0F}, {3.0F, 4.0F}};
        ZfBarnXml out("w");
        region.Exchange(out, "record");
        XmlReader in(out.Document());
        ZfRegion loaded;
        EXPECT_TRUE(loaded.Exchange(in, "record"));
        EXPECT_EQ(loaded.Height, -2.5F);
        ASSERT_EQ(loaded.points.size(), polygon ? 2U : 0U) << "a rectangle has no points";
        EXPECT_EQ(polygon ? loaded.points[1].y : 4.0F, 4.0F);
    }
}
