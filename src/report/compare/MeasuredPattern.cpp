#include "report/compare/MeasuredPattern.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "foundation/Constants.h"
#include "foundation/FileReading.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

/// The angle whose kind the table leaves open is the one that is not given; with both given it is an energy.
Quantity KindOfAngle(const ScanDirection& direction) {
    if (direction.theta && direction.phi) return kEnergy;
    if (direction.theta) return kPhi;
    if (direction.phi) return kTheta;
    throw ZfError(
        "the table has one angle: set measured-theta if it is the azimuth, measured-phi if it is the polar "
        "angle, both if it is the kinetic energy");
}

std::string Skipped(const MeasuredTable& table) {
    std::string text;
    for (const std::string& column : table.skipped) text += (text.empty() ? " (skipped: " : ", ") + column;
    return text.empty() ? text : text + ")";
}

std::vector<double> Angles(const MeasuredTable& table, const std::vector<double>& column,
                           const std::optional<double>& given, const char* name, const char* setting) {
    if (!column.empty() && given)
        throw ZfError(fmt::format("the table has its own {}: leave {} away", name, setting));
    if (!column.empty()) return column;
    if (!given)
        throw ZfError(fmt::format("the table does not tell the {}{}: set {}", name, Skipped(table), setting));
    std::vector<double> all(table.Points(), *given);
    return all;
}

/// The analyser's slit is parallel to the axis about which theta turns the sample: the direction goes over to
/// cos(alpha) k + sin(alpha) phi-hat.
void AddSlitAngle(double& theta, double& phi, double alpha) {
    const double s = std::sin(theta * kDegree);
    const double c = std::cos(theta * kDegree);
    const double a = alpha * kDegree;
    if (alpha == 0.0) return;
    phi += Degrees(std::atan2(std::sin(a), std::cos(a) * s));
    theta = Degrees(std::acos(std::clamp(std::cos(a) * c, -1.0, 1.0)));
}

}  // namespace

MeasuredPattern PatternOf(const MeasuredTable& table, const ScanDirection& direction) {
    if (direction.theta && !(std::abs(*direction.theta) <= 90.0))
        throw ZfError("measured-theta lies between -90 and 90 degrees");
    if (direction.phi && !std::isfinite(*direction.phi)) throw ZfError("measured-phi is a number of degrees");
    std::vector<double> theta = table[kTheta];
    std::vector<double> phi = table[kPhi];
    MeasuredPattern pattern;
    pattern.energy = table[kEnergy];
    if (const std::vector<double>& angle = table[kAngle]; !angle.empty() && (theta.empty() || phi.empty())) {
        const Quantity kind = !theta.empty() ? kPhi : !phi.empty() ? kTheta : KindOfAngle(direction);
        (kind == kTheta ? theta : kind == kPhi ? phi : pattern.energy) = angle;
    }
    pattern.theta = Angles(table, theta, direction.theta, "polar angle", "measured-theta");
    pattern.phi = Angles(table, phi, direction.phi, "azimuth", "measured-phi");
    pattern.intensity = table[kIntensity];
    pattern.chi = table[kChi];
    pattern.sigma = table[kSigma];
    for (std::size_t i = 0; i < table.Points(); ++i) {
        if (!(std::abs(pattern.theta[i]) <= 90.0))
            throw ZfError(fmt::format("the polar angle {:g} does not lie between -90 and 90 degrees",
                                      pattern.theta[i]));
        if (pattern.theta[i] < 0.0) {
            pattern.theta[i] = -pattern.theta[i];
            pattern.phi[i] += 180.0;
        }
        if (!table[kAlpha].empty()) AddSlitAngle(pattern.theta[i], pattern.phi[i], table[kAlpha][i]);
    }
    return pattern;
}

MeasuredPattern ParseMeasuredPattern(const std::string& text, const ScanDirection& direction) {
    return PatternOf(ReadMeasuredTable(text), direction);
}

MeasuredTable LoadMeasuredTable(const std::string& path) {
    return Naming(path, [&] { return ReadMeasuredTable(ReadTextFile(path), ColumnLetters(path)); });
}

MeasuredPattern LoadMeasuredPattern(const std::string& path, const ScanDirection& direction) {
    const MeasuredTable table = LoadMeasuredTable(path);
    return Naming(path, [&] { return PatternOf(table, direction); });
}

}  // namespace qvre
