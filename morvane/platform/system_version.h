// The version word of the system.
#pragma once

#include <cstdint>

namespace morvane::platform {

/// The major version in the low byte, the minor one in the next, the top bit set for the family before NT. A system
/// that is not Windows gives 0, which is the word of none.
std::uint32_t systemVersionWord() noexcept;

} // namespace morvane::platform
