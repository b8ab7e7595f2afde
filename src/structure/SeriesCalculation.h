#pragma once

#include <memory>
#include <string>
#include <vector>

#include "recipe/RecipeFit.h"
#include "recipe/RecipeModel.h"

namespace qvre {

/// A calculated pattern with that of the direct wave alone.
struct PatternImages {
    SphereImage intensity;
    SphereImage direct;
    double kinetic_eV = 0.0;  ///< inside
};

/// The calculation behind one measured pattern: the members of a series, whose patterns add up. The functions
/// may be called from several threads.
class SeriesCalculation {
public:
    /// The values of `source` are the start. Throws ZfError as PlanRecipe, and for what no fit compares.
    SeriesCalculation(RecipeSource source, FitPhases phases);

    /// The members with values of parameters, in their units. Throws ZfError.
    std::vector<RecipeCase> Members(const NamedValues& values) const;

    PatternImages Images(const std::vector<RecipeCase>& members) const;
    std::vector<PreparedCase> Inputs(const std::vector<RecipeCase>& members) const;

    const std::string& MethodText() const { return methodText_; }
    /// Whether the method changes smoothly with the places of atoms: MULTI and SLOWMULTI order them.
    bool IsSmooth() const { return isSmooth_; }
    const RecipeFolder& Place() const { return place_; }

private:
    RecipeSource source_;
    RecipeFolder place_;
    std::string methodText_;
    bool isSmooth_ = true;
    std::vector<std::unique_ptr<RecipeModel>> models_;
    std::unique_ptr<MapDirections> map_;
};

}  // namespace qvre
