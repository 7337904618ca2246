// The debug channel: text for a developer, beside the program's own output.
#pragma once

#include <morvane/export.h>

namespace morvane::platform {

/// Takes one event: a zero-closed text of 16-bit code units, valid during the call. It may be called on any thread, by
/// several at once.
using DebugListener = void (*)(unsigned short int const * text);

/// Puts `listener` in the place of the present one and gives that back. Null means that nobody listens, and nothing is
/// formatted then. The first listener writes the text to standard error as UTF-8, an unpaired surrogate as U+FFFD. Any
/// thread may call it.
MORVANE_EXPORT DebugListener setDebugListener(DebugListener listener) noexcept;

} // namespace morvane::platform
