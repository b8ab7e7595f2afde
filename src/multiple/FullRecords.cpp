#include "multiple/FullRecords.h"

#include <algorithm>
#include <map>
#include <utility>

#include "foundation/ZfError.h"
#include "multiple/VibrationAverage.h"
#include "scattering/ScattererLists.h"
#include "scattering/ThermalModels.h"

namespace qvre {

namespace {

constexpr double kLongestMeasure_s = 2.0;

using Records = std::vector<const ZfScatteringRecord*>;

Vec3 PositionOf(const ZfFreeElectron& electron) {
    const double* const r = electron.position.Data();
    return {r[0], r[1], r[2]};
}

/// Species of the atoms of a record: phase shifts and, unless they are at rest, displacement.
void AddSpecies(const ZfScatteringRecord& record, const ZfPhaseShiftDocument& phaseShifts, bool atRest,
                FullScatteringRequest& request) {
    std::map<std::pair<std::int8_t, double>, std::size_t> known;
    const std::vector<ZfFreeElectron>& atoms = record.ListScatterer.electrons;
    for (std::size_t i = 0; i < atoms.size(); ++i) {
        const double U = atRest ? 0.0 : atoms[i].Uiso;
        const std::int8_t index = record.phaseShiftIndex.VectorValueAt(static_cast<std::int32_t>(i));
        const auto [entry, isNew] = known.try_emplace({index, U}, known.size());
        if (isNew) {
            const PhaseShiftRecord& phases = CheckedAt(phaseShifts.records, index);
            request.listOfSpecies.push_back(
                {phases.AtomName, VibrationAverage(ScatteringFactors(phases), request.k * request.k * U)});
        }
        request.species.push_back(entry->second);
    }
}

/// Without the species.
FullScatteringRequest WavesOf(const Records& records) {
    FullScatteringRequest request;
    const std::vector<ZfFreeElectron>& atoms = records.front()->ListScatterer.electrons;
    request.k = atoms.front().k;
    for (const ZfFreeElectron& atom : atoms) request.positions.push_back(PositionOf(atom));
    for (const ZfScatteringRecord* record : records) {
        const ZfFreeElectron& emitter = record->ListScatterer.electrons.front();
        if (emitter.IsPlaneWave)
            throw ZfError("Full scattering: a plane wave comes from outside; FULL takes waves of an emitter");
        request.waves.push_back({0, emitter.A});
    }
    return request;
}

FullScatteringRequest RequestOf(const Records& records, const ZfPhaseShiftDocument& phaseShifts,
                                const FullScatteringSettings& settings) {
    FullScatteringRequest request = WavesOf(records);
    request.meanFreePath = settings.meanFreePath;
    request.tolerance = settings.tolerance;
    AddSpecies(*records.front(), phaseShifts, false, request);
    return request;
}

FullScatteringRequest AtRest(const Records& records, const ZfPhaseShiftDocument& phaseShifts) {
    FullScatteringRequest request = WavesOf(records);
    AddSpecies(*records.front(), phaseShifts, true, request);
    return request;
}

/// Puts the solution of one wave into its record, with the entry of what the emitter scatters.
void Store(std::vector<ZfLmComplexTable> tables, ZfScatteringRecord& record) {
    std::vector<ZfFreeElectron>& atoms = record.NextListScatterer.electrons;
    atoms = record.ListScatterer.electrons;
    for (std::size_t i = 1; i < atoms.size(); ++i) {
        atoms[i].A = std::move(tables[i]);
        atoms[i].Uiso = 0.0;
    }
    ZfFreeElectron scattered = atoms.front();
    scattered.A = std::move(tables.front());
    scattered.Uiso = 0.0;
    atoms.insert(atoms.begin() + 1, std::move(scattered));
    record.atomLabels.insert(record.atomLabels.begin() + 1, std::string(record.atomLabels.front()));
    ZfCharMatrix index;
    index.SetVectorSize(static_cast<std::int32_t>(atoms.size()));
    for (std::int32_t i = 0; i < index.VectorSize(); ++i)
        index.VectorAt(i) = record.phaseShiftIndex.VectorValueAt(std::max(i - 1, 0));
    record.phaseShiftIndex = index;
    record.ListScatterer = record.NextListScatterer;
}

void SetDisplacements(const FullScatteringInputs& inputs, ZfVectorFreeElectron& list) {
    if (inputs.fluctuation) {
        ApplyThermalModel(*inputs.fluctuation, list, *inputs.weights);
        return;
    }
    for (ZfFreeElectron& atom : list.electrons) atom.Uiso = 0.0;
}

/// Makes room for all records.
void StartRecords(ZfScatteringData& data, const FullScatteringInputs& inputs, ScatteringMethod method) {
    data.Version = method;
    data.MultiScattering = 1;
    data.EPS = 0.0;
    data.EWCount = static_cast<std::int32_t>(inputs.waves.size());
    data.StCount = static_cast<std::int32_t>(inputs.cluster.structures.size());
    data.ListScatteringData.clear();
    data.ListScatteringData.reserve(inputs.waves.size() * inputs.cluster.structures.size());
}

/// Keeps the records of whole structures of the same calculation and makes room for the others. Returns the
/// number of structures that are done.
std::int32_t TakeOver(ZfScatteringData& data, const FullScatteringInputs& inputs) {
    std::vector<ZfScatteringRecord> records = std::move(data.ListScatteringData);
    const double residual = data.EPS;
    const std::size_t waves = inputs.waves.size();
    const bool areWhole = data.Version == kFull && waves > 0 && !records.empty() &&
                          records.size() % waves == 0 &&
                          records.size() / waves < inputs.cluster.structures.size();
    StartRecords(data, inputs, kFull);
    if (!areWhole) return 0;
    data.EPS = residual;
    std::move(records.begin(), records.end(), std::back_inserter(data.ListScatteringData));
    return static_cast<std::int32_t>(records.size() / waves);
}

/// Adds the records of a structure, by the energy of their waves. They must have room.
std::map<double, std::vector<ZfScatteringRecord*>> AddRecords(ZfScatteringData& data,
                                                              const FullScatteringInputs& inputs) {
    std::map<double, std::vector<ZfScatteringRecord*>> byEnergy;
    for (data.EWIndex = 0; data.EWIndex < data.EWCount; ++data.EWIndex) {
        ZfScatteringRecord& record = AddScatteringRecord(data, inputs.cluster, data.StIndex, inputs.waves,
                                                         data.EWIndex, inputs.phaseShifts);
        byEnergy[record.ListScatterer.Ek_eV].push_back(&record);
    }
    return byEnergy;
}

}  // namespace

std::vector<FullScatteringOutcome> ScatterInFull(ZfScatteringData& data, const FullScatteringInputs& inputs,
                                                 const FullScatteringSettings& settings,
                                                 ZfNotifyTerminate& notifier,
                                                 const FullScatteringReports& reports) {
    const std::int32_t done = TakeOver(data, inputs);
    std::vector<FullScatteringOutcome> outcomes;
    for (data.StIndex = done; data.StIndex < data.StCount; ++data.StIndex) {
        for (const auto& [energy, records] : AddRecords(data, inputs)) {
            for (ZfScatteringRecord* record : records) SetDisplacements(inputs, record->ListScatterer);
            const FullScatteringRequest request =
                RequestOf({records.begin(), records.end()}, inputs.phaseShifts, settings);
            if (reports.estimate) reports.estimate(EstimateFullScattering(request));
            FullScattering solution = SolveFullScattering(request, notifier, reports.progress);
            if (solution.interrupted) {
                data.ListScatteringData.clear();
                return {};
            }
            for (std::size_t w = 0; w < records.size(); ++w) Store(std::move(solution.waves[w]), *records[w]);
            outcomes.push_back({request.positions.size(), records.size(), solution.applications,
                                *std::max_element(solution.residual.begin(), solution.residual.end()),
                                std::move(solution.cuts)});
            data.EPS = std::max(data.EPS, outcomes.back().residual);
        }
        if (reports.structureDone && data.StIndex + 1 < data.StCount) reports.structureDone();
    }
    return outcomes;
}

void ScatterOnce(ZfScatteringData& data, const FullScatteringInputs& inputs) {
    StartRecords(data, inputs, kSingle);
    for (data.StIndex = 0; data.StIndex < data.StCount; ++data.StIndex) {
        for (const auto& [energy, records] : AddRecords(data, inputs)) {
            const FullScatteringRequest request =
                AtRest({records.begin(), records.end()}, inputs.phaseShifts);
            std::vector<std::vector<ZfLmComplexTable>> tables = SingleScattering(request);
            for (std::size_t w = 0; w < records.size(); ++w) {
                std::vector<ZfFreeElectron>& atoms = records[w]->NextListScatterer.electrons;
                for (std::size_t i = 1; i < atoms.size(); ++i) atoms[i].A = std::move(tables[w][i]);
                records[w]->ListScatterer = records[w]->NextListScatterer;
            }
        }
    }
}

std::optional<OrderedResultMeasure> MeasureOrderedResult(const ZfScatteringData& data,
                                                         const ZfPhaseShiftDocument& phaseShifts) {
    Records records;
    std::vector<std::vector<ZfLmComplexTable>> tables;
    for (const ZfScatteringRecord& record : data.ListScatteringData) {
        const ZfScatteringRecord& first = data.ListScatteringData.front();
        if (record.StIndex != first.StIndex || record.ListScatterer.Ek_eV != first.ListScatterer.Ek_eV)
            continue;
        records.push_back(&record);
        std::vector<ZfLmComplexTable>& sent = tables.emplace_back();
        for (const ZfFreeElectron& atom : record.ListScatterer.electrons) sent.push_back(atom.A);
        sent.front() = ZfLmComplexTable();  // the emitted wave; the methods let the emitter scatter nothing
    }
    if (records.empty()) return std::nullopt;
    try {
        const FullScatteringRequest request = AtRest(records, phaseShifts);
        const FullScatteringEstimate estimate = EstimateFullScattering(request);
        if (estimate.seconds > kLongestMeasure_s * estimate.applications) return std::nullopt;
        const std::vector<double> missing = MissingScattering(request, tables);
        return OrderedResultMeasure{*std::max_element(missing.begin(), missing.end()), estimate.seconds};
    } catch (const ZfError&) {
        return std::nullopt;
    }
}

}  // namespace qvre
