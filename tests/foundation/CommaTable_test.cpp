#include "foundation/CommaTable.h"

#include <gtest/gtest.h>

#include "ErrorText.h"

namespace {

using Lines = std::vector<std::vector<std::string>>;

Lines LinesOf(const std::string& text, FieldSeparator separator) {
    Lines lines;
    ForEachTableLine(text, separator,
                     [&](const std::vector<std::string>& fields) { lines.push_back(fields); });
    return lines;
}

TEST(TableLines, AreSplitAtTheirSeparators) {
    EXPECT_EQ(LinesOf("# why\n\n a b , c,\r\n,d # note\n \n,,", FieldSeparator::kComma),
              (Lines{{"a b", "c", ""}, {"", "d"}, {"", "", ""}}));
    EXPECT_EQ(LinesOf("1 2\t3\n1;2 ; 3\n1,,3\n 1, 2;\n", FieldSeparator::kAny),
              (Lines{{"1", "2", "3"}, {"1", "2", "3"}, {"1", "", "3"}, {"1", "2", ""}}));
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
