// 16-bit text literals: u"text"_w is a pointer to zero-closed code units.
#pragma once

#include <cstddef>

namespace morvane {

/// The units of one literal, made at compile time, with the closing zero.
template <std::size_t Count>
struct LiteralUnits {
    unsigned short int units[Count]{};

    // NOLINTNEXTLINE(google-explicit-constructor): the literal operator below converts.
    consteval LiteralUnits(char16_t const (&text)[Count]) {
        for (std::size_t index = 0; index < Count; ++index) {
            units[index] = text[index];
        }
    }
};

namespace literals {

/// The code units of the literal, zero-closed, in static storage: `u"name"_w`.
template <LiteralUnits Text>
constexpr unsigned short int const * operator""_w() {
    return Text.units;
}

} // namespace literals
} // namespace morvane
