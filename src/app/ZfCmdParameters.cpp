#include "app/ZfCmdParameters.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>

#include "foundation/Console.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "pattern/SphereMap.h"
#include "scattering/ZfScatteringData.h"

using namespace qvre;

namespace {

// The methods and maps of this command line, whatever others the words may come to name.
constexpr std::array kMethods = {kSingle, kSlowMulti, kMulti};
constexpr std::array kMaps = {SphereMap::kAzimuthalEquidistant, SphereMap::kEquidistantCylindrical};

/// The code of a word whose value is among `values`.
template <class Enumeration, std::size_t Size>
std::int32_t CodeOf(std::string_view word, const std::array<Enumeration, Size>& values, const char* failure) {
    const auto value = ValueOfWord<Enumeration>(word);
    if (!value || std::find(values.begin(), values.end(), *value) == values.end()) throw ZfError(failure);
    return static_cast<std::int32_t>(*value);
}

double Metres(std::string_view angstrom) {
    return TextToDouble(angstrom) * 1e-10;
}

void TakeOption(ZfCmdParameters& p, std::string_view option, const std::string& value) {
    if (option == "-C") {
        p.clusterFile = value;
        p.scatteringRequested = true;
    } else if (option == "-F") {
        p.emitterFile = value;
        p.scatteringRequested = true;
    } else if (option == "-P") {
        p.phaseShiftFile = value;
        p.scatteringRequested = true;
    } else if (option == "-W") {
        p.scatteredWaveFile = value;
    } else if (option == "-T") {
        p.fluctuationFile = value;
        p.temperature = TextToDouble(value);
    } else if (option == "-I") {
        p.imageFile = value;
        p.imageRequested = true;
    } else if (option == "-I0") {
        p.i0ImageFile = value;
        p.i0Requested = true;
    } else if (option == "-H") {
        p.runRequested = false;
    } else if (option == "-R") {
        p.angularResolution = TextToDouble(value);
        ConsolePrint("anglar_resolution %lg\n", p.angularResolution);
    } else if (option == "-L") {
        p.clusterLimit = Metres(value);
    } else if (option == "-LL") {
        p.clusterLowerLimit = Metres(value);
    } else if (option == "-MS") {
        p.scatteringMethod =
            CodeOf(value, kMethods, "Multiple scattering calculation method is not correct.");
    } else if (option == "-M") {
        p.mappingMethod = CodeOf(value, kMaps, "Mapping method is not correct.");
    } else if (option == "-MFPE") {
        p.meanFreePath = Metres(value);
        p.mfpByEmitterDistance = true;
        ConsolePrint("MeanFreePath=%lg;By Emitter Distance \n", p.meanFreePath);
    } else if (option == "-MFPS") {
        p.meanFreePath = Metres(value);
        p.mfpByDepth = true;
        ConsolePrint("MeanFreePath=%lg; By Depth from surface.\n", p.meanFreePath);
    } else if (option == "-MFPES") {
        p.meanFreePath = Metres(value);
        p.mfpByEmitterDistance = true;
        p.mfpByDepth = true;
        ConsolePrint("MeanFreePath=%lg; By Emitter Distance and Depth from surface.\n", p.meanFreePath);
    }
}

}  // namespace

void ZfParseCommandLine(ZfCmdParameters& parameters, int argumentCount, const char* const* arguments) {
    if (argumentCount <= 1) return;
    parameters.runRequested = true;
    for (int i = 0; i < argumentCount; ++i)
        TakeOption(parameters, arguments[i], i + 1 < argumentCount ? arguments[i + 1] : "");
}

void ZfPrintUsage() {
    ConsolePrint("cmd_qvre usage\n");
    ConsolePrint("--Scattering Calculation ONLY\n");
    ConsolePrint(
        "cmd_qvre -C <in_ClusterFileName> -F <in_EmittedWaveFileName> -P <in_PhaseShiftFileName>  -W "
        "<out_ScattereredWaveFileName> -MS <*Multiple scattering calcultion method: MULTI, SINGLE, "
        "SLOWMULTI>\n");
    ConsolePrint(
        "example: cmd_qvre -C cluster.xml_cl -F emitter.xml_emt -P phaseshift.xml_ph -W "
        "scatteredwave.xml_sf\n");
    ConsolePrint("Parameter -MS is optional. -MS: default is MULTI\n");
    ConsolePrint("--Image Calculation ONLY\n");
    ConsolePrint(
        "cmd_qvre -W <in_ScatteredWaveFileName> -T <FluctuationFileName> -I <out_PatternFileName.xml_img> "
        "-I0 "
        "<*out_I0_ImageFileName.xml_img> -R <*degree resolution: 1 or 0.5> -L <*LimitClusterSize(A)>  -M "
        "<*Mapping "
        "method: AE, EC>\n");
    ConsolePrint("example: cmd_qvre -W scatteredwave.xml_sf -I azmap.xml_img -R 0.5 -MFPE 3\n");
    ConsolePrint(
        "Parameters -I0, -R, -L -T -M -MFP are optional.\n R: default is 1degree\n L: default is no limit\n "
        "T: "
        "defalut is 0 K.\n");
    ConsolePrint("-M: default is AE. AE: Azimuthal Equidistant map, EC: Equidistant cylindrical map\n");
    ConsolePrint("-MFPE: Mean free path length(A). Effect is depends on the distance from emitter\n");
    ConsolePrint("-MFPS: Mean free path length(A). Effect is depends on depth from surface\n");
    ConsolePrint(
        "-MFPES: Mean free path length(A). Effect is depends on the distance from emitter and depth from "
        "surface\n");
    ConsolePrint("-LL <*Lower limit value(A)of cluster> for test\n");
    ConsolePrint("--Scattering Calculation and Image calculation\n");
    ConsolePrint(
        "cmd_qvre -C <in_ClusterFileName> -F <in_EmittedWaveFileName> -P <in_PhaseShiftFileName> -W "
        "<out_ScatteredWaveFileName> -I <out_PatternFileName.xml_img>\n");
    ConsolePrint(" All options are available\n");
    ConsolePrint(
        "example: cmd_qvre -C cluster.xml_cl -F emitter.xml_emt -P phaseshift.xml_ph -W scatteredwave.xml_sf "
        "-I "
        "azmap.xml_img -R 0.5 \n");
}

void ZfCheckFileWritable(const std::string& name) {
    const std::ofstream file(name, std::ios::binary);
    if (file.fail()) throw ZfError("File Cannot Write " + name);
}
