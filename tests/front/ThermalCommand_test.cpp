#include <filesystem>

#include "RunQvre.h"
#include "TempFolder.h"

namespace {

std::string Example(const std::string& name) {
    std::ostringstream text;
    text << std::ifstream(QVRE_EXAMPLES "/" + name, std::ios::binary).rdbuf();
    return text.str();
}

}  // namespace

// The files of the examples were made by another program.
TEST(ThermalCommand, MakesTheFilesOfTheExamples) {
    const TempFolder folder;
    const std::string out = folder.Path("made.xml_flu");
    const auto made = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "thermal");
        arguments.insert(arguments.end(), {"--temperature", "300", "-o", out});
        const QvreResult result = RunQvre(arguments);
        EXPECT_EQ(result.status, 0) << result.errors;
        return folder.Read("made.xml_flu");
    };
    const std::string gaas = QVRE_EXAMPLES "/gaas001/cluster.xml_cl";
    EXPECT_EQ(made({"--element", "Cu"}), Example("cu001_small/fluctuation.xml_flu"));
    EXPECT_EQ(made({"--debye", "As=360,Ga=360", gaas}), Example("gaas001/fluctuation.xml_flu"));
    EXPECT_EQ(made({gaas, "--model", "einstein"}), Example("gaas001/fluctuation_einstein.xml_flu"));
    EXPECT_EQ(made({"--model", "cluster"}), Example("gaas001/fluctuation_cluster.xml_flu"));
}

TEST(ThermalCommand, TellsUiso) {
    const TempFolder folder;
    const auto told = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"thermal", "-o", folder.Path("f.xml_flu")});
        const std::string text = RunQvre(arguments).output;
        return text.substr(std::min(text.find('\n'), text.size() - 1) + 1);
    };
    // The figures of the README of the example.
    EXPECT_EQ(told({QVRE_EXAMPLES "/gaas001/cluster_uiso.xyz", "--model", "cluster"}),
              "  As   Uiso 0.004496 angstrom^2 on 78 atoms\n  Ga   Uiso 0.004831 angstrom^2 on 70 atoms\n");
    EXPECT_EQ(told({"--debye", "As=360"}),
              "  As   Uiso 0.0044962 angstrom^2   Debye temperature 360 K (given)\n");
    EXPECT_EQ(told({"--model", "einstein", "--temperature", "600"}),
              "  all elements   Uiso 0.0118342 angstrom^2\n");
    EXPECT_EQ(
        told({"--element", "C"}),
        "  C   Uiso 0.000730923 angstrom^2   Debye temperature 2230 K (Kittel, of the pure element)\n"
        "  warning: U of C is 2.08 times too small: 300 K is low against its Debye temperature of 2230 K; "
        "the formula is one of high temperature; give 0.00151955 angstrom^2 as U with the cluster\n");
}

TEST(ThermalCommand, LeavesNothingWhenItFails) {
    const TempFolder folder;
    const std::vector<std::pair<int, std::vector<std::string>>> cases = {
        {2, {}},
        {2, {"--debye", "Cu=34x"}},
        {2, {"--debye", "Cu"}},
        {2, {"--debye", "Cu=343", "--debye", "Cu=315"}},
        {2, {"--debye", "Cu=343", "--model", "einstein"}},
        {2, {"--element", "Cu", "--temperature", "nan"}},
        {2, {"--element", "Cu", "--temperature", "1e9"}},
        {2, {"--element", "Cu", "--model", "debey"}},
        {1, {"--element", "F"}},
        {1, {"--debye", "Cu=-1"}},
        {1, {folder.Write("bad.xyz", "1\ntitle\nCu 0 0\n")}}};
    for (auto [status, arguments] : cases) {
        arguments.insert(arguments.begin(), {"thermal", "-o", folder.Path("out/f.xml_flu")});
        std::filesystem::create_directory(folder.Path("out"));
        const QvreResult result = RunQvre(arguments);
        EXPECT_EQ(result.status, status) << arguments.back();
        EXPECT_TRUE(result.errors.starts_with("qvre thermal: ")) << result.errors;
        EXPECT_TRUE(std::filesystem::is_empty(folder.Path("out"))) << arguments.back();
    }
}
