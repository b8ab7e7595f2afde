#include "prepare/attenuation/SolidDensity.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
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
constexpr double kEmptyLayer = 6.0;  // angstrom: wider than the layers of any crystal stand apart
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

/// Widest gap in angstrom between atomic planes that follow each other along the normal of the faces across
/// `axis`.
double WidestGap(const CrystalCell& cell, int axis) {
    std::vector<double> heights;
    for (const CellAtom& atom : cell.atoms) {
        const double fraction = atom.fractional.at(axis);
        heights.push_back(fraction - std::floor(fraction));
    }
    std::sort(heights.begin(), heights.end());
    double widest = heights.front() + 1.0 - heights.back();
    for (std::size_t i = 1; i < heights.size(); ++i) widest = std::max(widest, heights[i] - heights[i - 1]);
    return widest / cell.Reciprocal().row_copy(axis).length();
}

}  // namespace

SolidDensity DensityOfCrystal(const CrystalCell& cell, const ZfDebye& weights,
                              const ValenceElectrons& valence) {
    CheckCell(cell);
    for (int axis = 0; axis < 3; ++axis)
        if (const double gap = WidestGap(cell, axis); gap > kEmptyLayer)
            throw ZfError("The cell has an empty layer of " + DoubleToText(gap) +
                          " angstrom, so its density is not that of the solid: give the mean free path as a "
                          "length");
    Averaging average(weights, valence);
    for (const CellAtom& atom : cell.atoms) average.Add(atom.element, 1.0);
    return average.In(std::abs(cell.axes.determinant()));
}

SolidDensity DensityOfCluster(const Cluster& cluster, const ZfDebye& weights,
                              const ValenceElectrons& valence) {
    Averaging average(weights, valence);
    double volume = 0.0;
    for (const AtomSurroundings& species : SurroundingsInCluster(cluster)) {
        if (species.cellVolume == 0.0 || species.completeness < kCompleteness) continue;
        average.Add(species.element, species.weight);
        volume += species.weight * species.cellVolume * std::pow(kBohr_angstrom, 3);
    }
    if (volume == 0.0)
        throw ZfError(
            "The cluster is too small to tell the density of the solid: give the mean free path as "
            "a length");
    return average.In(volume);
}

}  // namespace qvre
