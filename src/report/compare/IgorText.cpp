#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <limits>
#include <optional>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"
#include "report/compare/MeasuredTable.h"
#include "report/compare/TableLines.h"

// The text format of Igor Pro (WaveMetrics, Igor Pro manual, "Igor Text files"): blocks WAVES, BEGIN, END and
// commands behind an X, of which SetScale gives a wave its axes.

namespace qvre {

namespace {

/// One axis of a wave: what its points stand for, by SetScale.
struct Scale {
    double first = 0.0;
    double second = 0.0;  ///< step, last value, or the value one step behind the last
    char kind = 'P';      ///< per point, inclusive, or neither: ' '
    std::string unit;

    std::vector<double> Values(std::size_t count) const {
        const auto steps = static_cast<double>(kind == 'I' ? std::max<std::size_t>(count, 2) - 1 : count);
        const double step = kind == 'P' ? second : (second - first) / steps;
        std::vector<double> values(count);
        for (std::size_t i = 0; i < count; ++i) values[i] = first + static_cast<double>(i) * step;
        if (unit.find("rad") != std::string::npos)
            for (double& value : values) value = Degrees(value);
        return values;
    }
};

struct Wave {
    std::string name;
    std::size_t columns = 0;  ///< of a matrix; 0: a list
    std::vector<double> values;
    std::vector<int> lines;  ///< of the file, one a row
    std::optional<Scale> x;
    std::optional<Scale> y;

    std::size_t Rows() const { return columns == 0 ? values.size() : values.size() / columns; }
};

std::string Lower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

/// Pieces of a line between blanks and commas; quotes of either kind hold a piece together.
std::vector<std::string> Pieces(std::string_view line) {
    std::vector<std::string> pieces;
    std::size_t at = 0;
    while ((at = line.find_first_not_of(" \t,", at)) < line.size()) {
        const bool quoted = line[at] == '\'' || line[at] == '"';
        const std::size_t begin = quoted ? at + 1 : at;
        const std::size_t end =
            std::min(quoted ? line.find(line[at], begin) : line.find_first_of(" \t,", at), line.size());
        pieces.emplace_back(line.substr(begin, end - begin));
        at = std::min(quoted ? end + 1 : end, line.size());
    }
    return pieces;
}

class IgorReader {
public:
    std::vector<Wave> Read(const std::string& text) {
        for (const TableLine& line : TableLines(text)) {
            if (line.comment) continue;
            try {
                Take(line);
            } catch (const ZfError& error) {
                FailAtLine(line.number, error.message);
            }
        }
        if (inside_) throw ZfError("the last block of waves has no END");
        return std::move(waves_);
    }

private:
    void Take(const TableLine& line) {
        const std::vector<std::string> pieces = Pieces(line.text);
        if (pieces.empty()) return;
        const std::string word = Lower(pieces[0]);
        if (inside_ && word != "end") return TakeRow(pieces, line.number);
        if (word == "begin") inside_ = true;
        if (word == "end") inside_ = false;
        if (word == "x") return TakeCommands(line.text.substr(line.text.find_first_of("xX") + 1));
        if (word.rfind("waves", 0) == 0) OpenBlock(word, pieces);
    }

    void OpenBlock(const std::string& word, const std::vector<std::string>& pieces) {
        // "/N=(3,4)" is cut at its comma, and blanks may stand in it.
        std::string sizes;
        std::size_t at = 1;
        const std::size_t bracket = word.find("/n=(");
        if (bracket != std::string::npos) {
            sizes = word.substr(bracket + 4);
            while (sizes.find(')') == std::string::npos && at < pieces.size()) sizes += "," + pieces[at++];
        }
        skipped_ = word.find("/t") != std::string::npos;
        std::size_t columns = 0;
        if (!sizes.empty()) columns = ColumnsOf(sizes);
        first_ = waves_.size();
        for (; at < pieces.size(); ++at) {
            waves_.emplace_back();
            waves_.back().name = pieces[at];
            waves_.back().columns = columns;
        }
        if (first_ == waves_.size()) throw ZfError("the line WAVES names no wave");
        if (columns > 0 && waves_.size() > first_ + 1) throw ZfError("a block has one matrix, not several");
    }

    /// Columns of "3,4)"; 0 of a list.
    static std::size_t ColumnsOf(const std::string& sizes) {
        const std::vector<std::string> numbers = Pieces(sizes.substr(0, sizes.find(')')));
        if (numbers.size() == 1) return 0;
        const auto columns = numbers.size() == 2 ? TableNumbers().Read(numbers[1]) : std::optional<double>();
        if (!columns || !(*columns >= 1.0 && *columns <= 1e6))
            throw ZfError("a wave has one or two dimensions, as in WAVES/N=(rows,columns)");
        return static_cast<std::size_t>(*columns);
    }

    void TakeRow(const std::vector<std::string>& fields, int number) {
        if (skipped_) return;
        const std::size_t count = waves_.size() - first_;
        const std::size_t columns = count == 0 ? 0 : waves_[first_].columns;
        const std::size_t wanted = columns > 0 ? columns : count;
        if (fields.size() != wanted)
            throw ZfError(fmt::format("there are {} numbers instead of {}", fields.size(), wanted));
        for (std::size_t i = 0; i < fields.size(); ++i) {
            const std::optional<double> value = TableNumbers().Read(fields[i]);
            if (!value) throw ZfError("\"" + fields[i] + "\" is not a number");
            Wave& wave = waves_[columns > 0 ? first_ : first_ + i];
            wave.values.push_back(*value);
            if (columns == 0 || i == 0) wave.lines.push_back(number);
        }
    }

    /// "SetScale/P x 0,1,"deg", wave0; SetScale y 0,90,"deg", wave0".
    void TakeCommands(std::string_view commands) {
        while (!commands.empty()) {
            const std::size_t end = std::min(commands.find(';'), commands.size());
            const std::vector<std::string> pieces = Pieces(commands.substr(0, end));
            commands.remove_prefix(std::min(commands.size(), end + 1));
            if (pieces.size() < 5 || Lower(pieces[0]).rfind("setscale", 0) != 0) continue;
            SetScale(pieces);
        }
    }

    void SetScale(const std::vector<std::string>& pieces) {
        const std::string dimension = Lower(pieces[1]);
        if (dimension != "x" && dimension != "y") return;
        const auto first = TableNumbers().Read(pieces[2]);
        const auto second = TableNumbers().Read(pieces[3]);
        if (!first || !second || !std::isfinite(*first + *second))
            throw ZfError("SetScale has two numbers behind " + pieces[1]);
        const std::string command = Lower(pieces[0]);
        const bool perPoint = command.find("/p") != std::string::npos;
        const bool inclusive = command.find("/i") != std::string::npos;
        Scale scale{*first, *second, perPoint ? 'P' : inclusive ? 'I' : ' ', {}};
        if (pieces.size() > 5) scale.unit = Lower(pieces[4]);
        for (Wave& wave : waves_) {
            if (std::find(pieces.begin() + 4, pieces.end(), wave.name) == pieces.end()) continue;
            (dimension == "x" ? wave.x : wave.y) = scale;
        }
    }

    std::vector<Wave> waves_;
    std::size_t first_ = 0;  // wave of the block
    bool inside_ = false;
    bool skipped_ = false;  // texts
};

/// The measured quantity of a wave; a name that is not known is an intensity where there is no other.
std::optional<Quantity> MeasuredBy(const Wave& wave) {
    const std::optional<ColumnName> name = ReadColumnName(wave.name);
    if (!name || name->quantity < kIntensity) return std::nullopt;
    return name->quantity;
}

std::string Described(const Wave& wave, Quantity quantity) {
    return fmt::format("wave \"{}\": {}", wave.name, QuantityName(quantity));
}

MatrixAxis AxisOf(const Wave& matrix, bool isRow, const std::vector<Wave>& waves) {
    const std::size_t count = isRow ? matrix.Rows() : matrix.columns;
    if (const auto& scale = isRow ? matrix.x : matrix.y) return {scale->Values(count), false, false};
    for (const Wave& wave : waves) {
        const auto name = ReadColumnName(wave.name);
        if (wave.columns > 0 || wave.values.size() != count || !name || name->quantity > kPhi) continue;
        MatrixAxis axis{wave.values, name->quantity == kTheta, name->quantity == kPhi};
        if (name->radians)
            for (double& value : axis.values) value = Degrees(value);
        return axis;
    }
    throw ZfError(fmt::format(
        "the wave {} has no angles along its {}: it needs X SetScale {}, as in X "
        "SetScale/P {} 0,1,\"deg\", {}",
        matrix.name, isRow ? "rows" : "columns", isRow ? "x" : "y", isRow ? "x" : "y", matrix.name));
}

MeasuredTable MatrixTable(const std::vector<Wave>& waves) {
    std::array<const Wave*, kQuantities> matrices = {};
    std::vector<Quantity> measured;
    const Wave* first = nullptr;
    for (const Wave& wave : waves) {
        if (wave.columns == 0) continue;
        const Quantity quantity = MeasuredBy(wave).value_or(kIntensity);
        if (first == nullptr) first = &wave;
        if (matrices[quantity] != nullptr) continue;
        if (wave.values.size() != first->values.size() || wave.columns != first->columns)
            throw ZfError(fmt::format("the waves {} and {} have different sizes", first->name, wave.name));
        matrices[quantity] = &wave;
        measured.push_back(quantity);
    }
    MeasuredTable table;
    for (const Quantity quantity : measured)
        table.columns.push_back(Described(*matrices[quantity], quantity));
    const MatrixAxis rows = AxisOf(*first, true, waves);
    const MatrixAxis columns = AxisOf(*first, false, waves);
    AddMatrix(table, rows, columns, measured, [&](Quantity quantity, std::size_t row, std::size_t column) {
        return matrices[quantity]->values[row * first->columns + column];
    });
    table.form = "Igor text, " + table.form;
    return table;
}

/// What each wave of a list of points is for.
std::array<const Wave*, kQuantities> Assigned(const std::vector<Wave>& waves) {
    std::array<const Wave*, kQuantities> lists = {};
    const Wave* unknown = nullptr;
    for (const Wave& wave : waves) {
        const std::optional<ColumnName> name = ReadColumnName(wave.name);
        if (name && lists[name->quantity] == nullptr) lists[name->quantity] = &wave;
        if (!name && unknown == nullptr && !wave.values.empty()) unknown = &wave;
    }
    if (lists[kIntensity] == nullptr && lists[kChi] == nullptr) lists[kIntensity] = unknown;
    return lists;
}

MeasuredTable ListTable(const std::vector<Wave>& waves) {
    const auto lists = Assigned(waves);
    const Wave* measured = lists[kIntensity] != nullptr ? lists[kIntensity] : lists[kChi];
    if (measured == nullptr)
        throw ZfError(
            "no wave is an intensity: name them theta, phi, intensity, with chi or sigma where there is one");
    MeasuredTable table;
    table.form = "Igor text, list of points";
    std::array<bool, kQuantities> has = {};
    std::array<std::vector<double>, kQuantities> values;
    for (std::size_t q = 0; q < kQuantities; ++q) {
        if (lists[q] == nullptr) continue;
        const auto quantity = static_cast<Quantity>(q);
        if (lists[q]->values.size() != measured->values.size())
            throw ZfError(fmt::format("the waves {} and {} have {} and {} points", measured->name,
                                      lists[q]->name, measured->values.size(), lists[q]->values.size()));
        has[q] = true;
        values[q] = lists[q]->values;
        if (ReadColumnName(lists[q]->name).value_or(ColumnName{}).radians)
            for (double& value : values[q]) value = Degrees(value);
        table.columns.push_back(Described(*lists[q], quantity));
    }
    for (const Wave& wave : waves) {
        if (std::find(lists.begin(), lists.end(), &wave) != lists.end()) continue;
        table.skipped.push_back("wave \"" + wave.name + "\"");
        table.columns.push_back(table.skipped.back() + ": skipped");
    }
    const bool hasPlace = has[kTheta] || has[kPhi] || has[kAngle] || has[kEnergy];
    if (!hasPlace && measured->x) {
        const bool energy = measured->x->unit.find("ev") != std::string::npos;
        const Quantity quantity = energy ? kEnergy : kAngle;
        has[quantity] = true;
        values[quantity] = measured->x->Values(measured->values.size());
        table.columns.push_back(fmt::format("scale of \"{}\": {}", measured->name, QuantityName(quantity)));
    }
    for (std::size_t i = 0; i < measured->values.size(); ++i) {
        std::array<double, kQuantities> point = {};
        for (std::size_t q = 0; q < kQuantities; ++q)
            if (has[q]) point[q] = values[q][i];
        try {
            AddPoint(table, has, point);
        } catch (const ZfError& error) {
            FailAtLine(measured->lines[i], error.message);
        }
    }
    return table;
}

}  // namespace

bool IsIgorText(const std::string& text) {
    const std::size_t begin = std::min(text.find_first_not_of(" \t\r\n"), text.size());
    const std::string word = Lower(std::string_view(text).substr(begin, 5));
    return word.substr(0, 4) == "igor" &&
           (word.size() == 4 || std::isspace(static_cast<unsigned char>(word[4])) != 0);
}

MeasuredTable ReadIgorText(const std::string& text) {
    std::vector<Wave> waves = IgorReader().Read(text);
    const bool matrix =
        std::any_of(waves.begin(), waves.end(), [](const Wave& wave) { return wave.columns > 0; });
    return matrix ? MatrixTable(waves) : ListTable(waves);
}

}  // namespace qvre
