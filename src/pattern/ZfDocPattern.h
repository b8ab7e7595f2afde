#pragma once

#include <array>
#include <complex>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "foundation/ZfNotifyTerminate.h"
#include "input/Fluctuation.h"
#include "input/ZfDebye.h"
#include "pattern/ZfSphericalMapping.h"
#include "scattering/FarFieldDirections.h"
#include "scattering/SourceLimits.h"
#include "scattering/ZfScatteringData.h"

/// One pattern calculation: settings, the map with its planes, and the wave list at work. A subclass fixes
/// the map.
///
/// With A0 the direct and As the scattered amplitude of a record, the planes hold the sums over all records
/// of 0: |A0 + As|^2, 1: |A0|^2, 2: |As|^2, 3: |i A0 + As|^2; planes 4 and 5 stay zero. Nothing is
/// normalised, and every active record counts with weight 1.
class ZfDocPattern {
public:
    ZfDocPattern() = default;
    ZfDocPattern(const ZfDocPattern&) = default;
    ZfDocPattern& operator=(const ZfDocPattern&) = default;
    virtual ~ZfDocPattern() = default;

    /// Prepares, then adds up all active records. Stops quietly when the notifier says so. Throws ZfError.
    virtual void Calculate(ZfNotifyTerminate& notifier, ZfScatteringData& data,
                           const qvre::Fluctuation& fluctuation, const ZfDebye& debye);
    /// A new map with zeroed planes.
    virtual void BuildMapping() = 0;

    /// Checks the combination of method and type, sets the orientation, builds the map and applies the
    /// thermal model to both lists of every record; the displacements stay in `data`.
    void PrepareCalculation(ZfScatteringData& data, const qvre::Fluctuation& fluctuation,
                            const ZfDebye& debye);

    /// All records of the data take part.
    void ActivateAll(std::size_t records);

    std::int32_t patternType = 0;
    std::int32_t planeCount = 6;
    std::array<double, 3> orientationAngles{};  ///< sample orientation, degrees
    double emitterPhase = 0.0;                  ///< degrees, turned onto the emitter's coefficients
    double clusterLimit = 0.0;          ///< m from the emitter; atoms at it and beyond are left out; 0: none
    double clusterDepthLimit = 0.0;     ///< m; atoms above this z are left out; 0: none
    double clusterLowerLimit = 0.0;     ///< m from the emitter; atoms at it and below are left out
    double meanFreePath = 0.0;          ///< m
    bool mfpByEmitterDistance = false;  ///< damp by meanFreePath
    bool mfpByDepth = false;            ///< carried only
    std::vector<std::uint32_t> activeRecords;  ///< one bit a record
    std::int64_t activeRecordCount = 0;
    std::int64_t recordsDone = 0;  ///< of those that take part, in a running calculation
    ZfSphericalMapping mapping;
    ZfVectorFreeElectron directWave;     ///< the record's list cut to its emitter
    ZfVectorFreeElectron scatteredWave;  ///< the record's list within the limits; the amplitudes read it
    std::int32_t lOverride = 0;   ///< table size of the scattered amplitude; 0: the largest of the list
    ZfLDoubleMatrix orientation;  ///< 3x3

protected:
    bool IsActive(std::int64_t record) const;
    /// Whether the limits take an entry out of the list.
    bool IsLeftOut(const ZfFreeElectron& source) const {
        return qvre::SourceLimits{clusterLimit, clusterDepthLimit, clusterLowerLimit}.LeaveOut(source);
    }
    /// Makes the wave lists of a record: the filtered one keeps the order of the entries.
    void SetUpRecord(const ZfScatteringData& data, std::int64_t record);

    using MappingParameters = std::array<double, 2>;
    /// A new map; built once for the same parameters, for a run asks for one before it announces itself, and
    /// once more in each preparation.
    void RenewMapping(const MappingParameters& parameters, const std::function<ZfSphericalMapping()>& create);

private:
    /// Of the pixels inside the map, in the frame of the cluster; the index is the place in a plane.
    qvre::FarFieldDirections Directions() const;
    /// The record's filtered list and those of the active records behind it that share its far field.
    std::vector<ZfVectorFreeElectron> WavesFrom(const ZfScatteringData& data, std::int64_t record);
    void AddWaves(ZfNotifyTerminate& notifier, const qvre::FarFieldDirections& directions,
                  std::span<const ZfVectorFreeElectron> waves);
    void AddWavePixelByPixel(ZfNotifyTerminate& notifier, const qvre::FarFieldDirections& directions,
                             const ZfVectorFreeElectron& wave);
    void AddPixel(std::size_t pixel, std::complex<double> direct, std::complex<double> scattered);

    ZfSphericalMapping builtMapping_;
    MappingParameters mappingParameters_{};
};

struct ZfDocPattern_AzimuthalEquidistant final : ZfDocPattern {
    void BuildMapping() override {
        RenewMapping({static_cast<double>(planeCount), resolution},
                     [this] { return CreateAzimuthalEquidistantMapping(planeCount, resolution); });
    }

    double resolution = 1.0;  ///< degrees
};

struct ZfDocPattern_EquidistantCylindrical final : ZfDocPattern {
    void BuildMapping() override {
        RenewMapping({static_cast<double>(planeCount), resolution},
                     [this] { return CreateEquidistantCylindricalMapping(planeCount, resolution); });
    }

    double resolution = 1.0;  ///< degrees
};

/// What a display-type analyser shows: the gnomonic map.
struct ZfDocPattern_Diana final : ZfDocPattern {
    void BuildMapping() override { mapping = CreateGnomonicMapping(planeCount, halfAngle, imageSize); }

    double halfAngle = 60.0;  ///< degrees
    std::int32_t imageSize = 0;
};

struct ZfDocPattern_StereoProjection final : ZfDocPattern {
    void BuildMapping() override { mapping = CreateStereographicMapping(planeCount, halfAngle, imageSize); }

    double halfAngle = 90.0;  ///< degrees
    std::int32_t imageSize = 0;
};

struct ZfDocPattern_Orthographic final : ZfDocPattern {
    void BuildMapping() override { mapping = CreateOrthographicMapping(planeCount, imageSize); }

    std::int32_t imageSize = 0;
};

struct ZfDocPattern_OneDimensional final : ZfDocPattern {
    void BuildMapping() override { mapping = CreateOneDimensionalMapping(planeCount, resolution); }

    double resolution = 1.0;  ///< degrees
    double maxAngle = 180.0;  ///< degrees; carried only
};
