#include "structure/FitTables.h"

#include <fmt/format.h>

#include <iterator>
#include <vector>

#include "structure/MisfitParts.h"

namespace qvre {

std::string ProfileTable(const FitReport& report) {
    std::string text = "parameter,value,R,misfit";
    for (const FitParameter& one : report.space.parameters) text += "," + one.name;
    text += "\n";
    for (std::size_t i = 0; i < report.levels.size(); ++i) {
        for (const ProfilePoint& point : report.levels[i].profile) {
            text += fmt::format("{},{},{},{}", report.space.parameters[i].name, point.value,
                                point.trial.evaluation.r, point.trial.misfit);
            for (const double value : point.trial.point) text += fmt::format(",{}", value);
            text += "\n";
        }
    }
    return text;
}

std::string ComparisonTable(const FittedData& data) {
    const CompareResult& compared = data.compared;
    const std::vector<double> chi = FittedChi(data);
    std::string text = fmt::format(
        "# {}: chi, angles in degrees\n"
        "# R = {:.9g}\n"
        "# amplitude of the calculation = {:.9g}\n"
        "# rotation = {:.9g}, polar offset = {:.9g}, tilt = {:.9g} towards {:.9g}\n"
        "theta,phi,weight,measured,calculated,residual\n",
        data.name, data.r, data.amplitude, compared.setting.rotation, compared.setting.thetaOffset,
        compared.setting.tilt, compared.setting.tiltAzimuth);
    for (std::size_t i = 0; i < chi.size(); ++i)
        fmt::format_to(std::back_inserter(text), "{:.9g},{:.9g},{:.9g},{:.9g},{:.9g},{:.9g}\n",
                       compared.theta[i], compared.phi[i], compared.weight[i], compared.chiA[i], chi[i],
                       compared.chiA[i] - chi[i]);
    return text;
}

}  // namespace qvre
