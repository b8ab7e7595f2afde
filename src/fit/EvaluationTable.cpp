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

/// The number of the residuals and they themselves, as the doubles lie in memory.
std::string Bytes(const std::vector<double>& residuals) {
    std::vector<double> numbers = {static_cast<double>(residuals.size())};
    numbers.insert(numbers.end(), residuals.begin(), residuals.end());
    return {reinterpret_cast<const char*>(numbers.data()), numbers.size() * sizeof(double)};
}

void WriteBehind(const std::string& path, const std::string& text) {
    errno = 0;
    std::ofstream stream(path, std::ios::binary | std::ios::app);
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    stream.close();
    if (!stream) throw ZfError(fmt::format("Cannot write {}: {}", path, WriteFailureText(errno)));
}

}  // namespace

EvaluationTable::EvaluationTable(std::string path, const ParameterSpace& space,
                                 const std::vector<std::string>& dataSets)
    : path_(std::move(path)),
      titles_(Titles(space, dataSets)),
      parameters_(space.parameters.size()),
      dataSets_(dataSets.size()) {
    for (std::string& title : titles_) title = AsField(title);
    if (std::filesystem::exists(path_)) Naming(path_, [&] { Load(ReadTextFile(path_)); });
    if (former_.empty()) ForgetFormer();
}

void EvaluationTable::Load(const std::string& text) {
    // The line that a program was writing when it was killed has no end.
    const std::string whole = text.substr(0, text.rfind('\n') + 1);
    if (whole.empty()) return;
    const std::size_t titleEnd = whole.find('\n');
    const std::string titles = fmt::format("{}", fmt::join(titles_, ","));
    if (whole.substr(0, titleEnd) != titles)
        throw ZfError(fmt::format("it belongs to another fit: its columns are {} instead of {}",
                                  whole.substr(0, titleEnd), titles));
    for (const auto& fields : CommaTable(whole).rows)
        former_.push_back(ReadRecord(fields, static_cast<int>(former_.size()) + 1));
    LoadResiduals();
}

std::string EvaluationTable::ResidualsPath() const {
    const std::filesystem::path file = path_;
    return (file.parent_path() / fmt::format(".{}.residuals", file.stem().string())).string();
}

/// Of each evaluation their number, 0 if they were not kept, and they themselves, as doubles of this machine.
/// What a program that was killed left of the last ones is not there.
void EvaluationTable::LoadResiduals() {
    std::ifstream stream(ResidualsPath(), std::ios::binary);
    const auto read = [&stream](std::vector<double>& numbers) {
        const auto bytes = static_cast<std::streamsize>(numbers.size() * sizeof(double));
        return static_cast<bool>(stream.read(reinterpret_cast<char*>(numbers.data()), bytes));
    };
    constexpr double kMost = 1e8;
    std::vector<double> count(1);
    while (formerResiduals_.size() < former_.size() && read(count) && count[0] >= 0.0 && count[0] < kMost) {
        std::vector<double> residuals(static_cast<std::size_t>(count[0]));
        if (!read(residuals)) break;
        formerResiduals_.push_back(std::move(residuals));
    }
    former_.resize(formerResiduals_.size());
}

std::optional<std::vector<Trial>> EvaluationTable::Repeat(const std::vector<FitPoint>& points,
                                                          bool needsResiduals) {
    if (former_.size() < records.size() + points.size()) return std::nullopt;
    std::vector<Trial> trials;
    for (const FitPoint& point : points) {
        const std::size_t at = records.size() + trials.size();
        const EvaluationRecord& known = former_[at];
        const bool lacksResiduals = needsResiduals && known.failure.empty() && formerResiduals_[at].empty();
        if (known.point != point || lacksResiduals) return std::nullopt;
        trials.push_back({point,
                          {formerResiduals_[at], known.r, known.dataSetR, known.seconds, known.failure},
                          known.misfit});
    }
    const auto first = former_.begin() + std::ssize(records);
    records.insert(records.end(), first, first + std::ssize(points));
    return trials;
}

void EvaluationTable::End() {
    if (former_.size() > records.size()) ForgetFormer();
}

EvaluationRecord EvaluationTable::ReadRecord(const std::vector<std::string>& fields, int number) const {
    auto field = fields.begin();
    const auto next = [&] {
        const std::string& title = titles_[static_cast<std::size_t>(field - fields.begin())];
        return StrictNumber(*field++, title);
    };
    EvaluationRecord record;
    record.number = number;
    if (next() != record.number) throw ZfError(fmt::format("evaluation {} is missing", record.number));
    record.generation = static_cast<int>(std::clamp(next(), 0.0, 1e9));
    for (std::size_t i = 0; i < parameters_; ++i) record.point.push_back(next());
    record.failure = fields.back();
    if (record.failure.empty()) {
        record.misfit = next();
        record.r = next();
        for (std::size_t i = 0; i < dataSets_; ++i) record.dataSetR.push_back(next());
    } else {
        record.misfit = std::numeric_limits<double>::infinity();
        field = fields.end() - 2;
    }
    record.seconds = next();
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

/// Both files with the records of this fit alone.
void EvaluationTable::ForgetFormer() {
    std::string text = fmt::format("{}\n", fmt::join(titles_, ","));
    for (const EvaluationRecord& record : records) text += Line(record);
    std::string residuals;
    for (std::size_t i = 0; i < records.size(); ++i) residuals += Bytes(formerResiduals_[i]);
    WriteWholeFile(path_, text);
    WriteWholeFile(ResidualsPath(), residuals);
    former_.clear();
    formerResiduals_.clear();
}

void EvaluationTable::Append(int generation, const std::vector<Trial>& trials, bool keepsResiduals) {
    if (!former_.empty())
        ForgetFormer();  // and what a program that was killed left behind the last whole line
    std::string text;
    std::string residuals;
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
        residuals += Bytes(keepsResiduals ? of.residuals : std::vector<double>());
    }
    WriteBehind(ResidualsPath(), residuals);
    WriteBehind(path_, text);
}

}  // namespace qvre
