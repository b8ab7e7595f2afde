#pragma once

#include <cstdint>

#include "foundation/Matrices.h"
#include "foundation/ZfSThCalc.h"

/// Blur of an angular table by a Gaussian on the sphere, for the finite angular resolution of an instrument.
///
/// The table has any quantity along its first index, which is carried along, and the polar direction along
/// its second: row y of H stands at z = cos(theta) = 2y/(H-1) - 1. It is blurred as the axially symmetric
/// function on the sphere that it describes, by the weight
///     exp(-sin^2(gamma) / (2 s^2)),   gamma the angle between two directions, s the width in radians,
/// and each sum is divided by the sum of its weights, so that a constant stays. A Legendre polynomial P_l of
/// z thus becomes a multiple of itself (Funk-Hecke theorem; C. Mueller, Spherical Harmonics, Springer 1966).
///
/// `out` and `in` are two tables. The state word counts rows, or lines in BlurAlongLine, which alone looks at
/// the stop word and leaves the lines beyond at 0. A width of 0 degrees copies. A table of one row describes
/// no sphere and ends in the error of a direction out of range.
class ZfBlurForSPattern final : public ZfSThCalc {
public:
    /// Ver5 of `input`, then BlurAlongLine.
    void Run() override;
    std::intptr_t Result() override { return static_cast<std::intptr_t>(rowCount); }

    /// Sum over the points of a square grid on the tangent plane, within 3 s, each taking the nearest row:
    /// the weight is that of the area on the plane. Widths above 1/3 radian reach beyond the hemisphere and
    /// throw ZfError.
    void Ver5(ZfFloatMatrix& out, const ZfFloatMatrix& in, double degrees);

    /// Sum over rows and azimuths within 4 s, weighted by the area on the sphere. Widths above 22.5 degrees
    /// reach beyond the hemisphere, where the weight rises again.
    void Ver6(ZfFloatMatrix& out, const ZfFloatMatrix& in, double degrees);

    /// One-dimensional blur along the first index: `step` from line to line, in the unit of `sigma`. Copies
    /// if either is 0 or negative.
    void BlurAlongLine(ZfFloatMatrix& out, const ZfFloatMatrix& in, double step, double sigma);

    double sigmaDeg = 0.0;  ///< width on the sphere, degrees
    double lineStep = 0.0;
    double lineSigma = 0.0;
    ZfFloatMatrix input;
    ZfFloatMatrix output;
    std::int64_t rowCount = 0;  ///< what the state word will come to
};
