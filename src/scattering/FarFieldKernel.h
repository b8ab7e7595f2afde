#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "scattering/SourceKernel.h"
#include "scattering/ZfVectorFreeElectron.h"

/// The direct and the scattered far field of a list, as ZfVectorFreeElectron::DirectAmplitude and
/// ScatteredAmplitude define them, in many directions at once.
///
/// The harmonics of a direction are the same for every source, so the angular sums of all sources are one
/// product of a matrix of coefficients with a matrix of harmonics; the phase and the thermal damping of each
/// source follow as vector functions. A block of directions is one task, and its sums keep the order of the
/// sources.
class ZfFarField {
public:
    explicit ZfFarField(const ZfVectorFreeElectron& list);

    /// Whether the tables and distances of a list are within what the kernels take.
    static bool Serves(const ZfVectorFreeElectron& list);

    static constexpr std::size_t kBlock = 64;       ///< most directions of one call
    static constexpr std::size_t kTileSources = 4;  ///< sources that share the loads of a harmonic

    /// Amplitudes in up to kBlock directions; all arrays are padded as the kernels need it.
    struct Amplitudes {
        double* directRe;
        double* directIm;
        double* scatteredRe;
        double* scatteredIm;
    };
    /// `scratch` is the caller's, one a thread, sized here.
    void Calculate(const KernelDirections& directions, std::vector<double>& scratch,
                   const Amplitudes& result) const;

    /// Phase and damping of one source: kd = kx x + ky y + kz z, factor exp(-i kd) exp(damping + slope kd).
    struct Geometry {
        double kx = 0.0;
        double ky = 0.0;
        double kz = 0.0;
        double damping = 0.0;
        double slope = 0.0;
    };
    /// Coefficients in tiles: [tile][harmonic][source of the tile][re, im], filled up with zeros.
    struct Sources {
        std::vector<double> coefficients;
        std::vector<Geometry> geometry;
    };

private:
    void Append(Sources& sources, const ZfFreeElectron& electron, const ZfFreeElectron& emitter,
                double factor) const;

    std::int32_t L_ = 0;
    Sources direct_;
    Sources scattered_;
};
