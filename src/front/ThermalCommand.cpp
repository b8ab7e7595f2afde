#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "files/AnyFile.h"
#include "files/FileSummary.h"
#include "foundation/ProgramFile.h"
#include "foundation/Text.h"
#include "front/Commands.h"
#include "front/SharedOptions.h"
#include "prepare/checks/PartChecks.h"
#include "prepare/thermal/AtomicWeights.h"
#include "prepare/thermal/Elements.h"
#include "prepare/thermal/MeanSquareDisplacement.h"
#include "prepare/thermal/Vibrations.h"

namespace qvre {

namespace {

constexpr const char* kExample =
    "Examples, the first with a cluster:\n"
    "  qvre thermal cluster.xml_cl --temperature 300 -o fluctuation.xml_flu\n"
    "  qvre thermal --debye Ga=360,As=360 --temperature 300 -o fluctuation.xml_flu\n"
    "  qvre thermal --element Cu --temperature 300 -o fluctuation.xml_flu\n"
    "  qvre thermal --B Ti=0.5,O=0.45 -o fluctuation.xml_flu";

struct ThermalOptions {
    std::string clusterFile;
    std::vector<std::string> elements;
    std::vector<std::string> debye;
    std::vector<std::string> uiso;
    std::vector<std::string> b;
    double temperature_K = VibrationRequest().temperature_K;
    VibrationModel model = VibrationRequest().model;
    std::string output;
};

void AddElement(std::vector<std::string>& elements, const std::string& element) {
    if (std::find(elements.begin(), elements.end(), element) == elements.end()) elements.push_back(element);
}

std::vector<std::pair<std::string, double>> SquareAngstroms(const char* option,
                                                            const std::vector<std::string>& texts) {
    std::vector<std::pair<std::string, double>> pairs = NamedNumbers(option, texts);
    for (const auto& pair : pairs)
        if (pair.first.empty())
            throw CLI::ValidationError(option, "give pairs of element and square angstrom, such as Cu=0.55");
    return pairs;
}

/// U in square angstrom by element, each once.
std::vector<std::pair<std::string, double>> Displacements(const ThermalOptions& options) {
    std::vector<std::pair<std::string, double>> displacements = SquareAngstroms("--uiso", options.uiso);
    for (const auto& [element, b] : SquareAngstroms("--B", options.b)) {
        for (const auto& given : displacements)
            if (given.first == element)
                throw CLI::ValidationError("--B", element + " has a --uiso already: give one of them");
        displacements.emplace_back(element, b / kBOfUiso);
    }
    return displacements;
}

/// The elements of the cluster, or those named, or those with a value of their own.
VibrationRequest RequestOf(const ThermalOptions& options, const Cluster& cluster) {
    Usage("--temperature", [&] { CheckTemperature(options.temperature_K); });
    VibrationRequest request;
    request.temperature_K = options.temperature_K;
    request.model = options.model;
    request.elements = ElementsOf(cluster);
    for (const std::string& element : options.elements) AddElement(request.elements, element);
    const bool named = !request.elements.empty();
    for (const auto& [element, temperature_K] : DebyeTemperatures(options.debye)) {
        request.debyeTemperature_K[element] = temperature_K;
        if (!named) AddElement(request.elements, element);
    }
    for (const auto& [element, uiso] : Displacements(options)) {
        request.uiso_angstrom2[element] = uiso;
        if (!named) AddElement(request.elements, element);
    }
    if (request.model != VibrationModel::kDebye)
        for (const auto& [option, given] : {std::pair{"--debye", !options.debye.empty()},
                                            {"--uiso", !options.uiso.empty()},
                                            {"--B", !options.b.empty()}})
            if (given) throw CLI::ValidationError(option, "only the model debye takes values by element");
    if (request.model == VibrationModel::kDebye && request.elements.empty())
        throw CLI::RequiredError("A cluster, --element, --debye, --uiso or --B");
    return request;
}

/// U of the atoms of an element as they stand in the cluster, angstrom^2.
std::string ClusterText(const Cluster& cluster, const std::string& element) {
    std::map<std::string, std::size_t> counts;
    for (const Structure& structure : cluster.structures)
        for (const ClusterAtom& atom : structure.atoms)
            if (atom.atom == element)
                ++counts[atom.U.Count() == 1 ? DoubleToText(*atom.U.Data() * 1e20) : "none"];
    std::string text;
    for (const auto& [u, count] : counts)
        text += (text.empty() ? "" : ", ") + u + (u == "none" ? "" : " angstrom^2") + " on " +
                Counted(count, "atom");
    return text.empty() ? "from the cluster" : text;
}

std::string DebyeText(const Fluctuation& fluctuation, const VibrationRequest& request, std::size_t i) {
    const std::string& element = fluctuation.DebyeElement_[i];
    const char* origin = request.debyeTemperature_K.contains(element) ? "given"
                         : request.uiso_angstrom2.contains(element)   ? "for the given U"
                                                                      : "table of pure elements";
    return "   Debye temperature " + DoubleToText(fluctuation.DebyeTemperature_K_[i]) + " K (" + origin + ")";
}

/// "0.007 angstrom^2 (B 0.553)"
std::string DisplacementText(double uiso) {
    return fmt::format("{:g} angstrom^2 (B {:.3g})", uiso * 1e20, uiso * 1e20 * kBOfUiso);
}

/// One line an element, as the run will have it.
std::string ResultText(const Fluctuation& fluctuation, const VibrationRequest& request,
                       const Cluster& cluster, const ZfDebye& weights) {
    std::string text;
    for (std::size_t i = 0; i < request.elements.size(); ++i) {
        const std::string& element = request.elements[i];
        text += "  " + element + "   Uiso ";
        if (request.model == VibrationModel::kCluster)
            text += ClusterText(cluster, element);
        else
            text += DisplacementText(ModelUiso(fluctuation, weights, element));
        if (request.model == VibrationModel::kDebye) text += DebyeText(fluctuation, request, i);
        text += "\n";
    }
    if (request.elements.empty() && request.model == VibrationModel::kEinstein)
        text = "  all elements   Uiso " + DisplacementText(ModelUiso(fluctuation, weights, "H")) + "\n";
    if (request.elements.empty() && request.model == VibrationModel::kCluster)
        text = "  all elements   Uiso as the atoms of the cluster have it\n";
    return text;
}

/// Elements alone stand for a cluster: what the model refuses or ignores of them.
Cluster ClusterOf(const std::vector<std::string>& elements) {
    Cluster cluster;
    cluster.structures.resize(1);
    for (const std::string& element : elements) cluster.structures[0].atoms.emplace_back().atom = element;
    return cluster;
}

void PrintFindings(const Fluctuation& fluctuation, const Cluster& cluster, const ZfDebye& weights,
                   const DebyeTable& table, const VibrationRequest& request) {
    InputSet set;
    for (const auto& [element, uiso] : request.uiso_angstrom2) set.displaced.insert(element);
    set.cluster = &cluster;
    set.fluctuation = &fluctuation;
    set.weights = &weights;
    set.debye = &table;
    InputFindings findings;
    CheckFluctuation(set, findings);
    for (const InputFinding& finding : findings)
        std::printf("  warning: %s; %s\n", finding.what.c_str(), finding.remedy.c_str());
}

void Run(const ThermalOptions& options) {
    CheckOutput(options.output, ".xml_flu");
    Cluster cluster;
    if (!options.clusterFile.empty()) cluster = LoadClusterFile(options.clusterFile);
    const VibrationRequest request = RequestOf(options, cluster);
    const DebyeTable table(ProgramFile("debye_temperatures.csv"));
    const ZfDebye weights = LoadAtomicWeights(ProgramFile("AtomicWeight.txt"));
    const Fluctuation fluctuation = MakeFluctuation(request, table, weights);
    const std::string result = ResultText(fluctuation, request, cluster, weights);
    SaveFluctuation(fluctuation, options.output);
    std::printf("%s: %s K\n%s", options.output.c_str(), DoubleToText(request.temperature_K).c_str(),
                result.c_str());
    if (request.elements.size() > 1 &&
        request.debyeTemperature_K.size() + request.uiso_angstrom2.size() < fluctuation.DebyeElement_.size())
        std::printf(
            "  note: the table is of pure elements; a compound has its own: give it with --B, --uiso or "
            "--debye\n");
    if (cluster.structures.empty() && request.model == VibrationModel::kDebye)
        PrintFindings(fluctuation, ClusterOf(request.elements), weights, table, request);
    else if (!cluster.structures.empty())
        PrintFindings(fluctuation, cluster, weights, table, request);
}

}  // namespace

void AddThermalCommand(CLI::App& program) {
    auto options = std::make_shared<ThermalOptions>();
    CLI::App& command = *program.add_subcommand("thermal", "Write a fluctuation file: how the atoms vibrate");
    command.add_option("CLUSTER", options->clusterFile,
                       "Cluster file (.xml_cl, .xyz) that tells the elements");
    command.add_option("--temperature", options->temperature_K, "Temperature in kelvin")
        ->capture_default_str();
    command
        .add_option("--model", options->model,
                    "Where Uiso comes from: debye (Debye temperature of each element), einstein (one force "
                    "constant, 70 N/m) or cluster (as the cluster file has it)")
        ->transform(WordOf<VibrationModel>())
        ->option_text("NAME=" + WordFor(options->model));
    command.add_option("--element", options->elements, "Elements, such as Ga,As")
        ->delimiter(',')
        ->allow_extra_args(false);
    command
        .add_option("--debye", options->debye,
                    "Debye temperatures of the run's formula, kelvin, such as Ga=360,As=360. Elements "
                    "without any value come from a table of pure elements")
        ->delimiter(',')
        ->allow_extra_args(false);
    command
        .add_option("--uiso", options->uiso,
                    "Mean square displacements at this temperature, square angstrom, such as Cu=0.007")
        ->delimiter(',')
        ->allow_extra_args(false);
    command.add_option("--B", options->b, "The same as B = 8 pi^2 U, square angstrom, such as Cu=0.55")
        ->delimiter(',')
        ->allow_extra_args(false);
    command.add_option("-o,--output", options->output, "Fluctuation file to write (.xml_flu)")->required();
    command.footer(kExample);
    command.callback([options] { Run(*options); });
}

}  // namespace qvre
