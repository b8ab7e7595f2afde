#pragma once

#include <complex>
#include <vector>

#include "scattering/SourceKernel.h"
#include "scattering/ZfVectorFreeElectron.h"

/// A wave around its own origin, as the spherical expansion samples it.
class ZfWaveFunction {
public:
    ZfWaveFunction() = default;
    ZfWaveFunction(const ZfWaveFunction&) = default;
    ZfWaveFunction& operator=(const ZfWaveFunction&) = default;
    virtual ~ZfWaveFunction() = default;

    virtual void Value(std::complex<double>& result, double r, double theta, double phi) const = 0;
    virtual double WaveNumber() const = 0;     ///< 1/m
    virtual double KineticEnergy() const = 0;  ///< eV

    /// The wave at many points of one radius; `re` and `im` are padded by kKernelPadding. Called from
    /// several threads at once.
    virtual void Sample(const qvre::KernelDirections& directions, double radius, double* re,
                        double* im) const = 0;
};

/// A list of sources seen as a wave; the list is not owned and must stay as it is meanwhile. All operations
/// throw ZfError without a list.
class ZfWaveVectorFreeElectron final : public ZfWaveFunction {
public:
    explicit ZfWaveVectorFreeElectron(const ZfVectorFreeElectron* electrons);

    void Value(std::complex<double>& result, double r, double theta, double phi) const override {
        List().Value(result, r, theta, phi);
    }
    double WaveNumber() const override {
        return qvre::CheckedAt(List().electrons, 0).k;
    }  ///< out-of-range without entries
    double KineticEnergy() const override { return List().Ek_eV; }
    void Sample(const qvre::KernelDirections& directions, double radius, double* re,
                double* im) const override;

    const ZfVectorFreeElectron* list;

private:
    const ZfVectorFreeElectron& List() const {
        if (!list) throw ZfError("pointer is not defined");
        return *list;
    }

    std::vector<qvre::KernelSource> prepared_;  ///< one an entry; L is 0 for those that no kernel serves
};
