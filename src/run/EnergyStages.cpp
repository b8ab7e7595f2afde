#include "run/EnergyStages.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "foundation/CommaTable.h"
#include "foundation/Constants.h"
#include "foundation/FileReading.h"
#include "foundation/ReplacedFile.h"
#include "foundation/StrictNumber.h"
#include "foundation/ZfError.h"
#include "prepare/phases/EnergyList.h"
#include "report/compare/EnergyCurves.h"
#include "report/picture/LinePlot.h"
#include "report/sphere/Modulation.h"

namespace qvre {

namespace {

/// Directions over the hemisphere that tell how strong I0 is at its strongest.
std::vector<PolarDirection> Survey() {
    std::vector<PolarDirection> directions = {{0.0, 0.0}};
    for (double theta = 15.0; theta < 90.0; theta += 15.0)
        for (double phi = 0.0; phi < 360.0; phi += 30.0) directions.push_back({theta, phi});
    return directions;
}

/// What the surface does to electrons of one energy.
struct Surface {
    Surface(double inside_eV, double innerPotential_eV)
        : ratio((inside_eV - innerPotential_eV) / inside_eV) {}

    double ThetaInside_deg(double theta_deg) const {
        return Degrees(std::asin(std::sin(Radians(theta_deg)) * std::sqrt(ratio)));
    }
    double SolidAngle(double theta_deg) const {
        return ratio * std::cos(Radians(theta_deg)) / std::cos(Radians(ThetaInside_deg(theta_deg)));
    }

    double ratio;  ///< of the kinetic energies outside and inside
};

/// One row of the table of an energy.
struct EnergyPoint {
    double kinetic_eV = 0.0;
    double theta_deg = 0.0;
    double phi_deg = 0.0;
    double intensity = 0.0;
    double direct = 0.0;
    double largestDirect = 0.0;  ///< over the hemisphere
};

constexpr const char* kTitles = "kinetic,theta,phi,I,I0,I0 largest";

std::vector<EnergyPoint> LoadPoints(const std::string& path) {
    const CommaTable table = CommaTable::Load(path);
    std::vector<EnergyPoint> points;
    for (const std::vector<std::string>& row : table.rows) {
        const auto number = [&](const char* title) {
            return StrictNumber(row[table.Column(title)], path + ": " + title);
        };
        points.push_back({number("kinetic"), number("theta"), number("phi"), number("I"), number("I0"),
                          number("I0 largest")});
    }
    return points;
}

/// Intensities of parts that do not interfere add.
std::vector<EnergyPoint> SumOf(const std::vector<std::string>& files) {
    std::vector<EnergyPoint> sum = LoadPoints(files.at(0));
    for (std::size_t f = 1; f < files.size(); ++f) {
        const std::vector<EnergyPoint> points = LoadPoints(files[f]);
        if (points.size() != sum.size()) throw ZfError(files[f] + " has other directions than " + files[0]);
        for (std::size_t i = 0; i < sum.size(); ++i) {
            sum[i].intensity += points[i].intensity;
            sum[i].direct += points[i].direct;
            sum[i].largestDirect += points[i].largestDirect;
        }
    }
    return sum;
}

/// Light and symmetry may forbid a direction at every energy: rounding is all that is left there.
void RefuseDark(const EnergyPoint& point) {
    constexpr double kRounding = 1e-12;
    if (point.intensity > kRounding * point.largestDirect) return;
    throw ZfError(fmt::format(
        "No electrons leave at theta {:g}, phi {:g}: this light sends none there; choose another direction "
        "in [energies], or other light in [emission]",
        point.theta_deg, point.phi_deg));
}

void AddEnergy(std::vector<EnergyCurve>& curves, const EnergyTables& tables) {
    const std::vector<EnergyPoint> points = SumOf(tables.files);
    if (curves.empty()) curves.resize(points.size());
    if (points.size() != curves.size())
        throw ZfError(tables.files[0] + " has other directions than the energy before");
    for (std::size_t i = 0; i < points.size(); ++i) {
        const EnergyPoint& point = points[i];
        EnergyCurve& curve = curves[i];
        RefuseDark(point);
        curve.theta_deg = point.theta_deg;
        curve.phi_deg = point.phi_deg;
        curve.kinetic_eV.push_back(point.kinetic_eV);
        if (tables.photon_eV) curve.photon_eV.push_back(*tables.photon_eV);
        curve.intensity.push_back(point.intensity);
        curve.direct.push_back(point.direct);
        curve.modulation.push_back(ModulationAt(point.intensity, point.direct, point.largestDirect));
    }
}

double LeftOutPart(const std::vector<EnergyCurve>& curves) {
    double all = 0.0;
    double leftOut = 0.0;
    for (const EnergyCurve& curve : curves)
        for (const double chi : curve.modulation) {
            all += 1.0;
            if (std::isnan(chi)) leftOut += 1.0;
        }
    return leftOut / all;
}

std::string BackgroundText(const std::vector<EnergyCurve>& curves, const EnergyBackgroundModel& model) {
    std::string text = "chi: background over the energy " + model.Text() + "\n";
    for (const EnergyCurve& curve : curves)
        if (const auto low =
                std::find_if(curve.chi.begin(), curve.chi.end(), [](double chi) { return std::isnan(chi); });
            low != curve.chi.end())
            text += fmt::format(
                "note: at {} the background is not positive at {:g} eV, where chi is left "
                "out: another degree may serve\n",
                curve.Direction(), curve.kinetic_eV[static_cast<std::size_t>(low - curve.chi.begin())]);
    if (const std::string leftOut = LeftOutText(LeftOutPart(curves), false); !leftOut.empty())
        text += "chi_I0: " + leftOut + "\n";
    return text;
}

void Draw(const std::vector<EnergyCurve>& curves, const EnergyCurvesOutput& output) {
    std::vector<Curve> lines;
    lines.reserve(curves.size());
    const bool overPhotons = !curves.front().photon_eV.empty();
    for (const EnergyCurve& curve : curves)
        lines.push_back({curve.Direction(), overPhotons ? curve.photon_eV : curve.kinetic_eV, curve.chi});
    LineAxes axes;
    axes.title = output.title;
    axes.xLabel = overPhotons ? "photon energy (eV)" : "kinetic energy (eV)";
    axes.yLabel = "\u03C7";
    DrawLines(lines, axes, output.picture);
}

}  // namespace

void CalculateEnergyPoint(const EnergyPointRequest& request, const std::string& output) {
    const double inside_eV = EnergiesOfWaves(request.wavesFile).front();
    const Surface surface(inside_eV, request.innerPotential_eV);
    if (!(surface.ratio > 0.0))
        throw ZfError(fmt::format(
            "electrons of {:g} eV inside do not leave a solid of the inner potential {:g} eV: raise the "
            "lowest energy, or lower [energies] inner-potential",
            inside_eV, request.innerPotential_eV));
    std::vector<PolarDirection> inside;
    for (const PolarDirection& direction : request.directions)
        inside.push_back({surface.ThetaInside_deg(direction.theta_deg), direction.phi_deg});
    const std::vector<PolarDirection> survey = Survey();
    inside.insert(inside.end(), survey.begin(), survey.end());
    const CountedIntensity counted = CalculateDirections(request.emergence, inside);
    const double largest = *std::max_element(counted.direct.begin(), counted.direct.end());
    std::string text = std::string(kTitles) + "\n";
    for (std::size_t i = 0; i < request.directions.size(); ++i) {
        const PolarDirection& direction = request.directions[i];
        const double factor = surface.SolidAngle(direction.theta_deg);
        text += fmt::format("{:.9g},{:.9g},{:.9g},{:.12g},{:.12g},{:.12g}\n",
                            inside_eV - request.innerPotential_eV, direction.theta_deg, direction.phi_deg,
                            factor * counted.pattern[i], factor * counted.direct[i], factor * largest);
    }
    WriteWholeFile(output, text);
}

std::string CollectEnergies(const std::vector<EnergyTables>& energies, const EnergyBackgroundModel& model,
                            const EnergyCurvesOutput& output) {
    std::vector<EnergyCurve> curves;
    for (const EnergyTables& tables : energies) AddEnergy(curves, tables);
    for (EnergyCurve& curve : curves) curve.chi = EnergyModulation(model, curve.kinetic_eV, curve.intensity);
    SaveEnergyCurves(curves, output.table);
    Draw(curves, output);
    return BackgroundText(curves, model);
}

}  // namespace qvre
