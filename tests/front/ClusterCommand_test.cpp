#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "TempFolder.h"
#include "front/RunQvre.h"

namespace {

using Arguments = std::vector<std::string>;

Arguments Joined(Arguments first, const Arguments& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

std::string Example(const std::string& name) {
    std::ostringstream text;
    text << std::ifstream(QVRE_EXAMPLES "/" + name, std::ios::binary).rdbuf();
    return text.str();
}

std::size_t FilesIn(const TempFolder& folder) {
    const auto begin = std::filesystem::directory_iterator(folder.Path(""));
    return static_cast<std::size_t>(std::distance(begin, std::filesystem::directory_iterator()));
}

// The files that ship were made independently: order, digits and titles are theirs.
TEST(ClusterCommand, MakesTheExamplesToTheByte) {
    const TempFolder folder;
    const Arguments cu = {"cluster", "--preset", "Cu", "--layer", "3", "--atoms", "60", "--digits", "6"};
    const Arguments gaas = {"cluster",   "--preset", "zincblende", "--element", "Ga",      "As",
                            "--lattice", "5.653",    "--emitter",  "As",        "--layer", "5",
                            "--radius",  "10.855",   "--digits",   "6"};
    const std::tuple<std::string, Arguments, Arguments> cases[] = {
        {"cu001_small/", cu, {"--debye", "Cu=343"}},
        {"gaas001/", gaas, {"--debye", "As=360", "Ga=360", "--temperature", "300"}}};
    for (const auto& [name, arguments, displacements] : cases)
        for (const std::string extension : {".xyz", ".xml_cl"}) {
            const std::string output = folder.Path("cluster" + extension);
            EXPECT_EQ(RunQvre(Joined(arguments, {"-o", output})).status, 0);
            EXPECT_EQ(folder.Read("cluster" + extension), Example(name + "cluster" + extension));
            EXPECT_EQ(RunQvre(Joined(Joined(arguments, displacements), {"-o", output})).status, 0);
            EXPECT_EQ(folder.Read("cluster" + extension), Example(name + "cluster_uiso" + extension));
        }
}

TEST(ClusterCommand, ShortestCommandSummarises) {
    const TempFolder folder;
    const QvreResult result = RunQvre({"cluster", "--preset", "Cu", "-o", folder.Path("c.xml_cl")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output,
              folder.Path("c.xml_cl") +
                  ": 1 structure, without displacements\n"
                  "structure 0: Cu(001) emitter in layer 3, hemisphere radius 9.89 A\n"
                  "  207 atoms, emitter Cu (site 1), surface plane Cu at z = 3.6100 angstrom\n"
                  "  14 shells around the emitter: 12 at 2.553, 6 at 3.610, 24 at 4.421, 12 at 5.105, 20 at "
                  "5.708, ... angstrom\n"
                  "  nearest neighbour Cu at 2.5527 angstrom, size 9.886 angstrom\n"
                  "  point symmetry 4mm about z, a mirror plane at azimuth 0 degrees\n");
}

TEST(ClusterCommand, TurnsTheCrystal) {
    const TempFolder folder;
    const QvreResult result = RunQvre({"cluster", "--preset", "Cu", "--surface", "1,1,1", "--azimuth", "17",
                                       "--domains", "0,90", "-o", folder.Path("c.xyz")});
    EXPECT_NE(result.output.find("structure 0: Cu(111)"), std::string::npos) << result.output;
    for (const char* text : {"a mirror plane at azimuth 17 degrees", "a mirror plane at azimuth 47 degrees",
                             "domain turned by 90 degrees"})
        EXPECT_NE(result.output.find(text), std::string::npos) << result.output;
}

TEST(ClusterCommand, BadInputLeavesNothingBehind) {
    const TempFolder folder;
    const std::string output = folder.Path("cluster.xyz");
    const std::string cif = folder.Write("broken.cif", "data_x\nloop_\n_atom_site_label\n");
    const std::tuple<Arguments, int, std::string> cases[] = {
        {{}, 2, "a crystal is needed"},
        {{"--preset", "Cu", "--layer", "x"}, 2, "--layer"},
        {{"--preset", "Cu", "--atoms", "1000000"}, 2, "200000"},
        {{"--preset", "Cu", "--debye", "Cu"}, 2, "Cu=343"},
        {{"--preset", "Cu", "--debye", "Cu=abc"}, 2, "\"abc\" is no number"},
        {{"--preset", "Cu", "--cell", cif}, 2, "--cell"},
        {{"--preset", "Xx"}, 1, "there are Cu, Diamond"},
        {{"--preset", "Cu", "--emitter", "Ni"}, 1, "the crystal holds Cu"},
        {{"--preset", "Cu", "--surface", "0", "0", "0"}, 1, "Miller"},
        {{"--preset", "Cu", "--radius", "nan"}, 2, "above 0"},
        {{"--cell", cif}, 1, "broken.cif"}};
    for (const auto& [arguments, status, text] : cases) {
        const QvreResult result = RunQvre(Joined(Joined({"cluster"}, arguments), {"-o", output}));
        EXPECT_EQ(result.status, status) << text;
        EXPECT_NE(result.errors.find(text), std::string::npos) << result.errors;
        EXPECT_EQ(result.errors.rfind("qvre cluster: ", 0), 0U) << result.errors;
    }
    EXPECT_EQ(RunQvre({"cluster", "--preset", "Cu", "-o", folder.Path("cluster.pdb")}).status, 2);
    EXPECT_EQ(FilesIn(folder), 1U) << "the CIF alone";
}

}  // namespace
