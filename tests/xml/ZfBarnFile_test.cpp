#include "xml/ZfBarnFile.h"

#include <gtest/gtest.h>

#include "ErrorText.h"
#include "TempFolder.h"
#include "xml/ZfQBarnFile.h"

namespace {

const char* const kText = "<root><a>&lt;\xC3\xA9</a>\n</root>\n";

/// Writes kText but for the end of the root.
void WriteHalf(ZfBarnXml& xml) {
    std::string value = "<\xC3\xA9";
    xml.OpenRack("root");
    xml.Text("a", value, "");
}

}  // namespace

TEST(ZfBarnFile, TruncatesAtOnceAndWritesWhenAnExceptionPasses) {
    const TempFolder folder;
    const std::string path = folder.Write("f.xml", "old");
    EXPECT_EQ(ErrorText([&] {
                  ZfBarnFile file(path, "w");
                  WriteHalf(file);
                  EXPECT_EQ(folder.Read("f.xml"), "");
                  file.CloseRack("other");
              }),
              "Invalid Tag Name:root <> other");
    EXPECT_EQ(folder.Read("f.xml"), kText);
}

TEST(ZfBarnFile, QtFileWritesOnceAtSaveOrInTheDestructor) {
    const TempFolder folder;
    const std::string path = folder.Write("f.xml", "old");
    for (const bool save : {true, false}) {
        ZfQBarnFile file(path, "w");
        WriteHalf(file);
        EXPECT_EQ(folder.Read("f.xml"), "old");
        if (!save) continue;
        file.Save();
        EXPECT_EQ(folder.Read("f.xml"), kText);
        folder.Write("f.xml", "old");
    }
    EXPECT_EQ(folder.Read("f.xml"), kText);
}

TEST(ZfBarnFile, ReadingKeepsLineEndsOnlyOnTheStdioRoute) {
    const TempFolder folder;
    const std::string path = folder.Write("f.xml", std::string("<a>x\ny \xC3\xA9</a><b>1</b>\0<c></c>", 30));
    std::string value;
    ZfBarnFile file(path, "r");
    EXPECT_TRUE(file.Text("a", value, ""));
    EXPECT_EQ(value, "x\ny \xC3\xA9");
    EXPECT_FALSE(file.OpenRack("c"));  // behind a zero byte nothing is read
    EXPECT_TRUE(ZfQBarnFile(QString::fromStdString(path), "r").Text("a", value, ""));
    EXPECT_EQ(value, "xy \xC3\xA9");
}

TEST(ZfBarnFile, FailuresNameTheFile) {
    const TempFolder folder;
    const std::string path = folder.Path("no/such");
    EXPECT_EQ(ErrorText([&] { ZfBarnFile(path, "r"); }), path + ": Cannot File Open");
    EXPECT_EQ(ErrorText([&] { ZfBarnFile(path, "w"); }), "Cannot File Open " + path);
    EXPECT_EQ(ErrorText([&] { ZfQBarnFile(path, "r"); }), "Cannot open:" + path);
    EXPECT_EQ(ErrorText([&] { ZfQBarnFile(path, "w").Save(); }), "FILE CANNOT WRITE:" + path);
    EXPECT_EQ(ErrorText([&] { ZfBarnFile(folder.Write("cut", "<a"), "r"); }), "Illigal Tag Structure");
}
