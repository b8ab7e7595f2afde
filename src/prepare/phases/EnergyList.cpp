#include "prepare/phases/EnergyList.h"

#include <algorithm>
#include <cmath>

#include "foundation/StrictNumber.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr double kMostSteps = 1000.0;

/// The number of 6 digits, where rounding alone is between them.
double Decimal(double value) {
    const double decimal = TextToDouble(DoubleToText(value));
    return std::abs(value - decimal) < 1e-12 * std::abs(value) ? decimal : value;
}

void AddRange(std::vector<double>& energies, const std::string& text) {
    const std::size_t second = text.find(':');
    const std::size_t third = text.find(':', second + 1);
    if (third == std::string::npos) throw ZfError("\"" + text + "\": write FIRST:LAST:STEP");
    const double first = StrictNumber(text.substr(0, second), "first energy");
    const double last = StrictNumber(text.substr(second + 1, third - second - 1), "last energy");
    const double step = StrictNumber(text.substr(third + 1), "step of the energy");
    if (!(step > 0.0) || last < first) throw ZfError("\"" + text + "\": the energies have to rise");
    if ((last - first) / step > kMostSteps + 0.5) throw ZfError("\"" + text + "\" has too many energies");
    const std::vector<double> range = EnergyRange(first, last, step);
    energies.insert(energies.end(), range.begin(), range.end());
}

}  // namespace

std::vector<double> EnergyRange(double first, double last, double step) {
    const double steps = std::floor((last - first) / step + 1e-9);
    std::vector<double> energies;
    for (double i = 0.0; i <= steps; ++i) energies.push_back(Decimal(first + i * step));
    return energies;
}

std::vector<double> ParseEnergies(const std::vector<std::string>& texts) {
    std::vector<double> energies;
    for (const std::string& text : texts) {
        if (text.find(':') == std::string::npos)
            energies.push_back(StrictNumber(text, "energy"));
        else
            AddRange(energies, text);
    }
    return energies;
}

std::vector<double> EnergiesOfWaves(const std::vector<EmittedWave>& waves) {
    std::vector<double> energies;
    for (const EmittedWave& wave : waves)
        if (std::find(energies.begin(), energies.end(), wave.Ek) == energies.end())
            energies.push_back(wave.Ek);
    return energies;
}

std::vector<double> EnergiesOfWaves(const std::string& path) {
    std::vector<EmittedWave> waves;
    ZfLoadEmittedWave(waves, path);
    if (waves.empty()) throw ZfError(path + " holds no emitted waves");
    return EnergiesOfWaves(waves);
}

}  // namespace qvre
