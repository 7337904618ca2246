#include <morvane/encodings/code_page.h>

#include <bit>
#include <morvane/strings/text_storage.h>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace morvane {

namespace {

/// Below this value bytes and units are the same in every page.
constexpr unsigned firstUpper = 0xA0;
constexpr unsigned upperBytes = 0x100 - firstUpper;
constexpr unsigned char unknownByte = '?';
/// Units or bytes taken at a step.
constexpr std::size_t stepUnits = 16;

/// A stretch of units that a page has in sequence: a text of one script stays in it.
struct Run {
    unsigned first = 0;
    unsigned span = 0;  ///< units behind the first
    unsigned shift = 0; ///< what a unit is above its byte
};

/// The index in 0 to 95 of `unit`, which is not 0; `upperBytes` where it isn't there.
unsigned searchUpper(unsigned short int const * search, unsigned short int unit) noexcept {
#ifdef __SSE2__
    __m128i const sought = _mm_set1_epi16(static_cast<short>(unit));
    for (unsigned index = 0; index < upperBytes; index += stepUnits) {
        auto const * const group = reinterpret_cast<__m128i const *>(search + index);
        __m128i const found = _mm_packs_epi16(_mm_cmpeq_epi16(_mm_loadu_si128(group), sought),
                                              _mm_cmpeq_epi16(_mm_loadu_si128(group + 1), sought));
        auto const hits = static_cast<unsigned>(_mm_movemask_epi8(found));
        if (hits != 0) {
            return index + static_cast<unsigned>(std::countr_zero(hits));
        }
    }
    return upperBytes;
#else
    unsigned index = 0;
    while (index < upperBytes && search[index] != unit) {
        ++index;
    }
    return index;
#endif
}

/// The byte of a unit from 0xA0 on; moves `run` to the stretch around it.
unsigned char encodeUpper(unsigned short int const * search, unsigned short int unit, Run & run) noexcept {
    if (unit - run.first <= run.span) {
        return static_cast<unsigned char>(unit - run.shift);
    }
    unsigned const index = searchUpper(search, unit);
    if (index == upperBytes) {
        return unknownByte;
    }
    unsigned first = index;
    while (first > 0 && search[first - 1] + 1U == search[first]) {
        --first;
    }
    unsigned last = index;
    while (last + 1 < upperBytes && search[last] + 1U == search[last + 1]) {
        ++last;
    }
    run = {search[first], last - first, search[first] - first - firstUpper};
    return static_cast<unsigned char>(index + firstUpper);
}

#ifdef __SSE2__

/// Encodes 16 units that are all below 0xA0 or in the run; false, with nothing written, when one is neither.
bool encodeStep(unsigned short int const * units, Run const & run, char * target) noexcept {
    __m128i const zero = _mm_setzero_si128();
    __m128i const first = _mm_set1_epi16(static_cast<short>(run.first));
    __m128i const span = _mm_set1_epi16(static_cast<short>(run.span));
    __m128i const shift = _mm_set1_epi16(static_cast<short>(run.shift));
    __m128i bytes[2];
    __m128i isKnown = _mm_cmpeq_epi16(zero, zero);
    for (unsigned part = 0; part < 2; ++part) {
        __m128i const value = _mm_loadu_si128(reinterpret_cast<__m128i const *>(units) + part);
        __m128i const isLower = _mm_cmpeq_epi16(_mm_subs_epu16(value, _mm_set1_epi16(firstUpper - 1)), zero);
        __m128i const isInRun = _mm_cmpeq_epi16(_mm_subs_epu16(_mm_sub_epi16(value, first), span), zero);
        isKnown = _mm_and_si128(isKnown, _mm_or_si128(isLower, isInRun));
        bytes[part] = _mm_sub_epi16(value, _mm_andnot_si128(isLower, shift));
    }
    if (_mm_movemask_epi8(isKnown) != 0xFFFF) {
        return false;
    }
    _mm_storeu_si128(reinterpret_cast<__m128i *>(target), _mm_packus_epi16(bytes[0], bytes[1]));
    return true;
}

/// Widens 16 bytes; false, with nothing written, when one is not below 0xA0 and `isIdentity` isn't set.
bool decodeStep(char const * bytes, bool isIdentity, unsigned short int * target) noexcept {
    __m128i const value = _mm_loadu_si128(reinterpret_cast<__m128i const *>(bytes));
    __m128i const zero = _mm_setzero_si128();
    __m128i const isLower =
        _mm_cmpeq_epi8(_mm_subs_epu8(value, _mm_set1_epi8(static_cast<char>(firstUpper - 1))), zero);
    if (!isIdentity && _mm_movemask_epi8(isLower) != 0xFFFF) {
        return false;
    }
    _mm_storeu_si128(reinterpret_cast<__m128i *>(target), _mm_unpacklo_epi8(value, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(target) + 1, _mm_unpackhi_epi8(value, zero));
    return true;
}

#endif

} // namespace

void decode(CodePage const & page, DataView text, unsigned short int * target) noexcept {
    unsigned short int const * const units = page.units;
    std::size_t index = 0;
#ifdef __SSE2__
    while (text.length - index >= stepUnits) {
        if (!decodeStep(text.data + index, page.isIdentity, target + index)) {
            for (std::size_t part = 0; part < stepUnits; ++part) {
                target[index + part] = units[static_cast<unsigned char>(text.data[index + part])];
            }
        }
        index += stepUnits;
    }
#endif
    for (; index < text.length; ++index) {
        target[index] = units[static_cast<unsigned char>(text.data[index])];
    }
}

void encode(CodePage const & page, WideView text, char * target) noexcept {
    Run run{firstUpper, 0, 0}; // U+00A0 is 0xA0 everywhere
    std::size_t index = 0;
    while (index < text.length) {
        std::size_t stop = text.length;
#ifdef __SSE2__
        if (text.length - index >= stepUnits) {
            if (encodeStep(text.data + index, run, target + index)) {
                index += stepUnits;
                continue;
            }
            stop = index + stepUnits;
        }
#endif
        for (; index < stop; ++index) {
            unsigned short int const unit = text[index];
            target[index] = static_cast<char>(unit < firstUpper ? static_cast<unsigned char>(unit)
                                                                : encodeUpper(page.search, unit, run));
        }
    }
}

void decodeTo(CodePage const & page, DataView text, _WideString & result) {
    unsigned short int * const units = allocateText<unsigned short int>(text.length);
    if (units != nullptr) {
        decode(page, text, units);
    }
    adoptText(result, units, text.length);
}

void encodeTo(CodePage const & page, WideView text, _DataString & result) {
    char * const bytes = allocateText<char>(text.length);
    if (bytes != nullptr) {
        encode(page, text, bytes);
    }
    adoptText(result, bytes, text.length);
}

} // namespace morvane
