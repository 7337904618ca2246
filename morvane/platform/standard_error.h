// The program's channel for diagnostics.
#pragma once

#include <cstddef>

namespace morvane::platform {

/// Writes all bytes to standard error; what it refuses is lost. The last error of the thread stays as it was.
void writeStandardError(char const * bytes, std::size_t count) noexcept;

} // namespace morvane::platform
