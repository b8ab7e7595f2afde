#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "foundation/Matrices.h"

/// One atom of the basis.
class ZfAtomAttr {
public:
    ZfAtomAttr() = default;
    ZfAtomAttr(const ZfAtomAttr&) = default;
    ZfAtomAttr& operator=(const ZfAtomAttr&) = default;
    virtual ~ZfAtomAttr() = default;

    std::string element;
    std::array<std::string, 3> coordinates;  ///< expressions, along the axes
    std::int32_t kind = 0;
    double weight = 0.0;
    ZfLDoubleMatrix position = qvre::Vector3(0.0, 0.0, 0.0);  ///< angstrom; set by Build
};

/// A crystal: axes with their lattice constants, lattice vectors and a basis of atoms. Coordinates are texts
/// for ZfParser ("1/2"), in units of the axes; lengths are angstrom.
///
/// In the presets the basis lists the atoms of the conventional cube, while the lattice vectors are the
/// primitive ones: repeat the basis along `axes`. Along `latticeVectors` every atom would come several times.
struct ZfCrystal {
    void SetLatticeVector(std::size_t index, const std::string& x, const std::string& y,
                          const std::string& z);
    void AddAtom(const std::string& x, const std::string& y, const std::string& z, const std::string& element,
                 std::int32_t kind, double weight);
    void SetUnitAxes();  ///< directions along x, y and z

    /// Normalises the directions and calculates axes, lattice vectors, positions and kinds. Throws what
    /// ZfParser throws, and ZfError when a lattice vector is missing.
    void Build();

    std::string name;
    std::map<std::string, double> constants;      ///< that the expressions may name
    std::array<double, 3> latticeConstants = {};  ///< angstrom; 0 counts as the first one
    std::array<ZfLDoubleMatrix, 3> axisDirections = {
        qvre::Vector3(0.0, 0.0, 0.0), qvre::Vector3(0.0, 0.0, 0.0), qvre::Vector3(0.0, 0.0, 0.0)};
    // Expressions of the components of the lattice vectors, one entry a vector.
    std::vector<std::string> latticeX = std::vector<std::string>(3);
    std::vector<std::string> latticeY = std::vector<std::string>(3);
    std::vector<std::string> latticeZ = std::vector<std::string>(3);
    std::array<ZfLDoubleMatrix, 3> axes = {qvre::Vector3(1.0, 0.0, 0.0), qvre::Vector3(0.0, 1.0, 0.0),
                                           qvre::Vector3(0.0, 0.0, 1.0)};  ///< angstrom once built
    std::array<ZfLDoubleMatrix, 3> latticeVectors;                         ///< angstrom
    std::set<std::int32_t> kinds;                                          ///< of the atoms
    std::vector<ZfAtomAttr> atoms;
};

struct ZfCrystalTable {
    void Add(const ZfCrystal& crystal);  ///< a copy, in place of one of the same name

    std::map<std::string, ZfCrystal> crystals;
};
