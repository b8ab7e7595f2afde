#include "foundation/ZfADateTime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <utility>

#include "ErrorText.h"

namespace {

using std::chrono::days;

ZfADateTime Date(const std::string& text) {
    ZfADateTime date;
    date.FromText(text);
    return date;
}

std::chrono::sys_seconds Instant(const ZfADateTime& date) {
    const std::chrono::sys_days newYear =
        std::chrono::year_month_day{std::chrono::year(date.year), std::chrono::January, std::chrono::day(1)};
    const auto month = std::chrono::year_month_day(newYear) + std::chrono::months(date.month);
    return std::chrono::sys_days(month) + days(date.day) + std::chrono::hours(date.hour) +
           std::chrono::minutes(date.minute) + std::chrono::seconds(date.second);
}

}  // namespace

TEST(ZfADateTime, ReadsAndWritesText) {
    EXPECT_EQ(Date("2024/1/2 3:4:5").ToText(), "2024/01/02 03:04:05");
    EXPECT_EQ(ZfADateTime().ToText(), "0/01/01 00:00:00");
    const std::pair<const char*, const char*> cases[] = {
        {"2024/2/29 23:59:59", "no failure"},       {"2000/2/29 0:0:0", "no failure"},
        {"1900/2/29 0:0:0", "illigal date value"},  {"2024/1/0 0:0:0", "illigal date value"},
        {"2024/13/1 0:0:0", "illigal month value"}, {"2024/1/1 24:0:0", "Illigal Hour"},
        {"2024/1/1 0:60:0", "Illigal min"},         {"2024/1/1 0:0:-1", "Illigal sec"},
        {"2024/123/1 0:0:0", "illigal String"},     {"2024-01-01", "illigal String"}};
    for (const auto& [text, error] : cases) EXPECT_EQ(ErrorText([&] { Date(text); }), error) << text;
}

TEST(ZfADateTime, CountsLikeTheGregorianCalendar) {
    const char* texts[] = {"1899/12/31 23:59:59", "1900/3/1 0:0:0",   "2000/2/29 0:0:1", "2000/3/1 0:0:0",
                           "2023/12/31 23:59:59", "2024/12/31 0:0:0", "2024/12/31 0:0:1"};
    for (const char* x : texts) {
        for (const char* y : texts) {
            const ZfADateTime a = Date(x);
            const ZfADateTime b = Date(y);
            const auto dayCount = std::chrono::floor<days>(Instant(a)) - std::chrono::floor<days>(Instant(b));
            const auto seconds = static_cast<double>((Instant(a) - Instant(b)).count());
            EXPECT_EQ(ZfADateTime::DaysBetween(a, b), dayCount.count()) << x << " - " << y;
            EXPECT_EQ(ZfADateTime::SecondsBetween(a, b), seconds) << x << " - " << y;
            EXPECT_EQ(a.IsLater(b), seconds > 0) << x << " - " << y;
        }
    }
    ZfADateTime now;  // nine hours ahead of UTC
    now.Now();
    EXPECT_LE(Instant(now), std::chrono::system_clock::now() + std::chrono::hours(9));
    EXPECT_GE(Instant(now), std::chrono::system_clock::now() + std::chrono::hours(8));
}
