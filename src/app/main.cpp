#include "app/RunDriver.h"
#include "foundation/PassiveWaiting.h"
#include "foundation/StandardStreams.h"

int main(int argc, char** argv) {
    OpenClosedStandardStreams();
    if (AsksForScattering(argc, argv)) RestartWithPassiveWaiting(argv);
    return RunDriver(argc, argv);
}
