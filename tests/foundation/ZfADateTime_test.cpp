#include "foundation/ZfADateTime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <utility>

#include "ErrorText.h"

namespace {

ZfADateTime Date(const std::string& text) {
    ZfADateTime date;
    date.FromText(text);
    return date;
}

std::chrono::sys_seconds Instant(const ZfADateTime& date) {
    const std::chrono::year_month_day day{std::chrono::year(date.year),
                                          std::chrono::month(static_cast<unsigned>(date.month + 1)),
                                          std::chrono::day(static_cast<unsigned>(date.day + 1))};
    return std::chrono::sys_days(day) + std::chrono::hours(date.hour) + std::chrono::minutes(date.minute) +
           std::chrono::seconds(date.second);
}

}  // namespace

TEST(ZfADateTime, ReadsAndWritesText) {
    EXPECT_EQ(Date("2024/1/2 3:4:5").ToText(), "2024/01/02 03:04:05");
    EXPECT_EQ(ZfADateTime().ToText(), "0/01/01 00:00:00");
    const std::pair<const char*, const char*> cases[] = {
        {"2024/2/29 23:59:59", "no failure"},      {"2023/2/29 0:0:0", "illigal date value"},
        {"1900/2/29 0:0:0", "illigal date value"}, {"2000/2/29 0:0:0", "no failure"},
        {"2024/1/0 0:0:0", "illigal date value"},  {"2024/13/1 0:0:0", "illigal month value"},
        {"2024/0/1 0:0:0", "illigal month value"}, {"2024/1/1 24:0:0", "Illigal Hour"},
        {"2024/1/1 0:60:0", "Illigal min"},        {"2024/1/1 0:0:60", "Illigal sec"},
        {"2024/1/1 0:0:-1", "Illigal sec"},        {"2024/123/1 0:0:0", "illigal String"},
        {"2024-01-01", "illigal String"},          {"", "illigal String"}};
    for (const auto& [text, error] : cases) EXPECT_EQ(ErrorText([&] { Date(text); }), error) << text;
}

TEST(ZfADateTime, CountsLikeTheGregorianCalendar) {
    const char* texts[] = {
        "1899/12/31 23:59:59", "1900/3/1 0:0:0", "1999/2/28 12:0:0", "2000/2/29 0:0:1",  "2000/3/1 0:0:0",
        "2023/12/31 23:59:59", "2024/1/1 0:0:1", "2024/1/31 5:0:0",  "2024/12/31 0:0:0", "2024/12/31 0:0:1"};
    for (const char* a : texts) {
        for (const char* b : texts) {
            const auto seconds = Instant(Date(a)) - Instant(Date(b));
            const auto days = std::chrono::floor<std::chrono::days>(Instant(Date(a))) -
                              std::chrono::floor<std::chrono::days>(Instant(Date(b)));
            EXPECT_EQ(ZfADateTime::DaysBetween(Date(a), Date(b)), days.count()) << a << " - " << b;
            EXPECT_EQ(ZfADateTime::SecondsBetween(Date(a), Date(b)), static_cast<double>(seconds.count()))
                << a << " - " << b;
            EXPECT_EQ(Date(a).IsLater(Date(b)), seconds.count() > 0) << a << " - " << b;
        }
    }
}

TEST(ZfADateTime, NowIsNineHoursAheadOfUtc) {
    using std::chrono::system_clock;
    const auto zone = std::chrono::hours(9);
    const auto before = std::chrono::floor<std::chrono::seconds>(system_clock::now()) + zone;
    ZfADateTime now;
    now.Now();
    const auto after = system_clock::now() + zone;
    EXPECT_LE(before, Instant(now));
    EXPECT_LE(Instant(now), after);
}
