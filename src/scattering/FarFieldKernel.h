#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "scattering/FarFieldDirections.h"

// Vector kernel of the far field: it runs over packs of sources, exists for every instruction set of the
// machine's family, and the best one is taken at run time. The sum of a direction has one order, whatever the
// instruction set.

namespace qvre {

constexpr std::size_t kFarFieldPack = 8;      ///< sources side by side
constexpr std::size_t kFarFieldValues = 4;    ///< of a coefficient: Re C, Im C, Re D, Im D
constexpr std::size_t kFarFieldGeometry = 6;  ///< of a source: kx, ky, kz, damping, slope, escape

constexpr double kFarFieldGrazing = 1e-6;

/// Sources of one table size, in packs filled up with zeros. Several waves may leave the same sources.
struct FarFieldSources {
    std::int32_t L = 0;
    std::size_t waves = 0;
    std::size_t packs = 0;
    /// By wave, pack and (m, l), m outermost: kFarFieldPack of each value.
    std::vector<double> coefficients;
    /// By pack: kFarFieldPack of each value. With kd = kx x + ky y + kz z, the waves of a source are
    /// multiplied by exp(-i kd) exp(damping + slope kd + escape / z), z being that of the direction but not
    /// below kFarFieldGrazing.
    std::vector<double> geometry;
    bool damped = false;
    bool escaping = false;   ///< whether any source has an escape
    bool displaced = false;  ///< whether any source stands off the origin
};

/// A task and the tables of its directions alone.
struct FarFieldTables {
    const FarFieldDirections& all;
    const FarFieldDirections::Task& task;
    const double* theta;   ///< p_lm of each segment, in the order of the coefficients
    const double* powers;  ///< real and imaginary part of (|x| + i |y|)^m, of each group
};

/// Adds the waves of all sources in the directions of a task. By wave and direction, `sums` holds
/// kFarFieldPack real parts and as many imaginary parts, one a place in the packs. `scratch` is for
/// FarFieldScratchSize numbers.
void AddFarField(const FarFieldSources& sources, const FarFieldTables& tables, double* scratch, double* sums);
std::size_t FarFieldScratchSize(std::int32_t L, std::size_t directions);

}  // namespace qvre
