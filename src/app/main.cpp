#include "app/RunDriver.h"
#include "foundation/PassiveWaiting.h"

int main(int argc, char** argv) {
    if (argc > 1) RestartWithPassiveWaiting(argv);
    return RunDriver(argc, argv);
}
