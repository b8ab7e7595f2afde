#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "prepare/checks/NearestNeighbours.h"
#include "prepare/checks/PartChecks.h"
#include "prepare/thermal/Elements.h"
#include "prepare/thermal/MeanSquareDisplacement.h"
#include "prepare/thermal/Vibrations.h"
#include "scattering/ThermalModels.h"

namespace qvre {

namespace {

constexpr double kLargestU_angstrom2 =
    0.1;                           // beyond, atoms of a solid would melt (Lindemann) or U is a B factor
constexpr double kTooSmall = 1.1;  // whole Debye integral over the formula of the run

bool KeepsClusterU(const Fluctuation& f) {
    const ThermalModel model = ThermalModelOf(f);
    return model == ThermalModel::kNone || model == ThermalModel::kCluster;
}

void CheckFlags(const Fluctuation& f, InputFindings& findings) {
    const int flags =
        int{f.IsUseUisoInCluster_} + int{f.IsUseUisoEinsteinModel_} + int{f.IsUseUisoDebyeModel_};
    if (flags == 0)
        findings.push_back({Severity::kNote,
                            "the fluctuation file chooses no model: U comes from the cluster",
                            "set one of its flags"});
    if (flags > 1)
        findings.push_back(
            {Severity::kWarning,
             std::string("the fluctuation file sets several flags; the one of ") +
                 (ThermalModelOf(f) == ThermalModel::kCluster ? "the cluster" : "the Einstein model") +
                 " counts",
             "set one flag only"});
}

void CheckTemperature(const Fluctuation& f, InputFindings& findings) {
    if (KeepsClusterU(f)) return;
    if (f.Temperature_K_ < 0.0)
        findings.push_back({Severity::kMisfit, "the temperature is " + DoubleToText(f.Temperature_K_) + " K",
                            "give it in kelvin, 0 or above"});
    if (f.Temperature_K_ > kHighestTemperature_K)
        findings.push_back(
            {Severity::kWarning, "the temperature is " + DoubleToText(f.Temperature_K_) + " K",
             "no solid is left above " + DoubleToText(kHighestTemperature_K) + " K: give it in kelvin"});
    if (f.Temperature_K_ == 0.0)
        findings.push_back({Severity::kWarning, "at 0 K the models give U = 0, without zero-point motion",
                            "give the temperature in kelvin, or U with the cluster"});
}

/// The first temperature of each element, as the run takes it.
std::map<std::int32_t, double> DebyeTemperatures(const Fluctuation& f, InputFindings& findings) {
    std::map<std::int32_t, double> temperatures;
    const std::size_t given = f.DebyeTemperature_K_.size();
    if (f.DebyeElement_.size() != given)
        findings.push_back({f.DebyeElement_.size() > given ? Severity::kMisfit : Severity::kWarning,
                            "the fluctuation file has " + std::to_string(f.DebyeElement_.size()) +
                                " elements and " + std::to_string(given) + " Debye temperatures",
                            "give one temperature an element"});
    for (std::size_t i = 0; i < std::min(given, f.DebyeElement_.size()); ++i) {
        try {
            if (!temperatures.emplace(AtomicNumberOf(f.DebyeElement_[i]), f.DebyeTemperature_K_[i]).second)
                findings.push_back({Severity::kWarning,
                                    f.DebyeElement_[i] + " has two Debye temperatures: the first counts",
                                    "remove the other"});
        } catch (const ZfError&) {
            findings.push_back(
                {Severity::kMisfit,
                 "the fluctuation file names the element \"" + f.DebyeElement_[i] + "\", unknown",
                 "write element symbols as in Cu, case counts"});
        }
    }
    return temperatures;
}

/// Whether a displacement is that of the solid element, zero-point motion included. A Debye temperature that
/// was made for such a one means nothing by itself.
bool IsLargeEnough(double uiso, const std::string& element, const InputSet& inputs) {
    if (!inputs.debye) return false;
    const std::optional<double> theta = inputs.debye->Find(element);
    return theta && kTooSmall * uiso > DebyeIntegralUiso(inputs.fluctuation->Temperature_K_,
                                                         AtomicNumberOf(element), *theta, *inputs.weights);
}

void CheckDebyeValue(const std::string& element, double theta, const InputSet& inputs,
                     InputFindings& findings) {
    const double t = inputs.fluctuation->Temperature_K_;
    if (theta <= 0.0) {
        findings.push_back({Severity::kWarning, "the Debye temperature of " + element + " is 0: its U is 0",
                            "give it in kelvin"});
        return;
    }
    if (!inputs.weights || inputs.displaced.contains(element)) return;
    const std::int32_t number = AtomicNumberOf(element);
    if (static_cast<std::size_t>(number) >= inputs.weights->weights.size()) {
        findings.push_back({Severity::kMisfit, "the table of atomic weights lacks " + element,
                            "take the whole AtomicWeight.txt"});
        return;
    }
    const double formula = inputs.weights->CalcUiso(t, number, theta);
    const double whole = DebyeIntegralUiso(t, number, theta, *inputs.weights);
    if (formula <= 0.0 || whole < kTooSmall * formula || IsLargeEnough(formula, element, inputs)) return;
    findings.push_back({Severity::kWarning,
                        "U of " + element + " is " +
                            DoubleToText(std::round(whole / formula * 100.0) / 100.0) +
                            " times too small: " + DoubleToText(t) +
                            " K is low against its Debye temperature of " + DoubleToText(theta) + " K",
                        "the formula is one of high temperature; give " + DoubleToText(whole * 1e20) +
                            " angstrom^2 as uiso, unless the temperature was made from a U"});
}

std::set<std::string> EmittersOf(const Cluster& cluster) {
    std::set<std::string> elements;
    for (const Structure& structure : cluster.structures)
        if (!structure.atoms.empty()) elements.insert(structure.atoms[NearestToOrigin(structure.atoms)].atom);
    return elements;
}

void CheckDebye(const InputSet& inputs, InputFindings& findings) {
    const std::map<std::int32_t, double> temperatures = DebyeTemperatures(*inputs.fluctuation, findings);
    if (!inputs.cluster) return;
    const std::set<std::string> emitters = EmittersOf(*inputs.cluster);
    for (const std::string& element : ElementsOf(*inputs.cluster)) {
        std::int32_t number = 0;
        try {
            number = AtomicNumberOf(element);
        } catch (const ZfError&) {
            if (element.empty())
                findings.push_back({Severity::kMisfit,
                                    "there are atoms without an element: the Debye model fails",
                                    "give the element of each atom"});
            continue;
        }
        const auto found = temperatures.find(number);
        if (found != temperatures.end()) {
            CheckDebyeValue(element, found->second, inputs, findings);
            continue;
        }
        const bool emits = emitters.contains(element);
        findings.push_back(
            {Severity::kMisfit,
             "the Debye table lacks " + element + (emits ? ", the element of the emitter" : ""),
             "add " + element + " with its Debye temperature to the fluctuation file"});
    }
}

struct ClusterU {
    std::size_t atoms = 0;
    std::size_t without = 0;
    double smallest_angstrom2 = 0.0;
    double largest_angstrom2 = 0.0;
};

ClusterU DisplacementsOf(const Cluster& cluster) {
    ClusterU u;
    for (const Structure& structure : cluster.structures) {
        for (const ClusterAtom& atom : structure.atoms) {
            ++u.atoms;
            if (atom.U.Count() == 0) ++u.without;
            if (atom.U.Count() != 1) continue;
            u.smallest_angstrom2 = std::min(u.smallest_angstrom2, *atom.U.Data() * 1e20);
            u.largest_angstrom2 = std::max(u.largest_angstrom2, *atom.U.Data() * 1e20);
        }
    }
    return u;
}

void CheckClusterU(const InputSet& inputs, InputFindings& findings) {
    const ClusterU u = DisplacementsOf(*inputs.cluster);
    const std::string remedy = "give U with each atom of the cluster, or take the Debye model";
    if (u.without == u.atoms)
        findings.push_back({inputs.fluctuation->IsUseUisoInCluster_ ? Severity::kMisfit : Severity::kNote,
                            "U is to come from the cluster, which has none: nothing is damped", remedy});
    else if (u.without > 0)
        findings.push_back({Severity::kWarning,
                            std::to_string(u.without) + " of " + std::to_string(u.atoms) +
                                " atoms have no U in the cluster and are not damped",
                            remedy});
    if (u.smallest_angstrom2 < 0.0)
        findings.push_back({Severity::kMisfit, "the cluster has a U below 0: such an atom is amplified",
                            "mean square displacements are positive"});
    if (u.largest_angstrom2 > kLargestU_angstrom2)
        findings.push_back({Severity::kWarning,
                            "the cluster has a U of " + DoubleToText(u.largest_angstrom2) + " angstrom^2",
                            "give U, not B = 8 pi^2 U"});
}

}  // namespace

void CheckFluctuation(const InputSet& inputs, InputFindings& findings) {
    CheckFlags(*inputs.fluctuation, findings);
    CheckTemperature(*inputs.fluctuation, findings);
    if (ThermalModelOf(*inputs.fluctuation) == ThermalModel::kDebye) CheckDebye(inputs, findings);
    if (inputs.cluster && KeepsClusterU(*inputs.fluctuation)) CheckClusterU(inputs, findings);
}

}  // namespace qvre
