#include "prepare/cluster/Terminations.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "prepare/cluster/CellCheck.h"
#include "prepare/cluster/CellGrid.h"
#include "prepare/cluster/CellSymmetry.h"

namespace qvre {

namespace {

constexpr std::size_t kShownLayers = 4;
constexpr std::size_t kShownTerminations = 12;

/// Neighbours of the atoms of a crystal, as TopNeighbours has them.
class Neighbourhoods {
public:
    Neighbourhoods(const CrystalCell& cell, const SurfaceFrame& frame)
        : cell_(cell), normal_(frame.rotation.row_copy(2)), grid_(cell), heights_(cell.atoms.size()) {}

    /// Heights of the neighbours above the atom, angstrom.
    const std::vector<double>& HeightsAround(std::size_t atom) {
        std::vector<double>& heights = heights_[atom];
        if (!heights.empty()) return heights;
        const double reach = kNeighbours * NearestDistance(atom);
        for (const CellGrid::Found& found : Around(atom, reach)) heights.push_back(found.offset.dot(normal_));
        return heights;
    }

    /// How many neighbours are left when the crystal ends at a height above the atom.
    int LeftBelow(std::size_t atom, double top) {
        const std::vector<double>& heights = HeightsAround(atom);
        return static_cast<int>(std::count_if(heights.begin(), heights.end(), [top](double height) {
            return height < top + kSamePlane_angstrom;
        }));
    }

private:
    static constexpr double kNeighbours = 1.15;

    std::vector<CellGrid::Found> Around(std::size_t atom, double radius) const {
        std::vector<CellGrid::Found> found = grid_.Near(cell_.atoms[atom].fractional, radius);
        found.erase(std::remove_if(found.begin(), found.end(),
                                   [](const CellGrid::Found& near) { return near.distance < 1e-3; }),
                    found.end());
        return found;
    }

    double NearestDistance(std::size_t atom) const {
        for (double radius = 2.0;; radius *= 1.5) {
            const std::vector<CellGrid::Found> found = Around(atom, radius);
            if (found.empty()) continue;
            return std::min_element(found.begin(), found.end(),
                                    [](const auto& a, const auto& b) { return a.distance < b.distance; })
                ->distance;
        }
    }

    const CrystalCell& cell_;
    gemmi::Vec3 normal_;
    CellGrid grid_;
    std::vector<std::vector<double>> heights_;
};

/// Describes the half crystal below a layer of the frame.
class Describer {
public:
    Describer(const CrystalCell& cell, const SurfaceFrame& frame)
        : cell_(cell), frame_(frame), neighbours_(cell, frame) {}

    Termination Describe(std::size_t layer) {
        // Counted on by periods, so that there are planes to step down to.
        Termination termination;
        const std::size_t up = layer + kPeriodsBelow * frame_.layers.size();
        termination.topmost = frame_.TopmostPlane(up);
        AddLayers(up, termination);
        AddNeighbours(up, termination);
        AddBrokenBonds(termination);
        return termination;
    }

private:
    static constexpr std::size_t kPeriodsBelow = 100;

    double DepthOf(std::size_t plane, const Termination& termination) const {
        return frame_.HeightOf(termination.topmost) - frame_.HeightOf(plane);
    }

    std::size_t LowestPlane(std::size_t layer) const {
        const std::size_t count = frame_.layers.size();
        return frame_.layers[layer % count].lowest + layer / count * frame_.planes.size();
    }

    void AddLayers(std::size_t up, Termination& termination) const {
        for (std::size_t down = 0; down < kShownLayers; ++down) {
            const std::size_t highest = frame_.TopmostPlane(up - down);
            const std::size_t lowest = LowestPlane(up - down);
            if (down > 0 && frame_.GapAbove(highest) > kVacuum_angstrom) return;
            std::vector<std::size_t> atoms;
            for (std::size_t plane = lowest; plane <= highest; ++plane) {
                const auto& more = frame_.planes[plane % frame_.planes.size()].atoms;
                atoms.insert(atoms.end(), more.begin(), more.end());
            }
            termination.layers.push_back({ElementsOf(cell_, atoms), DepthOf(highest, termination),
                                          frame_.HeightOf(highest) - frame_.HeightOf(lowest)});
        }
    }

    void AddNeighbours(std::size_t up, Termination& termination) {
        std::set<std::tuple<std::string, int, int>> kinds;
        for (std::size_t plane = LowestPlane(up); plane <= termination.topmost; ++plane)
            for (const std::size_t atom : frame_.planes[plane % frame_.planes.size()].atoms)
                kinds.emplace(cell_.atoms[atom].element,
                              neighbours_.LeftBelow(atom, DepthOf(plane, termination)),
                              static_cast<int>(neighbours_.HeightsAround(atom).size()));
        for (const auto& [element, left, inBulk] : kinds)
            termination.neighbours.push_back({element, left, inBulk});
    }

    void AddBrokenBonds(Termination& termination) {
        for (std::size_t atom = 0; atom < cell_.atoms.size(); ++atom) {
            const std::vector<double>& heights = neighbours_.HeightsAround(atom);
            const double reach = *std::max_element(heights.begin(), heights.end());
            double depth = DepthOf(frame_.planeOf[atom], termination);
            depth -= frame_.period * std::floor((depth + kSamePlane_angstrom) / frame_.period);
            for (; depth < reach; depth += frame_.period)
                termination.brokenBonds +=
                    static_cast<int>(heights.size()) - neighbours_.LeftBelow(atom, depth);
        }
    }

    const CrystalCell& cell_;
    const SurfaceFrame& frame_;
    Neighbourhoods neighbours_;
};

/// The layers at which the crystal can end.
std::vector<std::size_t> TopLayers(const SurfaceFrame& frame) {
    std::vector<std::size_t> all;
    std::vector<std::size_t> belowVacuum;
    for (std::size_t layer = 0; layer < frame.layers.size(); ++layer) {
        all.push_back(layer);
        if (frame.GapAbove(frame.TopmostPlane(layer)) > kVacuum_angstrom) belowVacuum.push_back(layer);
    }
    return belowVacuum.empty() ? all : belowVacuum;
}

/// Which layers are the same but for a symmetry.
class LayerSymmetry {
public:
    LayerSymmetry(const CrystalCell& cell, const SurfaceFrame& frame)
        : frame_(frame), symmetry_(cell), operations_(symmetry_.KeepingNormal(frame.rotation)) {
        for (std::size_t atom = 0; atom < cell.atoms.size(); ++atom)
            layersOfClass_[symmetry_.ClassOf(atom)].insert(frame.layerOf[frame.planeOf[atom]]);
    }

    std::set<std::size_t> EquivalentTo(std::size_t layer) const {
        std::set<std::size_t> equivalent;
        for (const SurfaceOperation& operation : operations_)
            for (const std::size_t image : ImagesOf(layer, operation)) equivalent.insert(image);
        return equivalent;
    }

    /// How the terraces of other height lie beside this one.
    void AddTerraces(std::size_t layer, Termination& termination) const {
        std::vector<SurfaceOperation> own;  // keep the half crystal
        std::vector<SurfaceOperation> others;
        for (const SurfaceOperation& operation : operations_)
            (ImagesOf(layer, operation).contains(layer) ? own : others).push_back(operation);
        const auto isMirror = [](const SurfaceOperation& operation) { return operation.isMirror; };
        const auto turns = std::count_if(own.begin(), own.end(), std::not_fn(isMirror));
        const double period = 360.0 / static_cast<double>(turns);
        std::set<long> different;
        for (const SurfaceOperation& operation : others)
            if (!operation.isMirror)
                different.insert(
                    std::lround(operation.angle_deg - period * std::floor(operation.angle_deg / period)));
        for (const long turn : different) termination.turns_deg.push_back(static_cast<double>(turn));
        if (std::any_of(own.begin(), own.end(), isMirror)) return;
        const auto mirror = std::find_if(others.begin(), others.end(), isMirror);
        if (mirror != others.end()) termination.mirror_deg = mirror->angle_deg;
    }

private:
    std::set<std::size_t> ImagesOf(std::size_t layer, const SurfaceOperation& operation) const {
        const std::size_t plane = frame_.layers[layer].lowest;
        const std::size_t image = operation.images[frame_.planes[plane].atoms.front()];
        return layersOfClass_.at(symmetry_.ClassOf(image));
    }

    const SurfaceFrame& frame_;
    CellSymmetry symmetry_;
    std::vector<SurfaceOperation> operations_;
    std::map<std::size_t, std::set<std::size_t>> layersOfClass_;
};

/// Fewest broken bonds first; distances count in steps of 0.001 angstrom.
auto OrderOf(const Termination& termination) {
    const double spacing = termination.layers.size() > 1 ? termination.layers[1].depth_angstrom : 0.0;
    std::string elements;
    for (const SurfaceLayer& layer : termination.layers) elements += layer.elements + "/";
    return std::tuple(termination.brokenBonds, -std::lround(spacing * 1000.0), elements);
}

bool Begins(const Termination& termination, const std::vector<std::string>& layers) {
    if (layers.size() > termination.layers.size()) return false;
    return std::equal(
        layers.begin(), layers.end(), termination.layers.begin(),
        [](const std::string& elements, const SurfaceLayer& layer) { return elements == layer.elements; });
}

/// "O/Ti O" as the elements of layers, each in alphabetical order.
std::vector<std::string> LayersOfName(const std::string& name) {
    std::vector<std::string> layers;
    std::set<std::string> elements;
    std::string element;
    const auto endElement = [&] {
        if (!element.empty()) elements.insert(std::exchange(element, {}));
    };
    const auto endLayer = [&] {
        endElement();
        layers.push_back(fmt::format("{}", fmt::join(elements, " ")));
        elements.clear();
    };
    for (const char c : name) {
        if (c == '/')
            endLayer();
        else if (c == ' ' || c == '\t' || c == ',' || c == '+')
            endElement();
        else
            element += c;
    }
    endLayer();
    return layers;
}

/// What a user may write: a number, or the shortest name by layers that only one termination has.
std::string HowToChoose(const std::vector<Termination>& terminations) {
    for (const Termination& termination : terminations) {
        std::vector<std::string> layers;
        for (const SurfaceLayer& layer : termination.layers) {
            layers.push_back(layer.elements);
            const auto same = std::count_if(terminations.begin(), terminations.end(),
                                            [&](const Termination& other) { return Begins(other, layers); });
            if (same == 1)
                return fmt::format("to its number, or to the elements of its topmost layers such as \"{}\"",
                                   fmt::join(layers, " / "));
        }
    }
    return "to its number";
}

std::string NeighbourText(const TopNeighbours& top) {
    if (top.left == top.inBulk)
        return fmt::format("{} keeps its {}", top.element,
                           top.left == 1 ? "neighbour" : fmt::format("{} neighbours", top.left));
    return fmt::format("{} has {} of {} neighbours", top.element, top.left, top.inBulk);
}

/// What lies on the terraces beside this one, in lines.
std::string TerraceText(const Termination& termination, double azimuth_deg) {
    std::string text;
    if (!termination.turns_deg.empty())
        text += fmt::format("terraces a step away are turned by {0} degrees: domains = [0, {0}] takes all\n",
                            fmt::join(termination.turns_deg, ", "));
    if (termination.mirror_deg)
        text += fmt::format("terraces a step away are mirror images, plane at azimuth {:.4g} degrees\n",
                            *termination.mirror_deg + azimuth_deg);
    return text;
}

std::string TerminationText(const Termination& termination, double azimuth_deg) {
    std::vector<std::string> tops;
    for (const TopNeighbours& top : termination.neighbours) tops.push_back(NeighbourText(top));
    constexpr std::size_t kShownKinds = 4;
    if (tops.size() > kShownKinds) {
        tops.resize(kShownKinds);
        tops.emplace_back("...");
    }
    const SurfaceLayer& first = termination.layers.front();
    std::string text = first.elements;
    if (first.rumple_angstrom > kSamePlane_angstrom)
        text += fmt::format(" (rumpled by {:.3f})", first.rumple_angstrom);
    for (std::size_t i = 1; i < termination.layers.size(); ++i)
        text += fmt::format("{} {} at {:.3f}", i > 1 ? "," : " on top, then", termination.layers[i].elements,
                            termination.layers[i].depth_angstrom);
    text += fmt::format(" angstrom; {}", fmt::join(tops, ", "));
    for (const std::string& line : LineSplit(TerraceText(termination, azimuth_deg))) text += "\n     " + line;
    return text;
}

std::string Lines(const std::vector<Termination>& terminations, const ClusterRequest& request) {
    std::string lines;
    for (std::size_t i = 0; i < std::min(terminations.size(), kShownTerminations); ++i)
        lines += fmt::format("\n{:>3}  {}", i + 1, TerminationText(terminations[i], request.azimuth_deg));
    if (terminations.size() > kShownTerminations)
        lines += fmt::format(
            "\n     and {} more: a larger layer-tolerance than {:g} angstrom takes planes together",
            terminations.size() - kShownTerminations, LayerTolerance_angstrom(request));
    return lines;
}

std::string Counted(std::size_t count) {
    return fmt::format("{} termination{}", count, count == 1 ? "" : "s");
}

}  // namespace

double LayerTolerance_angstrom(const ClusterRequest& request) {
    constexpr double kRumpled_angstrom = 0.3;
    return request.layerTolerance_angstrom.value_or(request.allEmitters ? kRumpled_angstrom
                                                                        : kSamePlane_angstrom);
}

std::vector<Termination> FindTerminations(const CrystalCell& cell, const SurfaceFrame& frame) {
    if (frame.period < kSamePlane_angstrom)
        throw ZfError(
            fmt::format("The planes of this surface lie within {:g} angstrom of each other and make "
                        "no layers: give lower Miller indices",
                        kSamePlane_angstrom));
    const LayerSymmetry symmetry(cell, frame);
    Describer describer(cell, frame);
    std::set<std::size_t> known;
    std::vector<Termination> terminations;
    for (const std::size_t layer : TopLayers(frame)) {
        if (known.contains(layer)) continue;
        known.merge(symmetry.EquivalentTo(layer));
        terminations.push_back(describer.Describe(layer));
        symmetry.AddTerraces(layer, terminations.back());
    }
    std::stable_sort(terminations.begin(), terminations.end(),
                     [](const Termination& a, const Termination& b) { return OrderOf(a) < OrderOf(b); });
    return terminations;
}

Termination ChosenTermination(const ClusterRequest& request, const SurfaceFrame& frame) {
    const std::vector<Termination> terminations = FindTerminations(request.cell, frame);
    const std::string& name = request.termination;
    const std::string surface = SurfaceName(request.cell, request.surface);
    const std::string has = surface + " has " + Counted(terminations.size());
    const std::string lines = Lines(terminations, request);
    if (name.empty()) {
        if (terminations.size() == 1) return terminations[0];
        throw ZfError(fmt::format("{}, one of which is to be chosen: set termination {}{}", has,
                                  HowToChoose(terminations), lines));
    }
    if (name.find_first_not_of("0123456789") == std::string::npos) {
        if (name.size() > 6 || name == "0" || std::stoul(name) < 1 || std::stoul(name) > terminations.size())
            throw ZfError(fmt::format("There is no termination {}: {}{}", name, has, lines));
        return terminations[std::stoul(name) - 1];
    }
    std::vector<Termination> found;
    const std::vector<std::string> layers = LayersOfName(name);
    std::copy_if(terminations.begin(), terminations.end(), std::back_inserter(found),
                 [&](const Termination& termination) { return Begins(termination, layers); });
    if (found.size() == 1) return found[0];
    throw ZfError(fmt::format(
        "{} with the topmost layers \"{}\": {}{}",
        found.empty() ? "There is no termination" : std::to_string(found.size()) + " terminations begin",
        name, has, lines));
}

void CheckLayerTolerance(const ClusterRequest& request) {
    constexpr double kMost_angstrom = 2.0;
    const double tolerance = LayerTolerance_angstrom(request);
    if (!(tolerance >= 0.0 && tolerance <= kMost_angstrom))
        throw ZfError(
            fmt::format("The layer tolerance has to lie between 0 and {:g} angstrom", kMost_angstrom));
}

std::string TerraceRemarks(const ClusterRequest& request, const SurfaceFrame& frame) {
    if (!request.allEmitters || request.domains.size() > 1) return {};
    return TerraceText(ChosenTermination(request, frame), request.azimuth_deg);
}

std::string TerminationListing(ClusterRequest request) {
    request.allEmitters = true;  // for its tolerance
    CheckCell(request.cell);
    CheckLayerTolerance(request);
    const SurfaceFrame frame(request.cell, request.surface, LayerTolerance_angstrom(request));
    const std::vector<Termination> terminations = FindTerminations(request.cell, frame);
    return fmt::format("{}: {}, layers within {:g} angstrom{}\n", SurfaceName(request.cell, request.surface),
                       Counted(terminations.size()), LayerTolerance_angstrom(request),
                       Lines(terminations, request));
}

}  // namespace qvre
