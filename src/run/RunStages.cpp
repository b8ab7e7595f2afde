#include "run/RunStages.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>

#include "foundation/Constants.h"
#include "foundation/ReplacedFile.h"
#include "image/PlaneImage.h"
#include "input/Fluctuation.h"
#include "pattern/SphereMap.h"
#include "pattern/ZfDocPattern.h"
#include "prepare/thermal/AtomicWeights.h"
#include "run/InputFiles.h"
#include "run/ModelCalculation.h"
#include "run/PartialScattering.h"
#include "run/RunProgress.h"
#include "scattering/ThermalModels.h"

namespace qvre {

namespace {

/// Part of the atoms that are done, over all structures and waves.
double FractionDone(const ZfScatteringData& data) {
    const double records = data.StCount * data.EWCount;
    const double record = data.StIndex * data.EWCount + data.EWIndex;
    const double atom = data.AtCount > 0 ? static_cast<double>(data.AtIndex) / data.AtCount : 0.0;
    return records > 0.0 ? (record + atom) / records : 0.0;
}

/// Atoms that would scatter and yet send out nothing.
std::size_t UnreachedAtoms(const ZfScatteringData& data, const ZfPhaseShiftDocument& phaseShifts) {
    std::size_t count = 0;
    for (const ZfScatteringRecord& record : data.ListScatteringData) {
        if (record.phaseShiftIndex.VectorSize() == 0)
            continue;  // of a file: the stopped calculation has told
        for (std::size_t i = 1; i < record.ListScatterer.electrons.size(); ++i) {
            const PhaseShiftRecord& phases = CheckedAt(
                phaseShifts.records, record.phaseShiftIndex.VectorValueAt(static_cast<std::int32_t>(i)));
            const auto isZero = [](const std::complex<double>& a) { return a == 0.0; };
            const std::vector<std::complex<double>>& sent = record.ListScatterer.electrons[i].A.block;
            const std::complex<double>* t = phases.scatteringFactors.Data();
            if (std::all_of(sent.begin(), sent.end(), isZero) &&
                !std::all_of(t, t + phases.scatteringFactors.Count(), isZero))
                ++count;
        }
    }
    return count;
}

void WarnOfUnreachedAtoms(const ZfScatteringData& data, const ZfPhaseShiftDocument& phaseShifts) {
    if (const std::size_t count = UnreachedAtoms(data, phaseShifts); count > 0)
        std::fprintf(stderr, "warning: no wave reaches %zu of the atoms, which scatter nothing\n", count);
}

/// The scattered waves with their vibrations.
void LoadWaves(ZfScatteringData& data, const EmergenceRequest& request) {
    ZfLoadScatteredWave(data, request.scatteredWaveFile);
    if (data.Version == kFull) return;  // its vibrations are part of the waves
    Fluctuation fluctuation;
    ZfLoadFluctuation(fluctuation, request.fluctuationFile);
    const ZfDebye weights = LoadAtomicWeights(request.atomicWeightFile);
    for (ZfScatteringRecord& record : data.ListScatteringData)
        ApplyThermalModel(fluctuation, record.ListScatterer, weights);
}

CountedIntensity Count(const EmergenceRequest& request, const FarFieldDirections& directions) {
    ZfScatteringData data;
    LoadWaves(data, request);
    CountingRequest counting;
    if (!request.dipoleFile.empty()) counting.source = LoadDipoleSource(request.dipoleFile);
    counting.emitters = LoadEmitterShares(request.emittersFile);
    counting.light = request.light;
    if (!request.meanFreePathFile.empty())
        counting.inelasticMeanFreePath = LoadMeanFreePath_m(request.meanFreePathFile);
    counting.arePathsDamped = data.Version == kFull;
    counting.meanFreePath = request.meanFreePath;
    counting.limits = request.limits;
    double done = 0.0;
    RunProgress progress("images", [&done] { return done; });
    CountedIntensity counted = CountIntensity(data, directions, counting, progress, done);
    InterruptRequest::ThrowIfPending();
    return counted;
}

/// A document without pixels.
void Describe(ZfDocData& image, const ImageRequest& request) {
    for (const auto& [name, text] : request.information)
        ZfDocData::SetInfoString(image.infoString, name, text);
    if (const std::string& losses = request.emergence.meanFreePathFile; !losses.empty())
        ZfDocData::SetInfoString(image.infoString, "mean_free_path",
                                 fmt::format("{:.6g} angstrom", LoadMeanFreePath_m(losses) * 1e10));
    ZfDocData::SetInfoString(image.infoString, "__SphereProjection.Name", ProjectionOf(request.map).Name());
}

void SaveImages(const ZfSphericalMapping& mapping, const ImageRequest& request, const std::string& imageFile,
                const std::string& directImageFile) {
    ZfDocData image;
    Describe(image, request);
    ReplacedFile pattern(imageFile);
    ReplacedFile direct(directImageFile);
    pattern.Write([&](const std::string& path) { SavePlane(image, mapping.planes[0], path); });
    direct.Write([&](const std::string& path) { SavePlane(image, mapping.planes[1], path); });
    pattern.Commit();
    direct.Commit();
}

/// What the method leaves out, of all that the atoms scatter, above which it is warned of.
constexpr double kMuchMissing = 0.5;

std::string MeasureText(const ZfScatteringData& data, const ZfPhaseShiftDocument& phaseShifts) {
    const std::optional<OrderedResultMeasure> measure = MeasureOrderedResult(data, phaseShifts);
    if (!measure) return {};
    const char* what = data.Version == kSingle ? "multiple" : "back and side";
    return fmt::format(
        "{}{} scattering left out: {:.2g} percent of the waves; the method FULL would take about {}\n",
        measure->missing > kMuchMissing ? "warning: " : "", what, 100.0 * measure->missing,
        DurationText(measure->seconds));
}

std::string CalculateInOrder(const ScatteringRequest& request, LoadedInputs& inputs, ZfScatteringData& data) {
    data.Version = request.method;
    data.MultiScattering = 1;
    RunProgress progress("scattering", [&data] { return FractionDone(data); });
    data.Calculate(progress, inputs.cluster, inputs.waves, inputs.phaseShifts);
    InterruptRequest::ThrowIfPending();
    return MeasureText(data, inputs.phaseShifts);
}

std::string CalculateOnce(LoadedInputs& inputs, ZfScatteringData& data) {
    ScatterOnce(data, {inputs.cluster, inputs.waves, inputs.phaseShifts});
    return MeasureText(data, inputs.phaseShifts);
}

/// Above it, the expected time of a solution is told before it begins.
constexpr double kWorthTelling_s = 5.0;

void TellEstimate(const FullScatteringEstimate& estimate) {
    if (estimate.seconds < kWorthTelling_s) return;
    std::printf("    full scattering takes about %s and %.2g MB\n", DurationText(estimate.seconds).c_str(),
                estimate.bytes * 1e-6);
    std::fflush(stdout);
}

std::string OutcomeText(const FullScatteringOutcome& outcome) {
    std::string text =
        fmt::format("FULL: {} atoms, {} waves: {} applications of the operator, residual {:.1e}\n",
                    outcome.atoms, outcome.waves, outcome.applications, outcome.residual);
    for (const PhaseShiftCut& cut : outcome.cuts)
        text += fmt::format(
            "note: of the {} phase shifts of {} the first {} are used: beyond, rounding stands "
            "for them\n",
            cut.given, cut.name, cut.used);
    return text;
}

std::string CalculateInFull(const ScatteringRequest& request, LoadedInputs& inputs, ZfScatteringData& data,
                            const PartialScattering& partial) {
    FullScatteringInputs all = {inputs.cluster, inputs.waves, inputs.phaseShifts};
    Fluctuation fluctuation;
    ZfDebye weights;
    if (!request.fluctuationFile.empty()) {
        ZfLoadFluctuation(fluctuation, request.fluctuationFile);
        weights = LoadAtomicWeights(request.atomicWeightFile);
        all.fluctuation = &fluctuation;
        all.weights = &weights;
    }
    FullScatteringSettings settings = request.full;
    if (!request.meanFreePathFile.empty())
        settings.meanFreePath = LoadMeanFreePath_m(request.meanFreePathFile);
    double done = 0.0;
    RunProgress progress("scattering", [&done] { return done; });
    const FullScatteringReports reports = {TellEstimate,
                                           [&done](const FullScatteringProgress& at) {
                                               done = std::clamp(
                                                   std::log(at.residual) / std::log(at.tolerance), 0.0, 1.0);
                                           },
                                           [&] { partial.Save(data); }};
    partial.Load(data);
    std::string text;
    if (!data.ListScatteringData.empty())
        text = fmt::format("structures 1 to {} are those of the stopped calculation\n",
                           data.ListScatteringData.size() / inputs.waves.size());
    for (const FullScatteringOutcome& outcome : ScatterInFull(data, all, settings, progress, reports))
        text += OutcomeText(outcome);
    InterruptRequest::ThrowIfPending();
    return text;
}

}  // namespace

LoadedInputs::LoadedInputs(const ScatteringRequest& request) {
    ZfLoadCluster(cluster, request.clusterFile);
    ZfLoadEmittedWave(waves, request.wavesFile);
    ZfLoadPhaseShift(phaseShifts, request.phaseShiftFile);
}

std::string CalculateScattering(const ScatteringRequest& request, const std::string& outputFile) {
    LoadedInputs inputs(request);
    ReplacedFile output(outputFile);
    ZfScatteringData data;
    // Plane waves come from outside, and are left to the calculators of the files.
    const bool isExactSingle =
        request.method == kSingle && std::none_of(inputs.waves.begin(), inputs.waves.end(),
                                                  [](const EmittedWave& wave) { return wave.IsPlaneWave; });
    const PartialScattering partial(request, outputFile);
    std::string remarks = request.method == kFull ? CalculateInFull(request, inputs, data, partial)
                          : isExactSingle         ? CalculateOnce(inputs, data)
                                                  : CalculateInOrder(request, inputs, data);
    WriteScatteredWaves(data, output);
    partial.Remove();
    WarnOfUnreachedAtoms(data, inputs.phaseShifts);
    return remarks;
}

void CalculateImages(const ImageRequest& request, const std::string& imageFile,
                     const std::string& directImageFile) {
    const std::unique_ptr<ZfDocPattern> pattern = MakePattern(request.map, request.resolution);
    pattern->BuildMapping();
    ZfSphericalMapping& mapping = pattern->mapping;
    const CountedIntensity counted = Count(request.emergence, DirectionsOf(mapping));
    std::copy(counted.pattern.begin(), counted.pattern.end(), mapping.planes[0].Data());
    std::copy(counted.direct.begin(), counted.direct.end(), mapping.planes[1].Data());
    SaveImages(mapping, request, imageFile, directImageFile);
}

CountedIntensity CalculateDirections(const EmergenceRequest& request,
                                     const std::vector<PolarDirection>& directions) {
    FarFieldDirections far;
    for (std::size_t i = 0; i < directions.size(); ++i) {
        const double theta = directions[i].theta_deg * kDegree;
        const double phi = directions[i].phi_deg * kDegree;
        far.Add(i, std::sin(theta) * std::cos(phi), std::sin(theta) * std::sin(phi), std::cos(theta));
    }
    far.Order();
    return Count(request, far);
}

}  // namespace qvre
