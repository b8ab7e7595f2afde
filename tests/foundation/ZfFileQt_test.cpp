#include "foundation/ZfFileQt.h"

#include <gtest/gtest.h>

#include "ErrorText.h"
#include "TempFolder.h"

TEST(ZfFileQt, ReadsAndWritesLines) {
    const TempFolder folder;
    const QString path = QString::fromStdString(folder.Write("f.txt", "one\r\ntwo\n\xC3\xA9"));
    std::vector<std::string> lines;
    ZfFileQt(path, "r").ReadLines(lines);
    EXPECT_EQ(lines, (std::vector<std::string>{"one", "two"}));  // the last line is never stored
    std::string text;
    ZfFileQt(path, "r").ReadAll(text);
    EXPECT_EQ(text, "one\r\ntwo\n\xC3\xA9");
    EXPECT_EQ(ErrorText([&] { ZfFileQt(path, "rw"); }), "ZfFileQt::Undefined mode");
    EXPECT_EQ(folder.Read("f.txt"), text);
    ZfFileQt(path, "w").WriteLines({"one", "two"});
    EXPECT_EQ(folder.Read("f.txt"), "one\ntwo\n");
    EXPECT_EQ(ErrorText([] { ZfFileQt("/no/such", "w"); }), "FILE CANNOT OPEN:/no/such");
}
