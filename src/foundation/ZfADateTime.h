#pragma once

#include <cstdint>
#include <string>

/// Calendar date and time, counted by its own month tables. Month and day are stored from 0 and shown from 1.
class ZfADateTime {
public:
    /// The present time in the zone of kTimeZone, nine hours ahead of UTC. Sets TZ in the environment of the
    /// process, so no other thread may read the environment meanwhile.
    void Now();

    std::string ToText() const;              ///< "2024/01/02 03:04:05"
    void FromText(const std::string& text);  ///< throws ZfError; fields read before the fault stay changed

    void SetMonth(std::int32_t fromOne);  ///< throws ZfError outside 1 to 12
    void SetDay(std::int32_t fromOne);    ///< throws ZfError outside the month held
    void SetTime(std::int32_t newHour, std::int32_t newMinute,
                 std::int32_t newSecond);  ///< stores all or none

    bool IsLater(const ZfADateTime& other) const;

    static bool IsLeapYear(std::int32_t year);
    static std::int32_t DayOfYear(std::int32_t year, std::int32_t month, std::int32_t day);  ///< from 1
    static std::int64_t DaysBetween(const ZfADateTime& a, const ZfADateTime& b);             ///< a minus b
    static double SecondsBetween(const ZfADateTime& a, const ZfADateTime& b);                ///< a minus b

    static constexpr const char* kTimeZone = "TZ=JST-9";

    std::int32_t year = 0;
    std::int32_t month = 0;
    std::int32_t day = 0;
    std::int32_t hour = 0;
    std::int32_t minute = 0;
    std::int32_t second = 0;
    std::int32_t millisecond = 0;
};
