#include "multiple/Gmres.h"

#include <cmath>
#include <utility>

namespace qvre {

namespace {

using Complex = std::complex<double>;

// Written out: operator* of std::complex also tests every product for NaN. Four sums a vector, in a fixed
// order, keep the additions from waiting for each other.

/// sum of conj(a) b
Complex Product(const Gmres::Vector& a, const Gmres::Vector& b) {
    constexpr std::size_t kSums = 4;
    double re[kSums] = {};
    double im[kSums] = {};
    for (std::size_t i = 0; i < a.size(); ++i) {
        re[i % kSums] += a[i].real() * b[i].real() + a[i].imag() * b[i].imag();
        im[i % kSums] += a[i].real() * b[i].imag() - a[i].imag() * b[i].real();
    }
    return {(re[0] + re[1]) + (re[2] + re[3]), (im[0] + im[1]) + (im[2] + im[3])};
}

/// y += f x
void AddMultiple(Gmres::Vector& y, Complex f, const Gmres::Vector& x) {
    for (std::size_t i = 0; i < y.size(); ++i)
        y[i] += Complex(f.real() * x[i].real() - f.imag() * x[i].imag(),
                        f.real() * x[i].imag() + f.imag() * x[i].real());
}

void Divide(Gmres::Vector& x, double norm) {
    for (Complex& value : x) value /= norm;
}

}  // namespace

double Norm(const Gmres::Vector& x) {
    return std::sqrt(Product(x, x).real());
}

Gmres::Gmres(Vector rightSide, double target, std::size_t largestSteps)
    : start_(Norm(rightSide)),
      residual_(start_),
      target_(target),
      largestSteps_(largestSteps),
      done_(residual_ <= target || largestSteps == 0) {
    if (residual_ > 0.0) Divide(rightSide, residual_);
    projected_.emplace_back(residual_);
    basis_.push_back(std::move(rightSide));
}

void Gmres::Take(Vector product) {
    Vector column;
    for (const Vector& q : basis_) {  // modified Gram-Schmidt
        column.push_back(Product(q, product));
        AddMultiple(product, -column.back(), q);
    }
    const double rest = Norm(product);
    for (std::size_t i = 0; i < cosines_.size(); ++i) {
        const Complex upper = column[i];
        column[i] = cosines_[i] * upper + std::conj(sines_[i]) * column[i + 1];
        column[i + 1] = cosines_[i] * column[i + 1] - sines_[i] * upper;
    }
    // The rotation that takes (diagonal, rest) to (., 0).
    const Complex diagonal = column.back();
    const double length = std::hypot(std::abs(diagonal), rest);
    const bool real = std::abs(diagonal) == 0.0;
    const Complex phase = real ? Complex(1.0) : diagonal / std::abs(diagonal);
    const double cosine = length > 0.0 ? std::abs(diagonal) / length : 1.0;
    const Complex sine = length > 0.0 ? std::conj(phase) * (rest / length) : Complex(0.0);
    column.back() = phase * length;
    columns_.push_back(std::move(column));
    cosines_.push_back(cosine);
    sines_.push_back(sine);
    projected_.push_back(-sine * projected_.back());
    projected_[projected_.size() - 2] *= cosine;
    residual_ = std::abs(projected_.back());
    // A rest of nothing means that the solution lies in the basis.
    done_ = !(residual_ > target_) || !(rest > 0.0) || cosines_.size() == largestSteps_;
    if (done_) return;
    Divide(product, rest);
    basis_.push_back(std::move(product));
}

Gmres::Vector Gmres::Solution() const {
    const std::size_t steps = Steps();
    Vector factors(projected_.begin(), projected_.begin() + static_cast<std::ptrdiff_t>(steps));
    for (std::size_t i = steps; i-- > 0;) {
        for (std::size_t j = i + 1; j < steps; ++j) factors[i] -= columns_[j][i] * factors[j];
        factors[i] /= columns_[i][i];
    }
    Vector x(basis_.front().size());
    for (std::size_t i = 0; i < steps; ++i) AddMultiple(x, factors[i], basis_[i]);
    return x;
}

}  // namespace qvre
