#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace qvre {

/// Calls `take` with the fields of each line of a comma-separated table. Text behind # is a comment, and
/// lines of nothing else are skipped. Blanks around a field do not belong to it; two commas in a row enclose
/// an empty field. A ZfError of `take` gets the number of its line in front: "line 7: ...".
void ForEachTableLine(const std::string& text,
                      const std::function<void(const std::vector<std::string>&)>& take);

/// A comma-separated table: the titles of its columns, then rows of as many fields.
class CommaTable {
public:
    /// Throws ZfError "line 7: ..." for a row that has not as many fields as there are titles.
    explicit CommaTable(const std::string& text);

    /// The table of a file. Throws ZfError "path: reason".
    static CommaTable Load(const std::string& path);

    std::optional<std::size_t> Find(const std::string& title) const;
    std::size_t Column(const std::string& title) const;  ///< throws ZfError without such a column

    std::vector<std::string> titles;
    std::vector<std::vector<std::string>> rows;
};

}  // namespace qvre
