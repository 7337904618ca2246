// Formatting text with the directives of C's printf.
#pragma once

#include <cstdarg>
#include <cstddef>

namespace morvane {

/// Units of a formatted text at most.
inline constexpr std::size_t largestFormattedText = 32767;

/// Writes what `pattern` and `arguments` give to `target`, cut at `capacity` units and at the first zero that a
/// directive printed, and gives the count of units. No closing zero is written. For `unsigned short int` and `char`.
///
/// All directives of C are known, with their flags, width, precision and size; what else follows a % prints as it
/// stands.
/// `%s` and `%c` take text of the unit, `%hs` and `%hc` bytes, `%ls` and `%lc` 16-bit units; 16-bit text in an 8-bit
/// pattern ends at the first unit above 255. In front of a number `l` is 32 bits wide, `ll`, `j` and `L` 64, `z` and
/// `t` the pointer's width. `%n` takes its argument and does nothing. A null text prints "(null)", a null pointer
/// "(nil)". No locale is looked at, and nothing comes from the heap.
template <typename Unit>
std::size_t formatText(Unit * target, std::size_t capacity, Unit const * pattern, std::va_list arguments) noexcept;

} // namespace morvane
