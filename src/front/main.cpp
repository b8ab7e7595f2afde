#include <algorithm>
#include <csignal>
#include <string_view>

#include "foundation/PassiveWaiting.h"
#include "foundation/StandardStreams.h"
#include "front/Program.h"

int main(int argc, char** argv) {
    constexpr std::string_view kWithThreads[] = {"compare", "plot", "run"};
    OpenClosedStandardStreams();
    if (argc > 1 && std::count(std::begin(kWithThreads), std::end(kWithThreads), argv[1]) > 0)
        RestartWithPassiveWaiting(argv);
    const int status = RunProgram(argc, argv);
    // A shell that runs several commands goes on to the next unless the signal ends this one.
    if (status > 128) {
        std::signal(status - 128, SIG_DFL);
        std::raise(status - 128);
    }
    return status;
}
