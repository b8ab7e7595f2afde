#include "recipe/RecipeDataSets.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>
#include <utility>

#include "foundation/ZfError.h"
#include "recipe/RecipeTable.h"

namespace qvre {

namespace {

constexpr const char* kDataSets = "data";
constexpr std::array<std::string_view, 9> kSections = {
    "cluster", "emission", "light", "phases", "thermal", "scattering", "image", "compare", "energies"};

bool IsFileName(const std::string& name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '-' || c == '.';
    });
}

RecipeDataSet ReadDataSet(RecipeTable table) {
    RecipeDataSet set;
    set.name = table.Text("name", "");
    if (!IsFileName(set.name))
        table.Fail("name",
                   "give every data set a name of letters, digits, _, - and points: files have it in theirs");
    set.weight = table.NotNegative("weight", RecipeUnit::kNone, set.weight);
    for (const std::string_view section : kSections) table.Section(std::string(section));
    table.RefuseUnread();
    return set;
}

// NOLINTNEXTLINE(misc-no-recursion): tables nest, no deeper than the parser lets them
void Merge(toml::table&& from, toml::table& into) {
    for (auto&& [key, node] : std::move(from)) {
        toml::table* const inner = into[key.str()].as_table();
        if (inner && node.is_table())
            Merge(std::move(*node.as_table()), *inner);
        else
            into.insert_or_assign(key, std::move(node));
    }
}

}  // namespace

std::vector<RecipeDataSet> ReadDataSets(const toml::table& recipe) {
    RecipeTable root(&recipe, "recipe");
    std::vector<RecipeDataSet> sets;
    for (const RecipeTable& table : root.Sections(kDataSets)) {
        sets.push_back(ReadDataSet(table));
        const auto isSame = [&](const RecipeDataSet& set) { return set.name == sets.back().name; };
        if (std::count_if(sets.begin(), sets.end(), isSame) > 1)
            table.Fail("name", fmt::format("there are two data sets of the name {}", sets.back().name));
    }
    if (sets.empty()) sets.emplace_back();
    return sets;
}

void ChooseDataSet(toml::table& recipe, const std::string& name) {
    const std::vector<RecipeDataSet> sets = ReadDataSets(recipe);
    const auto chosen =
        std::find_if(sets.begin(), sets.end(), [&](const RecipeDataSet& set) { return set.name == name; });
    if (chosen == sets.end()) {
        std::vector<std::string> names;
        names.reserve(sets.size());
        for (const RecipeDataSet& set : sets) names.push_back(set.name);
        if (names.front().empty()) throw ZfError(fmt::format("the recipe has no data set {}", name));
        const std::string there = fmt::format("the recipe has the data sets {}", fmt::join(names, ", "));
        throw ZfError(name.empty() ? there + ": choose one" : fmt::format("{}, and no {}", there, name));
    }
    toml::node* const node = recipe.get(kDataSets);
    if (!node) return;
    toml::table* const table =
        node->is_table()
            ? node->as_table()
            : node->as_array()->get_as<toml::table>(static_cast<std::size_t>(chosen - sets.begin()));
    toml::table own = std::move(*table);
    recipe.erase(kDataSets);
    own.erase("name");
    own.erase("weight");
    Merge(std::move(own), recipe);
}

}  // namespace qvre
