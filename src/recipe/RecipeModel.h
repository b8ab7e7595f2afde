#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "prepare/cluster/ClusterSelection.h"
#include "recipe/RecipeCases.h"
#include "recipe/RecipeInputs.h"
#include "run/ModelCalculation.h"

namespace qvre {

/// What was made last, by the text of all that it depends on.
template <class Value>
class LastMade {
public:
    /// The value of the key, made anew if it is none of the last ones. Called from several threads.
    template <class Make>
    std::shared_ptr<const Value> Get(const std::string& key, const Make& make) {
        {
            const std::lock_guard lock(mutex_);
            for (const auto& [known, value] : values_)
                if (known == key) return value;
        }
        auto made = std::make_shared<const Value>(make());
        const std::lock_guard lock(mutex_);
        if (values_.size() == kMost) values_.erase(values_.begin());
        values_.emplace_back(key, made);
        return made;
    }

private:
    static constexpr std::size_t kMost = 4;

    std::mutex mutex_;
    std::vector<std::pair<std::string, std::shared_ptr<const Value>>> values_;
};

/// A case of a recipe with all inputs of its calculation.
struct PreparedCase {
    ModelInputs inputs;
    ModelMethod method;
    CountingRequest counting;
    std::string scatteringKey;  ///< the text of all that the scattered waves depend on
    double kinetic_eV = 0.0;    ///< inside
    CrystalCell surface;        ///< the slab of a surface that was built, see MadeCluster
};

/// A case of a recipe, calculated in memory for one set of parameters after the other. What no parameter
/// changes is made once.
class RecipeModel {
public:
    /// `start` tells which atoms stand in the clusters and, if they are kept, the phase shifts and radial
    /// integrals of its structure. Throws ZfError as PlanRecipe.
    RecipeModel(const RecipeCase& start, RecipeFolder place, ScatteringMethod method, bool keepsPhases);

    /// Throws ZfError for a case that cannot be calculated. Called from several threads, as are the others.
    PreparedCase Prepare(const RecipeCase& one) const;

    CountedIntensity Intensity(const PreparedCase& prepared, const FarFieldDirections& directions) const;

private:
    struct Emitted {
        std::vector<EmittedWave> waves;
        std::optional<DipoleSource> source;
        double kinetic_eV = 0.0;
    };
    struct CutCluster {
        Cluster cluster;
        std::vector<EmitterShare> emitters;
        ClusterFacts facts;
        std::optional<CrystalCell> crystal;  ///< none of a ready cluster
        CrystalCell slab;                    ///< of MadeCluster
    };

    CutCluster ClusterOf(RecipeTable section) const;
    Emitted MakeEmitted(const RecipeTable& recipe, const CutCluster& cluster) const;
    ZfPhaseShiftDocument MakePhases(const RecipeTable& recipe, const CutCluster& cluster,
                                    const Emitted& emitted) const;
    Fluctuation FluctuationOf(const RecipeTable& recipe, const CutCluster& cluster) const;
    double MeanFreePath_m(const RecipeTable& recipe, const CutCluster& cluster, const Emitted& emitted) const;

    RecipeFolder place_;
    ScatteringMethod method_;
    bool keepsPhases_;
    std::optional<ClusterSelection> selection_;  // none for a ready cluster
    CutCluster start_;
    ZfDebye weights_;
    mutable LastMade<Emitted> emitted_;
    mutable LastMade<ZfPhaseShiftDocument> phases_;
    mutable LastMade<ZfScatteringData> scattered_;
};

}  // namespace qvre
