#include "multiple/FullScattering.h"

#include <fmt/format.h>
#include <omp.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <utility>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"
#include "multiple/Gmres.h"
#include "multiple/PhaseShiftGuard.h"
#include "multiple/ScatteringOperator.h"
#include "scattering/SourceKernel.h"

namespace qvre {

namespace {

using Complex = std::complex<double>;
using Clock = std::chrono::steady_clock;

constexpr double kSmallestDistance_m = 0.5e-10;
/// Steps of GMRES before it starts anew with the true residual, which bounds its memory.
constexpr std::size_t kRestart = 40;

/// Besides the applications: two half sweeps and the true residual.
constexpr double kFurtherProducts = 2.0;

/// The residual of the preconditioned equations, on which GMRES stops, can be below the true one.
constexpr double kResidualReserve = 2.0;

bool IsFinite(Complex z) {
    return std::isfinite(z.real()) && std::isfinite(z.imag());
}

bool AllFinite(const std::vector<Complex>& values) {
    return std::all_of(values.begin(), values.end(), IsFinite);
}

double Distance(const Vec3& a, const Vec3& b) {
    const Vec3 d = {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
    return std::sqrt(Dot(d, d));
}

void CheckNumbers(const FullScatteringRequest& request) {
    if (request.positions.empty()) throw ZfError("Full scattering: there are no atoms");
    if (request.species.size() != request.positions.size())
        throw ZfError("Full scattering: not every atom has a species");
    if (!(request.k > 0.0) || !std::isfinite(request.k))
        throw ZfError("Full scattering: the wave number is not a positive number");
    if (!(request.meanFreePath >= 0.0)) throw ZfError("Full scattering: the mean free path is negative");
    if (!(request.tolerance >= 1e-14 && request.tolerance < 1.0))
        throw ZfError("Full scattering: the tolerance is not between 1e-14 and 1");
    if (request.largestApplications < 1)
        throw ZfError("Full scattering: the limit of applications is not positive");
    for (const std::size_t species : request.species)
        if (species >= request.listOfSpecies.size())
            throw ZfError("Full scattering: an atom of a species that is not listed");
    for (const ScatteringSpecies& species : request.listOfSpecies) {
        if (!AllFinite(species.t))
            throw ZfError("Full scattering: the phase shifts of " + species.name + " are not finite");
        if (species.t.size() > static_cast<std::size_t>(kLargestTranslatedL))
            throw ZfError(fmt::format("Full scattering: {} has more than {} phase shifts", species.name,
                                      kLargestTranslatedL));
    }
    for (const EmissionFromAtom& wave : request.waves) {
        if (wave.emitter >= request.positions.size())
            throw ZfError("Full scattering: a wave from an atom that is not there");
        if (!AllFinite(wave.table.block)) throw ZfError("Full scattering: the emitted wave is not finite");
        if (wave.table.L > kLargestTranslatedL)
            throw ZfError(
                fmt::format("Full scattering: the emitted wave has an l size above {}", kLargestTranslatedL));
    }
}

/// Nearest distances in metres between the species, and of each one to any other atom.
struct NearestAtoms {
    explicit NearestAtoms(const FullScatteringRequest& request)
        : count(request.listOfSpecies.size()),
          pair(count * count, std::numeric_limits<double>::infinity()),
          any(count, std::numeric_limits<double>::infinity()) {
        const auto& r = request.positions;
        for (std::size_t i = 0; i < r.size(); ++i) {
            for (std::size_t j = 0; j < i; ++j) {
                const double d = Distance(r[i], r[j]);
                if (!(d > kSmallestDistance_m))
                    throw ZfError(fmt::format("Full scattering: atoms {} and {} are {:.3g} angstrom apart",
                                              j + 1, i + 1, d / kAngstrom_m));
                if (!(d * request.k < kLargestKernelPhase))
                    throw ZfError("Full scattering: atoms are too far apart");
                const std::size_t a = request.species[i];
                const std::size_t b = request.species[j];
                pair[a * count + b] = std::min(pair[a * count + b], d);
                pair[b * count + a] = pair[a * count + b];
                any[a] = std::min(any[a], d);
                any[b] = std::min(any[b], d);
            }
        }
    }

    std::size_t count;
    std::vector<double> pair;
    std::vector<double> any;
};

/// The t_l that are used: without zeros at the end, and cut where they would spoil the solution.
std::vector<std::vector<Complex>> SoundFactors(const FullScatteringRequest& request,
                                               std::vector<PhaseShiftCut>& cuts) {
    const NearestAtoms nearest(request);
    std::vector<std::vector<Complex>> all;
    for (std::size_t s = 0; s < request.listOfSpecies.size(); ++s) {
        std::vector<Complex> t = request.listOfSpecies[s].t;
        while (!t.empty() && t.back() == 0.0) t.pop_back();
        if (std::isfinite(nearest.any[s])) {
            const std::size_t sound = SoundLSize(t, request.k * nearest.any[s]);
            if (sound < t.size()) {
                cuts.push_back({request.listOfSpecies[s].name, request.listOfSpecies[s].t.size(), sound});
                t.resize(sound);
            }
        }
        all.push_back(std::move(t));
    }
    for (std::size_t a = 0; a < nearest.count; ++a) {
        for (std::size_t b = 0; b <= a; ++b) {
            const double d = nearest.pair[a * nearest.count + b];
            if (!std::isfinite(d)) continue;
            const PairGrowth growth = LargestGrowth(all[a], all[b], request.k * d);
            if (growth.g > kLargestGrowth)
                throw ZfError(fmt::format(
                    "Full scattering: the phase shifts of {} at l = {} and {} at l = {} cannot be right for "
                    "atoms {:.3g} angstrom apart",
                    request.listOfSpecies[a].name, growth.l1, request.listOfSpecies[b].name, growth.l2,
                    d / kAngstrom_m));
        }
    }
    return all;
}

/// Shells are counted from the emitter; from the middle of the atoms if there are several.
Vec3 Centre(const FullScatteringRequest& request, const std::vector<Vec3>& positions) {
    const auto& waves = request.waves;
    const bool one = !waves.empty() && std::all_of(waves.begin(), waves.end(), [&](const auto& wave) {
        return wave.emitter == waves.front().emitter;
    });
    if (one) return positions[waves.front().emitter];
    Vec3 middle = {};
    for (const Vec3& position : positions)
        for (std::size_t i = 0; i < 3; ++i) middle[i] += position[i] / static_cast<double>(positions.size());
    return middle;
}

ScatteringOperator MakeOperator(const FullScatteringRequest& request, std::vector<PhaseShiftCut>& cuts) {
    CheckNumbers(request);
    Scatterers scatterers;
    for (const Vec3& r : request.positions)
        scatterers.positions.push_back({request.k * r[0], request.k * r[1], request.k * r[2]});
    scatterers.species = request.species;
    scatterers.t = SoundFactors(request, cuts);
    if (request.meanFreePath > 0.0) scatterers.damping = 0.5 / (request.k * request.meanFreePath);
    const Vec3 centre = Centre(request, scatterers.positions);
    return {std::move(scatterers), centre, request.waves.size()};
}

std::vector<ZfLmComplexTable> Tables(const ScatteringOperator& scattering, const ClusterWave& wave,
                                     std::size_t atoms) {
    std::vector<ZfLmComplexTable> tables;
    for (std::size_t i = 0; i < atoms; ++i) {
        ZfLmComplexTable& table = tables.emplace_back(static_cast<std::int32_t>(scattering.LSize(i)));
        const auto first = wave.begin() + static_cast<std::ptrdiff_t>(scattering.Offset(i));
        std::copy_n(first, table.block.size(), table.block.begin());
    }
    return tables;
}

/// b = tG E of a wave.
ClusterWave Emitted(ScatteringOperator& scattering, const EmissionFromAtom& wave) {
    ZfLmComplexTable sent = wave.table;
    sent.Fill();
    ClusterWave b = scattering.Emit(wave.emitter, sent.block, static_cast<std::size_t>(sent.L));
    if (!std::isfinite(Norm(b)))
        throw ZfError("Full scattering: the emitted wave has too large an l for the atoms around");
    return b;
}

/// One wave on its way to the solution.
struct System {
    std::size_t index;
    ClusterWave rightSide;
    double size;
    ClusterWave solution;
    ClusterWave rest;  ///< b - (1 - tG) A
    double residual = 1.0;

    bool Solved(double tolerance) const { return residual <= kResidualReserve * tolerance; }
};

class Solver {
public:
    Solver(const FullScatteringRequest& request, ScatteringOperator& scattering,
           const std::function<void(const FullScatteringProgress&)>& progress)
        : request_(request), scattering_(scattering), progress_(progress) {}

    /// False when it was interrupted.
    bool Solve(std::vector<System>& systems) {
        std::vector<System*> open;
        open.reserve(systems.size());
        for (System& system : systems) open.push_back(&system);
        while (!open.empty()) {
            if (applications_ >= request_.largestApplications) ThrowLimit(open);
            if (!Cycle(open)) return false;
            std::erase_if(open, [&](const System* s) { return s->Solved(request_.tolerance); });
        }
        return true;
    }

    std::int32_t Applications() const { return applications_; }

private:
    /// From the residuals on: (1 - L)^-1 (1 - tG) (1 - U)^-1 v = (1 - L)^-1 rest, and A += (1 - U)^-1 v.
    bool Cycle(const std::vector<System*>& open) {
        std::vector<ClusterWave> rest;
        rest.reserve(open.size());
        for (const System* s : open) rest.push_back(s->rest);
        scattering_.SweepOutward(rest);
        std::vector<Gmres> gmres;
        const auto steps = static_cast<std::size_t>(request_.largestApplications - applications_);
        for (std::size_t i = 0; i < open.size(); ++i) {
            const double target = request_.tolerance / open[i]->residual * Norm(rest[i]);
            gmres.emplace_back(std::move(rest[i]), target, std::min(steps, kRestart));
        }
        if (!Iterate(open, gmres)) return false;

        std::vector<ClusterWave> change;
        change.reserve(gmres.size());
        for (const Gmres& g : gmres) change.push_back(g.Solution());
        scattering_.SweepInward(change);
        for (std::size_t i = 0; i < open.size(); ++i)
            for (std::size_t j = 0; j < change[i].size(); ++j) change[i][j] += open[i]->solution[j];
        const std::vector<ClusterWave> scattered = scattering_.Scatter(change);
        if (scattering_.Interrupted()) return false;
        for (std::size_t i = 0; i < open.size(); ++i) {
            System& s = *open[i];
            s.solution = std::move(change[i]);
            for (std::size_t j = 0; j < s.rest.size(); ++j)
                s.rest[j] = s.rightSide[j] - s.solution[j] + scattered[i][j];
            s.residual = Norm(s.rest) / s.size;
            if (!std::isfinite(s.residual))
                throw ZfError("Full scattering: the solution is not a finite number");
        }
        return true;
    }

    bool Iterate(const std::vector<System*>& open, std::vector<Gmres>& gmres) {
        for (;;) {
            std::vector<Gmres*> running;
            std::vector<ClusterWave> vectors;
            for (Gmres& g : gmres) {
                if (g.Done()) continue;
                running.push_back(&g);
                vectors.push_back(g.Last());
            }
            if (running.empty()) return true;
            std::vector<ClusterWave> products = scattering_.ApplyPreconditioned(vectors);
            if (scattering_.Interrupted()) return false;
            for (std::size_t i = 0; i < running.size(); ++i) running[i]->Take(std::move(products[i]));
            ++applications_;
            Report(open, gmres);
        }
    }

    void Report(const std::vector<System*>& open, const std::vector<Gmres>& gmres) const {
        if (!progress_) return;
        FullScatteringProgress now;
        now.application = applications_;
        now.tolerance = request_.tolerance;
        now.residual = 0.0;
        for (std::size_t i = 0; i < open.size(); ++i)
            now.residual = std::max(now.residual, open[i]->residual * gmres[i].RelativeResidual());
        const std::chrono::duration<double> spent = Clock::now() - start_;
        const double fallen = -std::log(now.residual);
        const double missing = std::log(now.residual / request_.tolerance);
        // Behind the last application: the inward sweep and the true residual.
        const double left = fallen > 0.0 ? std::max(0.0, missing / fallen * applications_) : 0.0;
        now.secondsLeft = spent.count() / applications_ * (left + 1.5);
        progress_(now);
    }

    [[noreturn]] void ThrowLimit(const std::vector<System*>& open) const {
        double residual = 0.0;
        for (const System* s : open) residual = std::max(residual, s->residual);
        throw ZfError(
            fmt::format("Full scattering: the residual is still {:.3g} after {} applications, {:g} is wanted",
                        residual, applications_, request_.tolerance));
    }

    const FullScatteringRequest& request_;
    ScatteringOperator& scattering_;
    const std::function<void(const FullScatteringProgress&)>& progress_;
    std::int32_t applications_ = 0;
    Clock::time_point start_ = Clock::now();
};

}  // namespace

std::vector<Complex> ScatteringFactors(const std::vector<Complex>& phaseShifts) {
    std::vector<Complex> t;
    t.reserve(phaseShifts.size());
    for (const Complex delta : phaseShifts) t.push_back((std::exp(Complex(0.0, 2.0) * delta) - 1.0) / 2.0);
    return t;
}

std::vector<Complex> ScatteringFactors(const PhaseShiftRecord& record) {
    std::vector<Complex> t;
    t.reserve(static_cast<std::size_t>(record.scatteringFactors.VectorSize()));
    for (std::int32_t l = 0; l < record.scatteringFactors.VectorSize(); ++l)
        t.push_back(record.scatteringFactors.VectorValueAt(l) / 2.0);
    return t;
}

double ExpectedApplications(const FullScatteringSize& size) {
    // Fitted to fcc metals, Si and GaAs of 80 to 1000 atoms at 50 to 1400 eV. With damping, what counts are
    // the atoms within some mean free paths.
    double atoms = size.atoms;
    if (size.meanFreePath > 0.0) atoms = std::min(atoms, 13.0 * size.meanFreePath / kAngstrom_m);
    const double digits = -std::log10(size.tolerance);
    return std::min(36.0, 300.0 / size.lSize) * std::pow(atoms / 581.0, 0.36) * digits / 6.0;
}

double NominalSeconds(const FullScatteringSize& size) {
    constexpr double kPairSeconds = 1.5e-10;  // of one term of a pair
    const double products = std::ceil(ExpectedApplications(size)) + kFurtherProducts;
    return kPairSeconds * size.atoms * size.atoms * std::pow(size.lSize, 3) * size.waves * products;
}

FullScatteringEstimate EstimateFullScattering(const FullScatteringRequest& request) {
    std::vector<PhaseShiftCut> cuts;
    const ScatteringOperator scattering = MakeOperator(request, cuts);
    FullScatteringEstimate estimate;
    std::size_t lSize = 1;
    for (std::size_t i = 0; i < request.positions.size(); ++i) lSize = std::max(lSize, scattering.LSize(i));

    const double expected = ExpectedApplications(
        {static_cast<double>(request.positions.size()), static_cast<double>(lSize),
         static_cast<double>(request.waves.size()), request.meanFreePath, request.tolerance});
    estimate.applications =
        std::clamp(static_cast<std::int32_t>(std::ceil(expected)), 1, request.largestApplications);
    const double threads = std::max(1.0, 0.9 * omp_get_max_threads());
    estimate.seconds = scattering.SecondsOfProduct(request.waves.size()) *
                       (estimate.applications + kFurtherProducts) / threads;
    const double waveBytes =
        static_cast<double>(scattering.WaveSize() * request.waves.size()) * sizeof(Complex);
    const auto vectors = std::min<double>(estimate.applications, kRestart) + 8.0;
    estimate.bytes = scattering.Bytes() + vectors * waveBytes;
    return estimate;
}

std::vector<std::vector<ZfLmComplexTable>> SingleScattering(const FullScatteringRequest& request) {
    std::vector<PhaseShiftCut> cuts;
    ScatteringOperator scattering = MakeOperator(request, cuts);
    std::vector<std::vector<ZfLmComplexTable>> tables;
    for (const EmissionFromAtom& wave : request.waves)
        tables.push_back(Tables(scattering, Emitted(scattering, wave), request.positions.size()));
    return tables;
}

std::vector<double> MissingScattering(const FullScatteringRequest& request,
                                      const std::vector<std::vector<ZfLmComplexTable>>& tables) {
    std::vector<PhaseShiftCut> cuts;
    ScatteringOperator scattering = MakeOperator(request, cuts);
    std::vector<ClusterWave> waves;
    for (const std::vector<ZfLmComplexTable>& ofWave : tables) {
        ClusterWave& wave = waves.emplace_back(scattering.WaveSize());
        for (std::size_t i = 0; i < ofWave.size(); ++i) {
            const std::size_t size =
                std::min(scattering.Offset(i + 1) - scattering.Offset(i), ofWave[i].block.size());
            std::copy_n(ofWave[i].block.begin(), size,
                        wave.begin() + static_cast<std::ptrdiff_t>(scattering.Offset(i)));
        }
    }
    const std::vector<ClusterWave> scattered = scattering.Scatter(waves);
    std::vector<double> missing;
    for (std::size_t w = 0; w < waves.size(); ++w) {
        ClusterWave rest = Emitted(scattering, request.waves[w]);
        for (std::size_t j = 0; j < rest.size(); ++j) rest[j] += scattered[w][j] - waves[w][j];
        const double size = Norm(waves[w]);
        missing.push_back(size > 0.0 ? Norm(rest) / size : 0.0);
    }
    return missing;
}

FullScattering SolveFullScattering(const FullScatteringRequest& request, ZfNotifyTerminate& notifier,
                                   const std::function<void(const FullScatteringProgress&)>& progress) {
    FullScattering result;
    ScatteringOperator scattering = MakeOperator(request, result.cuts);
    scattering.SetNotifier(&notifier);
    std::vector<System> systems;
    for (std::size_t w = 0; w < request.waves.size(); ++w) {
        ClusterWave b = Emitted(scattering, request.waves[w]);
        const double size = Norm(b);
        if (size > 0.0) systems.push_back({w, b, size, ClusterWave(b.size()), b});
    }
    Solver solver(request, scattering, progress);
    result.interrupted = !solver.Solve(systems);
    result.applications = solver.Applications();
    if (result.interrupted) return result;

    const ClusterWave nothing(scattering.WaveSize());
    std::vector<const ClusterWave*> solutions(request.waves.size(), &nothing);
    result.residual.assign(request.waves.size(), 0.0);
    for (const System& s : systems) {
        solutions[s.index] = &s.solution;
        result.residual[s.index] = s.residual;
    }
    for (const ClusterWave* solution : solutions)
        result.waves.push_back(Tables(scattering, *solution, request.positions.size()));
    return result;
}

}  // namespace qvre
