// What the library itself shows to the user.
#pragma once

#include <morvane/platform/shown_text.h>

namespace morvane::platform {

/// Hands the text and its caption to the present presenter. What that throws passes through.
void showText(unsigned short int const * text, unsigned short int const * caption);

} // namespace morvane::platform
