#include "structure/FitReportText.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include "foundation/Text.h"
#include "foundation/Words.h"
#include "structure/FitAlerts.h"
#include "structure/FitFiles.h"
#include "structure/FitNumbers.h"
#include "structure/MisfitParts.h"

namespace qvre {

namespace {

using Row = std::vector<std::string>;

/// Letters, not bytes, of a text in UTF-8.
std::size_t LettersOf(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
    }));
}

/// Rows as lines with columns as wide as their widest field.
std::string Table(const std::vector<Row>& rows) {
    std::vector<std::size_t> widths;
    for (const Row& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], LettersOf(row[i]));
    }
    std::string text;
    for (const Row& row : rows) {
        std::string line = "  ";
        for (std::size_t i = 0; i < row.size(); ++i)
            line += row[i] + std::string(widths[i] - LettersOf(row[i]) + 2, ' ');
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

std::string Section(const std::string& title, const std::string& body) {
    return body.empty() ? "" : "\n" + title + "\n" + body;
}

std::string WithUnit(const std::string& value, const std::string& unit) {
    return unit.empty() ? value : value + " " + unit;
}

std::vector<std::optional<double>> NoiseOfDerived(const FitReport& report) {
    if (!report.noise) return std::vector<std::optional<double>>(report.space.derived.size());
    return DerivedErrors(report.space, report.best.point, *report.noise);
}

std::string QuantityText(const std::string& name, double value, const std::optional<double>& error,
                         const std::string& unit) {
    return WithUnit(name + " = " + (error ? WithError(value, *error) : DoubleToText(value)), unit);
}

bool IsDone(const FitReport& report) {
    return !report.best.point.empty();
}

std::string EndText(const FitReport& report) {
    if (report.isRunning) return "still running";
    return WordFor(report.stop) + (report.detail.empty() ? "" : ": " + report.detail);
}

std::string HeadOf(const FitReport& report) {
    const auto failed = std::count_if(report.records.begin(), report.records.end(),
                                      [](const EvaluationRecord& one) { return !one.failure.empty(); });
    std::vector<Row> rows = {
        {"recipe", report.recipe},
        {"calculation", report.calculation},
        {"search", report.search},
        {"ended", EndText(report)},
        {"evaluations", fmt::format("{}{}, {:.3g} s of calculation", report.evaluations,
                                    failed > 0 ? fmt::format(" ({} failed)", failed) : "", report.seconds)},
        {"program", "qvre " QVRE_VERSION}};
    return report.title + "\n\n" + Table(rows);
}

std::string LevelOfR(double r, double independentData) {
    return RText(RLevel(r, independentData));
}

std::string AgreementOf(const FitReport& report) {
    const double r = report.best.evaluation.r;
    std::string text = fmt::format(
        "  R = {}; structures up to the R level {}, for N = {:.0f} independent data, are as good\n", RText(r),
        LevelOfR(r, report.independentData), report.independentData);
    if (report.noise && report.noise->degreesOfFreedom > 0.0 && report.hasSigmas)
        text +=
            fmt::format("  chi-squared {:.5g} of {:.0f} degrees of freedom, {:.3g} each\n",
                        report.noise->chiSquared / report.MeanWeight(), report.noise->degreesOfFreedom,
                        report.noise->chiSquared / (report.noise->degreesOfFreedom * report.MeanWeight()));
    return text;
}

std::string ParametersOf(const FitReport& report) {
    std::vector<Row> rows = {{"", "unit", "start", "bounds", "best", "noise error", "R level"}};
    for (std::size_t i = 0; i < report.space.parameters.size(); ++i) {
        const FitParameter& one = report.space.parameters[i];
        const std::optional<double> noise = report.NoiseOf(i);
        const int decimals = noise ? DecimalsOfError(*noise) : 0;
        const double value = report.best.point[i];
        rows.push_back({one.name, one.unit, DoubleToText(one.start),
                        DoubleToText(one.lower) + " to " + DoubleToText(one.upper),
                        noise ? fmt::format("{:.{}f}", value, decimals) : DoubleToText(value),
                        noise          ? fmt::format("{:.{}f}", *noise, decimals)
                        : report.noise ? "none"
                                       : "not known",
                        LevelText(report, i)});
    }
    return Table(rows);
}

/// Why errors are missing, a line each.
std::vector<std::string> MissingErrors(const FitReport& report, std::size_t i) {
    std::vector<std::string> lines;
    if (report.noise && !report.noise->sigma[i])
        lines.push_back("no noise error: " + report.noise->reason[i]);
    if (i >= report.levels.size()) return lines;
    const RLevelError& level = report.levels[i];
    if (!level.lower && !level.upper && level.lowerReason == level.upperReason)
        lines.push_back("no end of the R level: " + level.lowerReason);
    else if (!level.lower)
        lines.push_back("no lower end of the R level: " + level.lowerReason);
    if (!level.upper && (level.lower || level.lowerReason != level.upperReason))
        lines.push_back("no upper end of the R level: " + level.upperReason);
    return lines;
}

std::string ReasonsOf(const FitReport& report) {
    std::string text;
    for (std::size_t i = 0; i < report.space.parameters.size(); ++i)
        for (const std::string& line : MissingErrors(report, i))
            text += "  " + report.space.parameters[i].name + " has " + line + "\n";
    return text;
}

std::string RestraintsOf(const FitReport& report) {
    std::vector<Row> rows;
    for (std::size_t i = 0; i < report.space.parameters.size(); ++i) {
        const FitParameter& one = report.space.parameters[i];
        if (!one.restraint) continue;
        const double pull = (report.best.point[i] - one.restraint->value) / one.restraint->sigma;
        rows.push_back(
            {one.name,
             WithUnit(DoubleToText(one.restraint->value) + " +- " + DoubleToText(one.restraint->sigma),
                      one.unit),
             fmt::format("missed by {:.1f} sigma", std::abs(pull))});
    }
    return Table(rows);
}

std::string DerivedOf(const FitReport& report) {
    if (report.space.derived.empty()) return "";
    const std::vector<double> values = report.space.Derived(report.best.point);
    const auto errors = NoiseOfDerived(report);
    std::vector<Row> rows;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const DerivedQuantity& one = report.space.derived[i];
        rows.push_back({QuantityText(one.name, values[i], errors[i], one.unit), "= " + one.expression});
    }
    return Table(rows);
}

std::string DataOf(const FitReport& report) {
    std::vector<Row> rows = {
        {"", "points", "N", "weight", "R", "R level", "amplitude", "rotation", "polar offset", "tilt"}};
    double all = 0.0;
    for (const FittedData& data : report.data) all += data.weight * data.r;
    if (report.data.size() > 1) rows.front().emplace_back("part of R");
    for (const FittedData& data : report.data) {
        const SampleSetting& setting = data.compared.setting;
        Row row = {data.name,
                   fmt::format("{}", data.compared.Directions()),
                   fmt::format("{:.0f}", data.independentData),
                   DoubleToText(data.weight),
                   RText(data.r),
                   LevelOfR(data.r, data.independentData),
                   fmt::format("{:.3g}", data.amplitude),
                   FixedText(setting.rotation, 1),
                   FixedText(setting.thetaOffset, 2),
                   setting.tilt > 0.0
                       ? fmt::format("{:.2f} towards {:.0f}", setting.tilt, setting.tiltAzimuth)
                       : "0"};
        if (report.data.size() > 1)
            row.push_back(fmt::format("{:.0f} %", all > 0.0 ? 100.0 * data.weight * data.r / all : 0.0));
        rows.push_back(row);
    }
    return report.data.empty() ? "" : Table(rows);
}

std::string CorrelationsOf(const FitReport& report) {
    constexpr double kTold = 0.1;
    if (!report.noise) return "";
    std::vector<Row> rows;
    for (std::size_t i = 0; i < report.space.parameters.size(); ++i)
        for (std::size_t j = i + 1; j < report.space.parameters.size(); ++j)
            if (const double c = report.noise->Correlation(i, j); std::abs(c) > kTold)
                rows.push_back({report.space.parameters[i].name, report.space.parameters[j].name,
                                fmt::format("{:+.2f}", c)});
    return Table(rows);
}

std::string RivalsText(const FitReport& report) {
    if (report.rivals.empty()) return "";
    std::vector<Row> rows = {{"R"}};
    for (const FitParameter& one : report.space.parameters) rows.front().push_back(one.name);
    for (const Trial& rival : report.rivals) {
        Row row = {RText(rival.evaluation.r)};
        for (const double value : rival.point) row.push_back(DoubleToText(value));
        rows.push_back(row);
    }
    return Table(rows);
}

std::string ConvergenceOf(const FitReport& report) {
    std::vector<Row> rows;
    for (const ConvergenceCheck& check : report.convergence)
        rows.push_back({check.what, fmt::format("R = {}", RText(check.r))});
    return Table(rows);
}

std::string SourcesOf(const FitReport& report) {
    constexpr std::size_t kMost = 5;
    std::string text;
    for (const FittedData& data : report.data) {
        std::vector<MisfitPart> parts = MisfitPartsOf(data);
        if (parts.size() < 2) continue;
        std::vector<Row> rows = {{data.name, "points", "R", "part of the squared differences"}};
        parts.resize(std::min(parts.size(), kMost));
        for (const MisfitPart& part : parts)
            rows.push_back({part.place, fmt::format("{}", part.points), RText(part.r),
                            fmt::format("{:.0f} %", 100.0 * part.share)});
        text += Table(rows);
    }
    return text;
}

std::string AlertsOf(const FitReport& report) {
    std::string text;
    for (const std::string& alert : FitAlerts(report)) text += "  " + alert + "\n";
    return text;
}

/// "d12 = 1.772 +- 0.008 angstrom (noise), R level 1.74 to 1.80"
std::string ParameterLine(const FitReport& report, std::size_t i) {
    std::string line = ParameterText(report, i);
    if (report.NoiseOf(i)) line += " (noise)";
    if (i < report.levels.size() && (report.levels[i].lower || report.levels[i].upper))
        line += ", R level " + LevelText(report, i);
    for (const std::string& missing : MissingErrors(report, i)) line += "; " + missing;
    return line + "\n";
}

}  // namespace

std::string ParameterText(const FitReport& report, std::size_t parameter) {
    const FitParameter& one = report.space.parameters[parameter];
    return QuantityText(one.name, report.best.point[parameter], report.NoiseOf(parameter), one.unit);
}

std::string LevelText(const FitReport& report, std::size_t parameter) {
    if (parameter >= report.levels.size()) return "not known";
    const RLevelError& level = report.levels[parameter];
    const double best = report.best.point[parameter];
    const double width = level.lower && level.upper ? (*level.upper - *level.lower) / 2.0
                         : level.lower              ? best - *level.lower
                         : level.upper              ? *level.upper - best
                                                    : 0.0;
    const auto number = [&](double value) { return fmt::format("{:.{}f}", value, DecimalsOfError(width)); };
    if (level.lower && level.upper) return number(*level.lower) + " to " + number(*level.upper);
    if (level.lower) return "above " + number(*level.lower);
    if (level.upper) return "below " + number(*level.upper);
    return "none";
}

std::string FitReportText(const FitReport& report) {
    std::string text = HeadOf(report);
    if (!IsDone(report)) return text + Section("Alerts", AlertsOf(report));
    text += Section("Agreement", AgreementOf(report));
    text += Section("Alerts", AlertsOf(report));
    text += Section("Parameters", ParametersOf(report) + ReasonsOf(report));
    text += Section("Restraints", RestraintsOf(report));
    text += Section("Derived quantities, with their noise errors", DerivedOf(report));
    text += Section("Rivals: other structures within the R level", RivalsText(report));
    text += Section("Correlations above 0.1", CorrelationsOf(report));
    text += Section("Data; angles in degrees", DataOf(report));
    text += Section("Where R comes from, the largest parts; angles in degrees", SourcesOf(report));
    text += Section("A better calculation of the best structure", ConvergenceOf(report));
    text +=
        "\nThe noise error is what a parameter would scatter by if the measurement were repeated, were the "
        "model\n"
        "perfect. Within the R level lie the values that are as good as the best one, the other parameters\n"
        "optimised (N. A. Booth et al., Surf. Sci. 387, 152 (1997)); go by it to exclude a structure.\n";
    return text;
}

std::string FitLastLines(const FitReport& report, const std::string& folder) {
    std::string text;
    if (IsDone(report)) {
        for (std::size_t i = 0; i < report.space.parameters.size(); ++i) text += ParameterLine(report, i);
        const std::vector<double> values = report.space.Derived(report.best.point);
        const auto errors = NoiseOfDerived(report);
        for (std::size_t i = 0; i < values.size(); ++i)
            text += QuantityText(report.space.derived[i].name, values[i], errors[i],
                                 report.space.derived[i].unit) +
                    (errors[i] ? " (noise)" : "") + "\n";
        const double r = report.best.evaluation.r;
        text += fmt::format("R = {}, R level {} for N = {:.0f} independent data\n", RText(r),
                            LevelOfR(r, report.independentData), report.independentData);
    }
    for (const std::string& alert : FitAlerts(report)) text += "warning: " + alert + "\n";
    return text + fmt::format("report: {}/{}\n", folder, fit_files::kText);
}

}  // namespace qvre
