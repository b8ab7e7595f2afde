#include "run/PartialScattering.h"

#include <fmt/format.h>

#include <filesystem>
#include <system_error>

#include "foundation/ZfError.h"
#include "run/Fingerprint.h"
#include "xml/ZfBarnFile.h"

namespace qvre {

namespace {

namespace fs = std::filesystem;

/// Of everything that the scattered waves depend on.
std::string FingerprintOfCalculation(const ScatteringRequest& request) {
    std::string text = fmt::format("{} {} {} {}", QVRE_VERSION, static_cast<int>(request.method),
                                   request.full.meanFreePath, request.full.tolerance);
    for (const std::string& file :
         {request.clusterFile, request.wavesFile, request.phaseShiftFile, request.meanFreePathFile,
          request.fluctuationFile, request.atomicWeightFile})
        text += " " + (file.empty() ? std::string() : FingerprintOfFile(file));
    return FingerprintOf(text);
}

}  // namespace

PartialScattering::PartialScattering(const ScatteringRequest& request, const std::string& output) {
    constexpr std::size_t kDigits = 16;
    const fs::path path = output;
    start_ = (path.parent_path() / ("." + path.filename().string() + ".part-")).string();
    path_ = start_ + FingerprintOfCalculation(request).substr(0, kDigits);
}

void PartialScattering::Load(ZfScatteringData& data) const {
    if (!fs::exists(path_)) return;
    try {
        ZfLoadScatteredWave(data, path_);
    } catch (const ZfError&) {
        data = ZfScatteringData();
    }
}

void PartialScattering::Save(ZfScatteringData& data) const {
    ReplacedFile file(path_);
    WriteScatteredWaves(data, file);
}

void PartialScattering::Remove() const {
    const fs::path start = start_;
    const fs::path folder = start.has_parent_path() ? start.parent_path() : ".";
    std::error_code failure;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, failure))
        if (entry.path().filename().string().starts_with(start.filename().string()))
            fs::remove(entry.path(), failure);
}

void WriteScatteredWaves(ZfScatteringData& data, ReplacedFile& output) {
    output.Write([&data](const std::string& path) {
        ZfBarnFile file(path, "w");
        data.Exchange(file);
        file.Save();
    });
    output.Commit();
}

}  // namespace qvre
