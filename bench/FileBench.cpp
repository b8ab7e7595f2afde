#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>

#include "Copper.h"
#include "foundation/Console.h"
#include "xml/ZfBarnFile.h"

using namespace qvre;

namespace {

constexpr std::size_t kAtoms = 1000;
constexpr std::int32_t kLSize = 20;

/// A scattered-wave file in a folder of its own, removed with it.
class WaveFile {
public:
    WaveFile() {
        std::string pattern = (std::filesystem::temp_directory_path() / "qvre-bench-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
    }
    WaveFile(const WaveFile&) = delete;
    WaveFile& operator=(const WaveFile&) = delete;
    ~WaveFile() { std::filesystem::remove_all(folder_); }

    std::string Path() const { return folder_ + "/scatteredwave.xml_sf"; }

    void Save(ZfScatteringData& data) const {
        ZfBarnFile file(Path(), "w");
        data.Exchange(file);
        file.Save();
    }

    void SetRate(benchmark::State& state) const {
        state.SetBytesProcessed(state.iterations() *
                                static_cast<std::int64_t>(std::filesystem::file_size(Path())));
    }

private:
    std::string folder_;
};

void SaveScatteredWave(benchmark::State& state) {
    const ConsoleRedirection quiet(nullptr);
    const WaveFile file;
    ZfScatteringData data = copper::ScatteredData(kAtoms, kLSize);
    for (auto _ : state) file.Save(data);
    file.SetRate(state);
}
BENCHMARK(SaveScatteredWave)->UseRealTime()->Unit(benchmark::kMillisecond);

void LoadScatteredWave(benchmark::State& state) {
    const ConsoleRedirection quiet(nullptr);
    const WaveFile file;
    ZfScatteringData saved = copper::ScatteredData(kAtoms, kLSize);
    file.Save(saved);
    ZfScatteringData data;
    for (auto _ : state) {
        data = ZfScatteringData();
        ZfLoadScatteredWave(data, file.Path());
        benchmark::DoNotOptimize(data.ListScatteringData.data());
    }
    const auto wave = [](const ZfScatteringData& d) {
        return d.ListScatteringData.front().ListScatterer.electrons.back().A.block;
    };
    if (data.ListScatteringData.empty() || wave(data) != wave(saved)) state.SkipWithError("waves were lost");
    file.SetRate(state);
}
BENCHMARK(LoadScatteredWave)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
