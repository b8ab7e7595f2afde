#pragma once

#include "input/ZfDebye.h"
#include "input/ZfFluctuation.h"
#include "scattering/ZfVectorFreeElectron.h"

// Mean square displacements of the sources of a list, overwritten by a model of the vibrations. No
// integration takes place: both are high-temperature forms without zero-point motion.

/// Where the displacements come from.
enum class ThermalModel {
    kNone,  ///< no flag is set: the cluster keeps its displacements then, too
    kCluster,
    kEinstein,
    kDebye
};

/// The one that the flags of the document choose: of several that of the cluster before the Einstein model,
/// and that before the Debye model.
ThermalModel ThermalModelOf(const ZfFluctuation& fluctuation);

/// U = kB T / f with one force constant f = 70 N/m for all elements. A negative temperature gives
/// not-a-number.
void SetEinsteinModel(const ZfFluctuation& fluctuation, ZfVectorFreeElectron& list, const ZfDebye& debye);

/// ZfDebye::CalcUiso with the Debye temperature of each element. Throws ZfError for an entry, the emitter
/// included, whose element has none.
void SetDebyeModel(const ZfFluctuation& fluctuation, ZfVectorFreeElectron& list, const ZfDebye& debye);

/// The model of the document.
void ApplyThermalModel(const ZfFluctuation& fluctuation, ZfVectorFreeElectron& list, const ZfDebye& debye);
