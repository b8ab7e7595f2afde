#include "recipe/EnergySteps.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "recipe/CaseFiles.h"
#include "recipe/RecipeTable.h"
#include "run/EnergyStages.h"
#include "run/Fingerprint.h"

namespace qvre {

namespace {

/// The values that tell the curves of the members from each other: not the energy, nor what is summed.
std::string MemberSuffix(const RecipeCase& one, const RecipeEnergies& energies, bool areMembersApart) {
    std::string suffix;
    for (const RecipeVariation& variation : one.variations) {
        const bool isEnergy = variation.section == "emission" && variation.key == energies.Key();
        if (areMembersApart && !variation.isScanned && !isEnergy) suffix += "_" + variation.label;
    }
    return suffix;
}

std::string ScannedSuffix(const RecipeCase& one) {
    std::string suffix;
    for (const RecipeVariation& variation : one.variations)
        if (variation.isScanned) suffix += "_" + variation.label;
    return suffix;
}

RunStep EnergyPoint(const RunDraft& draft, const RecipeEnergies& energies, const RecipeCase& one,
                    const CasePlan& plan) {
    const EnergyPointRequest request = {plan.images.emergence, plan.scattering.wavesFile, energies.directions,
                                        energies.innerPotential_eV};
    const std::string name = "intensity" + SuffixOf(one, kImageSections) + ".csv";
    return {"directions",
            draft.KeyOf(one, "directions " + plan.choices + energies.settings, kImageSections),
            {name},
            [request, path = draft.InFolder(name)] {
                CalculateEnergyPoint(request, path);
                return std::string();
            }};
}

/// The cases stand by energy, those of one energy together.
void AddEnergyCurves(RunDraft& draft, const RecipeEnergies& energies, const std::string& member,
                     const std::vector<const RecipeCase*>& cases, const std::vector<double>& scanned) {
    const std::string suffix = ScannedSuffix(*cases.front()) + member;
    const std::size_t members = cases.size() / energies.values_eV.size();
    std::vector<EnergyTables> tables;
    std::string key = draft.plan.title + suffix + energies.background.Text();
    for (std::size_t i = 0; i < cases.size(); ++i) {
        draft.areStepsNoted = i >= members;
        const RunStep point = EnergyPoint(draft, energies, *cases[i], AddCaseFiles(draft, *cases[i]));
        draft.areStepsNoted = false;
        if (i % members == 0) tables.emplace_back();
        tables.back().files.push_back(draft.InFolder(point.outputs.front()));
        if (energies.byPhotons) tables.back().photon_eV = energies.values_eV[i / members];
        key += point.key;
        draft.Add(point);
    }
    EnergyResult result{LabelOf(suffix), "energies" + suffix + ".csv", scanned, LabelOf(member)};
    result.comparison = ReadEnergyCompare(RecipeTable(&cases.front()->settings, "recipe").Section("compare"),
                                          energies, draft.place, draft.measuredFile)
                            .settings;
    const std::string picture = "energies" + suffix + ".png";
    const EnergyCurvesOutput output = {
        draft.InFolder(result.table), draft.InFolder(picture),
        result.label.empty() ? draft.plan.title : draft.plan.title + ", " + result.label};
    draft.Add({"energies", FingerprintOf(key), {result.table, picture}, [=, model = energies.background] {
                   return CollectEnergies(tables, model, output);
               }});
    draft.plan.energyResults.push_back(std::move(result));
}

}  // namespace

void AddEnergies(RunDraft& draft, const RecipeEnergies& energies, bool areMembersApart,
                 const RecipeGroup& group) {
    std::vector<std::string> members;
    std::map<std::string, std::vector<const RecipeCase*>> cases;
    for (const RecipeCase& one : group.cases) {
        const std::string member = MemberSuffix(one, energies, areMembersApart);
        if (!cases.contains(member)) members.push_back(member);
        cases[member].push_back(&one);
    }
    for (const std::string& member : members)
        AddEnergyCurves(draft, energies, member, cases[member], group.scanned);
}

}  // namespace qvre
