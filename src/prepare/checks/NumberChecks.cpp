#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "prepare/checks/FindingTexts.h"
#include "prepare/checks/PartChecks.h"

namespace qvre {

namespace {

bool IsFinite(double number) {
    return std::isfinite(number);
}

bool IsFinite(const std::vector<double>& numbers) {
    return std::all_of(numbers.begin(), numbers.end(), [](double number) { return std::isfinite(number); });
}

bool IsFinite(const std::vector<std::vector<double>>& rows) {
    return std::all_of(rows.begin(), rows.end(), [](const auto& row) { return IsFinite(row); });
}

bool IsFinite(const ZfLDoubleMatrix& matrix) {
    return std::all_of(matrix.Data(), matrix.Data() + matrix.Count(),
                       [](double number) { return std::isfinite(number); });
}

bool IsFinite(const ClusterAtom& atom) {
    return IsFinite(atom.position) && IsFinite(atom.U) && IsFinite(atom.valency);
}

bool IsFinite(const EmittedWave& wave) {
    const bool coefficients =
        std::all_of(wave.coeff.block.begin(), wave.coeff.block.end(),
                    [](const auto& c) { return std::isfinite(c.real()) && std::isfinite(c.imag()); });
    return coefficients && IsFinite({wave.Ek, wave.Ratio, wave.PlaneWaveBeta_deg, wave.PlaneWaveGamma_deg});
}

bool IsFinite(const PhaseShiftRecord& record) {
    const RadialTables& radial = record.radial;
    return IsFinite(record.Ek_eV) && IsFinite(record.PhaseShiftValue) && IsFinite(radial.EPS_DIFF_EQ_) &&
           IsFinite(radial.LnX) && IsFinite(radial.L) && IsFinite(radial.DLDLnX) && IsFinite(radial.P) &&
           IsFinite(radial.DPDLnX);
}

void Report(const std::string& what, InputFindings& findings) {
    findings.push_back({Severity::kMisfit, what + " not a number, or infinite",
                        "correct the file, or make it again: a run would spread it over the whole image"});
}

/// Appends the places of what is not finite; false without any.
template <class Item, class Text>
bool ReportItems(const std::vector<Item>& items, Text text, InputFindings& findings) {
    const std::size_t before = findings.size();
    for (std::size_t i = 0; i < items.size(); ++i)
        if (!IsFinite(items[i])) Report(text(items[i], i), findings);
    return findings.size() > before;
}

bool ReportAtoms(const Cluster& cluster, InputFindings& findings) {
    const std::size_t before = findings.size();
    for (std::size_t s = 0; s < cluster.structures.size(); ++s)
        ReportItems(
            cluster.structures[s].atoms,
            [&](const ClusterAtom& atom, std::size_t i) {
                return fmt::format("{}atom {} ({}) has a position, displacement or valency that is",
                                   StructurePrefix(cluster, s), i, atom.name);
            },
            findings);
    return findings.size() > before;
}

}  // namespace

InputSet CheckNumbers(const InputSet& inputs, InputFindings& findings) {
    InputSet sound = inputs;
    if (inputs.cluster && ReportAtoms(*inputs.cluster, findings)) sound.cluster = nullptr;
    const auto waveText = [](const EmittedWave&, std::size_t i) {
        return fmt::format("wave {} has an energy, angle, weight or coefficient that is", i);
    };
    if (inputs.waves && ReportItems(*inputs.waves, waveText, findings)) sound.waves = nullptr;
    const auto recordText = [](const PhaseShiftRecord& record, std::size_t i) {
        return fmt::format("phase-shift record {} ({}) has an energy, phase shift or radial table that is", i,
                           record.AtomName);
    };
    if (inputs.phaseShifts && ReportItems(inputs.phaseShifts->records, recordText, findings))
        sound.phaseShifts = nullptr;
    if (inputs.fluctuation && !(IsFinite(inputs.fluctuation->Temperature_K_) &&
                                IsFinite(inputs.fluctuation->DebyeTemperature_K_))) {
        Report("the fluctuation file has a temperature that is", findings);
        sound.fluctuation = nullptr;
    }
    return sound;
}

}  // namespace qvre
