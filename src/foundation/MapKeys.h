#pragma once

#include <map>
#include <string>
#include <vector>

namespace qvre {

/// The names of a table, in alphabetical order.
template <class Value>
std::vector<std::string> MapKeys(const std::map<std::string, Value>& table) {
    std::vector<std::string> names;
    names.reserve(table.size());
    for (const auto& entry : table) names.push_back(entry.first);
    return names;
}

}  // namespace qvre
