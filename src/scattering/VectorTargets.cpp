#include <hwy/targets.h>

// What the headers of Highway need of its library, which therefore is not linked: that measures the clock in
// an initialiser of its own, 2.5 ms of every start, and nothing else of it is used here.

namespace hwy {
namespace {

std::int64_t targetsForTest = 0;  // none

std::int64_t TargetsOfProcessor() {
#if HWY_ARCH_X86
    const bool ssse3 = __builtin_cpu_supports("ssse3") != 0;
    const bool sse4 = ssse3 && __builtin_cpu_supports("sse4.1") && __builtin_cpu_supports("sse4.2") &&
                      __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("aes");
    // Processors with these have the rest of the set as well: LZCNT, F16C.
    const bool avx2 = sse4 && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
                      __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2");
    const bool avx3 = avx2 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
                      __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512bw");
    return (ssse3 ? HWY_SSSE3 : 0) | (sse4 ? HWY_SSE4 : 0) | (avx2 ? HWY_AVX2 : 0) | (avx3 ? HWY_AVX3 : 0) |
           HWY_STATIC_TARGET;
#else
    return HWY_STATIC_TARGET;
#endif
}

}  // namespace

std::int64_t SupportedTargets() {
    static const std::int64_t targets = TargetsOfProcessor();
    return targetsForTest != 0 ? targetsForTest : targets;
}

void SetSupportedTargetsForTest(std::int64_t targets) {
    targetsForTest = targets;
    GetChosenTarget().DeInit();
}

ChosenTarget& GetChosenTarget() {
    static ChosenTarget chosen;
    return chosen;
}

}  // namespace hwy
