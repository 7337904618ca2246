#include <morvane/encodings/utf8_kernels.h>

#if MORVANE_HAS_KERNELS

#include <algorithm>
#include <bit>
#include <cstdint>
#include <immintrin.h>

#if defined(__GNUC__) && !defined(__clang__)
// The header of g++ 12 takes the rest of a register from a value that it sets nowhere.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#define MORVANE_AVX512 __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,bmi,bmi2,popcnt")))

namespace morvane::utf8 {

namespace {

constexpr std::size_t blockBytes = 64;
constexpr std::size_t pageBytes = 4096; // no page is smaller

/// The lowest `count` bits; `count` is at most 64.
MORVANE_AVX512 inline std::uint64_t lowBits(std::size_t count) noexcept {
    return _bzhi_u64(~std::uint64_t{0}, static_cast<unsigned>(count));
}

MORVANE_AVX512 inline std::size_t countBits(std::uint64_t bits) noexcept {
    return static_cast<std::size_t>(_mm_popcnt_u64(bits));
}

/// Up to 64 bytes, a bit a byte. A sequence belongs to the block that its last byte stands in.
struct Block {
    __m512i bytes;
    std::uint64_t continuation; ///< 0x80 to 0xBF
    std::uint64_t third;        ///< the last bytes of sequences of three
    std::uint64_t ends;         ///< the last bytes of all sequences
    bool isAscii;
    bool isWellFormed; ///< as far as it goes: what the last bytes leave unfinished is the next block's
};

/// What a block leaves to the next one: bits for the bytes there, from its first on.
struct Carry {
    std::uint64_t continuation = 0; ///< bytes that must be continuations
    std::uint64_t second = 0;       ///< the last byte of a sequence of two
    std::uint64_t third = 0;        ///< the last byte of a sequence of three
};

MORVANE_AVX512 inline Block readBlock(char const * source, std::size_t count, Carry & carry) noexcept {
    Block block;
    std::uint64_t const present = lowBits(count);
    block.bytes = _mm512_maskz_loadu_epi8(present, source);
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
    std::uint64_t const expected = lead << 1 | leadOfThree << 2 | carry.continuation;
    block.third = leadOfThree << 2 | carry.third;
    block.ends = (~high | leadOfTwo << 1 | carry.second | block.third) & present;
    block.isWellFormed = (((expected ^ block.continuation) & present) | bad) == 0;
    carry = {lead >> 63 | leadOfThree >> 62, leadOfTwo >> 63, leadOfThree >> 62};
    return block;
}

/// The bytes in front of `end`, behind `start`, that begin a sequence which goes on there.
std::size_t unfinishedBytes(char const * start, char const * end) noexcept {
    auto const isAbove = [=](std::ptrdiff_t back, unsigned bound) {
        return end - start >= back && static_cast<unsigned char>(end[-back]) >= bound;
    };
    return isAbove(1, 0xC0) ? 1 : isAbove(2, 0xE0) ? 2 : 0;
}

MORVANE_AVX512 inline bool isAscii(char const * bytes) noexcept {
    return _mm512_movepi8_mask(_mm512_loadu_si512(bytes)) == 0;
}

/// The same for four blocks, of which no byte is zero either.
MORVANE_AVX512 inline bool areAscii(char const * bytes) noexcept {
    __m512i const front = _mm512_min_epi8(_mm512_loadu_si512(bytes), _mm512_loadu_si512(bytes + blockBytes));
    __m512i const back =
        _mm512_min_epi8(_mm512_loadu_si512(bytes + 2 * blockBytes), _mm512_loadu_si512(bytes + 3 * blockBytes));
    return _mm512_cmple_epi8_mask(_mm512_min_epi8(front, back), _mm512_setzero_si512()) == 0;
}

MORVANE_AVX512 inline __m512i widened(__m256i bytes) noexcept {
    return _mm512_cvtepu8_epi16(bytes);
}

MORVANE_AVX512 inline void widenBlock(char const * source, unsigned short int * target) noexcept {
    auto const * const halves = reinterpret_cast<__m256i const *>(source);
    _mm512_storeu_si512(target, widened(_mm256_loadu_si256(halves)));
    _mm512_storeu_si512(target + blockBytes / 2, widened(_mm256_loadu_si256(halves + 1)));
}

MORVANE_AVX512 inline void storeUnits(unsigned short int * target, __m512i value, std::size_t count) noexcept {
    _mm512_mask_storeu_epi16(target, static_cast<__mmask32>(lowBits(count)), value);
}

/// The ASCII bytes in front of the first other one or of the zero, and their widening where there is a target.
template <bool hasTarget>
MORVANE_AVX512 inline std::size_t passAscii(char const * source, unsigned short int * target) noexcept {
    char const * at = source;
    // Where the next page begins, the rest is left to others.
    while (reinterpret_cast<std::uintptr_t>(at) % pageBytes <= pageBytes - blockBytes) {
        __m512i const bytes = _mm512_loadu_si512(at);
        // As signed numbers the zero and all that is not ASCII are below 1.
        std::uint64_t const others = _mm512_cmple_epi8_mask(bytes, _mm512_setzero_si512());
        if (others != 0) {
            auto const count = static_cast<std::size_t>(std::countr_zero(others));
            if constexpr (hasTarget) {
                std::size_t const firstCount = std::min(count, blockBytes / 2);
                storeUnits(target, widened(_mm512_castsi512_si256(bytes)), firstCount);
                storeUnits(target + firstCount, widened(_mm512_extracti64x4_epi64(bytes, 1)), count - firstCount);
            }
            at += count;
            break;
        }
        // From the next block on the loads are aligned; but a text may end here.
        bool const isWhole = at[blockBytes] == 0;
        std::size_t const passed =
            isWhole ? blockBytes : blockBytes - reinterpret_cast<std::uintptr_t>(at) % blockBytes;
        if constexpr (hasTarget) {
            widenBlock(at, target);
            target += passed;
        }
        at += passed;
        if (isWhole) {
            break;
        }
        if constexpr (!hasTarget) {
            while (reinterpret_cast<std::uintptr_t>(at) % (4 * blockBytes) == 0 && areAscii(at)) {
                at += 4 * blockBytes;
            }
        }
    }
    return static_cast<std::size_t>(at - source);
}

/// The indices that put the bytes `first` to `first` + 31 of two registers side by side, as halves of units.
MORVANE_AVX512 inline __m512i interleaving(short first) noexcept {
    __m512i const ascending = _mm512_set_epi16(31, 30, 29, 28, 27, 26, 25, 24, 23, 22, 21, 20, 19, 18, 17, 16, 15, 14,
                                               13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
    __m512i const low = _mm512_add_epi16(ascending, _mm512_set1_epi16(first));
    return _mm512_or_si512(low, _mm512_slli_epi16(_mm512_add_epi16(low, _mm512_set1_epi16(64)), 8));
}

} // namespace

MORVANE_AVX512 std::size_t countAsciiAvx512(char const * source) noexcept {
    return passAscii<false>(source, nullptr);
}

MORVANE_AVX512 std::size_t widenAsciiAvx512(char const * source, unsigned short int * target) noexcept {
    return passAscii<true>(source, target);
}

MORVANE_AVX512 void countRunAvx512(DataView source, Reading & reading) noexcept {
    char const * const start = source.data + reading.index;
    char const * at = start;
    Carry carry;
    std::size_t units = reading.units;
    while (at < source.end()) {
        std::size_t const count = std::min(static_cast<std::size_t>(source.end() - at), blockBytes);
        Block const block = readBlock(at, count, carry);
        if (!block.isWellFormed) {
            break;
        }
        at += count;
        if (!block.isAscii) {
            units += countBits(block.ends);
            continue;
        }
        units += count;
        for (; source.end() - at >= std::ptrdiff_t{4 * blockBytes} && areAscii(at); at += 4 * blockBytes) {
            units += 4 * blockBytes;
        }
    }
    reading.index = static_cast<std::size_t>(at - source.data) - unfinishedBytes(start, at);
    reading.units = units;
}

MORVANE_AVX512 void decodeRunAvx512(DataView source, unsigned short int * target, Reading & reading) noexcept {
    constexpr std::size_t half = blockBytes / 2;
    __m512i const firstHalf = interleaving(0);
    __m512i const secondHalf = interleaving(half);
    char const * const start = source.data + reading.index;
    char const * at = start;
    Carry carry;
    unsigned short int * units = target + reading.units;
    __mmask64 zeros = 0;
    while (at < source.end()) {
        std::size_t const count = std::min(static_cast<std::size_t>(source.end() - at), blockBytes);
        Block const block = readBlock(at, count, carry);
        if (!block.isWellFormed) {
            break;
        }
        if (block.isAscii) {
            storeUnits(units, widened(_mm512_castsi512_si256(block.bytes)), std::min(count, half));
            storeUnits(units + half, widened(_mm512_extracti64x4_epi64(block.bytes, 1)), count - std::min(count, half));
            at += count;
            units += count;
            for (; source.end() - at >= std::ptrdiff_t{blockBytes} && isAscii(at); at += blockBytes) {
                widenBlock(at, units);
                units += blockBytes;
            }
            continue;
        }
        // At the last byte of each sequence the two halves of its unit are put together from that byte and the two in
        // front of it; then the other places are dropped.
        __m512i const second = _mm512_maskz_loadu_epi8(block.continuation, at - 1);
        __m512i const first = _mm512_maskz_loadu_epi8(block.third, at - 2);
        __m512i const low = _mm512_or_si512(_mm512_and_si512(block.bytes, _mm512_set1_epi8(0x7F)),
                                            _mm512_slli_epi16(_mm512_and_si512(second, _mm512_set1_epi8(0x03)), 6));
        __m512i const high = _mm512_or_si512(_mm512_srli_epi16(_mm512_and_si512(second, _mm512_set1_epi8(0x3C)), 2),
                                             _mm512_slli_epi16(_mm512_and_si512(first, _mm512_set1_epi8(0x0F)), 4));
        __m512i const any = _mm512_or_si512(low, high);
        zeros |= _mm512_mask_testn_epi8_mask(block.ends, any, any);
        auto const firstEnds = static_cast<__mmask32>(block.ends);
        auto const secondEnds = static_cast<__mmask32>(block.ends >> half);
        __m512i const firstUnits = _mm512_permutex2var_epi8(low, firstHalf, high);
        __m512i const secondUnits = _mm512_permutex2var_epi8(low, secondHalf, high);
        std::size_t const firstCount = countBits(firstEnds);
        std::size_t const secondCount = countBits(secondEnds);
        storeUnits(units, _mm512_maskz_compress_epi16(firstEnds, firstUnits), firstCount);
        units += firstCount;
        storeUnits(units, _mm512_maskz_compress_epi16(secondEnds, secondUnits), secondCount);
        units += secondCount;
        at += count;
    }
    reading.index = static_cast<std::size_t>(at - source.data) - unfinishedBytes(start, at);
    reading.units = static_cast<std::size_t>(units - target);
    reading.hasZero |= zeros != 0;
}

namespace {

constexpr std::size_t stepUnits = 32;

/// 32 units, of which those from 0x01 to 0x7F come below 0x7F.
MORVANE_AVX512 inline __m512i lowered(unsigned short int const * units) noexcept {
    return _mm512_sub_epi16(_mm512_loadu_si512(units), _mm512_set1_epi16(1));
}

/// Those units that are zero or not ASCII.
MORVANE_AVX512 inline __mmask32 othersIn(__m512i units) noexcept {
    return _mm512_cmpge_epu16_mask(units, _mm512_set1_epi16(0x7F));
}

/// True when 64 units are all ASCII and none of them is zero.
MORVANE_AVX512 inline bool areAscii(unsigned short int const * units) noexcept {
    return othersIn(_mm512_max_epu16(lowered(units), lowered(units + stepUnits))) == 0;
}

MORVANE_AVX512 inline void narrowBlock(unsigned short int const * source, char * target) noexcept {
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(target), _mm512_cvtepi16_epi8(_mm512_loadu_si512(source)));
}

/// 64 units as bytes, their groups of eight out of order: ASCII is what it was, zero and units of 0x8000 and above
/// become 0, and the others 0x80 or above.
MORVANE_AVX512 inline __m512i packed(unsigned short int const * units) noexcept {
    return _mm512_packus_epi16(_mm512_loadu_si512(units), _mm512_loadu_si512(units + stepUnits));
}

/// True when all that was packed is ASCII and none of it is zero.
MORVANE_AVX512 inline bool werePlain(__m512i first, __m512i second) noexcept {
    return _mm512_cmple_epi8_mask(_mm512_min_epi8(first, second), _mm512_setzero_si512()) == 0;
}

MORVANE_AVX512 inline void storeOrdered(char * target, __m512i bytes) noexcept {
    _mm512_storeu_si512(target, _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), bytes));
}

/// The ASCII units in front of the first other one or of the zero, and their narrowing where there is a target.
template <bool hasTarget>
MORVANE_AVX512 inline std::size_t passAscii(unsigned short int const * source, char * target) noexcept {
    unsigned short int const * at = source;
    while (reinterpret_cast<std::uintptr_t>(at) % pageBytes <= pageBytes - blockBytes) {
        if (__mmask32 const others = othersIn(lowered(at))) {
            auto const count = static_cast<unsigned>(std::countr_zero(others));
            if constexpr (hasTarget) {
                _mm256_mask_storeu_epi8(target, static_cast<__mmask32>(lowBits(count)),
                                        _mm512_cvtepi16_epi8(_mm512_loadu_si512(at)));
            }
            at += count;
            break;
        }
        // From the next block on the loads are aligned.
        std::size_t const passed = stepUnits - reinterpret_cast<std::uintptr_t>(at) % blockBytes / sizeof *at;
        if constexpr (hasTarget) {
            narrowBlock(at, target);
            target += passed;
        }
        at += passed;
        while (reinterpret_cast<std::uintptr_t>(at) % (4 * blockBytes) == 0) {
            __m512i const first = packed(at);
            __m512i const second = packed(at + 2 * stepUnits);
            if (!werePlain(first, second)) {
                break;
            }
            if constexpr (hasTarget) {
                storeOrdered(target, first);
                storeOrdered(target + 2 * stepUnits, second);
                target += 4 * stepUnits;
            }
            at += 4 * stepUnits;
        }
    }
    return static_cast<std::size_t>(at - source);
}

} // namespace

MORVANE_AVX512 std::size_t countAsciiAvx512(unsigned short int const * source) noexcept {
    return passAscii<false>(source, nullptr);
}

MORVANE_AVX512 std::size_t narrowAsciiAvx512(unsigned short int const * source, char * target) noexcept {
    return passAscii<true>(source, target);
}

MORVANE_AVX512 std::size_t countBytesAvx512(WideView source) noexcept {
    std::size_t bytes = source.length;
    for (std::size_t index = 0; index < source.length; index += stepUnits) {
        while (source.length - index >= 2 * stepUnits && areAscii(source.data + index)) {
            index += 2 * stepUnits;
        }
        auto const present = static_cast<__mmask32>(lowBits(std::min(source.length - index, stepUnits)));
        __m512i const units = _mm512_maskz_loadu_epi16(present, source.data + index);
        bytes += countBits(_mm512_cmpgt_epu16_mask(units, _mm512_set1_epi16(0x7F)));
        bytes += countBits(_mm512_cmpgt_epu16_mask(units, _mm512_set1_epi16(0x7FF)));
    }
    return bytes;
}

namespace {

/// Stores the first `size` bytes; others may be written behind them where there is room.
MORVANE_AVX512 inline void storeBytes(char * target, __m512i bytes, std::size_t size, bool isRoomy) noexcept {
    if (isRoomy) {
        _mm512_storeu_si512(target, bytes);
    } else {
        _mm512_mask_storeu_epi8(target, lowBits(size), bytes);
    }
}

/// Encodes the units that are present, all of them below 0x800, and gives their bytes.
MORVANE_AVX512 inline std::size_t encodeShort(__m512i units, __mmask32 present, __mmask32 notAscii, char * target,
                                              bool isRoomy) noexcept {
    __m512i const low = _mm512_and_si512(units, _mm512_set1_epi16(0x3F));
    __m512i const pairs = _mm512_or_si512(_mm512_or_si512(_mm512_srli_epi16(units, 6), _mm512_slli_epi16(low, 8)),
                                          _mm512_set1_epi16(static_cast<short>(0x80C0)));
    __m512i const bytes = _mm512_mask_mov_epi16(units, notAscii, pairs);
    // The first byte of every unit, the second of those of two.
    std::uint64_t const kept = _pdep_u64(present, 0x5555555555555555) | _pdep_u64(notAscii, 0xAAAAAAAAAAAAAAAA);
    std::size_t const size = countBits(kept);
    storeBytes(target, _mm512_maskz_compress_epi8(kept, bytes), size, isRoomy);
    return size;
}

} // namespace

MORVANE_AVX512 std::size_t encodeAvx512(WideView source, char * target) noexcept {
    char * end = target;
    for (std::size_t index = 0; index < source.length; index += stepUnits) {
        std::size_t const count = std::min(source.length - index, stepUnits);
        auto const present = static_cast<__mmask32>(lowBits(count));
        // As many bytes as there are units behind these come behind theirs.
        bool const isRoomy = source.length - index >= 3 * stepUnits;
        __m512i const units = _mm512_maskz_loadu_epi16(present, source.data + index);
        __mmask32 const notAscii = _mm512_cmpgt_epu16_mask(units, _mm512_set1_epi16(0x7F));
        if (notAscii == 0) {
            _mm256_mask_storeu_epi8(end, present, _mm512_cvtepi16_epi8(units));
            end += count;
            for (; source.length - index >= 3 * stepUnits && areAscii(source.data + index + stepUnits);
                 index += 2 * stepUnits) {
                auto const * const next = source.data + index + stepUnits;
                narrowBlock(next, end);
                narrowBlock(next + stepUnits, end + stepUnits);
                end += 2 * stepUnits;
            }
            continue;
        }
        __mmask32 const areLong = _mm512_cmpgt_epu16_mask(units, _mm512_set1_epi16(0x7FF));
        if (areLong == 0) {
            end += encodeShort(units, present, notAscii, end, isRoomy);
            continue;
        }
        for (std::size_t half = 0; half < count; half += stepUnits / 2) {
            auto const halfPresent = static_cast<__mmask16>(present >> half);
            if (static_cast<__mmask16>(areLong >> half) == 0) {
                __m512i const part = half == 0 ? units : _mm512_zextsi256_si512(_mm512_extracti64x4_epi64(units, 1));
                end += encodeShort(part, halfPresent, static_cast<__mmask16>(notAscii >> half), end, isRoomy);
                continue;
            }
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
            std::size_t const size = countBits(kept);
            storeBytes(end, _mm512_maskz_compress_epi8(kept, bytes), size, isRoomy);
            end += size;
        }
    }
    return static_cast<std::size_t>(end - target);
}

} // namespace morvane::utf8

#endif
