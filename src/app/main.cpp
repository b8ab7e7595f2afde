#include "app/RunDriver.h"
#include "foundation/StandardStreams.h"

using namespace qvre;

int main(int argc, char** argv) {
    OpenClosedStandardStreams();
    return RunDriver(argc, argv);
}
