#pragma once

#include <map>
#include <optional>
#include <string>

namespace qvre {

/// Debye temperatures of the elements as solids of their own: those of the whole model (DebyeIntegralUiso)
/// that give their displacements at room temperature.
class DebyeTable {
public:
    /// Reads the comma-separated table that ships as "debye_temperatures.csv". Throws ZfError.
    explicit DebyeTable(const std::string& path);

    std::optional<double> Find(const std::string& element) const;  ///< kelvin; none for an element without

private:
    std::map<std::string, double> temperatures_;
};

}  // namespace qvre
