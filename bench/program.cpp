// Processor time of the whole program for one image, against the plain evaluation of the same pattern, and of
// runs that calculate nothing. One thread unless OMP_NUM_THREADS says otherwise.
//   qvre_program WAVE.xml_sf FLUCTUATION.xml_flu

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "ExitStatus.h"
#include "foundation/Console.h"
#include "foundation/FileReading.h"
#include "foundation/ZfError.h"
#include "pattern/ZfDocPattern.h"
#include "reference/PlainPattern.h"
#include "scattering/ThermalModels.h"

using namespace qvre;

namespace {

double Milliseconds(int who) {
    rusage usage{};
    getrusage(who, &usage);
    const auto of = [](const timeval& time) {
        return 1e3 * static_cast<double>(time.tv_sec) + 1e-3 * static_cast<double>(time.tv_usec);
    };
    return of(usage.ru_utime) + of(usage.ru_stime);
}

double Best(int runs, int who, const std::function<void()>& run) {
    double best = 1e300;
    for (int i = 0; i < runs; ++i) {
        const double before = Milliseconds(who);
        run();
        best = std::min(best, Milliseconds(who) - before);
    }
    return best;
}

/// Processor time of the program with these arguments, in milliseconds.
double OfProgram(const std::vector<std::string>& arguments) {
    constexpr int kRuns = 25;
    return Best(kRuns, RUSAGE_CHILDREN, [&] {
        const pid_t child = fork();
        if (child == 0) {
            std::vector<char*> argv{const_cast<char*>(QVRE_PROGRAM)};
            for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
            argv.push_back(nullptr);
            if (!std::freopen("/dev/null", "w", stdout) || !std::freopen("/dev/null", "w", stderr)) _exit(1);
            execv(argv[0], argv.data());
            _exit(1);
        }
        int status = -1;
        if (waitpid(child, &status, 0) != child || status != 0) throw ZfError("The program has failed");
    });
}

double OfPlainPattern(const std::string& wave, const std::string& fluctuationFile) {
    constexpr int kRuns = 3;
    ZfScatteringData data;
    Fluctuation fluctuation;
    ZfDebye debye;
    const ConsoleRedirection quiet(nullptr);
    ZfLoadScatteredWave(data, wave);
    ZfLoadFluctuation(fluctuation, fluctuationFile);
    debye.LoadAtomicWeight(
        ReadWholeFile(std::filesystem::path(QVRE_PROGRAM).replace_filename("AtomicWeight.txt")));
    ZfDocPattern_AzimuthalEquidistant pattern;
    return Best(kRuns, RUSAGE_SELF, [&] {
        pattern.PrepareCalculation(data, fluctuation, debye);
        for (const ZfScatteringRecord& record : data.ListScatteringData)
            plain::AddRecord(pattern.mapping, pattern.orientation, record.ListScatterer, 0);
    });
}

void Compare(const std::string& wave, const std::string& fluctuation) {
    const std::string image = std::filesystem::temp_directory_path() / ("qvre_" + std::to_string(getpid()));
    const double usage = OfProgram({"-H"});
    const double nothing = OfProgram({"-W", wave});
    const double whole = OfProgram({"-W", wave, "-T", fluctuation, "-I", image, "-M", "AE"});
    std::filesystem::remove(image);
    const double plain = OfPlainPattern(wave, fluctuation);
    std::printf("usage text                 %8.1f ms\n", usage);
    std::printf("a run that asks for nothing%8.1f ms\n", nothing);
    std::printf("image, whole program       %8.1f ms\n", whole);
    std::printf("plain evaluation alone     %8.1f ms, %.1f times as long\n", plain, plain / whole);
}

}  // namespace

int main(int argc, char** argv) {
    return ExitStatus([&] {
        if (argc != 3) throw ZfError("qvre_program WAVE.xml_sf FLUCTUATION.xml_flu");
        setenv("OMP_NUM_THREADS", "1", 0);
        Compare(argv[1], argv[2]);
    });
}
