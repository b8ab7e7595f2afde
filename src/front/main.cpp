#include <csignal>

#include "foundation/StandardStreams.h"
#include "front/Program.h"

using namespace qvre;

int main(int argc, char** argv) {
    OpenClosedStandardStreams();
    const int status = RunProgram(argc, argv);
    // A shell that runs several commands goes on to the next unless the signal ends this one.
    if (status > 128) {
        std::signal(status - 128, SIG_DFL);
        std::raise(status - 128);
    }
    return status;
}
