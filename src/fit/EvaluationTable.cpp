#include "fit/EvaluationTable.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <utility>

#include "foundation/CommaTable.h"
#include "foundation/FileReading.h"
#include "foundation/ReplacedFile.h"
#include "foundation/StrictNumber.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

std::vector<std::string> Titles(const ParameterSpace& space, const std::vector<std::string>& dataSets) {
    std::vector<std::string> titles = {"number", "generation"};
    for (const FitParameter& parameter : space.parameters) titles.push_back(parameter.name);
    titles.insert(titles.end(), {"misfit", "R"});
    for (const std::string& dataSet : dataSets) titles.push_back("R " + dataSet);
    titles.insert(titles.end(), {"seconds", "failure"});
    return titles;
}

/// A text as one field of a comma-separated line.
std::string AsField(std::string text) {
    for (char& c : text) {
        if (c == ',' || c == '#') c = ';';
        if (c == '\n' || c == '\r' || c == '\t') c = ' ';
    }
    return text;
}

}  // namespace

EvaluationTable::EvaluationTable(std::string path, const ParameterSpace& space,
                                 const std::vector<std::string>& dataSets, int kept)
    : path_(std::move(path)),
      titles_(Titles(space, dataSets)),
      parameters_(space.parameters.size()),
      dataSets_(dataSets.size()) {
    for (std::string& title : titles_) title = AsField(title);
    if (std::filesystem::exists(path_)) Naming(path_, [&] { Load(ReadTextFile(path_), kept); });
    std::string text = fmt::format("{}\n", fmt::join(titles_, ","));
    for (const EvaluationRecord& record : records) text += Line(record);
    WriteWholeFile(path_, text);
}

void EvaluationTable::Load(const std::string& text, int kept) {
    // The line that a program was writing when it was killed has no end.
    const std::string whole = text.substr(0, text.rfind('\n') + 1);
    if (!whole.empty()) {
        const std::size_t titleEnd = whole.find('\n');
        const std::string titles = fmt::format("{}", fmt::join(titles_, ","));
        if (whole.substr(0, titleEnd) != titles)
            throw ZfError(fmt::format("it belongs to another fit: its columns are {} instead of {}",
                                      whole.substr(0, titleEnd), titles));
        const CommaTable table(whole);
        for (const auto& fields : table.rows) {
            if (kept >= 0 && std::ssize(records) == kept) break;
            records.push_back(ReadRecord(fields));
        }
    }
    if (std::ssize(records) < kept)
        throw ZfError(fmt::format("it has {} evaluations instead of {}", records.size(), kept));
}

EvaluationRecord EvaluationTable::ReadRecord(const std::vector<std::string>& fields) const {
    auto field = fields.begin();
    const auto number = [&] {
        const std::string& title = titles_[static_cast<std::size_t>(field - fields.begin())];
        return StrictNumber(*field++, title);
    };
    EvaluationRecord record;
    record.number = static_cast<int>(records.size()) + 1;
    if (number() != record.number) throw ZfError(fmt::format("evaluation {} is missing", record.number));
    record.generation = static_cast<int>(std::clamp(number(), 0.0, 1e9));
    for (std::size_t i = 0; i < parameters_; ++i) record.point.push_back(number());
    record.failure = fields.back();
    if (record.failure.empty()) {
        record.misfit = number();
        record.r = number();
        for (std::size_t i = 0; i < dataSets_; ++i) record.dataSetR.push_back(number());
    } else {
        record.misfit = std::numeric_limits<double>::infinity();
        field = fields.end() - 2;
    }
    record.seconds = number();
    return record;
}

std::string EvaluationTable::Line(const EvaluationRecord& record) const {
    std::string line =
        fmt::format("{},{},{},", record.number, record.generation, fmt::join(record.point, ","));
    if (record.failure.empty()) {
        line += fmt::format("{},{},", record.misfit, record.r);
        for (const double r : record.dataSetR) line += fmt::format("{},", r);
    } else {
        line += std::string(2 + dataSets_, ',');
    }
    return line + fmt::format("{:.3f},{}\n", record.seconds, AsField(record.failure));
}

void EvaluationTable::Append(int generation, const std::vector<Trial>& trials) {
    std::string text;
    for (const Trial& trial : trials) {
        const Evaluation& of = trial.evaluation;
        if (!trial.HasFailed() && of.dataSetR.size() != dataSets_)
            throw ZfError(
                fmt::format("an evaluation has {} data sets instead of {}", of.dataSetR.size(), dataSets_));
        records.push_back({.number = static_cast<int>(records.size()) + 1,
                           .generation = generation,
                           .point = trial.point,
                           .misfit = trial.misfit,
                           .r = of.r,
                           .dataSetR = of.dataSetR,
                           .seconds = of.seconds,
                           .failure = of.failure});
        text += Line(records.back());
    }
    WriteBehind(text);
}

void EvaluationTable::WriteBehind(const std::string& text) const {
    errno = 0;
    std::ofstream stream(path_, std::ios::binary | std::ios::app);
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    stream.close();
    if (!stream) throw ZfError(fmt::format("Cannot write {}: {}", path_, WriteFailureText(errno)));
}

}  // namespace qvre
