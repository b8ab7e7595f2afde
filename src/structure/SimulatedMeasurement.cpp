#include "structure/SimulatedMeasurement.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "fit/RandomNumbers.h"
#include "foundation/ZfError.h"
#include "report/compare/MeasuredPattern.h"
#include "report/compare/SampleSetting.h"
#include "structure/SeriesCalculation.h"

namespace qvre {

namespace {

struct Directions {
    std::vector<double> theta_deg;
    std::vector<double> phi_deg;
};

/// About as many azimuths on a ring as keep the distance of directions.
Directions SectorOf(const FitSimulation& simulation) {
    Directions directions;
    const double width_deg = simulation.phi_deg[1] - simulation.phi_deg[0];
    const auto rings =
        static_cast<int>(1e-9 + (simulation.theta_deg[1] - simulation.theta_deg[0]) / simulation.step_deg);
    for (int ring = 0; ring <= rings; ++ring) {
        const double theta_deg = simulation.theta_deg[0] + ring * simulation.step_deg;
        const double arc_deg = width_deg * std::sin(theta_deg * kDegree);
        const int steps = std::max(1, static_cast<int>(std::lround(arc_deg / simulation.step_deg)));
        for (int i = 0; i < steps; ++i) {
            directions.theta_deg.push_back(theta_deg);
            directions.phi_deg.push_back(simulation.phi_deg[0] + (i + 0.5) * width_deg / steps);
        }
    }
    return directions;
}

/// Those of the measured file that a data set names, or a sector.
Directions DirectionsOf(const RecipeCase& one, const RecipeFolder& place, const FitSimulation& simulation) {
    RecipeTable section = RecipeTable(&one.settings, "recipe").Section("compare");
    const std::string measured = section.Text("measured", "");
    if (measured.empty()) return SectorOf(simulation);
    ScanDirection scan;
    scan.theta = section.Number("measured-theta", RecipeUnit::kDegree);
    scan.phi = section.Number("measured-phi", RecipeUnit::kDegree);
    MeasuredPattern pattern =
        section.Made("measured", [&] { return LoadMeasuredPattern(place.Path(measured), scan); });
    return {std::move(pattern.theta), std::move(pattern.phi)};
}

/// Counts in the directions, with their noise.
std::string CountsTable(const SphereImage& intensity, const Directions& directions,
                        const FitSimulation& simulation, RandomNumbers& random) {
    const SampleFrame frame({simulation.rotation_deg, simulation.thetaOffset_deg, 0.0, 0.0});
    std::vector<double> counts;
    double sum = 0.0;
    for (std::size_t i = 0; i < directions.theta_deg.size(); ++i) {
        const SphereDirection at = frame.InCalculation(directions.theta_deg[i], directions.phi_deg[i]);
        counts.push_back(intensity.Value(at.theta, at.phi));
        if (std::isnan(counts.back()))
            throw ZfError(
                "[fit.simulate]: the polar offset turns directions below the surface: narrow theta");
        sum += counts.back();
    }
    const double scale = simulation.counts * static_cast<double>(counts.size()) / sum;
    std::string text = "theta,phi,counts\n";
    for (std::size_t i = 0; i < counts.size(); ++i) {
        const double mean = scale * counts[i];
        const double noisy = std::max(0.0, std::round(mean + std::sqrt(mean) * random.Normal()));
        text += fmt::format("{},{},{}\n", directions.theta_deg[i], directions.phi_deg[i], noisy);
    }
    return text;
}

/// Both signs are as likely.
double Shaken(const FitParameter& parameter, double truth, const FitSimulation& simulation,
              RandomNumbers& random) {
    const auto given = simulation.shake.find(parameter.name);
    const double shake =
        given == simulation.shake.end() ? 0.25 * (parameter.upper - parameter.lower) : given->second;
    const double shaken = truth + (random.Uniform() < 0.5 ? -shake : shake);
    return std::clamp(shaken, parameter.lower, parameter.upper);
}

}  // namespace

Simulation SimulateMeasurements(FitPlan& plan, std::uint64_t seed, const std::string& folder) {
    const FitSimulation& simulation = plan.fit.simulation;
    Simulation made;
    NamedValues values = simulation.truth;
    for (const FitParameter& parameter : plan.space.parameters)
        made.truth.push_back(values.emplace(parameter.name, parameter.start).first->second);
    RandomNumbers random{seed};
    for (RecipeSource& source : plan.sources) {
        RecipeSource own = source;
        own.values = values;
        const SeriesCalculation calculation(own, FitPhases::kEach);
        const std::vector<RecipeCase> members = calculation.Members(values);
        const std::string file =
            std::filesystem::absolute(folder + "/simulated" +
                                      (source.dataSet.empty() ? "" : "_" + source.dataSet) + ".csv")
                .string();
        made.files[file] =
            CountsTable(calculation.Images(members).intensity,
                        DirectionsOf(members.front(), calculation.Place(), simulation), simulation, random);
        source.settings.emplace_back("compare.measured", file);
        source.settings.emplace_back("compare.sigma", "counts");
    }
    std::vector<FitParameter> parameters = plan.space.parameters;
    for (std::size_t i = 0; i < parameters.size(); ++i)
        parameters[i].start = Shaken(parameters[i], made.truth[i], simulation, random);
    plan.space = ParameterSpace(std::move(parameters), plan.space.derived, plan.space.constants);
    return made;
}

std::string RecoveryText(const FitPlan& plan, const FitPoint& truth, const FitReport& report) {
    std::string text = "recovered from the simulated measurement:\n";
    for (std::size_t i = 0; i < truth.size(); ++i) {
        const FitParameter& parameter = plan.space.parameters[i];
        const double off = report.best.point[i] - truth[i];
        text += fmt::format("  {}: put in {:.5g}, begun at {:.5g}, found {:.5g}", parameter.name, truth[i],
                            parameter.start, report.best.point[i]);
        if (report.noise && report.noise->sigma[i])
            text += fmt::format(", off by {:.1f} noise errors", off / *report.noise->sigma[i]);
        if (i < report.levels.size() && (report.levels[i].lower || report.levels[i].upper)) {
            const RLevelError& level = report.levels[i];
            const bool isInside =
                (!level.lower || *level.lower <= truth[i]) && (!level.upper || truth[i] <= *level.upper);
            text += isInside ? ", within the R level" : ", outside of the R level";
        }
        text += "\n";
    }
    return text;
}

}  // namespace qvre
