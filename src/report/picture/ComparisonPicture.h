#pragma once

#include <string>
#include <vector>

#include "report/compare/PatternComparison.h"

namespace qvre {

/// How b is shown. Where no positive scale brings it nearer to a, it is shown as it is.
struct ShownB {
    explicit ShownB(const CompareResult& result);

    bool isScaled;
    double scale;
    double R;  ///< of a and what is shown
    std::vector<double> chi;
};

/// Draws a comparison to a .png, .svg or .pdf. Up to three azimuthal scans, or three planes of polar scans,
/// are curves of a and b over each other; other directions are three discs, a, b and a less b, on one scale
/// of colours, blank where nothing was compared. Throws ZfError.
void DrawComparison(const CompareResult& result, const std::string& path);

}  // namespace qvre
