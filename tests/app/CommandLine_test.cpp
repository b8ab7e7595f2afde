#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <string>

#include "TempFolder.h"

// The built program, in a folder of its own with a small set of inputs: whole transcripts, as they stand in
// data/, files and exit status.

namespace {

const std::string kProgram = QVRE_PROGRAM;

struct Outcome {
    std::string text;
    int status;
};

class CommandLine : public testing::Test {
protected:
    CommandLine() { std::filesystem::copy(QVRE_TRANSCRIPTS, folder.Path("")); }

    /// The output of a shell line that starts in the folder; the time of the run, if any, reads T.
    Outcome Shell(const std::string& line) const {
        const std::string whole = "cd '" + folder.Path("") + "' && " + line + " 2>/dev/null";
        std::FILE* pipe = popen(whole.c_str(), "r");
        Outcome outcome;
        std::array<char, 4096> buffer{};
        while (const std::size_t n = std::fread(buffer.data(), 1, buffer.size(), pipe))
            outcome.text.append(buffer.data(), n);
        outcome.status = WEXITSTATUS(pclose(pipe));
        const std::size_t time = outcome.text.find("time(s)= ");
        if (time != std::string::npos)
            outcome.text.replace(time + 9, outcome.text.find('\n', time) - time - 9, "T");
        return outcome;
    }
    Outcome Run(const std::string& arguments) const { return Shell("'" + kProgram + "' " + arguments); }

    void ExpectRun(const std::string& arguments, const std::string& text, int status) const {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.text, text) << arguments;
        EXPECT_EQ(outcome.status, status) << arguments;
    }

    TempFolder folder;
};

const std::string kFinished = "Finished: Calcuation time(s)= T\n";

const std::string kScatter = "-C c.xyz -F e.xml_emt -P p.xml_ph -W w.xml_sf ";

}  // namespace

TEST_F(CommandLine, PrintsTheUsage) {
    ExpectRun("", folder.Read("usage.txt"), 0);
    ExpectRun("-H -M XX", "Error: Mapping method is not correct.\n", 255);
}

TEST_F(CommandLine, RunsBothStages) {
    ExpectRun(kScatter + "-I i.xml_img -I0 direct.xml_img -R 90", folder.Read("both_stages.txt"), 0);
    // Nine pixels, the four corners off the map; the direct wave is 1 everywhere on it.
    EXPECT_EQ(folder.Read("direct.xml_img"), folder.Read("i0.xml_img"));
    const std::string combined = folder.Read("i.xml_img");
    ExpectRun("-W w.xml_sf -I j.xml_img -R 90", folder.Read("image_only.txt"), 0);
    EXPECT_EQ(folder.Read("j.xml_img"), combined) << "positions of few digits survive the file";
    EXPECT_NE(folder.Read("w.xml_sf"), "") << "an input of an image run is not touched";
    Run("-W w.xml_sf -I k.xml_img -R 90 -MFPS 3");
    EXPECT_EQ(folder.Read("k.xml_img"), combined);
    Run("-W w.xml_sf -I k.xml_img -R 90 -L 2.5");
    EXPECT_EQ(folder.Read("k.xml_img"), folder.Read("i0.xml_img")) << "the limit itself is left out";
    for (const std::string method : {"SINGLE", "SLOWMULTI"})
        ExpectRun(kScatter + "-MS " + method, folder.Read("single.txt"), 0);
}

TEST_F(CommandLine, EmptiesItsOutputsBeforeItCalculates) {
    folder.Write("w.xml_sf", "old wave");
    ExpectRun("-C none.xyz -W w.xml_sf", "Error: FILE CANNOT OPEN:none.xyz\n", 255);
    EXPECT_EQ(folder.Read("w.xml_sf"), "");
    std::filesystem::remove(folder.Path("fluctuation.xml_flu"));
    folder.Write("i.xml_img", "old image");
    ExpectRun("-I i.xml_img -W w.xml_sf", "Error: fluctuation.xml_flu: Cannot File Open\n", 255);
    EXPECT_EQ(folder.Read("i.xml_img"), "");
    ExpectRun("-C c.xyz -W no/w.xml_sf", "Error: File Cannot Write no/w.xml_sf\n", 255);
}

TEST_F(CommandLine, TakesNamesByTheirBytesAndNeedsNoStandardStreams) {
    Run(kScatter + "-I i.xml_img -R 90");
    std::filesystem::copy(folder.Path("c.xyz"), folder.Path("c\xFF.xyz"));  // no UTF-8, as the names below
    const std::string scatter = "-C 'c\xFF.xyz' -F e.xml_emt -P p.xml_ph -W 'w\xFF.xml_sf' ";
    EXPECT_EQ(Run(scatter + "-I 'i\xC3.xml_img' -R 90 <&- >&-").status, 0);
    EXPECT_EQ(folder.Read("w\xFF.xml_sf"), folder.Read("w.xml_sf"));
    EXPECT_EQ(folder.Read("i\xC3.xml_img"), folder.Read("i.xml_img"));
}

TEST_F(CommandLine, FailsWithATextOrInSilence) {
    // Three atoms: the middle one has no radius, which is an out-of-range failure.
    folder.Write("c.xyz", "3\nrow\nCu 0 0 0\nCu 0 0 2.5\nCu 0 0 5\n");
    const Outcome outcome = Run(kScatter);
    EXPECT_EQ(outcome.status, 255);
    EXPECT_EQ(outcome.text.find("Error"), std::string::npos);
    folder.Write("c.xyz", "1\nother\nAg 0 0 0\n");
    EXPECT_TRUE(
        Run(kScatter).text.ends_with("StIndex0/1\nEWIndex0/1\nError: Error: There is no phase shift data\n"));
    ExpectRun("-I i.xml_img -W w.xml_sf -R abc",
              "anglar_resolution 0\nFluctuation loaded\nLoading scattering wave\nLoaded..Scattering data =0\n"
              "Error: matrix creation Parameter Error\n",
              255);
}

TEST_F(CommandLine, DoesNothingWithoutAStage) {
    ExpectRun("-W x -I0 y", kFinished, 0);
    ExpectRun("-MFPE", "MeanFreePath=0;By Emitter Distance \n" + kFinished, 0);
    EXPECT_FALSE(std::filesystem::exists(folder.Path("y")));
}

TEST_F(CommandLine, FindsTheTableOfWeights) {
    const std::string directory = std::filesystem::path(kProgram).parent_path();
    const std::string bare = "PATH='" + directory + "':\"$PATH\" cmd_qvre -W x";
    EXPECT_EQ(Shell(bare).text, kFinished);
    folder.Write("AtomicWeight.txt", "2\tHe\tHelium\t4.0026\n");
    EXPECT_EQ(Shell(bare).text, "Error: Debye:LoadAtomicWeight File: order is not correct.\n");
    EXPECT_EQ(Run("-W x").text, kFinished);
    std::filesystem::create_directory(folder.Path("bin"));
    std::filesystem::create_symlink(kProgram, folder.Path("bin/cmd_qvre"));
    EXPECT_EQ(Shell("bin/cmd_qvre -W x").text, "Error: FILE CANNOT OPEN:bin/AtomicWeight.txt\n");
}
