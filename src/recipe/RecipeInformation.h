#pragma once

#include <map>
#include <string>

#include <toml++/toml.h>

#include "scattering/ZfScatteringData.h"

namespace qvre {

/// What an image tells of the calculation that made it, for exports: the settings of the recipe as
/// "section.key", and the surface, emitter layer, light, temperature and method that hold where it names
/// none.
std::map<std::string, std::string> InformationOf(const toml::table& settings, ScatteringMethod method);

}  // namespace qvre
