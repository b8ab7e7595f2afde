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
    EXPECT_EQ(Parse({"-R", "2"}).angularResolution, 2.0);
    const ZfCmdParameters p = Parse({"cmd_qvre", "-C", "-F", "x", "-P"});
    EXPECT_EQ(p.clusterFile, "-F");
    EXPECT_EQ(p.emitterFile, "x");
    EXPECT_EQ(p.phaseShiftFile, "");
    EXPECT_FALSE(Parse({"cmd_qvre", "-W", "-H", "-R", "1"}).runRequested);
    EXPECT_FALSE(Parse({"cmd_qvre", "-c", "x", "--C", "-C=x", "-Cx"}).scatteringRequested);
}

TEST(ZfCmdParameters, ValuesOfOptions) {
    const ZfCmdParameters p = Parse({"cmd_qvre", "-T", "300.flu", "-I0", "zero", "-L", "7.5", "-LL", "2",
                                     "-MS", "SLOWMULTI", "-M", "EC", "-MFPE", "3", "-MFPS", "5"});
    EXPECT_EQ(p.fluctuationFile, "300.flu");
    EXPECT_EQ(p.temperature, 300.0);
    EXPECT_TRUE(p.i0Requested && !p.imageRequested);
    EXPECT_EQ(p.mappingMethod, 1);
    EXPECT_DOUBLE_EQ(p.clusterLimit, 7.5e-10);
    EXPECT_DOUBLE_EQ(p.meanFreePath, 5e-10);
    EXPECT_TRUE(p.mfpByEmitterDistance && p.mfpByDepth);  // an earlier flag stays
    EXPECT_EQ(ErrorText([] { Parse({"cmd_qvre", "-H", "-M"}); }), "Mapping method is not correct.");
    for (const char* method : {"multi", "FULL"})  // the latter belongs to the other program
        EXPECT_EQ(ErrorText([method] {
                      Parse({"", "-MS", method});
                  }),
                  "Multiple scattering calculation method is not correct.");
}
