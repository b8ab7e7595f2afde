#include "app/RunDriver.h"

int main(int argc, char** argv) {
    return RunDriver(argc, argv);
}
