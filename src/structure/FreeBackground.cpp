#include "structure/FreeBackground.h"

#include <Eigen/QR>
#include <cmath>

namespace qvre {

namespace {

/// The changes of a polynomial in the polar angle, or of the mean of each ring.
Eigen::MatrixXd ChangesOf(const std::vector<double>& theta, const BackgroundModel& model) {
    const PolarRings rings(theta);
    const Eigen::Index count = model.degree ? *model.degree + 1 : static_cast<Eigen::Index>(rings.Count());
    Eigen::MatrixXd changes = Eigen::MatrixXd::Zero(std::ssize(theta), count);
    constexpr double kRange_deg = 90.0;
    for (std::size_t i = 0; i < theta.size(); ++i) {
        const auto row = static_cast<Eigen::Index>(i);
        if (!model.degree) {
            changes(row, static_cast<Eigen::Index>(rings.ringOf[i])) = 1.0;
            continue;
        }
        for (Eigen::Index k = 0; k < count; ++k)
            changes(row, k) = std::pow(theta[i] / kRange_deg, static_cast<double>(k));
    }
    return changes;
}

}  // namespace

FreeBackground::FreeBackground(const std::vector<double>& theta, const std::vector<double>& chi,
                               const Eigen::VectorXd& root, const std::optional<BackgroundModel>& model) {
    if (!model) return;
    Eigen::MatrixXd changes = ChangesOf(theta, *model);
    for (Eigen::Index i = 0; i < changes.rows(); ++i)
        changes.row(i) *= root[i] * (1.0 + chi[static_cast<std::size_t>(i)]);
    const Eigen::ColPivHouseholderQR<Eigen::MatrixXd> qr(changes);
    directions_ = Eigen::MatrixXd(qr.householderQ() * Eigen::MatrixXd::Identity(changes.rows(), qr.rank()));
}

Eigen::VectorXd FreeBackground::WithoutIt(const Eigen::VectorXd& residuals) const {
    if (directions_.size() == 0) return residuals;
    return residuals - directions_ * (directions_.transpose() * residuals);
}

}  // namespace qvre
