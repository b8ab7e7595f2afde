#include "prepare/thermal/AtomicWeights.h"

#include <QLoggingCategory>
#include <mutex>

#include "foundation/FileReading.h"

namespace qvre {

namespace {

/// While it lives, the debug log of Qt is silent: the weights go there as they are read.
class QuietDebugLog {
public:
    QuietDebugLog() : talked_(Log().isDebugEnabled()) { Log().setEnabled(QtDebugMsg, false); }
    QuietDebugLog(const QuietDebugLog&) = delete;
    QuietDebugLog& operator=(const QuietDebugLog&) = delete;
    ~QuietDebugLog() { Log().setEnabled(QtDebugMsg, talked_); }

private:
    static QLoggingCategory& Log() { return *QLoggingCategory::defaultCategory(); }
    bool talked_;
};

}  // namespace

ZfDebye LoadAtomicWeights(const std::string& path) {
    static std::mutex log;  // is one for all threads
    const std::lock_guard lock(log);
    const QuietDebugLog quiet;
    ZfDebye weights;
    weights.LoadAtomicWeight(ReadTextFile(path));
    return weights;
}

}  // namespace qvre
