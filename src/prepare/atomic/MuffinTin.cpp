#include "prepare/atomic/MuffinTin.h"

#include <cmath>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

double Total(const SuperposedField& field, ExchangeKind exchange, double energy, double r) {
    const double v = field.Potential(r);
    return v + ExchangePotential(exchange, energy - v, field.Density(r));
}

/// Integral of 4 pi r^2 V from sphere to cell, by Simpson's rule: the fields are smooth there.
double ShellIntegral(const MuffinTinSite& site, ExchangeKind exchange, double energy) {
    constexpr int kIntervals = 40;
    const double step = (site.cellRadius - site.radius) / kIntervals;
    double sum = 0.0;
    for (int i = 0; i <= kIntervals; ++i) {
        const double r = site.radius + i * step;
        const double weight = i == 0 || i == kIntervals ? 1.0 : i % 2 == 1 ? 4.0 : 2.0;
        sum += weight * r * r * Total(site.field, exchange, energy, r);
    }
    return 4.0 * kPi * sum * step / 3.0;
}

double ShellVolume(const MuffinTinSite& site) {
    return 4.0 / 3.0 * kPi * (std::pow(site.cellRadius, 3) - std::pow(site.radius, 3));
}

}  // namespace

double ExchangePotential(ExchangeKind kind, double kinetic, double density) {
    switch (kind) {
        case ExchangeKind::kFurnessMcCarthy:
            return 0.5 * (kinetic - std::sqrt(kinetic * kinetic + 4.0 * kPi * density));
        case ExchangeKind::kSlater:
            return -1.5 * std::cbrt(3.0 * density / kPi);
        case ExchangeKind::kNone:
            break;
    }
    return 0.0;
}

double MuffinTinZero(const std::vector<MuffinTinSite>& sites, ExchangeKind exchange, double kinetic) {
    constexpr int kMostRounds = 200;
    constexpr double kConverged = 1e-12;
    double volume = 0.0;
    for (const MuffinTinSite& site : sites) {
        if (!(site.cellRadius > site.radius) || !(site.weight > 0.0))
            throw ZfError(
                "The muffin-tin sphere of an atom does not fit into its cell: take a smaller radius");
        volume += site.weight * ShellVolume(site);
    }
    if (sites.empty()) throw ZfError("A muffin-tin zero needs at least one species");

    double zero = 0.0;
    for (int round = 0; round < kMostRounds; ++round) {
        double sum = 0.0;
        for (const MuffinTinSite& site : sites)
            sum += site.weight * ShellIntegral(site, exchange, kinetic + zero);
        const double before = zero;
        zero = sum / volume;
        if (std::abs(zero - before) < kConverged) break;
    }
    return zero;
}

double MuffinTinPotential::operator()(double r) const {
    return Total(*field, exchange, kinetic + zero, r) - zero;
}

}  // namespace qvre
