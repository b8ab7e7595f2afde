#include "RunQvre.h"
#include "TempFolder.h"
#include "scattering/Tables.h"
#include "scattering/ZfScatteringData.h"

namespace {

const std::string kFiles = QVRE_EXAMPLES "/cu001_small/";

/// The tables of all atoms of a file but the emitters.
std::vector<ZfLmComplexTable> TablesOf(const std::string& path) {
    ZfScatteringData data;
    ZfLoadScatteredWave(data, path);
    std::vector<ZfLmComplexTable> tables;
    for (const ZfScatteringRecord& record : data.ListScatteringData)
        for (std::size_t i = 1; i < record.ListScatterer.electrons.size(); ++i)
            tables.push_back(record.ListScatterer.electrons[i].A);
    return tables;
}

}  // namespace

TEST(ScatterCommand, SettingsReachTheCalculation) {
    const TempFolder folder;
    const auto tables = [&](const std::string& name, const std::string& more) {
        const QvreResult result =
            RunQvre("scatter " + kFiles + "cluster.xml_cl " + kFiles + "emitter.xml_emt " + kFiles +
                    "phaseshift.xml_ph -o " + folder.Path(name + " ") + more);
        EXPECT_EQ(result.status, 0) << result.errors;
        return TablesOf(folder.Path(name));
    };
    const auto full = tables("full.xml_sf", "");
    const double tolerance = Difference(full, tables("loose.xml_sf", "--tolerance 0.01"));
    EXPECT_GT(tolerance, 1e-4);
    EXPECT_LT(tolerance, 2e-2);
    EXPECT_GT(Difference(full, tables("damped.xml_sf", "--imfp 10")), 0.1);
    EXPECT_GT(Difference(full, tables("warm.xml_sf", "--fluctuation " + kFiles + "fluctuation.xml_flu")),
              0.1);
    tables("slow.xml_sf", "--method SLOWMULTI");
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "method FULL, residual ",
                        RunQvre("info " + folder.Path("full.xml_sf")).output);
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "method SLOWMULTI, tolerance 0.01",
                        RunQvre("info " + folder.Path("slow.xml_sf")).output);
}
