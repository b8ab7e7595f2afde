#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
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
    "  qvre thermal --element Cu --temperature 300 -o fluctuation.xml_flu";

struct ThermalOptions {
    std::string clusterFile;
    std::vector<std::string> elements;
    std::vector<std::string> debye;
    double temperature_K = VibrationRequest().temperature_K;
    VibrationModel model = VibrationRequest().model;
    std::string output;
};

void AddElement(std::vector<std::string>& elements, const std::string& element) {
    if (std::find(elements.begin(), elements.end(), element) == elements.end()) elements.push_back(element);
}

/// The elements of the cluster, or those named, or those with a Debye temperature.
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
    if (request.model != VibrationModel::kDebye && !options.debye.empty())
        throw CLI::ValidationError("--debye", "only the model debye takes Debye temperatures");
    if (request.model == VibrationModel::kDebye && request.elements.empty())
        throw CLI::RequiredError("A cluster, --element or --debye");
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
    std::string text = "   Debye temperature ";
    return text + DoubleToText(fluctuation.DebyeTemperature_K_[i]) + " K (" +
           (request.debyeTemperature_K.contains(element) ? "given" : "Kittel, of the pure element") + ")";
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
            text += DoubleToText(ModelUiso(fluctuation, weights, element) * 1e20) + " angstrom^2";
        if (request.model == VibrationModel::kDebye) text += DebyeText(fluctuation, request, i);
        text += "\n";
    }
    if (request.elements.empty() && request.model == VibrationModel::kEinstein)
        text = "  all elements   Uiso " + DoubleToText(ModelUiso(fluctuation, weights, "H") * 1e20) +
               " angstrom^2\n";
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

void PrintFindings(const Fluctuation& fluctuation, const Cluster& cluster, const ZfDebye& weights) {
    InputSet set;
    set.cluster = &cluster;
    set.fluctuation = &fluctuation;
    set.weights = &weights;
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
    const Fluctuation fluctuation = MakeFluctuation(request, table);
    const std::string result = ResultText(fluctuation, request, cluster, weights);
    SaveFluctuation(fluctuation, options.output);
    std::printf("%s: %s K\n%s", options.output.c_str(), DoubleToText(request.temperature_K).c_str(),
                result.c_str());
    if (request.elements.size() > 1 && request.debyeTemperature_K.size() < fluctuation.DebyeElement_.size())
        std::printf("  note: the table is of pure elements; a compound has its own: give it with --debye\n");
    if (cluster.structures.empty() && request.model == VibrationModel::kDebye)
        PrintFindings(fluctuation, ClusterOf(request.elements), weights);
    else if (!cluster.structures.empty())
        PrintFindings(fluctuation, cluster, weights);
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
                    "Debye temperatures, kelvin, such as Ga=360,As=360. Those not given "
                    "come from a table of pure elements (Kittel)")
        ->delimiter(',')
        ->allow_extra_args(false);
    command.add_option("-o,--output", options->output, "Fluctuation file to write (.xml_flu)")->required();
    command.footer(kExample);
    command.callback([options] { Run(*options); });
}

}  // namespace qvre
