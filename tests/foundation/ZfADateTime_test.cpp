#include "foundation/ZfADateTime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <tuple>
#include <utility>

#include "ErrorText.h"

namespace {

ZfADateTime Date(const std::string& text) {
    ZfADateTime date;
    date.FromText(text);
    return date;
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
    for (const auto& c : cases) EXPECT_EQ(ErrorText([&] { Date(c.first); }), c.second) << c.first;
}

TEST(ZfADateTime, CountsLikeTheGregorianCalendar) {
    const std::tuple<const char*, const char*, int, double> cases[] = {
        {"2000/3/1 0:0:1", "2000/2/28 23:59:59", 2, 86402.0},
        {"1900/3/1 0:0:0", "1900/2/28 0:0:1", 1, 86399.0},
        {"2024/12/31 0:0:0", "1899/12/31 0:0:0", 45656, 45656 * 86400.0}};
    for (const auto& [later, earlier, days, seconds] : cases) {
        const ZfADateTime a = Date(later);
        const ZfADateTime b = Date(earlier);
        EXPECT_EQ(ZfADateTime::DaysBetween(a, b), days) << later;
        EXPECT_EQ(ZfADateTime::DaysBetween(b, a), -days) << later;
        EXPECT_EQ(ZfADateTime::SecondsBetween(a, b), seconds) << later;
        EXPECT_EQ(ZfADateTime::SecondsBetween(b, a), -seconds) << later;
        EXPECT_TRUE(a.IsLater(b) && !b.IsLater(a) && !a.IsLater(a)) << later;
    }
    ZfADateTime now;
    now.Now();
    const std::chrono::duration<double> utc = std::chrono::system_clock::now().time_since_epoch();
    EXPECT_NEAR(ZfADateTime::SecondsBetween(now, Date("1970/1/1 9:0:0")), utc.count(), 60.0);
}
