// Numbers and numeric character references, over views.
#pragma once

#include <cstddef>
#include <cstdint>
#include <morvane/strings/text_builder.h>
#include <morvane/strings/text_view.h>
#include <optional>

namespace morvane {

/// The value of decimal digits modulo 2 to the 32, 0 for no digits; nothing for other text.
std::optional<std::int32_t> readDecimal(WideView text) noexcept;

/// The digits of hexadecimal text behind its prefix ("0x" in either case, or "x"); an empty view for other text.
WideView hexDigits(WideView text) noexcept;

/// The value of hexadecimal text with its prefix; nothing for other text.
std::optional<std::int32_t> readHex(WideView text) noexcept;

/// A unit in lower-case hexadecimal digits without leading zeros.
struct HexText {
    char digits[5]{}; ///< zero-closed
    std::size_t length = 0;
};
HexText hexText(unsigned short int unit) noexcept;

/// What `referencedUnit` gives for text that is no reference.
inline constexpr unsigned short int noUnit = 0xFFFF;

/// The unit that a reference ("&#...;") stands for: 0 for a bad number, `noUnit` for text that is no reference.
unsigned short int referencedUnit(WideView reference) noexcept;

/// True when `text` holds an "&" with a ";" somewhere behind it, so that `decodeReferences` would change it.
bool hasReferences(WideView text) noexcept;

/// Appends `text` with its references resolved and all else between an "&" and the next ";" dropped. Units of value 0
/// come last of all, as repeated appending to a zero-closed text leaves them.
void decodeReferences(WideView text, TextBuilder<unsigned short int> & target);

/// Appends `text` with every unit above `limit` written as "&#x...;".
void encodeReferences(WideView text, unsigned short int limit, TextBuilder<unsigned short int> & target);

} // namespace morvane
