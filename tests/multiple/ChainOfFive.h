#pragma once

#include <array>

/// Five Cu atoms along z, 2.556191 angstrom apart; the lowest one emits an s wave, k = 12.0308 per angstrom.
/// No vibrations, no damping. Intensities over that of the emitted wave alone against the angle to the chain,
/// of the solution and of the sums of all paths of up to 1 .. 5 steps, from a dense solution in double
/// precision that agrees with the matrix inversion of an independent program to 1e-4.
namespace chain {

constexpr double kDistance_m = 2.556191e-10;
constexpr double kWaveNumber = 12.0308e10;  // 1/m

/// rad, l = 0 up, of the X-alpha potential in a cluster of 55 atoms
constexpr std::array kPhaseShifts = {3.00235, 1.30508, 2.82445, 1.65413, 0.998,   0.65344,
                                     0.45128, 0.32584, 0.25017, 0.18364, 0.14007, 0.11766,
                                     0.09158, 0.05744, 0.02824, 0.01113, 0.00362, 0.00099};

struct Direction {
    double theta_deg;
    double full;
    std::array<double, 5> order;
};

constexpr std::array<Direction, 14> kDirections = {{
    {0, 1.23612, {12.3423, 16.6996, 1.44222, 1.32762, 0.400123}},
    {6, 0.293413, {8.45248, 7.56496, 0.299169, 0.0684923, 0.021095}},
    {12, 0.86258, {0.804578, 2.60043, 2.76072, 1.01274, 0.939607}},
    {18, 0.554403, {0.521436, 0.910983, 0.305084, 0.459996, 0.451638}},
    {24, 0.78201, {1.04954, 0.882869, 0.532597, 0.796812, 0.650674}},
    {30, 1.22564, {1.11681, 1.04043, 1.02871, 1.44167, 1.06862}},
    {36, 0.661896, {0.582173, 0.331136, 0.771581, 0.534913, 0.56219}},
    {42, 1.06396, {1.11276, 1.08055, 1.31353, 1.08601, 0.968598}},
    {48, 1.03192, {0.925754, 0.827176, 0.938763, 1.13214, 1.03994}},
    {54, 1.07984, {1.23117, 1.67797, 1.09003, 1.05425, 0.904478}},
    {60, 1.03442, {0.941931, 1.07274, 1.19657, 1.08009, 1.03128}},
    {66, 1.38597, {1.03028, 1.52014, 1.74627, 1.62988, 1.46519}},
    {72, 0.972174, {0.878412, 0.893844, 1.13378, 0.992211, 1.01138}},
    {78, 1.44612, {1.10897, 1.49597, 1.60932, 1.62623, 1.64593}},
}};

}  // namespace chain
