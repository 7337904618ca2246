#include "console_text.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

bool isContinuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

void appendUtf8(std::string & text, std::uint32_t codePoint) {
    auto const append = [&text](std::uint32_t byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (codePoint < 0x80) {
        append(codePoint);
    } else if (codePoint < 0x800) {
        append(0xC0 | codePoint >> 6);
        append(0x80 | (codePoint & 0x3F));
    } else if (codePoint < 0x10000) {
        append(0xE0 | codePoint >> 12);
        append(0x80 | (codePoint >> 6 & 0x3F));
        append(0x80 | (codePoint & 0x3F));
    } else {
        append(0xF0 | codePoint >> 18);
        append(0x80 | (codePoint >> 12 & 0x3F));
        append(0x80 | (codePoint >> 6 & 0x3F));
        append(0x80 | (codePoint & 0x3F));
    }
}

} // namespace

_WideString toUnits(std::string_view utf8) {
    std::vector<unsigned short int> units;
    units.reserve(utf8.size() + 1);
    for (std::size_t index = 0; index < utf8.size();) {
        auto const lead = static_cast<unsigned char>(utf8[index]);
        std::size_t const length = lead < 0x80   ? 1
                                   : lead < 0xC2 ? 0
                                   : lead < 0xE0 ? 2
                                   : lead < 0xF0 ? 3
                                   : lead < 0xF5 ? 4
                                                 : 0;
        std::uint32_t codePoint = length == 1 ? lead : length == 0 ? 0 : lead & (0x7FU >> length);
        bool isWhole = length != 0 && index + length <= utf8.size();
        for (std::size_t next = 1; isWhole && next < length; ++next) {
            auto const byte = static_cast<unsigned char>(utf8[index + next]);
            isWhole = isContinuation(byte);
            codePoint = codePoint << 6 | (byte & 0x3F);
        }
        bool const isOverlong = (length == 3 && codePoint < 0x800) || (length == 4 && codePoint < 0x10000);
        bool const isSurrogate = codePoint >= 0xD800 && codePoint < 0xE000;
        if (!isWhole || isOverlong || isSurrogate || codePoint > 0x10FFFF) {
            units.push_back(static_cast<unsigned short int>(0xDC00 | lead));
            ++index;
            continue;
        }
        if (codePoint < 0x10000) {
            units.push_back(static_cast<unsigned short int>(codePoint));
        } else {
            units.push_back(static_cast<unsigned short int>(0xD7C0 + (codePoint >> 10)));
            units.push_back(static_cast<unsigned short int>(0xDC00 | (codePoint & 0x3FF)));
        }
        index += length;
    }
    units.push_back(0);
    return _WideString(units.data());
}

std::string toUtf8(unsigned short int const * text) {
    std::string utf8;
    for (; text != nullptr && *text != 0; ++text) {
        std::uint32_t codePoint = *text;
        bool const isHigh = codePoint >= 0xD800 && codePoint < 0xDC00;
        if (isHigh && text[1] >= 0xDC00 && text[1] < 0xE000) {
            codePoint = 0x10000 + ((codePoint & 0x3FF) << 10 | (text[1] & 0x3FFU));
            ++text;
        } else if (codePoint >= 0xD800 && codePoint < 0xE000) {
            codePoint = 0xFFFD;
        }
        appendUtf8(utf8, codePoint);
    }
    return utf8;
}
