#include "report/compare/MeasuredTable.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"
#include "report/compare/TableLines.h"

namespace qvre {

namespace {

using Fields = std::vector<std::string>;
using Numbers = std::vector<double>;

constexpr const char* kKnownNames =
    "known are theta or polar, phi or azimuth, energy, intensity or counts, chi, sigma; a line that is no "
    "line of names begins with #";

/// The columns of a list.
struct Layout {
    std::size_t fields = 0;  ///< of a line
    std::array<std::optional<std::size_t>, kQuantities> place;
    std::array<bool, kQuantities> radians = {};

    bool Has(Quantity quantity) const { return place[quantity].has_value(); }
    bool HasMeasured() const { return Has(kIntensity) || Has(kChi); }
    bool HasPlace() const { return Has(kTheta) || Has(kPhi) || Has(kAngle) || Has(kEnergy); }
};

std::string Quoted(const Fields& names) {
    std::string text;
    for (const std::string& name : names) text += fmt::format("{}\"{}\"", text.empty() ? "" : ", ", name);
    return text;
}

Layout LayoutOf(const Fields& names) {
    Layout layout;
    layout.fields = names.size();
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::optional<ColumnName> name = ReadColumnName(names[i]);
        if (!name) continue;
        if (layout.place[name->quantity])
            throw ZfError("there are two columns for the quantity \"" + names[i] + "\"");
        layout.place[name->quantity] = i;
        layout.radians[name->quantity] = name->radians;
    }
    return layout;
}

Layout UnnamedLayout(std::size_t fields) {
    Layout layout;
    layout.fields = fields;
    if (fields == 2) layout.place[kAngle] = 0;
    if (fields == 3) {
        layout.place[kTheta] = 0;
        layout.place[kPhi] = 1;
    }
    layout.place[kIntensity] = fields - 1;
    return layout;
}

Layout LetterLayout(const std::string& letters) {
    Layout layout;
    layout.fields = letters.size();
    for (std::size_t i = 0; i < letters.size(); ++i)
        if (const auto quantity = QuantityOfLetter(letters[i])) layout.place[*quantity] = i;
    return layout;
}

class TableReader {
public:
    TableReader(const std::string& text, std::string letters)
        : lines_(TableLines(text)), letters_(std::move(letters)) {}

    MeasuredTable Read() {
        const std::size_t first = FindData();
        if (first == lines_.size()) throw ZfError("there are no points in the table" + WhatNamesLack());
        separator_ = SeparatorOf(lines_[first].text);
        if (letters_.empty() && !layout_ && IsMatrix(first))
            ReadMatrix(first);
        else
            ReadList(first);
        table_.form += fmt::format(", separated by {}{}", SeparatorName(separator_),
                                   numbers_.HasDecimalCommas() ? ", with decimal commas" : "");
        return table_;
    }

private:
    Fields Split(const TableLine& line) const { return SplitLine(line.text, separator_); }

    double Number(const std::string& field) {
        if (const std::optional<double> value = numbers_.Read(field)) return *value;
        throw ZfError("\"" + field + "\" is not a number");
    }

    static bool IsNumber(const std::string& field) {
        TableNumbers numbers;
        const auto value = numbers.Read(field);
        return value && std::isfinite(*value);
    }

    static bool IsNumberOrMissing(const std::string& field) { return TableNumbers().Read(field).has_value(); }

    /// A line of the matrix's column values: a text or nothing, then angles.
    static bool IsMatrixHead(const Fields& fields) {
        return fields.size() > 2 && !IsNumber(fields[0]) &&
               std::all_of(fields.begin() + 1, fields.end(), EdgeAngle);
    }

    /// Of the lines without names: the first two fields are numbers or missing, one of them at least a
    /// number.
    static bool BeginsData(const Fields& fields) {
        return fields.size() > 1 && IsNumberOrMissing(fields[0]) && IsNumberOrMissing(fields[1]) &&
               (IsNumber(fields[0]) || IsNumber(fields[1]));
    }

    /// Under names units and comments may stand; a line of data has a number where one is needed.
    bool IsDataUnder(const Layout& layout, const Fields& fields) const {
        if (!fields.empty() && IsNumber(fields[0])) return true;
        if (fields.size() != layout.fields) return false;
        return std::any_of(layout.place.begin(), layout.place.end(),
                           [&](const auto& place) { return place && IsNumber(fields[*place]); });
    }

    void TakeUnits(const Fields& units) {
        for (std::size_t q = 0; q < kQuantities; ++q)
            if (const auto place = layout_->place[q]; place && *place < units.size())
                layout_->radians[q] = layout_->radians[q] || MeansRadians(units[*place]);
    }

    /// Whether a line names columns; where it is not certain, it has to name as many as the data have.
    bool TakeNames(const TableLine& line) {
        Fields names = SplitNames(line.text);
        while (!names.empty() && names.back().empty()) names.pop_back();
        if (names.size() < 2) return false;
        Layout layout;
        try {
            layout = LayoutOf(names);
        } catch (const ZfError& error) {
            if (line.comment) return false;
            FailAtLine(line.number, error.message);
        }
        if (!layout.HasMeasured() || !layout.HasPlace()) return false;
        const bool marked = line.text.find_first_of(",;\t") != std::string_view::npos;
        const bool known = std::all_of(names.begin(), names.end(),
                                       [](const std::string& name) { return ReadColumnName(name); });
        if ((line.comment || !(marked || known)) && layout.fields != FieldsBehind(line)) return false;
        layout_ = layout;
        names_ = std::move(names);
        return true;
    }

    /// Number of fields of the first line of data behind another.
    std::size_t FieldsBehind(const TableLine& names) const {
        for (const TableLine& line : lines_) {
            if (line.number <= names.number || line.comment) continue;
            const Fields fields = SplitLine(line.text, SeparatorOf(line.text));
            if (BeginsData(fields)) return fields.size();
        }
        return 0;
    }

    void TakeAssignments(const TableLine& line) {
        for (const Quantity quantity : {kTheta, kPhi})
            if (const auto value = AssignedAngle(line.text, quantity)) assigned_[quantity] = value;
    }

    /// Goes over the lines in front of the data: names, units, assigned angles, free texts.
    std::size_t FindData() {
        for (std::size_t i = 0; i < lines_.size(); ++i) {
            const TableLine& line = lines_[i];
            TakeAssignments(line);
            if (!letters_.empty()) {
                if (!line.comment && BeginsData(SplitLine(line.text, SeparatorOf(line.text)))) return i;
                continue;
            }
            if (TakeNames(line) || line.comment) continue;
            const Fields fields = SplitLine(line.text, SeparatorOf(line.text));
            if (layout_ ? IsDataUnder(*layout_, fields) : BeginsData(fields) || IsMatrixHead(fields)) {
                if (!layout_ && i > 0) RefuseUnknownNames(lines_[i - 1], fields.size());
                return i;
            }
            if (layout_) TakeUnits(fields);
        }
        return lines_.size();
    }

    /// Words as many as columns right above them are names; taking the columns in the usual order instead
    /// would be a guess.
    static void RefuseUnknownNames(const TableLine& line, std::size_t fields) {
        const Fields names = SplitNames(line.text);
        if (line.comment || names.size() != fields) return;
        const bool marked = line.text.find_first_of(",;\t") != std::string_view::npos;
        const bool some = std::any_of(names.begin(), names.end(),
                                      [](const std::string& name) { return ReadColumnName(name); });
        const bool words = std::all_of(names.begin(), names.end(), [&](const std::string& name) {
            return !name.empty() && !IsNumberOrMissing(name) &&
                   (names.size() > 3 || name.find_first_of(":=") == std::string::npos);
        });
        if (words && (marked || some))
            FailAtLine(line.number, fmt::format("the columns {} are not enough or not known; {}",
                                                Quoted(names), kKnownNames));
    }

    std::string WhatNamesLack() const {
        if (layout_ || lines_.empty()) return {};
        return "; a line of it has two numbers or more";
    }

    bool IsMatrix(std::size_t first) {
        const Fields head = Split(lines_[first]);
        if (IsMatrixHead(head)) return true;
        const std::size_t next = NextLine(first);
        if (next == lines_.size()) return false;
        const Fields row = Split(lines_[next]);
        if (row.size() == head.size() + 1) return true;  // nothing stands above the first column
        if (row.size() != head.size() || head.size() < 4) return false;
        return Rises(head, 1) && Rises(FirstColumn(first), 1);
    }

    std::size_t NextLine(std::size_t line) const {
        do ++line;
        while (line < lines_.size() && lines_[line].comment);
        return line;
    }

    Fields FirstColumn(std::size_t line) const {
        Fields column;
        for (; line < lines_.size(); line = NextLine(line)) column.push_back(Split(lines_[line]).front());
        return column;
    }

    /// Whether the fields from one on are numbers that rise or fall all the way.
    static bool Rises(const Fields& fields, std::size_t begin) {
        Numbers values;
        for (std::size_t i = begin; i < fields.size(); ++i) {
            if (!IsNumber(fields[i])) return false;
            values.push_back(*TableNumbers().Read(fields[i]));
        }
        const bool up = values.back() > values.front();
        for (std::size_t i = 1; i < values.size(); ++i)
            if (up ? values[i] <= values[i - 1] : values[i] >= values[i - 1]) return false;
        return true;
    }

    /// An angle at the head of a row or column, which cannot be missing.
    double AxisValue(const std::string& field, bool radians) {
        const std::optional<double> value = EdgeAngle(field);
        if (!value) throw ZfError("\"" + field + "\" at the edge of the matrix is no angle");
        return radians ? Degrees(*value) : *value;
    }

    void ReadMatrix(std::size_t first) {
        Fields head = Split(lines_[first]);
        const std::size_t second = NextLine(first);
        const std::size_t fields = second < lines_.size() ? Split(lines_[second]).size() : 0;
        if (fields == head.size() + 1) head.insert(head.begin(), std::string());
        const std::string corner = IsNumber(head[0]) ? std::string() : head[0];
        const bool radians = corner.find("rad") != std::string::npos;
        MatrixAxis rows;
        MatrixAxis columns;
        AtLine(lines_[first], [&] {
            for (std::size_t i = 1; i < head.size(); ++i)
                columns.values.push_back(AxisValue(head[i], radians));
        });
        columns.lines.assign(columns.values.size(), lines_[first].number);
        Numbers values;
        for (std::size_t i = second; i < lines_.size(); i = NextLine(i))
            AtLine(lines_[i], [&] {
                const Fields row = Split(lines_[i]);
                if (row.size() != head.size())
                    throw ZfError(fmt::format("there are {} fields instead of the {} of the matrix",
                                              row.size(), head.size()));
                rows.values.push_back(AxisValue(row[0], radians));
                rows.lines.push_back(lines_[i].number);
                for (std::size_t c = 1; c < row.size(); ++c) values.push_back(Number(row[c]));
            });
        SetByNames(corner, head[1], rows, columns);
        AddMatrix(table_, rows, columns, {kIntensity}, [&](Quantity, std::size_t row, std::size_t column) {
            return values[row * columns.values.size() + column];
        });
    }

    /// "theta\phi" names the rows first; a column may be headed "phi=3".
    static void SetByNames(const std::string& corner, const std::string& column, MatrixAxis& rows,
                           MatrixAxis& columns) {
        const auto name = ReadColumnName(corner.substr(0, corner.find_first_of("\\/|")));
        rows.isTheta = columns.isPhi =
            AssignedAngle(column, kPhi).has_value() || (name && name->quantity == kTheta);
        rows.isPhi = columns.isTheta =
            AssignedAngle(column, kTheta).has_value() || (name && name->quantity == kPhi);
    }

    template <class Action>
    static void AtLine(const TableLine& line, const Action& act) {
        try {
            act();
        } catch (const ZfError& error) {
            FailAtLine(line.number, error.message);
        }
    }

    void ReadList(std::size_t first) {
        const std::size_t fields = ColumnsFrom(first);
        if (!letters_.empty()) layout_ = LetterLayout(letters_);
        if (!layout_ && (fields < 2 || fields > 3))
            FailAtLine(
                lines_[first].number,
                fmt::format("there are {} columns without names: name them in a line above them, such as "
                            "theta,phi,intensity,sigma{}",
                            fields, HintOfCommas(lines_[first])));
        if (!layout_) layout_ = UnnamedLayout(fields);
        for (std::size_t q = 0; q < kQuantities; ++q) has_[q] = layout_->place[q].has_value();
        for (const Quantity q : {kTheta, kPhi}) has_[q] = has_[q] || assigned_[q].has_value();
        DescribeColumns();
        for (std::size_t i = first; i < lines_.size(); ++i) AtLine(lines_[i], [&] { TakeLine(lines_[i]); });
    }

    /// Columns of a list, without those at its end that no line fills.
    std::size_t ColumnsFrom(std::size_t first) const {
        const Fields head = Split(lines_[first]);
        if (!head.back().empty()) return head.size();
        std::size_t columns = 0;
        for (std::size_t i = first; i < lines_.size(); i = NextLine(i)) {
            Fields fields = Split(lines_[i]);
            while (!fields.empty() && fields.back().empty()) fields.pop_back();
            columns = std::max(columns, fields.size());
        }
        return columns;
    }

    /// Fields that are one too many, two for each: decimal commas among separating ones.
    std::string HintOfCommas(const TableLine& line) const {
        if (separator_ != Separator::kComma || Split(line).size() % 2 == 1) return {};
        return "; with decimal commas numbers are separated by semicolons or tabs";
    }

    void TakeLine(const TableLine& line) {
        TakeAssignments(line);
        if (line.comment) return;
        Fields fields = Split(line);
        const bool isText = !fields.empty() && !IsNumberOrMissing(fields[0]);
        if (isText && (SplitNames(line.text) == names_ || AssignedAngle(line.text, kTheta) ||
                       AssignedAngle(line.text, kPhi)))
            return;  // the head of another block
        while (fields.size() > layout_->fields && fields.back().empty()) fields.pop_back();
        if (fields.size() != layout_->fields)
            throw ZfError(fmt::format("there are {} fields instead of {}{}{}", fields.size(), layout_->fields,
                                      letters_.empty() ? "" : ", the letters of ." + letters_,
                                      fields.size() > layout_->fields ? HintOfCommas(line) : ""));
        std::array<double, kQuantities> values = {};
        for (std::size_t q = 0; q < kQuantities; ++q) {
            if (const auto place = layout_->place[q])
                values[q] = layout_->radians[q] ? Degrees(Number(fields[*place])) : Number(fields[*place]);
            else if (has_[q])
                values[q] = *assigned_[q];
        }
        AddPoint(table_, has_, values);
    }

    void DescribeColumns() {
        table_.form =
            letters_.empty() ? "list of points" : "list of points, columns by the extension ." + letters_;
        for (std::size_t column = 0; column < layout_->fields; ++column) {
            std::string meaning;
            for (std::size_t q = 0; q < kQuantities; ++q)
                if (layout_->place[q] == column)
                    meaning = std::string(QuantityName(static_cast<Quantity>(q))) +
                              (layout_->radians[q] ? ", radians" : "");
            const std::string name = column < names_.size() ? " \"" + names_[column] + "\"" : "";
            if (meaning.empty()) table_.skipped.push_back("column " + std::to_string(column + 1) + name);
            table_.columns.push_back(
                fmt::format("column {}{}: {}", column + 1, name, meaning.empty() ? "skipped" : meaning));
        }
        for (const Quantity q : {kTheta, kPhi})
            if (has_[q] && !layout_->place[q])
                table_.columns.push_back(fmt::format("{}: from a line of text", QuantityName(q)));
    }

    std::vector<TableLine> lines_;
    std::string letters_;
    std::optional<Layout> layout_;  // by names, then of the list
    Fields names_;
    std::array<std::optional<double>, kQuantities> assigned_;
    Separator separator_ = Separator::kBlanks;
    TableNumbers numbers_;
    std::array<bool, kQuantities> has_ = {};
    MeasuredTable table_;
};

std::string ThetaRefusal(double theta) {
    return fmt::format("the polar angle {:g} does not lie between -90 and 90 degrees", theta);
}

void CheckThetas(const MatrixAxis& axis) {
    for (std::size_t i = 0; i < axis.lines.size(); ++i)
        if (std::abs(axis.values[i]) > 90.0) FailAtLine(axis.lines[i], ThetaRefusal(axis.values[i]));
}

bool WithinRightAngle(const MatrixAxis& axis) {
    return std::all_of(axis.values.begin(), axis.values.end(),
                       [](double value) { return std::abs(value) <= 90.0; });
}

}  // namespace

void AddPoint(MeasuredTable& table, const std::array<bool, kQuantities>& has,
              const std::array<double, kQuantities>& values) {
    for (std::size_t q = 0; q < kQuantities; ++q)
        if (has[q] && std::isnan(values[q])) {
            ++table.leftOut;
            return;
        }
    if (has[kTheta] && std::abs(values[kTheta]) > 90.0) throw ZfError(ThetaRefusal(values[kTheta]));
    if (has[kAlpha] && std::abs(values[kAlpha]) > 90.0)
        throw ZfError(fmt::format("the angle along the slit {:g} does not lie between -90 and 90 degrees",
                                  values[kAlpha]));
    if (has[kEnergy] && values[kEnergy] <= 0.0)
        throw ZfError(fmt::format("the kinetic energy {:g} eV is not above 0", values[kEnergy]));
    if (has[kSigma] && values[kSigma] < 0.0)
        throw ZfError(fmt::format("the standard deviation {:g} is below 0", values[kSigma]));
    for (std::size_t q = 0; q < kQuantities; ++q)
        if (has[q]) table.lists[q].push_back(values[q]);
}

void AddMatrix(MeasuredTable& table, const MatrixAxis& rows, const MatrixAxis& columns,
               const std::vector<Quantity>& measured,
               const std::function<double(Quantity, std::size_t, std::size_t)>& value) {
    const bool named = rows.isTheta || rows.isPhi || columns.isTheta || columns.isPhi;
    const bool phiFirst =
        named ? rows.isPhi || columns.isTheta : !WithinRightAngle(rows) && WithinRightAngle(columns);
    table.form = fmt::format("matrix, {} rows by {} columns", rows.values.size(), columns.values.size());
    table.columns.emplace_back(phiFirst ? "rows: azimuth" : "rows: polar angle");
    table.columns.emplace_back(phiFirst ? "columns: polar angle" : "columns: azimuth");
    CheckThetas(phiFirst ? columns : rows);
    std::array<bool, kQuantities> has = {};
    has[kTheta] = has[kPhi] = true;
    for (const Quantity quantity : measured) has[quantity] = true;
    for (std::size_t r = 0; r < rows.values.size(); ++r)
        for (std::size_t c = 0; c < columns.values.size(); ++c) {
            std::array<double, kQuantities> values = {};
            values[phiFirst ? kPhi : kTheta] = rows.values[r];
            values[phiFirst ? kTheta : kPhi] = columns.values[c];
            for (const Quantity quantity : measured) values[quantity] = value(quantity, r, c);
            AddPoint(table, has, values);
        }
}

MeasuredTable ReadMeasuredTable(const std::string& text, const std::string& letters) {
    MeasuredTable table = IsIgorText(text) ? ReadIgorText(text) : TableReader(text, letters).Read();
    const bool empty = table.Points() == 0;
    if (empty && table.leftOut > 0)
        throw ZfError(fmt::format("no point has a value: all {} are empty or not a number", table.leftOut));
    if (empty) throw ZfError("there are no points in the table");
    return table;
}

}  // namespace qvre
