#include "recipe/ImageSteps.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>

#include "foundation/ZfError.h"
#include "recipe/CaseFiles.h"
#include "report/sphere/ImageSum.h"
#include "run/Fingerprint.h"
#include "run/RunStages.h"

namespace qvre {

RunResult AddImages(RunDraft& draft, const RecipeCase& one) {
    const CasePlan plan = AddCaseFiles(draft, one);
    const std::string suffix = SuffixOf(one, kImageSections);
    RunResult result{LabelOf(SuffixOf(one, kComparedSections)), "pattern" + suffix + ".xml_img",
                     "i0" + suffix + ".xml_img", draft.KeyOf(one, "images" + plan.choices, kImageSections)};
    result.kinetic_eV = plan.kinetic_eV;
    result.largestKinetic_eV = plan.kinetic_eV;
    result.imageLabel = LabelOf(suffix);
    for (const RecipeVariation& variation : one.variations)
        if (!variation.isScanned) result.member += (result.member.empty() ? "" : "_") + variation.label;
    result.clusters = {std::filesystem::path(plan.scattering.clusterFile).filename().string()};
    const std::string image = draft.InFolder(result.image);
    const std::string directImage = draft.InFolder(result.directImage);
    draft.Add({"images",
               result.key,
               {result.image, result.directImage},
               [request = plan.images, image, directImage] {
                   CalculateImages(request, image, directImage);
                   return std::string();
               }});
    return result;
}

RunResult AddSum(RunDraft& draft, const std::vector<RunResult>& members, const RecipeGroup& group) {
    RecipeCase scanned;
    for (const RecipeVariation& variation : group.cases.front().variations)
        if (variation.isScanned) scanned.variations.push_back(variation);
    const std::string suffix = SuffixOf(scanned, kImageSections);
    std::string key;
    for (const RunResult& member : members) key += member.key;

    RunResult sum{LabelOf(SuffixOf(scanned, kComparedSections)), "pattern" + suffix + "_sum.xml_img",
                  "i0" + suffix + "_sum.xml_img", FingerprintOf(key)};
    sum.imageLabel = LabelOf(suffix);
    std::vector<double> kinetic_eV;
    std::vector<WeightedImage> images;
    std::vector<WeightedImage> directImages;
    for (const RunResult& member : members) {
        kinetic_eV.push_back(member.kinetic_eV);
        sum.largestKinetic_eV = std::max(sum.largestKinetic_eV, member.kinetic_eV);
        sum.clusters.insert(sum.clusters.end(), member.clusters.begin(), member.clusters.end());
        images.push_back({draft.InFolder(member.image)});
        directImages.push_back({draft.InFolder(member.directImage)});
    }
    sum.kinetic_eV = CommonEnergy(kinetic_eV);
    const std::string image = draft.InFolder(sum.image);
    const std::string directImage = draft.InFolder(sum.directImage);
    draft.Add({"sum", sum.key, {sum.image, sum.directImage}, [=] {
                   SumImages(images, image);
                   SumImages(directImages, directImage);
                   return std::string();
               }});
    return sum;
}

void AddAsymmetry(RunDraft& draft, const std::vector<RunResult>& members) {
    if (members.size() != 2 || !draft.plan.scanned.empty())
        throw ZfError(fmt::format(
            "{}: series = \"asymmetry\" is that of two members, such as circular = [\"left\", \"right\"], "
            "and not of {}",
            draft.recipePath, draft.plan.scanned.empty() ? std::to_string(members.size()) : "a scan"));
    const std::string key = FingerprintOf(members[0].key + members[1].key);
    const std::string image = draft.InFolder("asymmetry.xml_img");
    draft.Add({"asymmetry",
               key,
               {"asymmetry.xml_img"},
               [image, a = draft.InFolder(members[0].image), b = draft.InFolder(members[1].image)] {
                   return SaveAsymmetry(a, b, image);
               }});
    PatternPlot plot;
    plot.images = {image};
    plot.output = draft.InFolder("asymmetry.png");
    plot.title = draft.plan.title + ", asymmetry";
    draft.Add({"picture", FingerprintOf(key + plot.title), {"asymmetry.png"}, [plot] {
                   DrawPatternPlot(plot);
                   return std::string();
               }});
}

void AddPicture(RunDraft& draft, const RunResult& result, const RecipePicture& picture) {
    const std::string name = LabelledName(result.imageLabel, picture.plot.output);
    PatternPlot plot = PlotOf(picture, draft.InFolder(result.image), draft.InFolder(result.directImage),
                              draft.InFolder(name));
    Instrument& instrument = plot.instrument;
    if (instrument.innerPotential && instrument.energy == 0.0) {
        instrument.energy = result.kinetic_eV;
        if (!(*instrument.innerPotential < instrument.energy))
            throw ZfError(
                fmt::format("{}: [[picture]] {}: inner-potential has to be below the kinetic energy "
                            "inside, {}",
                            draft.recipePath, picture.plot.output,
                            instrument.energy > 0.0 ? fmt::format("{:g} eV", instrument.energy)
                                                    : "and there are several: give energy"));
    }
    if (plot.title.empty()) plot.title = draft.plan.title;
    if (!result.imageLabel.empty()) plot.title += ", " + result.imageLabel;
    draft.Add({"picture", FingerprintOf(result.key + picture.settings + plot.title), {name}, [=] {
                   return fmt::format("{}", fmt::join(DrawPatternPlot(plot).leftOut, "\n"));
               }});
}

}  // namespace qvre
