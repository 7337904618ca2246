// Times in the published FAT form: a date word and a time word of local time.
#pragma once

#include <cstdint>

namespace morvane::platform {

/// Turns seconds since 1970-01-01 00:00 UTC into the date word (high 16 bits) and time word (low 16 bits) of local
/// time, by the zone's rules at that moment; an odd second goes down to the even one. False outside the years 1980 to
/// 2107.
bool fatTimeFromSeconds(std::int64_t seconds, std::uint32_t & fatTime) noexcept;

/// Turns the two words back, so that `fatTimeFromSeconds` of the result gives them again; of two moments with the same
/// local time it takes the earlier. False for words that are no date and time, and for a local time that the zone
/// leaves out.
bool secondsFromFatTime(std::uint32_t fatTime, std::int64_t & seconds) noexcept;

} // namespace morvane::platform
