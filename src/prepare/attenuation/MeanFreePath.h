#pragma once

#include <optional>
#include <string>

#include "prepare/attenuation/SolidDensity.h"

// Inelastic mean free path: the intensity of an electron that loses no energy falls by 1/e along it.

namespace qvre {

/// A length, or the formula TPP-2M.
struct MeanFreePathRequest {
    std::optional<double> length_angstrom;  ///< none: by TPP-2M
    double gap_eV = 0.0;                    ///< band gap of the solid; counts for TPP-2M
};

constexpr const char* kTpp2m = "TPP-2M";  ///< the word that stands for the formula

/// Throws ZfError for a length below 0.5 or above 100000 angstrom, and for a gap below 0 or above 30 eV.
void CheckMeanFreePath(const MeanFreePathRequest& request);

/// Angstrom, by TPP-2M with its relativistic factor (S. Tanuma, C. J. Powell, D. R. Penn, Surf. Interface
/// Anal. 21, 165 (1994); H. Shinotsuka, S. Tanuma, C. J. Powell, D. R. Penn, Surf. Interface Anal. 47, 871
/// (2015)). `energy_eV` counts from the Fermi level, of an insulator from the bottom of the conduction band.
/// Throws ZfError below 30 eV, where the formula has no meaning, and for a solid for which it gives no
/// length.
double Tpp2m_angstrom(const SolidDensity& solid, double gap_eV, double energy_eV);

/// The length of the request, or that of TPP-2M. Throws ZfError as CheckMeanFreePath and Tpp2m_angstrom.
double MeanFreePath_angstrom(const MeanFreePathRequest& request, const SolidDensity& solid, double energy_eV);

constexpr double kLeastTppEnergy_eV = 50.0;
constexpr double kLargestTppEnergy_eV = 200000.0;

/// What to say of an energy outside the range of TPP-2M; empty inside, and for a length.
std::string MeanFreePathWarning(const MeanFreePathRequest& request, double energy_eV);

/// "16.0 angstrom at 1119 eV (TPP-2M: 10.5 g/cm^3, 11 valence electrons in 107.87 u, gap 0 eV)".
std::string MeanFreePathText(const MeanFreePathRequest& request, const SolidDensity& solid, double energy_eV);

}  // namespace qvre
