#include "image/ZfDocData.h"

#include <gtest/gtest.h>

#include "ErrorText.h"
#include "Samples.h"
#include "TempFolder.h"

TEST(ZfDocData, SettersKeepTheRestOfAList) {
    ZfDocData::InfoString table = {{"a", {"1", "2"}}, {"empty", {}}};
    for (const char* key : {"a", "b", "empty"}) ZfDocData::SetInfoString(table, key, "x");
    EXPECT_EQ(table, (ZfDocData::InfoString{{"a", {"x", "2"}}, {"b", {"x"}}, {"empty", {"x"}}}));
}

TEST(ZfDocData, CheckTypeReadsFourLinesAlone) {
    const std::string root = "<DataOfProcessImage>\n";
    const std::pair<std::int32_t, std::vector<std::string>> cases[] = {
        {-1, {"", "<Other>\n<version>5</version>\n", "1\n2\n3\n4\n" + root + "<version>5</version>\n"}},
        {0,
         {root, "1\n2\n3\n" + root + "<version>5</version>\n", root + "\n\n\n<version>5</version>\n",
          "<DataOfProcessImage><version>5</version>\n<version>5</version>\n",
          root + "<version>5\n</version>\n"}},
        {3, {"\n<version>3</version><DataOfProcessImage>\n"}},
        {42, {root + "\n\n <version> 42 </version>\n", root + "<version>42</version>"}}};
    const TempFolder folder;
    const ZfDocData data;
    for (const auto& [version, texts] : cases)
        for (const std::string& text : texts)
            EXPECT_EQ(data.CheckType(folder.Write("head", text)), version) << text;
    for (const int version : kSampleVersions) EXPECT_EQ(data.CheckType(SamplePath(version)), version);
    EXPECT_EQ(ErrorText([&] { data.CheckType("/no/such"); }),
              "FileCannotOpen. ZfDocData::CheckType():/no/such");
}
