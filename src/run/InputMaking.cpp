#include "run/InputMaking.h"

#include "foundation/ProgramFile.h"
#include "prepare/emission/EmitterField.h"
#include "prepare/thermal/AtomicWeights.h"
#include "prepare/thermal/Elements.h"

namespace qvre {

double KineticEnergyOf(const PhotoelectronEnergy& energy, const ScreenedAtom& atom, const CoreLevel& level) {
    if (energy.photon_eV == 0.0) return energy.kinetic_eV;
    const double binding =
        energy.binding_eV
            ? *energy.binding_eV
            : MeasuredBinding(BindingEnergies(ProgramFile("binding_energies.csv")), atom, level);
    const double rounded_eV = KineticEnergyInside(energy.photon_eV, binding, energy.fermi_eV);
    return energy.isRounded ? rounded_eV : energy.photon_eV - binding + energy.fermi_eV;
}

DipoleSource MakeDipoleSource(const WavesRequest& request, const PhaseShiftRequest& crystal,
                              const Cluster& cluster) {
    EmissionRequest emission = request.emission;
    const ClusterAtom emitter = EmitterOf(cluster);
    const ScreeningTable atoms(ProgramFile("screening_dhfs.csv"));
    emission.atom = atoms.Find(emitter.atom);
    emission.kinetic_eV = KineticEnergyOf(request.energy, emission.atom, emission.level);
    PhaseShiftRequest field = crystal;
    field.species = SurroundingsInCluster(cluster);
    SetCrystalField(emission, field, emitter.name, atoms);
    return CoreLevelEmission(emission).source;
}

PhaseShiftResult MakePhaseShifts(PhaseShiftRequest request, const Cluster& cluster,
                                 const std::vector<double>& energies_eV) {
    request.energies_eV = energies_eV;
    request.species = SurroundingsInCluster(cluster);
    return CalculatePhaseShifts(request, ScreeningTable(ProgramFile("screening_dhfs.csv")));
}

SolidDensity DensityFor(const LossesRequest& request, const Cluster& cluster) {
    if (request.path.length_angstrom) return {};
    const ZfDebye weights = LoadAtomicWeights(ProgramFile("AtomicWeight.txt"));
    const ValenceElectrons valence(ProgramFile("valence_electrons.csv"));
    return request.crystal ? DensityOfCrystal(*request.crystal, weights, valence)
                           : DensityOfCluster(cluster, weights, valence);
}

Fluctuation MakeFluctuationOf(const VibrationRequest& request, const Cluster& cluster) {
    VibrationRequest complete = request;
    complete.elements = ElementsOf(cluster);
    return MakeFluctuation(complete, DebyeTable(ProgramFile("debye_temperatures.csv")),
                           LoadAtomicWeights(ProgramFile("AtomicWeight.txt")));
}

}  // namespace qvre
