#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "foundation/MapKeys.h"
#include "foundation/Words.h"
#include "foundation/ZfError.h"
#include "prepare/atomic/MuffinTin.h"
#include "report/sphere/Instrument.h"
#include "report/sphere/PolarBackground.h"

// What the options of several subcommands have in common.

namespace qvre {

/// Runs an action whose ZfError is bad usage of the option.
template <class Action>
auto Usage(const char* option, Action action) {
    try {
        return action();
    } catch (const ZfError& error) {
        throw CLI::ValidationError(option, error.message);
    }
}

/// A number of the closed range; CLI::Range lets NaN pass.
CLI::Validator Between(double low, double high);

/// A finite number.
CLI::Validator AboveZero();

/// "a, b or c".
std::string Alternatives(const std::vector<std::string>& names);

/// One of the names.
CLI::Validator OneOf(const std::vector<std::string>& names);

/// Turns a name of the table into its enumerator, for `transform`.
template <class Enumeration>
CLI::Validator Enumerator(const std::map<std::string, Enumeration>& table) {
    const auto translate = [table](std::string& text) {
        const auto found = table.find(text);
        if (found == table.end()) return "has to be " + Alternatives(MapKeys(table)) + ", not " + text;
        text = std::to_string(static_cast<std::underlying_type_t<Enumeration>>(found->second));
        return std::string();
    };
    return {translate, ""};
}

/// Turns a word of an enumeration into its enumerator, for `transform`.
template <class Enumeration>
CLI::Validator WordOf() {
    const auto translate = [](std::string& text) {
        const std::optional<Enumeration> value = ValueOfWord<Enumeration>(text);
        if (!value) return "has to be " + Alternatives(WordsOf<Enumeration>()) + ", not " + text;
        text = std::to_string(static_cast<std::underlying_type_t<Enumeration>>(*value));
        return std::string();
    };
    return {translate, ""};
}

/// --exchange; `purpose` goes behind the names that it takes.
CLI::Option* AddExchange(CLI::App& command, ExchangeKind& exchange, const std::string& purpose);

/// --zero, of the muffin tins; `purpose` goes behind its default.
CLI::Option* AddZero(CLI::App& command, std::optional<double>& zero_eV, const std::string& purpose);

/// --background, of an image of which chi is asked for without its I0.
CLI::Option* AddBackground(CLI::App& command, std::optional<BackgroundModel>& background);

/// --fold, --mirror, --acceptance, --inner-potential and --energy.
void AddInstrument(CLI::App& command, Instrument& instrument);

/// Pairs such as Cu=343, in their order. A number alone has an empty name. Throws CLI::ValidationError for
/// what is no number and for a name given twice.
std::vector<std::pair<std::string, double>> NamedNumbers(const char* option,
                                                         const std::vector<std::string>& texts);

/// The same with a name for each, the symbol of an element.
std::vector<std::pair<std::string, double>> DebyeTemperatures(const std::vector<std::string>& texts);

/// Throws CLI::ValidationError unless the path has a name and this extension.
void CheckOutput(const std::string& path, const std::string& extension);

}  // namespace qvre
