#include "prepare/emission/DipoleSource.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdint>

#include "foundation/CommaTable.h"
#include "foundation/Constants.h"
#include "foundation/ReplacedFile.h"
#include "foundation/StrictNumber.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr const char* kTitles =
    "initial l,final l,kinetic (eV),radial integral (bohr^2.5),phase (rad),weight";

/// The final l with a part.
std::vector<int> FinalDegrees(int l0) {
    if (l0 == 0) return {1};
    return {l0 - 1, l0 + 1};
}

/// The factor that makes the sum of |A_lm|^2 over the sublevels 4 pi times the weight. It is the same for
/// light along any direction.
double Normalisation(const DipoleSource& source) {
    double sum = 0.0;
    for (int m = -source.channels.l0; m <= source.channels.l0; ++m)
        for (const std::complex<double>& a : DipoleWave(source.channels, {0.0, 0.0, 1.0}, m).block)
            sum += std::norm(a);
    if (!(sum > 0.0) || !std::isfinite(sum))
        throw ZfError("The level emits nothing: both radial integrals are 0");
    return std::sqrt(4.0 * kPi * source.weight / sum);
}

}  // namespace

std::vector<EmittedWave> UnitWaves(const DipoleSource& source) {
    std::vector<EmittedWave> waves;
    for (const int l : FinalDegrees(source.channels.l0))
        for (int m = -l; m <= l; ++m) {
            EmittedWave& wave = waves.emplace_back();
            wave.Ek = source.kinetic_eV;
            wave.coeff.SetSize(source.channels.l0 + 2);
            wave.coeff.At(l, m) = 1.0;
        }
    return waves;
}

DipoleTransitions::DipoleTransitions(const DipoleSource& source)
    : sublevels_(static_cast<std::size_t>(2 * source.channels.l0 + 1)) {
    const int l0 = source.channels.l0;
    const double factor = Normalisation(source);
    constexpr std::array<LightVector, 3> kAxes = {{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}};
    for (int m0 = -l0; m0 <= l0; ++m0) {
        std::array<ZfLmComplexTable, 3> waves;
        for (std::size_t axis = 0; axis < 3; ++axis)
            waves[axis] = DipoleWave(source.channels, kAxes[axis], m0);
        for (const int l : FinalDegrees(l0))
            for (int m = -l; m <= l; ++m) {
                auto& dipole = dipoles_.emplace_back();
                for (std::size_t axis = 0; axis < 3; ++axis) dipole[axis] = factor * waves[axis].At(l, m);
            }
    }
    units_ = dipoles_.size() / sublevels_;
}

std::vector<EmittedWave> WavesUnder(const DipoleSource& source, const std::vector<LightVector>& light) {
    const int l0 = source.channels.l0;
    const double factor = Normalisation(source);
    std::vector<EmittedWave> waves;
    for (const LightVector& part : light)
        for (int m = -l0; m <= l0; ++m) {
            EmittedWave& wave = waves.emplace_back();
            wave.Ek = source.kinetic_eV;
            wave.coeff = DipoleWave(source.channels, part, m);
            // Adding 0 makes a plain zero of a negative one, which would be written with its sign.
            for (std::complex<double>& a : wave.coeff.block) a = a * factor + std::complex<double>(0.0, 0.0);
        }
    return waves;
}

void SaveDipoleSource(const DipoleSource& source, const std::string& path) {
    std::string text = std::string(kTitles) + "\n";
    const DipoleChannels& channels = source.channels;
    for (const int l : FinalDegrees(channels.l0)) {
        const std::size_t i = l > channels.l0 ? 1 : 0;
        text += fmt::format("{},{},{},{},{},{}\n", channels.l0, l, source.kinetic_eV, channels.rho[i],
                            channels.delta[i], source.weight);
    }
    WriteWholeFile(path, text);
}

DipoleSource LoadDipoleSource(const std::string& path) {
    const CommaTable table = CommaTable::Load(path);
    const auto number = [&](const std::vector<std::string>& row, const char* title) {
        return StrictNumber(row[table.Column(title)], path + ": " + title);
    };
    DipoleSource source;
    for (const std::vector<std::string>& row : table.rows) {
        source.channels.l0 = static_cast<int>(number(row, "initial l"));
        const std::size_t i = number(row, "final l") > source.channels.l0 ? 1 : 0;
        source.kinetic_eV = number(row, "kinetic (eV)");
        source.channels.rho[i] = number(row, "radial integral (bohr^2.5)");
        source.channels.delta[i] = number(row, "phase (rad)");
        source.weight = number(row, "weight");
    }
    if (table.rows.size() != FinalDegrees(source.channels.l0).size())
        throw ZfError(path + " is no table of a dipole source");
    return source;
}

}  // namespace qvre
