#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// One reader of files or texts from outside.
struct FuzzTarget {
    std::string name;
    /// Reads any bytes. Returns where the reader takes them or refuses them as it promises; everything else
    /// ends the process.
    std::function<void(std::string_view input)> read;
};

const std::vector<FuzzTarget>& FuzzTargets();

/// The target of that name; ends the process, with the names that exist, if there is none.
const FuzzTarget& FindFuzzTarget(std::string_view name);
