#pragma once

#include <map>
#include <optional>
#include <string>

#include "prepare/atomic/CoreLevel.h"

namespace qvre {

/// Binding energies of core levels in eV, below the Fermi level of a metal or the top of the valence band.
class BindingEnergies {
public:
    /// Reads the comma-separated table that ships as "binding_energies.csv". Throws ZfError.
    explicit BindingEnergies(const std::string& path);

    /// The energy of a line, or of a pair its mean with the weights 2j + 1; none where the table has a gap.
    std::optional<double> Find(const std::string& element, const CoreLevel& level) const;

private:
    std::optional<double> Entry(const std::string& element, const std::string& column) const;

    std::map<std::string, std::map<std::string, double>> energies_;  // by element, then by level
};

}  // namespace qvre
