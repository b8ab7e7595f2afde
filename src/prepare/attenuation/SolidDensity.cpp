#include "prepare/attenuation/SolidDensity.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "foundation/Constants.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "prepare/cluster/CellCheck.h"
#include "prepare/phases/Surroundings.h"
#include "prepare/thermal/Elements.h"

namespace qvre {

namespace {

constexpr double kGramsPerUnit = kAtomicMass_kg * 1e3;
constexpr double kCm3PerAngstrom3 = 1e-24;
constexpr double kEmptyLayer = 6.0;    // angstrom: wider than the layers of any crystal stand apart
constexpr double kSamePlane = 0.3;     // angstrom
constexpr double kMostUnknown = 0.25;  // of the atoms: beyond, the others do not stand for the solid
constexpr double kCompleteness =
    0.8;  // of the neighbours: a Voronoi cell with fewer is not that of the solid

/// Sums over atoms and their volumes.
class Averaging {
public:
    Averaging(const ZfDebye& weights, const ValenceElectrons& valence)
        : weights_(weights), valence_(valence) {}

    void Add(const std::string& element, double atoms) {
        atoms_ += atoms;
        mass_ += atoms * weights_.GetAtoicWeight(AtomicNumberOf(element));
        electrons_ += atoms * valence_.Of(element);
    }

    SolidDensity In(double volume_angstrom3) const {
        return {mass_ * kGramsPerUnit / (volume_angstrom3 * kCm3PerAngstrom3), mass_ / atoms_,
                electrons_ / atoms_};
    }

private:
    const ZfDebye& weights_;
    const ValenceElectrons& valence_;
    double atoms_ = 0.0;
    double mass_ = 0.0;
    double electrons_ = 0.0;
};

/// Atoms of about one height over the faces across an axis, in a cell.
struct Plane {
    double height = 0.0;  ///< angstrom
    std::vector<std::string> elements;
};

/// The planes across `axis` from the one above the widest gap on.
struct Stack {
    Stack(const CrystalCell& cell, int axis);

    std::vector<Plane> planes;  ///< rising height
    double gap = 0.0;           ///< angstrom, from the last plane to the first of the next cell
    double period = 0.0;        ///< angstrom
};

Stack::Stack(const CrystalCell& cell, int axis) : period(1.0 / cell.Reciprocal().row_copy(axis).length()) {
    std::vector<std::pair<double, std::string>> atoms;
    for (const CellAtom& atom : cell.atoms) {
        const double fraction = atom.fractional.at(axis);
        atoms.emplace_back(period * (fraction - std::floor(fraction)), atom.element);
    }
    std::sort(atoms.begin(), atoms.end());
    std::size_t first = 0;
    gap = atoms.front().first + period - atoms.back().first;
    for (std::size_t i = 1; i < atoms.size(); ++i)
        if (const double step = atoms[i].first - atoms[i - 1].first; step > gap) {
            gap = step;
            first = i;
        }
    for (std::size_t i = 0; i < atoms.size(); ++i) {
        const auto& [height, element] = atoms[(first + i) % atoms.size()];
        const double risen = height + (first + i < atoms.size() ? 0.0 : period);
        if (planes.empty() || risen - planes.back().height > kSamePlane) planes.push_back({risen, {}});
        planes.back().elements.push_back(element);
    }
}

/// The inner half of a slab, from a plane to the farthest one of the same elements.
SolidDensity DensityInside(const Stack& slab, double area_angstrom2, Averaging average) {
    const double bottom = slab.planes.front().height;
    const double quarter = 0.25 * (slab.planes.back().height - bottom);
    for (std::size_t low = 0; low < slab.planes.size(); ++low) {
        if (slab.planes[low].height < bottom + quarter) continue;
        for (std::size_t high = slab.planes.size() - 1; high > low; --high) {
            if (slab.planes[high].height > bottom + 3.0 * quarter + kSamePlane ||
                slab.planes[high].elements != slab.planes[low].elements)
                continue;
            for (std::size_t plane = low + 1; plane <= high; ++plane)
                for (const std::string& element : slab.planes[plane].elements) average.Add(element, 1.0);
            return average.In(area_angstrom2 * (slab.planes[high].height - slab.planes[low].height));
        }
    }
    throw ZfError("The cell has an empty layer of " + DoubleToText(slab.gap) +
                  " angstrom and is too thin to tell the density of the solid: give the mean free path as a "
                  "length");
}

}  // namespace

SolidDensity DensityOfCrystal(const CrystalCell& cell, const ZfDebye& weights,
                              const ValenceElectrons& valence) {
    CheckCell(cell);
    const double volume = std::abs(cell.axes.determinant());
    Averaging average(weights, valence);
    for (int axis = 0; axis < 3; ++axis)
        if (const Stack stack(cell, axis); stack.gap > kEmptyLayer)
            return DensityInside(stack, volume / stack.period, average);
    for (const CellAtom& atom : cell.atoms) average.Add(atom.element, 1.0);
    return average.In(volume);
}

SolidDensity DensityOfCluster(const Cluster& cluster, const ZfDebye& weights,
                              const ValenceElectrons& valence) {
    Averaging average(weights, valence);
    double volume = 0.0;
    double atoms = 0.0;
    double unknown = 0.0;
    for (const AtomSurroundings& species : SurroundingsInCluster(cluster)) {
        atoms += species.weight;
        if (species.cellVolume == 0.0 || species.completeness < kCompleteness) {
            unknown += species.weight;
            continue;
        }
        average.Add(species.element, species.weight);
        volume += species.weight * species.cellVolume * std::pow(kBohr_angstrom, 3);
    }
    if (unknown > kMostUnknown * atoms)
        throw ZfError(
            "The cluster is too small to tell the density of the solid: give the mean free path as "
            "a length");
    return average.In(volume);
}

}  // namespace qvre
