#include "report/compare/EnergyCurves.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "foundation/CommaTable.h"
#include "foundation/FileReading.h"
#include "foundation/ReplacedFile.h"
#include "foundation/StrictNumber.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

std::string NumberOrNothing(double value) {
    return std::isnan(value) ? std::string() : fmt::format("{:.9g}", value);
}

void AddRow(std::vector<EnergyCurve>& curves, const CommaTable& table, const std::vector<std::string>& row) {
    const auto number = [&](const char* title) { return StrictNumber(row[table.Column(title)], title); };
    const double theta = number("theta");
    const double phi = number("phi");
    if (curves.empty() || curves.back().theta_deg != theta || curves.back().phi_deg != phi) {
        curves.emplace_back();
        curves.back().theta_deg = theta;
        curves.back().phi_deg = phi;
    }
    EnergyCurve& curve = curves.back();
    curve.kinetic_eV.push_back(number("kinetic"));
    if (table.Find("photon")) curve.photon_eV.push_back(number("photon"));
    curve.intensity.push_back(number("I"));
    curve.direct.push_back(number("I0"));
}

}  // namespace

std::string EnergyCurve::Direction() const {
    return fmt::format("\u03B8 {:g}\u00B0, \u03C6 {:g}\u00B0", theta_deg, phi_deg);
}

bool IsSameDirection(double thetaA_deg, double phiA_deg, double thetaB_deg, double phiB_deg) {
    constexpr double kDigits_deg = 1e-3;
    if (std::abs(thetaA_deg - thetaB_deg) > kDigits_deg) return false;
    if (std::max(thetaA_deg, thetaB_deg) <= kDigits_deg) return true;
    return std::abs(std::remainder(phiA_deg - phiB_deg, 360.0)) <= kDigits_deg;
}

void SaveEnergyCurves(const std::vector<EnergyCurve>& curves, const std::string& path) {
    const bool hasPhotons = !curves.empty() && !curves.front().photon_eV.empty();
    std::string text =
        hasPhotons ? "kinetic,photon,theta,phi,I,I0,chi_I0,chi\n" : "kinetic,theta,phi,I,I0,chi_I0,chi\n";
    for (const EnergyCurve& curve : curves)
        for (std::size_t i = 0; i < curve.kinetic_eV.size(); ++i) {
            text += fmt::format("{:.9g},", curve.kinetic_eV[i]);
            if (hasPhotons) text += fmt::format("{:.9g},", curve.photon_eV[i]);
            text += fmt::format("{:.9g},{:.9g},{:.9g},{:.9g},{},{}\n", curve.theta_deg, curve.phi_deg,
                                curve.intensity[i], curve.direct[i], NumberOrNothing(curve.modulation[i]),
                                NumberOrNothing(curve.chi[i]));
        }
    WriteWholeFile(path, text);
}

std::vector<EnergyCurve> LoadEnergyCurves(const std::string& path) {
    const CommaTable table = CommaTable::Load(path);
    return Naming(path, [&] {
        std::vector<EnergyCurve> curves;
        for (const std::vector<std::string>& row : table.rows) AddRow(curves, table, row);
        if (curves.empty()) throw ZfError("it has no row");
        return curves;
    });
}

}  // namespace qvre
