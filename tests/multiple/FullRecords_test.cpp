#include "multiple/FullRecords.h"

#include <gtest/gtest.h>

#include <random>

#include "Clusters.h"
#include "ErrorText.h"
#include "Inputs.h"
#include "TempFolder.h"
#include "multiple/VibrationAverage.h"
#include "xml/ZfBarnFile.h"

namespace {

constexpr double kEnergy_eV = 250.0;

PhaseShiftRecord Phases(const std::string& name, int lSize) {
    std::vector<double> degrees;
    for (int l = 0; l < lSize; ++l) degrees.push_back(60.0 * std::exp(-l * l / 4.0));
    PhaseShiftRecord record = PhaseShiftsOf(name, kEnergy_eV, degrees);
    record.radial.LnX = {std::log(1.2e-10)};
    return record;
}

/// Two structures of three and four atoms under two waves.
struct Files {
    Files() {
        phaseShifts.records = {Phases("Cu", 5), Phases("O", 4)};
        const std::vector<ClusterAtom> atoms = {AtomAt("O", 0, 0, 0), AtomAt("Cu", 1.3, 0.2, 1.4),
                                                AtomAt("Cu", -1.1, 1.9, 0.6), AtomAt("O", 0.3, -1.7, 1.5)};
        cluster.structures.resize(2);
        cluster.structures[0].atoms.assign(atoms.begin(), atoms.begin() + 3);
        cluster.structures[1].atoms = atoms;
        for (const double start : {0.4, 1.3}) {
            waves.push_back(WaveOf(kEnergy_eV, FullTable(2, start)));
            waves.back().Ratio = start;
        }
    }

    std::vector<FullScatteringOutcome> Scatter(ZfScatteringData& data, FullScatteringSettings settings = {}) {
        ZfNotifyTerminateThreadCalculation notifier;
        settings.tolerance = 1e-12;
        return ScatterInFull(data, {cluster, waves, phaseShifts}, settings, notifier);
    }

    Cluster cluster;
    std::vector<EmittedWave> waves;
    ZfPhaseShiftDocument phaseShifts;
};

/// What the records stand for, asked of the solver itself.
FullScatteringRequest RequestOf(const Files& files, std::size_t structure, std::size_t wave, double k) {
    FullScatteringRequest request;
    request.k = k;
    request.tolerance = 1e-12;
    for (const ClusterAtom& atom : files.cluster.structures[structure].atoms) {
        const double* r = atom.position.Data();
        request.positions.push_back({r[0], r[1], r[2]});
        request.species.push_back(atom.name == "Cu" ? 0 : 1);
    }
    for (const PhaseShiftRecord& record : files.phaseShifts.records)
        request.listOfSpecies.push_back({record.AtomName, ScatteringFactors(record)});
    request.waves = {{0, files.waves[wave].coeff}};
    return request;
}

}  // namespace

TEST(FullRecords, FarFieldIsThatOfTheSolutionAndTheDirectWaveTheEmittedOne) {
    Files files;
    ZfScatteringData made;
    const std::vector<FullScatteringOutcome> outcomes = files.Scatter(made);
    ASSERT_EQ(outcomes.size(), 2U);
    EXPECT_EQ(outcomes[1].atoms, 4U);
    EXPECT_EQ(outcomes[1].waves, 2U);
    EXPECT_LT(made.EPS, 2e-12);

    const TempFolder folder;
    {
        ZfBarnFile file(folder.Path("w.xml_sf"), "w");
        made.Exchange(file);
    }
    ZfScatteringData data;
    ZfLoadScatteredWave(data, folder.Path("w.xml_sf"));
    EXPECT_EQ(data.Version, kFull);
    ASSERT_EQ(data.ListScatteringData.size(), 4U);
    for (std::size_t i = 0; i < 4; ++i) {
        const ZfScatteringRecord& record = data.ListScatteringData[i];
        EXPECT_EQ(record.Ratio, files.waves[i % 2].Ratio);
        const ZfVectorFreeElectron& list = record.ListScatterer;
        const FullScatteringRequest request = RequestOf(files, i / 2, i % 2, list.electrons.front().k);
        const std::vector<ZfLmComplexTable> tables = Solved(request).waves.front();
        list.PrepareNorms();
        for (const double theta : {0.0, 0.7, 1.9}) {
            const Complex whole = FarFieldOf(request, tables, request.waves[0], theta, 0.5);
            const Complex emitted =
                FarFieldOf(request, {ZfLmComplexTable(1)}, request.waves[0], theta, 0.5);  // atom 0 alone
            EXPECT_NEAR(std::abs(list.DirectAmplitude(theta, 0.5) - emitted), 0.0, 1e-12)
                << i << " " << theta;
            EXPECT_NEAR(
                std::abs(list.DirectAmplitude(theta, 0.5) + list.ScatteredAmplitude(theta, 0.5, 0) - whole),
                0.0, 1e-10)
                << i << " " << theta;
        }
    }
}

// Behind the emitter alone, an atom sees one source under every method: SLOWMULTI, by its quadrature.
TEST(FullRecords, OneScatteringIsThatOfTheOrderedMethods) {
    Files files;
    for (Structure& structure : files.cluster.structures) structure.atoms.resize(2);
    ZfScatteringData once;
    ScatterOnce(once, {files.cluster, files.waves, files.phaseShifts});
    EXPECT_EQ(once.Version, kSingle);
    ZfScatteringData ordered;
    ordered.Version = kSlowMulti;
    ordered.MultiScattering = 1;
    ordered.EPS = 1e-4;
    ZfNotifyTerminateThreadCalculation notifier;
    ordered.Calculate(notifier, files.cluster, files.waves, files.phaseShifts);
    ASSERT_EQ(once.ListScatteringData.size(), 4U);
    for (std::size_t i = 0; i < 4; ++i) {
        const auto& made = once.ListScatteringData[i].ListScatterer.electrons;
        const auto& truth = ordered.ListScatteringData[i].ListScatterer.electrons;
        ASSERT_EQ(made.size(), 2U);
        EXPECT_EQ(made[0].A.block, truth[0].A.block);
        EXPECT_LT(Difference(made[1].A, truth[1].A), 3.0 * ordered.EPS) << i;
    }
}

TEST(FullRecords, SettingsAndVibrationsReachTheSolver) {
    Files files;
    ZfScatteringData still;
    ZfScatteringData damped;
    ZfScatteringData vibrating;
    files.Scatter(still);
    FullScatteringSettings settings;
    settings.meanFreePath = 5e-10;
    files.Scatter(damped, settings);
    Fluctuation einstein;
    einstein.IsUseUisoEinsteinModel_ = true;
    einstein.Temperature_K_ = 300.0;
    const ZfDebye weights;
    ZfNotifyTerminateThreadCalculation notifier;
    ScatterInFull(vibrating, {files.cluster, files.waves, files.phaseShifts, &einstein, &weights}, {},
                  notifier);
    const auto norm = [](const ZfScatteringData& data, std::size_t atom) {
        double sum = 0.0;
        for (const Complex& a : data.ListScatteringData[0].ListScatterer.electrons[atom].A.block)
            sum += std::norm(a);
        return sum;
    };
    const double distance = std::sqrt(1.3 * 1.3 + 0.2 * 0.2 + 1.4 * 1.4);
    EXPECT_NEAR(std::sqrt(norm(damped, 2) / norm(still, 2)), std::exp(-distance / 10.0), 0.1);
    EXPECT_LT(norm(vibrating, 2), 0.99 * norm(still, 2));
    const std::vector<ZfFreeElectron>& atoms = vibrating.ListScatteringData[0].ListScatterer.electrons;
    EXPECT_NEAR(atoms[0].Uiso, 300.0 * kBoltzmann_J_K / 70.0, 1e-26);
    for (std::size_t i = 1; i < atoms.size(); ++i) EXPECT_EQ(atoms[i].Uiso, 0.0);

    files.waves[0].IsPlaneWave = true;
    EXPECT_NE(ErrorText([&] { files.Scatter(still); }).find("plane wave"), std::string::npos);
}

TEST(VibrationAverage, OfAnSWaveIsModifiedBesselFunctions) {
    const Complex t(0.3, 0.4);
    const double x = 0.7;
    const std::vector<Complex> averaged = VibrationAverage({t, 0.0, 0.0}, x);
    const double sinh = std::sinh(x);
    const double cosh = std::cosh(x);
    const double i[] = {sinh / x, cosh / x - sinh / (x * x),
                        ((x * x + 3.0) * sinh - 3.0 * x * cosh) / (x * x * x)};
    for (std::size_t l = 0; l < 3; ++l)
        EXPECT_NEAR(std::abs(averaged[l] - t * std::exp(-x) * i[l]), 0.0, 1e-15) << l;
    EXPECT_EQ(VibrationAverage({t, t}, 0.0), std::vector<Complex>({t, t}));
    for (const double wrong : {-1.0, 1e20, std::nan("")})
        EXPECT_NE(ErrorText([&] { VibrationAverage({t}, wrong); }).find("displacement"), std::string::npos);
}

// Amplitudes of clusters whose atoms stand displaced at random, each to either side.
TEST(VibrationAverage, IsTheMeanOverDisplacedClusters) {
    constexpr double kDisplacement = 0.1 * kAngstrom;
    constexpr int kClusters = 300;
    FullScatteringRequest still = MixedCluster(0.0);
    still.positions.resize(4);
    still.species.resize(4);
    still.waves = {{0, SWaveTable()}};
    FullScatteringRequest averaged = still;
    averaged.species[0] = averaged.listOfSpecies.size();  // the emitter is at rest
    averaged.listOfSpecies.push_back(still.listOfSpecies[still.species[0]]);
    const double x = still.k * still.k * kDisplacement * kDisplacement;
    for (std::size_t s = 0; s < 3; ++s) {
        averaged.listOfSpecies[s].t.resize(9);
        averaged.listOfSpecies[s].t = VibrationAverage(averaged.listOfSpecies[s].t, x);
    }
    const double thetas[] = {0.3, 1.0, 1.6, 2.5};
    const auto fields = [&](const FullScatteringRequest& request) {
        const std::vector<ZfLmComplexTable> tables = Solved(request).waves.front();
        std::vector<Complex> values;
        for (const double theta : thetas)
            values.push_back(FarFieldOf(request, tables, request.waves[0], theta, 0.9));
        return values;
    };
    std::mt19937 random(1);  // NOLINT(cert-msc51-cpp): the same clusters in every run
    std::normal_distribution<double> normal(0.0, kDisplacement);
    std::vector<Complex> mean(std::size(thetas));
    for (int c = 0; c < kClusters; ++c) {
        FullScatteringRequest there = still;
        FullScatteringRequest back = still;
        for (std::size_t i = 1; i < still.positions.size(); ++i) {
            for (std::size_t axis = 0; axis < 3; ++axis) {
                const double u = normal(random);
                there.positions[i][axis] += u;
                back.positions[i][axis] -= u;
            }
        }
        for (const FullScatteringRequest* request : {&there, &back}) {
            const std::vector<Complex> values = fields(*request);
            for (std::size_t i = 0; i < mean.size(); ++i) mean[i] += values[i] / (2.0 * kClusters);
        }
    }
    const auto distance = [&](const std::vector<Complex>& values) {
        double sum = 0.0;
        for (std::size_t i = 0; i < mean.size(); ++i) sum += std::norm(values[i] - mean[i]);
        return std::sqrt(sum);
    };
    EXPECT_LT(distance(fields(averaged)), 0.2 * distance(fields(still)));
}
