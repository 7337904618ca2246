#include <morvane/encodings/code_page.h>

#include <bit>
#include <morvane/encodings/code_page_kernels.h>
#include <morvane/strings/text_storage.h>
#include <utility>

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

/// A stretch of units that a page has in sequence.
struct Stretch {
    unsigned first = 0;
    unsigned span = 0;  ///< units behind the first
    unsigned shift = 0; ///< what a unit is above its byte

    bool has(unsigned unit) const noexcept { return unit - first <= span; }
};

/// The two stretches that a text met last: one script, capitals and special letters apart, stays in them.
struct Stretches {
    Stretch recent{firstUpper, 0, 0}; // U+00A0 is 0xA0 everywhere
    Stretch former = recent;
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

/// Encodes units into a page in which every byte stands for its own value.
void encodeIdentity(unsigned short int const * units, std::size_t count, char * __restrict target) noexcept {
    for (std::size_t index = 0; index < count; ++index) {
        target[index] = static_cast<char>(units[index] < 0x100 ? units[index] : unknownByte);
    }
}

/// The byte of a unit from 0xA0 on, whose stretch becomes the recent one.
unsigned char encodeUpper(CodePage const & page, unsigned short int unit, Stretches & stretches) noexcept {
    if (!stretches.recent.has(unit)) {
        std::swap(stretches.recent, stretches.former);
        if (!stretches.recent.has(unit)) {
            unsigned const index = searchUpper(page.search, unit);
            if (index == upperBytes) {
                return unknownByte;
            }
            unsigned const first = page.stretchFirst[index];
            unsigned const last = page.stretchLast[index];
            stretches.recent = {page.search[first], last - first, page.search[first] - first - firstUpper};
        }
    }
    return static_cast<unsigned char>(unit - stretches.recent.shift);
}

#ifdef __SSE2__

/// 16 units on their way to bytes.
struct Units {
    __m128i value[2];
    __m128i isKnown[2]; ///< those whose bytes stand already
};

bool isDone(Units const & units) noexcept {
    return _mm_movemask_epi8(_mm_and_si128(units.isKnown[0], units.isKnown[1])) == 0xFFFF;
}

/// Brings the units of a stretch to their bytes.
void shift(Units & units, Stretch const & stretch) noexcept {
    __m128i const first = _mm_set1_epi16(static_cast<short>(stretch.first));
    __m128i const span = _mm_set1_epi16(static_cast<short>(stretch.span));
    __m128i const distance = _mm_set1_epi16(static_cast<short>(stretch.shift));
    for (unsigned part = 0; part < 2; ++part) {
        __m128i const behind = _mm_subs_epu16(_mm_sub_epi16(units.value[part], first), span);
        __m128i const isInside = _mm_andnot_si128(units.isKnown[part], _mm_cmpeq_epi16(behind, _mm_setzero_si128()));
        units.value[part] = _mm_sub_epi16(units.value[part], _mm_and_si128(isInside, distance));
        units.isKnown[part] = _mm_or_si128(units.isKnown[part], isInside);
    }
}

/// Encodes 16 units that are all below 0xA0 or in one of the stretches; false, with nothing written, when one is not.
bool encodeStep(unsigned short int const * source, Stretches const & stretches, char * target) noexcept {
    Units units;
    for (unsigned part = 0; part < 2; ++part) {
        units.value[part] = _mm_loadu_si128(reinterpret_cast<__m128i const *>(source) + part);
        units.isKnown[part] =
            _mm_cmpeq_epi16(_mm_subs_epu16(units.value[part], _mm_set1_epi16(firstUpper - 1)), _mm_setzero_si128());
    }
    if (!isDone(units)) {
        shift(units, stretches.recent);
        if (!isDone(units)) {
            shift(units, stretches.former);
            if (!isDone(units)) {
                return false;
            }
        }
    }
    _mm_storeu_si128(reinterpret_cast<__m128i *>(target), _mm_packus_epi16(units.value[0], units.value[1]));
    return true;
}

/// Widens 16 bytes; false, with nothing written, when one is not ASCII and `isIdentity` isn't set.
bool decodeStep(char const * bytes, bool isIdentity, unsigned short int * target) noexcept {
    __m128i const value = _mm_loadu_si128(reinterpret_cast<__m128i const *>(bytes));
    if (!isIdentity && _mm_movemask_epi8(value) != 0) {
        return false;
    }
    __m128i const zero = _mm_setzero_si128();
    _mm_storeu_si128(reinterpret_cast<__m128i *>(target), _mm_unpacklo_epi8(value, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(target) + 1, _mm_unpackhi_epi8(value, zero));
    return true;
}

#endif

} // namespace

void decode([[maybe_unused]] Kernel kernel, CodePage const & page, DataView text,
            unsigned short int * target) noexcept {
#if MORVANE_HAS_KERNELS
    if (kernel == Kernel::avx512) {
        decodeAvx512(page, text, target);
        return;
    }
#endif
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

void decode(CodePage const & page, DataView text, unsigned short int * target) noexcept {
    decode(bestKernel(), page, text, target);
}

void encode(CodePage const & page, WideView text, char * target) noexcept {
    if (page.isIdentity) {
        encodeIdentity(text.data, text.length, target);
        return;
    }
    Stretches stretches;
    std::size_t index = 0;
    while (index < text.length) {
        std::size_t stop = text.length;
#ifdef __SSE2__
        if (text.length - index >= stepUnits) {
            if (encodeStep(text.data + index, stretches, target + index)) {
                index += stepUnits;
                continue;
            }
            stop = index + stepUnits;
        }
#endif
        for (; index < stop; ++index) {
            unsigned short int const unit = text[index];
            target[index] = static_cast<char>(unit < firstUpper ? static_cast<unsigned char>(unit)
                                                                : encodeUpper(page, unit, stretches));
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
