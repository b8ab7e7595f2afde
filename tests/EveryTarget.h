#pragma once

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <string>

/// Repeats the tests of a suite with every instruction set: INSTANTIATE_TEST_SUITE_P(EveryInstructionSet,
/// Suite, AllTargets(), TargetName).
class EveryTarget : public testing::TestWithParam<std::int64_t> {
protected:
    void SetUp() override { hwy::SetSupportedTargetsForTest(GetParam()); }
    void TearDown() override { hwy::SetSupportedTargetsForTest(0); }
};

inline auto AllTargets() {
    return testing::ValuesIn(hwy::SupportedAndGeneratedTargets());
}

inline std::string TargetName(const testing::TestParamInfo<std::int64_t>& target) {
    return hwy::TargetName(target.param);
}
