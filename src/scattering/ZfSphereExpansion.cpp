#include "scattering/ZfSphereExpansion.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

#include "scattering/LevelRefinement.h"
#include "scattering/SourceKernel.h"
#include "scattering/SphericalHarmonics.h"

using namespace qvre;

namespace {

constexpr double kParameterArea = 19.739208802178716;  // 2 pi^2: (0, pi) by (0, 2 pi)
/// However low the last level, one comparison is made.
constexpr std::int32_t kFewestLevels = 5;

/// Waves of use need this level at least, so all levels up to it are sampled in one parallel region.
constexpr std::int32_t kLevelsAtOnce = 11;

/// Points of a task: enough to pay for its start, few enough to stay in the nearest cache.
constexpr std::size_t kTaskPoints = 128;

}  // namespace

/// Sums over phi of the samples of some rows. The result of a row depends on nothing but the row.
void ZfSphereExpansion::SampleRows(const Task& task, std::vector<double>& scratch) {
    const ExpansionLevel& lattice = tables_->Level(task.level);
    RowSums& sums = sampled_[static_cast<std::size_t>(task.level)];
    const auto groups = static_cast<std::size_t>(grid.Groups());
    const std::size_t first = lattice.rows[task.firstRow].firstPoint;
    const std::size_t count = (task.endRow - task.firstRow) * lattice.rowLength;
    const std::size_t padded = count + kKernelPadding;
    if (scratch.size() < 2 * padded + 4 * lattice.stride) scratch.resize(2 * padded + 4 * lattice.stride);
    double* const re = scratch.data();
    double* const im = re + padded;
    double* const azimuth = im + padded;
    const AzimuthalSums a = {azimuth, azimuth + lattice.stride, azimuth + 2 * lattice.stride,
                             azimuth + 3 * lattice.stride};
    const KernelDirections directions = {lattice.x.data() + first, lattice.y.data() + first,
                                         lattice.z.data() + first, count};
    const auto middle = static_cast<std::size_t>(lSize) - 1;

    for (std::size_t g = 0; g < groups; ++g) {
        wave->Sample(directions, grid.groupRadius[g], re, im);
        for (std::size_t row = task.firstRow; row < task.endRow; ++row) {
            const ExpansionLevel::PhiSet& set = lattice.phiSets[lattice.rows[row].phiSet];
            const std::size_t offset = (row - task.firstRow) * lattice.rowLength;
            SumAzimuth(re + offset, im + offset, lattice.rowLength, set.cosines.data(), set.sines.data(),
                       lattice.stride, a);
            // exp(-i m phi) = cos(m phi) - i sin(m phi)
            double* const fRe = sums.re.data() + (row * groups + g) * Orders() + middle;
            double* const fIm = sums.im.data() + (row * groups + g) * Orders() + middle;
            for (std::ptrdiff_t m = 0; m < lSize; ++m) {
                fRe[m] = a.cosRe[m] + a.sinIm[m];
                fIm[m] = a.cosIm[m] - a.sinRe[m];
                fRe[-m] = a.cosRe[m] - a.sinIm[m];
                fIm[-m] = a.cosIm[m] + a.sinRe[m];
            }
        }
    }
}

void ZfSphereExpansion::SampleLevels(std::int32_t first, std::int32_t last) {
    std::vector<Task> tasks;
    for (std::int32_t n = first; n <= last; ++n) {
        const auto index = static_cast<std::size_t>(n);
        const ExpansionLevel& lattice = tables_->Level(n);
        if (sampled_.size() <= index) sampled_.emplace_back();
        const std::size_t size = lattice.rows.size() * static_cast<std::size_t>(grid.Groups()) * Orders();
        sampled_[index].re.resize(size);
        sampled_[index].im.resize(size);
        const std::size_t rows = std::max<std::size_t>(kTaskPoints / lattice.rowLength, 1);
        for (std::size_t row = 0; row < lattice.rows.size(); row += rows)
            tasks.push_back({n, row, std::min(row + rows, lattice.rows.size())});
    }

    // Each task owns its rows, and sums over phi in the order of the points: the same bits for any number of
    // threads. Tasks are handed out as threads come free, so that one which is held up holds up no other.
    std::exception_ptr failure;
    const auto count = static_cast<std::int64_t>(tasks.size());
#pragma omp parallel if (count > 1)
    {
        std::vector<double> scratch;
#pragma omp for schedule(dynamic)
        for (std::int64_t i = 0; i < count; ++i) {
            try {
                SampleRows(tasks[static_cast<std::size_t>(i)], scratch);
            } catch (...) {
#pragma omp critical
                failure = std::current_exception();
            }
        }
    }
    if (failure) std::rethrow_exception(failure);
}

void ZfSphereExpansion::AddRows(const ExpansionLevel& lattice, const RowSums& sums) {
    const auto groups = static_cast<std::size_t>(grid.Groups());
    const auto middle = static_cast<std::ptrdiff_t>(lSize) - 1;
    for (std::size_t row = 0; row < lattice.rows.size(); ++row) {
        const double* const theta = lattice.rows[row].theta.data();
        for (std::int32_t l = 0; l < lSize; ++l) {
            const auto g = static_cast<std::size_t>(l / grid.groupSize);
            const auto start = static_cast<std::ptrdiff_t>((row * groups + g) * Orders()) + middle - l;
            const double* const fRe = sums.re.data() + start;
            const double* const fIm = sums.im.data() + start;
            const std::ptrdiff_t first = std::ptrdiff_t{l} * l;
            auto* const out = reinterpret_cast<double*>(sum.block.data() + first);
            for (std::ptrdiff_t i = 0; i <= 2 * std::ptrdiff_t{l}; ++i) {
                out[2 * i] += theta[first + i] * fRe[i];
                out[2 * i + 1] += theta[first + i] * fIm[i];
            }
        }
    }
}

void ZfSphereExpansion::LevelIntegral(ZfLmComplexTable& result) {
    RequireTables();
    if (level == 0) SampleLevels(0, std::clamp(maxLevel - 1, kFewestLevels, kLevelsAtOnce));
    if (level > kLevelsAtOnce) SampleLevels(level, level);
    const auto index = static_cast<std::size_t>(level);
    const ExpansionLevel& lattice = tables_->Level(level);
    AddRows(lattice, sampled_[index]);
    points += static_cast<std::int32_t>(lattice.points);
    result.SetSize(lSize);
    for (std::size_t i = 0; i < sum.block.size(); ++i)
        result.block[i] = sum.block[i] / static_cast<double>(points) * kParameterArea;
}

void ZfSphereExpansion::Begin(const ZfWaveFunction& source) {
    wave = &source;
    sum.SetSize(lSize);  // refuses a size that no table can have, before anything is built for it
    sum.Zero();
    if (grid.lSize != lSize) {
        grid.lSize = lSize;
        grid.rebuild = true;
    }
    grid.BuildGrid();
    level = 0;
    points = 0;
    lastError = -1.0;
    grid.SetWaveNumber(source.WaveNumber());
}

void ZfSphereExpansion::Use(std::shared_ptr<const ExpansionTables> tables) {
    tables_ = std::move(tables);
    lSize = tables_->lSize;
    grid = tables_->grid;
}

void ZfSphereExpansion::RequireTables() {
    if (!tables_ || tables_->lSize != lSize) tables_ = std::make_shared<const ExpansionTables>(lSize);
    if (legendreNorm.L < lSize) LegendreNormTable(legendreNorm, lSize);
}

void ZfSphereExpansion::End() {
    wave = nullptr;
}

void ZfSphereExpansion::Expand(ZfLmComplexTable& result, const ZfWaveFunction& source, double radius) {
    if (radius == 0.0) throw "r value is illigal";
    struct Release {
        ~Release() { expansion.End(); }
        ZfSphereExpansion& expansion;
    } const release{*this};
    Begin(source);
    LevelRefinement refinement(grid, tolerance, maxLevel);
    ZfLmComplexTable raw;
    do {
        level = refinement.level + 1;
        LevelIntegral(raw);
    } while (!refinement.Add(raw));
    lastError = refinement.decision.lastError;
    result = std::move(refinement.result);
}
