#include "run/RunProgress.h"

#include <fmt/format.h>
#include <omp.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <utility>

namespace qvre {

namespace {

/// The first signal, 0 without one. Set in a signal handler, read by all threads.
std::atomic<int> pending = 0;
static_assert(std::atomic<int>::is_always_lock_free);

using SignalHandler = void (*)(int);
SignalHandler formerInterrupt = SIG_DFL;
SignalHandler formerTermination = SIG_DFL;

void TakeSignal(int signal) {
    if (pending.exchange(signal) == 0) return;
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

/// Returns the former handler.
SignalHandler Take(int signal) {
    const SignalHandler former = std::signal(signal, TakeSignal);
    if (former == SIG_IGN) std::signal(signal, SIG_IGN);
    return former;
}

std::string Bar(double fraction) {
    constexpr std::size_t kLength = 30;
    std::string bar(static_cast<std::size_t>(fraction * kLength), '#');
    bar.resize(kLength, ' ');
    return bar;
}

}  // namespace

InterruptRequest::InterruptRequest() {
    pending = 0;
    formerInterrupt = Take(SIGINT);
    formerTermination = Take(SIGTERM);
}

InterruptRequest::~InterruptRequest() {
    std::signal(SIGINT, formerInterrupt);
    std::signal(SIGTERM, formerTermination);
}

bool InterruptRequest::IsPending() {
    return pending != 0;
}

void InterruptRequest::ThrowIfPending() {
    if (IsPending()) throw Interruption(pending);
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
    if (seconds < 10.0) return fmt::format("{:.1f} s", seconds);
    if (seconds < 60.0) return fmt::format("{:.0f} s", seconds);
    const auto whole = static_cast<long>(seconds);
    if (whole < 3600) return fmt::format("{} min {} s", whole / 60, whole % 60);
    return fmt::format("{} h {} min", whole / 3600, whole / 60 % 60);
}

}  // namespace qvre
