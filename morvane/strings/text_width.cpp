#include <morvane/strings/text_width.h>

#include <morvane/strings/unit_block.h>

namespace morvane {

void widen(DataView source, unsigned short int * target) noexcept {
    std::size_t index = 0;
#if MORVANE_HAS_UNIT_BLOCK
    __m128i const zero = _mm_setzero_si128();
    for (; source.length - index >= 16; index += 16) {
        __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const *>(source.data + index));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(target + index), _mm_unpacklo_epi8(bytes, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(target + index + 8), _mm_unpackhi_epi8(bytes, zero));
    }
#endif
    for (; index < source.length; ++index) {
        target[index] = static_cast<unsigned char>(source[index]);
    }
}

std::size_t narrow(WideView source, char * target) noexcept {
    std::size_t index = 0;
#if MORVANE_HAS_UNIT_BLOCK
    __m128i const high = _mm_set1_epi16(static_cast<short>(0xFF00));
    __m128i const zero = _mm_setzero_si128();
    for (; source.length - index >= 16; index += 16) {
        __m128i const first = _mm_loadu_si128(reinterpret_cast<__m128i const *>(source.data + index));
        __m128i const second = _mm_loadu_si128(reinterpret_cast<__m128i const *>(source.data + index + 8));
        __m128i const above = _mm_and_si128(_mm_or_si128(first, second), high);
        if (_mm_movemask_epi8(_mm_cmpeq_epi8(above, zero)) != 0xFFFF) {
            break;
        }
        _mm_storeu_si128(reinterpret_cast<__m128i *>(target + index), _mm_packus_epi16(first, second));
    }
#endif
    for (; index < source.length && source[index] <= 0xFF; ++index) {
        target[index] = static_cast<char>(source[index]);
    }
    return index;
}

} // namespace morvane
