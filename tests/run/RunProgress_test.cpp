#include <gtest/gtest.h>

#include <csignal>

#include "run/RunProgress.h"

using namespace qvre;

TEST(RunProgress, TimesAreToldInWords) {
    const std::pair<double, const char*> cases[] = {
        {0.44, "0.4 s"},       {9.94, "9.9 s"},        {12.4, "12 s"},
        {60.0, "1 min 0 s"},   {185.9, "3 min 5 s"},   {3599.0, "59 min 59 s"},
        {3600.0, "1 h 0 min"}, {4859.0, "1 h 20 min"}, {360000.0, "100 h 0 min"}};
    for (const auto& [seconds, text] : cases) EXPECT_EQ(DurationText(seconds), text);
}

TEST(RunProgress, ASignalIsKeptUnlessTheProcessIgnoresIt) {
    const auto former = std::signal(SIGTERM, SIG_IGN);
    {
        const InterruptRequest request;
        std::raise(SIGTERM);
        EXPECT_FALSE(InterruptRequest::IsPending());
        std::raise(SIGINT);
        int number = 0;
        try {
            InterruptRequest::ThrowIfPending();
        } catch (const Interruption& interruption) {
            number = interruption.signal;
        }
        EXPECT_EQ(number, SIGINT);
    }
    EXPECT_EQ(std::signal(SIGTERM, former), SIG_IGN);
    const InterruptRequest request;
    EXPECT_FALSE(InterruptRequest::IsPending());
}
