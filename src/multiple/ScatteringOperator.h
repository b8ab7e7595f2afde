#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "foundation/Vec3.h"
#include "foundation/ZfNotifyTerminate.h"
#include "multiple/PairKernel.h"

namespace qvre {

/// The tables of all atoms, one atom behind the other in the order of the atoms; element (l, m) of an atom's
/// table at l (l + 1) + m.
using ClusterWave = std::vector<std::complex<double>>;

/// Atoms that scatter. Lengths are in units of 1/k.
struct Scatterers {
    std::vector<Vec3> positions;
    std::vector<std::size_t> species;                  ///< of each atom: place in t
    std::vector<std::vector<std::complex<double>>> t;  ///< by species: t_l = (exp(2 i delta_l) - 1) / 2
    double damping = 0.0;  ///< the wave of an atom at another is multiplied by exp(-damping kR)
};

/// The operator tG of multiple scattering, (tG A)_i = t_i sum over j != i of G_ij A_j with G the translation
/// of outgoing waves to regular ones, without a stored matrix: every product goes through the pairs anew.
///
/// Atoms form shells of equal distance from a centre, which splits tG = L + U + B into the sources in earlier
/// shells, in later ones and in the same one. The sweeps outward and inward solve with the triangular parts,
/// at the cost of the pairs that they contain; and since whole shells are done at once, a symmetric cluster
/// is treated symmetrically.
///
/// Several waves go through the pairs together. A sum has one order, whatever the number of threads.
class ScatteringOperator {
public:
    /// As many waves as `largestWaves` may be given at once.
    ScatteringOperator(Scatterers scatterers, const Vec3& centre, std::size_t largestWaves);

    /// Polled before every shell. Once it says so, no work is done any more and results mean nothing.
    void SetNotifier(ZfNotifyTerminate* notifier) { notifier_ = notifier; }
    bool Interrupted() const { return interrupted_; }

    std::size_t WaveSize() const { return offsets_.back(); }
    std::size_t Offset(std::size_t atom) const { return offsets_[atom]; }
    std::size_t LSize(std::size_t atom) const { return scatterers_.t[scatterers_.species[atom]].size(); }

    /// tG E of a table of any l size at `emitter`.
    ClusterWave Emit(std::size_t emitter, const std::vector<std::complex<double>>& table, std::size_t lSize);

    /// tG x of each wave.
    std::vector<ClusterWave> Scatter(const std::vector<ClusterWave>& x);

    /// (1 - L)^-1 x: each atom scatters what reaches it from the shells before.
    void SweepOutward(std::vector<ClusterWave>& x);
    /// (1 - U)^-1 x.
    void SweepInward(std::vector<ClusterWave>& x);
    /// (1 - L)^-1 (1 - tG) (1 - U)^-1 x at the cost of one product (S. C. Eisenstat, SIAM J. Sci. Stat.
    /// Comput. 2, 1 (1981)): with y = (1 - U)^-1 x it is y + (1 - L)^-1 (x - y - B y).
    std::vector<ClusterWave> ApplyPreconditioned(const std::vector<ClusterWave>& x);

    /// Seconds of one thread for a product, after a few packs of each kind were timed.
    double SecondsOfProduct(std::size_t waves) const;
    /// Bytes of memory besides the waves that are given and returned.
    double Bytes() const;

private:
    /// Sources of one l size, eight side by side.
    struct SourceClass {
        std::size_t lSize = 0;
        std::vector<SourceGroup> groups;
        std::vector<std::vector<PackedComplex>> waves;  ///< (-i)^l A(l,m) by wave, then group by group

        void Write(std::size_t wave, std::size_t place, const std::complex<double>* table);
        void Clear();
    };
    struct SourceRange {
        const SourceClass* sources;
        std::size_t begin;  ///< first group
        std::size_t end;
    };
    /// The targets, each with a chunk of a range: what one thread sums up.
    struct Task {
        std::size_t target;  ///< atom
        SourceRange range;
        std::size_t result;  ///< where its sum begins
    };
    struct Shell {
        std::vector<std::size_t> atoms;
        std::vector<std::size_t> before;  ///< by class: atoms in earlier shells
        std::vector<std::size_t> place;   ///< of each atom among the shell's own sources of its class
        std::vector<SourceClass> own;     ///< by class; none if the shell has one atom
    };

    void MakeClasses();
    void MakeShells(const Vec3& centre);
    std::vector<SourceClass> EmptyClasses() const;
    std::size_t Append(std::vector<SourceClass>& classes, std::size_t atom, std::size_t place) const;
    std::size_t ClassOf(std::size_t atom) const { return classOfSpecies_[scatterers_.species[atom]]; }

    std::vector<SourceRange> Earlier(std::size_t shell) const;
    std::vector<SourceRange> Later(std::size_t shell) const;
    void WriteSources(const std::vector<std::size_t>& atoms, const std::vector<ClusterWave>& x);
    /// x_i += t_i times what the sources send to atom i, for each target and wave.
    void AddScattered(const std::vector<std::size_t>& targets, const std::vector<SourceRange>& ranges,
                      std::vector<ClusterWave>& x);
    void Collect(const Task& task, std::size_t waves, std::size_t thread);
    void AddOwnShell(Shell& shell, const std::vector<ClusterWave>& y, std::vector<ClusterWave>& x);
    bool Stop();

    Scatterers scatterers_;
    std::size_t largestWaves_;
    std::size_t largestLSize_ = 0;
    std::vector<std::size_t> offsets_;
    std::vector<std::size_t> lSizes_;  ///< of the classes
    std::vector<std::size_t> classOfSpecies_;
    std::vector<SourceClass> classes_;
    std::vector<std::size_t> place_;  ///< of each atom among the sources of its class
    std::vector<Shell> shells_;       ///< by distance
    std::vector<CoaxialWeights> weights_;
    std::vector<PairScratch> scratch_;              ///< by thread
    std::vector<std::vector<PackedComplex>> sums_;  ///< by thread
    std::vector<std::complex<double>> collected_;   ///< by task
    ZfNotifyTerminate* notifier_ = nullptr;
    bool interrupted_ = false;
};

}  // namespace qvre
