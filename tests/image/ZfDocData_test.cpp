#include "image/ZfDocData.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "Samples.h"
#include "TempFolder.h"
#include "foundation/ZfError.h"

TEST(ZfDocData, StartsWithOneZeroImage) {
    const ZfDocData data;
    ASSERT_EQ(data.imageSet.size(), 1U);
    const ZfFloatMatrix& image = data.imageSet.at(0.0F);
    EXPECT_EQ(image.ColSize, 16);
    EXPECT_EQ(image.RowSize, 16);
    EXPECT_TRUE(std::all_of(image.Data(), image.Data() + image.Count(), [](float v) { return v == 0.0F; }));
    EXPECT_EQ(ZfDocData().id, data.id + 1);
}

TEST(ZfDocData, SettersKeepTheRestOfAList) {
    ZfDocData::InfoString table = {{"a", {"1", "2"}}, {"empty", {}}};
    for (const char* key : {"a", "b", "empty"}) ZfDocData::SetInfoString(table, key, "x");
    EXPECT_EQ(table, (ZfDocData::InfoString{{"a", {"x", "2"}}, {"b", {"x"}}, {"empty", {"x"}}}));
}

TEST(ZfDocData, CheckTypeReadsFourLinesAlone) {
    const std::string root = "<DataOfProcessImage>\n";
    const std::pair<std::string, std::int32_t> cases[] = {
        {"", -1},
        {"<Other>\n<version>5</version>\n", -1},
        {"1\n2\n3\n4\n" + root + "<version>5</version>\n", -1},
        {"1\n2\n3\n" + root + "<version>5</version>\n", 0},
        {root, 0},
        {root + "<version>5</version>", 5},
        {root + "\n\n <version> 42 </version>\n", 42},
        {root + "\n\n\n<version>5</version>\n", 0},
        {"<DataOfProcessImage><version>5</version>\n", 0},
        {"<DataOfProcessImage><version>5</version>\n<version>5</version>\n", 0},
        {"\n<version>3</version><DataOfProcessImage>\n", 3},
        {root + "<version>5\n</version>\n", 0},
        {root + "<version>five</version>\n", 0},
    };
    const TempFolder folder;
    const ZfDocData data;
    for (const auto& [text, version] : cases)
        EXPECT_EQ(data.CheckType(folder.Write("head", text)), version) << text;
    for (const int version : {0, 2, 3, 4, 5, 6}) EXPECT_EQ(data.CheckType(SamplePath(version)), version);
}

TEST(ZfDocData, CheckTypeNamesTheFileThatItCannotOpen) {
    try {
        ZfDocData().CheckType("/no/such/file");
        FAIL();
    } catch (const ZfError& error) {
        EXPECT_EQ(error.message, "FileCannotOpen. ZfDocData::CheckType():/no/such/file");
    }
}
