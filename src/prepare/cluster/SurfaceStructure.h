#pragma once

#include <array>
#include <gemmi/math.hpp>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace qvre {

/// The distance of a layer from the next one below, between the mean heights of their nuclei.
struct LayerSpacing {
    double value = 0.0;
    bool isPercent = false;  ///< change against the bulk in percent; otherwise the distance in angstrom
};

/// Moves atoms of one layer, and those that the plane group of the surface makes equal to them alike.
struct AtomMove {
    int layer = 1;                            ///< from 1, the topmost of the substrate; 0: adsorbates
    std::string element;                      ///< may be empty in a layer of one
    std::optional<std::array<double, 2>> at;  ///< the atom nearest to this place, fractions of the (1x1) cell
    gemmi::Vec3 by;                           ///< angstrom along x, y and z of the surface
    bool keepsSymmetry = true;                ///< false: this one atom of the surface cell alone
};

/// How the layers below a surface differ from those of the bulk. Entry i of a list is that of layer i + 1,
/// which counts from the top; layers behind the end of a list stay.
struct Relaxation {
    bool IsEmpty() const {
        return spacing.empty() && shift_angstrom.empty() && rumple_angstrom.empty() &&
               lateral_angstrom.empty() && moves.empty();
    }

    std::vector<std::optional<LayerSpacing>> spacing;            ///< d12, d23, ...; none: that of the bulk
    std::vector<double> shift_angstrom;                          ///< upwards
    std::vector<std::map<std::string, double>> rumple_angstrom;  ///< upwards, by element
    std::vector<std::array<double, 2>> lateral_angstrom;         ///< along x and y of the surface
    std::vector<AtomMove> moves;
};

struct MoleculeAtom {
    std::string element;
    gemmi::Vec3 position;  ///< angstrom
    double Uiso_angstrom2 = 0.0;
};

/// What sits on the surface, one in each cell of its superstructure.
struct Adsorbate {
    std::string name;                  ///< in messages: "O"
    std::vector<MoleculeAtom> atoms;   ///< the first one sits on the site
    std::string site;                  ///< of SitePlace; empty: `place`
    std::array<double, 2> place = {};  ///< fractions of the (1x1) cell, from an atom of the topmost layer
    double height_angstrom = 0.0;      ///< of the first atom over the highest nucleus of the substrate
    double tilt_deg = 0.0;             ///< of the molecule's z axis, towards its x axis
    double turn_deg = 0.0;             ///< of the tilted molecule about the normal, from x towards y
    std::string superstructure;        ///< of ParseSuperstructure; empty: (1x1)
    std::optional<double> coverage;    ///< adsorbates for each (1x1) cell, to be checked
};

/// What makes a surface differ from a crystal that is cut.
struct SurfaceStructure {
    bool IsEmpty() const { return relaxation.IsEmpty() && adsorbates.empty(); }

    Relaxation relaxation;
    std::vector<Adsorbate> adsorbates;
    bool takesAllDomains = false;       ///< each orientation that the symmetry of the substrate makes equal
    std::vector<double> domainWeights;  ///< of these; empty: equal ones
};

/// The molecule of an XYZ file (Extended or plain, first frame, angstrom). Throws ZfError that names the
/// file.
std::vector<MoleculeAtom> LoadMolecule(const std::string& path);

/// The molecule of an XYZ text.
std::vector<MoleculeAtom> ParseXyzMolecule(const std::string& text);

/// "-3 percent", "-3%", "1.75" or "1.75 angstrom". Throws ZfError for anything else.
LayerSpacing ParseLayerSpacing(const std::string& text);

/// Reads "d12=-3%,d23=1%" into the spacings: the distance of layers that follow each other.
void AddSpacing(const std::string& key, const LayerSpacing& spacing, Relaxation& relaxation);

/// Reads "O,hollow,0.8,c(2x2)": element or .xyz file, site or two fractions joined by a slash ("0.5/0.5"),
/// height (angstrom) and, when there is one, superstructure. Throws ZfError that quotes it.
Adsorbate ParseAdsorbate(const std::string& text);

/// An adsorbate of one atom. Throws ZfError for what is no element symbol.
Adsorbate AtomicAdsorbate(const std::string& element);

}  // namespace qvre
