#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "files/AnyFile.h"
#include "files/FileSummary.h"
#include "foundation/ProgramFile.h"
#include "foundation/ZfError.h"
#include "front/Commands.h"
#include "front/SharedOptions.h"
#include "prepare/checks/InputCheck.h"
#include "prepare/thermal/AtomicWeights.h"

namespace qvre {

namespace {

constexpr const char* kExample =
    "Examples:\n"
    "  qvre info pattern.xml_img\n"
    "  qvre info cluster.xml_cl emitter.xml_emt phaseshift.xml_ph fluctuation.xml_flu\n"
    "  qvre info .\n"
    "A folder stands for the four input files of those names in it. Input files given together are checked\n"
    "against each other; the exit status is 1 when a run would fail or be wrong.";

struct InfoOptions {
    std::vector<std::string> paths;
    ScatteringMethod method = InputSet().method;
};

/// The input files of a folder under the names that a run takes by default.
std::vector<std::string> InputsOf(const std::string& folder) {
    std::vector<std::string> found;
    for (const char* name :
         {"cluster.xml_cl", "emitter.xml_emt", "phaseshift.xml_ph", "fluctuation.xml_flu"}) {
        const std::filesystem::path path = std::filesystem::path(folder) / name;
        if (std::filesystem::exists(path)) found.push_back(path.string());
    }
    if (found.empty())
        throw ZfError("The folder " + folder +
                      " has none of cluster.xml_cl, emitter.xml_emt, phaseshift.xml_ph, fluctuation.xml_flu: "
                      "name the files");
    return found;
}

std::vector<AnyFile> LoadAll(const std::vector<std::string>& paths) {
    std::vector<AnyFile> files;
    for (const std::string& path : paths) {
        if (!std::filesystem::is_directory(path)) {
            files.push_back(LoadAnyFile(path));
            continue;
        }
        for (const std::string& input : InputsOf(path)) files.push_back(LoadAnyFile(input));
    }
    return files;
}

/// The only document of a kind, whose file joins those of the set; null for none. Several are no set.
template <class Document>
const Document* Only(const std::vector<AnyFile>& files, InputSet& set, bool& several) {
    const Document* only = nullptr;
    for (const AnyFile& file : files) {
        const Document* document = std::get_if<Document>(&file.content);
        if (!document) continue;
        if (only) several = true;
        only = document;
        set.files.push_back(file.path);
    }
    return only;
}

void PrintFindings(const std::vector<InputFinding>& findings) {
    const std::map<Severity, const char*> words = {
        {Severity::kNote, "note"}, {Severity::kWarning, "warning"}, {Severity::kMisfit, "misfit"}};
    for (const InputFinding& finding : findings)
        std::printf("%s: %s\n    remedy: %s\n", words.at(finding.severity), finding.what.c_str(),
                    finding.remedy.c_str());
}

void CheckSet(const std::vector<AnyFile>& files, ScatteringMethod method) {
    bool several = false;
    InputSet set;
    set.cluster = Only<Cluster>(files, set, several);
    set.waves = Only<std::vector<EmittedWave>>(files, set, several);
    set.phaseShifts = Only<ZfPhaseShiftDocument>(files, set, several);
    set.fluctuation = Only<Fluctuation>(files, set, several);
    set.method = method;
    const int parts = int{set.cluster != nullptr} + int{set.waves != nullptr} +
                      int{set.phaseShifts != nullptr} + int{set.fluctuation != nullptr};
    if (parts == 0) return;
    if (several) {
        std::printf("Not checked: there are several files of one kind\n");
        return;
    }
    const ZfDebye weights = LoadAtomicWeights(ProgramFile("AtomicWeight.txt"));
    set.weights = &weights;
    const std::vector<InputFinding> findings = CheckInputs(set);
    PrintFindings(findings);
    if (!FitsTogether(findings)) throw ZfError("The input does not fit, see the misfits above");
    if (parts > 1) std::printf("The %s fit together\n", parts == 4 ? "four files" : "files");
}

void Run(const InfoOptions& options) {
    const std::vector<AnyFile> files = LoadAll(options.paths);
    for (const AnyFile& file : files) std::fputs(FileSummary(file).c_str(), stdout);
    CheckSet(files, options.method);
}

}  // namespace

void AddInfoCommand(CLI::App& program) {
    auto options = std::make_shared<InfoOptions>();
    CLI::App& command =
        *program.add_subcommand("info", "Show what files hold, and whether an input set fits together");
    command
        .add_option(
            "FILE", options->paths,
            "Files of any kind: .xml_cl, .xyz, .xml_emt, .xml_ph, .xml_flu, .xml_sf, .xml_img; or a folder")
        ->required();
    command
        .add_option(
            "--method", options->method,
            "Method of the run that the input is checked for: " + Alternatives(WordsOf<ScatteringMethod>()))
        ->transform(WordOf<ScatteringMethod>())
        ->option_text("NAME=" + WordFor(options->method));
    command.footer(kExample);
    command.callback([options] { Run(*options); });
}

}  // namespace qvre
