#include "reference/PlainPattern.h"

#include <cmath>
#include <complex>

namespace plain {
namespace {

struct Angles {
    double theta;
    double phi;
};

/// Direction of a pixel in the frame of the sample.
Angles SampleAngles(const ZfSphericalMapping& mapping, const ZfLDoubleMatrix& orientation,
                    std::int64_t pixel) {
    const double* r = orientation.Data();
    const double dx = mapping.directionX.Data()[pixel];
    const double dy = mapping.directionY.Data()[pixel];
    const double dz = mapping.directionZ.Data()[pixel];
    const double vx = r[0] * dx + r[1] * dy + r[2] * dz;
    const double vy = r[3] * dx + r[4] * dy + r[5] * dz;
    const double vz = r[6] * dx + r[7] * dy + r[8] * dz;
    return {std::acos(vz / std::sqrt(vx * vx + vy * vy + vz * vz)),
            vx == 0.0 && vy == 0.0 ? 0.0 : std::atan2(vy, vx)};
}

}  // namespace

void AddRecord(ZfSphericalMapping& mapping, const ZfLDoubleMatrix& orientation,
               const ZfVectorFreeElectron& list, std::int32_t lOverride) {
    list.PrepareNorms();
    const std::int64_t pixels = mapping.pixelWeight.Count();
#pragma omp parallel for schedule(static)
    for (std::int64_t i = 0; i < pixels; ++i) {
        if (mapping.pixelWeight.Data()[i] == 0.0) continue;
        try {
            const Angles at = SampleAngles(mapping, orientation, i);
            const std::complex<double> as = list.ScatteredAmplitude(at.theta, at.phi, lOverride);
            const std::complex<double> a0 = list.DirectAmplitude(at.theta, at.phi);
            mapping.planes[0].Data()[i] += std::norm(a0 + as);
            mapping.planes[1].Data()[i] += std::norm(a0);
            mapping.planes[2].Data()[i] += std::norm(as);
            mapping.planes[3].Data()[i] += std::norm(std::complex<double>(-a0.imag(), a0.real()) + as);
        } catch (...) {  // the pixel keeps the sum it had
        }
    }
}

}  // namespace plain
