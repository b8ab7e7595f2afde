#pragma once

#include "files/RunSettings.h"
#include "report/export/Hdf5Document.h"

namespace qvre {

/// Writes the settings as the fields of an NXparameters group "settings", with their units. A "/" or "." of a
/// name becomes "_", and a name that is there already gets a number.
void WriteNexusSettings(const Hdf5Node& entry, const RunSettings& settings);

}  // namespace qvre
