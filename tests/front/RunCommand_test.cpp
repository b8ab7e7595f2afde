#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <map>
#include <sstream>

#include "TempFolder.h"
#include "front/RunQvre.h"
#include "report/sphere/SphereImage.h"

namespace {

namespace fs = std::filesystem;

class RunCommand : public testing::Test {
protected:
    /// A recipe of 25 copper atoms; `more` follows its last section, [image].
    std::string Recipe(const std::string& thermal, const std::string& more = "",
                       const std::string& kinetic = "60",
                       const std::string& source = "level = \"2p\"") const {
        return folder_.Write("recipe.toml",
                             "[cluster]\npreset = \"Cu\"\nemitter-layer = 2\natoms = 20\n"
                             "[emission]\n" +
                                 source + "\nkinetic = " + kinetic +
                                 "\n[scattering]\nmethod = \"MULTI\"\n[thermal]\n" + thermal +
                                 "\n[image]\nresolution = 10\n" + more);
    }

    /// The start of a command line; the leak checker of the sanitizers is told what fontconfig keeps.
    std::string Process(const std::string& program) const {
        const std::string leaks = folder_.Write("known-leaks", "leak:libfontconfig\n");
        return "LSAN_OPTIONS=print_suppressions=0:suppressions=" + leaks + " " + program;
    }

    std::string Run(const std::string& recipe, const std::string& results,
                    const std::string& more = "") const {
        const QvreResult result = RunQvre("run " + recipe + " -o " + folder_.Path(results) + more);
        EXPECT_EQ(result.status, 0) << result.errors;
        return result.output;
    }

    /// The files but for the log, which tells times, and the hidden ones.
    std::map<std::string, std::string> Contents(const std::string& results) const {
        std::map<std::string, std::string> contents;
        for (const auto& entry : fs::directory_iterator(folder_.Path(results))) {
            const std::string name = entry.path().filename().string();
            if (name != "run.log" && name.front() != '.') contents[name] = folder_.Read(results + "/" + name);
        }
        return contents;
    }

    std::vector<SpherePixel> Pixels(const std::string& image) const {
        return LoadSphereImage(folder_.Path(image)).image.Pixels();
    }

    TempFolder folder_;
};

std::size_t Count(const std::string& text, const std::string& word) {
    std::size_t count = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) ++count;
    return count;
}

/// Whether the line of a step says that it was not repeated.
bool IsUnchanged(const std::string& output, const std::string& step) {
    const std::size_t line = output.find("\n" + step + " ");
    return output.substr(line, output.find('\n', line + 1) - line).ends_with("unchanged");
}

bool HasFile(const std::string& folder, const std::string& start) {
    std::error_code failure;
    const fs::directory_iterator files(folder, failure);
    return std::any_of(begin(files), end(files), [&](const fs::directory_entry& entry) {
        return entry.path().filename().string().starts_with(start);
    });
}

/// Runs a recipe in a process of its own, sends it a signal once a file is there whose name begins so, and
/// returns how it ended.
int StopRun(const std::string& recipe, const std::string& results, int signal, const std::string& file) {
    const pid_t child = fork();
    if (child == 0) {
        for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) close(stream);
        execl(QVRE_PROGRAM, "qvre", "run", recipe.c_str(), "-o", results.c_str(), nullptr);
        _exit(127);
    }
    int status = 0;
    while (!HasFile(results, file)) {
        if (waitpid(child, &status, WNOHANG) != 0) return status;
        usleep(200);
    }
    kill(child, signal);
    waitpid(child, &status, 0);
    return status;
}

}  // namespace

TEST_F(RunCommand, RepeatsWhatChangedAndReusesTheScatteredWave) {
    const std::string picture = "[[picture]]\nfile = \"chi.png\"\nwidth = 100\n";
    Run(Recipe("temperature = 300", picture), "results");
    EXPECT_EQ(Contents("results").size(), 12U);
    EXPECT_EQ(folder_.Read("results/chi.png").substr(1, 3), "PNG");
    for (const char* told : {"qvre 0.", "preset = \"Cu\"", "The inputs fit together.", " s\n"})
        EXPECT_PRED_FORMAT2(testing::IsSubstring, told, folder_.Read("results/run.log"));

    EXPECT_EQ(Count(Run(folder_.Path("recipe.toml"), "results"), "unchanged\n"), 9U);
    folder_.Write("results/cluster.xyz", "edited");
    EXPECT_EQ(Count(Run(folder_.Path("recipe.toml"), "results"), "unchanged\n"), 8U);

    const std::string output =
        Run(Recipe("temperature = 100", "mean-free-path = 20\nlimit = 3.8\nlower-limit = 2.6\n[[picture]]\n"),
            "results");
    EXPECT_TRUE(IsUnchanged(output, "scattering"));
    EXPECT_FALSE(IsUnchanged(output, "images"));
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "left from earlier settings, not made by this run: chi.png",
                        output);
    const auto results = Contents("results");
    EXPECT_EQ(Count(Run(folder_.Path("recipe.toml"), "results", " --repeat"), "unchanged\n"), 0U);
    EXPECT_EQ(Contents("results"), results);
}

// Waves that no light lifts stand in the folder as they are emitted.
TEST_F(RunCommand, TheFirstProgramMakesTheSameImagesOfTheFilesOfAnIsotropicSource) {
    Run(Recipe("temperature = 100", "mean-free-path = 20\nlimit = 3.8\nlower-limit = 2.6\n", "560",
               "isotropic = true"),
        "results");
    const std::string images = (fs::path(QVRE_PROGRAM).parent_path() / "cmd_qvre").string() + " -W " +
                               folder_.Path("results/scatteredwave.xml_sf") + " -T " +
                               folder_.Path("results/fluctuation.xml_flu") + " -I " +
                               folder_.Path("i.xml_img") + " -I0 " + folder_.Path("i0.xml_img") +
                               " -R 10 -L 3.8 -LL 2.6 -MFPE 20 > /dev/null";
    ASSERT_EQ(std::system(images.c_str()), 0);
    // The images of a run tell its recipe too; their pixels are the same to the bit.
    for (const auto& [made, first] :
         {std::pair{"results/pattern.xml_img", "i.xml_img"}, {"results/i0.xml_img", "i0.xml_img"}}) {
        const auto pixels = Pixels(made);
        const auto expected = Pixels(first);
        ASSERT_EQ(pixels.size(), expected.size());
        for (std::size_t i = 0; i < pixels.size(); ++i) EXPECT_EQ(pixels[i].value, expected[i].value);
    }
}

TEST_F(RunCommand, AStoppedRunGoesOnToTheSameFiles) {
    const std::string recipe = Recipe("temperature = 300", "", "900");
    Run(recipe, "whole");
    const std::string stopped = folder_.Path("stopped");
    StopRun(recipe, stopped, SIGKILL, "checks.txt");
    const std::string output = Run(recipe, "stopped");
    EXPECT_GT(Count(output, "unchanged\n"), 2U);
    EXPECT_EQ(Contents("stopped"), Contents("whole"));
    for (const auto& entry : fs::directory_iterator(stopped))
        EXPECT_EQ(entry.path().filename().string().find(".scatteredwave"), std::string::npos);

    fs::remove_all(stopped);
    const int status = StopRun(recipe, stopped, SIGINT, "checks.txt");
    if (status != 0) {  // 0 where the signal came too late
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT);
        EXPECT_PRED_FORMAT2(testing::IsSubstring, "stopped: interrupted", folder_.Read("stopped/run.log"));
    }
    Run(recipe, "stopped");
    EXPECT_EQ(Contents("stopped"), Contents("whole"));
}

// Of full scattering, the structures that were done are not done again.
TEST_F(RunCommand, AStoppedSolutionGoesOnBehindItsLastStructure) {
    const std::string recipe = folder_.Write(
        "full.toml",
        "[cluster]\npreset = \"Cu\"\natoms = 60\ndomains = [0, 10, 20, 30]\n[emission]\nlevel = \"2p\"\n"
        "kinetic = 560\n[scattering]\nmethod = \"FULL\"\n[image]\nresolution = 10\n");
    Run(recipe, "whole");
    const std::string part = ".scatteredwave.xml_sf.part-";
    StopRun(recipe, folder_.Path("stopped"), SIGKILL, part);
    const bool isPartial = HasFile(folder_.Path("stopped"), part);  // unless the signal came too late
    const std::string output = Run(recipe, "stopped");
    EXPECT_EQ(output.find("are those of the stopped calculation") != std::string::npos, isPartial);
    EXPECT_EQ(Contents("stopped"), Contents("whole"));
    EXPECT_FALSE(HasFile(folder_.Path("stopped"), part));
}

// A ready file is loaded without a word, and its copy is looked through.
TEST_F(RunCommand, AWordInPlaceOfANumberIsAMisfit) {
    folder_.Write("f.xml_flu",
                  "<DocFluctuation><DebyeElement_><r>Cu</r></DebyeElement_>\n<DebyeTemperature_K_><i>343</i>"
                  "</DebyeTemperature_K_>\n<Temperature_K_>nan</Temperature_K_></DocFluctuation>");
    const QvreResult result =
        RunQvre("run " + Recipe("file = \"f.xml_flu\"") + " -o " + folder_.Path("results"));
    EXPECT_EQ(result.status, 1);
    EXPECT_PRED_FORMAT2(testing::IsSubstring,
                        "misfit: " + folder_.Path("results/fluctuation.xml_flu") +
                            " line 3: <Temperature_K_>nan is no finite number",
                        result.errors);
    EXPECT_FALSE(fs::exists(folder_.Path("results/scatteredwave.xml_sf")));
}

// The program looks for its tables beside itself.
TEST_F(RunCommand, AChangedTableRepeatsTheSteps) {
    const std::vector<std::string> tables = {"AtomicWeight.txt", "binding_energies.csv",
                                             "debye_temperatures.csv", "screening_dhfs.csv",
                                             "valence_electrons.csv"};
    fs::copy_file(QVRE_PROGRAM, folder_.Path("qvre"));
    for (const std::string& table : tables)
        fs::copy_file(fs::path(QVRE_PROGRAM).parent_path() / table, folder_.Path(table));
    const std::string run = Process(folder_.Path("qvre")) + " run " + Recipe("") + " -o " +
                            folder_.Path("results") + " > " + folder_.Path("told");
    const auto unchanged = [&] {
        EXPECT_EQ(std::system(run.c_str()), 0);
        return Count(folder_.Read("told"), "unchanged\n");
    };
    unchanged();
    EXPECT_EQ(unchanged(), 9U);
    for (const std::string& table : tables) {
        std::string text = folder_.Read(table);
        folder_.Write(table, text.insert(text.find('\n'), " "));
        EXPECT_EQ(unchanged(), 0U) << table;
    }
}

TEST_F(RunCommand, AFullDiskBehindStandardOutputIsAFailure) {
    const std::string run = Process(QVRE_PROGRAM) + " run " + Recipe("") + " -o " + folder_.Path("results") +
                            " > /dev/full 2> " + folder_.Path("errors");
    EXPECT_EQ(WEXITSTATUS(std::system(run.c_str())), 1);
    EXPECT_EQ(folder_.Read("errors"), "qvre run: Cannot write to standard output: the disk may be full\n");
    // Every file of a run fails in the same words.
    for (const std::string name : {"run.log", "cluster.xyz"}) {
        const std::string results = "full-" + name;
        fs::create_directory(folder_.Path(results));
        fs::create_symlink("/dev/full", folder_.Path(results + "/" + name));
        EXPECT_EQ(RunQvre("run " + Recipe("") + " -o " + folder_.Path(results)).errors,
                  "qvre run: Cannot write " + folder_.Path(results + "/" + name) + ": the disk is full\n");
    }
}

TEST_F(RunCommand, ASeriesIsSummedOrKeptApart) {
    const std::string recipe = Recipe("temperature = [100, 300]");
    Run(recipe, "results");
    for (const std::string image : {"results/pattern", "results/i0"}) {
        const auto sum = Pixels(image + "_sum.xml_img");
        const auto cold = Pixels(image + "_100K.xml_img");
        const auto warm = Pixels(image + "_300K.xml_img");
        for (std::size_t i = 0; i < sum.size(); ++i)
            ASSERT_EQ(sum[i].value, static_cast<float>(cold[i].value + warm[i].value));
    }
    EXPECT_TRUE(fs::exists(folder_.Path("results/pattern.png")));
    RunQvre("export " + folder_.Path("results/pattern_sum.xml_img") + " -o " + folder_.Path("sum.csv"));
    for (const char* line : {"\n# thermal.temperature = 100 300\n", "\n# emission.level = 2p\n",
                             "\n# cluster.surface = 0 0 1\n", "\n# scattering.method = MULTI\n"})
        EXPECT_PRED_FORMAT2(testing::IsSubstring, line, folder_.Read("sum.csv"));

    folder_.Write("recipe.toml", "series = \"apart\"\n" + folder_.Read("recipe.toml"));
    EXPECT_TRUE(IsUnchanged(Run(recipe, "results"), "images"));
    EXPECT_TRUE(fs::exists(folder_.Path("results/pattern_100K.png")));
}

TEST_F(RunCommand, AScanFindsTheValueOfTheMeasurement) {
    Run(Recipe("temperature = 200"), "true");
    const std::string exported = "export " + folder_.Path("true/pattern.xml_img") + " -o ";
    RunQvre(exported + folder_.Path("plain.csv"));
    RunQvre(exported + folder_.Path("with-i0.csv") + " --i0 " + folder_.Path("true/i0.xml_img"));
    const std::string scan =
        "[compare]\nmeasured = \"with-i0.csv\"\ntheta = [5, 75]\ndifference = \"difference.csv\"\n"
        "[scan]\nvary = \"thermal.temperature\"\nfrom = 100\nto = 300\nsteps = 3\n";
    const std::string output = Run(Recipe("", scan), "results");
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "thermal.temperature = 200 has the least R", output);
    std::istringstream table(folder_.Read("results/scan.csv"));
    std::string line;
    std::getline(table, line);
    EXPECT_EQ(
        line,
        "thermal.temperature,R,R scaled,scale,correlation,rotation,R absolute,R multipoles,theta offset,"
        "tilt,tilt azimuth");
    for (const double temperature : {100.0, 200.0, 300.0}) {
        std::getline(table, line);
        EXPECT_EQ(std::stod(line), temperature);
        const double r = std::stod(line.substr(line.find(',') + 1));
        EXPECT_EQ(r < 1e-9, temperature == 200.0) << line;
        const double scaled = std::stod(line.substr(line.find(',', line.find(',') + 1) + 1));
        EXPECT_TRUE(scaled < r || temperature == 200.0) << line;  // the best scale is better
    }
    EXPECT_TRUE(fs::exists(folder_.Path("results/scan.png")));
    EXPECT_TRUE(fs::exists(folder_.Path("results/difference_temperature_300.csv")));

    // Without chi a smooth background is taken away, from both.
    Run(folder_.Path("recipe.toml"), "results", " --compare " + folder_.Path("plain.csv"));
    const std::string smooth = folder_.Read("results/scan.csv");
    EXPECT_LT(std::stod(smooth.substr(smooth.find("\n200,") + 5)), 0.1) << smooth;
}
