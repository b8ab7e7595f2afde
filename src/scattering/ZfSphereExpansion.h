#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "input/LmTable.h"
#include "scattering/ExpansionTables.h"
#include "scattering/ZfWaveFunction.h"

/// Expands a wave that is regular around the origin,
///     psi(r) = sum_lm c(l,m) j_l(kr) Y_lm,
/// by projection on the spherical harmonics: quadrature over a sphere for each group of l values, on a nested
/// grid that doubles its points a level, with a Richardson step from level to level, until two results agree.
/// The table of c(l,m) is good as long as every source stands outside the spheres.
///
/// An object keeps the tables of its l size: one that serves many targets builds them once. It serves one
/// thread.
class ZfSphereExpansion {
public:
    /// The level loop. The radius must not be 0, else the bare text "r value is illigal"; it has no other
    /// effect. Throws ZfError if the wave is not finite.
    void Expand(ZfLmComplexTable& result, const ZfWaveFunction& source, double radius);

    /// One level after the other by hand, on tables that are shared; the caller counts `level` up from 0.
    void Use(std::shared_ptr<const qvre::ExpansionTables> tables);
    void Begin(const ZfWaveFunction& source);
    void End();  ///< forgets the wave

    /// Adds the points of the current level and gives the integral over all points so far, not divided by
    /// j_l.
    void LevelIntegral(ZfLmComplexTable& result);

    ZfLmDoubleTable legendreNorm;  ///< of the harmonics of `lSize`, built on first use
    std::int32_t level = 0;
    std::int32_t points = 0;  ///< added up so far
    ZfLmComplexTable sum;     ///< over all of them
    double tolerance = 0.001;
    double lastError = -1.0;  ///< last relative change; negative before the first
    std::int32_t maxLevel = 40;
    std::int32_t lSize = 1;
    const ZfWaveFunction* wave = nullptr;  ///< while it is being expanded
    ZfExpansionGrid grid;

private:
    /// Samples of one level, summed over phi: F(m) for m = -(l size - 1) .. l size - 1, by row and group.
    struct RowSums {
        std::vector<double> re;
        std::vector<double> im;
    };
    /// Some rows of one level: what a thread does at once.
    struct Task {
        std::int32_t level;
        std::size_t firstRow;
        std::size_t endRow;
    };

    void RequireTables();
    void SampleLevels(std::int32_t first, std::int32_t last);
    void SampleRows(const Task& task, std::vector<double>& scratch);
    void AddRows(const qvre::ExpansionLevel& lattice, const RowSums& sums);
    std::size_t Orders() const { return 2 * static_cast<std::size_t>(lSize) - 1; }

    std::shared_ptr<const qvre::ExpansionTables> tables_;
    std::vector<RowSums> sampled_;  ///< by level, of the wave at hand
};
