#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <string>

#include "TempFolder.h"

// The built program, in a folder of its own: whole transcripts, files and exit status.

namespace {

const std::string kProgram = QVRE_PROGRAM;

struct Outcome {
    std::string text;
    int status;
};

class CommandLine : public testing::Test {
protected:
    CommandLine() {
        folder.Write("c.xyz", "2\nrow\nCu 0 0 0\nCu 0 0 2.5\n");
        folder.Write(
            "e.xml_emt",
            "<emitted_wave_data><data><list_emitter><i><Ek>560</Ek><coeff><Size_l>1</Size_l><Value><l>"
            "<m><r>3.5449077</r><i>0</i></m></l></Value></coeff></i></list_emitter></data>"
            "</emitted_wave_data>");
        folder.Write(
            "p.xml_ph",
            "<PhaseShiftData><data><ListScatteringPhaseShift><i><Ek_eV>560</Ek_eV><AtomName>Cu</AtomName>"
            "<PhaseShiftValue><zf_matrix><ColSize>1</ColSize><RowSize>2</RowSize><elements>\n30,\n60,\n"
            "</elements></zf_matrix></PhaseShiftValue><AdditionalData></AdditionalData></i>"
            "</ListScatteringPhaseShift></data></PhaseShiftData>");
        folder.Write("fluctuation.xml_flu", "<DocFluctuation></DocFluctuation>");
    }

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

const std::string kUsage =
    R"(cmd_qvre usage
--Scattering Calculation ONLY
cmd_qvre -C <in_ClusterFileName> -F <in_EmittedWaveFileName> -P <in_PhaseShiftFileName>  -W <out_ScattereredWaveFileName> -MS <*Multiple scattering calcultion method: MULTI, SINGLE, SLOWMULTI>
example: cmd_qvre -C cluster.xml_cl -F emitter.xml_emt -P phaseshift.xml_ph -W scatteredwave.xml_sf
Parameter -MS is optional. -MS: default is MULTI
--Image Calculation ONLY
cmd_qvre -W <in_ScatteredWaveFileName> -T <FluctuationFileName> -I <out_PatternFileName.xml_img> -I0 <*out_I0_ImageFileName.xml_img> -R <*degree resolution: 1 or 0.5> -L <*LimitClusterSize(A)>  -M <*Mapping method: AE, EC>
example: cmd_qvre -W scatteredwave.xml_sf -I azmap.xml_img -R 0.5 -MFPE 3
Parameters -I0, -R, -L -T -M -MFP are optional.
 R: default is 1degree
 L: default is no limit
 T: defalut is 0 K.
-M: default is AE. AE: Azimuthal Equidistant map, EC: Equidistant cylindrical map
-MFPE: Mean free path length(A). Effect is depends on the distance from emitter
-MFPS: Mean free path length(A). Effect is depends on depth from surface
-MFPES: Mean free path length(A). Effect is depends on the distance from emitter and depth from surface
-LL <*Lower limit value(A)of cluster> for test
--Scattering Calculation and Image calculation
cmd_qvre -C <in_ClusterFileName> -F <in_EmittedWaveFileName> -P <in_PhaseShiftFileName> -W <out_ScatteredWaveFileName> -I <out_PatternFileName.xml_img>
 All options are available
example: cmd_qvre -C cluster.xml_cl -F emitter.xml_emt -P phaseshift.xml_ph -W scatteredwave.xml_sf -I azmap.xml_img -R 0.5 
)";

const std::string kLoaded =
    R"(loaded cluster 1
The number of atoms in cluster2
Cluster loaded
Emitter loaded
Phase shift loaded
Calculation start
StIndex0/1
EWIndex0/1
EXIT add scattering data
MulIndex:0/1
)";

const std::string kSaved =
    R"(Start load/save list scatteirng data
ListScatterer
NextListScatterer
ScattringData 0 0
Calculation finished
)";

const std::string kMulti = kLoaded +
                           R"(StIndex: 1/1, EWIndex: 1/1, MuIndex: 1/1, AtIndex: 1 / 2
OneCalculateVer2: start
StIndex: 1/1, EWIndex: 1/1, MuIndex: 1/1, AtIndex: 2 / 2
OneCalculateVer2: start
Target atom positoin(r2)(x,y,z)=(6.25e-20)(0,0,2.5e-10)
Current N Emitter=1
)" + kSaved;

const std::string kPattern =
    R"(Scattering data =1
Start pattern calculation....
START: STRUCTURE LOOP=0/1
END: STRUCTURE LOOP=0
Save to file....
)";

const std::string kImage =
    "<DataOfProcessImage><version>5</version>\n<GlobalInfo><InfoValue></InfoValue>\n<InfoString><i>"
    "<key>__SphereProjection.Name</key>\n<value>AzimuthalEquidistant</value>\n</i>\n</InfoString>\n</"
    "GlobalInfo>\n<ImageSet><i><Channel>0</Channel>\n<Image>"
    "<ZfFloatMatrixBinary><ColSize>3</ColSize>\n<ColBegin>0</ColBegin>\n<RowSize>3</RowSize>\n<RowBegin>0</"
    "RowBegin>\n<base64>"
    // Nine pixels, the four corners off the map; the direct wave is 1 (00 00 80 3f) everywhere on it.
    "00000024AAAAAAAAA+DAAAAAAAAg/AAAA+DAAA4PAAAAAAAAA+DAAAAA</base64>\n</ZfFloatMatrixBinary>\n</Image>\n</"
    "i>\n</ImageSet>\n</DataOfProcessImage>\n";

}  // namespace

TEST_F(CommandLine, PrintsTheUsage) {
    ExpectRun("", kUsage, 0);
    ExpectRun("-H -M XX", "Error: Mapping method is not correct.\n", 255);
}

TEST_F(CommandLine, RunsBothStages) {
    ExpectRun("-C c.xyz -F e.xml_emt -P p.xml_ph -W w.xml_sf -I i.xml_img -I0 i0.xml_img -R 90",
              "anglar_resolution 90\n" + kMulti + "Fluctuation loaded\n" + kPattern + kFinished, 0);
    EXPECT_EQ(folder.Read("i0.xml_img"), kImage);

    const std::string combined = folder.Read("i.xml_img");
    ExpectRun("-W w.xml_sf -I j.xml_img -R 90",
              "anglar_resolution 90\nFluctuation loaded\nLoading scattering wave\n"
              "Start load/save list scatteirng data\nNextListScatterer\nScattringData 0 0\nLoaded.." +
                  kPattern + kFinished,
              0);
    EXPECT_EQ(folder.Read("j.xml_img"), combined) << "positions of few digits survive the file";
    EXPECT_NE(folder.Read("w.xml_sf"), "") << "an input of an image run is not touched";
    Run("-W w.xml_sf -I k.xml_img -R 90 -MFPS 3");
    EXPECT_EQ(folder.Read("k.xml_img"), combined);
    Run("-W w.xml_sf -I k.xml_img -R 90 -L 2.5");
    EXPECT_EQ(folder.Read("k.xml_img"), folder.Read("i0.xml_img")) << "the limit itself is left out";
}

TEST_F(CommandLine, RunsTheOtherMethods) {
    const std::string atoms =
        "StIndex: 1/1, EWIndex: 1/1, MuIndex: 1/1, AtIndex: 1 / 2\n"
        "StIndex: 1/1, EWIndex: 1/1, MuIndex: 1/1, AtIndex: 2 / 2\nCurrent N Emitter=1\n";
    for (const std::string method : {"SINGLE", "SLOWMULTI"})
        ExpectRun("-C c.xyz -F e.xml_emt -P p.xml_ph -W w.xml_sf -MS " + method,
                  kLoaded + atoms + kSaved + kFinished, 0);
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

TEST_F(CommandLine, FailsWithATextOrInSilence) {
    // Three atoms: the middle one has no radius, which is an out-of-range failure.
    folder.Write("c.xyz", "3\nrow\nCu 0 0 0\nCu 0 0 2.5\nCu 0 0 5\n");
    const Outcome outcome = Run("-C c.xyz -F e.xml_emt -P p.xml_ph -W w.xml_sf");
    EXPECT_EQ(outcome.status, 255);
    EXPECT_EQ(outcome.text.find("Error"), std::string::npos);
    folder.Write("c.xyz", "1\nother\nAg 0 0 0\n");
    EXPECT_TRUE(Run("-C c.xyz -F e.xml_emt -P p.xml_ph -W w.xml_sf")
                    .text.ends_with("StIndex0/1\nEWIndex0/1\nError: Error: There is no phase shift data\n"));
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
