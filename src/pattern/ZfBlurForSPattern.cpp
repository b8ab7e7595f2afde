#include "pattern/ZfBlurForSPattern.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "foundation/Constants.h"
#include "foundation/Truncate.h"
#include "foundation/ZfError.h"
#include "pattern/FuncGauss.h"
#include "scattering/SphericalHarmonics.h"

using namespace qvre;

namespace {

constexpr std::int32_t kStepsPerSigma = 20;  // at least

/// z of a row, and the sine of its polar angle.
struct RowDirection {
    double z;
    double s;
};

/// Also refuses not-a-number, which the spacing of a single row leads to.
RowDirection DirectionOf(std::int32_t row, double spacing, const char* failure) {
    const double z = row * spacing - 1.0;
    if (!(z >= -1.0 && z <= 1.0)) throw ZfError(failure);
    return {z, std::sqrt(1.0 - z * z)};
}

double RowSpacing(const ZfFloatMatrix& table) {
    return 2.0 / (table.RowSize - 1.0);
}

/// Area between the circles half a row above and below, for one step of azimuth; half a row at the poles.
double AreaOf(std::int32_t row, std::int32_t rows, double z, double spacing, double azimuthStep) {
    if (row == 0 || row == rows - 1) {
        const double edge = 1.0 - spacing / 2;
        return std::sqrt(1.0 - edge * edge) * azimuthStep * std::sqrt(spacing) * 0.5;
    }
    const double below = z - spacing / 2;
    const double above = z + spacing / 2;
    const double ra = std::sqrt(1.0 - below * below);
    const double rb = std::sqrt(1.0 - above * above);
    const double t = std::sqrt((ra - rb) * (ra - rb) + spacing * spacing);
    return (rb * azimuthStep + ra * azimuthStep) * t * 0.5;
}

/// Sum over the tangent plane at one direction, of all lines of a table at once.
class TangentPlaneSum {
public:
    TangentPlaneSum(const ZfFloatMatrix& table, const RowDirection& centre)
        : table_(table), centre_(centre), lines_(static_cast<std::size_t>(table.ColSize), 0.0) {}

    /// The point at `a` towards the pole -z, at the height c of the sphere above the plane.
    void Add(double a, double c, double weight, const char* failure) {
        const double z = c * centre_.z - a * centre_.s;
        const double row = std::floor((table_.RowSize - 1) * ((z + 1.0) * 0.5) + 0.5);
        if (!(row >= 0.0 && row < table_.RowSize)) throw ZfError(failure);
        const float* source = table_.Data() + static_cast<std::int64_t>(row) * table_.ColSize;
        for (std::size_t x = 0; x < lines_.size(); ++x) lines_[x] += source[x] * weight;
        sum_ += weight;
    }

    void Store(float* row) const {
        for (std::size_t x = 0; x < lines_.size(); ++x) row[x] = static_cast<float>(lines_[x] / sum_);
    }

private:
    const ZfFloatMatrix& table_;
    RowDirection centre_;
    std::vector<double> lines_;
    double sum_ = 0.0;
};

}  // namespace

void ZfBlurForSPattern::Run() {
    Ver5(output, input, sigmaDeg);
    const ZfFloatMatrix blurred = output;
    BlurAlongLine(output, blurred, lineStep, lineSigma);
}

void ZfBlurForSPattern::Ver5(ZfFloatMatrix& out, const ZfFloatMatrix& in, double degrees) {
    rowCount = in.RowSize;
    const double s = Radians(degrees);
    const double g = 1.0 / (2.0 * s * s);
    if (std::isinf(g)) {
        out = in;
        return;
    }
    out.CopyShape(in);
    out.Clear();
    const double spacing = RowSpacing(in);
    const std::int64_t n = std::max(TruncateToInt32(4.0 * s / spacing), kStepsPerSigma);
    const std::int64_t m = 3 * n;
    const double h = s / static_cast<double>(n);
    for (std::int32_t y = 0; y < in.RowSize; ++y) {
        ++state;
        TangentPlaneSum sum(in, DirectionOf(y, spacing, "ZfBlurForSPattern::Ver5() ERROR z0<-1 || z0>1"));
        for (std::int64_t i = -m; i <= m; ++i) {
            const double a = static_cast<double>(i) * h;
            sum.Add(a, std::sqrt(1.0 - a * a), std::exp(-a * a * g), "z0<-1 || z0>1 ERR iz<0 || iz>=nr");
            for (std::int64_t j = 1; j * j + i * i <= m * m; ++j) {
                const double b = static_cast<double>(j) * h;
                const double q = a * a + b * b;
                sum.Add(a, std::sqrt(1.0 - q), 2.0 * std::exp(-q * g), "ERR");  // b and -b share a row
            }
        }
        sum.Store(out.Data() + std::int64_t{y} * out.ColSize);
    }
}

void ZfBlurForSPattern::Ver6(ZfFloatMatrix& out, const ZfFloatMatrix& in, double degrees) {
    rowCount = in.RowSize;
    const double s = Radians(degrees);
    const double g = 1.0 / (2.0 * s * s);
    if (std::isinf(g)) {
        out = in;
        return;
    }
    out.CopyShape(in);
    out.Clear();
    const double cut = std::cos(4.0 * s);
    const double spacing = RowSpacing(in);
    const double azimuthStep = kPi / (in.RowSize - 1.0);
    for (std::int32_t y = 0; y < in.RowSize; ++y) {
        ++state;
        const RowDirection centre = DirectionOf(y, spacing, "ZfBlurForSPattern::Ver6() ERROR z0<-1 || z0>1");
        float* const target = out.Data() + std::int64_t{y} * out.ColSize;
        double sum = 0.0;
        for (std::int32_t r = 0; r < in.RowSize; ++r) {
            const RowDirection from =
                DirectionOf(r, spacing, "ZfBlurForSPattern::Ver6() ERROR, z1<-1 || z1>1");
            if (from.s * centre.s + from.z * centre.z < cut) continue;
            const double area = AreaOf(r, in.RowSize, from.z, spacing, azimuthStep);
            const float* const source = in.Data() + std::int64_t{r} * in.ColSize;
            for (std::int32_t p = 0; p < 2 * (in.RowSize - 1); ++p) {
                const double c = std::cos(p * azimuthStep) * from.s * centre.s + from.z * centre.z;
                if (c < cut) continue;
                const double w = area * std::exp(-(1.0 - c * c) * g);
                sum += w;
                for (std::int32_t x = 0; x < in.ColSize; ++x)
                    target[x] = static_cast<float>(target[x] + source[x] * w);
            }
        }
        const auto divisor = static_cast<float>(sum);
        if (!(divisor > 0.0F)) {  // a width so small that rounding cuts off the row itself
            std::copy_n(in.Data() + std::int64_t{y} * in.ColSize, in.ColSize, target);
            continue;
        }
        for (std::int32_t x = 0; x < in.ColSize; ++x) target[x] /= divisor;
    }
}

void ZfBlurForSPattern::BlurAlongLine(ZfFloatMatrix& out, const ZfFloatMatrix& in, double step,
                                      double sigma) {
    if (!(sigma > 0.0 && step > 0.0)) {
        out = in;
        return;
    }
    out.CopyShape(in);
    out.Clear();
    const FuncGauss gauss(sigma);
    state = 0;
    rowCount = in.ColSize;
    std::vector<double> line(static_cast<std::size_t>(in.RowSize));
    for (std::int32_t i = 0; i < in.ColSize && stop == 0; ++i) {
        ++state;
        std::fill(line.begin(), line.end(), 0.0);
        double norm = 0.0;
        for (std::int32_t j = 0; j < in.ColSize; ++j) {
            const double e = gauss((i - j) * step);
            norm += e;
            for (std::int32_t y = 0; y < in.RowSize; ++y)
                line[static_cast<std::size_t>(y)] += e * in.Data()[std::int64_t{y} * in.ColSize + j];
        }
        for (std::int32_t y = 0; y < in.RowSize; ++y)
            out.Data()[std::int64_t{y} * out.ColSize + i] =
                static_cast<float>(line[static_cast<std::size_t>(y)] / norm);
    }
}
