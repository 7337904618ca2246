// Reading numbers from text, and the short text forms of values.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <morvane/strings/text_view.h>

namespace morvane {

template <typename Unit>
constexpr bool isDecimalDigit(Unit unit) noexcept {
    return unit >= '0' && unit <= '9';
}

/// 0 to 15, or -1 for a unit that is no hexadecimal digit.
template <typename Unit>
constexpr int hexDigitValue(Unit unit) noexcept {
    if (isDecimalDigit(unit)) {
        return unit - '0';
    }
    if (unit >= 'a' && unit <= 'f') {
        return unit - 'a' + 10;
    }
    return unit >= 'A' && unit <= 'F' ? unit - 'A' + 10 : -1;
}

/// True when the text is not empty and `accepts` every unit.
template <typename Unit, typename Predicate>
constexpr bool consistsOf(TextView<Unit> text, Predicate accepts) noexcept {
    for (Unit const unit : text) {
        if (!accepts(unit)) {
            return false;
        }
    }
    return !text.isEmpty();
}

template <typename Unit>
constexpr bool isDecimal(TextView<Unit> text) noexcept {
    return consistsOf(text, [](Unit unit) { return isDecimalDigit(unit); });
}

template <typename Unit>
constexpr bool isFloat(TextView<Unit> text) noexcept {
    return consistsOf(text, [](Unit unit) { return isDecimalDigit(unit) || unit == '.'; });
}

template <typename Unit>
constexpr bool isHexadecimal(TextView<Unit> text) noexcept {
    return consistsOf(text, [](Unit unit) { return hexDigitValue(unit) >= 0; });
}

/// The value of decimal digits modulo 2 to the 32; 0 where there is any other unit.
template <typename Unit>
constexpr std::uint32_t readDecimal(TextView<Unit> text) noexcept {
    std::uint32_t value = 0;
    for (Unit const unit : text) {
        if (!isDecimalDigit(unit)) {
            return 0;
        }
        value = value * 10 + static_cast<std::uint32_t>(unit - '0');
    }
    return value;
}

/// The value of exactly eight hexadecimal digits; 0 for anything else.
template <typename Unit>
constexpr std::uint32_t readEightHexDigits(TextView<Unit> text) noexcept {
    if (text.length != 8) {
        return 0;
    }
    std::uint32_t value = 0;
    for (Unit const unit : text) {
        int const digit = hexDigitValue(unit);
        if (digit < 0) {
            return 0;
        }
        value = value << 4 | static_cast<std::uint32_t>(digit);
    }
    return value;
}

/// The value of "#" or "0x", in either case, and eight hexadecimal digits; 0 for anything else.
template <typename Unit>
constexpr std::uint32_t readLongWord(TextView<Unit> text) noexcept {
    bool const isMarked = text.length == 9 && text[0] == '#';
    bool const isPrefixed = text.length == 10 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    return isMarked || isPrefixed ? readEightHexDigits(text.from(text.length - 8)) : 0;
}

/// The value of the digits up to the second point, correctly rounded; 0 where a unit is neither digit nor point.
template <typename Unit>
double readDouble(TextView<Unit> text) noexcept {
    if (!isFloat(text)) {
        return 0;
    }
    // "0." and the significant digits, then the exponent. More digits than these no double and no midpoint of two has,
    // so that of the rest it matters only whether it is zero.
    constexpr std::size_t significantDigits = 800;
    char number[2 + significantDigits + 32] = {'0', '.'};
    std::size_t used = 2;
    std::int64_t exponent = 0;
    bool isBehindPoint = false;
    bool hasRest = false;
    for (Unit const unit : text) {
        if (unit == '.') {
            if (isBehindPoint) {
                break;
            }
            isBehindPoint = true;
            continue;
        }
        bool const isSignificant = used > 2 || unit != '0';
        if (isSignificant != isBehindPoint) {
            exponent += isSignificant ? 1 : -1;
        }
        if (isSignificant && used < 2 + significantDigits) {
            number[used++] = static_cast<char>(unit);
        } else {
            hasRest = hasRest || unit != '0';
        }
    }
    if (used == 2) {
        return 0;
    }
    if (hasRest) {
        number[used++] = '1';
    }
    number[used++] = 'e';
    used = static_cast<std::size_t>(std::to_chars(number + used, number + sizeof(number), exponent).ptr - number);
    double value = 0;
    if (std::from_chars(number, number + used, value).ec == std::errc::result_out_of_range) {
        value = exponent > 0 ? std::numeric_limits<double>::infinity() : 0;
    }
    return value;
}

/// A value's text in place, for as long as the object lives.
template <typename Unit, std::size_t Capacity>
struct ShortText {
    Unit units[Capacity];
    std::size_t length = 0;

    TextView<Unit> view() const noexcept { return {units, length}; }
};

/// # and eight lower-case hexadecimal digits.
template <typename Unit>
ShortText<Unit, 9> textOf(std::uint32_t value) noexcept {
    ShortText<Unit, 9> text;
    text.units[0] = '#';
    for (int digit = 0; digit < 8; ++digit) {
        text.units[1 + digit] = static_cast<Unit>("0123456789abcdef"[value >> (28 - 4 * digit) & 0xF]);
    }
    text.length = 9;
    return text;
}

/// Signed decimal digits.
template <typename Unit>
ShortText<Unit, 11> textOf(std::int32_t value) noexcept {
    char digits[11];
    ShortText<Unit, 11> text;
    text.length = static_cast<std::size_t>(std::to_chars(digits, digits + sizeof(digits), value).ptr - digits);
    std::copy_n(digits, text.length, text.units);
    return text;
}

/// Decimal with six digits behind the point, as the directive "%f" prints the value.
template <typename Unit>
ShortText<Unit, 64> textOf(float value) noexcept {
    char digits[64];
    ShortText<Unit, 64> text;
    auto const end = std::to_chars(digits, digits + sizeof(digits), double{value}, std::chars_format::fixed, 6).ptr;
    text.length = static_cast<std::size_t>(end - digits);
    std::copy_n(digits, text.length, text.units);
    return text;
}

/// The word that names the value.
template <typename Unit>
ShortText<Unit, 5> textOf(bool value) noexcept {
    char const * const word = value ? "true" : "false";
    ShortText<Unit, 5> text;
    text.length = std::strlen(word);
    std::copy_n(word, text.length, text.units);
    return text;
}

/// True for "true" in any case, up to the first zero.
template <typename Unit>
bool readBoolean(TextView<Unit> text) noexcept {
    constexpr char word[] = {'t', 'r', 'u', 'e'};
    for (std::size_t index = 0; index < 4; ++index) {
        if (index == text.length || (text[index] != word[index] && text[index] != word[index] - 'a' + 'A')) {
            return false;
        }
    }
    return text.length == 4 || text[4] == 0;
}

} // namespace morvane
