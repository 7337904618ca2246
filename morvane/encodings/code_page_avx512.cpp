#include <morvane/encodings/code_page_kernels.h>

#if MORVANE_HAS_KERNELS

#include <algorithm>
#include <cstdint>
#include <immintrin.h>

#if defined(__GNUC__) && !defined(__clang__)
// The header of g++ 12 takes the rest of a register from a value that it sets nowhere.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#define MORVANE_AVX512 __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi,bmi2")))

namespace morvane {

namespace {

constexpr std::size_t stepUnits = 64;
constexpr std::size_t halfStep = stepUnits / 2;

/// Which of the 128 bytes of two registers, the second one's from 64 on, come to stand where.
struct alignas(64) Places {
    unsigned char from[64];
};

/// The bytes `first` to `first` + 31 of the one register as low halves of units, those of the other as high ones.
consteval Places makeJoining(unsigned first) {
    Places places{};
    for (unsigned index = 0; index < 64; ++index) {
        places.from[index] = static_cast<unsigned char>(first + index / 2 + index % 2 * 64);
    }
    return places;
}

constexpr Places frontUnits = makeJoining(0);
constexpr Places backUnits = makeJoining(halfStep);

MORVANE_AVX512 inline __m512i place(__m512i first, Places const & places, __m512i second) noexcept {
    return _mm512_permutex2var_epi8(first, _mm512_load_si512(&places), second);
}

/// For each byte the entry of `table` that its lower seven bits tell.
MORVANE_AVX512 inline __m512i lookUp(unsigned char const * table, __m512i bytes) noexcept {
    return _mm512_permutex2var_epi8(_mm512_load_si512(table), bytes, _mm512_load_si512(table + 64));
}

/// The lowest bits, as many as there are of `count` behind the first `passed`.
MORVANE_AVX512 inline __mmask32 halfMask(std::size_t count, std::size_t passed) noexcept {
    return static_cast<__mmask32>(_bzhi_u64(~std::uint64_t{0}, static_cast<unsigned>(count)) >> passed);
}

} // namespace

MORVANE_AVX512 void decodeAvx512(CodePage const & page, DataView text, unsigned short int * target) noexcept {
    for (std::size_t index = 0; index < text.length; index += stepUnits) {
        std::size_t const count = std::min(text.length - index, stepUnits);
        __mmask64 const present = _bzhi_u64(~std::uint64_t{0}, static_cast<unsigned>(count));
        __m512i const bytes = _mm512_maskz_loadu_epi8(present, text.data + index);
        __mmask64 const isUpper = _mm512_movepi8_mask(bytes);
        __m512i const low = _mm512_mask_mov_epi8(bytes, isUpper, lookUp(page.upperLow, bytes));
        __m512i const high = _mm512_maskz_mov_epi8(isUpper, lookUp(page.upperHigh, bytes));
        unsigned short int * const units = target + index;
        _mm512_mask_storeu_epi16(units, halfMask(count, 0), place(low, frontUnits, high));
        _mm512_mask_storeu_epi16(units + halfStep, halfMask(count, halfStep), place(low, backUnits, high));
    }
}

} // namespace morvane

#endif
