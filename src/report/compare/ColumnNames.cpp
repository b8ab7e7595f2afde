#include "report/compare/ColumnNames.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <utility>

#include "foundation/Constants.h"
#include "report/compare/TableLines.h"

namespace qvre {

namespace {

using Words = std::vector<std::string>;

constexpr std::array<std::pair<std::string_view, Quantity>, 43> kNames = {{
    {"theta", kTheta},      {"polar", kTheta},       {"emission", kTheta},   {"tht", kTheta},
    {"phi", kPhi},          {"azimuth", kPhi},       {"azimuthal", kPhi},    {"azi", kPhi},
    {"azim", kPhi},         {"alpha", kAlpha},       {"angle", kAngle},      {"energy", kEnergy},
    {"e", kEnergy},         {"ek", kEnergy},         {"ekin", kEnergy},      {"ke", kEnergy},
    {"kinetic", kEnergy},   {"i", kIntensity},       {"int", kIntensity},    {"intensity", kIntensity},
    {"counts", kIntensity}, {"count", kIntensity},   {"cts", kIntensity},    {"cps", kIntensity},
    {"area", kIntensity},   {"yield", kIntensity},   {"signal", kIntensity}, {"chi", kChi},
    {"modulation", kChi},   {"anisotropy", kChi},    {"sigma", kSigma},      {"error", kSigma},
    {"err", kSigma},        {"errors", kSigma},      {"di", kSigma},         {"std", kSigma},
    {"stddev", kSigma},     {"uncertainty", kSigma}, {"deviation", kSigma},  {"sd", kSigma},
    {"esd", kSigma},        {"stdev", kSigma},       {"dev", kSigma},
}};

// Words that say nothing about the quantity: units behind a name, adjectives in front of it.
constexpr std::array<std::string_view, 29> kUnits = {
    "deg",   "degree", "degrees", "rad",        "radian",     "radians", "ev",    "angle", "angles", "unit",
    "units", "arb",    "a",       "u",          "au",         "counts",  "count", "cts",   "cps",    "s",
    "sec",   "second", "norm",    "normalized", "normalised", "energy",  "kin",   "k",     "1"};
constexpr std::array<std::string_view, 8> kAdjectives = {"peak",  "norm",     "normalized", "normalised",
                                                         "total", "standard", "raw",        "measured"};

template <class List>
bool Holds(const List& list, std::string_view word) {
    return std::find(list.begin(), list.end(), word) != list.end();
}

std::optional<Quantity> QuantityOf(std::string_view word) {
    for (const auto& [name, quantity] : kNames)
        if (name == word) return quantity;
    return std::nullopt;
}

/// Greek letters by their names, other characters beyond ASCII left out, the rest in lower case.
std::string Plain(std::string_view name) {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 7> greek = {
        {{"\u03b8", "theta"},
         {"\u03d1", "theta"},
         {"\u03c6", "phi"},
         {"\u03d5", "phi"},
         {"\u03b1", "alpha"},
         {"\u03c7", "chi"},
         {"\u03c3", "sigma"}}};
    std::string plain;
    for (std::size_t i = 0; i < name.size();) {
        const auto letter = std::find_if(greek.begin(), greek.end(), [&](const auto& pair) {
            return name.substr(i).starts_with(pair.first);
        });
        const auto c = static_cast<unsigned char>(name[i]);
        if (letter != greek.end()) plain += letter->second;
        if (letter == greek.end() && c < 0x80) plain += static_cast<char>(std::tolower(c));
        i += letter == greek.end() ? 1 : letter->first.size();
    }
    return plain;
}

Words WordsIn(std::string_view name) {
    Words words(1);
    for (const char c : Plain(name)) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0)
            words.back() += c;
        else if (!words.back().empty())
            words.emplace_back();
    }
    if (words.back().empty()) words.pop_back();
    return words;
}

/// "45", "45 deg", "45°", "0.78 rad", in degrees.
std::optional<double> AngleWithUnit(std::string_view text) {
    const auto words = SplitLine(Plain(text), Separator::kBlanks);
    if (words.empty() || words.size() > 2) return std::nullopt;
    if (words.size() == 2 && words[1] != "rad" && !words[1].starts_with("deg")) return std::nullopt;
    const std::optional<double> value = TableNumbers().Read(words[0]);
    if (!value || !std::isfinite(*value)) return std::nullopt;
    return words.size() == 2 && words[1] == "rad" ? Degrees(*value) : *value;
}

/// Whether a piece of a line of names, cut at blanks, goes on with the name in front of it.
bool GoesOn(const std::string& name, const std::string& piece) {
    if (piece.find_first_of("([{/") == 0) return true;
    const Words before = WordsIn(name);
    const Words words = WordsIn(piece);
    if (words.empty()) return true;  // a degree sign
    if (before.size() == 1 && Holds(kAdjectives, before[0])) return true;
    if (std::count(name.begin(), name.end(), '(') > std::count(name.begin(), name.end(), ')')) return true;
    const bool column = QuantityOf(words[0]) && words[0] != "angle" && words[0] != "energy";
    return !column && Holds(kUnits, words[0]);
}

}  // namespace

bool MeansRadians(std::string_view unit) {
    const Words words = WordsIn(unit);
    return words.size() == 1 && (words[0] == "rad" || words[0] == "radian" || words[0] == "radians");
}

const char* QuantityName(Quantity quantity) {
    static constexpr std::array<const char*, kQuantities> names = {
        "polar angle", "azimuth", "angle along the slit", "angle", "kinetic energy",
        "intensity",   "chi",     "standard deviation"};
    return names[quantity];
}

std::optional<ColumnName> ReadColumnName(std::string_view name) {
    const Words words = WordsIn(name);
    if (name.find('/') != std::string_view::npos && words.front() == "di") return std::nullopt;  // dI/I
    std::size_t at = 0;
    while (at + 1 < words.size() && Holds(kAdjectives, words[at])) ++at;
    if (at == words.size()) return std::nullopt;
    std::optional<Quantity> quantity = QuantityOf(words[at]);
    if (!quantity) return std::nullopt;
    ColumnName column{*quantity, false};
    for (++at; at < words.size(); ++at) {
        const std::optional<Quantity> next = QuantityOf(words[at]);
        const bool deviation = next == kSigma;
        if (deviation && (column.quantity == kIntensity || column.quantity == kSigma))
            column.quantity = kSigma;
        else if (column.quantity != kSigma || next != kIntensity) {  // "error of I"
            if (!Holds(kUnits, words[at]) && words[at] != "of") return std::nullopt;
        }
        column.radians = column.radians || MeansRadians(words[at]);
    }
    return column;
}

std::optional<Quantity> QuantityOfLetter(char letter) {
    switch (letter) {
        case 'e':
            return kEnergy;
        case 't':
            return kTheta;
        case 'p':
            return kPhi;
        case 'a':
            return kAlpha;
        case 'i':
            return kIntensity;
        case 's':
            return kSigma;
        default:
            return std::nullopt;
    }
}

std::string ColumnLetters(const std::string& path) {
    std::string letters = Plain(std::filesystem::path(path).extension().string());
    if (letters.size() < 3) return {};
    letters.erase(0, 1);
    for (const char letter : letters)
        if (!QuantityOfLetter(letter) || std::count(letters.begin(), letters.end(), letter) > 1) return {};
    // Without it, the intensity stands behind the columns of the letters.
    if (letters == "etp" || letters == "etpa" || letters == "tp") letters += 'i';
    const bool complete = letters.find('i') != std::string::npos && letters.find_first_of("etp") == 0;
    return complete ? letters : std::string();
}

std::vector<std::string> SplitNames(std::string_view line) {
    for (const auto& [mark, separator] :
         {std::pair{';', Separator::kSemicolon}, std::pair{'\t', Separator::kTab},
          std::pair{',', Separator::kComma}})
        if (line.find(mark) != std::string_view::npos) return SplitLine(line, separator);
    std::vector<std::string> names;
    for (const std::string& piece : SplitLine(line, Separator::kBlanks)) {
        if (!names.empty() && GoesOn(names.back(), piece))
            names.back() += " " + piece;
        else
            names.push_back(piece);
    }
    return names;
}

std::optional<double> AssignedAngle(std::string_view line, Quantity quantity) {
    while (!line.empty()) {
        const std::size_t end = std::min(line.find_first_of(",;\t"), line.size());
        const std::string_view piece = line.substr(0, end);
        line.remove_prefix(std::min(line.size(), end + 1));
        const std::size_t sign = piece.find_first_of("=:");
        if (sign == std::string_view::npos) continue;
        const std::optional<ColumnName> name = ReadColumnName(piece.substr(0, sign));
        if (!name || name->quantity != quantity) continue;
        const std::optional<double> value = AngleWithUnit(piece.substr(sign + 1));
        if (value) return name->radians ? Degrees(*value) : *value;
    }
    return std::nullopt;
}

std::optional<double> EdgeAngle(std::string_view field) {
    if (const auto value = AngleWithUnit(field)) return value;
    const auto theta = AssignedAngle(field, kTheta);
    return theta ? theta : AssignedAngle(field, kPhi);
}

}  // namespace qvre
