// Runs the evaluations side by side, with the threads that OpenMP gives, and prints their processor times,
// the ratios and how far the results are apart. Scattering: plain, direct (fast sampling) and translated;
// pattern: plain and fast.
//   qvre_ratios [--full] [--l=15] [--waves=3] [--multi=60,200] [--slowmulti=20] [--pattern=200]
//   [--resolution=1]
// Lists are numbers of atoms, and degrees a pixel; an empty list leaves a part out. --full takes the sizes of
// large runs, which keep the plain evaluation busy for some ten minutes.

#include <omp.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <limits>
#include <map>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "Copper.h"
#include "ExitStatus.h"
#include "foundation/Console.h"
#include "foundation/ZfError.h"
#include "pattern/ZfDocPattern.h"
#include "reference/PlainPattern.h"
#include "reference/PlainScattering.h"
#include "scattering/ScattererLists.h"
#include "scattering/ThermalModels.h"

namespace {

using Options = std::map<std::string, std::vector<double>>;

const Options kModerate = {{"l", {15}},         {"waves", {3}},     {"multi", {60, 200}},
                           {"slowmulti", {20}}, {"pattern", {200}}, {"resolution", {1}}};
const Options kFull = {{"l", {15}},          {"waves", {3}},           {"multi", {200, 1000}},
                       {"slowmulti", {200}}, {"pattern", {200, 1000}}, {"resolution", {1, 0.5}}};

/// Throws ZfError for an option or a number that it does not know.
Options ReadOptions(const std::vector<std::string>& arguments) {
    const bool full = std::find(arguments.begin(), arguments.end(), "--full") != arguments.end();
    Options options = full ? kFull : kModerate;
    for (const std::string& argument : arguments) {
        if (argument == "--full") continue;
        const std::size_t equals = argument.find('=');
        const auto option = argument.starts_with("--") && equals != std::string::npos
                                ? options.find(argument.substr(2, equals - 2))
                                : options.end();
        if (option == options.end()) throw ZfError("Unknown option: " + argument);
        option->second.clear();
        std::istringstream numbers(argument.substr(equals + 1));
        for (std::string text; std::getline(numbers, text, ',');) {
            const double number = std::strtod(text.c_str(), nullptr);
            if (!(number > 0)) throw ZfError("Not a size: " + argument);
            option->second.push_back(number);
        }
    }
    if (options["l"].size() != 1 || options["waves"].size() != 1)
        throw ZfError("One l size and one number of waves, please");
    return options;
}

/// Processor time, all threads together: the best of up to three runs; one that takes seconds is long enough
/// by itself.
double Seconds(const std::function<void()>& run) {
    const ConsoleRedirection quiet(nullptr);
    double best = 1e300;
    double total = 0.0;
    for (int i = 0; i < 3 && total < 2.0; ++i) {
        const std::clock_t start = std::clock();
        run();
        const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        best = std::min(best, seconds);
        total += seconds;
    }
    return best;
}

/// Largest difference by the largest element of the plain one; infinite for other sizes or no numbers.
template <class Element>
double RelativeDifference(std::span<const Element> plainValues, std::span<const Element> fastValues) {
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    if (plainValues.size() != fastValues.size()) return kInfinite;
    double largest = 0.0;
    double difference = 0.0;
    for (std::size_t i = 0; i < plainValues.size(); ++i) {
        const double change = std::abs(plainValues[i] - fastValues[i]);
        if (!std::isfinite(change)) return kInfinite;
        largest = std::max(largest, std::abs(plainValues[i]));
        difference = std::max(difference, change);
    }
    return difference == 0.0 ? 0.0 : difference / largest;
}

std::span<const double> Elements(const ZfLDoubleMatrix& matrix) {
    return {matrix.Data(), static_cast<std::size_t>(matrix.Count())};
}

void PrintRow(const std::string& what, std::size_t atoms, double plainSeconds, double fastSeconds,
              double difference) {
    std::printf("%-22s %6zu %10.3f %10s %10.4f %9.1f %9s %11.1e\n", what.c_str(), atoms, plainSeconds, "",
                fastSeconds, plainSeconds / fastSeconds, "", difference);
    std::fflush(stdout);
}

ZfScatteringData Scatter(ScatteringMethod method, Cluster& cluster, const std::vector<EmittedWave>& waves,
                         const ZfPhaseShiftDocument& phaseShifts, double nearTie) {
    ZfScatteringData data;
    data.Version = method;
    data.MultiScattering = 1;
    data.nearTie = nearTie;
    ZfNotifyTerminateThreadCalculation notifier;
    data.Calculate(notifier, cluster, waves, phaseShifts);
    return data;
}

void CompareScattering(const std::string& what, ScatteringMethod method, std::size_t about,
                       std::int32_t lSize, std::size_t waveCount) {
    const ZfPhaseShiftDocument phaseShifts = copper::PhaseShifts(lSize);
    const std::vector<EmittedWave> waves = copper::EmittedWaves(waveCount);
    Cluster cluster = copper::ClusterOf(about);

    ZfScatteringData translated;
    const double translatedSeconds =
        Seconds([&] { translated = Scatter(method, cluster, waves, phaseShifts, kNearTie); });
    const double directSeconds = Seconds(
        [&] { Scatter(method, cluster, waves, phaseShifts, std::numeric_limits<double>::infinity()); });
    std::vector<plain::Scattering> reference(waveCount);
    const double plainSeconds = Seconds([&] {
        for (std::size_t w = 0; w < waveCount; ++w) {
            ZfScatteringData data;
            const ZfScatteringRecord& record =
                AddScatteringRecord(data, cluster, 0, waves, static_cast<std::int32_t>(w), phaseShifts);
            reference[w] = plain::Scatter(record, phaseShifts, method, data.EPS);
        }
    });

    double difference = 0.0;
    const std::size_t atoms = reference.front().tables.size();
    for (std::size_t w = 0; w < waveCount; ++w)
        for (std::size_t i = 1; i < atoms; ++i)
            difference = std::max(
                difference, RelativeDifference<std::complex<double>>(
                                reference[w].tables[i].block,
                                translated.ListScatteringData[w].NextListScatterer.electrons[i].A.block));
    std::printf("%-22s %6zu %10.3f %10.4f %10.4f %9.1f %9.1f %11.1e\n", what.c_str(), atoms, plainSeconds,
                directSeconds, translatedSeconds, plainSeconds / translatedSeconds,
                directSeconds / translatedSeconds, difference);
    std::fflush(stdout);
}

template <class Map>
void ComparePattern(const std::string& map, double resolution, std::size_t about, std::int32_t lSize) {
    ZfScatteringData data = copper::ScatteredData(about, lSize);
    const Fluctuation fluctuation = copper::RoomTemperature();
    const ZfDebye debye = copper::Weights();

    Map fast;
    fast.resolution = resolution;
    fast.meanFreePath = copper::kMeanFreePath_m;
    fast.mfpByEmitterDistance = true;
    fast.ActivateAll(1);
    ZfNotifyTerminateThreadCalculation notifier;
    const double fastSeconds = Seconds([&] { fast.Calculate(notifier, data, fluctuation, debye); });

    Map reference;
    reference.resolution = resolution;
    const double plainSeconds = Seconds([&] {
        reference.BuildMapping();
        ZfVectorFreeElectron list = data.ListScatteringData.front().ListScatterer;
        ApplyThermalModel(fluctuation, list, debye);
        list.SetMeanFreePath_m(copper::kMeanFreePath_m);
        plain::AddRecord(reference.mapping, fast.orientation, list, 0);
    });

    double difference = 0.0;
    for (std::size_t i = 0; i < 4; ++i)
        difference = std::max(difference, RelativeDifference(Elements(reference.mapping.planes[i]),
                                                             Elements(fast.mapping.planes[i])));
    std::ostringstream what;
    what << "pattern " << map << ", R = " << resolution;
    PrintRow(what.str(), data.ListScatteringData.front().atomLabels.size(), plainSeconds, fastSeconds,
             difference);
}

void Compare(const Options& options) {
    const auto lSize = static_cast<std::int32_t>(options.at("l").front());
    const auto waves = static_cast<std::size_t>(options.at("waves").front());
    std::printf("fcc Cu, 800 eV, l size %d, %zu waves (pattern: 1), %d threads, processor time\n", lSize,
                waves, omp_get_max_threads());
    std::printf("%-22s %6s %10s %10s %10s %9s %9s %11s\n", "what", "atoms", "plain s", "direct s", "fast s",
                "plain by", "direct by", "difference");
    for (const double atoms : options.at("multi"))
        CompareScattering("MULTI", kMulti, static_cast<std::size_t>(atoms), lSize, waves);
    for (const double atoms : options.at("slowmulti"))
        CompareScattering("SLOWMULTI", kSlowMulti, static_cast<std::size_t>(atoms), lSize, waves);
    for (const double atoms : options.at("pattern")) {
        for (const double resolution : options.at("resolution")) {
            const auto about = static_cast<std::size_t>(atoms);
            ComparePattern<ZfDocPattern_AzimuthalEquidistant>("AE", resolution, about, lSize);
            ComparePattern<ZfDocPattern_EquidistantCylindrical>("EC", resolution, about, lSize);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    return ExitStatus([&] { Compare(ReadOptions({argv + 1, argv + argc})); });
}
