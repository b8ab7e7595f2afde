#include "prepare/phases/PhaseShiftTable.h"

#include <fmt/format.h>

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "foundation/CommaTable.h"
#include "foundation/Constants.h"
#include "foundation/FileReading.h"
#include "foundation/StrictNumber.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "solver/CubicSpline.h"

namespace qvre {

namespace {

using Rows = std::vector<std::vector<double>>;

/// The numbers of a line. Where fields touch, a sign or the fourth decimal ends a number.
std::vector<double> FieldsOf(const std::string& line) {
    std::vector<double> numbers;
    for (const std::string& word : TokenSplit(line.substr(0, line.find('(')))) {
        const bool touching = std::count(word.begin(), word.end(), '.') > 1;
        std::size_t begin = 0;
        while (begin < word.size()) {
            const std::size_t dot = touching ? word.find('.', begin) : std::string::npos;
            const std::size_t end = dot == std::string::npos ? word.size() : std::min(dot + 5, word.size());
            const std::size_t sign = touching ? word.find_first_of("+-", begin + 1) : std::string::npos;
            const std::size_t stop = std::min(end, sign);
            numbers.push_back(StrictNumber(word.substr(begin, stop - begin), "phase shift"));
            begin = stop;
        }
    }
    return numbers;
}

/// Lines between two energies: the distance of the first two lines of a single number such that the energies
/// rise throughout. A continued line may hold a single number too.
std::size_t LinesOfEnergy(const Rows& lines) {
    for (std::size_t period = 2; period <= lines.size(); ++period) {
        bool fits = true;
        for (std::size_t i = 0; i < lines.size() && fits; i += period)
            fits = lines[i].size() == 1 &&
                   (i == 0 || i + 1 == lines.size() || lines[i][0] > lines[i - period][0]);
        const bool whole = lines.size() % period <= 1;
        for (std::size_t i = period; i < lines.size() && fits && whole; ++i)
            fits = lines[i].size() == lines[i - period].size();
        if (fits && whole) return period;
    }
    throw ZfError("the lines do not repeat as energy and phase shifts");
}

PhaseShiftTable TableOfLines(const Rows& lines, std::size_t blocks, std::size_t block, double unit_eV) {
    const std::size_t period = LinesOfEnergy(lines);
    if ((period - 1) % blocks != 0)
        throw ZfError("the lines of an energy do not divide into " + std::to_string(blocks) + " blocks");
    const std::size_t perBlock = (period - 1) / blocks;
    PhaseShiftTable table;
    for (std::size_t i = 0; i + period <= lines.size(); i += period) {
        table.energies_eV.push_back(lines[i][0] * unit_eV);
        std::vector<double> degrees;
        for (std::size_t j = 0; j < perBlock; ++j)
            for (const double radians : lines[i + 1 + block * perBlock + j])
                degrees.push_back(radians * kDegreesPerRadian);
        table.degrees.push_back(degrees);
    }
    return table;
}

/// Published tables are off by a few energies, and some end with an energy alone.
void CheckCount(double energies, double told) {
    const auto whole = [](double number) { return std::to_string(std::lround(number)); };
    if (energies + 1.0 < told)
        throw ZfError("it is cut short: it has " + whole(energies) + " of " + whole(told) + " energies");
    if (energies > 2.0 * told)
        throw ZfError("its first line tells " + whole(told) + " energies and it has " + whole(energies) +
                      ": is it a table of blocks (format blocks)?");
}

PhaseShiftTable FixedFieldTable(const std::vector<std::string>& text, const PhaseTableChoice& choice) {
    if (text.size() < 2) throw ZfError("it holds no phase shifts");
    const std::vector<std::string> title = TokenSplit(text[0]);
    if (title.empty()) throw ZfError("the first line is empty");
    const double count = StrictNumber(title[0], "first line");
    Rows lines;
    for (std::size_t i = 1; i < text.size(); ++i) {
        const std::vector<double> fields = FieldsOf(text[i]);
        if (!fields.empty()) lines.push_back(fields);
    }
    if (choice.format == PhaseTableFormat::kLeed) {
        const bool rydberg = std::find(title.begin(), title.end(), "Ry") != title.end();
        PhaseShiftTable table = TableOfLines(lines, 1, 0, rydberg ? kHartree_eV / 2.0 : kHartree_eV);
        CheckCount(static_cast<double>(table.energies_eV.size()), count);
        return table;
    }
    if (!(count >= 1.0 && count <= 1000.0 && count == std::floor(count)))
        throw ZfError("the first line has to begin with the number of blocks");
    if (choice.block < 1 || choice.block > count)
        throw ZfError("there are " + title[0] + " blocks, and no block " + std::to_string(choice.block));
    return TableOfLines(lines, static_cast<std::size_t>(count), static_cast<std::size_t>(choice.block - 1),
                        kHartree_eV);
}

/// Columns d0, d1, ... of a CSV table, as many as there are.
std::vector<std::size_t> PhaseColumns(const CommaTable& csv) {
    std::vector<std::size_t> columns;
    while (const auto column = csv.Find(fmt::format("d{}", columns.size()))) columns.push_back(*column);
    return columns;
}

PhaseShiftTable CsvTable(const std::string& text, const PhaseTableChoice& choice) {
    const CommaTable csv(text);
    const auto energy = csv.Find("Ek_eV");
    const auto element = csv.Find("element");
    const auto radius = csv.Find("Rmt_angstrom");
    const std::vector<std::size_t> phases = PhaseColumns(csv);
    if (!energy || phases.empty()) throw ZfError("its title line has to name the columns Ek_eV, d0, d1, ...");
    PhaseShiftTable table;
    for (const std::vector<std::string>& row : csv.rows) {
        if (element && row[*element] != choice.element) continue;
        table.energies_eV.push_back(StrictNumber(row[*energy], "energy"));
        if (radius) table.radius_angstrom = StrictNumber(row[*radius], "radius");
        std::vector<double> degrees;
        degrees.reserve(phases.size());
        for (const std::size_t column : phases) degrees.push_back(StrictNumber(row[column], "phase shift"));
        table.degrees.push_back(degrees);
    }
    if (table.energies_eV.empty()) throw ZfError("it holds no phase shifts of \"" + choice.element + '"');
    return table;
}

void CheckTable(const PhaseShiftTable& table) {
    if (table.energies_eV.size() < 2) throw ZfError("it holds fewer than two energies");
    for (std::size_t i = 1; i < table.energies_eV.size(); ++i) {
        if (!(table.energies_eV[i] > table.energies_eV[i - 1])) throw ZfError("the energies do not rise");
        if (table.degrees[i].size() != table.degrees[0].size())
            throw ZfError("the number of phase shifts changes from energy to energy");
    }
}

/// The phases of one l over the energy, each on the branch nearest to the one before it.
std::vector<double> Unwrapped(const PhaseShiftTable& table, std::size_t l) {
    std::vector<double> phases;
    for (const std::vector<double>& row : table.degrees) {
        const double before = phases.empty() ? row[l] : phases.back();
        phases.push_back(row[l] + 180.0 * std::round((before - row[l]) / 180.0));
    }
    return phases;
}

std::size_t NearestEnergy(const PhaseShiftTable& table, double energy) {
    const std::vector<double>& list = table.energies_eV;
    const auto nearest = std::min_element(list.begin(), list.end(), [energy](double a, double b) {
        return std::abs(a - energy) < std::abs(b - energy);
    });
    return static_cast<std::size_t>(nearest - list.begin());
}

double Straight(const std::vector<double>& x, const std::vector<double>& y, double at) {
    const auto above = std::upper_bound(x.begin() + 1, x.end() - 1, at);
    const auto i = static_cast<std::size_t>(above - x.begin());
    return y[i - 1] + (y[i] - y[i - 1]) * (at - x[i - 1]) / (x[i] - x[i - 1]);
}

}  // namespace

PhaseShiftTable ReadPhaseShiftTable(const std::string& path, const PhaseTableChoice& choice) {
    return Naming(path, [&] {
        const std::string text = ReadTextFile(path);
        PhaseShiftTable table = choice.format == PhaseTableFormat::kCsv
                                    ? CsvTable(text, choice)
                                    : FixedFieldTable(LineSplit(text), choice);
        CheckTable(table);
        return table;
    });
}

std::vector<double> PhasesAt(const PhaseShiftTable& table, double energy_eV, bool linear) {
    // The energy of a table is rounded in its own unit, so one just outside is on the end.
    const double slack = 1e-6 * table.energies_eV.back();
    const double first = table.energies_eV.front();
    const double last = table.energies_eV.back();
    if (!(energy_eV >= first - slack && energy_eV <= last + slack))
        throw ZfError(fmt::format("The table ends: it reaches from {:.3f} to {:.3f} eV, not to {:g} eV",
                                  first, last, energy_eV));
    const double at = std::clamp(energy_eV, first, last);
    const std::size_t nearest = NearestEnergy(table, at);
    std::vector<double> degrees;
    for (std::size_t l = 0; l < table.degrees[0].size(); ++l) {
        std::vector<double> phases = Unwrapped(table, l);
        const double turns = table.degrees[nearest][l] - phases[nearest];  // back to the table's own branch
        for (double& phase : phases) phase += turns;
        if (linear) {
            degrees.push_back(Straight(table.energies_eV, phases, at));
        } else {
            const auto second =
                SplineSecondDerivatives(table.energies_eV, phases, kNaturalEnd * 2, kNaturalEnd * 2);
            degrees.push_back(SplineValue(table.energies_eV, phases, second, at));
        }
    }
    return degrees;
}

}  // namespace qvre
