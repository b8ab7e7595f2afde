#pragma once

#include "input/ZfDebye.h"
#include "input/ZfFluctuation.h"
#include "scattering/ZfVectorFreeElectron.h"

// Mean square displacements of the sources of a list, overwritten by a model of the vibrations. No
// integration takes place: both are high-temperature forms without zero-point motion.

/// U = kB T / f with one force constant f = 70 N/m for all elements. A negative temperature gives
/// not-a-number.
void SetEinsteinModel(const ZfFluctuation& fluctuation, ZfVectorFreeElectron& list, const ZfDebye& debye);

/// ZfDebye::CalcUiso with the Debye temperature of each element. Throws ZfError for an entry, the emitter
/// included, whose element has none.
void SetDebyeModel(const ZfFluctuation& fluctuation, ZfVectorFreeElectron& list, const ZfDebye& debye);

/// The model that the flags of the document choose, or none.
void ApplyThermalModel(const ZfFluctuation& fluctuation, ZfVectorFreeElectron& list, const ZfDebye& debye);
