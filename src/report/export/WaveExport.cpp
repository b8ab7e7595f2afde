#include "report/export/WaveExport.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>

#include "foundation/ZfError.h"
#include "report/export/Hdf5Document.h"
#include "report/export/NexusSettings.h"

namespace qvre {

namespace {

/// l and m of each column of the coefficients.
void WriteIndices(const Hdf5Node& group, std::int32_t size) {
    std::vector<std::int32_t> lOfColumn;
    std::vector<std::int32_t> mOfColumn;
    for (std::int32_t l = 0; l < size; ++l) {
        for (std::int32_t m = -l; m <= l; ++m) {
            lOfColumn.push_back(l);
            mOfColumn.push_back(m);
        }
    }
    group.Dataset("l", {lOfColumn.size()}, lOfColumn);
    group.Dataset("m", {mOfColumn.size()}, mOfColumn);
}

/// A row a source, zeros behind the l size of its table.
void WriteCoefficients(const Hdf5Node& group, const std::vector<ZfFreeElectron>& sources, std::int32_t size) {
    constexpr std::size_t kMostElements = std::size_t{1} << 28U;  // 4 GiB
    const std::size_t columns = static_cast<std::size_t>(size) * static_cast<std::size_t>(size);
    if (columns * sources.size() > kMostElements)
        throw ZfError("The coefficients of a record do not fit into 4 GiB");
    std::vector<std::complex<double>> table(sources.size() * columns);
    std::vector<std::int32_t> sizes;
    for (std::size_t i = 0; i < sources.size(); ++i) {
        const auto& block = sources[i].A.block;
        std::copy(block.begin(), block.end(), table.begin() + static_cast<std::ptrdiff_t>(i * columns));
        sizes.push_back(sources[i].A.L);
    }
    group.Dataset("A", {sources.size(), columns}, table)
        .Attribute("long_name", "coefficients of the outgoing wave, h1_l Y_lm");
    group.Dataset("l_size", {sizes.size()}, sizes);
    WriteIndices(group, size);
}

void WriteSources(const Hdf5Node& group, const ZfScatteringRecord& record) {
    const auto& sources = record.ListScatterer.electrons;
    std::vector<double> positions;
    std::vector<double> displacements;
    std::vector<std::int32_t> atomicNumbers;
    for (const ZfFreeElectron& source : sources) {
        for (std::int32_t axis = 0; axis < 3; ++axis)
            positions.push_back(source.position.VectorValueAt(axis));
        displacements.push_back(source.Uiso);
        atomicNumbers.push_back(source.atomicNumber);
    }
    group.Dataset("position", {sources.size(), 3}, positions).Attribute("units", "m");
    group.Dataset("Uiso", {sources.size()}, displacements).Attribute("units", "m^2");
    group.Dataset("atomic_number", {sources.size()}, atomicNumbers);
    group.Dataset("name", record.atomLabels);
}

/// The vector of an emitter that is a plane wave; absent otherwise.
void WritePlaneWave(const Hdf5Node& group, const std::vector<ZfFreeElectron>& sources) {
    if (!sources.front().IsPlaneWave) return;
    const ZfLDoubleMatrix& q = sources.front().planeWaveVector;
    const std::vector<double> vector = {q.VectorValueAt(0), q.VectorValueAt(1), q.VectorValueAt(2)};
    group.Dataset("plane_wave_vector", {3}, vector).Attribute("units", "1/m");
}

void WriteRecord(const Hdf5Node& entry, std::size_t number, const ZfScatteringRecord& record) {
    const Hdf5Node group = entry.Group(fmt::format("record_{:03}", number), "NXcollection");
    const ZfVectorFreeElectron& list = record.ListScatterer;
    group.Dataset("structure_index", {}, std::vector{record.StIndex});
    group.Dataset("wave_index", {}, std::vector{record.EWIndex});
    group.Dataset("ratio", record.Ratio);
    group.Dataset("kinetic_energy", list.Ek_eV).Attribute("units", "eV");
    group.Dataset("wave_number", list.electrons.front().k).Attribute("units", "1/m");
    WriteSources(group, record);
    WritePlaneWave(group, list.electrons);
    WriteCoefficients(group, list.electrons, list.LargestL());
}

}  // namespace

WaveSummary ExportScatteredWave(const std::string& wavePath, const std::vector<std::string>& runFiles,
                                const std::string& output) {
    if (!Hdf5Document::CanWrite(output))
        throw ZfError("A scattered wave is written as .h5, .hdf5 or .nxs, not as " + output);
    ZfScatteringData data;
    LoadScatteredWaveRecords(data, wavePath);
    RunSettings settings = {{"program", "qvre " QVRE_VERSION, ""},
                            {"scattered_wave_file", std::filesystem::path(wavePath).filename().string(), ""}};
    AddWaveSettings(settings, data);
    for (const std::string& path : runFiles) AddFileSettings(settings, path);

    const Hdf5Document document;
    document.Root().Attribute("default", "entry");
    const Hdf5Node entry = document.Root().Group("entry", "NXentry");
    WriteNexusSettings(entry, settings);
    WaveSummary summary;
    for (const ZfScatteringRecord& record : data.ListScatteringData) {
        WriteRecord(entry, summary.records++, record);
        summary.sources += record.ListScatterer.electrons.size();
        summary.largestL = std::max(summary.largestL, static_cast<int>(record.ListScatterer.LargestL()));
    }
    document.Save(output);
    return summary;
}

}  // namespace qvre
