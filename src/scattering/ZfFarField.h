#pragma once

#include <array>
#include <complex>
#include <vector>

#include "scattering/FarFieldKernel.h"
#include "scattering/ZfVectorFreeElectron.h"

/// The direct and the scattered far field of a list, as ZfVectorFreeElectron::DirectAmplitude and
/// ScatteredAmplitude define them, in many directions at once. The kernels run over packs of sources; the sum
/// of a direction has one order, whatever the task or the instruction set.
class ZfFarField {
public:
    explicit ZfFarField(const ZfVectorFreeElectron& list);

    /// Whether the tables and distances of a list are within what the kernels take.
    static bool Serves(const ZfVectorFreeElectron& list);

    using Amplitudes = std::array<std::complex<double>, ZfFarFieldDirections::kTaskDirections>;

    /// Amplitudes in the directions of a task, in their order. `scratch` is the caller's, one a thread, sized
    /// here.
    void Calculate(const ZfFarFieldDirections& all, const ZfFarFieldDirections::Task& task,
                   std::vector<double>& scratch, Amplitudes& direct, Amplitudes& scattered) const;

private:
    FarFieldSources direct_;
    FarFieldSources scattered_;
};
