#include "foundation/CommaTable.h"

#include <gtest/gtest.h>

#include "ErrorText.h"

namespace {

using Lines = std::vector<std::vector<std::string>>;

TEST(TableLines, AreSplitAtCommas) {
    Lines lines;
    ForEachTableLine("# why\n\n a b , c,\r\n,d # note\n \n,,",
                     [&](const std::vector<std::string>& fields) { lines.push_back(fields); });
    EXPECT_EQ(lines, (Lines{{"a b", "c", ""}, {"", "d"}, {"", "", ""}}));
}

TEST(CommaTable, FindsColumnsAndCountsLines) {
    const CommaTable table("# a comment\nelement,\xCE\xB8 (K)\nCu, 343\n\nAg,\n");
    EXPECT_EQ(table.Find("\xCE\xB8 (K)"), 1U);
    EXPECT_EQ(table.Find("theta"), std::nullopt);
    EXPECT_EQ(table.rows, (Lines{{"Cu", "343"}, {"Ag", ""}}));
    EXPECT_EQ(ErrorText([] { CommaTable("a,b\n\n1,2\n3\n"); }),
              "line 4: it has 1 fields and the title line 2");
}

}  // namespace
