#include "foundation/ZfADateTime.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <tuple>

#include "foundation/ZfError.h"

namespace {

constexpr int kMonths = 12;

/// Lengths of the months and, behind them, of the year.
using MonthTable = std::array<std::int32_t, kMonths + 1>;

constexpr MonthTable kCommonYear = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31, 365};
constexpr MonthTable kLeapYear = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31, 366};

const MonthTable& TableOf(std::int32_t year) {
    return ZfADateTime::IsLeapYear(year) ? kLeapYear : kCommonYear;
}

std::int32_t DaysOfMonth(const ZfADateTime& date, std::int32_t month) {
    return TableOf(date.year)[static_cast<std::size_t>(month)];
}

auto Fields(const ZfADateTime& date) {
    return std::make_tuple(date.year, date.month, date.day, date.hour, date.minute, date.second,
                           date.millisecond);
}

std::int32_t DayOfYear(const ZfADateTime& date) {
    return ZfADateTime::DayOfYear(date.year, date.month, date.day);
}

std::int64_t DaysAcrossYears(const ZfADateTime& earlier, const ZfADateTime& later) {
    std::int64_t days = TableOf(earlier.year)[kMonths] - DayOfYear(earlier) + DayOfYear(later);
    for (std::int32_t y = earlier.year + 1; y < later.year; ++y) days += TableOf(y)[kMonths];
    return days;
}

std::int64_t DaysAcrossMonths(const ZfADateTime& earlier, const ZfADateTime& later) {
    std::int64_t days = DaysOfMonth(earlier, earlier.month) - (earlier.day + 1) + (later.day + 1);
    for (std::int32_t m = earlier.month + 1; m < later.month; ++m) days += DaysOfMonth(earlier, m);
    return days;
}

}  // namespace

void ZfADateTime::Now() {
    const std::string setting = kTimeZone;
    const std::size_t equals = setting.find('=');
    setenv(setting.substr(0, equals).c_str(), setting.substr(equals + 1).c_str(), 1);
    tzset();

    const std::time_t clock = std::time(nullptr);
    std::tm local{};
    localtime_r(&clock, &local);
    year = local.tm_year + 1900;
    month = local.tm_mon;
    day = local.tm_mday - 1;
    hour = local.tm_hour;
    minute = local.tm_min;
    second = local.tm_sec;
    millisecond = 0;
}

std::string ZfADateTime::ToText() const {
    std::array<char, 96> buffer;
    const int length = std::snprintf(buffer.data(), buffer.size(), "%d/%02d/%02d %02d:%02d:%02d", year,
                                     month + 1, day + 1, hour, minute, second);
    return {buffer.data(), static_cast<std::size_t>(length)};
}

void ZfADateTime::FromText(const std::string& text) {
    std::array<long, 6> field{};
    const int read = std::sscanf(text.c_str(), "%ld/%2ld/%2ld %2ld:%2ld:%2ld", &field[0], &field[1],
                                 &field[2], &field[3], &field[4], &field[5]);
    if (read != 6) throw ZfError("illigal String");
    year = static_cast<std::int32_t>(field[0]);
    SetMonth(static_cast<std::int32_t>(field[1]));
    SetDay(static_cast<std::int32_t>(field[2]));
    SetTime(static_cast<std::int32_t>(field[3]), static_cast<std::int32_t>(field[4]),
            static_cast<std::int32_t>(field[5]));
}

void ZfADateTime::SetMonth(std::int32_t fromOne) {
    if (fromOne < 1 || fromOne > kMonths) throw ZfError("illigal month value");
    month = fromOne - 1;
}

void ZfADateTime::SetDay(std::int32_t fromOne) {
    if (fromOne < 1 || fromOne > DaysOfMonth(*this, month)) throw ZfError("illigal date value");
    day = fromOne - 1;
}

void ZfADateTime::SetTime(std::int32_t newHour, std::int32_t newMinute, std::int32_t newSecond) {
    if (newHour < 0 || newHour > 23) throw ZfError("Illigal Hour");
    if (newMinute < 0 || newMinute > 59) throw ZfError("Illigal min");
    if (newSecond < 0 || newSecond > 59) throw ZfError("Illigal sec");
    hour = newHour;
    minute = newMinute;
    second = newSecond;
}

bool ZfADateTime::IsLater(const ZfADateTime& other) const {
    return Fields(*this) > Fields(other);
}

bool ZfADateTime::IsLeapYear(std::int32_t year) {
    return year % 400 == 0 || (year % 4 == 0 && year % 100 != 0);
}

std::int32_t ZfADateTime::DayOfYear(std::int32_t year, std::int32_t month, std::int32_t day) {
    std::int32_t days = day + 1;
    for (std::int32_t m = 0; m < month; ++m) days += TableOf(year)[static_cast<std::size_t>(m)];
    return days;
}

std::int64_t ZfADateTime::DaysBetween(const ZfADateTime& a, const ZfADateTime& b) {
    if (a.year == b.year && a.month == b.month) return a.day - b.day;
    const bool aIsLater = a.IsLater(b);
    const ZfADateTime& later = aIsLater ? a : b;
    const ZfADateTime& earlier = aIsLater ? b : a;
    const std::int64_t days =
        a.year == b.year ? DaysAcrossMonths(earlier, later) : DaysAcrossYears(earlier, later);
    return aIsLater ? days : -days;
}

double ZfADateTime::SecondsBetween(const ZfADateTime& a, const ZfADateTime& b) {
    const auto days = static_cast<double>(DaysBetween(a, b));
    const double timeA =
        a.minute * 60.0 + a.hour * 3600.0 + a.second + a.millisecond * 0.001 + days * 24 * 60 * 60;
    const double timeB = b.minute * 60.0 + b.hour * 3600.0 + b.second + b.millisecond * 0.001;
    return timeA - timeB;
}
