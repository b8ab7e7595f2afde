#include <algorithm>
#include <cmath>
#include <set>
#include <vector>

#include "foundation/Constants.h"
#include "foundation/Text.h"
#include "prepare/checks/PartChecks.h"

namespace qvre {

namespace {

constexpr double kFourPi = 4.0 * kPi;
constexpr double kDigitsOfFiles = 1e-3;  // coefficients keep 6 digits each

double Strength(const EmittedWave& wave) {
    double sum = 0.0;
    for (const auto& c : wave.coeff.block) sum += std::norm(c);
    return sum;
}

std::string WaveText(std::size_t index) {
    std::string text = "wave ";
    return text + std::to_string(index);
}

void CheckWave(const EmittedWave& wave, std::size_t index, InputFindings& findings) {
    const std::string name = WaveText(index);
    if (!(wave.Ek > 0.0))
        findings.push_back({Severity::kMisfit,
                            name + " has the kinetic energy " + DoubleToText(wave.Ek) + " eV",
                            "give Ek, the energy inside the crystal, above 0"});
    if (wave.IsPlaneWave) {
        findings.push_back({Severity::kNote, name + " is a plane wave: its coefficients are not used",
                            "set IsPlaneWave to false for an emitter"});
        return;
    }
    if (Strength(wave) == 0.0)
        findings.push_back({Severity::kNote, name + " emits nothing: its coefficients are all 0",
                            "remove the wave, or give its coefficients"});
}

/// The method SINGLE computes all atoms before it refuses such a wave.
void CheckSingle(const std::vector<EmittedWave>& waves, InputFindings& findings) {
    const auto larger = std::find_if(waves.begin(), waves.end(), [](const EmittedWave& wave) {
        return !wave.IsPlaneWave && wave.coeff.L > 1;
    });
    if (larger == waves.end()) return;
    findings.push_back({Severity::kMisfit,
                        WaveText(static_cast<std::size_t>(larger - waves.begin())) + " has l size " +
                            std::to_string(larger->coeff.L) + "; the method SINGLE takes l size 1 only",
                        "take the method MULTI or SLOWMULTI, or an s wave"});
}

/// One coefficient 1: light combines such waves, and the strength is that of the light.
bool IsUnitWave(const EmittedWave& wave) {
    return std::count(wave.coeff.block.begin(), wave.coeff.block.end(), 1.0) == 1 && Strength(wave) == 1.0;
}

void CheckStrength(const std::vector<EmittedWave>& waves, InputFindings& findings) {
    double sum = 0.0;
    for (const EmittedWave& wave : waves) {
        if (wave.IsPlaneWave) return;
        sum += Strength(wave);
    }
    if (waves.size() > 1 && std::all_of(waves.begin(), waves.end(), IsUnitWave)) return;
    if (sum == 0.0 && !waves.empty())
        findings.push_back({Severity::kMisfit, "no wave emits anything: the image would be empty",
                            "give the coefficients of a wave"});
    if (sum == 0.0 || std::abs(sum / kFourPi - 1.0) < kDigitsOfFiles) return;
    findings.push_back({Severity::kNote,
                        "the sum of |A|^2 over all waves is " + DoubleToText(sum) +
                            ", not 4 pi: I0 does not average to 1 over the sphere",
                        "none is needed where the pattern is divided by I0"});
}

}  // namespace

void CheckWaves(const InputSet& inputs, InputFindings& findings) {
    const std::vector<EmittedWave>& waves = *inputs.waves;
    if (waves.empty())
        findings.push_back(
            {Severity::kMisfit, "there is no emitted wave: the image would be empty", "give at least one"});
    std::set<double> energies;
    for (std::size_t i = 0; i < waves.size(); ++i) {
        CheckWave(waves[i], i, findings);
        energies.insert(waves[i].Ek);
    }
    if (energies.size() > 1)
        findings.push_back({Severity::kNote,
                            "the waves have " + std::to_string(energies.size()) +
                                " energies; their patterns add up in one image",
                            "run each energy by itself for an image of each"});
    if (inputs.method == kSingle) CheckSingle(waves, findings);
    CheckStrength(waves, findings);
}

}  // namespace qvre
