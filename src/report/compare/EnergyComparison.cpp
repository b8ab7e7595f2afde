#include "report/compare/EnergyComparison.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <utility>

#include "foundation/FileReading.h"
#include "foundation/ZfError.h"
#include "solver/CubicSpline.h"

namespace qvre {

namespace {

constexpr double kNatural = 2.0 * kNaturalEnd;
constexpr double kLargestOffset_eV = 10.0;
constexpr double kCoarseStep_eV = 0.25;
constexpr double kFineStep_eV = 0.01;
constexpr double kLeastPart = 0.8;  // of the points, which an offset may not push out of the range

/// What the table leaves to the recipe.
ScanDirection MissingDirection(const MeasuredTable& table, const std::vector<ScanDirection>& calculated) {
    const bool isEnergyUnnamed = table[kEnergy].empty() && !table[kAngle].empty();
    if (table[kEnergy].empty() && !(isEnergyUnnamed && table[kTheta].empty() && table[kPhi].empty()))
        throw ZfError("the table has no column of kinetic energies, which [energies] needs: name it energy");
    ScanDirection missing;
    const bool alone = calculated.size() == 1;
    if (table[kTheta].empty()) missing.theta = calculated.front().theta;
    if (table[kPhi].empty()) missing.phi = calculated.front().phi;
    if (!alone && (missing.theta || missing.phi))
        throw ZfError(fmt::format(
            "the table does not tell the directions, and [energies] has {} of them: give it columns theta "
            "and phi",
            calculated.size()));
    return missing;
}

void CheckDirection(double theta, double phi, const std::vector<ScanDirection>& calculated) {
    for (const ScanDirection& one : calculated)
        if (IsSameDirection(theta, phi, *one.theta, *one.phi)) return;
    throw ZfError(fmt::format(
        "measured at theta {:g}, phi {:g}, a direction that is not calculated: add it to theta and phi of "
        "[energies]",
        theta, phi));
}

/// Sums of the values of one energy.
struct Sum {
    double value = 0.0;
    double count = 0.0;
};

/// The points with the energies that a spline through the calculated ones covers.
class CalculatedCurve {
public:
    explicit CalculatedCurve(const EnergyCurve& curve)
        : curve_(curve),
          second_(SplineSecondDerivatives(curve.kinetic_eV, curve.intensity, kNatural, kNatural)) {}

    bool Covers(double kinetic_eV) const {
        constexpr double kRounding = 1e-6;
        return kinetic_eV >= curve_.kinetic_eV.front() - kRounding &&
               kinetic_eV <= curve_.kinetic_eV.back() + kRounding;
    }
    double At(double kinetic_eV) const {
        return SplineValue(curve_.kinetic_eV, curve_.intensity, second_, kinetic_eV);
    }

private:
    const EnergyCurve& curve_;
    std::vector<double> second_;
};

using Pair = std::pair<const MeasuredEnergyCurve*, CalculatedCurve>;

/// Nothing when a direction has too few energies.
std::optional<ComparedEnergyCurve> Compared(const Pair& pair, double offset,
                                            const EnergyBackgroundModel& model) {
    const MeasuredEnergyCurve& measured = *pair.first;
    ComparedEnergyCurve both{measured.theta_deg, measured.phi_deg, {}, {}, {}};
    for (std::size_t i = 0; i < measured.kinetic_eV.size(); ++i) {
        const double kinetic = measured.kinetic_eV[i] + offset;
        if (!pair.second.Covers(kinetic)) continue;
        both.kinetic_eV.push_back(kinetic);
        both.measured.push_back(measured.value[i]);
        both.calculated.push_back(pair.second.At(kinetic));
    }
    if (both.kinetic_eV.size() < EnergiesNeeded(model)) return std::nullopt;
    both.measured = EnergyModulation(model, both.kinetic_eV, both.measured);
    both.calculated = EnergyModulation(model, both.kinetic_eV, both.calculated);
    return both;
}

/// Throws ZfError for a background that is not positive.
void CheckModulation(const ComparedEnergyCurve& curve) {
    for (const auto* chi : {&curve.measured, &curve.calculated})
        for (std::size_t i = 0; i < chi->size(); ++i)
            if (std::isnan((*chi)[i]))
                throw ZfError(
                    fmt::format("The background of the {} is not positive at {:g} eV: choose another "
                                "background in [energies]",
                                chi == &curve.measured ? "measurement" : "calculation", curve.kinetic_eV[i]));
}

class EnergyMatch {
public:
    EnergyMatch(const std::vector<EnergyCurve>& calculated, const std::vector<MeasuredEnergyCurve>& measured,
                const EnergyBackgroundModel& model)
        : model_(model) {
        for (const MeasuredEnergyCurve& one : measured) {
            const auto own =
                std::find_if(calculated.begin(), calculated.end(), [&](const EnergyCurve& curve) {
                    return IsSameDirection(curve.theta_deg, curve.phi_deg, one.theta_deg, one.phi_deg);
                });
            if (own == calculated.end())
                throw ZfError(fmt::format("There is no calculation at theta {:g}, phi {:g}", one.theta_deg,
                                          one.phi_deg));
            pairs_.emplace_back(&one, *own);
            points_ += one.kinetic_eV.size();
        }
    }

    /// Nothing when too few points lie in the range.
    std::optional<EnergyComparison> At(double offset) const {
        EnergyComparison result;
        result.offset_eV = offset;
        std::vector<double> a;
        std::vector<double> b;
        for (const Pair& pair : pairs_) {
            std::optional<ComparedEnergyCurve> both = Compared(pair, offset, model_);
            if (!both) return std::nullopt;
            CheckModulation(*both);
            a.insert(a.end(), both->measured.begin(), both->measured.end());
            b.insert(b.end(), both->calculated.begin(), both->calculated.end());
            result.curves.push_back(std::move(*both));
        }
        result.leftOut = points_ - a.size();
        result.agreement = CompareModulations(a, b, std::vector<double>(a.size(), 1.0));
        return result;
    }

    std::size_t Points() const { return points_; }

private:
    EnergyBackgroundModel model_;
    std::vector<Pair> pairs_;
    std::size_t points_ = 0;
};

std::size_t Used(const EnergyComparison& result, std::size_t points) {
    return points - result.leftOut;
}

/// The best of a row of offsets around a comparison, which are numbered from their middle.
EnergyComparison BestAround(const EnergyMatch& match, const EnergyComparison& middle, double step, int steps,
                            double least) {
    EnergyComparison best = middle;
    for (int i = -steps; i <= steps; ++i) {
        const std::optional<EnergyComparison> at = match.At(middle.offset_eV + i * step);
        if (at && static_cast<double>(Used(*at, match.Points())) >= least &&
            at->agreement.scaledR < best.agreement.scaledR)
            best = *at;
    }
    return best;
}

EnergyComparison WithBestOffset(const EnergyMatch& match, const EnergyComparison& without) {
    const double least = kLeastPart * static_cast<double>(Used(without, match.Points()));
    const int coarse = static_cast<int>(kLargestOffset_eV / kCoarseStep_eV);
    const int fine = static_cast<int>(kCoarseStep_eV / kFineStep_eV);
    EnergyComparison best = BestAround(match, without, kCoarseStep_eV, coarse, least);
    const bool isAtEnd = std::abs(best.offset_eV) >= kLargestOffset_eV;
    best = BestAround(match, best, kFineStep_eV, fine, least);
    best.isOffsetAtEnd = isAtEnd;
    return best;
}

}  // namespace

std::vector<MeasuredEnergyCurve> LoadMeasuredEnergies(const std::string& path,
                                                      const std::vector<ScanDirection>& calculated) {
    const MeasuredTable table = LoadMeasuredTable(path);
    return Naming(path, [&] {
        const MeasuredPattern points = PatternOf(table, MissingDirection(table, calculated));
        const bool isChi = points.intensity.empty();
        std::vector<MeasuredEnergyCurve> curves;
        std::vector<std::map<double, Sum>> sums;
        for (std::size_t i = 0; i < points.theta.size(); ++i) {
            const auto own =
                std::find_if(curves.begin(), curves.end(), [&](const MeasuredEnergyCurve& curve) {
                    return IsSameDirection(curve.theta_deg, curve.phi_deg, points.theta[i], points.phi[i]);
                });
            const auto place = static_cast<std::size_t>(own - curves.begin());
            if (own == curves.end()) {
                CheckDirection(points.theta[i], points.phi[i], calculated);
                curves.push_back({points.theta[i], points.phi[i], {}, {}});
                sums.emplace_back();
            }
            Sum& sum = sums[place][points.energy[i]];
            sum.value += isChi ? 1.0 + points.chi[i] : points.intensity[i];
            sum.count += 1.0;
        }
        for (std::size_t c = 0; c < curves.size(); ++c)
            for (const auto& [energy, sum] : sums[c]) {
                curves[c].kinetic_eV.push_back(energy);
                curves[c].value.push_back(sum.value / sum.count);
            }
        return curves;
    });
}

void CheckEnergyRange(const std::vector<MeasuredEnergyCurve>& measured, double lowest_eV, double highest_eV,
                      const EnergyComparisonSettings& settings) {
    const std::size_t needed = EnergiesNeeded(settings.background);
    for (const MeasuredEnergyCurve& curve : measured) {
        const auto inside =
            std::count_if(curve.kinetic_eV.begin(), curve.kinetic_eV.end(), [&](double kinetic) {
                return kinetic + settings.offset_eV >= lowest_eV &&
                       kinetic + settings.offset_eV <= highest_eV;
            });
        if (static_cast<std::size_t>(inside) < needed)
            throw ZfError(fmt::format(
                "the measured energies, {:g} to {:g} eV{}, have {} points between those of the calculation, "
                "{:g} to {:g} eV outside the surface; {} as the background needs {}: widen [energies], or "
                "give the offset between both as energy-offset",
                curve.kinetic_eV.front(), curve.kinetic_eV.back(),
                settings.offset_eV == 0.0 ? ""
                                          : fmt::format(" with an offset of {:g} eV", settings.offset_eV),
                inside, lowest_eV, highest_eV, settings.background.Text(), needed));
    }
}

EnergyComparison CompareEnergies(const std::vector<EnergyCurve>& calculated,
                                 const std::vector<MeasuredEnergyCurve>& measured,
                                 const EnergyComparisonSettings& settings) {
    CheckEnergyRange(measured, calculated.at(0).kinetic_eV.front(), calculated.at(0).kinetic_eV.back(),
                     settings);
    const EnergyMatch match(calculated, measured, settings.background);
    const std::optional<EnergyComparison> without = match.At(settings.offset_eV);
    if (!without) throw ZfError("There are too few measured energies in the range of the calculation");
    return settings.findsOffset ? WithBestOffset(match, *without) : *without;
}

}  // namespace qvre
