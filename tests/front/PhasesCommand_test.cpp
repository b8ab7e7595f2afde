#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "RunQvre.h"
#include "TempFolder.h"
#include "input/EmittedWave.h"
#include "input/ZfPhaseShiftDocument.h"

namespace {

const std::string kSet = QVRE_EXAMPLES "/";

ZfPhaseShiftDocument Load(const std::string& path) {
    ZfPhaseShiftDocument document;
    ZfLoadPhaseShift(document, path);
    return document;
}

}  // namespace

// The shipped files hold what the whole crystal gives; the command sees the cluster alone.
TEST(PhasesCommand, MeetsTheShippedFiles) {
    for (const std::string set : {"cu001_small", "gaas001"}) {
        const TempFolder folder;
        const std::string output = folder.Path("phaseshift.xml_ph");
        const std::string path = kSet + set;
        const QvreResult run =
            RunQvre("phases " + path + "/cluster.xml_cl --waves " + path + "/emitter.xml_emt -o " + output);
        EXPECT_EQ(run.errors, "");
        const ZfPhaseShiftDocument made = Load(output);
        ZfPhaseShiftDocument shipped = Load(path + "/phaseshift.xml_ph");
        ASSERT_EQ(made.records.size(), shipped.records.size());
        for (std::size_t i = 0; i < made.records.size(); ++i) {
            PhaseShiftRecord a = made.records[i];
            PhaseShiftRecord& b = shipped.records[i];
            EXPECT_EQ(a.AtomName, b.AtomName);
            EXPECT_EQ(a.Ek_eV, b.Ek_eV);
            ASSERT_EQ(a.PhaseShiftValue.VectorSize(), b.PhaseShiftValue.VectorSize());
            for (std::int32_t l = 0; l < a.PhaseShiftValue.VectorSize(); ++l)
                EXPECT_NEAR(a.PhaseShiftValue.VectorAt(l), b.PhaseShiftValue.VectorAt(l), 0.005)
                    << a.AtomName;
            ASSERT_EQ(a.radial.LnX.size(), b.radial.LnX.size());
            EXPECT_NEAR(a.radial.LnX[1], b.radial.LnX[1], 1.1e-5);
            // Those made here reach a little beyond the touching sphere.
            EXPECT_NEAR(a.radial.LnX.back(), b.radial.LnX.back() + 1e-4, 1.1e-5);
        }
    }
}

TEST(PhasesCommand, TakesOptionsAndTables) {
    const TempFolder folder;
    const std::string list =
        folder.Write("cu.txt", "species Bulk Cu 11.76\nCu 2.5527 12\nCu 3.61 6\nCu 4.42 24\n");
    const std::string output = folder.Path("p.xml_ph");
    QvreResult run = RunQvre("phases --surroundings " + list +
                             " --exchange slater --relativistic --radius Bulk=1.25 --zero -6 --radial 50 "
                             "--lmax 4 --energy 300:400:50,0.5e3 -o " +
                             output);
    ZfPhaseShiftDocument document = Load(output);
    ASSERT_EQ(document.records.size(), 4U);
    EXPECT_EQ(document.records[3].Ek_eV, 500.0);
    EXPECT_EQ(document.records[0].PhaseShiftValue.VectorSize(), 5);
    EXPECT_EQ(document.records[0].radial.P.size(), 5U);
    EXPECT_NEAR(std::exp(document.records[0].radial.LnX.back()), 1.25e-10, 1e-15);
    EXPECT_EQ(document.records[0].FileName, "superposed DHFS atoms, Slater exchange, scalar-relativistic");
    EXPECT_PRED_FORMAT2(testing::IsSubstring, " -6.000 ", run.output);

    // The crystal itself, and what a cluster of it sees.
    const std::string cell = folder.Write("Cu.cell",
                                          "lengths 3.61 3.61 3.61\natom Cu 0 0 0\natom Cu 0 1/2 1/2\n"
                                          "atom Cu 1/2 0 1/2\natom Cu 1/2 1/2 0\n");
    run = RunQvre("phases --cell " + cell + " --energy 560 -o " + output);
    ZfPhaseShiftDocument shipped = Load(kSet + "cu001_small/phaseshift.xml_ph");
    document = Load(output);
    ASSERT_EQ(document.records.size(), 1U);
    for (std::int32_t l = 0; l < 14; ++l)
        EXPECT_NEAR(document.records[0].PhaseShiftValue.VectorAt(l),
                    shipped.records[0].PhaseShiftValue.VectorAt(l), 1e-3);

    const std::string table = folder.Write("t.csv", "Ek_eV,d0,d1\n100,80,20\n200,60,0.2\n");
    run =
        RunQvre("phases --table " + table +
                " --format csv --name Cu1 --element Cu --radius 1.2 --linear --energy 150,200 -o " + output);
    document = Load(output);
    EXPECT_EQ(document.records[0].AtomName, "Cu1");
    EXPECT_EQ(document.records[0].PhaseShiftValue.VectorAt(0), 70.0);
    EXPECT_EQ(document.records[1].PhaseShiftValue.VectorSize(), 1);
    EXPECT_NEAR(std::exp(document.records[0].radial.LnX.back()), 1.2e-10, 1e-15);
}
