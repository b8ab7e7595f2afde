#pragma once

#include <array>
#include <complex>
#include <span>
#include <vector>

#include "scattering/FarFieldKernel.h"
#include "scattering/ZfVectorFreeElectron.h"

namespace qvre {

/// Inelastic losses on the straight way from each source to the surface plane, whose normal is z. In the
/// direction of polar angle theta the amplitude of a source at height z is multiplied by
///     exp(-(surface - z)/(2 meanFreePath cos theta)).
struct SurfaceEscape {
    double meanFreePath = 0.0;  ///< m, of the intensity; 0: no losses
    double surface = 0.0;       ///< m above the emitter; sources above it lose nothing
};

/// The direct and the scattered far fields of the waves of one structure, as
/// ZfVectorFreeElectron::DirectAmplitude and ScatteredAmplitude define them, in many directions at once.
/// Phases and damping belong to the atoms and are calculated once for all waves. The sum of a direction has
/// one order, whatever the task, the instruction set or the other waves.
class FarField {
public:
    static constexpr std::size_t kMostWaves = kFarFieldPack;

    /// Up to kMostWaves lists that Serves, any two of which CanShare.
    explicit FarField(std::span<const ZfVectorFreeElectron> waves, const SurfaceEscape& escape = {});

    /// Whether the tables and distances of a list are within what the kernels take.
    static bool Serves(const ZfVectorFreeElectron& list);

    /// Whether the sources of two lists, the first of them not empty, stand at the same places with the same
    /// displacements, and have one wave number.
    static bool CanShare(const ZfVectorFreeElectron& a, const ZfVectorFreeElectron& b);

    /// Of one wave in the directions of a task, in their order.
    struct Amplitudes {
        using Values = std::array<std::complex<double>, FarFieldDirections::kTaskDirections>;
        Values direct;
        Values scattered;
    };

    /// The amplitudes of each wave. `scratch` and `result` are the caller's, one of each a thread, sized
    /// here.
    void Calculate(const FarFieldDirections& all, const FarFieldDirections::Task& task,
                   std::vector<double>& scratch, std::vector<Amplitudes>& result) const;

private:
    std::size_t waves_;
    FarFieldSources direct_;
    FarFieldSources scattered_;
};

}  // namespace qvre
