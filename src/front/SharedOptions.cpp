#include "front/SharedOptions.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <set>

#include "foundation/StrictNumber.h"

namespace qvre {

CLI::Validator Between(double low, double high) {
    const auto check = [low, high](const std::string& text) {
        double value = 0.0;
        if (CLI::detail::lexical_cast(text, value) && value >= low && value <= high) return std::string();
        char reason[96];
        std::snprintf(reason, sizeof reason, "has to be a number from %g to %g", low, high);
        return std::string(reason);
    };
    return {check, ""};
}

CLI::Validator AboveZero() {
    const auto check = [](const std::string& text) {
        double value = 0.0;
        if (CLI::detail::lexical_cast(text, value) && value > 0.0 && std::isfinite(value))
            return std::string();
        return std::string("has to be a number above 0");
    };
    return {check, ""};
}

std::string Alternatives(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i > 0) text += i + 1 < names.size() ? ", " : " or ";
        text += names[i];
    }
    return text;
}

CLI::Validator OneOf(const std::vector<std::string>& names) {
    const auto check = [names](const std::string& text) {
        if (std::find(names.begin(), names.end(), text) != names.end()) return std::string();
        return "has to be " + Alternatives(names) + ", not " + text;
    };
    return {check, ""};
}

CLI::Option* AddExchange(CLI::App& command, ExchangeKind& exchange, const std::string& purpose) {
    return command
        .add_option("--exchange", exchange,
                    "Exchange of the photoelectron: furness (after Furness and McCarthy; default), slater "
                    "or none" +
                        purpose)
        ->transform(WordOf<ExchangeKind>())
        ->option_text("NAME");
}

CLI::Option* AddZero(CLI::App& command, std::optional<double>& zero_eV, const std::string& purpose) {
    return command
        .add_option(
            "--zero", zero_eV,
            "Muffin-tin zero against the vacuum, eV; default: the average between the spheres" + purpose)
        ->check(Between(-1000.0, 1000.0))
        ->type_name("FLOAT");
}

CLI::Option* AddBackground(CLI::App& command, std::optional<BackgroundModel>& background) {
    return command
        .add_option_function<std::string>(
            "--background",
            [&background](const std::string& text) {
                background = Usage("--background", [&] { return ParseBackgroundModel(text); });
            },
            "Instead of --i0: chi = (I - B)/B with the smooth part B(theta) of I itself: mean, its means "
            "over the azimuth, or a polynomial of this degree through them, 0 to 12. Default none")
        ->type_name("MODEL");
}

void AddInstrument(CLI::App& command, Instrument& instrument) {
    constexpr double kHighestEnergy = 1e6;  // eV
    command
        .add_option("--fold", instrument.fold,
                    "Average over an N-fold rotation axis along the surface normal")
        ->check(CLI::Range(1, 360))
        ->type_name("N")
        ->capture_default_str();
    command.add_option("--mirror", instrument.mirror, "Average over a mirror plane at this azimuth, degrees")
        ->type_name("PHI")
        ->check(Between(-360.0, 360.0));
    command
        .add_option("--acceptance", instrument.acceptance,
                    "Average over a cone of this half angle, degrees (0: none, at most 45)")
        ->type_name("ANGLE")
        ->check(Between(0.0, 45.0))
        ->capture_default_str();
    command
        .add_option(
            "--inner-potential", instrument.innerPotential,
            "Refraction at the surface: the vacuum level above the zero of the kinetic energy inside, eV")
        ->type_name("V0")
        ->check(Between(0.0, kHighestEnergy));
    command
        .add_option("--energy", instrument.energy,
                    "Kinetic energy of the calculation (inside), eV, for the refraction")
        ->type_name("E")
        ->check(Between(1e-3, kHighestEnergy));
}

std::vector<std::pair<std::string, double>> NamedNumbers(const char* option,
                                                         const std::vector<std::string>& texts) {
    std::vector<std::pair<std::string, double>> pairs;
    std::set<std::string> names;
    for (const std::string& text : texts) {
        const std::size_t equals = text.find('=');
        const std::string name = equals == std::string::npos ? "" : text.substr(0, equals);
        const std::string number = equals == std::string::npos ? text : text.substr(equals + 1);
        pairs.emplace_back(name, Usage(option, [&] { return StrictNumber(number, text); }));
        if (!names.insert(name).second)
            throw CLI::ValidationError(option, "there are two of " + text.substr(0, equals));
    }
    return pairs;
}

std::vector<std::pair<std::string, double>> DebyeTemperatures(const std::vector<std::string>& texts) {
    for (const std::string& text : texts)
        if (text.find('=') == std::string::npos || text.front() == '=')
            throw CLI::ValidationError("--debye", text + " is no pair of element and kelvin, such as Cu=343");
    return NamedNumbers("--debye", texts);
}

void CheckOutput(const std::string& path, const std::string& extension) {
    if (std::filesystem::path(path).extension() != extension)
        throw CLI::ValidationError("--output", "has to end in " + extension);
}

}  // namespace qvre
