#pragma once

#include <optional>
#include <string>
#include <vector>

#include "recipe/RecipeTable.h"
#include "report/picture/PatternPlot.h"

namespace qvre {

enum class PictureQuantity { kModulation, kIntensity, kDirect };

template <>
inline constexpr auto kWords<PictureQuantity> =
    std::to_array<Word<PictureQuantity>>({{"chi", PictureQuantity::kModulation},
                                          {"intensity", PictureQuantity::kIntensity},
                                          {"direct", PictureQuantity::kDirect}});

/// One picture that a recipe asks for, of every result.
struct RecipePicture {
    PictureQuantity quantity = PictureQuantity::kModulation;
    PatternPlot plot;      ///< without the images; `output` is the file name that the recipe gives
    std::string settings;  ///< all settings as text
};

/// Throws ZfError for the name of a picture that would not land in the result folder.
void CheckResultName(const RecipeTable& section, const std::string& key, const std::string& name);

/// The key "background": "mean", or the degree of a polynomial. Throws ZfError.
std::optional<BackgroundModel> ReadBackgroundModel(RecipeTable& section);

/// The keys "fold", "mirror", "acceptance", "inner-potential" and "energy". Throws ZfError.
Instrument ReadInstrument(RecipeTable& section);  // the energy may be left to the waves

/// Fails at the key of an inner potential that leaves an electron of the kinetic energy inside no way out; an
/// energy of 0 is not known yet.
void CheckRefraction(const RecipeTable& section, const Instrument& instrument, double energy_eV);

/// The [[picture]] tables of a recipe; without any, one of the modulation, "pattern.png", but none in a scan.
/// Throws ZfError, also for two of the same name.
std::vector<RecipePicture> ReadPictures(RecipeTable& recipe);

/// The picture of one result, by full paths.
PatternPlot PlotOf(const RecipePicture& picture, const std::string& image, const std::string& directImage,
                   const std::string& output);

}  // namespace qvre
