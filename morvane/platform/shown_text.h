// Text shown to the user of the program.
#pragma once

#include <morvane/export.h>

namespace morvane::platform {

/// Shows a text under a caption and comes back when the user has seen it: both zero-closed texts of 16-bit code units,
/// valid during the call. It may be called on any thread, by several at once.
using TextPresenter = void (*)(unsigned short int const * text, unsigned short int const * caption);

/// Puts `presenter` in the place of the present one and gives that back. Null shows nothing.
/// The first presenter writes the caption, a colon and the text as a line to standard error as UTF-8, an unpaired
/// surrogate as U+FFFD. Any thread may call it.
MORVANE_EXPORT TextPresenter setTextPresenter(TextPresenter presenter) noexcept;

} // namespace morvane::platform
