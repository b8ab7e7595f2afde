#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qvre {

/// A value of an enumeration with the name that options, recipes and files have for it.
template <class Enumeration>
struct Word {
    std::string_view name;
    Enumeration value;
};

/// The words of an enumeration, in the order in which users see them. They stand beside the enumeration:
///     template <>
///     inline constexpr auto kWords<Axis> = std::to_array<Word<Axis>>({{"x", Axis::kX}, {"y", Axis::kY}});
template <class Enumeration>
inline constexpr std::array<Word<Enumeration>, 0> kWords = {};

template <class Enumeration>
std::vector<std::string> WordsOf() {
    std::vector<std::string> names;
    names.reserve(kWords<Enumeration>.size());
    for (const Word<Enumeration>& word : kWords<Enumeration>) names.emplace_back(word.name);
    return names;
}

template <class Enumeration>
std::optional<Enumeration> ValueOfWord(std::string_view name) {
    for (const Word<Enumeration>& word : kWords<Enumeration>)
        if (word.name == name) return word.value;
    return std::nullopt;
}

/// The word of a value; `otherwise` for one without, which a file may hold.
template <class Enumeration>
std::string WordFor(Enumeration value, const std::string& otherwise = "") {
    for (const Word<Enumeration>& word : kWords<Enumeration>)
        if (word.value == value) return std::string(word.name);
    return otherwise;
}

}  // namespace qvre
