#include "scattering/FarField.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "foundation/Text.h"
#include "scattering/HarmonicBasis.h"
#include "scattering/SourceKernel.h"

namespace qvre {

namespace {

using Direction = FarFieldDirections::Direction;

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
        for (std::int32_t l = m; l < size; ++l, out += kFarFieldValues * kFarFieldPack) {
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

double EscapeOf(const ZfFreeElectron& electron, const SurfaceEscape& escape) {
    if (!(escape.meanFreePath > 0.0)) return 0.0;
    const double depth = std::max(0.0, escape.surface - electron.position.Data()[2]);
    return depth > 0.0 ? -depth / (2.0 * escape.meanFreePath) : 0.0;
}

/// Phase and thermal damping of one source; true if it is damped.
bool PutGeometry(const ZfFreeElectron& electron, const ZfFreeElectron& emitter, double escape, double* out) {
    const double k = emitter.k;
    const double* p = electron.position.Data();
    const double rho = std::sqrt(NormSquared(electron.position));
    const double u = electron.Uiso + emitter.Uiso;
    const bool damped = u > 0.0 && rho > 0.0;
    const double values[kFarFieldGeometry] = {
        k * p[0], k * p[1], k * p[2], damped ? -k * k * u : 0.0, damped ? k * u / rho : 0.0, escape};
    for (const double value : values) {
        *out = value;
        out += kFarFieldPack;
    }
    return damped;
}

/// Room for sources in places 0 to `places` - 1 of each wave, all zero.
FarFieldSources Empty(std::int32_t L, std::size_t waves, std::size_t places) {
    FarFieldSources sources;
    sources.L = L;
    sources.waves = waves;
    sources.packs = (places + kFarFieldPack - 1) / kFarFieldPack;
    sources.coefficients.resize(waves * sources.packs * HarmonicIndex(L, 0) * kFarFieldValues *
                                kFarFieldPack);
    sources.geometry.resize(sources.packs * kFarFieldGeometry * kFarFieldPack);
    return sources;
}

double* CoefficientsAt(FarFieldSources& sources, std::size_t wave, std::size_t place) {
    const std::size_t pack = wave * sources.packs + place / kFarFieldPack;
    return sources.coefficients.data() +
           pack * HarmonicIndex(sources.L, 0) * kFarFieldValues * kFarFieldPack + place % kFarFieldPack;
}

void Place(FarFieldSources& sources, std::size_t place, const ZfFreeElectron& electron,
           const ZfFreeElectron& emitter, const SurfaceEscape& escape) {
    const std::size_t pack = place / kFarFieldPack * kFarFieldGeometry * kFarFieldPack;
    const double loss = EscapeOf(electron, escape);
    const bool damped = PutGeometry(electron, emitter, loss, &sources.geometry[pack + place % kFarFieldPack]);
    sources.damped = sources.damped || damped;
    sources.escaping = sources.escaping || loss != 0.0;
    sources.displaced = sources.displaced || NormSquared(electron.position) != 0.0;
}

/// The emitters of the waves, which share their place, fill one pack side by side.
FarFieldSources PackEmitters(std::span<const ZfVectorFreeElectron> waves, const SurfaceEscape& escape) {
    std::int32_t L = 0;
    for (const ZfVectorFreeElectron& wave : waves) L = std::max(L, wave.electrons.front().A.L);
    FarFieldSources sources = Empty(L, 1, waves.size());
    const ZfFreeElectron& emitter = waves.front().electrons.front();
    for (std::size_t w = 0; w < waves.size(); ++w) {
        Place(sources, w, emitter, emitter, escape);
        PutCoefficients(waves[w].electrons.front(), L, 1.0, CoefficientsAt(sources, 0, w));
    }
    return sources;
}

FarFieldSources PackScatterers(std::span<const ZfVectorFreeElectron> waves, const SurfaceEscape& escape) {
    std::int32_t L = 0;
    for (const ZfVectorFreeElectron& wave : waves)
        for (const ZfFreeElectron& electron : std::span(wave.electrons).subspan(1))
            L = std::max(L, electron.A.L);
    const std::span<const ZfFreeElectron> first = waves.front().electrons;
    FarFieldSources sources = Empty(L, waves.size(), first.size() - 1);
    for (std::size_t place = 0; place + 1 < first.size(); ++place)
        Place(sources, place, first[place + 1], first.front(), escape);
    for (std::size_t w = 0; w < waves.size(); ++w) {
        const double damping = waves[w].meanFreePath > 0.0 ? 2.0 / waves[w].meanFreePath : 0.0;
        for (std::size_t place = 0; place + 1 < first.size(); ++place) {
            const ZfFreeElectron& electron = waves[w].electrons[place + 1];
            PutCoefficients(electron, L, std::exp(-std::sqrt(NormSquared(electron.position)) * damping),
                            CoefficientsAt(sources, w, place));
        }
    }
    return sources;
}

/// Fills the tables of a task's directions for one table size, and lets the kernel add up. Returns the sums,
/// which stand in `scratch`.
const double* Sum(const FarFieldSources& sources, const FarFieldDirections& all,
                  const FarFieldDirections::Task& task, std::vector<double>& scratch) {
    const auto n = static_cast<std::size_t>(sources.L);
    const std::size_t count = all.EndDirection(task) - all.FirstDirection(task);
    const std::size_t segments = task.endSegment - task.firstSegment;
    const std::size_t firstGroup = all.segments[task.firstSegment].firstGroup;
    const std::size_t endGroup = all.segments[task.endSegment - 1].endGroup;

    const std::size_t thetaSize = segments * HarmonicIndex(sources.L, 0);
    const std::size_t powersSize = (endGroup - firstGroup) * 2 * n;
    const std::size_t kernelSize = FarFieldScratchSize(sources.L, count);
    const std::size_t sumsSize = sources.waves * count * 2 * kFarFieldPack;
    const std::size_t size = thetaSize + powersSize + kernelSize + sumsSize;
    if (scratch.size() < size) scratch.resize(size);
    double* const theta = scratch.data();
    double* const powers = theta + thetaSize;
    double* const kernel = powers + powersSize;
    double* const sums = kernel + kernelSize;

    const auto front = [&all](std::size_t group) -> const Direction& {
        return all.directions[all.groups[group].first];
    };
    for (std::size_t s = 0; s < segments; ++s)
        FillThetaFactors(n, front(all.segments[task.firstSegment + s].firstGroup).z,
                         theta + s * HarmonicIndex(sources.L, 0));
    for (std::size_t g = firstGroup; g < endGroup; ++g)
        FillPowers(n, front(g), powers + (g - firstGroup) * 2 * n);
    std::fill(sums, sums + sumsSize, 0.0);
    AddFarField(sources, {all, task, theta, powers}, kernel, sums);
    return sums;
}

bool HasSameGeometry(const ZfFreeElectron& a, const ZfFreeElectron& b) {
    return std::equal(a.position.Data(), a.position.Data() + 3, b.position.Data()) && a.Uiso == b.Uiso;
}

}  // namespace

bool FarField::Serves(const ZfVectorFreeElectron& list) {
    if (list.electrons.empty() || list.LargestL() > kLargestKernelL) return false;
    const double k = list.electrons.front().k;
    return std::all_of(list.electrons.begin(), list.electrons.end(), [k](const ZfFreeElectron& electron) {
        return k * std::sqrt(NormSquared(electron.position)) <= kLargestKernelPhase;
    });
}

bool FarField::CanShare(const ZfVectorFreeElectron& a, const ZfVectorFreeElectron& b) {
    return std::equal(a.electrons.begin(), a.electrons.end(), b.electrons.begin(), b.electrons.end(),
                      HasSameGeometry) &&
           a.electrons.front().k == b.electrons.front().k;
}

FarField::FarField(std::span<const ZfVectorFreeElectron> waves, const SurfaceEscape& escape)
    : waves_(waves.size()), direct_(PackEmitters(waves, escape)), scattered_(PackScatterers(waves, escape)) {}

void FarField::Calculate(const FarFieldDirections& all, const FarFieldDirections::Task& task,
                         std::vector<double>& scratch, std::vector<Amplitudes>& result) const {
    const std::size_t count = all.EndDirection(task) - all.FirstDirection(task);
    constexpr std::size_t kDirection = 2 * kFarFieldPack;
    result.resize(waves_);
    const double* const direct = Sum(direct_, all, task, scratch);
    for (std::size_t w = 0; w < waves_; ++w) {
        for (std::size_t i = 0; i < count; ++i)
            result[w].direct[i] = {direct[i * kDirection + w], direct[i * kDirection + kFarFieldPack + w]};
    }
    const double* sums = Sum(scattered_, all, task, scratch);
    for (std::size_t w = 0; w < waves_; ++w) {
        for (std::size_t i = 0; i < count; ++i, sums += kDirection) {
            double re = 0.0;
            double im = 0.0;
            for (std::size_t place = 0; place < kFarFieldPack; ++place) {
                re += sums[place];
                im += sums[kFarFieldPack + place];
            }
            result[w].scattered[i] = {re, im};
        }
    }
}

}  // namespace qvre
