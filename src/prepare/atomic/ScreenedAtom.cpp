#include "prepare/atomic/ScreenedAtom.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "foundation/CommaTable.h"
#include "foundation/Constants.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr std::size_t kColumns = 7;  // Z, symbol, A1, A2, alpha1, alpha2, alpha3

ScreenedAtom AtomOfRow(const std::vector<std::string>& fields) {
    ScreenedAtom atom;
    atom.atomicNumber = TextToInt(fields[0]);
    atom.symbol = fields[1];
    atom.amplitude = {TextToDouble(fields[2]), TextToDouble(fields[3]), 0.0};
    atom.decay = {TextToDouble(fields[4]), TextToDouble(fields[5]), 1.0};
    if (!fields[6].empty()) {
        atom.amplitude[2] = 1.0 - atom.amplitude[0] - atom.amplitude[1];
        atom.decay[2] = TextToDouble(fields[6]);
    }
    return atom;
}

}  // namespace

double ScreenedAtom::Screening(double r) const {
    double sum = 0.0;
    for (std::size_t i = 0; i < amplitude.size(); ++i) sum += amplitude[i] * std::exp(-decay[i] * r);
    return sum;
}

double ScreenedAtom::Potential(double r) const {
    return -atomicNumber / r * Screening(r);
}

double ScreenedAtom::Density(double r) const {
    double sum = 0.0;
    for (std::size_t i = 0; i < amplitude.size(); ++i)
        sum += amplitude[i] * decay[i] * decay[i] * std::exp(-decay[i] * r);
    return atomicNumber / (4.0 * kPi * r) * sum;
}

ScreeningTable::ScreeningTable(const std::string& path) {
    const CommaTable table = CommaTable::Load(path);
    if (table.titles.size() != kColumns) throw ZfError(path + ": it is no table of screening functions");
    for (const std::vector<std::string>& row : table.rows) atoms_.push_back(AtomOfRow(row));
}

const ScreenedAtom& ScreeningTable::Find(const std::string& symbol) const {
    const auto found = std::find_if(atoms_.begin(), atoms_.end(),
                                    [&](const ScreenedAtom& atom) { return atom.symbol == symbol; });
    if (found == atoms_.end())
        throw ZfError("There is no atomic field for the element \"" + symbol + "\"; known are H to U");
    return *found;
}

}  // namespace qvre
