#include "prepare/cluster/EmitterSites.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "foundation/ZfError.h"
#include "prepare/cluster/CellSymmetry.h"
#include "prepare/cluster/Terminations.h"

namespace qvre {

namespace {

constexpr int kDeepestLayer = 1000;

std::string Joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
    return text;
}

bool Holds(const std::vector<std::string>& elements, const std::string& element) {
    return std::find(elements.begin(), elements.end(), element) != elements.end();
}

/// Atoms of the element: one of each set that translations join, or all.
std::vector<std::size_t> SitesOf(const CrystalCell& cell, const std::string& element, EqualEmitters equal) {
    const CellSymmetry symmetry(cell);
    std::vector<std::size_t> sites;
    for (std::size_t i = 0; i < cell.atoms.size(); ++i)
        if (cell.atoms[i].element == element && (equal == EqualEmitters::kKept || symmetry.ClassOf(i) == i))
            sites.push_back(i);
    return sites;
}

std::string EmitterElement(const ClusterRequest& request) {
    const std::vector<std::string> elements = request.cell.Elements();
    if (request.emitter.empty()) {
        if (elements.size() == 1) return elements[0];
        throw ZfError("The crystal holds " + Joined(elements) + ": say which one is the emitter");
    }
    if (!Holds(elements, request.emitter))
        throw ZfError("No " + request.emitter + " to emit: the crystal holds " + Joined(elements));
    return request.emitter;
}

std::vector<std::size_t> NumberedSites(const ClusterRequest& request) {
    const std::vector<CellAtom>& atoms = request.cell.atoms;
    std::vector<std::size_t> sites;
    for (const int number : request.sites) {
        const std::string named = "Emitter site " + std::to_string(number);
        if (number < 1 || static_cast<std::size_t>(number) > atoms.size())
            throw ZfError(named + " does not exist: the cell has the atoms 1 to " +
                          std::to_string(atoms.size()));
        const auto site = static_cast<std::size_t>(number) - 1;
        if (!request.emitter.empty() && atoms[site].element != request.emitter)
            throw ZfError(named + " is " + atoms[site].element + ", not " + request.emitter);
        sites.push_back(site);
    }
    return sites;
}

bool IsTopped(const ClusterRequest& request, const SurfaceFrame& frame, const CrystalBounds& bounds) {
    if (request.top.empty()) return true;
    const std::vector<std::size_t>& atoms = frame.planes[bounds.plane].atoms;
    return std::any_of(atoms.begin(), atoms.end(),
                       [&](std::size_t atom) { return request.cell.atoms[atom].element == request.top; });
}

std::vector<EmitterSite> InLayer(const ClusterRequest& request, const SurfaceFrame& frame,
                                 const std::vector<std::size_t>& sites, int layer) {
    std::vector<EmitterSite> found;
    for (const std::size_t site : sites) {
        const auto bounds = BoundsForLayer(frame, site, layer);
        if (bounds && IsTopped(request, frame, *bounds)) found.push_back({site, layer, *bounds});
    }
    return found;
}

/// The layers in which a site can emit, within one period of the planes.
void AddLayers(const ClusterRequest& request, const SurfaceFrame& frame, std::size_t site,
               std::set<int>& layers) {
    const std::optional<int> slabLayer = LayerInSlab(frame, site);
    const int first = slabLayer.value_or(1);
    const int last = slabLayer.value_or(static_cast<int>(frame.planes.size()));
    for (int layer = first; layer <= last; ++layer)
        if (!layers.contains(layer) && !InLayer(request, frame, {site}, layer).empty()) layers.insert(layer);
}

[[noreturn]] void ThrowNoSuchLayer(const ClusterRequest& request, const SurfaceFrame& frame,
                                   const std::vector<std::size_t>& sites, int layer) {
    std::set<int> layers;
    for (const std::size_t site : sites) AddLayers(request, frame, site, layers);
    std::vector<std::string> words;
    words.reserve(layers.size());
    for (const int other : layers) words.push_back(std::to_string(other));
    std::string message = "No emitter lies in layer " + std::to_string(layer);
    if (!request.top.empty()) message += " below a surface plane of " + request.top;
    message += words.empty() ? ": there is none in any layer" : "; there are in " + Joined(words);
    if (!words.empty() && !LayerInSlab(frame, sites.front()))
        message += " and every " + std::to_string(frame.planes.size()) + " further";
    throw ZfError(message);
}

void CheckAllEmitters(const ClusterRequest& request) {
    constexpr double kDeepest_angstrom = 100.0;
    if (!(request.depth_angstrom >= 0.0 && request.depth_angstrom <= kDeepest_angstrom))
        throw ZfError(fmt::format("The depth of the emitters has to lie between 0 and {:g} angstrom",
                                  kDeepest_angstrom));
    if (!request.sites.empty())
        throw ZfError("All emitters below a termination are asked for: leave the sites out");
    if (!request.top.empty())
        throw ZfError(
            "All emitters below a termination are asked for: in place of top, termination says "
            "how the crystal ends");
}

/// Adds the atoms of the element in one plane, one for each class of `classOf`.
void AddPlane(const ClusterRequest& request, const std::string& element, const AtomicPlane& plane,
              const std::function<std::size_t(std::size_t)>& classOf, const EmitterSite& place,
              std::vector<EmitterSite>& emitters) {
    std::map<std::size_t, std::size_t> known;  // index of the emitter, by class
    for (const std::size_t atom : plane.atoms) {
        if (request.cell.atoms[atom].element != element) continue;
        const auto [emitter, isNew] = known.emplace(classOf(atom), emitters.size());
        if (!isNew) {
            ++emitters[emitter->second].weight;
            continue;
        }
        emitters.push_back(place);
        emitters.back().atom = atom;
    }
}

[[noreturn]] void ThrowNoneSoDeep(const ClusterRequest& request, const SurfaceFrame& frame,
                                  const std::string& element, std::size_t topmost) {
    std::string message =
        fmt::format("No {} lies within {:g} angstrom below the surface", element, request.depth_angstrom);
    for (std::size_t plane = topmost; plane + frame.planes.size() > topmost; --plane) {
        const std::vector<std::size_t>& atoms = frame.planes[plane % frame.planes.size()].atoms;
        const double depth = frame.HeightOf(topmost) - frame.HeightOf(plane);
        if (std::any_of(atoms.begin(), atoms.end(),
                        [&](std::size_t atom) { return request.cell.atoms[atom].element == element; }))
            throw ZfError(fmt::format("{}: the first is at a depth of {:.3f} angstrom", message, depth));
    }
    throw ZfError(message);
}

/// All emitters below the termination, from the surface down.
std::vector<EmitterSite> EmittersBelow(const ClusterRequest& request, const SurfaceFrame& frame,
                                       EqualEmitters equal) {
    constexpr std::size_t kMostEmitters = 10000;
    constexpr double kRounding_angstrom = 1e-3;  // for depths copied with three digits
    CheckAllEmitters(request);
    const std::string element = EmitterElement(request);
    const Termination termination = ChosenTermination(request, frame);
    const CellSymmetry symmetry(request.cell);
    const auto classOf = [&](std::size_t atom) {
        return equal == EqualEmitters::kJoined ? symmetry.ClassOf(atom) : atom;
    };
    // Counted on so far that all planes down to the depth have a number.
    const std::size_t count = frame.planes.size();
    const auto periods = static_cast<std::size_t>(request.depth_angstrom / frame.period) + 3;
    const std::size_t topmost = termination.topmost % count + periods * count;
    const double vacuum = frame.GapAbove(topmost);
    const double thickness =
        vacuum > kVacuum_angstrom ? frame.period - vacuum : std::numeric_limits<double>::infinity();
    const double deepest =
        std::min(request.depth_angstrom + kRounding_angstrom, thickness + kSamePlane_angstrom);

    std::vector<EmitterSite> emitters;
    EmitterSite place;
    place.bounds.plane = topmost % count;
    for (std::size_t plane = topmost;; --plane) {
        place.bounds.top = frame.HeightOf(topmost) - frame.HeightOf(plane);
        place.bounds.bottom = place.bounds.top - thickness;
        if (place.bounds.top > deepest) break;
        if (plane != topmost && frame.IsTopOfLayer(plane)) ++place.layer;
        AddPlane(request, element, frame.planes[plane % count], classOf, place, emitters);
        if (emitters.size() > kMostEmitters)
            throw ZfError(
                fmt::format("More than {} different emitters lie within {:g} angstrom below the "
                            "surface: take a smaller depth",
                            kMostEmitters, request.depth_angstrom));
    }
    if (emitters.empty()) ThrowNoneSoDeep(request, frame, element, topmost);
    return emitters;
}

}  // namespace

void CheckLayer(int layer) {
    if (layer < 1 || layer > kDeepestLayer)
        throw ZfError("There is no layer " + std::to_string(layer) +
                      ": layers count from 1, the surface, to " + std::to_string(kDeepestLayer));
}

std::vector<EmitterSite> FindEmitters(const ClusterRequest& request, const SurfaceFrame& frame,
                                      EqualEmitters equal) {
    if (request.allEmitters) return EmittersBelow(request, frame, equal);
    const std::vector<std::string> elements = request.cell.Elements();
    if (!request.top.empty() && !Holds(elements, request.top))
        throw ZfError("No surface plane of " + request.top + ": the crystal holds " + Joined(elements));
    const std::vector<std::size_t> sites = request.sites.empty()
                                               ? SitesOf(request.cell, EmitterElement(request), equal)
                                               : NumberedSites(request);
    std::vector<EmitterSite> emitters;
    for (const int layer : request.layers) {
        CheckLayer(layer);
        const std::vector<EmitterSite> found = InLayer(request, frame, sites, layer);
        if (found.empty()) ThrowNoSuchLayer(request, frame, sites, layer);
        emitters.insert(emitters.end(), found.begin(), found.end());
    }
    return emitters;
}

}  // namespace qvre
