#include "run/RunProgress.h"

#include <omp.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <utility>

#include "foundation/ZfError.h"

namespace {

/// Set in a signal handler, read by all threads.
std::atomic<bool> pending = false;
static_assert(std::atomic<bool>::is_always_lock_free);

void (*formerInterrupt)(int) = SIG_DFL;
void (*formerTermination)(int) = SIG_DFL;

void TakeSignal(int signal) {
    if (!pending.exchange(true)) return;
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

std::string Bar(double fraction) {
    constexpr std::size_t kLength = 30;
    std::string bar(static_cast<std::size_t>(fraction * kLength), '#');
    bar.resize(kLength, ' ');
    return bar;
}

}  // namespace

InterruptRequest::InterruptRequest() {
    pending = false;
    formerInterrupt = std::signal(SIGINT, TakeSignal);
    formerTermination = std::signal(SIGTERM, TakeSignal);
}

InterruptRequest::~InterruptRequest() {
    std::signal(SIGINT, formerInterrupt);
    std::signal(SIGTERM, formerTermination);
}

bool InterruptRequest::IsPending() {
    return pending;
}

void InterruptRequest::ThrowIfPending() {
    if (IsPending()) throw ZfError("interrupted; the same command goes on from here");
}

RunProgress::RunProgress(std::string name, std::function<double()> fraction)
    : name_(std::move(name)), fraction_(std::move(fraction)), isTerminal_(isatty(STDOUT_FILENO) != 0) {}

RunProgress::~RunProgress() {
    if (isShown_) std::printf("\r\033[K");
}

bool RunProgress::IsTerminated() {
    if (isTerminal_ && omp_get_thread_num() == 0 && Clock::now() >= next_) Show();
    return InterruptRequest::IsPending();
}

void RunProgress::Show() {
    next_ = Clock::now() + std::chrono::milliseconds(200);
    isShown_ = true;
    const double fraction = std::clamp(fraction_(), 0.0, 1.0);
    const double elapsed = std::chrono::duration<double>(Clock::now() - start_).count();
    std::printf("\r\033[K%-12s [%s] %3.0f %%", name_.c_str(), Bar(fraction).c_str(), 100.0 * fraction);
    if (fraction > 0.01) std::printf("  %s left", DurationText(elapsed * (1.0 / fraction - 1.0)).c_str());
    std::fflush(stdout);
}

std::string DurationText(double seconds) {
    char text[32];
    if (seconds < 10.0)
        std::snprintf(text, sizeof text, "%.1f s", seconds);
    else if (seconds < 60.0)
        std::snprintf(text, sizeof text, "%.0f s", seconds);
    else if (seconds < 3600.0)
        std::snprintf(text, sizeof text, "%d min %d s", static_cast<int>(seconds / 60.0),
                      static_cast<int>(seconds) % 60);
    else
        std::snprintf(text, sizeof text, "%d h %d min", static_cast<int>(seconds / 3600.0),
                      static_cast<int>(seconds / 60.0) % 60);
    return text;
}
