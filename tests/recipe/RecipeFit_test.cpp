#include "recipe/RecipeFit.h"

#include <gtest/gtest.h>

#include "recipe/RecipeCases.h"

using namespace qvre;

namespace {

// Every key has a value that is not the usual one.
TEST(RecipeFit, TakesEveryKey) {
    const RecipeFit fit = ReadFit(ParseRecipe(R"(
[parameters]
h = { start = 1, lower = 0, upper = 2 }
d = { start = 3, lower = 2, upper = 4 }
[fit]
parameters = ["d"]
derived = { twice = "2*d" }
search = "sobol"
method = "bobyqa"
phases = "each"
amplitude = "fixed"
seed = 11
evaluations = 90
population = 7
minima = 9
errors = false
independent-data = 55
[fit.simulate]
truth = { h = 1.25 }
shake = { d = 0.5 }
counts = 77
rotation = 12
theta-offset = 1.5
theta = [5, 65]
phi = [-20, 40]
step = 4
)",
                                              "r.toml"));
    EXPECT_EQ(fit.parameters, (std::vector<std::string>{"d"}));
    EXPECT_EQ(fit.derived, (std::map<std::string, std::string>{{"twice", "2*d"}}));
    EXPECT_EQ(fit.search, FitSearch::kSobol);
    EXPECT_EQ(fit.descent, FitDescent::kDerivativeFree);
    EXPECT_EQ(fit.phases, FitPhases::kEach);
    EXPECT_EQ(fit.amplitude, FitAmplitude::kFixed);
    EXPECT_EQ(fit.seed, 11U);
    EXPECT_EQ(fit.evaluations, 90);
    EXPECT_EQ(fit.population, 7);
    EXPECT_EQ(fit.minima, 9);
    EXPECT_FALSE(fit.findsErrors);
    EXPECT_EQ(fit.independentData, 55.0);
    const FitSimulation& simulation = fit.simulation;
    EXPECT_EQ(simulation.truth, (std::map<std::string, double>{{"h", 1.25}}));
    EXPECT_EQ(simulation.shake, (std::map<std::string, double>{{"d", 0.5}}));
    EXPECT_EQ(simulation.counts, 77.0);
    EXPECT_EQ(simulation.rotation_deg, 12.0);
    EXPECT_EQ(simulation.thetaOffset_deg, 1.5);
    EXPECT_EQ(simulation.theta_deg, (std::array<double, 2>{5.0, 65.0}));
    EXPECT_EQ(simulation.phi_deg, (std::array<double, 2>{-20.0, 40.0}));
    EXPECT_EQ(simulation.step_deg, 4.0);
}

}  // namespace
