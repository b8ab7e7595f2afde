#include <array>
#include <optional>
#include <vector>

#include "foundation/ProgramFile.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "prepare/emission/EmitterField.h"
#include "prepare/emission/PhotonEnergy.h"
#include "recipe/RecipeInputs.h"

// The emission of a recipe: what `qvre emit` makes of a cluster.

namespace {

/// Kinetic energy, or the photon from which it follows.
struct EnergySettings {
    double kinetic_eV = 0.0;
    double photon_eV = 0.0;
    std::optional<double> binding_eV;
    double fermi_eV = 10.0;
};

/// The energy of a laboratory source, "Al", or a number.
double PhotonEnergy(RecipeTable& section) {
    if (!section.HasText("photon")) return section.Number("photon", RecipeUnit::kElectronVolt, 0.0);
    const std::string text = section.Text("photon", "");
    if (text == "Al" || text == "Mg" || text == "Ag") return ParsePhotonEnergy(text);
    return section.Made("photon", [&] { return ParseQuantity(text, RecipeUnit::kElectronVolt); });
}

EnergySettings ReadEnergy(RecipeTable& section) {
    EnergySettings energy;
    const auto kinetic = section.Number("kinetic", RecipeUnit::kElectronVolt);
    if (kinetic.has_value() == section.Has("photon"))
        section.Fail("kinetic", "give either kinetic or photon, an energy");
    energy.kinetic_eV = kinetic.value_or(0.0);
    energy.photon_eV = PhotonEnergy(section);
    if (!(energy.kinetic_eV + energy.photon_eV > 0.0))
        section.Fail(kinetic ? "kinetic" : "photon", "has to be above 0");
    energy.binding_eV = section.Number("binding", RecipeUnit::kElectronVolt);
    energy.fermi_eV = section.Number("fermi", RecipeUnit::kElectronVolt, energy.fermi_eV);
    return energy;
}

double KineticEnergy(const EnergySettings& energy, const EmissionRequest& request) {
    if (energy.photon_eV == 0.0) return energy.kinetic_eV;
    const double binding = energy.binding_eV
                               ? *energy.binding_eV
                               : MeasuredBinding(BindingEnergies(ProgramFile("binding_energies.csv")),
                                                 request.atom, request.level);
    return KineticEnergyInside(energy.photon_eV, binding, energy.fermi_eV);
}

std::vector<LightVector> ReadLight(RecipeTable& section) {
    const auto linear = section.Vector("polarisation");
    const auto unpolarised = section.Vector("unpolarised-along");
    const auto along = section.Vector("along");
    const bool isCircular = section.Has("circular");
    if (linear.has_value() + unpolarised.has_value() + isCircular > 1)
        section.Fail("polarisation", "give one of polarisation, unpolarised-along and circular");
    if (isCircular != along.has_value()) section.Fail("circular", "circular and along belong together");
    if (unpolarised) return section.Made("unpolarised-along", [&] { return UnpolarisedLight(*unpolarised); });
    if (isCircular) {
        const bool isLeft = section.OneOf("circular", {"left", "right"}) == "left";
        return section.Made("along", [&] { return CircularLight(*along, isLeft); });
    }
    const std::array<double, 3> normal = {0.0, 0.0, 1.0};
    return section.Made("polarisation", [&] { return LinearLight(linear.value_or(normal)); });
}

FileMaker ReadIsotropic(RecipeTable& section) {
    const double kinetic = section.Number("kinetic", RecipeUnit::kElectronVolt, 0.0);
    const double weight = section.Number("weight", RecipeUnit::kNone, 1.0);
    if (!(kinetic > 0.0)) section.Fail("kinetic", "an isotropic source needs a kinetic energy above 0");
    section.RefuseUnread();
    return [=](const std::string& output) {
        SaveEmittedWaves(IsotropicEmission(kinetic, weight), output);
        return std::string();
    };
}

/// The field of the emitter's species, with the settings that its phase shifts have.
std::string SetField(EmissionRequest& request, PhaseShiftRequest crystal, const EnergySettings& energy,
                     const std::string& clusterFile) {
    ZfCluster cluster;
    ZfLoadCluster(cluster, clusterFile);
    const ZfAtom emitter = EmitterOf(cluster);
    const ScreeningTable atoms(ProgramFile("screening_dhfs.csv"));
    request.atom = atoms.Find(emitter.atom);
    request.kinetic_eV = KineticEnergy(energy, request);
    crystal.species = SurroundingsInCluster(cluster);
    SetCrystalField(request, crystal, emitter.name, atoms);
    return emitter.atom;
}

}  // namespace

FileMaker ReadEmissionSection(RecipeTable section, const RecipeFolder& place,
                              const PhaseShiftRequest& crystal, const std::string& clusterFile) {
    if (section.Has("file")) return CopyOfFile(section, place);
    if (section.Flag("isotropic", false)) return ReadIsotropic(section);
    EmissionRequest request;
    const std::string level = section.Text("level", "");
    if (level.empty()) section.Fail("level", "give the core level, such as \"2p\"");
    request.level = section.Made("level", [&] { return ParseCoreLevel(level); });
    const EnergySettings energy = ReadEnergy(section);
    request.light = ReadLight(section);
    request.weight = section.Number("weight", RecipeUnit::kNone, 1.0);
    section.RefuseUnread();
    return [=](const std::string& output) {
        EmissionRequest complete = request;
        const std::string element = SetField(complete, crystal, energy, clusterFile);
        const Emission emission = CoreLevelEmission(complete);
        SaveEmittedWaves(emission.waves, output);
        return element + " " + complete.level.Name() + " at " + DoubleToText(complete.kinetic_eV) +
               " eV, asymmetry beta = " + DoubleToText(emission.channels.Beta()) + "\n";
    };
}
