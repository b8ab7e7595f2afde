#pragma once

#include <vector>

namespace qvre {

/// How well two modulation functions agree, chi_b after it was multiplied by `scale` for `scaledR`.
struct Agreement {
    double R = 0.0;  ///< sum w (chi_a - chi_b)^2 / sum w (chi_a^2 + chi_b^2): 0 equal, 1 unrelated, 2 opposed
    double absoluteR = 0.0;    ///< sum w |chi_a - chi_b| / sum w (|chi_a| + |chi_b|): 0 equal, 1 opposed
    double scale = 0.0;        ///< that makes R smallest; 0 when no positive one lowers it below 1
    double scaledR = 0.0;      ///< R with the scale
    double correlation = 0.0;  ///< Pearson's coefficient, weighted
};

/// Agreement of two functions on the same points with weights above 0. R is the reliability factor of
/// photoelectron diffraction (D. P. Woodruff, A. M. Bradshaw, Rep. Prog. Phys. 57, 1029 (1994)), after the
/// normalised mean square of M. A. Van Hove, S. Y. Tong, M. H. Elconin, Surf. Sci. 64, 85 (1977). With
///     c = sum w a b / sqrt(sum w a^2 sum w b^2)
/// the scale sqrt(sum w a^2 / sum w b^2) minimises R, to 1 - c. Like R it treats a and b alike; the scale of
/// a least-squares fit would shrink with the noise of b. The factor of absolute differences is R1 of Van
/// Hove, Tong and Elconin with a norm that treats a and b alike; single large deviations weigh less in it.
///
/// Throws ZfError when there are fewer than 2 points, or one of the functions is constant.
Agreement CompareModulations(const std::vector<double>& a, const std::vector<double>& b,
                             const std::vector<double>& weight);

}  // namespace qvre
