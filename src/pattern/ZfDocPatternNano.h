#pragma once

#include <array>
#include <complex>
#include <vector>

#include "input/ZfPhaseShiftDocument.h"
#include "pattern/RadialWave.h"
#include "pattern/ZfDocPattern.h"

/// The wave itself, on a plane through the cluster, instead of its far field.
///
/// Pixel (i, j) is the point at firstMin + i gridStep on the first axis, secondMin + j gridStep on the second
/// and planeHeight on the normal. Within 0.68 R of an atom of radius R the wave is that atom's radial
/// expansion (RadialWave), made to join the field around the atom: the waves of all other sources of the
/// list, expanded around it by the data's own expansion and tolerance, plus what the atom itself sends out.
/// Anywhere else it is the sum of the free waves. The emitter's surroundings count as free space, and the
/// first atom of the list decides where two overlap.
///
/// Plane 0 holds the sum over the active records; planes 1 and 2 stay zero. With w the wave times
/// exp(-i phaseAngle) and s = 1, or the distance from the origin in 1e-11 m, a record adds its Ratio times
/// Re w s, Im w s or |w|^2 s^2, cut to -1000 .. 1000 before the factor.
class ZfDocPatternNano : public ZfDocPattern {
public:
    /// A record without phase-shift indices, as a file gives it, gets them by energy and name. Stops quietly
    /// when the notifier says so. Throws ZfError; also where the plane cuts an atom of which the record has
    /// no solution tables.
    void Calculate(ZfNotifyTerminate& notifier, ZfScatteringData& data, const qvre::Fluctuation& fluctuation,
                   const ZfDebye& debye) override;
    void BuildMapping() override;

    double firstMin = -1e-9;  ///< m
    double firstMax = 1e-9;
    double secondMin = -1e-9;
    double secondMax = 1e-9;
    double gridStep = 1e-11;      ///< m
    double phaseAngle = 0.0;      ///< rad
    double planeHeight = 0.0;     ///< m, on the normal
    std::int32_t outputMode = 0;  ///< 0 real part, 1 imaginary part, other: intensity
    /// First axis, second axis and normal: 1 is y, z, x; 2 is z, x, y; any other value x, y, z.
    std::int32_t sliceAxis = 0;
    bool scaleByDistance = false;
    const ZfPhaseShiftDocument* pDocScatteringPaseShift_ = nullptr;  ///< not owned

private:
    using Point = std::array<double, 3>;

    /// An atom that the plane cuts near enough to its centre.
    struct Atom {
        Point position;
        double reach;  ///< m: nearer than this the radial expansion counts
        qvre::RadialWave wave;
    };

    std::array<std::size_t, 3> Axes() const;
    std::vector<Atom> AtomsInPlane(ZfNotifyTerminate& notifier, ZfScatteringData& data,
                                   const ZfScatteringRecord& record);
    ZfFreeElectron FieldAround(ZfScatteringData& data, std::int32_t entry,
                               const qvre::PhaseShiftRecord& phaseShift);
    std::complex<double> WaveAt(const Point& point, const std::vector<Atom>& atoms) const;
    double Output(std::complex<double> wave, const Point& point) const;
    void AddRecord(ZfNotifyTerminate& notifier, const std::vector<Atom>& atoms, double factor);
};
