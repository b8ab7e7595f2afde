#include "app/ZfCmdParameters.h"

#include <gtest/gtest.h>

#include <vector>

#include "ErrorText.h"

namespace {

ZfCmdParameters Parse(const std::vector<const char*>& arguments) {
    ZfCmdParameters parameters;
    ZfParseCommandLine(parameters, static_cast<int>(arguments.size()), arguments.data());
    return parameters;
}

}  // namespace

TEST(ZfCmdParameters, EveryArgumentIsTriedAsAnOption) {
    EXPECT_FALSE(Parse({"-C"}).runRequested);  // the program's name alone
    const ZfCmdParameters named = Parse({"-R", "2"});
    EXPECT_TRUE(named.runRequested);
    EXPECT_EQ(named.angularResolution, 2.0);
    const ZfCmdParameters p = Parse({"cmd_qvre", "-C", "-F", "x", "-P"});
    EXPECT_EQ(p.clusterFile, "-F");
    EXPECT_EQ(p.emitterFile, "x");
    EXPECT_EQ(p.phaseShiftFile, "");
    EXPECT_TRUE(p.scatteringRequested);
    EXPECT_FALSE(Parse({"cmd_qvre", "-W", "-H", "-R", "1"}).runRequested);
    const ZfCmdParameters other = Parse({"cmd_qvre", "-c", "x", "--C", "-C=x", "-Cx", "stray"});
    EXPECT_EQ(other.clusterFile, "cluster.xml_cl");
    EXPECT_FALSE(other.scatteringRequested);
}

TEST(ZfCmdParameters, ValuesOfOptions) {
    const ZfCmdParameters defaults = Parse({"cmd_qvre", "x"});
    EXPECT_EQ(defaults.i0ImageFile, "_i0.xml");
    EXPECT_EQ(defaults.fluctuationFile, "fluctuation.xml_flu");
    EXPECT_EQ(defaults.scatteringMethod, 2);
    const ZfCmdParameters p =
        Parse({"cmd_qvre", "-T", "300.flu", "-I0", "zero", "-L", "7.5", "-LL", "2", "-MS", "SINGLE", "-MS",
               "SLOWMULTI", "-M", "EC", "-MFPE", "3", "-MFPS", "5"});
    EXPECT_EQ(p.fluctuationFile, "300.flu");
    EXPECT_EQ(p.temperature, 300.0);
    EXPECT_TRUE(p.i0Requested);
    EXPECT_FALSE(p.imageRequested);
    EXPECT_DOUBLE_EQ(p.clusterLimit, 7.5e-10);
    EXPECT_DOUBLE_EQ(p.clusterLowerLimit, 2e-10);
    EXPECT_EQ(p.scatteringMethod, 1);
    EXPECT_EQ(p.mappingMethod, 1);
    EXPECT_DOUBLE_EQ(p.meanFreePath, 5e-10);
    EXPECT_TRUE(p.mfpByEmitterDistance && p.mfpByDepth);  // an earlier flag stays
    EXPECT_EQ(ErrorText([] { Parse({"cmd_qvre", "-H", "-M"}); }), "Mapping method is not correct.");
    EXPECT_EQ(ErrorText([] {
                  Parse({"cmd_qvre", "-MS", "multi"});
              }),
              "Multiple scattering calculation method is not correct.");
}
