#include <limits>

#include "foundation/ZfError.h"
#include "input/ZfAtomName.h"
#include "scattering/ThermalModels.h"
#include "scattering/ZfScatteringRecord.h"

using namespace qvre;

void ZfScatteringRecord::SetListScattererDimerOnZ(const ZfLmComplexTable& coefficients, double energy,
                                                  double z, const std::string& atomName,
                                                  const std::string& elementName, std::int32_t phaseShift,
                                                  const Fluctuation& fluctuation, const ZfDebye& debye) {
    try {
        ZfAtomName element;
        element.SetName(elementName);
        if (phaseShift < 0 || phaseShift > std::numeric_limits<std::int8_t>::max())
            throw ZfError("Error: There is no phase shift data");

        std::vector<ZfFreeElectron>& electrons = ListScatterer.electrons;
        electrons.resize(2);
        electrons[0].position = Vector3(0.0, 0.0, 0.0);
        electrons[0].A = coefficients;
        electrons[1].position = Vector3(0.0, 0.0, z);
        for (ZfFreeElectron& electron : electrons) electron.atomicNumber = element.GetAtomicNumber();
        ListScatterer.SetEnergy_eV(energy);
        ApplyThermalModel(fluctuation, ListScatterer, debye);

        atomLabels.assign(2, atomName);
        phaseShiftIndex.SetVectorSize(2);
        phaseShiftIndex.VectorAt(0) = static_cast<std::int8_t>(phaseShift);
        phaseShiftIndex.VectorAt(1) = static_cast<std::int8_t>(phaseShift);
        NextListScatterer = ListScatterer;
    } catch (const ZfError& error) {
        throw ZfError("ZfScatteringData::SetListScattererDimerOnZ()" + error.message);
    }
}
