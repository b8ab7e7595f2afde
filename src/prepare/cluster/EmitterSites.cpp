#include "prepare/cluster/EmitterSites.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "foundation/ZfError.h"
#include "prepare/cluster/CellGrid.h"

namespace qvre {

namespace {

constexpr double kSamePlace_angstrom = 0.01;
constexpr int kDeepestLayer = 1000;

std::string Joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
    return text;
}

bool Holds(const std::vector<std::string>& elements, const std::string& element) {
    return std::find(elements.begin(), elements.end(), element) != elements.end();
}

/// The sets of atoms that translations of the crystal bring to coincide.
class TranslationClasses {
public:
    explicit TranslationClasses(const CrystalCell& cell) : cell_(cell), grid_(cell) {
        for (std::size_t atom = 0; atom < cell.atoms.size(); ++atom) {
            class_.push_back(atom);
            order_.push_back(atom);
        }
        // A translation brings an atom to one of its element: those of the rarest are the ones to try.
        const std::vector<std::size_t> rarest = RarestElement();
        for (const std::size_t target : rarest) {
            if (Of(target) == Of(rarest[0])) continue;  // follows from translations that are known
            const std::vector<std::size_t> images =
                Images(cell.atoms[target].fractional - cell.atoms[rarest[0]].fractional);
            for (std::size_t atom = 0; atom < images.size(); ++atom) Join(atom, images[atom]);
        }
    }

    /// The first atom of its set stands for all.
    std::size_t Of(std::size_t atom) {
        while (class_[atom] != atom) atom = class_[atom] = class_[class_[atom]];
        return atom;
    }

private:
    std::vector<std::size_t> RarestElement() const {
        std::map<std::string, std::vector<std::size_t>> atoms;
        for (std::size_t atom = 0; atom < cell_.atoms.size(); ++atom)
            atoms[cell_.atoms[atom].element].push_back(atom);
        const auto rarest = std::min_element(atoms.begin(), atoms.end(), [](const auto& a, const auto& b) {
            return a.second.size() < b.second.size();
        });
        return rarest == atoms.end() ? std::vector<std::size_t>() : rarest->second;
    }

    /// Where a shift brings each atom; empty when one of them comes to no atom of its element. The atom that
    /// spoils a shift is the first to be looked at for the next.
    std::vector<std::size_t> Images(const gemmi::Vec3& shift) {
        std::vector<std::size_t> images(order_.size());
        for (std::size_t& atom : order_) {
            const CellAtom& from = cell_.atoms[atom];
            const std::vector<CellGrid::Found> found =
                grid_.Near(from.fractional + shift, kSamePlace_angstrom);
            const auto image = std::find_if(found.begin(), found.end(), [&](const CellGrid::Found& to) {
                return cell_.atoms[to.atom].element == from.element;
            });
            if (image == found.end()) {
                std::swap(order_[0], atom);
                return {};
            }
            images[atom] = image->atom;
        }
        return images;
    }

    void Join(std::size_t a, std::size_t b) {
        const std::size_t classA = Of(a);
        const std::size_t classB = Of(b);
        class_[std::max(classA, classB)] = std::min(classA, classB);
    }

    const CrystalCell& cell_;
    CellGrid grid_;
    std::vector<std::size_t> class_;  // an atom of the same set; itself, when it is the first
    std::vector<std::size_t> order_;  // in which atoms are looked at
};

/// Atoms of the element, one of each set that translations join.
std::vector<std::size_t> DifferentSites(const CrystalCell& cell, const std::string& element) {
    TranslationClasses classes(cell);
    std::set<std::size_t> known;
    std::vector<std::size_t> sites;
    for (std::size_t i = 0; i < cell.atoms.size(); ++i)
        if (cell.atoms[i].element == element && known.insert(classes.Of(i)).second) sites.push_back(i);
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

}  // namespace

void CheckLayer(int layer) {
    if (layer < 1 || layer > kDeepestLayer)
        throw ZfError("There is no layer " + std::to_string(layer) +
                      ": layers count from 1, the surface, to " + std::to_string(kDeepestLayer));
}

std::vector<EmitterSite> FindEmitters(const ClusterRequest& request, const SurfaceFrame& frame) {
    const std::vector<std::string> elements = request.cell.Elements();
    if (!request.top.empty() && !Holds(elements, request.top))
        throw ZfError("No surface plane of " + request.top + ": the crystal holds " + Joined(elements));
    const std::vector<std::size_t> sites = request.sites.empty()
                                               ? DifferentSites(request.cell, EmitterElement(request))
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
