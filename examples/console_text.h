// Text between a console, which speaks UTF-8, and the library, which speaks 16-bit code units.
#pragma once

#include <morvane/strings/wide_string.h>
#include <string>
#include <string_view>

/// The code units of a UTF-8 text. A byte that is no UTF-8 becomes an unpaired surrogate, so that a file name which
/// holds one names no file.
_WideString toUnits(std::string_view utf8);

/// The UTF-8 form of a zero-closed text; an unpaired surrogate becomes U+FFFD, and null an empty text.
std::string toUtf8(unsigned short int const * text);
