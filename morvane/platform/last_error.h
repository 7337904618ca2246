// The last error of the thread and its text.
#pragma once

#include <cstddef>
#include <cstdint>

namespace morvane::platform {

/// The system's code of the last call that failed on this thread; calls that succeed need not leave it as it was.
std::int32_t lastError() noexcept;
void setLastError(std::int32_t code) noexcept;

/// Puts the system's text for an error code, in the language of the process, into `text` and closes it with a zero.
/// `capacity` in code units, the zero among them; a longer text is cut. Gives the units of text put there, 0 where the
/// system has no text.
std::size_t lastErrorText(std::int32_t code, unsigned short int * text, std::size_t capacity) noexcept;

} // namespace morvane::platform
