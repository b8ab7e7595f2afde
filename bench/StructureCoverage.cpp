// Whether the errors of a fit hold the truth, on simulated measurements: Cu(001) whose first layer is relaxed
// by -3 percent, counts with their noise in a sector, an unknown turn and scale, starts 0.3 angstrom off.
// Prints a table; the number of seeds is the argument, 200 without one.

#include <fmt/format.h>

#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "foundation/ReplacedFile.h"
#include "structure/SimulatedMeasurement.h"
#include "structure/StructureFit.h"

using namespace qvre;

namespace {

constexpr const char* kRecipe = R"(
[parameters]
d12 = { start = 1.751, lower = 1.2, upper = 2.3, unit = "angstrom" }
d23 = { start = 1.805, lower = 1.25, upper = 2.35, unit = "angstrom" }
[cluster]
preset = "fcc"
elements = ["Cu"]
lattice = "3.61 angstrom"
surface = [0, 0, 1]
emitter-layer = 3
atoms = 28
[cluster.relax]
d12 = "d12"
d23 = "d23"
[emission]
level = "3s"
kinetic = "300 eV"
polarisation = [0, 0, 1]
[phases]
zero = "-6 eV"
[thermal]
temperature = "100 K"
[scattering]
method = "FULL"
[image]
resolution = "3 deg"
[compare]
rotate = true
[fit.simulate]
counts = 500
rotation = 17
theta = [0, 66]
phi = [0, 100]
step = 5
[fit.simulate.shake]
d12 = 0.3
d23 = 0.3
)";

struct Covered {
    std::string name;
    double truth = 0.0;
    int byNoise = 0;
    int byLevel = 0;
    double noise = 0.0;
    double pull = 0.0;  ///< deviation in noise errors, and its square
    double squaredPull = 0.0;
    double width = 0.0;
};

void Count(const FitReport& report, std::vector<Covered>& covered) {
    for (std::size_t i = 0; i < covered.size(); ++i) {
        Covered& one = covered[i];
        const double sigma = *report.noise->sigma[i];
        const RLevelError& level = report.levels[i];
        const double lower = level.lower.value_or(-HUGE_VAL);
        const double upper = level.upper.value_or(HUGE_VAL);
        one.byNoise += std::abs(report.best.point[i] - one.truth) <= sigma ? 1 : 0;
        one.byLevel += lower <= one.truth && one.truth <= upper ? 1 : 0;
        one.noise += sigma;
        const double pull = (report.best.point[i] - one.truth) / sigma;
        one.pull += pull;
        one.squaredPull += pull * pull;
        one.width += 0.5 * (upper - lower);
    }
}

}  // namespace

int main(int argumentCount, char** arguments) {
    const int seeds = argumentCount > 1 ? std::atoi(arguments[1]) : 200;
    const std::string folder =
        (std::filesystem::temp_directory_path() / fmt::format("qvre-coverage-{}", getpid())).string();
    std::filesystem::create_directories(folder);
    const std::string recipe = folder + "/recipe.toml";
    WriteWholeFile(recipe, kRecipe);
    std::vector<Covered> covered = {{"d12"}, {"d23"}};
    int fitted = 0;
    int evaluations = 0;
    double independent = 0.0;
    for (int seed = 1; seed <= seeds; ++seed) {
        FitPlan plan = PlanFit(recipe, {});
        const Simulation made = SimulateMeasurements(plan, static_cast<std::uint64_t>(seed), folder);
        for (const auto& [path, text] : made.files) WriteWholeFile(path, text);
        for (std::size_t i = 0; i < covered.size(); ++i) covered[i].truth = made.truth[i];
        std::filesystem::remove(folder + "/evaluations.csv");
        EvaluationTable table(folder + "/evaluations.csv", plan.space, {"data"});
        StructureFit fit(plan, table);
        const FitReport report = fit.Run();
        evaluations += report.evaluations;
        independent = report.independentData;
        const bool hasErrors = report.noise && report.levels.size() == covered.size() &&
                               report.noise->sigma[0] && report.noise->sigma[1];
        if (!hasErrors) continue;
        ++fitted;
        Count(report, covered);
    }
    std::filesystem::remove_all(folder);
    fmt::print(
        "{} simulated measurements, N = {:.0f}; {} fits have errors; {} evaluations each, with all errors\n",
        seeds, independent, fitted, evaluations / seeds);
    for (const Covered& one : covered)
        fmt::print(
            "  {}  noise {:.4f} angstrom holds the truth in {:5.1f} % (68.3 expected); off by {:.2f}, root "
            "of "
            "mean square {:.2f} of it; R level {:.4f} in {:5.1f} %\n",
            one.name, one.noise / fitted, 100.0 * one.byNoise / seeds, one.pull / fitted,
            std::sqrt(one.squaredPull / fitted), one.width / fitted, 100.0 * one.byLevel / seeds);
}
