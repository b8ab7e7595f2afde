#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "scattering/ZfFarFieldDirections.h"

// Vector kernel of the far field: it runs over packs of sources, exists for every instruction set of the
// machine's family, and the best one is taken at run time. The sum of a direction has one order, whatever the
// instruction set.

constexpr std::size_t kFarFieldPack = 8;  ///< sources side by side

/// Sources of one table size, in packs filled up with zeros.
struct FarFieldSources {
    std::int32_t L = 0;
    /// By pack and (m, l), m outermost: kFarFieldPack values each of Re C, Im C, Re D, Im D.
    std::vector<double> coefficients;
    /// By pack: kFarFieldPack values each of kx, ky, kz, damping, slope: with kd = kx x + ky y + kz z, the
    /// wave of a source is multiplied by exp(-i kd) exp(damping + slope kd).
    std::vector<double> geometry;
    std::size_t packs = 0;
    bool damped = false;
};

/// A task and the tables of its directions alone.
struct FarFieldTables {
    const ZfFarFieldDirections& all;
    const ZfFarFieldDirections::Task& task;
    const double* theta;   ///< p_lm of each segment, in the order of the coefficients
    const double* powers;  ///< real and imaginary part of (|x| + i |y|)^m, of each group
};

/// Adds the waves of all sources in the directions of a task: for each direction, kFarFieldPack real parts
/// and as many imaginary parts in `sums`, one a place in the packs. `orders` is scratch for
/// FarFieldOrdersSize(L) numbers.
void AddFarField(const FarFieldSources& sources, const FarFieldTables& tables, double* orders, double* sums);
std::size_t FarFieldOrdersSize(std::int32_t L);
