#include "recipe/MethodChoice.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <sstream>

#include "foundation/ProgramFile.h"
#include "multiple/FullScattering.h"
#include "prepare/checks/NearestNeighbours.h"
#include "prepare/cluster/ClusterMaking.h"
#include "recipe/RecipeSettings.h"
#include "run/RunProgress.h"
#include "scattering/ZfFreeElectron.h"

namespace qvre {

namespace {

constexpr double kWorthTelling_s = 1.0;

/// What a cluster says about the cost.
struct ClusterSize {
    std::vector<double> atoms;  ///< of each structure
    double radius_m = 0.0;      ///< half the largest distance of nearest neighbours
};

/// What the emitted waves say.
struct WavesSize {
    double waves = 0.0;
    double kinetic_eV = 0.0;
    bool arePlane = false;
};

ClusterSize SizeOf(const Cluster& cluster) {
    ClusterSize size;
    constexpr double kHalfAngstrom_m = 0.5e-10;
    for (const Structure& structure : cluster.structures) {
        size.atoms.push_back(static_cast<double>(structure.atoms.size()));
        for (const Neighbour& neighbour : NearestNeighbours(structure.atoms))
            if (std::isfinite(neighbour.distance_angstrom))
                size.radius_m = std::max(size.radius_m, kHalfAngstrom_m * neighbour.distance_angstrom);
    }
    return size;
}

/// Phase shifts beyond k R are small; those of usual cuts end somewhat below.
double UsualLSize(const WavesSize& waves, const ClusterSize& cluster, double lMax) {
    ZfFreeElectron electron;
    electron.SetEnergy_eV(waves.kinetic_eV);
    return std::min(std::ceil(0.9 * electron.k * cluster.radius_m), lMax) + 1.0;
}

/// Reads of the cases what their cost by FULL depends on.
class CostReader {
public:
    explicit CostReader(const RecipeFolder& place) : place_(place) {}

    /// Of one calculation; infinite for what FULL does not take.
    double Seconds(const RecipeCase& one);

private:
    struct KnownCluster {
        ClusterFacts facts;
        ClusterSize size;
    };
    const KnownCluster& ClusterOf(RecipeTable section);
    WavesSize WavesOf(RecipeTable section, const ClusterFacts& facts) const;
    double LSizeOf(RecipeTable section, const KnownCluster& cluster, const WavesSize& waves) const;

    const RecipeFolder& place_;
    std::map<std::string, KnownCluster> clusters_;  // by the text of their section
};

const CostReader::KnownCluster& CostReader::ClusterOf(RecipeTable section) {
    const auto [known, isNew] = clusters_.try_emplace(section.Content());
    if (!isNew) return known->second;
    Cluster cluster;
    if (const auto ready = ReadReadyFile(section, place_)) {
        cluster = LoadReady<Cluster>(section, *ready, ZfLoadCluster);
        known->second.facts = section.Made("file", [&] { return FactsOf(cluster); });
    } else {
        const ClusterRequest request = ReadClusterRequest(section, place_);
        cluster = section.Made("", [&] { return MakeCluster(request).cluster; });
        known->second.facts = FactsOf(request);
    }
    known->second.size = SizeOf(cluster);
    return known->second;
}

WavesSize CostReader::WavesOf(RecipeTable section, const ClusterFacts& facts) const {
    if (const auto ready = ReadReadyFile(section, place_)) {
        WavesSize size;
        for (const EmittedWave& wave :
             LoadReady<std::vector<EmittedWave>>(section, *ready, ZfLoadEmittedWave)) {
            size.waves += 1.0;
            size.kinetic_eV = std::max(size.kinetic_eV, wave.Ek);
            size.arePlane = size.arePlane || wave.IsPlaneWave;
        }
        return size;
    }
    const WavesRequest request = ReadWavesRequest(section, facts);
    if (request.isotropic) return {1.0, KineticEnergyOf(request, facts), false};
    const int l = request.emission.level.l;
    return {l == 0 ? 3.0 : 4.0 * l + 2.0, KineticEnergyOf(request, facts), false};
}

double CostReader::LSizeOf(RecipeTable section, const KnownCluster& cluster, const WavesSize& waves) const {
    if (const auto ready = ReadReadyFile(section, place_)) {
        std::int64_t size = 1;
        for (const PhaseShiftRecord& record :
             LoadReady<ZfPhaseShiftDocument>(section, *ready, ZfLoadPhaseShift).records)
            size = std::max(size, std::int64_t{record.scatteringFactors.Count()});
        return static_cast<double>(size);
    }
    const PhaseShiftRequest request = ReadPhaseShiftRequest(section, cluster.facts);
    return UsualLSize(waves, cluster.size, request.limits.lMax);
}

double CostReader::Seconds(const RecipeCase& one) {
    RecipeTable recipe(&one.settings, "recipe");
    const ScatteringSection scattering = ReadScatteringSection(recipe.Section("scattering"));
    const ImageSection image = ReadImageSection(recipe.Section("image"));
    const KnownCluster& cluster = ClusterOf(recipe.Section("cluster"));
    const WavesSize waves = WavesOf(recipe.Section("emission"), cluster.facts);
    if (waves.arePlane || image.request.emergence.meanFreePath > 0.0) return HUGE_VAL;
    FullScatteringSize size;
    size.waves = waves.waves;
    size.lSize = LSizeOf(recipe.Section("phases"), cluster, waves);
    size.tolerance = scattering.request.full.tolerance;
    double seconds = 0.0;
    for (const double atoms : cluster.size.atoms) {
        size.atoms = atoms;
        seconds += NominalSeconds(size);
    }
    return seconds;
}

}  // namespace

MethodChoice ChooseMethod(const std::vector<RecipeGroup>& groups, const RecipeFolder& place,
                          double affordable_s) {
    RecipeTable recipe(&groups.front().cases.front().settings, "recipe");
    if (const auto given = ReadScatteringSection(recipe.Section("scattering")).method) return {*given, {}};
    CostReader cost(place);
    double seconds = 0.0;
    for (const RecipeGroup& group : groups)
        for (const RecipeCase& one : group.cases) {
            seconds += cost.Seconds(one);
            if (std::isinf(seconds)) return {kMulti, "method MULTI, as FULL takes no such waves or damping"};
        }
    if (seconds < kWorthTelling_s) return {kFull, "method FULL"};
    if (seconds < affordable_s)
        return {kFull, fmt::format("method FULL, which takes about {}", DurationText(seconds))};
    return {kMulti, fmt::format("method MULTI; FULL would take about {}", DurationText(seconds))};
}

}  // namespace qvre
