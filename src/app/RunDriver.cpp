#include "app/RunDriver.h"

#include <filesystem>
#include <string>
#include <system_error>

#include "app/Stages.h"
#include "app/ZfCalcDocument.h"
#include "app/ZfCmdParameters.h"
#include "foundation/Console.h"
#include "foundation/ProgramFile.h"
#include "foundation/Truncate.h"
#include "foundation/ZfADateTime.h"
#include "foundation/ZfError.h"
#include "foundation/ZfFileQt.h"

namespace qvre {

namespace {

constexpr const char* kWeightTable = "AtomicWeight.txt";

/// The directory that argv[0] names. Empty without a separator, or when the only one is the first character.
std::string ProgramDirectory(const std::string& program) {
    const std::size_t separator = program.find_last_of("\\/");
    if (separator == std::string::npos || separator == 0) return {};
    return program.substr(0, separator + 1);
}

/// Beside the program. A bare name was found through PATH: the table of the current directory comes first
/// then, and behind it the one beside the running file.
std::string WeightTablePath(const std::string& program) {
    std::string named = ProgramDirectory(program) + kWeightTable;
    std::error_code none;
    if (named != kWeightTable || std::filesystem::exists(named, none)) return named;
    const std::filesystem::path running = RunningProgram();
    const std::filesystem::path beside = running.parent_path() / kWeightTable;
    return !running.empty() && std::filesystem::exists(beside, none) ? beside.string() : named;
}

void LoadAtomicWeights(const std::string& program) {
    ZfFileQt file(WeightTablePath(program), "r");
    std::string text;
    file.ReadAll(text);
    ZfCalcDocument::Instance().debye.LoadAtomicWeight(text);
}

/// An output that cannot be written fails before anything is calculated; one that can is empty from here on.
void CheckOutputs(const ZfCmdParameters& parameters) {
    if (parameters.scatteringRequested) ZfCheckFileWritable(parameters.scatteredWaveFile);
    if (!parameters.imageRequested) return;
    ZfCheckFileWritable(parameters.imageFile);
    if (parameters.i0Requested) ZfCheckFileWritable(parameters.i0ImageFile);
}

void RunScatteringStage(const ZfCmdParameters& parameters) {
    ZfCalcDocument& document = ZfCalcDocument::Instance();
    ZfLoadCluster(document.cluster, parameters.clusterFile);
    ConsolePrint("Cluster loaded\n");
    ZfLoadEmittedWave(document.emittedWaves, parameters.emitterFile);
    ConsolePrint("Emitter loaded\n");
    ZfLoadPhaseShift(*document.phaseShifts, parameters.phaseShiftFile);
    ConsolePrint("Phase shift loaded\n");
    ZfRunScattering(parameters.scatteredWaveFile, parameters.scatteringMethod);
}

void RunImageStage(const ZfCmdParameters& parameters) {
    ZfCalcDocument& document = ZfCalcDocument::Instance();
    ZfLoadFluctuation(document.fluctuation, parameters.fluctuationFile);
    ConsolePrint("Fluctuation loaded\n");
    if (!parameters.scatteringRequested) {
        ConsolePrint("Loading scattering wave\n");
        ZfLoadScatteredWave(*document.scatteringData, parameters.scatteredWaveFile);
        ConsolePrint("Loaded..");
    }
    ZfRunPattern({.angularResolution = parameters.angularResolution,
                  .clusterLimit = parameters.clusterLimit,
                  .clusterLowerLimit = parameters.clusterLowerLimit,
                  .imageFile = parameters.imageFile,
                  .i0Wanted = parameters.i0Requested,
                  .i0File = parameters.i0ImageFile,
                  .mappingCode = parameters.mappingMethod,
                  .meanFreePath = parameters.meanFreePath,
                  .byEmitterDistance = parameters.mfpByEmitterDistance,
                  .byDepth = parameters.mfpByDepth});
}

void Run(int argumentCount, const char* const* arguments) {
    ZfCmdParameters parameters;
    ZfParseCommandLine(parameters, argumentCount, arguments);
    if (!parameters.runRequested) {
        ZfPrintUsage();
        return;
    }
    LoadAtomicWeights(arguments[0]);
    ZfADateTime start;
    ZfADateTime end;
    start.Now();
    CheckOutputs(parameters);
    if (parameters.scatteringRequested) RunScatteringStage(parameters);
    if (parameters.imageRequested) RunImageStage(parameters);
    end.Now();
    ConsolePrint("Finished: Calcuation time(s)= %d\n",
                 TruncateToInt32(ZfADateTime::SecondsBetween(end, start)));
}

}  // namespace

int RunDriver(int argumentCount, const char* const* arguments) {
    try {
        Run(argumentCount, arguments);
        return 0;
    } catch (const ZfError& error) {
        ConsolePrint("Error: %s\n", error.message.c_str());
    } catch (...) {  // NOLINT(bugprone-empty-catch): bare texts and range failures end the run without a word
    }
    return -1;
}

}  // namespace qvre
