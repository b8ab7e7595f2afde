#include "report/picture/ComparisonOutput.h"

#include <fmt/format.h>

#include <cstddef>
#include <filesystem>
#include <iterator>

#include "foundation/ReplacedFile.h"
#include "foundation/ZfError.h"
#include "report/picture/Canvas.h"
#include "report/picture/ComparisonPicture.h"

namespace qvre {

namespace {

std::string Extension(const std::string& path) {
    return std::filesystem::path(path).extension().string();
}

std::string DifferenceTable(const CompareResult& result) {
    const Agreement& agreement = result.agreement;
    const ShownB b(result);
    std::string text = fmt::format(
        "# R = {:.9g}\n"
        "# scale of b = {:.9g}\n"
        "# R with the scale = {:.9g}\n"
        "# R of absolute differences = {:.9g}\n"
        "# R of multipoles = {:.9g}\n"
        "# correlation = {:.9g}\n"
        "# rotation of b = {:.9g} degrees\n"
        "# polar offset = {:.9g} degrees\n"
        "# tilt = {:.9g} degrees towards {:.9g} degrees\n"
        "# chi_b is turned{}; angles in degrees\n"
        "theta,phi,chi_a,chi_b,difference\n",
        agreement.R, agreement.scale, agreement.scaledR, agreement.absoluteR, result.multipoleR,
        agreement.correlation, result.setting.rotation, result.setting.thetaOffset, result.setting.tilt,
        result.setting.tiltAzimuth,
        b.isScaled ? " and scaled" : ", not scaled: no factor above 0 brings it nearer to chi_a");
    for (std::size_t i = 0; i < b.chi.size(); ++i)
        fmt::format_to(std::back_inserter(text), "{:.9g},{:.9g},{:.9g},{:.9g},{:.9g}\n", result.theta[i],
                       result.phi[i], result.chiA[i], b.chi[i], result.chiA[i] - b.chi[i]);
    return text;
}

}  // namespace

void CheckDifferenceFile(const std::string& path) {
    if (Extension(path) != ".csv" && !Canvas::CanWrite(path))
        throw ZfError("A difference is written as .csv, .png, .svg or .pdf, not as " + path);
}

void WriteDifference(const CompareResult& result, const std::string& path) {
    CheckDifferenceFile(path);
    if (Extension(path) == ".csv")
        WriteWholeFile(path, DifferenceTable(result));
    else
        DrawComparison(result, path);
}

}  // namespace qvre
