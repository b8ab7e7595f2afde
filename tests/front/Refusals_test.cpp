#include <gtest/gtest.h>

#include <filesystem>

#include "RunQvre.h"
#include "TempFolder.h"
#include "report/SphereFunctions.h"
#include "report/sphere/ImageSum.h"

namespace {

std::string Replaced(std::string text, const std::string& word, const std::string& by) {
    for (std::size_t at = 0; (at = text.find(word, at)) != std::string::npos; at += by.size())
        text.replace(at, word.size(), by);
    return text;
}

void WriteInputs(const TempFolder& folder) {
    const auto values = [](double x, double, double z) { return (2.0 + z) * (1.0 + 0.3 * x); };
    const auto smooth = [](double, double, double z) { return 2.0 + z; };
    WriteImageFile(folder.Path("disc.xml_img"), Sampled(SphereMap::kAzimuthalEquidistant, 5.0, values));
    WriteImageFile(folder.Path("i0.xml_img"), Sampled(SphereMap::kAzimuthalEquidistant, 5.0, smooth));
    SaveAsymmetry(folder.Path("disc.xml_img"), folder.Path("i0.xml_img"), folder.Path("asymmetry.xml_img"));
    WriteImageFile(folder.Path("cylinder.xml_img"), Sampled(SphereMap::kEquidistantCylindrical, 5.0, smooth));
    const std::string cubic = "lengths 5.65 5.65 5.65\n";
    const std::string image = FileText(QVRE_OLD_IMAGES "/version0.xml_img");
    const std::pair<const char*, std::string> texts[] = {
        {"broken.cif", "data_x\nloop_\n_atom_site_label\n"},
        {"flat.cell", "lengths 3 3 0.2\natom Cu 0 0 0\n"},
        {"near.cell", cubic + "atom Ga 0 0 0\natom As 0.98 0 0\n"},
        {"far.cell", cubic + "atom Ga 0 0 0\natom As 1e9*1e9 0 0\n"},
        {"lower.cell", cubic + "atom ga 0 0 0\n"},
        {"two.xyz", "2\ntwo\nCu 0 0 0\nCu 0 0 2.5\n"},
        {"unknown.xyz", "2\ntwo\nXx 0 0 0\nXx 0 0 2.5\n"},
        {"beside.xyz", "2\nbeside\nGa 2.4 0 0\nAs 0.02 0 0\n"},
        {"several.xyz", "1\nfirst\nGa 0 0 0\n1\nsecond\nAs 0 0 0\n"},
        {"bad.xyz", "1\ntitle\nCu 0 0\n"},
        {"data.csv", "1,2,3\n1,2,x\n"},
        {"points.csv", "80,0,5\n80,9,7\n"},
        {"polar.csv", "10,0,5\n20,0,7\n30,0,6\n"},
        {"flat.csv", "theta,phi,chi\n10,0,1\n20,0,1\n"},
        {"chi.csv", "theta,phi,chi\n10,0,1\n20,0,2\n"},
        {"cut.xml_sf",
         "<QVRE_ScatteringData><data><ListScatteringData><i><StIndex>0</StIndex></i></ListScatteringData>"
         "</data></QVRE_ScatteringData>"},
        {"begun.xml", "<"},
        {"odd.xml", "<html><body></body></html>"},
        {"version1.xml_img", "<DataOfProcessImage><version>1</version></DataOfProcessImage>"},
        {"short.xml_img", Replaced(image, "<RowSize>2", "<RowSize>9")}};
    for (const auto& [name, text] : texts) folder.Write(name, text);
    std::filesystem::resize_file(folder.Write("zeros.xyz", ""), std::uintmax_t{1} << 33U);
}

}  // namespace

TEST(Refusals, AreToldAndLeaveNothingBehind) {
    const TempFolder inputs;
    const TempFolder outputs;
    WriteInputs(inputs);
    const std::pair<const char*, std::string> folders[] = {{"OUT", outputs.Path("")},
                                                           {"IN", inputs.Path("")},
                                                           {"CU", QVRE_EXAMPLES "/cu001_small"},
                                                           {"GAAS", QVRE_EXAMPLES "/gaas001"}};
    const std::pair<const char*, const char*> recipes[] = {
        {" | ", "\n"},
        {"SPACING ",
         "[phases]\nzero = -6\n[parameters]\nd = { start = 1.75, lower = 1.4, upper = 2.2, unit = "
         "\"angstrom\" }\n"
         "[cluster]\npreset = \"Cu\"\natoms = 20\n[cluster.relax]\nd12 = \"d\"\n"},
        {"MEASURED", "[compare]\nmeasured = \"chi.csv\"\n"},
        {"COPPER ", "[cluster]\npreset = \"Cu\"\natoms = 20\n"},
        {"EMISSION", "[emission]\nlevel = \"2p\"\nkinetic = 60\n"}};
    std::ifstream table(QVRE_REFUSALS);
    std::string line;
    std::string told;
    int blocks = 0;
    while (std::getline(table, line)) {
        if (line.empty() || line.front() == '#') continue;
        std::getline(table, told);
        std::string words = line.substr(2);
        const std::string command = "qvre " + words.substr(0, words.find(' '));
        if (command == "qvre run" || command == "qvre fit") {
            std::string recipe = words.substr(3);
            for (const auto& [word, text] : recipes) recipe = Replaced(recipe, word, text);
            words = words.substr(0, 3) + " " + inputs.Write("r.toml", recipe + "\n") + " -o OUT/results";
        }
        for (const auto& [word, path] : folders) words = Replaced(words, word + std::string("/"), path + "/");
        QvreResult result = RunQvre(words);
        for (const auto& [word, path] : folders) {
            result.errors = Replaced(result.errors, path + "/", "");
            result.errors = Replaced(result.errors, path, "");
        }
        const bool usage = line.front() == '2';
        EXPECT_EQ(result.status, usage ? 2 : 1) << line;
        EXPECT_EQ(result.errors, command + ": " + told + "\n" + (usage ? "See " + command + " --help\n" : ""))
            << line;
        EXPECT_EQ(result.output, "") << line;
        EXPECT_TRUE(std::filesystem::is_empty(outputs.Path(""))) << line;
        ++blocks;
    }
    EXPECT_GT(blocks, 100);
}
