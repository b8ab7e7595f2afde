#pragma once

#include <functional>
#include <string>
#include <vector>

#include "structure/FitReport.h"

namespace qvre {

class Canvas;

/// A picture of a report.
struct FitPicture {
    std::string file;                          ///< its name as a picture of its own
    std::function<void(Canvas& canvas)> draw;  ///< as the next page; refers to the report
    bool isOfRun = true;                       ///< changes while the fit runs
};

/// All that can be drawn of a report, in the order of its pages: structure, data, profiles, correlations, R
/// by evaluation.
std::vector<FitPicture> FitPictures(const FitReport& report);

}  // namespace qvre
