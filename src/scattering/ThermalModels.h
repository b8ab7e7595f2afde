#pragma once

#include "input/Fluctuation.h"
#include "input/ZfDebye.h"
#include "scattering/ZfVectorFreeElectron.h"

// Mean square displacements of the sources of a list, overwritten by a model of the vibrations. No
// integration takes place: both are high-temperature forms without zero-point motion.

namespace qvre {

/// Where the displacements come from.
enum class ThermalModel {
    kNone,  ///< no flag is set: the cluster keeps its displacements then, too
    kCluster,
    kEinstein,
    kDebye
};

/// The one that the flags of the document choose: of several that of the cluster before the Einstein model,
/// and that before the Debye model.
ThermalModel ThermalModelOf(const Fluctuation& fluctuation);

/// The model of the document.
void ApplyThermalModel(const Fluctuation& fluctuation, ZfVectorFreeElectron& list, const ZfDebye& debye);

}  // namespace qvre

/// U = kB T / f with one force constant f = 70 N/m for all elements. A negative temperature gives
/// not-a-number.
void SetEinsteinModel(const qvre::Fluctuation& fluctuation, ZfVectorFreeElectron& list, const ZfDebye& debye);

/// ZfDebye::CalcUiso with the Debye temperature of each element. Throws ZfError for an entry, the emitter
/// included, whose element has none.
void SetDebyeModel(const qvre::Fluctuation& fluctuation, ZfVectorFreeElectron& list, const ZfDebye& debye);
