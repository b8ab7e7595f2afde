#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "foundation/Text.h"
#include "prepare/checks/FindingTexts.h"
#include "prepare/checks/NearestNeighbours.h"
#include "prepare/checks/PartChecks.h"
#include "scattering/SamplingSphere.h"

namespace qvre {

namespace {

constexpr std::ptrdiff_t kUsableRecords = 128;  // the run keeps their places in signed bytes
constexpr double kSmallestRadius_angstrom = 0.3;
constexpr double kLargestRadius_angstrom = 3.0;
constexpr double kOverlap = 1.1;       // radii of two neighbours over their distance, when spheres overlap
constexpr double kGap = 0.6;           // and when MULTI overlooks atoms of a row
constexpr double kNearSphere = 0.8;    // sampling radius over neighbour distance, when the levels climb
constexpr double kLeast = 0.3;         // of the distance: less is no sphere of an atom
constexpr double kCutPhase_deg = 5.0;  // 1 percent of the unitary limit is left in the intensity of such an l
constexpr std::int32_t kLargestSize = 300;

/// The atoms of one name.
struct AtomKind {
    std::string element;
    bool scatters = false;                                              ///< one of them is not the emitter
    double nearest_angstrom = std::numeric_limits<double>::infinity();  ///< nearest neighbour of a scatterer
    std::string neighbour;                                              ///< and its name
};

using AtomKinds = std::map<std::string, AtomKind>;

AtomKinds KindsOf(const Cluster& cluster) {
    AtomKinds kinds;
    for (const Structure& structure : cluster.structures) {
        const std::vector<ClusterAtom>& atoms = structure.atoms;
        if (atoms.empty()) continue;
        const std::vector<Neighbour> nearest = NearestNeighbours(atoms);
        const std::size_t emitter = NearestToOrigin(atoms);
        for (std::size_t i = 0; i < atoms.size(); ++i) {
            AtomKind& kind = kinds[atoms[i].name];
            kind.element = atoms[i].atom;
            if (i == emitter) continue;
            kind.scatters = true;
            if (nearest[i].distance_angstrom >= kind.nearest_angstrom) continue;
            kind.nearest_angstrom = nearest[i].distance_angstrom;
            kind.neighbour = atoms[nearest[i].atom].name;
        }
    }
    return kinds;
}

/// The first of that name and energy, as the run looks for it; null without one.
const PhaseShiftRecord* Find(const ZfPhaseShiftDocument& document, const std::string& name, double energy) {
    for (const PhaseShiftRecord& record : document.records)
        if (record.Ek_eV == energy && record.AtomName == name) return &record;
    return nullptr;
}

double RadiusOf(const PhaseShiftRecord& record) {
    return record.radial.LnX.empty() ? 0.0 : std::exp(record.radial.LnX.back()) * 1e10;
}

bool EqualButForCase(const std::string& a, const std::string& b) {
    const auto letters = [](const std::string& text) {
        std::string result;
        for (const char c : text)
            if (c != ' ') result += static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
        return result;
    };
    return letters(a) == letters(b);
}

InputFinding MissingName(const ZfPhaseShiftDocument& document, const std::string& name,
                         const AtomKind& kind) {
    InputFinding finding{Severity::kMisfit, "there are no phase shifts for the atom name \"" + name + "\"",
                         "make them, with this AtomName"};
    for (const PhaseShiftRecord& record : document.records) {
        const bool spelling = EqualButForCase(record.AtomName, name);
        if (!spelling && record.AtomElement != kind.element) continue;
        finding.what += ", but some are named \"" + record.AtomName + "\"";
        finding.remedy = "write the same name into the cluster and into AtomName";
        break;
    }
    return finding;
}

/// Names fit, the energy does not.
InputFinding MissingEnergy(const ZfPhaseShiftDocument& document, const std::string& name, double energy) {
    double nearest = std::numeric_limits<double>::infinity();
    for (const PhaseShiftRecord& record : document.records)
        if (record.AtomName == name && std::abs(record.Ek_eV - energy) < std::abs(nearest - energy))
            nearest = record.Ek_eV;
    const std::string wanted = ExactText(energy);
    const std::string found = ExactText(nearest);
    InputFinding finding{Severity::kMisfit,
                         "there are no phase shifts of \"" + name + "\" for " + wanted + " eV",
                         "make them for " + wanted + " eV"};
    if (std::abs(nearest - energy) > 0.01 * energy) {
        finding.what += "; the nearest are for " + found + " eV";
    } else {
        finding.what += ": " + wanted + " differs from " + found;
        finding.remedy = "energies are compared to the last bit: give the wave the Ek " + found +
                         ", or make phase shifts for " + wanted + " eV";
    }
    return finding;
}

InputFinding Missing(const ZfPhaseShiftDocument& document, const std::string& name, const AtomKind& kind,
                     double energy) {
    const bool named = std::any_of(document.records.begin(), document.records.end(),
                                   [&](const PhaseShiftRecord& r) { return r.AtomName == name; });
    return named ? MissingEnergy(document, name, energy) : MissingName(document, name, kind);
}

std::string NameOf(const PhaseShiftRecord& record) {
    std::string name = "the phase shifts of \"";
    return name + record.AtomName + "\" for " + ExactText(record.Ek_eV) + " eV";
}

void CheckRadius(const PhaseShiftRecord& record, InputFindings& findings) {
    const std::string remedy =
        "let LnX end at the natural logarithm of the muffin-tin radius in metres, -22.8 for 1.25 "
        "angstrom";
    if (record.radial.LnX.empty()) {
        findings.push_back({Severity::kMisfit,
                            NameOf(record) + " have no LnX, from which MULTI takes the radius of the atom",
                            remedy + ", or take the method SLOWMULTI"});
        return;
    }
    const double radius_angstrom = RadiusOf(record);
    if (radius_angstrom >= kSmallestRadius_angstrom && radius_angstrom <= kLargestRadius_angstrom) return;
    const double end = record.radial.LnX.back();
    std::string what = NameOf(record) + " tell the radius " + DoubleToText(radius_angstrom) +
                       " angstrom (LnX ends at " + DoubleToText(end) + ")";
    if (end > -2.0 && end < 4.0) what += ", which looks like a radius, or its logarithm, in angstrom or bohr";
    what += radius_angstrom > kLargestRadius_angstrom ? ": MULTI would silently be SLOWMULTI"
                                                      : ": MULTI would overlook the atoms of a row";
    findings.push_back({Severity::kMisfit, what, remedy});
}

/// Radii with which the spheres of two neighbours touch. The larger one often follows from atoms of its own
/// kind and stays, unless it leaves nothing.
std::string TouchingRadii(const PhaseShiftRecord& a, const PhaseShiftRecord& b, double distance_angstrom) {
    const auto entry = [](const std::string& name, double radius_angstrom) {
        return name + " = " + DoubleToText(std::floor(radius_angstrom * 1000.0) / 1000.0);
    };
    const double half_angstrom = distance_angstrom / 2.0;
    if (a.AtomName == b.AtomName) return "radius = { " + entry(a.AtomName, half_angstrom) + " }";
    const auto& [smaller, larger] = RadiusOf(a) < RadiusOf(b) ? std::tie(a, b) : std::tie(b, a);
    const double left_angstrom = distance_angstrom - RadiusOf(larger);
    if (left_angstrom >= kLeast * distance_angstrom)
        return "radius = { " + entry(smaller.AtomName, left_angstrom) + " }";
    return "radius = { " + entry(a.AtomName, half_angstrom) + ", " + entry(b.AtomName, half_angstrom) + " }";
}

void CheckSpheres(const PhaseShiftRecord& record, const PhaseShiftRecord& neighbour, double distance_angstrom,
                  InputFindings& findings) {
    const double own = RadiusOf(record);
    const double other = RadiusOf(neighbour);
    if (own == 0.0 || other == 0.0 || own > kLargestRadius_angstrom || other > kLargestRadius_angstrom)
        return;
    const double ratio = (own + other) / distance_angstrom;
    if (ratio >= kGap && ratio <= kOverlap) return;
    findings.push_back({Severity::kWarning,
                        NameOf(record) + " tell the radius " + DoubleToText(own) + " angstrom; with " +
                            DoubleToText(other) + " angstrom of the nearest neighbour, " +
                            DoubleToText(distance_angstrom) + " angstrom away, the spheres " +
                            (ratio > kOverlap ? "overlap" : "leave a wide gap"),
                        "make phase shifts with touching spheres: in a recipe [phases] " +
                            TouchingRadii(record, neighbour, distance_angstrom) +
                            ", on the command line the option of that name"});
}

void CheckSampling(const PhaseShiftRecord& record, double nearest_angstrom, InputFindings& findings) {
    const std::int32_t size = record.PhaseShiftValue.VectorSize();
    if (size > kLargestSize) {
        findings.push_back({Severity::kMisfit, NameOf(record) + " have the l size " + std::to_string(size),
                            "leave out the l whose phase shift is below 0.3 degrees"});
        return;
    }
    if (!(record.Ek_eV > 0.0)) return;
    const double radius_angstrom = LastSamplingRadius(size, record.Ek_eV) * 1e10;
    if (radius_angstrom < kNearSphere * nearest_angstrom) return;
    const bool wrong = radius_angstrom >= nearest_angstrom;
    findings.push_back({wrong ? Severity::kMisfit : Severity::kWarning,
                        NameOf(record) + " have l size " + std::to_string(size) + ", which is sampled at " +
                            DoubleToText(radius_angstrom) +
                            " angstrom, and the nearest neighbour stands at " +
                            DoubleToText(nearest_angstrom) + " angstrom: " +
                            (wrong ? "the expansion of its wave does not converge, or to something wrong"
                                   : "the run is slow"),
                        "leave out the highest l, or take a higher energy"});
}

/// Without a cluster the spheres are taken to touch.
void CheckSampling(const PhaseShiftRecord& record, InputFindings& findings) {
    const double radius_angstrom = RadiusOf(record);
    if (radius_angstrom < kSmallestRadius_angstrom || radius_angstrom > kLargestRadius_angstrom) return;
    CheckSampling(record, 2.0 * radius_angstrom, findings);
}

/// Phase shifts in degrees, folded into -90 to 90: that is what scatters.
double Folded(double degrees) {
    return std::remainder(degrees, 180.0);
}

void CheckValues(const PhaseShiftRecord& record, InputFindings& findings) {
    const ZfLDoubleMatrix& delta = record.PhaseShiftValue;
    const std::int32_t size = delta.VectorSize();
    double largest = 0.0;
    for (std::int32_t l = 0; l < size; ++l) largest = std::max(largest, std::abs(delta.VectorValueAt(l)));
    const double last = Folded(delta.VectorValueAt(size - 1));
    if (size > 3 && largest > 0.0 && largest < 6.2832)
        findings.push_back(
            {Severity::kWarning,
             NameOf(record) + " are all below " + DoubleToText(largest) + ": are they radians?",
             "give degrees: times 57.2958"});
    else if (std::abs(last) > kCutPhase_deg)
        findings.push_back({Severity::kWarning,
                            NameOf(record) + " end at l = " + std::to_string(size - 1) + " with " +
                                DoubleToText(last) + " degrees: the sum over l is cut off",
                            "make phase shifts up to an l where they are below 0.3 degrees"});
}

void CheckElement(const PhaseShiftRecord& record, const AtomKind& kind, InputFindings& findings) {
    if (record.AtomElement.empty() || record.AtomElement == kind.element) return;
    findings.push_back({Severity::kWarning,
                        NameOf(record) + " are of the element " + record.AtomElement +
                            ", the atoms of the cluster are " + kind.element,
                        "give the two different names, or take the phase shifts of the right element"});
}

/// What a record must hold by itself to be scattered at.
bool CheckContent(const PhaseShiftRecord& record, ScatteringMethod method, InputFindings& findings) {
    if (record.PhaseShiftValue.VectorSize() == 0) {
        findings.push_back(
            {Severity::kMisfit, NameOf(record) + " are empty", "give PhaseShiftValue from l = 0 on"});
        return false;
    }
    CheckValues(record, findings);
    if (method == kMulti) CheckRadius(record, findings);
    return true;
}

void CheckPlace(const ZfPhaseShiftDocument& document, const PhaseShiftRecord& record,
                InputFindings& findings) {
    const std::ptrdiff_t place = &record - document.records.data();
    if (place < kUsableRecords) return;
    findings.push_back({Severity::kMisfit,
                        NameOf(record) + " stand at place " + std::to_string(place + 1) +
                            "; a run uses the first 128 of a file",
                        "keep in the file what this run needs, or move it to the front"});
}

void CheckPair(const InputSet& inputs, const AtomKinds& kinds, const std::string& name, double energy,
               InputFindings& findings) {
    const ZfPhaseShiftDocument& document = *inputs.phaseShifts;
    const AtomKind& kind = kinds.at(name);
    const PhaseShiftRecord* record = Find(document, name, energy);
    if (!record) {
        findings.push_back(Missing(document, name, kind, energy));
        return;
    }
    CheckPlace(document, *record, findings);
    CheckElement(*record, kind, findings);
    if (!kind.scatters || !CheckContent(*record, inputs.method, findings)) return;
    if (inputs.method != kFull) CheckSampling(*record, kind.nearest_angstrom, findings);
    const PhaseShiftRecord* neighbour = Find(document, kind.neighbour, energy);
    if (neighbour) CheckSpheres(*record, *neighbour, kind.nearest_angstrom, findings);
}

void CheckList(const ZfPhaseShiftDocument& document, InputFindings& findings) {
    if (document.records.empty())
        findings.push_back({Severity::kMisfit, "the phase-shift file holds no phase shifts", "make them"});
    if (static_cast<std::ptrdiff_t>(document.records.size()) > kUsableRecords)
        findings.push_back({Severity::kNote,
                            "the phase-shift file holds " + std::to_string(document.records.size()) +
                                " records, of which a run uses the first 128",
                            "split it by energy"});
    std::set<std::pair<std::string, double>> seen;
    for (const PhaseShiftRecord& record : document.records)
        if (!seen.emplace(record.AtomName, record.Ek_eV).second)
            findings.push_back({Severity::kNote, NameOf(record) + " stand there twice: the first count",
                                "remove the others"});
}

}  // namespace

void CheckPhaseShifts(const InputSet& inputs, InputFindings& findings) {
    CheckList(*inputs.phaseShifts, findings);
    const AtomKinds kinds = inputs.cluster ? KindsOf(*inputs.cluster) : AtomKinds();
    if (!inputs.cluster || !inputs.waves) {
        for (const PhaseShiftRecord& record : inputs.phaseShifts->records) {
            if (!CheckContent(record, inputs.method, findings)) continue;
            const auto kind = kinds.find(record.AtomName);
            if (kind != kinds.end())
                CheckSampling(record, kind->second.nearest_angstrom, findings);
            else
                CheckSampling(record, findings);
        }
        return;
    }
    std::set<double> energies;
    for (const EmittedWave& wave : *inputs.waves)
        if (wave.Ek > 0.0) energies.insert(wave.Ek);
    for (const double energy : energies)
        for (const auto& [name, kind] : kinds) CheckPair(inputs, kinds, name, energy, findings);
}

}  // namespace qvre
