#include "foundation/PassiveWaiting.h"
#include "front/Program.h"

int main(int argc, char** argv) {
    if (argc > 1) RestartWithPassiveWaiting(argv);
    return RunProgram(argc, argv);
}
