#include "RunQvre.h"
#include "TempFolder.h"
#include "scattering/ZfScatteringData.h"
#include "xml/ZfBarnXml.h"

namespace {

const std::string kExamples = QVRE_EXAMPLES;

std::string ReadFile(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

}  // namespace

TEST(InfoCommand, SetThatFits) {
    const QvreResult result = RunQvre({"info", kExamples + "/cu001_small"});
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

TEST(InfoCommand, Misfit) {
    const QvreResult result =
        RunQvre({"info", kExamples + "/gaas001/cluster.xyz", kExamples + "/cu001_small/fluctuation.xml_flu"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find("misfit: the Debye table lacks As, the element of the emitter\n"
                                 "    remedy: add As with its Debye temperature to the fluctuation file\n"),
              std::string::npos)
        << result.output;
    EXPECT_EQ(result.errors, "qvre info: The input does not fit, see the misfits above\n");
    // Only MULTI needs the radius of an atom.
    const TempFolder folder;
    std::string phases = ReadFile(kExamples + "/cu001_small/phaseshift.xml_ph");
    const std::size_t begin = phases.find("<LnX>");
    phases.erase(begin, phases.find("</LnX>") + 6 - begin);
    const std::string path = folder.Write("p.xml_ph", phases);
    EXPECT_EQ(RunQvre({"info", path}).status, 1);
    EXPECT_EQ(RunQvre({"info", "--method", "SLOWMULTI", path}).status, 0);
    const std::vector<std::string> single = {"info", "--method", "SINGLE",
                                             kExamples + "/cu001_small/emitter.xml_emt"};
    EXPECT_EQ(RunQvre(single).status, 1);
    const std::string words = folder.Write("w.xyz", "1\ntitle\nCu 0 0 NaN\n");
    const std::string found = RunQvre({"info", words}).output;
    EXPECT_NE(found.find("misfit: " + words + " line 3: NaN is no finite number"), std::string::npos)
        << found;
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
    record.NextListScatterer.SetEnergy_eV(560.0);
    record.ListScatterer = record.NextListScatterer;
    ZfBarnXml xml("w");
    data.Exchange(xml);
    const std::string path = folder.Write("wave.xml_sf", xml.Document());
    EXPECT_EQ(RunQvre({"info", path}).output,
              path +
                  ": scattered waves\n"
                  "  method MULTI, tolerance 0.01\n"
                  "  1 record\n"
                  "  structure 0, wave 0: 560 eV, 3 atoms, Cu 2, Cu1 1, emitted l size 3, scattered 14, "
                  "farthest atom 5 angstrom, Uiso 0 angstrom^2\n");
    const std::string image = QVRE_OLD_IMAGES "/version0.xml_img";
    EXPECT_EQ(RunQvre({"info", image}).output, image +
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
        const std::string whole = ReadFile(source + name);
        for (const double part : {0.0, 0.01, 0.3, 0.9, 0.99}) {
            const auto length = static_cast<std::size_t>(part * static_cast<double>(whole.size()));
            const QvreResult result = RunQvre({"info", folder.Write(name, whole.substr(0, length))});
            EXPECT_EQ(result.status, 1) << name << ' ' << part;
            EXPECT_TRUE(result.errors.starts_with("qvre info: " + folder.Path(name) + ": ")) << result.errors;
        }
    }
    std::string image = ReadFile(QVRE_OLD_IMAGES "/version0.xml_img");
    const std::string rows = "<RowSize>2";
    ASSERT_NE(image.find(rows), std::string::npos);
    const std::string path =
        folder.Write("short.xml_img", image.replace(image.find(rows), rows.size(), "<RowSize>9"));
    EXPECT_EQ(RunQvre({"info", path}).errors,
              "qvre info: " + path + ": it is damaged: the data of an image are too short for its sizes\n");
    // Zeros without end are no cluster, whatever the extension.
    const std::string zeros = folder.Write("zeros.xyz", "");
    std::filesystem::resize_file(zeros, std::uintmax_t{1} << 33U);
    EXPECT_EQ(
        RunQvre({"info", zeros}).errors,
        "qvre info: " + zeros + ": it is no Extended XYZ: it does not begin with the number of atoms\n");
    const std::pair<const char*, const char*> cases[] = {
        {"<html><body></body></html>",
         "it is no cluster, emitted wave, phase shift, fluctuation, scattered wave or image file"},
        {"<DataOfProcessImage><version>1</version></DataOfProcessImage>",
         "it is an image file of a version that is not known; known are 0 and 2 to 6"},
        {"<", "it is no cluster, emitted wave, phase shift, fluctuation, scattered wave or image file"}};
    for (const auto& [text, message] : cases) {
        const std::string odd = folder.Write("odd.xml", text);
        EXPECT_EQ(RunQvre({"info", odd}).errors, "qvre info: " + odd + ": " + message + "\n");
    }
}
