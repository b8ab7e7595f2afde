#include "report/compare/MeasuredPattern.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string_view>

#include "foundation/CommaTable.h"
#include "foundation/FileReading.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

enum Column : std::size_t { kTheta, kPhi, kIntensity, kChi, kColumns };

struct Layout {
    std::array<std::optional<std::size_t>, kColumns> place;  ///< of each column in a line, where there is one
    std::size_t fields = 0;                                  ///< of a line
};

constexpr Layout kUnnamed = {{0, 1, 2, std::nullopt}, 3};

constexpr std::array<std::pair<std::string_view, Column>, 8> kNames = {{{"theta", kTheta},
                                                                        {"polar", kTheta},
                                                                        {"phi", kPhi},
                                                                        {"azimuth", kPhi},
                                                                        {"i", kIntensity},
                                                                        {"intensity", kIntensity},
                                                                        {"counts", kIntensity},
                                                                        {"chi", kChi}}};

std::optional<double> Number(const std::string& field) {
    const char* begin = field.data() + (field.starts_with('+') ? 1 : 0);
    const char* end = field.data() + field.size();
    double value = 0.0;
    const auto [stop, status] = std::from_chars(begin, end, value);
    if (status != std::errc() || stop != end || !std::isfinite(value)) return std::nullopt;
    return value;
}

Layout NamedColumns(const std::vector<std::string>& fields) {
    Layout layout;
    layout.fields = fields.size();
    for (std::size_t place = 0; place < fields.size(); ++place) {
        std::string name = fields[place];
        std::transform(name.begin(), name.end(), name.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        for (const auto& [known, column] : kNames) {
            if (name != known) continue;
            if (layout.place[column])
                throw ZfError("there are two columns for the quantity \"" + fields[place] + "\"");
            layout.place[column] = place;
        }
    }
    const auto& place = layout.place;
    if (place[kTheta] && place[kPhi] && (place[kIntensity] || place[kChi])) return layout;
    throw ZfError(
        "the columns have to be named theta, phi and intensity (or chi), or to bring numbers alone");
}

double Value(const std::string& field) {
    const std::optional<double> value = Number(field);
    if (!value) throw ZfError("\"" + field + "\" is not a number");
    return *value;
}

void AddPoint(MeasuredPattern& pattern, const Layout& layout, const std::vector<std::string>& fields) {
    if (fields.size() != layout.fields)
        throw ZfError(fmt::format("there are {} fields instead of {}; a decimal sign is a point",
                                  fields.size(), layout.fields));
    const std::array<std::vector<double>*, kColumns> lists = {&pattern.theta, &pattern.phi,
                                                              &pattern.intensity, &pattern.chi};
    for (std::size_t column = 0; column < kColumns; ++column)
        if (layout.place[column]) lists[column]->push_back(Value(fields[*layout.place[column]]));
    const double theta = pattern.theta.back();
    if (theta < 0.0 || theta > 90.0)
        throw ZfError(fmt::format("the polar angle {} does not lie between 0 and 90 degrees",
                                  fields[*layout.place[kTheta]]));
}

/// A line is a header when its first field is no number.
void TakeLine(MeasuredPattern& pattern, std::optional<Layout>& layout,
              const std::vector<std::string>& fields) {
    if (!layout) {
        const bool named = !Number(fields.front());
        layout = named ? NamedColumns(fields) : kUnnamed;
        if (named) return;
    }
    AddPoint(pattern, *layout, fields);
}

}  // namespace

MeasuredPattern ParseMeasuredPattern(const std::string& text) {
    MeasuredPattern pattern;
    std::optional<Layout> layout;
    ForEachTableLine(text, FieldSeparator::kAny,
                     [&](const std::vector<std::string>& fields) { TakeLine(pattern, layout, fields); });
    if (pattern.theta.empty()) throw ZfError("there are no points in the table");
    return pattern;
}

MeasuredPattern LoadMeasuredPattern(const std::string& path) {
    return Naming(path, [&] { return ParseMeasuredPattern(ReadTextFile(path)); });
}

}  // namespace qvre
