#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include <toml++/toml.h>

#include "foundation/Words.h"
#include "foundation/ZfError.h"
#include "recipe/RecipeQuantity.h"

namespace qvre {

/// One table of a recipe, read strictly: a value of the wrong kind throws ZfError with the file, the line and
/// what was expected, and so does a key that nobody asked for. The TOML table is not owned.
class RecipeTable {
public:
    using Scalar = std::variant<std::int64_t, double, std::string>;

    /// `place` names the table in messages; null stands for a table that is absent and has no keys. The
    /// numbers of a table "parameters" in it may be named by the numbers of all its sections.
    RecipeTable(const toml::table* table, std::string place);

    bool Exists() const { return table_ != nullptr; }
    bool Has(const std::string& key);
    bool HasText(const std::string& key);  ///< a text in quotes
    bool HasFlag(const std::string& key);  ///< true or false
    bool HasWord(const std::string& key);  ///< a text, and no expression of parameters
    const NamedValues& Parameters() const { return *parameters_; }

    std::optional<double> Number(const std::string& key, RecipeUnit unit);
    double Number(const std::string& key, RecipeUnit unit, double fallback);
    double NotNegative(const std::string& key, RecipeUnit unit, double fallback);
    std::optional<std::int64_t> Integer(const std::string& key);
    std::int32_t Count(const std::string& key, std::int32_t fallback);     ///< of moderate size
    std::vector<double> Numbers(const std::string& key, RecipeUnit unit);  ///< a list, or one number
    std::vector<std::vector<double>> NumberLists(const std::string& key,
                                                 RecipeUnit unit);  ///< a list of them
    std::optional<std::array<double, 3>> Vector(const std::string& key);
    std::optional<std::string> Text(const std::string& key);
    std::string Text(const std::string& key, const std::string& fallback);
    /// The value of one of the words of an enumeration.
    template <class Enumeration>
    std::optional<Enumeration> Word(const std::string& key) {
        const std::optional<std::string> word = OneOf(key, WordsOf<Enumeration>());
        return word ? ValueOfWord<Enumeration>(*word) : std::nullopt;
    }
    template <class Enumeration>
    Enumeration Word(const std::string& key, Enumeration fallback) {
        return Word<Enumeration>(key).value_or(fallback);
    }
    std::optional<std::string> OneOf(const std::string& key, const std::vector<std::string>& words);
    std::vector<std::string> Texts(const std::string& key);  ///< a list, or one text
    std::vector<Scalar> Scalars(const std::string& key);     ///< a list of numbers and texts
    bool Flag(const std::string& key, bool fallback);
    RecipeTable Section(const std::string& key);
    std::vector<RecipeTable> Sections(const std::string& key);  ///< an array of tables, or one table
    std::vector<std::string> Keys() const;
    std::string Content() const;  ///< the table as TOML, keys in alphabetical order, and the parameters

    /// Throws ZfError for the first key that was not asked for, with the nearest one that was.
    void RefuseUnread() const;

    /// Throws ZfError at the line of a key, or at that of the table for a key that is absent.
    [[noreturn]] void Fail(const std::string& key, const std::string& message) const;
    /// What an action makes of the value of a key; its ZfError becomes one at the line of the key.
    template <class Action>
    auto Made(const std::string& key, const Action& action) const {
        try {
            return action();
        } catch (const ZfError& error) {
            Fail(key, error.message);
        }
    }
    /// Runs a check of several keys; its ZfError becomes one at the line of the table.
    template <class Action>
    void Check(const Action& action) const {
        Made("", action);
    }

private:
    RecipeTable(const toml::table* table, std::string place, std::shared_ptr<const NamedValues> parameters);
    std::string WholeName(const std::string& key) const;
    const toml::node* Find(const std::string& key);
    bool NamesParameter(const std::string& text) const;
    void RefuseList(const std::string& key, const toml::node& node) const;
    double NumberOf(const std::string& key, const toml::node& node, RecipeUnit unit) const;

    const toml::table* table_;
    std::string place_;
    std::shared_ptr<const NamedValues> parameters_;
    std::set<std::string> asked_;
};

}  // namespace qvre
