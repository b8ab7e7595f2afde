#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "report/compare/ColumnNames.h"

namespace qvre {

/// A table of measured points as its file has it. Entry i of every list belongs to point i; a list that the
/// table does not have is empty. Angles are in degrees, energies in eV.
struct MeasuredTable {
    std::string form;                  ///< how the points stand in the file: "list, separated by commas"
    std::vector<std::string> columns;  ///< what was taken for what, a text a column or axis
    std::array<std::vector<double>, kQuantities> lists;
    std::vector<std::string> skipped;  ///< names of columns that are not known
    std::size_t leftOut = 0;           ///< points that are empty or not a number

    std::size_t Points() const { return std::max(lists[kIntensity].size(), lists[kChi].size()); }
    const std::vector<double>& operator[](Quantity quantity) const { return lists[quantity]; }
};

/// Adds one point, `values[q]` for each quantity q of `has`, and leaves it out if one of them is NaN. Throws
/// ZfError for a value that its quantity cannot have.
void AddPoint(MeasuredTable& table, const std::array<bool, kQuantities>& has,
              const std::array<double, kQuantities>& values);

/// One axis of a matrix: a value a row or column.
struct MatrixAxis {
    std::vector<double> values;  ///< degrees
    bool isTheta = false;        ///< by its name
    bool isPhi = false;
    std::vector<int> lines = {};  ///< of the file, where the values stand; may be empty
};

/// Adds the points of a matrix, row by row. The rows are polar angles and the columns azimuths unless names
/// or values beyond 90 degrees tell the other way round. `value` gives a quantity of `measured` at a row and
/// a column.
void AddMatrix(MeasuredTable& table, const MatrixAxis& rows, const MatrixAxis& columns,
               const std::vector<Quantity>& measured,
               const std::function<double(Quantity, std::size_t, std::size_t)>& value);

/// Reads the forms that docs/measured-tables.md describes: a list of points, a matrix, Igor text waves.
/// `letters` are those of an extension such as .etpi, which then name the columns. Throws ZfError "line 7:
/// ...", and for a table without points.
MeasuredTable ReadMeasuredTable(const std::string& text, const std::string& letters = {});

/// Text waves of Igor Pro.
bool IsIgorText(const std::string& text);
MeasuredTable ReadIgorText(const std::string& text);

}  // namespace qvre
