#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "foundation/Vec3.h"
#include "foundation/ZfNotifyTerminate.h"
#include "input/LmTable.h"
#include "input/ZfPhaseShiftDocument.h"

// Multiple scattering in full: every path over every atom, forward, back and sideways, in all orders. With
// A_i the table of the outgoing wave h1_l Y_lm that atom i scatters, E the emitted one, and G_ij the
// translation of outgoing waves around j to regular ones around i,
//
//     A_i = t_i sum over j != i of G_ij (A_j + E_j),      t_l = (exp(2 i delta_l) - 1) / 2,
//
// where E_j is zero but at the emitter, which scatters as every atom does; its emission is not part of its
// table A. The far field in the direction u is
//
//     sum over i of exp(-i k u.R_i) sum over l, m of (-i)^(l+1) (A_i + E_i)(l,m) Y_lm(u).
//
// The equations are those of J. B. Pendry, Low Energy Electron Diffraction, Academic Press 1974, and of
// F. J. Garcia de Abajo, M. A. Van Hove, C. S. Fadley, Phys. Rev. B 63, 075404 (2001). They are solved by
// GMRES, preconditioned on both sides by sweeps over the shells around the emitter.

namespace qvre {

/// What scatters alike.
struct ScatteringSpecies {
    std::string name;                     ///< for messages
    std::vector<std::complex<double>> t;  ///< t_l, l = 0 up; its size is the l size
};

/// t_l = (exp(2 i delta_l) - 1) / 2; delta_l in radians, with a positive imaginary part where flux is lost.
std::vector<std::complex<double>> ScatteringFactors(const std::vector<std::complex<double>>& phaseShifts);
/// The same from a record whose scattering factors, exp(2 i delta_l) - 1, are calculated.
std::vector<std::complex<double>> ScatteringFactors(const PhaseShiftRecord& record);

/// An outgoing wave from one atom.
struct EmissionFromAtom {
    std::size_t emitter = 0;  ///< place in the list of atoms
    ZfLmComplexTable table;   ///< coefficients of h1_l Y_lm, of any l size
};

struct FullScatteringRequest {
    std::vector<Vec3> positions;       ///< m
    std::vector<std::size_t> species;  ///< of each atom: place in the list below
    std::vector<ScatteringSpecies> listOfSpecies;
    std::vector<EmissionFromAtom> waves;  ///< are solved together
    double k = 0.0;                       ///< wave number in the crystal, 1/m
    /// m: amplitudes fall by exp(-R / (2 meanFreePath)) from atom to atom; 0: none
    double meanFreePath = 0.0;
    /// Of |b - (1 - tG) A| / |b| with b = tG E; what is returned keeps twice of it.
    double tolerance = 1e-5;
    std::int32_t largestApplications = 300;
};

/// Where a species was cut, as its t_l beyond would have spoilt the solution.
struct PhaseShiftCut {
    std::string name;
    std::size_t given = 0;  ///< l size
    std::size_t used = 0;
};

/// A_i of all atoms, for each wave of the request.
struct FullScattering {
    std::vector<std::vector<ZfLmComplexTable>> waves;  ///< by wave, atom; empty if interrupted
    std::vector<double> residual;                      ///< |b - (1 - tG) A| / |b| by wave, 0 where b is 0
    std::int32_t applications = 0;                     ///< of the operator, until the last wave was done
    std::vector<PhaseShiftCut> cuts;
    bool interrupted = false;
};

struct FullScatteringProgress {
    std::int32_t application = 0;
    double residual = 1.0;  ///< the largest of the waves, relative
    double tolerance = 1e-5;
    double secondsLeft = 0.0;  ///< as if the residual went on falling as it did
};

/// What the cost of a solution depends on.
struct FullScatteringSize {
    double atoms = 0.0;
    double lSize = 0.0;
    double waves = 0.0;         ///< solved together
    double meanFreePath = 0.0;  ///< m; 0: none
    double tolerance = FullScatteringRequest().tolerance;
};

/// Applications of the operator that a solution is expected to take, to a factor of 2.
double ExpectedApplications(const FullScatteringSize& size);

/// Seconds on two cores of a server of 2022 with 512-bit vectors: atoms^2 lSize^3 waves by pair, for each
/// application. Unlike EstimateFullScattering the same on every machine.
double NominalSeconds(const FullScatteringSize& size);

/// Expected cost. The seconds are those of this machine, with the threads that it may use, from a few packs
/// of pairs that are timed; how many applications it takes depends on the atoms and is known to a factor
/// of 2.
struct FullScatteringEstimate {
    double seconds = 0.0;
    double bytes = 0.0;
    std::int32_t applications = 0;
};

/// All throw ZfError for a request that makes no sense: no atom, lists that do not fit, numbers out of range,
/// two atoms within 0.5 angstrom, phase shifts from which no solution can come (see PhaseShiftGuard.h).
FullScatteringEstimate EstimateFullScattering(const FullScatteringRequest& request);

/// The first order, A = tG E, by wave and atom as in FullScattering: each atom scatters the emitted wave
/// alone.
std::vector<std::vector<ZfLmComplexTable>> SingleScattering(const FullScatteringRequest& request);

/// What the tables of another method, by wave and atom as in FullScattering, leave out: the waves that their
/// own scattering would add to them, |b - (1 - tG) A| / |A|, by wave; 0 where A is 0.
std::vector<double> MissingScattering(const FullScatteringRequest& request,
                                      const std::vector<std::vector<ZfLmComplexTable>>& tables);

/// Throws ZfError also when the tolerance is not reached within the largest number of applications. One
/// atom, or atoms that scatter nothing, give zero. `progress` is called after each application.
FullScattering SolveFullScattering(const FullScatteringRequest& request, ZfNotifyTerminate& notifier,
                                   const std::function<void(const FullScatteringProgress&)>& progress = {});

}  // namespace qvre
