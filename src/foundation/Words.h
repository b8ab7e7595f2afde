#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/ZfError.h"

/// A word that a user writes, on the command line and in recipes alike, and the value that it stands for. A
/// setting has a table of them, an array in the order in which they are offered.
template <class Value>
struct Word {
    std::string_view text;
    Value value;
};

template <class Value>
Word(const char*, Value) -> Word<Value>;

template <class Table>
std::vector<std::string> WordsOf(const Table& table) {
    std::vector<std::string> words;
    words.reserve(table.size());
    for (const auto& word : table) words.emplace_back(word.text);
    return words;
}

/// Throws ZfError that lists the words.
template <class Table>
auto ValueOf(const Table& table, std::string_view text) {
    const auto found =
        std::find_if(table.begin(), table.end(), [text](const auto& word) { return word.text == text; });
    if (found != table.end()) return found->value;
    std::string words;
    for (const auto& word : table) words.append(words.empty() ? "" : ", ").append(word.text);
    throw ZfError("\"" + std::string(text) + "\" is none of " + words);
}

/// The word for a value, which has to be in the table.
template <class Table, class Value>
std::string WordOf(const Table& table, const Value& value) {
    return std::string(std::find_if(table.begin(), table.end(), [&value](const auto& word) {
                           return word.value == value;
                       })->text);
}
