#include <morvane/encodings/utf8_kernels.h>

#ifdef MORVANE_UTF8_X86

#include <algorithm>
#include <bit>
#include <cstdint>
#include <immintrin.h>

#if defined(__GNUC__) && !defined(__clang__)
// The header of g++ 12 takes the rest of a register from a value that it sets nowhere.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#define MORVANE_AVX512 __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi,bmi2,popcnt")))

namespace morvane::utf8 {

namespace {

constexpr std::size_t blockBytes = 64;

/// The lowest `count` bits; `count` is at most 64.
MORVANE_AVX512 inline std::uint64_t lowBits(std::size_t count) noexcept {
    return _bzhi_u64(~std::uint64_t{0}, static_cast<unsigned>(count));
}

/// Up to 64 bytes, a bit a byte. A sequence belongs to the block that its last byte stands in.
struct Block {
    __m512i bytes;
    std::uint64_t present;      ///< the bytes that there are
    std::uint64_t continuation; ///< 0x80 to 0xBF
    std::uint64_t third;        ///< the last bytes of sequences of three
    std::uint64_t ends;         ///< the last bytes of all sequences
    bool isAscii;
    bool isWellFormed;
};

/// What a block leaves to the next one: bits for the bytes there, from its first on.
struct Carry {
    std::uint64_t continuation = 0; ///< bytes that must be continuations
    std::uint64_t second = 0;       ///< the last byte of a sequence of two
    std::uint64_t third = 0;        ///< the last byte of a sequence of three

    /// Bytes of the sequence that the next block finishes.
    std::size_t bytes() const noexcept { return (third & 1) != 0 ? 2 : continuation & 1; }
};

MORVANE_AVX512 inline Block readBlock(char const * source, std::size_t rest, Carry & carry) noexcept {
    Block block;
    block.present = lowBits(std::min(rest, blockBytes));
    block.bytes = _mm512_maskz_loadu_epi8(block.present, source);
    std::uint64_t const high = _mm512_movepi8_mask(block.bytes);
    block.isAscii = (high | carry.continuation) == 0;
    if (block.isAscii) {
        block.isWellFormed = true;
        return block;
    }
    // As signed numbers the continuations are the lowest.
    block.continuation = _mm512_cmplt_epi8_mask(block.bytes, _mm512_set1_epi8(-0x40));
    std::uint64_t const leadOfThree = _mm512_cmpge_epu8_mask(block.bytes, _mm512_set1_epi8(-0x20));
    std::uint64_t const bad = _mm512_cmpge_epu8_mask(block.bytes, _mm512_set1_epi8(-0x10));
    std::uint64_t const lead = high & ~block.continuation;
    std::uint64_t const leadOfTwo = lead & ~leadOfThree;
    block.third = leadOfThree << 2 | carry.third;
    block.ends = (~high & block.present) | leadOfTwo << 1 | carry.second | block.third;
    std::uint64_t const expected = lead << 1 | leadOfThree << 2 | carry.continuation;
    // Equal also beyond the last byte: a sequence that the text does not finish is not well formed.
    block.isWellFormed = expected == block.continuation && bad == 0;
    carry = {lead >> 63 | leadOfThree >> 62, leadOfTwo >> 63, leadOfThree >> 62};
    return block;
}

MORVANE_AVX512 inline void storeUnits(unsigned short int * target, __m512i value, std::size_t count) noexcept {
    _mm512_mask_storeu_epi16(target, static_cast<__mmask32>(lowBits(count)), value);
}

/// Widens the low and high bytes of up to 32 units and stores them. True when one is 0.
MORVANE_AVX512 inline bool join(__m256i low, __m256i high, std::size_t count, unsigned short int * target) noexcept {
    __m512i const units = _mm512_or_si512(_mm512_cvtepu8_epi16(low), _mm512_slli_epi16(_mm512_cvtepu8_epi16(high), 8));
    auto const present = static_cast<__mmask32>(lowBits(count));
    _mm512_mask_storeu_epi16(target, present, units);
    return _mm512_mask_testn_epi16_mask(present, units, units) != 0;
}

} // namespace

MORVANE_AVX512 void countRunAvx512(DataView source, Reading & reading) noexcept {
    Carry carry;
    std::size_t index = reading.index;
    std::size_t units = reading.units;
    std::size_t unfinished = 0;
    while (index < source.length) {
        std::size_t const rest = source.length - index;
        unfinished = carry.bytes();
        Block const block = readBlock(source.data + index, rest, carry);
        if (!block.isWellFormed) {
            break;
        }
        index += std::min(rest, blockBytes);
        units += block.isAscii ? std::min(rest, blockBytes) : static_cast<std::size_t>(_mm_popcnt_u64(block.ends));
        unfinished = carry.bytes();
    }
    reading.index = index - unfinished;
    reading.units = units;
}

MORVANE_AVX512 void decodeRunAvx512(DataView source, unsigned short int * target, Reading & reading) noexcept {
    constexpr std::size_t half = blockBytes / 2;
    Carry carry;
    std::size_t index = reading.index;
    std::size_t unfinished = 0;
    unsigned short int * units = target + reading.units;
    bool hasZero = false;
    while (index < source.length) {
        char const * const start = source.data + index;
        std::size_t const rest = source.length - index;
        unfinished = carry.bytes();
        Block const block = readBlock(start, rest, carry);
        if (!block.isWellFormed) {
            break;
        }
        std::size_t const bytes = std::min(rest, blockBytes);
        index += bytes;
        unfinished = carry.bytes();
        if (block.isAscii) {
            storeUnits(units, _mm512_cvtepu8_epi16(_mm512_castsi512_si256(block.bytes)), std::min(bytes, half));
            if (bytes > half) {
                storeUnits(units + half, _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(block.bytes, 1)), bytes - half);
            }
            units += bytes;
            continue;
        }
        // At the last byte of each sequence the two halves of its unit are put together from that byte and the two in
        // front of it; then the other bytes are dropped.
        __m512i const second = _mm512_maskz_loadu_epi8(block.continuation, start - 1);
        __m512i const first = _mm512_maskz_loadu_epi8(block.third, start - 2);
        __m512i const low = _mm512_or_si512(_mm512_and_si512(block.bytes, _mm512_set1_epi8(0x7F)),
                                            _mm512_slli_epi16(_mm512_and_si512(second, _mm512_set1_epi8(0x03)), 6));
        __m512i const high = _mm512_or_si512(_mm512_srli_epi16(_mm512_and_si512(second, _mm512_set1_epi8(0x3C)), 2),
                                             _mm512_slli_epi16(_mm512_and_si512(first, _mm512_set1_epi8(0x0F)), 4));
        __m512i const lows = _mm512_maskz_compress_epi8(block.ends, low);
        __m512i const highs = _mm512_maskz_compress_epi8(block.ends, high);
        auto const count = static_cast<std::size_t>(_mm_popcnt_u64(block.ends));
        hasZero |= join(_mm512_castsi512_si256(lows), _mm512_castsi512_si256(highs), std::min(count, half), units);
        if (count > half) {
            hasZero |= join(_mm512_extracti64x4_epi64(lows, 1), _mm512_extracti64x4_epi64(highs, 1), count - half,
                            units + half);
        }
        units += count;
    }
    reading.index = index - unfinished;
    reading.units = static_cast<std::size_t>(units - target);
    reading.hasZero |= hasZero;
}

MORVANE_AVX512 std::size_t countBytesAvx512(WideView source) noexcept {
    constexpr std::size_t step = 32;
    std::size_t bytes = source.length;
    for (std::size_t index = 0; index < source.length; index += step) {
        auto const present = static_cast<__mmask32>(lowBits(std::min(source.length - index, step)));
        __m512i const units = _mm512_maskz_loadu_epi16(present, source.data + index);
        __mmask32 const notAscii = _mm512_cmpgt_epu16_mask(units, _mm512_set1_epi16(0x7F));
        __mmask32 const isLong = _mm512_cmpgt_epu16_mask(units, _mm512_set1_epi16(0x7FF));
        bytes += static_cast<std::size_t>(_mm_popcnt_u32(notAscii)) + static_cast<std::size_t>(_mm_popcnt_u32(isLong));
    }
    return bytes;
}

MORVANE_AVX512 std::size_t encodeAvx512(WideView source, char * target) noexcept {
    constexpr std::size_t step = 32;
    char * end = target;
    for (std::size_t index = 0; index < source.length; index += step) {
        std::size_t const count = std::min(source.length - index, step);
        auto const present = static_cast<__mmask32>(lowBits(count));
        __m512i const units = _mm512_maskz_loadu_epi16(present, source.data + index);
        __mmask32 const notAscii = _mm512_cmpgt_epu16_mask(units, _mm512_set1_epi16(0x7F));
        if (notAscii == 0) {
            _mm256_mask_storeu_epi8(end, present, _mm512_cvtepi16_epi8(units));
            end += count;
            continue;
        }
        __m512i const low = _mm512_set1_epi16(0x3F);
        if (_mm512_cmpgt_epu16_mask(units, _mm512_set1_epi16(0x7FF)) == 0) {
            __m512i const pairs = _mm512_or_si512(
                _mm512_or_si512(_mm512_srli_epi16(units, 6), _mm512_slli_epi16(_mm512_and_si512(units, low), 8)),
                _mm512_set1_epi16(static_cast<short>(0x80C0)));
            __m512i const bytes = _mm512_mask_mov_epi16(units, notAscii, pairs);
            // The first byte of every unit, the second of those of two.
            std::uint64_t const kept = _pdep_u64(present, 0x5555555555555555) | _pdep_u64(notAscii, 0xAAAAAAAAAAAAAAAA);
            auto const size = static_cast<std::size_t>(_mm_popcnt_u64(kept));
            _mm512_mask_storeu_epi8(end, lowBits(size), _mm512_maskz_compress_epi8(kept, bytes));
            end += size;
            continue;
        }
        for (std::size_t half = 0; half < count; half += step / 2) {
            auto const halfPresent = static_cast<__mmask16>(present >> half);
            __m512i const value =
                _mm512_cvtepu16_epi32(half == 0 ? _mm512_castsi512_si256(units) : _mm512_extracti64x4_epi64(units, 1));
            __mmask16 const isHigh = _mm512_cmpgt_epu32_mask(value, _mm512_set1_epi32(0x7F));
            __mmask16 const isLong = _mm512_cmpgt_epu32_mask(value, _mm512_set1_epi32(0x7FF));
            // Lanes of the first, middle and last byte, of which the shorter forms keep the last ones.
            __m512i const first = _mm512_srli_epi32(value, 12);
            __m512i const middle = _mm512_slli_epi32(_mm512_and_si512(value, _mm512_set1_epi32(0xFC0)), 2);
            __m512i const last = _mm512_slli_epi32(_mm512_and_si512(value, _mm512_set1_epi32(0x3F)), 16);
            __m512i const marks =
                _mm512_mask_mov_epi32(_mm512_set1_epi32(0x80C000), isLong, _mm512_set1_epi32(0x8080E0));
            __m512i const long3 = _mm512_or_si512(_mm512_or_si512(first, middle), _mm512_or_si512(last, marks));
            __m512i const bytes = _mm512_mask_mov_epi32(_mm512_slli_epi32(value, 16), isHigh, long3);
            __m512i keep = _mm512_maskz_set1_epi32(halfPresent, 0xFF0000);
            keep = _mm512_mask_or_epi32(keep, isHigh, keep, _mm512_set1_epi32(0xFF00));
            keep = _mm512_mask_or_epi32(keep, isLong, keep, _mm512_set1_epi32(0xFF));
            __mmask64 const kept = _mm512_movepi8_mask(keep);
            auto const size = static_cast<std::size_t>(_mm_popcnt_u64(kept));
            _mm512_mask_storeu_epi8(end, lowBits(size), _mm512_maskz_compress_epi8(kept, bytes));
            end += size;
        }
    }
    return static_cast<std::size_t>(end - target);
}

} // namespace morvane::utf8

#endif
