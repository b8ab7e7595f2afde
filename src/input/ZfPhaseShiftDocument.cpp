#include "input/ZfPhaseShiftDocument.h"

#include <algorithm>
#include <cmath>

#include "foundation/Constants.h"
#include "xml/ZfBarnFile.h"

using namespace qvre;

namespace {

ZfLDoubleMatrix MatrixOf(const std::vector<double>& list) {
    ZfLDoubleMatrix matrix(static_cast<std::int32_t>(list.size()));
    std::copy(list.begin(), list.end(), matrix.Data());
    return matrix;
}

ZfLDoubleMatrix MatrixOf(const std::vector<std::vector<double>>& rows) {
    const std::size_t columns = rows.empty() ? 0 : rows[0].size();
    ZfLDoubleMatrix matrix(static_cast<std::int32_t>(columns), static_cast<std::int32_t>(rows.size()));
    matrix.Clear();
    for (std::size_t r = 0; r < rows.size(); ++r)
        for (std::size_t c = 0; c < std::min(columns, rows[r].size()); ++c)
            matrix.At(static_cast<std::int32_t>(c), static_cast<std::int32_t>(r)) = rows[r][c];
    return matrix;
}

std::vector<double> ListOf(const ZfLDoubleMatrix& vector) {
    return {vector.Data(), vector.Data() + vector.VectorSize()};
}

/// Rows without columns hold nothing, and a bad file may tell any number of them.
std::vector<std::vector<double>> RowsOf(const ZfLDoubleMatrix& matrix) {
    std::vector<std::vector<double>> rows;
    if (matrix.ColSize == 0) return rows;
    for (std::int64_t r = 0; r < matrix.RowSize; ++r) {
        const double* row = matrix.Data() + r * matrix.ColSize;
        rows.emplace_back(row, row + matrix.ColSize);
    }
    return rows;
}

}  // namespace

namespace qvre {

void RadialTables::Exchange(ZfBarnXml& xml, const std::string& tag) {
    if (!xml.OpenRack(tag)) return;
    xml.LDouble("EPS_DIFF_EQ_", EPS_DIFF_EQ_, EPS_DIFF_EQ_);
    ZfLDoubleMatrix lnX;
    ZfLDoubleMatrix p;
    ZfLDoubleMatrix dp;
    ZfLDoubleMatrix l;
    ZfLDoubleMatrix dl;
    if (xml.IsWriting()) {
        lnX = MatrixOf(LnX);
        p = MatrixOf(P);
        // Files in use hold dL under the tag of dP, and nothing under their own; they are written so.
        dp = MatrixOf(DLDLnX);
        l = MatrixOf(L);
    }
    xml.Matrix("LnX", lnX, "t");
    xml.Matrix("P", p, "t");
    xml.Matrix("DPDLnX", dp, "t");
    xml.Matrix("L", l, "t");
    xml.Matrix("DLDLnX", dl, "t");
    if (!xml.IsWriting()) {
        LnX = ListOf(lnX);
        P = RowsOf(p);
        DPDLnX = RowsOf(dp);
        L = RowsOf(l);
        DLDLnX = RowsOf(dl);
    }
    xml.CloseRack(tag);
}

bool PhaseShiftRecord::Exchange(ZfBarnXml& xml, const std::string& itemTag) {
    if (!xml.OpenRack(itemTag)) return false;
    xml.LDouble("Ek_eV", Ek_eV, 0.0);
    xml.Text("AtomName", AtomName, "");
    xml.Text("AtomElement", AtomElement, "");
    xml.Matrix("PhaseShiftValue", PhaseShiftValue, "t");
    xml.OpenRack("AdditionalData");  // has to be there: its checked closing tells
    xml.Text("FileName", FileName, "");
    radial.Exchange(xml, "CalculateScattering");
    xml.CloseRack("AdditionalData");
    xml.CloseRack(itemTag);
    if (!xml.IsWriting()) CalculateScatteringFactors();
    return true;
}

void PhaseShiftRecord::CalculateScatteringFactors() {
    const std::int32_t size = PhaseShiftValue.VectorSize();
    scatteringFactors.SetVectorSize(size);
    for (std::int32_t l = 0; l < size; ++l) {
        double x = Radians(PhaseShiftValue.VectorAt(l));
        x = x + x;
        scatteringFactors.VectorAt(l) = {std::cos(x) - 1.0, std::sin(x)};
    }
}

}  // namespace qvre

bool ZfPhaseShiftDocument::Exchange(ZfBarnXml& xml) {
    if (!xml.OpenRack("PhaseShiftData")) return false;
    if (xml.OpenRack("data")) {
        xml.RecordList("ListScatteringPhaseShift", "i", records);
        xml.CloseRack("data");
    }
    xml.CloseRack("PhaseShiftData");
    return true;
}

void ZfLoadPhaseShift(ZfPhaseShiftDocument& document, const std::string& path) {
    ZfBarnFile file(path, "r");
    document.Exchange(file);
}
