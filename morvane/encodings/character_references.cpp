#include <morvane/encodings/character_references.h>

#include <bit>
#include <cstddef>
#include <morvane/strings/unit_search.h>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace morvane {

namespace {

/// What a digit of base 16 is worth; 16 for any other unit.
unsigned hexDigitValue(unsigned short int unit) noexcept {
    if (unit >= u'0' && unit <= u'9') {
        return unit - unsigned{u'0'};
    }
    unsigned const lower = unit | 0x20U;
    return lower >= u'a' && lower <= u'f' ? lower - u'a' + 10 : 16;
}

/// The first unit above `limit` at or after `from`; the length when there is none.
std::size_t findAbove(WideView text, unsigned short int limit, std::size_t from) noexcept {
    std::size_t index = from;
#ifdef __SSE2__
    __m128i const limits = _mm_set1_epi16(static_cast<short>(limit));
    for (; text.length - index >= 8; index += 8) {
        __m128i const units = _mm_loadu_si128(reinterpret_cast<__m128i const *>(text.data + index));
        __m128i const isWithin = _mm_cmpeq_epi16(_mm_subs_epu16(units, limits), _mm_setzero_si128());
        auto const above = static_cast<unsigned>(_mm_movemask_epi8(isWithin)) ^ 0xFFFFU;
        if (above != 0) {
            return index + static_cast<unsigned>(std::countr_zero(above)) / 2;
        }
    }
#endif
    while (index < text.length && text[index] <= limit) {
        ++index;
    }
    return index;
}

} // namespace

std::optional<std::int32_t> readDecimal(WideView text) noexcept {
    std::uint32_t value = 0;
    for (unsigned short int const unit : text) {
        if (unit < u'0' || unit > u'9') {
            return std::nullopt;
        }
        value = value * 10 + (unit - std::uint32_t{u'0'});
    }
    return static_cast<std::int32_t>(value);
}

WideView hexDigits(WideView text) noexcept {
    constexpr std::size_t mostDigits = 8;
    std::size_t prefix = 0;
    if (text.length >= 2 && text[0] == u'0' && (text[1] == u'x' || text[1] == u'X')) {
        prefix = 2;
    } else if (text.length >= 1 && text[0] == u'x') {
        prefix = 1;
    } else {
        return {};
    }
    WideView const digits = text.from(prefix);
    if (digits.length > mostDigits) {
        return {};
    }
    for (unsigned short int const unit : digits) {
        if (hexDigitValue(unit) > 15) {
            return {};
        }
    }
    return digits;
}

std::optional<std::int32_t> readHex(WideView text) noexcept {
    WideView const digits = hexDigits(text);
    if (digits.isEmpty()) {
        return std::nullopt;
    }
    std::uint32_t value = 0;
    for (unsigned short int const unit : digits) {
        value = value << 4 | hexDigitValue(unit);
    }
    return static_cast<std::int32_t>(value);
}

HexText hexText(unsigned short int unit) noexcept {
    HexText text;
    for (int shift = 12; shift >= 0; shift -= 4) {
        unsigned const digit = unit >> shift & 0xFU;
        if (digit != 0 || text.length > 0 || shift == 0) {
            text.digits[text.length++] = static_cast<char>(digit < 10 ? '0' + digit : 'a' + digit - 10);
        }
    }
    return text;
}

unsigned short int referencedUnit(WideView reference) noexcept {
    if (reference.length <= 4 || reference[0] != u'&' || reference[1] != u'#'
        || reference[reference.length - 1] != u';') {
        return noUnit;
    }
    WideView const number = reference.part(2, reference.length - 3);
    auto const value = number[0] == u'x' ? readHex(number) : readDecimal(number);
    return static_cast<unsigned short int>(value.value_or(0));
}

bool hasReferences(WideView text) noexcept {
    std::size_t const start = findUnit(text, u'&');
    return start != notFound && findUnit(text, u';', start) != notFound;
}

void decodeReferences(WideView text, TextBuilder<unsigned short int> & target) {
    std::size_t zeros = 0;
    std::size_t mark = 0;
    for (;;) {
        std::size_t const start = findUnit(text, u'&', mark);
        std::size_t const end = start == notFound ? notFound : findUnit(text, u';', start);
        if (end == notFound) {
            break;
        }
        target.append(text.part(mark, start - mark));
        unsigned short int const unit = referencedUnit(text.part(start, end + 1 - start));
        if (unit == 0) {
            ++zeros;
        } else if (unit != noUnit) {
            target.append(unit);
        }
        mark = end + 1;
    }
    target.append(text.from(mark));
    target.append(0, zeros);
}

void encodeReferences(WideView text, unsigned short int limit, TextBuilder<unsigned short int> & target) {
    std::size_t index = 0;
    while (index < text.length) {
        std::size_t const stop = findAbove(text, limit, index);
        target.append(text.part(index, stop - index));
        index = stop;
        for (; index < text.length && text[index] > limit; ++index) {
            HexText const digits = hexText(text[index]);
            unsigned short int * end = target.extend(digits.length + 4);
            if (end == nullptr) {
                return;
            }
            *end++ = u'&';
            *end++ = u'#';
            *end++ = u'x';
            for (std::size_t digit = 0; digit < digits.length; ++digit) {
                *end++ = static_cast<unsigned char>(digits.digits[digit]);
            }
            *end = u';';
        }
    }
}

} // namespace morvane
