#include "foundation/FileBytes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qvre {

bool OpenFile(QFile& file, const std::string& name, QIODevice::OpenModeFlag mode) {
    constexpr mode_t kByUmask = 0666;
    const int access = mode == QIODevice::WriteOnly ? O_WRONLY | O_CREAT | O_TRUNC : O_RDONLY;
    const int descriptor = open(name.c_str(), access | O_CLOEXEC, kByUmask);
    if (descriptor < 0) return false;
    struct stat status {};
    const bool isFile = fstat(descriptor, &status) == 0 && !S_ISDIR(status.st_mode);
    if (isFile && file.open(descriptor, mode, QFileDevice::AutoCloseHandle)) return true;
    close(descriptor);
    return false;
}

}  // namespace qvre
