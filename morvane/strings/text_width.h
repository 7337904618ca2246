// Between bytes and 16-bit units, value for value, without any encoding.
#pragma once

#include <cstddef>
#include <morvane/strings/text_view.h>

namespace morvane {

/// Stores each byte of `source` as the unit of the same value, 0 to 255, in `target`.
void widen(DataView source, unsigned short int * target) noexcept;

/// Stores the units of `source` as bytes of the same value in `target` up to the first one above 255, and gives how
/// many there were.
std::size_t narrow(WideView source, char * target) noexcept;

} // namespace morvane
