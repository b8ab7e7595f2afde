#include "pattern/ZfDocScatteringPatternMatrix.h"

#include <QDebug>
#include <algorithm>
#include <cmath>
#include <complex>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"
#include "pattern/PatternTableOperations.h"
#include "pattern/ZfBlurForSPattern.h"
#include "scattering/SphericalHarmonics.h"

using namespace qvre;

namespace {

void Blur(ZfLDoubleMatrix& table, double degrees) {
    ZfFloatMatrix sharp;
    ZfFloatMatrix blurred;
    sharp.Convert(table);
    ZfBlurForSPattern blur;
    blur.Ver6(blurred, sharp, degrees);
    table.Convert(blurred);
}

}  // namespace

void ZfDocScatteringPatternMatrix::Run() {
    if (keepTables == 0) CalcPattern();
    if (stop == 0) ProcessResult();
}

void ZfDocScatteringPatternMatrix::CalcPattern() {
    try {
        FillTables();
    } catch (const ZfError& error) {
        throw ZfError("CalcPattern():" + error.message);
    } catch (...) {
        throw ZfError("Undefined Error at CalcPattern()");
    }
}

void ZfDocScatteringPatternMatrix::CheckDocuments() const {
    if (!PDocScattering_) throw ZfError("ERROR ZfDocScatteringPatternMatrix():PDocScattering_==NULL");
    if (!PDocScatteringPhaseShift_)
        throw ZfError("ERROR ZfDocScatteringPatternMatrix():PDocScatteringPhaseShift_==NULL");
    if (!PDocFinalState_) throw ZfError("ERROR ZfDocScatteringPatternMatrix():PDocFinalState_==NULL");
    if (!PDocFluctuation_) throw ZfError("ERROR ZfDocScatteringPatternMatrix():PDocFluctuation_==NULL");
    if (!PDebye_) throw ZfError("ERROR ZfDocScatteringPatternMatrix():PDebye_==NULL");
}

std::size_t ZfDocScatteringPatternMatrix::SelectedPhaseShift() const {
    const auto count = std::count(phaseShiftSelection.begin(), phaseShiftSelection.end(), true);
    if (count < 1) throw ZfError("Error: Please check a phase shift");
    if (count > 1) throw ZfError("Error: Please check one phase shift.");
    const auto found = std::find(phaseShiftSelection.begin(), phaseShiftSelection.end(), true);
    const auto index = static_cast<std::size_t>(found - phaseShiftSelection.begin());
    if (index >= PDocScatteringPhaseShift_->records.size())
        throw ZfError("Error: The selected phase shift does not exist");
    return index;
}

void ZfDocScatteringPatternMatrix::FillGrids() {
    for (ZfLDoubleMatrix* table : {&directTable, &scatteredTable, &totalTable, &quadratureTable}) {
        table->SetSize(distanceCount, angleCount);
        table->Clear();
    }
    distances.SetVectorSize(distanceCount);
    for (std::int32_t i = 0; i < distanceCount; ++i) distances.VectorAt(i) = distanceStart + i * distanceStep;
    angleCosines.SetVectorSize(angleCount);
    for (std::int32_t j = 0; j < angleCount; ++j) {
        angleCosines.VectorAt(j) = equalAngles != 0 ? std::cos(Radians(j * (180.0 / (angleCount - 1.0))))
                                                    : std::min(1.0, j * 2.0 / (angleCount - 1.0) - 1.0);
    }
}

void ZfDocScatteringPatternMatrix::FillTables() {
    CheckDocuments();
    const std::size_t phaseShift = SelectedPhaseShift();
    const double energy = PDocScatteringPhaseShift_->records[phaseShift].Ek_eV;
    const auto hasEnergy = [energy](const EmittedWave& wave) { return wave.Ek == energy; };
    const auto waves = std::count_if(PDocFinalState_->begin(), PDocFinalState_->end(), hasEnergy);
    if (waves == 0)
        throw ZfError("Error: Emitter settings is not good. Corresponding kinetic energy is not found");
    if (distanceCount < 1 || angleCount < 2) throw ZfError("Error: The grid has no distances or no angles");

    FillGrids();
    results.assign(1, {energy, totalTable});
    state = 0;
    stepCount = waves * std::intptr_t{distanceCount};
    for (const EmittedWave& wave : *PDocFinalState_) {
        if (!hasEnergy(wave)) continue;
        AddEmittedWave(wave, phaseShift);
        if (stop != 0) return;
    }
}

void ZfDocScatteringPatternMatrix::AddEmittedWave(const EmittedWave& wave, std::size_t phaseShift) {
    const PhaseShiftRecord& atom = PDocScatteringPhaseShift_->records[phaseShift];
    for (std::int32_t i = 0; i < distanceCount; ++i) {
        ++state;
        if (stop != 0) return;
        ZfScatteringRecord pair;
        pair.SetListScattererDimerOnZ(wave.coeff, wave.Ek, distances.VectorValueAt(i), atom.AtomName,
                                      atom.AtomElement, static_cast<std::int32_t>(phaseShift),
                                      *PDocFluctuation_, *PDebye_);
        for (std::int32_t entry = 0; entry < 2; ++entry)
            PDocScattering_->CalculateSingle(pair, *PDocScatteringPhaseShift_, 0, entry);
        AddPair(pair, i);
    }
    results.front().pattern = totalTable;
}

/// The list before the scattering has the emitted wave alone, the one after it the scattered wave alone.
void ZfDocScatteringPatternMatrix::AddPair(ZfScatteringRecord& pair, std::int32_t line) {
    for (std::int32_t j = 0; j < angleCount; ++j) {
        const double theta = std::acos(angleCosines.VectorValueAt(j));
        const std::complex<double> a = pair.ListScatterer.DirectAmplitude(theta, 0.0);
        const std::complex<double> b = pair.NextListScatterer.ScatteredAmplitude(theta, 0.0, 0);
        directTable.At(line, j) += std::norm(a);
        scatteredTable.At(line, j) += std::norm(b);
        totalTable.At(line, j) += std::norm(a + b);
        quadratureTable.At(line, j) += std::norm(std::complex<double>(-a.imag(), a.real()) + b);
    }
}

void ZfDocScatteringPatternMatrix::CheckTables() const {
    if (results.empty() || totalTable.RowSize < 2) throw ZfError("Error: There are no pattern tables");
    for (const ZfLDoubleMatrix* table : {&directTable, &scatteredTable, &quadratureTable})
        totalTable.CheckSameShape(*table);
}

void ZfDocScatteringPatternMatrix::SmoothInEnergy(ZfLDoubleMatrix& total, ZfLDoubleMatrix& quadrature) const {
    ZfFreeElectron electron;
    electron.SetEnergy_eV(results.front().Ek_eV);
    if (!(electron.k > 0.0)) throw ZfError("Error: The kinetic energy is not positive");
    const double sigma = electron.k * energyWidth / (2.0 * electron.Ek_eV);
    for (ZfLDoubleMatrix* table : {&total, &quadrature})
        SmoothOverWaveNumber(*table, directTable, scatteredTable, distances, angleCosines, sigma);
}

void ZfDocScatteringPatternMatrix::ProcessResult() {
    CheckTables();
    ZfLDoubleMatrix total = totalTable;
    ZfLDoubleMatrix quadrature = quadratureTable;
    if (energyWidth > 0.0) SmoothInEnergy(total, quadrature);
    if (blurSigma != 0.0) {
        Blur(quadrature, blurSigma);
        Blur(total, blurSigma);
    }
    normalisationFactors.clear();
    ZfLDoubleMatrix pattern;
    if (combineFlag != 0) {
        ZfLDoubleMatrix second;
        second = Process(quadrature, secondProcessType);
        pattern = Modulus(Process(total, processType), second);
    } else {
        pattern = Process(total, processType);
    }
    const std::vector<double> starts =
        searchMode != 0 ? FirstMinima(total) : std::vector<double>(static_cast<std::size_t>(total.ColSize));
    ApplyMask(pattern, maskType, starts);
    results.front().pattern = pattern;
}

ZfLDoubleMatrix ZfDocScatteringPatternMatrix::Normalised(ZfLDoubleMatrix table) {
    normalisationFactors = Normalise(table, distances, normalisationType);
    return table;
}

ZfLDoubleMatrix ZfDocScatteringPatternMatrix::Process(const ZfLDoubleMatrix& table, std::int32_t type) {
    if (type == 0 || type == 3 || type == 5 || type == 6) qDebug() << "ModifyNormalized";
    switch (type) {
        case 0:
            return Normalised(ModulationFunction(table, directTable));
        case 1:
            return table;
        case 2:
            return Normalised(table);
        case 3:
            return InterferencePhase(table, directTable, scatteredTable);
        case 4:
            return CompareToLast(table);
        case 5:
            return Subtract(CompareToLast(table), Normalised(ModulationFunction(table, directTable)));
        case 6:
            return Subtract(CompareToLast(table), InterferencePhase(table, directTable, scatteredTable));
        default:
            throw ZfError("Not imprimented");
    }
}
