// Views of text: how text travels inside the library.
#pragma once

#include <cstddef>
#include <cstring>
#include <morvane/core/literals.h>
#include <morvane/strings/data_string.h>
#include <morvane/strings/wide_string.h>
#include <string_view>
#include <type_traits>

namespace morvane {

/// One zero unit, which stands for the text of a null pointer.
template <typename Unit>
inline constexpr Unit emptyText[1] = {};

/// The number of units in front of the first zero of `text`, which is not null.
std::size_t unitLength(unsigned short int const * text) noexcept;
inline std::size_t unitLength(char const * text) noexcept {
    return std::char_traits<char>::length(text);
}

/// The same, but at most `most`: nothing behind the first zero is read.
std::size_t unitLength(unsigned short int const * text, std::size_t most) noexcept;
std::size_t unitLength(char const * text, std::size_t most) noexcept;

/// Units that somebody else owns. `data` is never null in a view that the functions of this header make.
template <typename Unit>
struct TextView {
    Unit const * data = emptyText<Unit>;
    std::size_t length = 0;

    constexpr bool isEmpty() const noexcept { return length == 0; }
    constexpr Unit operator[](std::size_t index) const noexcept { return data[index]; }
    constexpr Unit const * begin() const noexcept { return data; }
    constexpr Unit const * end() const noexcept { return data + length; }

    /// The units from `start` on; `start` is not above the length.
    constexpr TextView from(std::size_t start) const noexcept { return {data + start, length - start}; }
    /// The first `count` units; `count` is not above the length.
    constexpr TextView first(std::size_t count) const noexcept { return {data, count}; }
    /// The units `start` to `start` + `count` - 1, which exist.
    constexpr TextView part(std::size_t start, std::size_t count) const noexcept { return {data + start, count}; }

    constexpr bool operator==(TextView const & other) const noexcept {
        if (length != other.length) {
            return false;
        }
        if (!std::is_constant_evaluated()) {
            return std::memcmp(data, other.data, length * sizeof(Unit)) == 0;
        }
        for (std::size_t index = 0; index < length; ++index) {
            if (data[index] != other.data[index]) {
                return false;
            }
        }
        return true;
    }
    constexpr bool startsWith(TextView head) const noexcept {
        return length >= head.length && first(head.length) == head;
    }
    constexpr bool endsWith(TextView tail) const noexcept {
        return length >= tail.length && from(length - tail.length) == tail;
    }
};

using WideView = TextView<unsigned short int>;
using DataView = TextView<char>;

/// All units of the text by its length; a released text reads as empty.
inline WideView viewOf(_WideString const & text) noexcept {
    return text.get_data() == nullptr ? WideView{} : WideView{text.get_data(), text.get_length()};
}
inline DataView viewOf(_DataString const & text) noexcept {
    return text.get_data() == nullptr ? DataView{} : DataView{text.get_data(), text.get_length()};
}

/// The units in front of the first zero; null reads as empty.
inline WideView viewOf(unsigned short int const * text) noexcept {
    return text == nullptr ? WideView{} : WideView{text, unitLength(text)};
}
inline DataView viewOf(char const * text) noexcept {
    return text == nullptr ? DataView{} : DataView{text, unitLength(text)};
}

namespace literals {

/// The view of a 16-bit literal: `u"text"_wv`.
template <LiteralUnits Text>
constexpr WideView operator""_wv() {
    return {Text.units, sizeof(Text.units) / sizeof(Text.units[0]) - 1};
}

} // namespace literals
} // namespace morvane
