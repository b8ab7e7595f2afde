#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qvre {

/// What a column of a measured table holds.
enum Quantity : std::size_t {
    kTheta,
    kPhi,
    kAlpha,   ///< angle along the entrance slit of the analyser
    kAngle,   ///< polar angle or azimuth, whichever is not known otherwise
    kEnergy,  ///< kinetic, eV
    kIntensity,
    kChi,
    kSigma,
    kQuantities
};

struct ColumnName {
    Quantity quantity = kTheta;
    bool radians = false;
};

/// "rad", "(Radians)", ...
bool MeansRadians(std::string_view unit);

/// "polar angle", ...
const char* QuantityName(Quantity quantity);

/// What a name such as "theta", "Polar angle [rad]", "I (counts/s)" or "phi_deg" stands for; nothing where it
/// is not known.
std::optional<ColumnName> ReadColumnName(std::string_view name);

/// The quantity of a letter in the extension of a file such as .etpi, which names its columns: energy, theta,
/// phi, alpha, intensity, sigma.
std::optional<Quantity> QuantityOfLetter(char letter);

/// The letters of such an extension: each once, with an angle or the energy, and i, which .etp, .etpa and .tp
/// leave out. Empty for any other.
std::string ColumnLetters(const std::string& path);

/// The names in a line; blanks may separate them and stand within them, as in "theta (deg) phi (deg) I".
std::vector<std::string> SplitNames(std::string_view line);

/// 45 of "45", "45 deg", "45°" and "theta=45": an angle at the edge of a matrix, degrees.
std::optional<double> EdgeAngle(std::string_view field);

/// 45 of "theta = 45 deg" or "theta: 45", anywhere between the commas of a line; degrees.
std::optional<double> AssignedAngle(std::string_view line, Quantity quantity);

}  // namespace qvre
