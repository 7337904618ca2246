// UTF-8 out of 16-bit text, for what the library tells the system.
#pragma once

#include <cstdint>

namespace morvane::platform {

/// True for a unit that is one half of a code point.
constexpr bool isSurrogate(std::uint32_t point) noexcept {
    return (point & 0xFFFFF800) == 0xD800;
}

/// The code point at `text`, which moves on behind it; of a surrogate without its other half the unit itself. `text`
/// stands in front of a unit that is not its closing zero.
inline std::uint32_t takeCodePoint(unsigned short int const *& text) noexcept {
    std::uint32_t const unit = *text++;
    bool const isPair = (unit & 0xFC00) == 0xD800 && (*text & 0xFC00) == 0xDC00;
    return isPair ? 0x10000 + ((unit & 0x3FF) << 10 | (*text++ & 0x3FFU)) : unit;
}

/// Writes a code point in its 1 to 4 bytes and gives the end of them.
inline char * putCodePoint(char * target, std::uint32_t point) noexcept {
    auto const put = [&target](std::uint32_t byte) { *target++ = static_cast<char>(byte); };
    if (point < 0x80) {
        put(point);
    } else if (point < 0x800) {
        put(0xC0 | point >> 6);
        put(0x80 | (point & 0x3F));
    } else if (point < 0x10000) {
        put(0xE0 | point >> 12);
        put(0x80 | (point >> 6 & 0x3F));
        put(0x80 | (point & 0x3F));
    } else {
        put(0xF0 | point >> 18);
        put(0x80 | (point >> 12 & 0x3F));
        put(0x80 | (point >> 6 & 0x3F));
        put(0x80 | (point & 0x3F));
    }
    return target;
}

} // namespace morvane::platform
