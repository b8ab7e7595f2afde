#include "pattern/ZfDocPatternNano.h"

#include <algorithm>
#include <cmath>
#include <exception>

#include "foundation/Truncate.h"
#include "foundation/ZfError.h"
#include "scattering/ScattererLists.h"

using namespace qvre;

namespace {

constexpr double kReach = 0.68;  // of the radius of an atom
constexpr double kPerDistance = 1e11;
constexpr double kLargestOutput = 1000.0;

double Length(const std::array<double, 3>& v) {
    return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
}

/// Place of every entry's phase-shift record. A record from a file has none: they are found by energy and
/// name, and not kept, since the next run may come with another document.
ZfCharMatrix PhaseShiftIndexOf(const ZfScatteringRecord& record, const ZfPhaseShiftDocument& phaseShifts) {
    if (record.phaseShiftIndex.Count() > 0) return record.phaseShiftIndex;
    ZfScatteringRecord named = record;
    SetPhaseShiftIndex(named, phaseShifts);
    return named.phaseShiftIndex;
}

}  // namespace

void ZfDocPatternNano::BuildMapping() {
    const std::int32_t width = TruncateToInt32((firstMax - firstMin) / gridStep + 1);
    const std::int32_t height = TruncateToInt32((secondMax - secondMin) / gridStep + 1);
    mapping = {};
    mapping.planes.resize(3);
    const auto clear = [=](ZfLDoubleMatrix& matrix) {
        matrix.SetSize(width, height);
        matrix.Clear();
    };
    for (ZfLDoubleMatrix& plane : mapping.planes) clear(plane);
    clear(mapping.directionX);
    clear(mapping.directionY);
    clear(mapping.directionZ);
    clear(mapping.pixelWeight);
}

std::array<std::size_t, 3> ZfDocPatternNano::Axes() const {
    const std::size_t first = sliceAxis == 1 || sliceAxis == 2 ? static_cast<std::size_t>(sliceAxis) : 0;
    return {first, (first + 1) % 3, (first + 2) % 3};
}

void ZfDocPatternNano::Calculate(ZfNotifyTerminate& notifier, ZfScatteringData& data,
                                 const Fluctuation& fluctuation, const ZfDebye& debye) {
    PrepareCalculation(data, fluctuation, debye);
    if (!pDocScatteringPaseShift_)
        throw ZfError("ZfDocPatternNano::Calculate() ERROR: pDocScatteringPaseShift_==NULL");
    for (std::int64_t s = 0; s < activeRecordCount; ++s) {
        if (!IsActive(s)) continue;
        SetUpRecord(data, s);
        const ZfScatteringRecord& record = data.ListScatteringData[static_cast<std::size_t>(s)];
        const std::vector<Atom> atoms = AtomsInPlane(notifier, data, record);
        AddRecord(notifier, atoms, record.Ratio);
    }
}

std::vector<ZfDocPatternNano::Atom> ZfDocPatternNano::AtomsInPlane(ZfNotifyTerminate& notifier,
                                                                   ZfScatteringData& data,
                                                                   const ZfScatteringRecord& record) {
    const std::vector<ZfFreeElectron>& list = record.ListScatterer.electrons;
    const ZfCharMatrix index = PhaseShiftIndexOf(record, *pDocScatteringPaseShift_);
    const std::size_t normal = Axes()[2];
    std::vector<Atom> atoms;
    std::int32_t entry = -1;  // in the filtered list
    for (std::size_t i = 0; i < list.size() && !notifier.IsTerminated(); ++i) {
        if (IsLeftOut(list[i])) continue;
        ++entry;
        const PhaseShiftRecord& phaseShift =
            CheckedAt(pDocScatteringPaseShift_->records, index.VectorValueAt(static_cast<std::int32_t>(i)));
        const double radius = AtomRadius(phaseShift.radial);
        if (radius == 0.0) throw ZfError("Please calculate phase shift.");
        const double* p = list[i].position.Data();
        if (entry == 0 || std::abs(p[normal] - planeHeight) >= kReach * radius) continue;
        atoms.push_back({{p[0], p[1], p[2]},
                         kReach * radius,
                         JoinRadialWave(phaseShift.radial, FieldAround(data, entry, phaseShift))});
    }
    return atoms;
}

/// Outgoing and incoming tables around an entry of the list: half of the regular wave of the other sources
/// each, and the entry's own wave on the outgoing one.
ZfFreeElectron ZfDocPatternNano::FieldAround(ZfScatteringData& data, std::int32_t entry,
                                             const PhaseShiftRecord& phaseShift) {
    ZfVectorFreeElectron seen;
    scatteredWave.ShiftOrigin(seen, entry);
    ZfFreeElectron field;
    data.ExpandAroundOrigin(field, seen, phaseShift);
    const ZfLmComplexTable& own = scatteredWave.electrons[static_cast<std::size_t>(entry)].A;
    const std::size_t size = std::min(field.A.block.size(), own.block.size());
    for (std::size_t i = 0; i < size; ++i) field.A.block[i] += own.block[i];
    return field;
}

std::complex<double> ZfDocPatternNano::WaveAt(const Point& point, const std::vector<Atom>& atoms) const {
    for (const Atom& atom : atoms) {
        const Point d = {point[0] - atom.position[0], point[1] - atom.position[1],
                         point[2] - atom.position[2]};
        const double r = Length(d);
        if (r >= atom.reach) continue;
        const double theta = r == 0.0 ? 0.0 : std::acos(d[2] / r);
        return RadialWaveAtPoint(atom.wave, r, theta, std::atan2(d[1], d[0]));
    }
    std::complex<double> value;
    scatteredWave.ValueFromOrigin(value, point[0], point[1], point[2]);
    return value;
}

double ZfDocPatternNano::Output(std::complex<double> wave, const Point& point) const {
    const double scale = scaleByDistance ? Length(point) * kPerDistance : 1.0;
    double value = std::norm(wave) * scale * scale;
    if (outputMode == 0) value = wave.real() * scale;
    if (outputMode == 1) value = wave.imag() * scale;
    return std::clamp(value, -kLargestOutput, kLargestOutput);
}

void ZfDocPatternNano::AddRecord(ZfNotifyTerminate& notifier, const std::vector<Atom>& atoms, double factor) {
    scatteredWave.PrepareNorms();
    const auto axes = Axes();
    const std::complex<double> phase(std::cos(phaseAngle), std::sin(-phaseAngle));
    ZfLDoubleMatrix& plane = mapping.planes[0];
    std::exception_ptr failure;
    for (std::int32_t i = 0; i < plane.ColSize; ++i) {
        if (notifier.IsTerminated()) return;
#pragma omp parallel for schedule(static)
        for (std::int32_t j = 0; j < plane.RowSize; ++j) {
            try {
                Point point;
                point[axes[0]] = firstMin + i * gridStep;
                point[axes[1]] = secondMin + j * gridStep;
                point[axes[2]] = planeHeight;
                plane.At(i, j) += factor * Output(phase * WaveAt(point, atoms), point);
            } catch (...) {
#pragma omp critical
                failure = std::current_exception();
            }
        }
        if (failure) std::rethrow_exception(failure);
    }
}
