#include "report/sphere/Instrument.h"

#include <utility>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"
#include "report/sphere/SphereOperations.h"

namespace qvre {

void CheckInstrument(const Instrument& instrument) {
    if (!(instrument.acceptance >= 0.0 && instrument.acceptance <= 45.0))
        throw ZfError("the half angle of the acceptance has to lie between 0 and 45 degrees");
    if (instrument.fold < 1 || instrument.fold > 360)
        throw ZfError("the order of the rotation axis has to lie between 1 and 360");
    if (instrument.innerPotential && instrument.energy == 0.0)
        throw ZfError(
            "the image does not tell its energy: beside the inner potential give the energy of the "
            "calculation");
    if (instrument.energy != 0.0 && !instrument.innerPotential)
        throw ZfError("the energy is used for refraction only: give the inner potential too");
}

SphereImage Counted(SphereImage intensity, const Instrument& instrument) {
    if (instrument.innerPotential)
        intensity = Refracted(intensity, instrument.energy, *instrument.innerPotential);
    if (instrument.fold > 1 || instrument.mirror) {
        std::optional<double> mirror;
        if (instrument.mirror) mirror = *instrument.mirror * kDegree;
        intensity = SymmetryAverage(intensity, instrument.fold, mirror);
    }
    if (instrument.acceptance > 0.0)
        intensity = AcceptanceAverage(intensity, instrument.acceptance * kDegree);
    return intensity;
}

}  // namespace qvre
