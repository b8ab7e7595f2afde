#include <gtest/gtest.h>

#include <tuple>

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

TEST(ZfCRMsg, FindsTheNumberInItsValue) {
    const std::tuple<const char*, bool, double, const char*> cases[] = {
        {"put/Stage/12.5mm", true, 12.5, "mm"},
        {"put/Source/E=700eV", true, 700.0, "eV"},
        {"put/Source/Ek=1486.6eV", true, 1486.6, "eV"},
        {"put/Stage/x=-1.5e1 m", true, -15.0, " m"},
        {"put/Stage/home", false, 0.0, ""},
        {"put/Stage/a+", true, 0.0, "a+"}};
    for (const auto& [text, found, truth, behind] : cases) {
        double number = -1.0;
        std::string unit = "before";
        EXPECT_EQ(Message(text).GetNumericValue(number, unit), found) << text;
        EXPECT_EQ(number, truth) << text;
        EXPECT_EQ(unit, behind) << text;
    }
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
