#include "scattering/ZfFarField.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "foundation/Text.h"
#include "scattering/HarmonicBasis.h"
#include "scattering/SourceKernel.h"

namespace {

using Direction = ZfFarFieldDirections::Direction;

/// p_lm(z) for m = 0 .. n-1 and l = m .. n-1.
void FillThetaFactors(std::size_t n, double z, double* out) {
    const double* const gammas = HarmonicGammas();
    for (std::size_t m = 0; m < n; ++m) {
        double before = 0.0;
        double p = 1.0;
        for (std::size_t l = m; l < n; ++l) {
            *out++ = p;
            const double next = z * p - gammas[(l + 1) * (l + 2) / 2 + m] * before;
            before = p;
            p = next;
        }
    }
}

void FillPowers(std::size_t n, const Direction& u, double* out) {
    const double x = std::abs(u.x);
    const double y = std::abs(u.y);
    std::complex<double> power = 1.0;
    for (std::size_t m = 0; m < n; ++m) {
        *out++ = power.real();
        *out++ = power.imag();
        power = {power.real() * x - power.imag() * y, power.real() * y + power.imag() * x};
    }
}

/// Coefficients of one source: the limit (-i)^(l+1) of h1_l, and a factor of the caller's.
void PutCoefficients(const ZfFreeElectron& electron, std::int32_t size, double factor, double* out) {
    const std::vector<HarmonicPair> pairs = HarmonicPairs(electron.A);
    for (std::int32_t m = 0; m < size; ++m) {
        for (std::int32_t l = m; l < size; ++l, out += 4 * kFarFieldPack) {
            if (l >= electron.A.L) continue;
            const HarmonicPair& pair = pairs[HarmonicIndex(l, m)];
            const std::complex<double> c = factor * IPower(l + 1) * pair.c;
            const std::complex<double> d = factor * IPower(l + 1) * pair.d;
            out[0] = c.real();
            out[kFarFieldPack] = c.imag();
            out[2 * kFarFieldPack] = d.real();
            out[3 * kFarFieldPack] = d.imag();
        }
    }
}

/// Phase and thermal damping of one source; true if it is damped.
bool PutGeometry(const ZfFreeElectron& electron, const ZfFreeElectron& emitter, double* out) {
    const double k = emitter.k;
    const double* p = electron.position.Data();
    const double rho = std::sqrt(NormSquared(electron.position));
    const double u = electron.Uiso + emitter.Uiso;
    const bool damped = u > 0.0 && rho > 0.0;
    const double values[] = {k * p[0], k * p[1], k * p[2], damped ? -k * k * u : 0.0,
                             damped ? k * u / rho : 0.0};
    for (const double value : values) {
        *out = value;
        out += kFarFieldPack;
    }
    return damped;
}

FarFieldSources PackSources(std::span<const ZfFreeElectron> electrons, const ZfFreeElectron& emitter,
                            double dampingPerMetre) {
    FarFieldSources sources;
    for (const ZfFreeElectron& electron : electrons) sources.L = std::max(sources.L, electron.A.L);
    sources.packs = (electrons.size() + kFarFieldPack - 1) / kFarFieldPack;
    const std::size_t packCoefficients = HarmonicIndex(sources.L, 0) * 4 * kFarFieldPack;
    sources.coefficients.assign(sources.packs * packCoefficients, 0.0);
    sources.geometry.assign(sources.packs * 5 * kFarFieldPack, 0.0);
    for (std::size_t e = 0; e < electrons.size(); ++e) {
        const double rho = std::sqrt(NormSquared(electrons[e].position));
        PutCoefficients(
            electrons[e], sources.L, std::exp(-rho * dampingPerMetre),
            sources.coefficients.data() + e / kFarFieldPack * packCoefficients + e % kFarFieldPack);
        const bool damped =
            PutGeometry(electrons[e], emitter,
                        sources.geometry.data() + e / kFarFieldPack * 5 * kFarFieldPack + e % kFarFieldPack);
        sources.damped = sources.damped || damped;
    }
    return sources;
}

/// Amplitudes of the directions of a task from one set of sources.
void Sum(const FarFieldSources& sources, const ZfFarFieldDirections& all,
         const ZfFarFieldDirections::Task& task, std::vector<double>& scratch,
         ZfFarField::Amplitudes& result) {
    const auto n = static_cast<std::size_t>(sources.L);
    const std::size_t first = all.FirstDirection(task);
    const std::size_t count = all.EndDirection(task) - first;
    const std::size_t segments = task.endSegment - task.firstSegment;
    const std::size_t firstGroup = all.segments[task.firstSegment].firstGroup;
    const std::size_t endGroup = all.segments[task.endSegment - 1].endGroup;

    const std::size_t thetaSize = segments * HarmonicIndex(sources.L, 0);
    const std::size_t powersSize = (endGroup - firstGroup) * 2 * n;
    const std::size_t ordersSize = FarFieldOrdersSize(sources.L);
    const std::size_t sumsSize = count * 2 * kFarFieldPack;
    scratch.assign(thetaSize + powersSize + ordersSize + sumsSize, 0.0);
    double* const theta = scratch.data();
    double* const powers = theta + thetaSize;
    double* const orders = powers + powersSize;
    double* const sums = orders + ordersSize;

    const auto front = [&all](std::size_t group) -> const Direction& {
        return all.directions[all.groups[group].first];
    };
    for (std::size_t s = 0; s < segments; ++s)
        FillThetaFactors(n, front(all.segments[task.firstSegment + s].firstGroup).z,
                         theta + s * HarmonicIndex(sources.L, 0));
    for (std::size_t g = firstGroup; g < endGroup; ++g)
        FillPowers(n, front(g), powers + (g - firstGroup) * 2 * n);
    const FarFieldTables tables = {all, task, theta, powers};
    AddFarField(sources, tables, orders, sums);
    for (std::size_t i = 0; i < count; ++i) {
        double re = 0.0;
        double im = 0.0;
        for (std::size_t lane = 0; lane < kFarFieldPack; ++lane) {
            re += sums[i * 2 * kFarFieldPack + lane];
            im += sums[i * 2 * kFarFieldPack + kFarFieldPack + lane];
        }
        result[i] = {re, im};
    }
}

}  // namespace

bool ZfFarField::Serves(const ZfVectorFreeElectron& list) {
    if (list.electrons.empty() || list.LargestL() > kLargestKernelL) return false;
    const double k = list.electrons.front().k;
    return std::all_of(list.electrons.begin(), list.electrons.end(), [k](const ZfFreeElectron& electron) {
        return k * std::sqrt(NormSquared(electron.position)) <= kLargestKernelPhase;
    });
}

ZfFarField::ZfFarField(const ZfVectorFreeElectron& list) {
    const std::span<const ZfFreeElectron> electrons = list.electrons;
    const ZfFreeElectron& emitter = electrons.front();
    direct_ = PackSources(electrons.first(1), emitter, 0.0);
    scattered_ =
        PackSources(electrons.subspan(1), emitter, list.meanFreePath > 0.0 ? 2.0 / list.meanFreePath : 0.0);
}

void ZfFarField::Calculate(const ZfFarFieldDirections& all, const ZfFarFieldDirections::Task& task,
                           std::vector<double>& scratch, Amplitudes& direct, Amplitudes& scattered) const {
    Sum(direct_, all, task, scratch, direct);
    Sum(scattered_, all, task, scratch, scattered);
}
