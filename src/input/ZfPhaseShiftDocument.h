#pragma once

#include <string>
#include <vector>

#include "foundation/Matrices.h"

class ZfBarnXml;

namespace qvre {

/// Tables of the radial solution from which phase shifts were derived, carried along with them. In a file
/// each list of lists is a matrix with one row an outer list.
struct RadialTables {
    void Exchange(ZfBarnXml& xml, const std::string& tag);

    double EPS_DIFF_EQ_ = 0.0;  ///< precision of the integration
    std::vector<double> LnX;    ///< grid of ln(r/m); its end is the radius of the atom
    std::vector<std::vector<double>> L;
    std::vector<std::vector<double>> DLDLnX;
    std::vector<std::vector<double>> P;
    std::vector<std::vector<double>> DPDLnX;
};

/// Phase shifts of one atom at one kinetic energy.
struct PhaseShiftRecord {
    bool Exchange(ZfBarnXml& xml, const std::string& itemTag);  ///< false when the item is absent

    /// t_l = exp(2 i delta_l) - 1 from PhaseShiftValue, whose index must run from 0.
    void CalculateScatteringFactors();

    RadialTables radial;
    double Ek_eV = 0.0;                  ///< found by exact comparison with the energy of the emitted wave
    ZfLDoubleMatrix PhaseShiftValue;     ///< vector over l, degrees
    ZfLComplexMatrix scatteringFactors;  ///< vector over l: t_l
    std::string AtomName;                ///< found by exact comparison with the name of an atom
    std::string AtomElement;
    std::string FileName;  ///< where the data came from
};

}  // namespace qvre

struct ZfPhaseShiftDocument {
    bool Exchange(ZfBarnXml& xml);  ///< false without the root

    std::vector<qvre::PhaseShiftRecord> records;
};

void ZfLoadPhaseShift(ZfPhaseShiftDocument& document, const std::string& path);
