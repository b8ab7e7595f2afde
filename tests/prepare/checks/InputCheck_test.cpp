#include "prepare/checks/InputCheck.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <tuple>

#include "TempFolder.h"
#include "foundation/Console.h"
#include "prepare/thermal/AtomicWeights.h"

using namespace qvre;

namespace {

/// The documents of an example, to be spoilt.
struct Example {
    explicit Example(const std::string& name) {
        const ConsoleRedirection quiet(nullptr);
        const std::string folder = QVRE_EXAMPLES "/" + name + "/";
        ZfLoadCluster(cluster, folder + "cluster.xml_cl");
        ZfLoadEmittedWave(waves, folder + "emitter.xml_emt");
        ZfLoadPhaseShift(phaseShifts, folder + "phaseshift.xml_ph");
        ZfLoadFluctuation(fluctuation, folder + "fluctuation.xml_flu");
        weights = LoadAtomicWeights(QVRE_DATA "/AtomicWeight.txt");
    }

    std::vector<ClusterAtom>& Atoms() { return cluster.structures[0].atoms; }
    PhaseShiftRecord& Record() { return phaseShifts.records[0]; }

    /// One line a finding: "misfit: ...".
    std::string Findings() const {
        std::string text;
        for (const InputFinding& finding :
             CheckInputs({&cluster, &waves, &phaseShifts, &fluctuation, &weights, method})) {
            const char* words[] = {"note: ", "warning: ", "misfit: "};
            text += words[static_cast<int>(finding.severity)] + finding.what + "\n";
            EXPECT_FALSE(finding.remedy.empty()) << finding.what;
        }
        return text;
    }

    Cluster cluster;
    std::vector<EmittedWave> waves;
    ZfPhaseShiftDocument phaseShifts;
    Fluctuation fluctuation;
    ZfDebye weights;
    ScatteringMethod method = kMulti;
};

struct Case {
    std::function<void(Example&)> spoil;
    const char* findings;
};

void ExpectFindings(const std::string& example, const std::vector<Case>& cases) {
    for (const auto& [spoil, findings] : cases) {
        Example spoilt(example);
        spoil(spoilt);
        EXPECT_EQ(spoilt.Findings(), findings);
    }
}

ZfLDoubleMatrix Isotropic(double u_angstrom2) {
    ZfLDoubleMatrix u(1, 1);
    u.At(0, 0) = u_angstrom2 * 1e-20;
    return u;
}

}  // namespace

TEST(InputCheck, Examples) {
    EXPECT_EQ(Example("cu001_small").Findings(), "");
    EXPECT_EQ(Example("gaas001").Findings(), "");
}

TEST(InputCheck, Cluster) {
    ExpectFindings(
        "cu001_small",
        {{[](Example& e) { e.Atoms()[0].SetPositionAngstrom(Vector3(0.02, 0, 0)); },
          "misfit: the atom nearest to the origin, Cu at (0.02, 0, 0) angstrom, would be the emitter\n"},
         {[](Example& e) { e.Atoms().back().SetPositionAngstrom(Vector3(0, 0, 0.4)); },
          "misfit: two atoms stand 0.4 angstrom apart, Cu at (0, 0, 0) and Cu at (0, 0, 0.4)\n"
          "misfit: the phase shifts of \"Cu\" for 560 eV have l size 14, which is sampled at 0.983204 "
          "angstrom, and the nearest neighbour stands at 0.4 angstrom: the expansion of its wave does not "
          "converge, or "
          "to something wrong\n"
          "warning: the phase shifts of \"Cu\" for 560 eV tell the radius 1.27633 angstrom; with 1.27633 "
          "angstrom of the nearest neighbour, 0.4 angstrom away, the spheres overlap\n"},
         {[](Example& e) { e.Atoms()[3].atom = "cu"; },
          "misfit: the cluster holds the element \"cu\", unknown\n"},
         {[](Example& e) { e.Atoms()[3].U.SetSize(3, 3); },
          "misfit: atoms with anisotropic displacements: 1\n"},
         {[](Example& e) { e.cluster.structures.emplace_back(); },
          "misfit: structure 1: there are no atoms\n"}});
}

TEST(InputCheck, Waves) {
    ExpectFindings("cu001_small",
                   {{[](Example& e) { e.waves.clear(); },
                     "misfit: there is no emitted wave: the image would be empty\n"},
                    {[](Example& e) {
                         e.waves.resize(1);
                         e.waves[0].coeff.Zero();
                     },
                     "note: wave 0 emits nothing: its coefficients are all 0\n"
                     "misfit: no wave emits anything: the image would be empty\n"},
                    {[](Example& e) {
                         e.method = kSingle;
                         e.waves.resize(1);
                     },
                     "misfit: wave 0 has l size 3; the method SINGLE takes l size 1 only\n"
                     "note: the sum of |A|^2 over all waves is 3.68491, not 4 pi: I0 does not average to 1 "
                     "over the sphere\n"},
                    {[](Example& e) {
                         e.waves[2].Ek = 0;
                         e.waves[0].IsPlaneWave = true;
                     },
                     "note: wave 0 is a plane wave: its coefficients are not used\n"
                     "misfit: wave 2 has the kinetic energy 0 eV\n"
                     "note: the waves have 2 energies; their patterns add up in one image\n"}});
}

TEST(InputCheck, PhaseShiftsOfEveryNameAndEnergy) {
    ExpectFindings(
        "cu001_small",
        {{[](Example& e) { e.Record().Ek_eV = 560.001; },
          "misfit: there are no phase shifts of \"Cu\" for 560 eV: 560 differs from 560.001\n"},
         {[](Example& e) { e.Record().Ek_eV = std::nextafter(560.0, 0.0); },
          "misfit: there are no phase shifts of \"Cu\" for 560 eV: 560 differs from 559.9999999999999\n"},
         {[](Example& e) { e.Record().AtomName = "Cu1"; },
          "misfit: there are no phase shifts for the atom name \"Cu\", but some are named \"Cu1\"\n"},
         {[](Example& e) {
              e.phaseShifts.records.insert(e.phaseShifts.records.begin(), 128, PhaseShiftRecord());
              for (std::size_t i = 0; i < 128; ++i) e.phaseShifts.records[i].Ek_eV = double(i);
          },
          "note: the phase-shift file holds 129 records, of which a run uses the first 128\n"
          "misfit: the phase shifts of \"Cu\" for 560 eV stand at place 129; a run uses the first 128 of a "
          "file\n"},
         {[](Example& e) { e.Record().AtomElement = "Ni"; },
          "warning: the phase shifts of \"Cu\" for 560 eV are of the element Ni, the atoms of the cluster "
          "are Cu\n"}});
}

TEST(InputCheck, WhatPhaseShiftsHold) {
    ExpectFindings(
        "cu001_small",
        {{[](Example& e) { e.Record().PhaseShiftValue.SetVectorSize(0); },
          "misfit: the phase shifts of \"Cu\" for 560 eV are empty\n"},
         {[](Example& e) { e.Record().radial.LnX.clear(); },
          "misfit: the phase shifts of \"Cu\" for 560 eV have no LnX, from which MULTI takes the radius of "
          "the atom\n"},
         {[](Example& e) {
              e.method = kSlowMulti;
              e.Record().radial.LnX.clear();
          },
          ""},
         {[](Example& e) { e.Record().radial.LnX.back() = std::log(1.276); },
          "misfit: the phase shifts of \"Cu\" for 560 eV tell the radius 1.276e+10 angstrom (LnX ends at "
          "0.24373), which looks like a radius, or its logarithm, in angstrom or bohr: MULTI would silently "
          "be SLOWMULTI\n"},
         {[](Example& e) {
              for (int l = 0; l < 14; ++l) e.Record().PhaseShiftValue.VectorAt(l) *= 0.0174533;
          },
          "warning: the phase shifts of \"Cu\" for 560 eV are all below 5.82252: are they radians?\n"},
         {[](Example& e) {
              const ZfLDoubleMatrix all = e.Record().PhaseShiftValue;
              e.Record().PhaseShiftValue.SetVectorSize(4);
              for (int l = 0; l < 4; ++l) e.Record().PhaseShiftValue.VectorAt(l) = all.VectorValueAt(l);
          },
          "warning: the phase shifts of \"Cu\" for 560 eV end at l = 3 with 72.156 degrees: the sum over l "
          "is cut off\n"}});
}

TEST(InputCheck, Fluctuation) {
    ExpectFindings(
        "gaas001",
        {{[](Example& e) { e.fluctuation.DebyeElement_[0] = "Ga"; },
          "warning: Ga has two Debye temperatures: the first counts\n"
          "misfit: the Debye table lacks As, the element of the emitter\n"},
         {[](Example& e) { e.fluctuation.DebyeTemperature_K_.pop_back(); },
          "misfit: the fluctuation file has 2 elements and 1 Debye temperatures\n"
          "misfit: the Debye table lacks Ga\n"},
         {[](Example& e) { e.fluctuation.IsUseUisoInCluster_ = true; },
          "warning: the fluctuation file sets several flags; the one of the cluster counts\n"
          "misfit: U is to come from the cluster, which has none: nothing is damped\n"},
         {[](Example& e) {
              e.fluctuation.IsUseUisoDebyeModel_ = false;
              for (ClusterAtom& atom : e.Atoms()) atom.U = Isotropic(0.355);
              e.Atoms()[2].U.SetSize(0, 0);
          },
          "note: the fluctuation file chooses no model: U comes from the cluster\n"
          "warning: 1 of 148 atoms have no U in the cluster and are not damped\n"
          "warning: the cluster has a U of 0.355 angstrom^2\n"},
         {[](Example& e) { e.fluctuation.Temperature_K_ = 36; },
          "warning: U of As is 2.66 times too small: 36 K is low against its Debye temperature of 360 K\n"
          "warning: U of Ga is 2.66 times too small: 36 K is low against its Debye temperature of 360 K\n"}});
}

// A single number that is none spreads over the whole image.
TEST(InputCheck, NumbersThatAreNone) {
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    ExpectFindings(
        "gaas001",
        {{[](Example& e) { *e.Atoms()[4].position.Data() = kNan; },
          "misfit: atom 4 (Ga) has a position, displacement or valency that is not a number, or infinite\n"},
         {[](Example& e) { e.Atoms()[4].U = Isotropic(kInfinite); },
          "misfit: atom 4 (Ga) has a position, displacement or valency that is not a number, or infinite\n"},
         {[](Example& e) {
              e.waves[1].coeff.At(1, 0) = {0.0, kNan};
          },
          "misfit: wave 1 has an energy, angle, weight or coefficient that is not a number, or infinite\n"},
         {[](Example& e) { e.waves[0].Ratio = kInfinite; },
          "misfit: wave 0 has an energy, angle, weight or coefficient that is not a number, or infinite\n"},
         {[](Example& e) { e.phaseShifts.records[1].PhaseShiftValue.VectorAt(3) = kNan; },
          "misfit: phase-shift record 1 (Ga) has an energy, phase shift or radial table that is not a "
          "number, or infinite\n"},
         {[](Example& e) {
              e.Record().radial.P = {{1.0}, {kInfinite}};
          },
          "misfit: phase-shift record 0 (As) has an energy, phase shift or radial table that is not a "
          "number, or infinite\n"},
         {[](Example& e) { e.fluctuation.DebyeTemperature_K_[1] = kNan; },
          "misfit: the fluctuation file has a temperature that is not a number, or infinite\n"}});
}

// Loading takes them for 0, so that only the files tell.
TEST(InputCheck, WordsInPlaceOfNumbers) {
    const TempFolder folder;
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"e.xml_emt", "<Ek>560</Ek>\n<r>1e3</r>\n<i> -INF\n</i>", "line 3: <i>-INF"},
        {"c.xml_cl", "<name>nan</name>\n<atom>Inf</atom>\n<x>0</x><y>Infinity</y>\n<z>nan(ind)</z>",
         "line 3: <y>Infinity"},
        {"f.xml_flu", "<DebyeTemperature_K_><i>NaN</i>\n</DebyeTemperature_K_>", "line 1: <i>NaN"},
        {"p.xml_ph",
         "<FileName>nan, made by hand</FileName>\n<elements>\nnan,\n</elements><Ek_eV>+inf</Ek_eV>",
         "line 4: <Ek_eV>+inf"},
        {"names.xml_cl", "<name>inf</name><valency>1</valency><base64b>Inf+</base64b><x>infra</x>", ""},
        {"c.xyz", "2\r\ninf nan\r\n\r\nInf 0 0 1\r\nNi 0 -nan 0\r\n1\ntitle\nNi 0 0 inf\n", "line 5: -nan"},
        {"names.xyz", "1\n nan\nNan 0 0 0\n1\ninf\nInf 1 1 1\n", ""}};
    for (const auto& [name, text, found] : cases) {
        const InputFindings findings = CheckInputs({.files = {folder.Write(name, text)}});
        ASSERT_EQ(findings.size(), found.empty() ? 0U : 1U) << name;
        if (found.empty()) continue;
        EXPECT_EQ(findings[0].severity, Severity::kMisfit);
        EXPECT_TRUE(findings[0].what.starts_with(folder.Path(name) + " " + found + " is no finite number"))
            << findings[0].what;
        EXPECT_EQ(findings[0].what.ends_with("(so are 1 more)"), name.starts_with("c.")) << findings[0].what;
    }
}

// In fcc the atom (1/2, 1/2, 0) stands half a neighbour distance beside the way to (1, 1/2, 1/2).
TEST(InputCheck, AtomsOnTheEdgeOfACylinder) {
    const double touching = std::log(3.61e-10 * std::sqrt(0.125));
    const char* tie =
        "warning: 24 times an atom stands its radius beside the line to another, to a millionth, as Cu at "
        "(-1.805, 0, 1.805) with 1.27633 angstrom beside that to Cu at (-3.61, -1.805, 1.805): rounding "
        "decides whether MULTI takes it, and the symmetry may be lost\n";
    ExpectFindings("cu001_small", {{[=](Example& e) { e.Record().radial.LnX.back() = touching; }, tie},
                                   {[=](Example& e) { e.Record().radial.LnX.back() = touching + 1e-5; }, ""},
                                   {[=](Example& e) {
                                        e.method = kSlowMulti;
                                        e.Record().radial.LnX.back() = touching;
                                    },
                                    ""}});
}

TEST(InputCheck, TellsTheRadiiOfTouchingSpheres) {
    const auto remedy = [](double as_angstrom, double ga_angstrom) {
        Example e("gaas001");
        e.phaseShifts.records[0].radial.LnX.back() = std::log(as_angstrom * 1e-10);
        e.phaseShifts.records[1].radial.LnX.back() = std::log(ga_angstrom * 1e-10);
        const InputFindings findings = CheckInputs({&e.cluster, &e.waves, &e.phaseShifts});
        return findings.empty() ? "" : findings[0].remedy;
    };
    const std::string before = "make phase shifts with touching spheres: in a recipe [phases] radius = { ";
    const std::string behind = " }, on the command line the option of that name";
    EXPECT_EQ(remedy(1.2, 1.2478), "");
    EXPECT_EQ(remedy(1.2, 1.6), before + "As = 0.847" + behind);
    EXPECT_EQ(remedy(1.6, 1.2), before + "Ga = 0.847" + behind);
    EXPECT_EQ(remedy(2.2, 1.2), before + "As = 1.223, Ga = 1.223" + behind);
}

// A file of phase shifts alone tells by its radii where neighbours stand.
TEST(InputCheck, SamplingOfPhaseShiftsAlone) {
    Example e("cu001_small");
    e.Record().Ek_eV = 20.0;
    const InputFindings findings = CheckInputs({nullptr, nullptr, &e.phaseShifts});
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_NE(findings[0].what.find("l size 14, which is sampled at 5.20"), std::string::npos)
        << findings[0].what;
    EXPECT_EQ(findings[0].severity, Severity::kMisfit);
}
