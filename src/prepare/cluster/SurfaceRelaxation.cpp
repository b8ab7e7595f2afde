#include "prepare/cluster/SurfaceRelaxation.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <set>

#include "foundation/ZfError.h"
#include "prepare/cluster/CellSymmetry.h"
#include "prepare/cluster/SurfaceDomains.h"

namespace qvre {

namespace {

/// Layers of the slab that are there with atoms; entry i is layer i + 1.
std::vector<std::vector<std::size_t>> AtomsByLayer(const SurfaceSlab& slab) {
    std::vector<std::vector<std::size_t>> layers(static_cast<std::size_t>(slab.Layers()));
    for (std::size_t i = 0; i < slab.atoms.size(); ++i)
        if (slab.atoms[i].layer > 0) layers[static_cast<std::size_t>(slab.atoms[i].layer) - 1].push_back(i);
    return layers;
}

double MeanHeight(const SurfaceSlab& slab, const std::vector<std::size_t>& atoms) {
    double sum = 0.0;
    for (const std::size_t atom : atoms) sum += slab.atoms[atom].position.z;
    return sum / static_cast<double>(atoms.size());
}

/// How far each layer goes up for the spacings that are asked for; the deepest that is named stays.
std::vector<double> RiseOf(const Relaxation& relaxation, const SurfaceSlab& slab,
                           const std::vector<std::vector<std::size_t>>& layers) {
    std::vector<double> rise(layers.size(), 0.0);
    for (std::size_t i = relaxation.spacing.size(); i-- > 0;) {
        rise[i] = rise[i + 1];
        if (!relaxation.spacing[i]) continue;
        const double inBulk = MeanHeight(slab, layers[i]) - MeanHeight(slab, layers[i + 1]);
        const LayerSpacing& wanted = *relaxation.spacing[i];
        const double spacing = wanted.isPercent ? inBulk * (1.0 + wanted.value / 100.0) : wanted.value;
        if (!(spacing > 0.0))
            throw ZfError(
                fmt::format("The spacing d{}{} would be {:.4g} angstrom, from {:.4g} in the bulk: it "
                            "has to be above 0{}",
                            i + 1, i + 2, spacing, inBulk,
                            wanted.isPercent ? "" : R"(; a change of it is written like "-3 percent")"));
        rise[i] += spacing - inBulk;
    }
    for (std::size_t i = 0; i < relaxation.shift_angstrom.size(); ++i)
        rise[i] += relaxation.shift_angstrom[i];
    return rise;
}

/// Throws ZfError for a move that is no relaxation.
void CheckMove(double angstrom) {
    constexpr double kFarthest_angstrom = 10.0;
    if (!(std::abs(angstrom) <= kFarthest_angstrom))
        throw ZfError(fmt::format("An atom would move by {:.4g} angstrom: more than {:g} are no relaxation",
                                  angstrom, kFarthest_angstrom));
}

void Rumple(const std::map<std::string, double>& byElement, const std::vector<std::size_t>& atoms, int layer,
            SurfaceSlab& slab) {
    for (const auto& [element, height] : byElement) {
        bool isThere = false;
        for (const std::size_t atom : atoms) {
            if (slab.atoms[atom].element != element) continue;
            CheckMove(height);
            slab.atoms[atom].position.z += height;
            isThere = true;
        }
        if (isThere) continue;
        std::set<std::string> elements;
        for (const std::size_t atom : atoms) elements.insert(slab.atoms[atom].element);
        throw ZfError(fmt::format("There is no {} in layer {} to rumple: it holds {}", element, layer,
                                  fmt::join(elements, ", ")));
    }
}

std::string Told(const AtomMove& move) {
    const std::string atoms = move.element.empty() ? "atom" : move.element;
    return move.layer == 0 ? atoms + " of the adsorbates" : fmt::format("{} in layer {}", atoms, move.layer);
}

/// Without rounding's minus at 0.
double RoundedTo4(double number) {
    return std::round(number * 1e4) / 1e4 + 0.0;
}

/// The places of some atoms as fractions of the (1x1) cell: "0, 0.5 and 0.5, 0".
std::string PlacesText(const std::vector<std::size_t>& atoms, const SurfaceLattice& unitCell,
                       const SurfaceSlab& slab) {
    constexpr std::size_t kShown = 12;
    std::vector<std::string> places;
    for (const std::size_t atom : atoms) {
        const gemmi::Vec3 f = FractionsOf(slab.atoms[atom].position, unitCell);
        places.push_back(fmt::format("{:.4g}, {:.4g}", RoundedTo4(f.x), RoundedTo4(f.y)));
    }
    if (places.size() > kShown) {
        places.resize(kShown);
        places.emplace_back("others");
    }
    return fmt::format("{}", fmt::join(places, " and "));
}

/// The atom that a move names.
std::size_t Selected(const AtomMove& move, const SurfaceLattice& unitCell, const SurfaceSlab& slab) {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < slab.atoms.size(); ++i)
        if (slab.atoms[i].layer == move.layer &&
            (move.element.empty() || slab.atoms[i].element == move.element))
            found.push_back(i);
    if (found.empty()) throw ZfError("There is no " + Told(move) + " to move");
    if (!move.at) return found.front();
    const gemmi::Vec3 place = unitCell[0] * (*move.at)[0] + unitCell[1] * (*move.at)[1];
    const auto distance = [&](std::size_t atom) {
        const gemmi::Vec3& p = slab.atoms[atom].position;
        return slab.Shortest(gemmi::Vec3(p.x, p.y, 0.0) - place).length();
    };
    const std::size_t nearest = *std::min_element(
        found.begin(), found.end(), [&](std::size_t a, std::size_t b) { return distance(a) < distance(b); });
    constexpr double kNear_angstrom = 0.7;
    if (distance(nearest) > kNear_angstrom)
        throw ZfError(fmt::format("There is no {} at {:g}, {:g} to move; there are at {}", Told(move),
                                  (*move.at)[0], (*move.at)[1], PlacesText(found, unitCell, slab)));
    return nearest;
}

/// The displacement of each atom of the slab that a move asks for.
std::vector<gemmi::Vec3> Displacements(const AtomMove& move, const std::vector<MovedAtom>& moved,
                                       std::size_t atoms) {
    constexpr double kSame_angstrom = 1e-6;
    std::vector<gemmi::Vec3> displacements(atoms);
    std::vector<bool> isKnown(atoms, false);
    for (const MovedAtom& one : moved) {
        const gemmi::Vec3 turned = one.turn.multiply(move.by);
        if (isKnown[one.atom] && !displacements[one.atom].approx(turned, kSame_angstrom))
            throw ZfError(fmt::format(
                "Moving the {} by {:g}, {:g}, {:g} breaks the symmetry of its place: move it along the "
                "symmetry elements, or give symmetric = false, which moves this one alone",
                Told(move), move.by.x, move.by.y, move.by.z));
        displacements[one.atom] = turned;
        isKnown[one.atom] = true;
    }
    return displacements;
}

}  // namespace

int LayersIn(const Relaxation& relaxation) {
    std::size_t layers = std::max({relaxation.shift_angstrom.size(), relaxation.rumple_angstrom.size(),
                                   relaxation.lateral_angstrom.size()});
    if (!relaxation.spacing.empty()) layers = std::max(layers, relaxation.spacing.size() + 1);
    for (const AtomMove& move : relaxation.moves)
        layers = std::max(layers, static_cast<std::size_t>(std::max(0, move.layer)));
    return static_cast<int>(layers);
}

void RelaxLayers(const Relaxation& relaxation, SurfaceSlab& slab) {
    const std::vector<std::vector<std::size_t>> layers = AtomsByLayer(slab);
    if (LayersIn(relaxation) > slab.Layers())
        throw ZfError(fmt::format("There is no layer {} to relax: the slab has {}", LayersIn(relaxation),
                                  slab.Layers()));
    const std::vector<double> rise = RiseOf(relaxation, slab, layers);
    for (const double one : rise) CheckMove(one);
    for (std::size_t i = 0; i < layers.size(); ++i)
        for (const std::size_t atom : layers[i]) slab.atoms[atom].position.z += rise[i];
    for (std::size_t i = 0; i + 1 < layers.size(); ++i)
        if (MeanHeight(slab, layers[i]) <= MeanHeight(slab, layers[i + 1]))
            throw ZfError(fmt::format("Layer {} would come to lie below layer {}", i + 1, i + 2));
    for (std::size_t i = 0; i < relaxation.rumple_angstrom.size(); ++i)
        Rumple(relaxation.rumple_angstrom[i], layers[i], static_cast<int>(i) + 1, slab);
    for (const auto& [x, y] : relaxation.lateral_angstrom) CheckMove(std::hypot(x, y));
    for (std::size_t i = 0; i < relaxation.lateral_angstrom.size(); ++i)
        for (const std::size_t atom : layers[i]) {
            slab.atoms[atom].position.x += relaxation.lateral_angstrom[i][0];
            slab.atoms[atom].position.y += relaxation.lateral_angstrom[i][1];
        }
}

std::vector<MovedAtom> FindMoved(const AtomMove& move, const SurfaceLattice& unitCell,
                                 const SurfaceSlab& slab) {
    const std::size_t selected = Selected(move, unitCell, slab);
    if (!move.keepsSymmetry) return {{selected, gemmi::Mat33()}};
    const CrystalCell cell = CellOf(slab);
    const CellSymmetry symmetry(cell);
    std::vector<MovedAtom> moved;
    for (const SurfaceOperation& operation : symmetry.KeepingNormal(gemmi::Mat33()))
        for (std::size_t atom = 0; atom < slab.atoms.size(); ++atom)
            if (symmetry.ClassOf(atom) == symmetry.ClassOf(operation.images[selected]))
                moved.push_back({atom, MatrixOf(operation)});
    return moved;
}

void MoveAtoms(const std::vector<AtomMove>& moves, const std::vector<std::vector<MovedAtom>>& moved,
               SurfaceSlab& slab) {
    std::vector<gemmi::Vec3> sum(slab.atoms.size());
    for (std::size_t move = 0; move < moves.size(); ++move) {
        CheckMove(moves[move].by.length());
        const std::vector<gemmi::Vec3> one = Displacements(moves[move], moved[move], slab.atoms.size());
        for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += one[i];
    }
    for (std::size_t i = 0; i < sum.size(); ++i) slab.atoms[i].position += sum[i];
}

}  // namespace qvre
