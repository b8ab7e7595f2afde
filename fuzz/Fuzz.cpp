#include <QtGlobal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "Targets.h"
#include "foundation/Console.h"

using namespace qvre;

// The fuzzer of all targets; the environment names the one that runs: QVRE_FUZZ_TARGET=xml.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzTarget& target = [&]() -> const FuzzTarget& {
        static const ConsoleRedirection silence(nullptr);
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        const char* name = std::getenv("QVRE_FUZZ_TARGET");
        return FindFuzzTarget(name ? name : "");
    }();
    target.read({reinterpret_cast<const char*>(data), size});
    return 0;
}
