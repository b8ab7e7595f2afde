#pragma once

#include <complex>
#include <cstddef>
#include <vector>

namespace qvre {

/// The generalised minimal residual method (Y. Saad, M. H. Schultz, SIAM J. Sci. Stat. Comput. 7, 856 (1986))
/// for one complex system A x = b from x = 0, driven from outside, so that several systems can share the
/// products with A:
///
///     while (!gmres.Done()) gmres.Take(A * gmres.Last());
class Gmres {
public:
    using Vector = std::vector<std::complex<double>>;

    /// Done once the residual is at most `target`, in the 2-norm, or after `largestSteps`.
    Gmres(Vector rightSide, double target, std::size_t largestSteps);

    bool Done() const { return done_; }
    double RelativeResidual() const { return start_ > 0.0 ? residual_ / start_ : 0.0; }
    std::size_t Steps() const { return cosines_.size(); }

    /// The vector to multiply next.
    const Vector& Last() const { return basis_.back(); }
    void Take(Vector product);

    Vector Solution() const;

private:
    std::vector<Vector> basis_;    ///< orthonormal
    std::vector<Vector> columns_;  ///< of the triangular factor of the Hessenberg matrix
    std::vector<double> cosines_;  ///< of the rotations that made it
    Vector sines_;
    Vector projected_;  ///< the right side, rotated
    double start_;      ///< size of the right side
    double residual_;
    double target_;
    std::size_t largestSteps_;
    bool done_;
};

double Norm(const Gmres::Vector& x);

}  // namespace qvre
