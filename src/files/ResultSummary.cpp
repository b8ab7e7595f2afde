#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

#include "files/FileSummary.h"
#include "foundation/Text.h"
#include "foundation/ZfFloatMatrix3D.h"

// Summaries of what a run makes: the scattered waves and the images.

namespace qvre {

namespace {

std::string LabelCounts(const std::vector<std::string>& labels) {
    std::map<std::string, std::size_t> counts;
    for (const std::string& label : labels) ++counts[label];
    std::string text;
    for (const auto& [label, count] : counts) text += ", " + label + " " + std::to_string(count);
    return text;
}

std::string RecordText(const ZfScatteringRecord& record) {
    const ZfVectorFreeElectron& list = record.ListScatterer;
    std::string text = "structure ";
    text += std::to_string(record.StIndex) + ", wave " + std::to_string(record.EWIndex) + ": " +
            DoubleToText(list.Ek_eV) + " eV, " + Counted(list.electrons.size(), "atom") +
            LabelCounts(record.atomLabels) + ", ";
    if (list.electrons.empty()) return text + "empty";
    const ZfFreeElectron& emitter = list.electrons.front();
    text += emitter.IsPlaneWave ? "plane wave" : "emitted l size " + std::to_string(emitter.A.L);
    std::int32_t largest = 0;
    double farthest = 0.0;
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (std::size_t i = 0; i < list.electrons.size(); ++i) {
        const ZfFreeElectron& source = list.electrons[i];
        if (i > 0) largest = std::max(largest, source.A.L);
        farthest = std::max(farthest, std::sqrt(NormSquared(source.position)));
        low = std::min(low, source.Uiso * 1e20);
        high = std::max(high, source.Uiso * 1e20);
    }
    return text + ", scattered " + std::to_string(largest) + ", farthest atom " +
           DoubleToText(farthest * 1e10) + " angstrom, Uiso " + RangeText(low, high) + " angstrom^2";
}

std::string MethodText(std::int32_t method) {
    return WordFor(static_cast<ScatteringMethod>(method), std::to_string(method));
}

std::string ValuesText(const float* begin, std::int64_t count) {
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    double sum = 0.0;
    std::int64_t numbers = 0;
    for (std::int64_t i = 0; i < count; ++i) {
        const double value = begin[i];
        if (!std::isfinite(value)) continue;
        low = std::min(low, value);
        high = std::max(high, value);
        sum += value;
        ++numbers;
    }
    if (numbers == 0) return "no finite value";
    std::string text = RangeText(low, high);
    text += ", mean " + DoubleToText(sum / static_cast<double>(numbers));
    if (numbers < count) text += ", " + std::to_string(count - numbers) + " not finite";
    return text;
}

std::string MatrixText(const ZfFloatMatrix& matrix) {
    std::string text = std::to_string(matrix.ColSize);
    return text + " x " + std::to_string(matrix.RowSize) + ", values " +
           ValuesText(matrix.Data(), matrix.Count());
}

std::string MatrixText(const ZfFloatMatrix3D& voxels) {
    std::string text = std::to_string(voxels.ColSize);
    return text + " x " + std::to_string(voxels.RowSize) + " x " + std::to_string(voxels.DepthSize) +
           ", values " + ValuesText(voxels.Data(), voxels.Count());
}

template <class Matrix>
std::string SetText(const std::string& noun, const std::map<float, Matrix>& set) {
    std::string text;
    if (set.empty()) return text;
    text = "  " + Counted(set.size(), noun) + "\n";
    for (const auto& [key, matrix] : set)
        text += "    " + FloatToText(key) + ": " + MatrixText(matrix) + "\n";
    return text;
}

const std::string& AsText(const std::string& text) {
    return text;
}

std::string AsText(double value) {
    return DoubleToText(value);
}

/// The first of a list stands for it.
template <class Item>
std::string InfoText(const std::string& key, const std::vector<Item>& list) {
    std::string text = "  ";
    text += key + ": ";
    if (!list.empty()) text += AsText(list.front());
    return text + (list.size() > 1 ? ", ...\n" : "\n");
}

}  // namespace

std::string ScatteredWaveSummary(const ZfScatteringData& data) {
    const std::vector<ZfScatteringRecord>& records = data.ListScatteringData;
    std::string text = "scattered waves\n  method ";
    text += MethodText(data.Version) + (data.Version == kFull ? ", residual " : ", tolerance ") +
            DoubleToText(data.EPS) + "\n  " + Counted(records.size(), "record") + "\n";
    for (std::size_t i = 0; i < std::min(records.size(), kLongestList); ++i)
        text += "  " + RecordText(records[i]) + "\n";
    if (records.size() > kLongestList)
        text += "  ... and " + std::to_string(records.size() - kLongestList) + " more\n";
    return text;
}

std::string ImageSummary(const ZfDocData& document, std::int32_t version) {
    std::string text = "images, version ";
    text += std::to_string(version) + "\n" + SetText("image", document.imageSet) +
            SetText("wave", document.waveSet) + SetText("voxel block", document.voxelSet);
    for (const auto& [key, list] : document.infoString) text += InfoText(key, list);
    for (const auto& [key, list] : document.infoValue) text += InfoText(key, list);
    return text;
}

}  // namespace qvre
