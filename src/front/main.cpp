#include <algorithm>
#include <string_view>

#include "foundation/PassiveWaiting.h"
#include "foundation/StandardStreams.h"
#include "front/Program.h"

int main(int argc, char** argv) {
    constexpr std::string_view kWithThreads[] = {"compare", "plot", "run"};
    OpenClosedStandardStreams();
    if (argc > 1 && std::count(std::begin(kWithThreads), std::end(kWithThreads), argv[1]) > 0)
        RestartWithPassiveWaiting(argv);
    return RunProgram(argc, argv);
}
