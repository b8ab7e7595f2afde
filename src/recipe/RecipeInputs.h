#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "experiment/Light.h"
#include "foundation/FileReading.h"
#include "prepare/attenuation/MeanFreePath.h"
#include "recipe/RecipeFolder.h"
#include "recipe/RecipeTable.h"
#include "run/InputFiles.h"

namespace qvre {

/// What is known of a cluster before it is made.
struct ClusterFacts {
    std::vector<std::string> names;  ///< of its atoms
    std::vector<std::string> elements;
    std::string emitter;  ///< its element
};

ClusterFacts FactsOf(const ClusterRequest& request);
ClusterFacts FactsOf(const Cluster& cluster);  ///< throws ZfError without an emitter at the origin

// The input sections of a recipe. Each function reads its section whole and refuses what cannot work, so that
// a mistake shows before anything is made. They throw ZfError.

/// The path of the ready file that the section names ("file") instead of its other keys; none without one.
std::optional<std::string> ReadReadyFile(RecipeTable& section, const RecipeFolder& place);

/// Loads a ready file, as a run will; what is wrong with it is told at the key that names it.
template <class Document>
Document LoadReady(const RecipeTable& section, const std::string& path,
                   void (*load)(Document&, const std::string&)) {
    return section.Made("file", [&] {
        return Naming(path, [&] {
            Document document;
            load(document, path);
            return document;
        });
    });
}

ClusterRequest ReadClusterRequest(const RecipeTable& section, const RecipeFolder& place);
/// The same before it is known whether surface, emitters and atoms fit together, which MakeCluster tells as
/// well: for a structure whose atoms are chosen.
ClusterRequest ReadClusterKeys(RecipeTable section, const RecipeFolder& place);
WavesRequest ReadWavesRequest(RecipeTable section, const ClusterFacts& cluster);
/// Inside, eV.
double KineticEnergyOf(const WavesRequest& request, const ClusterFacts& cluster);
PhaseShiftRequest ReadPhaseShiftRequest(RecipeTable section, const ClusterFacts& cluster);

/// The keys of the emission that tell the light: on them the scattering does not depend.
inline constexpr std::array<const char*, 4> kLightKeys = {"polarisation", "unpolarised-along", "circular",
                                                          "along"};

LightFrame ReadLightFrame(RecipeTable recipe);                    ///< of the section "light"
void RefuseLight(RecipeTable recipe, const std::string& source);  ///< which takes none
/// The keys "imfp", a length or "TPP-2M", and "gap"; none without "imfp".
std::optional<MeanFreePathRequest> ReadMeanFreePath(RecipeTable& section);
VibrationRequest ReadVibrationRequest(RecipeTable section, const ClusterFacts& cluster);

}  // namespace qvre
