#pragma once

#include <array>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "scattering/HarmonicBasis.h"
#include "scattering/ZfVectorFreeElectron.h"

/// Directions for a far field, ordered into rings of equal z: on a ring the theta factors of the harmonics
/// are the same, and only the sum over m is left to each direction.
class ZfFarFieldDirections {
public:
    /// Unit vectors; `index` is the caller's number of each. Directions whose z agree to rounding share a
    /// ring.
    void Add(std::size_t index, double x, double y, double z);
    void OrderIntoRings();

    /// Directions of one ring, at most as many as a task takes.
    struct Segment {
        double z;
        std::size_t first;
        std::size_t count;
    };
    /// Segments that one call calculates.
    struct Task {
        std::size_t firstSegment;
        std::size_t endSegment;
    };
    static constexpr std::size_t kTaskDirections = 128;  ///< most directions of a task

    struct Direction {
        double x, y, z;
        std::size_t index;
    };
    std::vector<Direction> directions;
    std::vector<Segment> segments;
    std::vector<Task> tasks;
};

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

    static constexpr std::size_t kPack = 8;  ///< sources side by side

    /// Sources of one table size, in packs filled up with zeros.
    struct Sources {
        std::int32_t L = 0;
        /// By pack and (m, l), m outermost: kPack values each of Re C, Im C, Re D, Im D.
        std::vector<double> coefficients;
        /// By pack: kPack values each of kx, ky, kz, damping, slope: with kd = kx x + ky y + kz z, the wave
        /// of a source is multiplied by exp(-i kd) exp(damping + slope kd).
        std::vector<double> geometry;
        std::size_t packs = 0;
        bool damped = false;
    };

    /// Tables of a task, of its directions and rings alone.
    struct Tables {
        const ZfFarFieldDirections::Direction* directions;
        const ZfFarFieldDirections::Segment* segments;
        std::size_t segmentCount;
        const double* theta;   ///< p_lm of each segment, in the order of the coefficients
        const double* powers;  ///< real and imaginary part of (x + i y)^m, of each direction
    };

private:
    Sources direct_;
    Sources scattered_;
};
