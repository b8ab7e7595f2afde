#include <cmath>

#include "RunQvre.h"
#include "TempFolder.h"
#include "scattering/ZfScatteringData.h"
#include "xml/ZfBarnXml.h"

namespace {

const std::string kExamples = QVRE_EXAMPLES;

}  // namespace

TEST(InfoCommand, SetThatFits) {
    const QvreResult result = RunQvre("info " + kExamples + "/cu001_small");
    EXPECT_EQ(result.status, 0) << result.errors;
    std::string text = result.output;
    for (std::size_t at = text.find(kExamples); at != std::string::npos; at = text.find(kExamples))
        text.erase(at, kExamples.size());
    EXPECT_EQ(
        text,
        "/cu001_small/cluster.xml_cl: cluster\n"
        "  1 structure\n"
        "  0: 54 atoms: Cu 54\n"
        "    emitter Cu at (0, 0, 0) angstrom\n"
        "    x -5.415 to 5.415, y -5.415 to 5.415, z -1.805 to 3.61 angstrom\n"
        "    nearest neighbours 2.55266 angstrom apart\n"
        "    Uiso none\n"
        "  mean free path 10.1 angstrom at 560 eV (TPP-2M: 8.97 g/cm^3, 11 valence electrons in 63.546 u, "
        "gap 0 "
        "eV)\n"
        "/cu001_small/emitter.xml_emt: emitted waves\n"
        "  3 waves\n"
        "  0: 560 eV, l size 3, |A|^2 of l = 2: 3.68491\n"
        "  1: 560 eV, l size 3, |A|^2 of l = 0: 0.283352, l = 2: 4.9132\n"
        "  2: 560 eV, l size 3, |A|^2 of l = 2: 3.68491\n"
        "  sum of |A|^2 12.5664, 1 times 4 pi\n"
        "/cu001_small/phaseshift.xml_ph: phase shifts\n"
        "  1 record\n"
        "  0: Cu, 560 eV, l size 14, 333.606 to 0.349148 degrees, radius 1.27633 angstrom; superposed DHFS "
        "atoms, Cu a=3.61 A, Furness-McCarthy exchange\n"
        "/cu001_small/fluctuation.xml_flu: fluctuation\n"
        "  temperature 300 K\n"
        "  Uiso from the Debye model\n"
        "  Debye temperature of Cu 343 K\n"
        "The four files fit together\n");
}

TEST(InfoCommand, MeanFreePath) {
    const std::string cluster = "info " + kExamples + "/gaas001/cluster.xml_cl";
    const auto told = [&](const std::string& options) {
        const std::string text = RunQvre(cluster + options).output;
        const std::size_t at = text.find("mean free path ");
        return at == std::string::npos ? "" : text.substr(at + 15, 4);
    };
    EXPECT_EQ(told(""), "");
    EXPECT_EQ(told(" --kinetic 1119"), "24.2");
    EXPECT_EQ(told(" --kinetic 1119 --gap 1.4"), "24.3");
    EXPECT_PRED_FORMAT2(testing::IsSubstring,
                        "warning: TPP-2M holds from 50 to 200000 eV, and 45 eV lies outside",
                        RunQvre(cluster + " --kinetic 45").output);
}

TEST(InfoCommand, Misfit) {
    const QvreResult result = RunQvre("info " + kExamples + "/gaas001/cluster.xyz " + kExamples +
                                      "/cu001_small/fluctuation.xml_flu");
    EXPECT_EQ(result.status, 1);
    EXPECT_PRED_FORMAT2(testing::IsSubstring,
                        "misfit: the Debye table lacks As, the element of the emitter\n"
                        "    remedy: add As with its Debye temperature to the fluctuation file\n",
                        result.output);
    EXPECT_EQ(result.errors, "qvre info: The input does not fit, see the misfits above\n");
    const TempFolder folder;
    const std::string words = folder.Write("w.xyz", "1\ntitle\nCu 0 0 NaN\n");
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "misfit: " + words + " line 3: NaN is no finite number",
                        RunQvre("info " + words).output);
}

// Only MULTI needs the radius of an atom, and SINGLE takes s waves alone.
TEST(InfoCommand, ChecksForAMethod) {
    const TempFolder folder;
    std::string phases = FileText(kExamples + "/cu001_small/phaseshift.xml_ph");
    const std::size_t begin = phases.find("<LnX>");
    phases.erase(begin, phases.find("</LnX>") + 6 - begin);
    const std::string bare = folder.Write("p.xml_ph", phases);
    const std::string waves = kExamples + "/cu001_small/emitter.xml_emt";
    const std::tuple<std::string, std::string, int> cases[] = {
        {"", bare, 1},  {"--method MULTI ", bare, 1},   {"--method SLOWMULTI ", bare, 0},
        {"", waves, 0}, {"--method SINGLE ", waves, 1}, {"--method SLOWMULTI ", waves, 0}};
    for (const auto& [method, file, status] : cases)
        EXPECT_EQ(RunQvre("info " + method + file).status, status) << method << file;
}

TEST(InfoCommand, ResultsOfARun) {
    const TempFolder folder;
    ZfScatteringData data;
    data.Version = kMulti;
    ZfScatteringRecord& record = data.ListScatteringData.emplace_back();
    record.atomLabels = {"Cu1", "Cu", "Cu"};
    record.NextListScatterer.electrons.resize(3);
    for (ZfFreeElectron& source : record.NextListScatterer.electrons) source.A.SetSize(14);
    record.NextListScatterer.electrons[0].A.SetSize(3);
    record.NextListScatterer.electrons[2].position = Vector3(0, 0, 5e-10);
    record.NextListScatterer.electrons[2].Uiso = 2e-23;
    record.NextListScatterer.SetEnergy_eV(560.0);
    record.ListScatterer = record.NextListScatterer;
    ZfBarnXml xml("w");
    data.Exchange(xml);
    const std::string path = folder.Write("wave.xml_sf", xml.Document());
    EXPECT_EQ(RunQvre("info " + path).output,
              path +
                  ": scattered waves\n"
                  "  method MULTI, tolerance 0.01\n"
                  "  1 record\n"
                  "  structure 0, wave 0: 560 eV, 3 atoms, Cu 2, Cu1 1, emitted l size 3, scattered 14, "
                  "farthest atom 5 angstrom, Uiso 0 to 0.002 angstrom^2\n");
    const std::string image = QVRE_OLD_IMAGES "/version0.xml_img";
    EXPECT_EQ(RunQvre("info " + image).output, image +
                                                   ": images, version 0\n"
                                                   "  1 image\n"
                                                   "    0: 3 x 2, values -2.5 to 65536, mean 10922.4\n"
                                                   "  Comment: first light\n"
                                                   "  DataType: spectrum & image\n"
                                                   "  TimeBegin: 10:20\n"
                                                   "  TimeEnd: 10:30\n");
}

// Whatever a file is cut to, it is refused, and named.
TEST(InfoCommand, DamagedFiles) {
    const TempFolder folder;
    const std::string source = kExamples + "/cu001_small/";
    for (const std::string name :
         {"cluster.xml_cl", "cluster.xyz", "emitter_s.xml_emt", "phaseshift.xml_ph", "fluctuation.xml_flu"}) {
        const std::string whole = FileText(source + name);
        for (const double part : {0.0, 0.01, 0.3, 0.9, 0.99}) {
            const auto length = static_cast<std::size_t>(part * static_cast<double>(whole.size()));
            const QvreResult result = RunQvre("info " + folder.Write(name, whole.substr(0, length)));
            EXPECT_EQ(result.status, 1) << name << ' ' << part;
            EXPECT_TRUE(result.errors.starts_with("qvre info: " + folder.Path(name) + ": ")) << result.errors;
        }
    }
}

// A threefold pattern with a mirror plane at azimuth 20, all around but for a gap, and the same over 60
// degrees.
TEST(InfoCommand, TellsWhatATableHolds) {
    const TempFolder folder;
    std::string table = "theta,phi,counts,remark\n";
    std::string sector = "IGOR\nWAVES/D theta phi counts\nBEGIN\n";
    for (int theta = 10; theta <= 70; theta += 5)
        for (int phi = 0; phi < 360; phi += 5) {
            const double counts = 1000.0 + 100.0 * std::cos(3.0 * (phi - 20) * 0.017453292519943295);
            const bool isGap = theta == 30 && phi > 100 && phi < 120;
            table += std::to_string(theta) + "," + std::to_string(phi) + "," +
                     (isGap ? "" : std::to_string(counts)) + ",x\n";
            if (phi >= 300)
                sector +=
                    std::to_string(theta) + " " + std::to_string(phi) + " " + std::to_string(counts) + "\n";
        }
    const std::string all = folder.Write("all.csv", table);
    QvreResult result = RunQvre("info " + all);
    EXPECT_EQ(result.output, all +
                                 ": measured table\n"
                                 "  list of points, separated by commas\n"
                                 "    column 1 \"theta\": polar angle\n"
                                 "    column 2 \"phi\": azimuth\n"
                                 "    column 3 \"counts\": intensity\n"
                                 "    column 4 \"remark\": skipped\n"
                                 "  933 points, 3 left out: empty or not a number\n"
                                 "  intensity 900 to 1100\n"
                                 "  13 rings, polar angles 10 to 70 degrees in steps of 5\n"
                                 "  azimuths all around, steps of 5 degrees\n"
                                 "  gaps in azimuth: 1\n"
                                 "    polar angle 30, azimuth 100 to 120\n"
                                 "  correlation of the data with themselves turned by\n"
                                 "    60 degrees: -1.00, of 930 pairs\n"
                                 "    90 degrees: 0.00, of 930 pairs\n"
                                 "    120 degrees: 1.00, of 930 pairs\n"
                                 "    180 degrees: -1.00, of 930 pairs\n"
                                 "  best mirror plane at azimuth 20 degrees: correlation 1.00\n")
        << result.errors;
    result = RunQvre("info " + folder.Write("sector.itx", sector + "END\n"));
    EXPECT_PRED_FORMAT2(testing::IsSubstring,
                        "  azimuths 300 to 355 degrees, a sector of 55, steps of 5 degrees\n", result.output);

    const auto told = [&](const char* text, const char* line) {
        EXPECT_PRED_FORMAT2(testing::IsSubstring, line,
                            RunQvre("info " + folder.Write("t.dat", text)).output);
    };
    told("theta,phi,I\n-10,30,1\n0,30,2\n10,30,3\n",
         "  a polar scan at azimuth 30 degrees: -10 to 10 degrees in steps of 10\n");
    told("theta = 45\nphi,I\n0,1\n3,2\n6,3\n", "  an azimuthal scan at polar angle 45 degrees\n");
    told("E,I\n300,1\n310,2\n",
         "  to compare with it: the table does not tell the polar angle: set measured-theta\n");
    told(
        "theta,phi,E,I\n0,0,300,1\n0,0,310,2\n",
        "  1 point in a direction that occurred before\n  one direction: polar angle 0, azimuth 0 degrees\n");
    const std::string bad = folder.Write("bad.dat", "1 2 3\n1 2 x\n");
    result = RunQvre("info " + bad);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "qvre info: " + bad + ": line 2: \"x\" is not a number\n");
}
