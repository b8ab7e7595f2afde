#pragma once

#include <string>
#include <vector>

#include "foundation/Matrices.h"

class ZfBarnXml;
class ZfFile;

namespace qvre {

/// One atom of a structure. Lengths are metres in memory and angstrom in files.
struct ClusterAtom {
    /// False when the item is absent. A 3x3 U is not written back: the writer knows six elements only.
    bool Exchange(ZfBarnXml& xml, const std::string& itemTag);

    ZfLDoubleMatrix PositionAngstrom() const { return Scale(position, 1e10); }
    ZfLDoubleMatrix USquareAngstrom() const { return Scale(U, 1e20); }
    void SetPositionAngstrom(const ZfLDoubleMatrix& p) { position = Scale(p, 1e-10); }
    void SetUSquareAngstrom(const ZfLDoubleMatrix& u) { U = Scale(u, 1e-20); }

    ZfLDoubleMatrix position = Vector3(0.0, 0.0, 0.0);  ///< m
    std::string name;                                   ///< label, free text; phase shifts are found by it
    std::string atom;                                   ///< element symbol
    double valency = 0.0;
    ZfLDoubleMatrix U;  ///< mean square displacement, m^2: empty, 1x1 (isotropic) or 3x3
};

/// One configuration of atoms. Once sorted, atom 0 is the emitter.
struct Structure {
    bool Exchange(ZfBarnXml& xml, const std::string& tag);  ///< sorts after reading

    std::vector<ClusterAtom> atoms;
};

/// All configurations of a run; each is calculated.
struct Cluster {
    /// The whole file. When reading, `validate` checks each structure; a failure names its index.
    bool Exchange(ZfBarnXml& xml, bool validate);

    /// Extended XYZ, each frame a structure, neither sorted nor validated. Blank lines vanish before anything
    /// else, so a frame with an empty title loses its first atom. A frame with too few lines is kept.
    void ReadXyz(ZfFile& file);

    std::vector<Structure> structures;
};

/// Selection sort by keys, one an atom. The order of atoms with equal keys is the one that this procedure
/// leaves: it defines the order of scattering, so no other sort will do.
void SelectionSort(std::vector<ClusterAtom>& atoms, std::vector<double> keys);

}  // namespace qvre

/// SelectionSort by the squared distance from the origin in m^2, summed as x*x + y*y + z*z.
void SortAtomsByDistance(std::vector<qvre::ClusterAtom>& atoms);

/// Sorts, then throws ZfError unless the emitter lies within 0.01 angstrom of the origin and all atoms more
/// than 0.5 angstrom apart.
void ValidateCluster(qvre::Structure& structure);

/// Loads a cluster by the extension of its path, "xml_cl" or "xyz", and reports it on the console.
void ZfLoadCluster(qvre::Cluster& cluster, const std::string& path);
