#include "run/ScanOutput.h"

#include <fmt/format.h>

#include <algorithm>

#include "foundation/Text.h"
#include "report/picture/LinePlot.h"

namespace qvre {

void DrawScan(const std::string& setting, const std::vector<ScannedAgreement>& scan,
              const std::string& path) {
    Curve plain{"R", {}, {}};
    Curve scaled{"R scaled", {}, {}};
    for (const ScannedAgreement& one : scan) {
        plain.x.push_back(one.value);
        plain.y.push_back(one.agreement.R);
        scaled.y.push_back(one.agreement.scaledR);
    }
    scaled.x = plain.x;
    LineAxes axes;
    axes.xLabel = setting;
    axes.yLabel = "reliability factor R";
    axes.markers = true;
    DrawLines({plain, scaled}, axes, path);
}

std::string BestOfScan(const std::string& setting, const std::vector<ScannedAgreement>& scan) {
    const auto best = std::min_element(
        scan.begin(), scan.end(), [](const auto& a, const auto& b) { return a.agreement.R < b.agreement.R; });
    return fmt::format("{} = {} has the least R; table scan.csv, plot scan.png", setting,
                       DoubleToText(best->value));
}

}  // namespace qvre
