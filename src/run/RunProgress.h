#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "foundation/Interruption.h"
#include "foundation/ZfNotifyTerminate.h"

namespace qvre {

/// While it lives, Ctrl-C (SIGINT) and SIGTERM do not end the process but ask its calculations to stop; a
/// second one ends it at once. One that the process was started to ignore stays ignored.
class InterruptRequest {
public:
    InterruptRequest();
    InterruptRequest(const InterruptRequest&) = delete;
    InterruptRequest& operator=(const InterruptRequest&) = delete;
    ~InterruptRequest();

    static bool IsPending();
    static void ThrowIfPending();  ///< Interruption
};

/// Stops a calculation that an interrupt asks to, and shows how far it is: a bar with the remaining time on a
/// terminal, nothing otherwise.
class RunProgress final : public ZfNotifyTerminate {
public:
    /// `fraction` tells what part of the work is done, 0 to 1; it is called on the thread that made this
    /// object.
    RunProgress(std::string name, std::function<double()> fraction);
    ~RunProgress() override;

    bool IsTerminated() override;

private:
    using Clock = std::chrono::steady_clock;

    void Show();

    std::string name_;
    std::function<double()> fraction_;
    bool isTerminal_;
    bool isShown_ = false;
    Clock::time_point start_ = Clock::now();
    Clock::time_point next_ = start_ + std::chrono::milliseconds(200);
};

/// A time in the words of a progress line: "0.4 s", "12 s", "3 min 5 s", "1 h 20 min".
std::string DurationText(double seconds);

}  // namespace qvre
