#include "prepare/cluster/EmitterSites.h"

#include <algorithm>
#include <set>
#include <string>

#include "foundation/ZfError.h"

namespace {

constexpr double kSamePlace_A = 0.01;
constexpr int kDeepestLayer = 1000;

std::string Joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
    return text;
}

bool Holds(const std::vector<std::string>& elements, const std::string& element) {
    return std::find(elements.begin(), elements.end(), element) != elements.end();
}

/// Whether the translation from atom a to atom b brings the crystal to coincide with itself.
bool IsTranslation(const CrystalCell& cell, std::size_t a, std::size_t b) {
    const gemmi::Vec3 shift = cell.atoms[b].fractional - cell.atoms[a].fractional;
    return std::all_of(cell.atoms.begin(), cell.atoms.end(), [&](const CellAtom& from) {
        return std::any_of(cell.atoms.begin(), cell.atoms.end(), [&](const CellAtom& to) {
            return from.element == to.element &&
                   cell.DistanceFromLattice(from.fractional + shift - to.fractional) < kSamePlace_A;
        });
    });
}

/// Atoms of the element, one of each set that translations join.
std::vector<std::size_t> DifferentSites(const CrystalCell& cell, const std::string& element) {
    std::vector<std::size_t> sites;
    for (std::size_t i = 0; i < cell.atoms.size(); ++i) {
        if (cell.atoms[i].element != element) continue;
        const bool known = std::any_of(sites.begin(), sites.end(),
                                       [&](std::size_t site) { return IsTranslation(cell, site, i); });
        if (!known) sites.push_back(i);
    }
    return sites;
}

std::string EmitterElement(const ClusterRequest& request) {
    const std::vector<std::string> elements = request.cell.Elements();
    if (request.emitter.empty()) {
        if (elements.size() == 1) return elements[0];
        throw ZfError("The crystal holds " + Joined(elements) + ": say which one emits (--emitter)");
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

[[noreturn]] void ThrowNoSuchLayer(const ClusterRequest& request, const SurfaceFrame& frame,
                                   const std::vector<std::size_t>& sites, int layer) {
    std::set<int> layers;
    for (const std::size_t site : sites) {
        const int most = static_cast<int>(frame.planes.size());
        for (int other = 1; other <= most; ++other)
            if (!InLayer(request, frame, {site}, other).empty()) layers.insert(other);
    }
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

}  // namespace

std::vector<EmitterSite> FindEmitters(const ClusterRequest& request, const SurfaceFrame& frame) {
    const std::vector<std::string> elements = request.cell.Elements();
    if (!request.top.empty() && !Holds(elements, request.top))
        throw ZfError("No surface plane of " + request.top + ": the crystal holds " + Joined(elements));
    const std::vector<std::size_t> sites = request.sites.empty()
                                               ? DifferentSites(request.cell, EmitterElement(request))
                                               : NumberedSites(request);
    std::vector<EmitterSite> emitters;
    for (const int layer : request.layers) {
        if (layer < 1 || layer > kDeepestLayer)
            throw ZfError("There is no layer " + std::to_string(layer) +
                          ": layers count from 1, the surface, to " + std::to_string(kDeepestLayer));
        const std::vector<EmitterSite> found = InLayer(request, frame, sites, layer);
        if (found.empty()) ThrowNoSuchLayer(request, frame, sites, layer);
        emitters.insert(emitters.end(), found.begin(), found.end());
    }
    return emitters;
}
