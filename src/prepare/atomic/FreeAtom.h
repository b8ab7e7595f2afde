#pragma once

#include <vector>

#include "foundation/Words.h"
#include "prepare/atomic/CoreOrbital.h"

namespace qvre {

/// Electrons of one n and l.
struct AtomicShell {
    int n = 0;
    int l = 0;
    int electrons = 0;
};

/// The ground state of the neutral atom: shells fill by E. Madelung's order, rising n + l, then rising n, but
/// for the elements that depart from it (A. Kramida et al., NIST Atomic Spectra Database).
std::vector<AtomicShell> GroundState(int atomicNumber);

/// Whether the ground state holds electrons in the level.
bool IsOccupied(int atomicNumber, int n, int l);

/// The self-consistent field of the neutral atom: nucleus, electrons and Slater's exchange potential
/// -(3/2)(3 rho/pi)^(1/3) (J. C. Slater, Phys. Rev. 81, 385 (1951)), nowhere weaker than the -1/r of the ion
/// that an electron leaves behind (R. Latter, Phys. Rev. 99, 510 (1955)). The orbitals are
/// scalar-relativistic (D. D. Koelling, B. N. Harmon, J. Phys. C 10, 3107 (1977)): levels of one n and l lie
/// at the mean of their spin-orbit pair. `start` tells the element and the field to begin with.
RadialPotential SelfConsistentField(const ScreenedAtom& start);

/// The field and the equation of core orbitals.
enum class CoreField {
    kSelfConsistent,  ///< SelfConsistentField, scalar-relativistic
    kAnalytical,      ///< SlaterField of the analytical screening function, not relativistic
};

template <>
inline constexpr auto kWords<CoreField> = std::to_array<Word<CoreField>>(
    {{"self-consistent", CoreField::kSelfConsistent}, {"analytical", CoreField::kAnalytical}});

/// What to ask of BoundOrbital for a level.
BoundState CoreState(const ScreenedAtom& atom, CoreField core, int n, int l);

}  // namespace qvre
