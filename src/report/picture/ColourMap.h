#pragma once

#include "foundation/Words.h"

namespace qvre {

/// Red, green and blue of the sRGB colour space (IEC 61966-2-1), each from 0 to 1.
struct Colour {
    double red = 0.0;
    double green = 0.0;
    double blue = 0.0;
};

enum class ColourMap {
    kViridis,    ///< perceptually uniform, dark to bright
    kGrey,       ///< from black to white in equal steps of the CIE lightness
    kDiverging,  ///< blue over white to red, of equal lightness on both sides
};

template <>
inline constexpr auto kWords<ColourMap> = std::to_array<Word<ColourMap>>(
    {{"viridis", ColourMap::kViridis}, {"grey", ColourMap::kGrey}, {"diverging", ColourMap::kDiverging}});

/// Colour of a fraction of the range; beyond [0, 1] that of the nearer end.
///
/// Viridis: S. van der Walt, N. Smith, "A better default colormap for Matplotlib" (SciPy 2015), here through
/// 20 of its colours. Diverging: K. Moreland, "Diverging Color Maps for Scientific Visualization", Proc. ISVC
/// 2009, LNCS 5876, 92: from (M, s, h) = (80, 1.08, -1.1) to (80, 1.08, 0.5) over white of M = 88, in the
/// polar form of CIELAB.
Colour ColourAt(ColourMap map, double fraction);

}  // namespace qvre
