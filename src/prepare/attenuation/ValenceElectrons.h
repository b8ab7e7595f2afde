#pragma once

#include <map>
#include <string>

namespace qvre {

/// How many electrons of an element take part in the losses of a passing electron, d electrons of metals
/// included.
class ValenceElectrons {
public:
    /// Reads the comma-separated table that ships as "valence_electrons.csv". Throws ZfError.
    explicit ValenceElectrons(const std::string& path);

    double Of(const std::string& element) const;  ///< throws ZfError for an element that is not listed

private:
    std::map<std::string, double> electrons_;
};

}  // namespace qvre
