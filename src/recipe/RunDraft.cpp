#include "recipe/RunDraft.h"

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <utility>

#include "foundation/ProgramFile.h"
#include "foundation/ZfError.h"
#include "run/Fingerprint.h"
#include "run/InputFiles.h"

namespace qvre {

namespace {

bool Contains(const Sections& sections, const std::string& section) {
    return std::find(sections.begin(), sections.end(), section) != sections.end();
}

/// Fingerprints of the tables that the program reads.
std::string ShippedTables() {
    std::string text;
    for (const char* name : {"AtomicWeight.txt", "binding_energies.csv", "debye_temperatures.csv",
                             "screening_dhfs.csv", "valence_electrons.csv"})
        text += FingerprintOfFile(ProgramFile(name)) + "\n";
    return text;
}

}  // namespace

std::string SuffixOf(const RecipeCase& one, const Sections& sections) {
    std::string suffix;
    for (const RecipeVariation& variation : one.variations)
        if (std::any_of(sections.begin(), sections.end(),
                        [&](const std::string& section) { return variation.sections.contains(section); }))
            suffix += "_" + variation.label;
    return suffix;
}

std::string LabelOf(const std::string& suffix) {
    return suffix.empty() ? suffix : suffix.substr(1);
}

RunDraft::RunDraft(std::string path, const RecipeOptions& options)
    : recipePath(std::move(path)),
      place{std::filesystem::path(recipePath).parent_path().string()},
      measuredFile(options.measuredFile),
      tables_(ShippedTables()) {
    plan.folder = options.folder;
}

std::string RunDraft::KeyOf(const RecipeCase& one, const std::string& name, const Sections& sections) const {
    std::ostringstream text;
    text << QVRE_VERSION << '\n' << tables_ << name << '\n';
    for (const std::string& section : sections) {
        const toml::table* table = one.settings[section].as_table();
        if (!table) continue;
        text << SectionText(one, section, Contains(sections, "light"), place.folder);
        for (const char* key : {"file", "cell"}) {
            const auto file = (*table)[key].value<std::string>();
            if (!file) continue;
            text << FingerprintOfFile(place.Path(*file)) << '\n';
            const std::string shares = EmitterSharesBeside(place.Path(*file));
            if (std::filesystem::exists(shares)) text << FingerprintOfFile(shares) << '\n';
        }
    }
    return FingerprintOf(text.str());
}

void RunDraft::Add(RunStep step) {
    bool isNew = true;
    for (const std::string& output : step.outputs) isNew = Claim(output, step.key);
    step.isOneOfMany = areStepsNoted;
    if (isNew) plan.steps.push_back(std::move(step));
}

bool RunDraft::Claim(const std::string& output, const std::string& key) {
    const auto [writer, isNew] = writers_.emplace(output, key);
    if (writer->second != key)
        throw ZfError(
            "The recipe would write " + output +
            " twice, with different settings: the values of a series have to differ in their first 6 "
            "digits, and the files in their names");
    return isNew;
}

}  // namespace qvre
