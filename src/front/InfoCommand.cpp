#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "files/AnyFile.h"
#include "files/FileSummary.h"
#include "foundation/FileReading.h"
#include "foundation/ProgramFile.h"
#include "foundation/ZfError.h"
#include "front/Commands.h"
#include "front/SharedOptions.h"
#include "prepare/attenuation/MeanFreePath.h"
#include "prepare/checks/InputCheck.h"
#include "prepare/thermal/AtomicWeights.h"
#include "report/compare/MeasuredSummary.h"

namespace qvre {

namespace {

constexpr const char* kExample =
    "Examples:\n"
    "  qvre info pattern.xml_img\n"
    "  qvre info cluster.xml_cl emitter.xml_emt phaseshift.xml_ph fluctuation.xml_flu\n"
    "  qvre info .\n"
    "  qvre info cluster.xml_cl --kinetic 1119\n"
    "  qvre info measured.csv\n"
    "A folder stands for the four input files of those names in it. Input files given together are checked\n"
    "against each other; the exit status is 1 when a run would fail or be wrong. Any other text is read as "
    "a\n"
    "table of measured points.";

struct InfoOptions {
    std::vector<std::string> paths;
    ScatteringMethod method = InputSet().method;
    double kinetic_eV = 0.0;
    MeanFreePathRequest meanFreePath;
};

/// The input files of a folder under the names that runs give and take by default; of two for the same part
/// the first that is there.
std::vector<std::string> InputsOf(const std::string& folder) {
    const std::vector<std::vector<const char*>> parts = {{"cluster.xml_cl", "cluster.xyz"},
                                                         {"emitter.xml_emt", "unit_waves.xml_emt"},
                                                         {"phaseshift.xml_ph"},
                                                         {"fluctuation.xml_flu"}};
    std::vector<std::string> found;
    for (const std::vector<const char*>& names : parts)
        for (const char* name : names) {
            const std::filesystem::path path = std::filesystem::path(folder) / name;
            if (!std::filesystem::exists(path)) continue;
            found.push_back(path.string());
            break;
        }
    if (found.empty())
        throw ZfError("The folder " + folder +
                      " has none of cluster.xml_cl, emitter.xml_emt, phaseshift.xml_ph, fluctuation.xml_flu: "
                      "name the files");
    return found;
}

/// No XML and no Extended XYZ, so a table of measured points.
bool IsTable(const std::string& path) {
    RequireFile(path);
    const std::string extension = std::filesystem::path(path).extension().string();
    if (extension == ".xyz" || extension.starts_with(".xml")) return false;
    std::ifstream file(path, std::ios::binary);
    for (char c = 0; file.get(c);)
        if (std::isgraph(static_cast<unsigned char>(c)) != 0 && static_cast<unsigned char>(c) < 0x80)
            return c != '<';
    return false;
}

std::string TableSummaries(const std::vector<std::string>& paths) {
    std::string text;
    for (const std::string& path : paths)
        if (!std::filesystem::is_directory(path) && IsTable(path))
            text += path + ": " + MeasuredSummary(LoadMeasuredTable(path));
    return text;
}

std::vector<AnyFile> LoadAll(const std::vector<std::string>& paths) {
    std::vector<AnyFile> files;
    for (const std::string& path : paths) {
        if (std::filesystem::is_directory(path))
            for (const std::string& input : InputsOf(path)) files.push_back(LoadAnyFile(input));
        else if (!IsTable(path))
            files.push_back(LoadAnyFile(path));
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
    const DebyeTable debye(ProgramFile("debye_temperatures.csv"));
    set.debye = &debye;
    const std::vector<InputFinding> findings = CheckInputs(set);
    PrintFindings(findings);
    if (!FitsTogether(findings)) throw ZfError("The input does not fit, see the misfits above");
    if (parts > 1) std::printf("The %s fit together\n", parts == 4 ? "four files" : "files");
}

/// The energies that the mean free path is told at: that of the option, or those of the emitted waves.
std::set<double> Energies(const InfoOptions& options, const std::vector<AnyFile>& files) {
    if (options.kinetic_eV > 0.0) return {options.kinetic_eV};
    std::set<double> energies;
    for (const AnyFile& file : files)
        if (const auto* waves = std::get_if<std::vector<EmittedWave>>(&file.content))
            for (const EmittedWave& wave : *waves) energies.insert(wave.Ek);
    return energies;
}

/// How far electrons of the energies go in the solid of a cluster. Without the option a cluster that does not
/// tell passes in silence.
std::string MeanFreePaths(const InfoOptions& options, const AnyFile& file, const std::set<double>& energies) {
    const auto* cluster = std::get_if<Cluster>(&file.content);
    if (!cluster || energies.empty()) return "";
    try {
        const SolidDensity solid =
            DensityOfCluster(*cluster, LoadAtomicWeights(ProgramFile("AtomicWeight.txt")),
                             ValenceElectrons(ProgramFile("valence_electrons.csv")));
        std::string text;
        for (const double energy_eV : energies) {
            text += "  mean free path " + MeanFreePathText(options.meanFreePath, solid, energy_eV) + "\n";
            const std::string warning = MeanFreePathWarning(options.meanFreePath, energy_eV);
            if (!warning.empty()) text += "  warning: " + warning + "\n";
        }
        return text;
    } catch (const ZfError&) {
        if (options.kinetic_eV > 0.0) throw;
        return "";
    }
}

void Run(const InfoOptions& options) {
    Usage("--gap", [&] { CheckMeanFreePath(options.meanFreePath); });
    const std::vector<AnyFile> files = LoadAll(options.paths);
    if (options.kinetic_eV > 0.0 && std::none_of(files.begin(), files.end(), [](const AnyFile& file) {
            return std::holds_alternative<Cluster>(file.content);
        }))
        throw CLI::ValidationError("--kinetic", "the mean free path needs a cluster");
    const std::set<double> energies = Energies(options, files);
    std::string text = TableSummaries(options.paths);
    for (const AnyFile& file : files) text += FileSummary(file) + MeanFreePaths(options, file, energies);
    std::fputs(text.c_str(), stdout);
    CheckSet(files, options.method);
}

}  // namespace

void AddInfoCommand(CLI::App& program) {
    auto options = std::make_shared<InfoOptions>();
    CLI::App& command =
        *program.add_subcommand("info", "Show what files hold, and whether an input set fits together");
    command
        .add_option("FILE", options->paths,
                    "Files of any kind: .xml_cl, .xyz, .xml_emt, .xml_ph, .xml_flu, .xml_sf, .xml_img, "
                    "tables of measured "
                    "points; or a folder")
        ->required();
    command
        .add_option(
            "--method", options->method,
            "Method of the run that the input is checked for: " + Alternatives(WordsOf<ScatteringMethod>()))
        ->transform(WordOf<ScatteringMethod>())
        ->option_text("NAME=" + WordFor(options->method));
    command
        .add_option("--kinetic", options->kinetic_eV,
                    "Kinetic energy in eV for the mean free path in the solid of a cluster (TPP-2M); by "
                    "default that of emitted waves given with it")
        ->check(AboveZero())
        ->type_name("FLOAT");
    command
        .add_option("--gap", options->meanFreePath.gap_eV,
                    "Band gap of the solid in eV, for its mean free path; insulators need it")
        ->type_name("FLOAT")
        ->capture_default_str();
    command.footer(kExample);
    command.callback([options] { Run(*options); });
}

}  // namespace qvre
