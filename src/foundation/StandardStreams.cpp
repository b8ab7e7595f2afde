#include "foundation/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

namespace qvre {

void OpenClosedStandardStreams() {
    constexpr int kLastStandardStream = 2;
    int opened = open("/dev/null", O_RDWR);  // takes the lowest place that is free
    while (opened >= 0 && opened <= kLastStandardStream) opened = open("/dev/null", O_RDWR);
    if (opened > kLastStandardStream) close(opened);
}

}  // namespace qvre
