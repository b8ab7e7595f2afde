#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <QtGlobal>

#include "Targets.h"
#include "foundation/Console.h"

using namespace qvre;

// Reads every file of a folder as an input of the target that the folder is named after: an input that once
// failed stays mended. Usage: qvre_replay FOLDER

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) return EXIT_FAILURE;
    const std::filesystem::path folder = arguments[1];
    const ConsoleRedirection silence(nullptr);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const FuzzTarget& target = FindFuzzTarget(folder.filename().string());
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::ostringstream bytes;
        bytes << std::ifstream(entry.path(), std::ios::binary).rdbuf();
        std::fprintf(stderr, "%s\n", entry.path().c_str());
        target.read(bytes.str());
    }
    return EXIT_SUCCESS;
}
