#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qvre {

/// A line of a table with something in it; the views last as long as the text.
struct TableLine {
    int number = 0;         ///< from 1
    std::string_view text;  ///< without blanks at its end, and without what follows a #
    bool comment = false;   ///< begins with #, %, ! or //, which its text leaves out
};

/// Lines may end as on any system: with a line feed, a carriage return or both.
std::vector<TableLine> TableLines(std::string_view text);

enum class Separator { kBlanks, kTab, kComma, kSemicolon };

const char* SeparatorName(Separator separator);  ///< "commas", ...

/// What separates the numbers of a line: a semicolon, a tab or a comma, whichever is there, in this order.
/// Tabs and blanks mixed are blanks, and commas within every number, as in "1,5 2,5", are decimal signs.
Separator SeparatorOf(std::string_view line);

/// The fields of a line, without the blanks and the double quotes around them.
std::vector<std::string> SplitLine(std::string_view line, Separator separator);

/// The numbers of one table, with decimal points or with decimal commas.
class TableNumbers {
public:
    /// NaN for an empty field, "nan", "inf", "--" and the like, nothing for a text that is no number. Throws
    /// ZfError where decimal points and commas are mixed, as they are with separators of thousands.
    std::optional<double> Read(const std::string& field);

    bool HasDecimalCommas() const { return !withComma_.empty(); }

private:
    std::string withComma_;  // the first number of the kind
    std::string withPoint_;
};

/// Throws ZfError "line 7: ...".
[[noreturn]] void FailAtLine(int number, const std::string& reason);

}  // namespace qvre
