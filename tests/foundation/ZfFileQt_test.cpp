#include "foundation/ZfFileQt.h"

#include <gtest/gtest.h>

#include "ErrorText.h"
#include "TempFolder.h"

TEST(ZfFileQt, ReadsAndWritesLines) {
    const TempFolder folder;
    const std::string path = folder.Write("f.txt", "one\r\ntwo\n\xC3\xA9");
    std::vector<std::string> lines;
    ZfFileQt(path, "r").ReadLines(lines);
    EXPECT_EQ(lines, (std::vector<std::string>{"one", "two"}));  // the last line is never stored
    std::string text;
    ZfFileQt(QString::fromStdString(path), "r").ReadAll(text);
    EXPECT_EQ(text, "one\r\ntwo\n\xC3\xA9");
    EXPECT_EQ(ErrorText([&] { ZfFileQt(path, "rw"); }), "ZfFileQt::Undefined mode");
    EXPECT_EQ(folder.Read("f.txt"), text);
    ZfFileQt(path, "w").WriteLines({"one", "two"});
    EXPECT_EQ(folder.Read("f.txt"), "one\ntwo\n");
    const std::string bytes = folder.Path("a\xFF\xC3.txt");  // no UTF-8
    ZfFileQt(bytes, "w").Write("text");
    EXPECT_EQ(folder.Read("a\xFF\xC3.txt"), "text");
    EXPECT_EQ(ErrorText([&] { ZfFileQt(folder.Path(""), "r"); }), "FILE CANNOT OPEN:" + folder.Path(""));
    EXPECT_EQ(ErrorText([] { ZfFileQt("/no/such", "w"); }), "FILE CANNOT OPEN:/no/such");
}
