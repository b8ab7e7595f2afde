#include <filesystem>

#include "RunQvre.h"
#include "TempFolder.h"
#include "scattering/ZfScatteringData.h"

namespace {

const std::string kFiles = QVRE_EXAMPLES "/cu001_small/";

QvreResult Scatter(const std::string& output, const std::vector<std::string>& more) {
    std::vector<std::string> arguments = {
        "scatter", kFiles + "cluster.xml_cl", kFiles + "emitter.xml_emt", kFiles + "phaseshift.xml_ph", "-o",
        output};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunQvre(arguments);
}

/// Largest table element of all atoms by which two files differ, by the largest there is.
double Difference(const std::string& a, const std::string& b) {
    ZfScatteringData first;
    ZfScatteringData second;
    ZfLoadScatteredWave(first, a);
    ZfLoadScatteredWave(second, b);
    double size = 0.0;
    double difference = 0.0;
    for (std::size_t r = 0; r < first.ListScatteringData.size(); ++r) {
        const auto& atoms = first.ListScatteringData[r].ListScatterer.electrons;
        for (std::size_t i = 1; i < atoms.size(); ++i) {
            const auto& other = second.ListScatteringData[r].ListScatterer.electrons[i].A.block;
            for (std::size_t n = 0; n < atoms[i].A.block.size(); ++n) {
                size = std::max(size, std::abs(atoms[i].A.block[n]));
                difference = std::max(difference, std::abs(atoms[i].A.block[n] - other[n]));
            }
        }
    }
    return difference / size;
}

}  // namespace

TEST(ScatterCommand, SettingsReachTheCalculation) {
    const TempFolder folder;
    const auto made = [&](const std::string& name, const std::vector<std::string>& more) {
        const QvreResult result = Scatter(folder.Path(name), more);
        EXPECT_EQ(result.status, 0) << result.errors;
        return folder.Path(name);
    };
    const std::string full = made("full.xml_sf", {});
    EXPECT_NE(RunQvre({"info", full}).output.find("method FULL, residual "), std::string::npos);
    const double tolerance = Difference(full, made("loose.xml_sf", {"--tolerance", "0.01"}));
    EXPECT_GT(tolerance, 1e-4);
    EXPECT_LT(tolerance, 2e-2);
    EXPECT_GT(Difference(full, made("damped.xml_sf", {"--imfp", "10"})), 0.1);
    EXPECT_GT(Difference(full, made("warm.xml_sf", {"--fluctuation", kFiles + "fluctuation.xml_flu"})), 0.1);
    const std::string slow = made("slow.xml_sf", {"--method", "SLOWMULTI"});
    EXPECT_NE(RunQvre({"info", slow}).output.find("method SLOWMULTI, tolerance 0.01"), std::string::npos);
}

TEST(ScatterCommand, RefusesWhatTheMethodDoesNotTake) {
    const TempFolder folder;
    for (const char* option : {"--imfp", "--fluctuation"}) {
        const QvreResult result = Scatter(folder.Path("w.xml_sf"), {"--method", "MULTI", option, "10"});
        EXPECT_EQ(result.status, 2);
        EXPECT_NE(result.errors.find(std::string(option) + ": is for the method FULL"), std::string::npos)
            << result.errors;
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path("")));
}
