#include "recipe/RecipeTable.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <sstream>
#include <utility>

#include "foundation/Text.h"

namespace qvre {

namespace {

std::string Join(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
    return text;
}

/// Number of single-letter edits between two words (V. I. Levenshtein, Sov. Phys. Dokl. 10, 707 (1966)).
std::size_t EditDistance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t changed = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({changed, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row.back();
}

std::shared_ptr<const NamedValues> ParametersOf(const toml::table* recipe) {
    auto numbers = std::make_shared<NamedValues>();
    const toml::table* table = recipe ? recipe->get_as<toml::table>("parameters") : nullptr;
    if (!table) return numbers;
    for (const auto& [name, node] : *table)
        if (const auto number = node.value<double>()) numbers->emplace(name.str(), *number);
    return numbers;
}

}  // namespace

RecipeTable::RecipeTable(const toml::table* table, std::string place)
    : RecipeTable(table, std::move(place), ParametersOf(table)) {}

RecipeTable::RecipeTable(const toml::table* table, std::string place,
                         std::shared_ptr<const NamedValues> parameters)
    : table_(table), place_(std::move(place)), parameters_(std::move(parameters)) {}

const toml::node* RecipeTable::Find(const std::string& key) {
    asked_.insert(key);
    return table_ ? table_->get(key) : nullptr;
}

bool RecipeTable::Has(const std::string& key) {
    return Find(key) != nullptr;
}

bool RecipeTable::HasText(const std::string& key) {
    const toml::node* node = Find(key);
    return node && node->is_string();
}

bool RecipeTable::HasFlag(const std::string& key) {
    const toml::node* node = Find(key);
    return node && node->is_boolean();
}

bool RecipeTable::HasWord(const std::string& key) {
    return HasText(key) && !NamesParameter(*Text(key));
}

bool RecipeTable::NamesParameter(const std::string& text) const {
    const std::vector<std::string> names = NamesInQuantity(text);
    return std::any_of(names.begin(), names.end(),
                       [&](const std::string& name) { return parameters_->contains(name); });
}

void RecipeTable::Fail(const std::string& key, const std::string& message) const {
    const toml::node* node = table_ ? table_->get(key) : nullptr;
    if (!node || !node->source().path) node = table_;
    std::string where;
    if (node && node->source().path) where = *node->source().path;
    if (node && node->source().begin.line > 0) where += " line " + std::to_string(node->source().begin.line);
    if (!where.empty()) where += ": ";
    where += place_;
    throw ZfError(where + (key.empty() ? "" : " " + key) + ": " + message);
}

double RecipeTable::NumberOf(const std::string& key, const toml::node& node, RecipeUnit unit) const {
    if (node.is_number()) {
        const std::optional<double> number =
            node.value<double>();  // none for an integer that no double holds
        if (!number) Fail(key, "has more digits than a number keeps");
        if (!std::isfinite(*number)) Fail(key, "has to be a finite number");
        return *number;
    }
    RefuseList(key, node);
    if (!node.is_string()) Fail(key, "has to be a number");
    return Made(key,
                [&] { return ParseQuantity(node.value<std::string>().value_or(""), unit, *parameters_); });
}

void RecipeTable::RefuseList(const std::string& key, const toml::node& node) const {
    if (node.is_array()) Fail(key, "takes one value, not a list");
}

std::optional<double> RecipeTable::Number(const std::string& key, RecipeUnit unit) {
    const toml::node* node = Find(key);
    if (!node) return std::nullopt;
    return NumberOf(key, *node, unit);
}

double RecipeTable::Number(const std::string& key, RecipeUnit unit, double fallback) {
    return Number(key, unit).value_or(fallback);
}

double RecipeTable::NotNegative(const std::string& key, RecipeUnit unit, double fallback) {
    const double number = Number(key, unit, fallback);
    if (number < 0.0) Fail(key, "has to be 0 or above, not " + DoubleToText(number));
    return number;
}

std::optional<std::int64_t> RecipeTable::Integer(const std::string& key) {
    const toml::node* node = Find(key);
    if (!node) return std::nullopt;
    RefuseList(key, *node);
    if (node->is_integer()) return node->value<std::int64_t>();
    constexpr double kMost = 1e15;
    const double number = node->is_string() && !HasWord(key) ? NumberOf(key, *node, RecipeUnit::kNone) : 0.5;
    if (number != std::floor(number) || std::abs(number) > kMost) Fail(key, "has to be a whole number");
    return static_cast<std::int64_t>(number);
}

std::int32_t RecipeTable::Count(const std::string& key, std::int32_t fallback) {
    constexpr std::int64_t kMost = 1000000000;
    const std::int64_t count = Integer(key).value_or(fallback);
    if (std::abs(count) > kMost) Fail(key, "is too large");
    return static_cast<std::int32_t>(count);
}

std::vector<double> RecipeTable::Numbers(const std::string& key, RecipeUnit unit) {
    const toml::node* node = Find(key);
    std::vector<double> numbers;
    if (!node) return numbers;
    const toml::array* list = node->as_array();
    if (!list) return {NumberOf(key, *node, unit)};
    for (const toml::node& item : *list) numbers.push_back(NumberOf(key, item, unit));
    return numbers;
}

std::vector<std::vector<double>> RecipeTable::NumberLists(const std::string& key, RecipeUnit unit) {
    const toml::node* node = Find(key);
    std::vector<std::vector<double>> lists;
    if (!node) return lists;
    const toml::array* outer = node->as_array();
    if (!outer) Fail(key, "has to be a list of lists of numbers");
    for (const toml::node& item : *outer) {
        const toml::array* list = item.as_array();
        if (!list) Fail(key, "has to be a list of lists of numbers");
        lists.emplace_back();
        for (const toml::node& number : *list) lists.back().push_back(NumberOf(key, number, unit));
    }
    return lists;
}

std::optional<std::array<double, 3>> RecipeTable::Vector(const std::string& key) {
    if (!Has(key)) return std::nullopt;
    const std::vector<double> numbers = Numbers(key, RecipeUnit::kNone);
    if (numbers.size() != 3) Fail(key, "has to be a list of three numbers");
    return std::array<double, 3>{numbers[0], numbers[1], numbers[2]};
}

std::optional<std::string> RecipeTable::Text(const std::string& key) {
    const toml::node* node = Find(key);
    if (!node) return std::nullopt;
    RefuseList(key, *node);
    if (!node->is_string()) Fail(key, "has to be a text in quotes");
    return node->value<std::string>();
}

std::string RecipeTable::Text(const std::string& key, const std::string& fallback) {
    return Text(key).value_or(fallback);
}

std::optional<std::string> RecipeTable::OneOf(const std::string& key, const std::vector<std::string>& words) {
    std::optional<std::string> word = Text(key);
    if (word && std::find(words.begin(), words.end(), *word) == words.end())
        Fail(key, "\"" + *word + "\" is none of " + Join(words));
    return word;
}

std::vector<std::string> RecipeTable::Texts(const std::string& key) {
    const toml::node* node = Find(key);
    std::vector<std::string> texts;
    if (!node) return texts;
    const toml::array* list = node->as_array();
    if (!list) return {*Text(key)};
    for (const toml::node& item : *list) {
        if (!item.is_string()) Fail(key, "has to be a list of texts in quotes");
        texts.push_back(item.value<std::string>().value_or(""));
    }
    return texts;
}

std::vector<RecipeTable::Scalar> RecipeTable::Scalars(const std::string& key) {
    const toml::node* node = Find(key);
    const toml::array* list = node ? node->as_array() : nullptr;
    if (!list) Fail(key, "has to be a list");
    std::vector<Scalar> scalars;
    for (const toml::node& item : *list) {
        // With a unit, what it measures is for the reader to say.
        const auto text = item.value_exact<std::string>();
        if (text && (!NamesParameter(*text) || !SplitQuantity(*text).unit.empty()))
            scalars.emplace_back(*text);
        else if (const double number = NumberOf(key, item, RecipeUnit::kNone); item.is_integer())
            scalars.emplace_back(static_cast<std::int64_t>(number));
        else
            scalars.emplace_back(number);
    }
    return scalars;
}

bool RecipeTable::Flag(const std::string& key, bool fallback) {
    const toml::node* node = Find(key);
    if (!node) return fallback;
    RefuseList(key, *node);
    if (!node->is_boolean()) Fail(key, "has to be true or false");
    return node->value<bool>().value_or(fallback);
}

/// "cluster.relax" of a table in the section [cluster].
std::string RecipeTable::WholeName(const std::string& key) const {
    const std::size_t brackets = place_.find_first_not_of('[');
    if (brackets == 0 || brackets == std::string::npos) return key;
    return place_.substr(brackets, place_.size() - 2 * brackets) + "." + key;
}

RecipeTable RecipeTable::Section(const std::string& key) {
    const toml::node* node = Find(key);
    if (node && !node->is_table()) Fail(key, "has to be a table");
    return {node ? node->as_table() : nullptr, "[" + WholeName(key) + "]", parameters_};
}

std::vector<RecipeTable> RecipeTable::Sections(const std::string& key) {
    const toml::node* node = Find(key);
    std::vector<RecipeTable> sections;
    if (!node) return sections;
    if (node->is_table()) return {RecipeTable(node->as_table(), "[" + WholeName(key) + "]", parameters_)};
    const toml::array* list = node->as_array();
    if (!list) Fail(key, "has to be a table");
    for (const toml::node& item : *list) {
        if (!item.is_table()) Fail(key, "has to be a list of tables");
        sections.push_back(RecipeTable(item.as_table(), "[[" + WholeName(key) + "]]", parameters_));
    }
    return sections;
}

std::vector<std::string> RecipeTable::Keys() const {
    std::vector<std::string> keys;
    if (!table_) return keys;
    for (const auto& [key, node] : *table_) keys.emplace_back(key.str());
    return keys;
}

std::string RecipeTable::Content() const {
    std::ostringstream text;
    if (table_) text << *table_ << NumbersText(*parameters_);
    return text.str();
}

void RecipeTable::RefuseUnread() const {
    for (const std::string& key : Keys()) {
        if (asked_.contains(key)) continue;
        const std::vector<std::string> known(asked_.begin(), asked_.end());
        const auto nearest = std::min_element(known.begin(), known.end(), [&](const auto& a, const auto& b) {
            return EditDistance(key, a) < EditDistance(key, b);
        });
        std::string hint = "; known are " + Join(known);
        if (nearest != known.end() && EditDistance(key, *nearest) <= 2)
            hint = "; did you mean " + *nearest + "?";
        Fail(key, "there is no such key" + hint);
    }
}

}  // namespace qvre
