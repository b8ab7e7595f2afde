#pragma once

#include <cstdint>
#include <string>

/// What the command line asks for.
struct ZfCmdParameters {
    std::string clusterFile = "cluster.xml_cl";
    std::string emitterFile = "emitter.xml_emt";
    std::string phaseShiftFile = "phaseshift.xml_ph";
    std::string scatteredWaveFile =
        "scatteredwave.xml_sf";  ///< output of the scattering stage, or input of the images
    std::string imageFile = "image.xml";
    std::string i0ImageFile = "_i0.xml";
    std::string fluctuationFile = "fluctuation.xml_flu";
    bool runRequested = false;  ///< false: print the usage
    bool scatteringRequested = false;
    bool imageRequested = false;
    bool i0Requested = false;
    double angularResolution = 1.0;  ///< degrees a pixel
    double clusterLimit = 0.0;       ///< m; 0: none
    double clusterLowerLimit = 0.0;  ///< m
    double temperature = 0.0;   ///< number in the -T argument; the fluctuation file tells the temperature
    double meanFreePath = 0.0;  ///< m
    bool mfpByEmitterDistance = false;
    bool mfpByDepth = false;
    std::int32_t mappingMethod = 0;     ///< 0 azimuthal equidistant, 1 equidistant cylindrical
    std::int32_t scatteringMethod = 2;  ///< 0 single, 1 slow multiple, 2 multiple
};

/// Visits every argument in turn, argv[0] and the values included: a value is tested as an option itself. An
/// unknown argument is skipped, a number that is none reads as 0. Throws ZfError for a bad method.
void ZfParseCommandLine(ZfCmdParameters& parameters, int argumentCount, const char* const* arguments);

void ZfPrintUsage();

/// Creates the file, or empties it. Throws ZfError if it cannot be written.
void ZfCheckFileWritable(const std::string& name);
