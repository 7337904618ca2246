// A clock for measuring how long something took.
#pragma once

#include <cstdint>

namespace morvane::platform {

/// Milliseconds since some fixed moment, modulo 2 to the 32; it never goes back and takes no notice of changes of the
/// time of day.
std::uint32_t tickCount() noexcept;

} // namespace morvane::platform
