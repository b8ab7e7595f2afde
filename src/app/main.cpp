#include "app/RunDriver.h"
#include "foundation/StandardStreams.h"

int main(int argc, char** argv) {
    OpenClosedStandardStreams();
    return RunDriver(argc, argv);
}
