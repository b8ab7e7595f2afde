#include "input/ZfDebye.h"

#include <QDebug>

#include "foundation/Constants.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"

using namespace qvre;

namespace {

constexpr double kThreeHbarSquared = 3.3363705433969256e-68;  // J^2 s^2

/// Lines with blank ones kept; CR LF is one end, and a last line without an end needs two characters to
/// count.
std::vector<std::string_view> Lines(std::string_view text) {
    std::vector<std::string_view> lines;
    std::size_t begin = 0;
    while (true) {
        const std::size_t end = text.find_first_of("\n\r", begin);
        if (end == std::string_view::npos) break;
        lines.push_back(text.substr(begin, end - begin));
        begin = end + (text.substr(end, 2) == "\r\n" ? 2 : 1);
    }
    if (text.size() - begin >= 2) lines.push_back(text.substr(begin));
    return lines;
}

}  // namespace

void ZfDebye::LoadAtomicWeight(std::string_view text) {
    weights.assign(1, 0.0);
    for (const std::string_view line : Lines(text)) {
        const std::vector<std::string> fields = TokenSplit(line);
        if (fields.size() < 4 || TextToInt(fields[0]) != static_cast<std::int32_t>(weights.size()))
            throw ZfError("Debye:LoadAtomicWeight File: order is not correct.");
        weights.push_back(TextToDouble(fields[3]));
    }
    for (std::size_t i = 0; i < weights.size(); ++i) qDebug().nospace() << i << ": " << weights[i];
}

double ZfDebye::GetAtoicWeight(std::int32_t atomicNumber) const {
    if (atomicNumber <= 0 || static_cast<std::size_t>(atomicNumber) >= weights.size())
        throw ZfError("ZfDebye::GetAtoicWeight(), not good atomic number=" + IntToText(atomicNumber));
    return weights[static_cast<std::size_t>(atomicNumber)];
}

double ZfDebye::CalcUiso(double temperature_K, std::int32_t atomicNumber, double debyeTemperature_K) const {
    if (weights.empty()) throw ZfError("Atomic weight parameter is not loaded");
    if (debyeTemperature_K <= 0.0) return 0.0;
    return (temperature_K * kThreeHbarSquared) / (GetAtoicWeight(atomicNumber) * kAtomicMass_kg *
                                                  kBoltzmann_J_K * debyeTemperature_K * debyeTemperature_K);
}
