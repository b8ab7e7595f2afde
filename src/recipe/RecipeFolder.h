#pragma once

#include <filesystem>
#include <string>

namespace qvre {

/// Where the files of a recipe are looked for: beside the recipe.
struct RecipeFolder {
    /// An absolute name stays.
    std::string Path(const std::string& name) const {
        return (std::filesystem::path(folder) / name).string();
    }

    std::string folder;
};

}  // namespace qvre
