#pragma once

#include <cstdint>
#include <vector>

#include "foundation/Vec3.h"
#include "foundation/Words.h"
#include "prepare/emission/DipoleEmission.h"

namespace qvre {

/// In which axes the vectors of the light are given, that is, who stands still with it.
enum class LightFrame : std::uint8_t {
    kSample,   ///< x, y, z of the sample: the light stays with it, and the analyser moves
    kAnalyser  ///< theta-hat, phi-hat and k-hat of each direction: source and analyser stand, the sample
               ///< turns
};

template <>
inline constexpr auto kWords<LightFrame> =
    std::to_array<Word<LightFrame>>({{"sample", LightFrame::kSample}, {"analyser", LightFrame::kAnalyser}});

struct Light {
    std::vector<LightVector> parts;  ///< incoherent
    LightFrame frame = LightFrame::kSample;
};

/// A part of the light in the axes of the sample, for electrons that leave along the unit vector `k`. With
/// the polar angle theta and azimuth phi of k, the axes of the analyser are
///     theta-hat = (cos theta cos phi, cos theta sin phi, -sin theta),
///     phi-hat   = (-sin phi, cos phi, 0),
///     k-hat     = k = theta-hat x phi-hat;
/// along the surface normal phi counts as 0.
LightVector InSample(const LightVector& part, LightFrame frame, const Vec3& k);

}  // namespace qvre
