// Dates behind the year 2038 on systems of 32 bits.
#define _FILE_OFFSET_BITS 64 // NOLINT(bugprone-reserved-identifier)
#define _TIME_BITS 64        // NOLINT(bugprone-reserved-identifier)

#include <morvane/platform/fat_time.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <utility>

namespace morvane::platform {

namespace {

constexpr int firstYear = 1980;
constexpr int lastYear = 2107;
constexpr std::int64_t secondsOfDay = 86400;

/// The clock on the wall at a moment; false outside what the system can tell.
bool wallClockAt(std::int64_t seconds, std::tm & local) {
    if (!std::in_range<std::time_t>(seconds)) {
        return false;
    }
    auto const moment = static_cast<std::time_t>(seconds);
    tzset(); // the other call reads the zone once alone
    return localtime_r(&moment, &local) != nullptr;
}

/// A date and time as the seconds since 1970-01-01 that they would be without a zone.
std::int64_t secondsWithoutZone(std::chrono::year_month_day date, int hour, int minute, int second) {
    std::int64_t const days = std::chrono::sys_days(date).time_since_epoch().count();
    return days * secondsOfDay + std::int64_t{hour} * 3600 + std::int64_t{minute} * 60 + second;
}

std::chrono::year_month_day dateOf(int year, int month, int day) {
    return {std::chrono::year(year), std::chrono::month(static_cast<unsigned int>(month)),
            std::chrono::day(static_cast<unsigned int>(day))};
}

/// The wall clock at a moment as `secondsWithoutZone` gives it.
bool wallSecondsAt(std::int64_t seconds, std::int64_t & wallSeconds) {
    std::tm local{};
    if (!wallClockAt(seconds, local)) {
        return false;
    }
    wallSeconds = secondsWithoutZone(dateOf(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday), local.tm_hour,
                                     local.tm_min, local.tm_sec);
    return true;
}

} // namespace

bool fatTimeFromSeconds(std::int64_t seconds, std::uint32_t & fatTime) noexcept {
    std::tm local{};
    if (!wallClockAt(seconds, local) || local.tm_year + 1900 < firstYear || local.tm_year + 1900 > lastYear) {
        errno = EINVAL;
        return false;
    }
    int const date = (local.tm_year + 1900 - firstYear) << 9 | (local.tm_mon + 1) << 5 | local.tm_mday;
    int const time =
        local.tm_hour << 11 | local.tm_min << 5 | std::min(local.tm_sec, 59) / 2; // a leap second has no form
    fatTime = static_cast<std::uint32_t>(date) << 16 | static_cast<std::uint32_t>(time);
    return true;
}

bool secondsFromFatTime(std::uint32_t fatTime, std::int64_t & seconds) noexcept {
    auto const bits = [fatTime](unsigned int shift, unsigned int count) {
        return static_cast<int>(fatTime >> shift & ((1U << count) - 1));
    };
    auto const date = dateOf(firstYear + bits(25, 7), bits(21, 4), bits(16, 5));
    int const hour = bits(11, 5);
    int const minute = bits(5, 6);
    int const second = bits(0, 5) * 2;
    if (date.ok() && hour < 24 && minute < 60 && second < 60) {
        std::int64_t const wanted = secondsWithoutZone(date, hour, minute, second);
        // The zone's offset of the day before or of the day behind is right; both are where the clock was put back, and
        // the former then gives the earlier moment. Neither is where it was put forward over this time.
        for (std::int64_t const near : {wanted - secondsOfDay, wanted + secondsOfDay}) {
            std::int64_t nearWall = 0;
            std::int64_t wall = 0;
            if (wallSecondsAt(near, nearWall) && wallSecondsAt(wanted - (nearWall - near), wall) && wall == wanted) {
                seconds = wanted - (nearWall - near);
                return true;
            }
        }
    }
    errno = EINVAL;
    return false;
}

} // namespace morvane::platform
