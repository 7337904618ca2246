// Numbers, references and encodings, unit by unit as their contract tells them.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <map>
#include <morvane/morvane.h>
#include <optional>
#include <string>

namespace text_model {

template <typename Text>
bool consistsOf(Text const & text, char const * set) {
    return text.find_first_not_of(Text(set, set + std::char_traits<char>::length(set))) == Text::npos;
}

inline std::u16string widened(std::string const & bytes) {
    std::u16string text;
    for (char const byte : bytes) {
        text += static_cast<unsigned char>(byte);
    }
    return text;
}

inline std::u16string lower(std::u16string text) {
    for (char16_t & unit : text) {
        unit = unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
    }
    return text;
}

/// The digits of `text`, all of `base`, modulo 2 to the 32.
inline std::uint32_t valueOf(std::u16string const & text, std::uint32_t base) {
    std::uint32_t value = 0;
    for (char16_t const unit : lower(text)) {
        value = value * base + (unit <= u'9' ? unit - u'0' : unit - u'a' + 10U);
    }
    return value;
}

inline std::optional<std::uint32_t> decimal(std::u16string const & text) {
    return consistsOf(text, "0123456789") ? std::optional(valueOf(text, 10)) : std::nullopt;
}

/// The digits behind "0x" in either case, or behind "x"; none for other text.
inline std::u16string hexDigits(std::u16string const & text) {
    std::size_t const prefix = text.starts_with(u"x") ? 1 : lower(text).starts_with(u"0x") ? 2 : text.size();
    std::u16string const digits = lower(text.substr(prefix));
    return digits.size() <= 8 && consistsOf(digits, "0123456789abcdef") ? digits : u"";
}

/// The unit of "&#...;"; 0xFFFF for what is no reference.
inline char16_t referenced(std::u16string const & text) {
    if (text.size() <= 4 || !text.starts_with(u"&#") || !text.ends_with(u";")) {
        return 0xFFFF;
    }
    std::u16string const number = text.substr(2, text.size() - 3);
    return static_cast<char16_t>(number[0] == u'x' ? valueOf(hexDigits(number), 16) : decimal(number).value_or(0));
}

/// Every reference as its unit, all else from an "&" to the next ";" gone, zero units at the end.
inline std::u16string withoutReferences(std::u16string const & text) {
    std::u16string result;
    std::u16string zeros;
    std::size_t mark = 0;
    for (std::size_t start = 0, end = 0;
         (start = text.find(u'&', mark)) != text.npos && (end = text.find(u';', start)) != text.npos; mark = end + 1) {
        result += text.substr(mark, start - mark);
        char16_t const unit = referenced(text.substr(start, end + 1 - start));
        (unit == 0 ? zeros : result).append(unit != 0xFFFF, unit);
    }
    return result + text.substr(mark) + zeros;
}

inline std::u16string withReferences(std::u16string const & text, char16_t limit) {
    std::u16string result;
    for (char16_t const unit : text) {
        char reference[12];
        std::snprintf(reference, sizeof reference, "&#x%x;", unit + 0U);
        result += unit > limit ? widened(reference) : std::u16string(1, unit);
    }
    return result;
}

inline std::string encodedUtf8(std::u16string const & text) {
    std::string bytes;
    for (char16_t const unit : text) {
        int more = unit < 0x80 ? 0 : unit < 0x800 ? 1 : 2;
        constexpr int leads[] = {0, 0xC0, 0xE0};
        bytes += static_cast<char>(leads[more] + (unit >> 6 * more));
        while (more-- != 0) {
            bytes += static_cast<char>(0x80 + (unit >> 6 * more & 0x3F));
        }
    }
    return bytes;
}

/// The units of `bytes`; on a fault those before it, and the message.
inline std::u16string decodedUtf8(std::string const & bytes, std::string & message) {
    std::u16string text;
    int const length = static_cast<int>(bytes.size());
    auto const at = [&bytes](int index) { return static_cast<unsigned char>(bytes[static_cast<std::size_t>(index)]); };
    for (int d = 0; d < length; ++d) {
        int const lead = at(d);
        int const more = lead < 0x80 ? 0 : lead >> 5 == 6 ? 1 : lead >> 4 == 14 ? 2 : -1;
        d += std::max(more, 0);
        if (more < 0 || d >= length) {
            std::string const place = std::to_string(d);
            std::string const end = std::to_string(length);
            message = more < 0    ? "error C: (c0:" + std::to_string(lead) + ") (d:" + place + ") (length:" + end + ")"
                      : more == 1 ? "error A: (d(" + place + ") >= length(" + end + "))"
                                  : "error B: (d:" + place + ") >= length:" + end + "))";
            break;
        }
        int unit = more == 0 ? lead : more == 1 ? lead & 0x1F : (lead & 0x0F) << 6 | (at(d - 1) & 0x3F);
        unit = more == 0 ? unit : unit << 6 | (at(d) & 0x3F);
        text += static_cast<char16_t>(unit);
    }
    return text;
}

/// Two bytes a unit; an odd last byte is dropped.
inline std::u16string unitsOf(std::string const & bytes, bool isBigEndian) {
    std::u16string text;
    for (std::size_t index = 0; index + 1 < bytes.size(); index += 2) {
        int const low = static_cast<unsigned char>(bytes[index + isBigEndian]);
        text += static_cast<char16_t>(static_cast<unsigned char>(bytes[index + !isBigEndian]) << 8 | low);
    }
    return text;
}

inline std::string bytesOf(std::u16string const & text, bool isBigEndian) {
    std::string bytes;
    for (char16_t const unit : text) {
        bytes += static_cast<char>(isBigEndian ? unit >> 8 : unit);
        bytes += static_cast<char>(isBigEndian ? unit : unit >> 8);
    }
    return bytes;
}

/// The units of the 256 bytes of a code page, asked for one by one: what the tables hold is told by the tests.
inline std::array<char16_t, 256> const & codePage(int format) {
    static std::map<int, std::array<char16_t, 256>> pages;
    auto const [page, isNew] = pages.try_emplace(format);
    for (std::size_t byte = 1; isNew && byte < 256; ++byte) {
        char const text[] = {static_cast<char>(byte), 0};
        _WideString result;
        _StringUtility::convertDataStringToWideString(text, result,
                                                      static_cast<_StringUtility::StringFileFormat>(format));
        page->second[byte] = static_cast<char16_t>(result.getAt(0));
    }
    return page->second;
}

inline std::u16string decodedCodePage(std::string const & bytes, int format) {
    std::u16string text;
    for (char const byte : bytes) {
        text += codePage(format)[static_cast<unsigned char>(byte)];
    }
    return text;
}

/// A byte for a unit: the lowest that stands for it, else "?". Five bytes of ISO-8859-7 stand for nothing.
inline std::string encodedCodePage(std::u16string const & text, int format) {
    std::array<char16_t, 256> units = codePage(format);
    for (std::size_t const byte : {0xA4U, 0xA5U, 0xAAU, 0xAEU, 0xD2U}) {
        units[byte] = format == 22 ? char16_t{0} : units[byte];
    }
    std::string bytes;
    for (char16_t const unit : text) {
        auto const found = std::find(units.begin(), units.end(), unit);
        bytes += found == units.end() ? '?' : static_cast<char>(found - units.begin());
    }
    return bytes;
}

/// What stands in front of the first zero.
template <typename Text>
Text upToZero(Text const & text) {
    return text.substr(0, text.find(typename Text::value_type{}));
}

} // namespace text_model
