#pragma once

#include <array>
#include <string>
#include <vector>

namespace qvre {

/// The field of a neutral free atom by an analytical Dirac-Hartree-Fock-Slater screening function: a sum of
/// Yukawa terms (F. Salvat, J. D. Martinez, R. Mayol, J. Parellada, Phys. Rev. A 36, 467 (1987)). Atomic
/// units: r in bohr, energies in hartree.
struct ScreenedAtom {
    double Screening(double r) const;  ///< sum A_i exp(-alpha_i r): 1 at the nucleus
    double Potential(double r) const;  ///< hartree: -(Z/r) Screening(r), electrostatic, of an electron
    double Density(double r) const;    ///< electrons/bohr^3, by Poisson's equation; some fits dip below 0

    int atomicNumber = 0;
    std::string symbol;
    std::array<double, 3> amplitude{};  ///< A_i, of sum 1
    std::array<double, 3> decay{};      ///< alpha_i, 1/bohr; 1 where the amplitude is 0
};

/// The table of neutral atoms, Z = 1 to 92.
class ScreeningTable {
public:
    /// Reads the comma-separated table that ships as "screening_dhfs.csv". Throws ZfError.
    explicit ScreeningTable(const std::string& path);

    const ScreenedAtom& Find(const std::string& symbol) const;  ///< throws ZfError for an unknown element

private:
    std::vector<ScreenedAtom> atoms_;
};

}  // namespace qvre
