#pragma once

#include <string>

#include "recipe/RecipeQuantity.h"

namespace qvre {

struct RecipeOptions {
    std::string folder;           ///< of the results
    std::string measuredFile;     ///< compared with the result, in place of the one that the recipe names
    NamedValues parameters = {};  ///< in their units, in place of the starts of [parameters]
    std::string dataSet = {};     ///< name of one of [[data]]; empty where there are none
};

}  // namespace qvre
