#include <morvane/encodings/utf8_kernels.h>

#if MORVANE_HAS_KERNELS

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <immintrin.h>

#define MORVANE_SSSE3 __attribute__((target("ssse3")))

namespace morvane::utf8 {

namespace {

/// Bytes taken at once in reading. Every block begins with the first byte of a sequence.
constexpr std::size_t blockBytes = 64;
/// How far behind a block the loads of its last step may reach.
constexpr std::size_t blockMargin = 16;

/// The bytes 0 to 15 of a register, as a shuffle takes them: an index, or 0x80 for a zero byte.
struct alignas(16) Shuffle {
    std::array<unsigned char, 16> from;
};

constexpr unsigned char zeroByte = 0x80;

__m128i load(void const * source) noexcept {
    return _mm_loadu_si128(static_cast<__m128i const *>(source));
}

void store(void * target, __m128i value) noexcept {
    _mm_storeu_si128(static_cast<__m128i *>(target), value);
}

/// What the bytes of a block are, a bit a byte.
struct Marks {
    std::uint64_t high = 0;         ///< above 0x7F
    std::uint64_t continuation = 0; ///< 0x80 to 0xBF
    std::uint64_t leadOfThree = 0;  ///< 0xE0 and above
    bool hasBad = false;            ///< there is a byte from 0xF0 on
};

std::uint64_t signs(__m128i value) noexcept {
    return static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(value)));
}

/// Marks the block; `continuation` and what follows only where it is not all ASCII.
Marks mark(char const * block) noexcept {
    __m128i const bytes[4] = {load(block), load(block + 16), load(block + 32), load(block + 48)};
    Marks marks;
    if (signs(_mm_or_si128(_mm_or_si128(bytes[0], bytes[1]), _mm_or_si128(bytes[2], bytes[3]))) == 0) {
        return marks;
    }
    __m128i bad = _mm_setzero_si128();
    for (unsigned part = 0; part < 4; ++part) {
        // As signed numbers the continuations are the lowest; what is above 0x7F and above a bound keeps its sign bit.
        __m128i const value = bytes[part];
        unsigned const shift = part * 16;
        marks.high |= signs(value) << shift;
        marks.continuation |= signs(_mm_cmplt_epi8(value, _mm_set1_epi8(-0x40))) << shift;
        marks.leadOfThree |= signs(_mm_and_si128(value, _mm_cmpgt_epi8(value, _mm_set1_epi8(-0x21)))) << shift;
        bad = _mm_or_si128(bad, _mm_and_si128(value, _mm_cmpgt_epi8(value, _mm_set1_epi8(-0x11))));
    }
    marks.hasBad = signs(bad) != 0;
    return marks;
}

/// The bytes of the block's whole sequences; 0 when a sequence in it is not well formed.
std::size_t wholeBytes(Marks const & marks) noexcept {
    std::uint64_t const lead = marks.high & ~marks.continuation;
    if (marks.hasBad || (lead << 1 | marks.leadOfThree << 2) != marks.continuation) {
        return 0;
    }
    return blockBytes - (marks.leadOfThree >> 62 & 1) * 2 - (lead >> 63);
}

/// The bits below `bit`, which is 1 to 64.
std::uint64_t bitsBelow(std::size_t bit) noexcept {
    return ~std::uint64_t{0} >> (64 - bit);
}

/// One step of decoding: which of the next 12 bytes become which units.
struct Layout {
    unsigned char shuffle; ///< below `shortShuffles`: six sequences of one or two bytes; else four of up to three
    unsigned char bytes;   ///< how many bytes these are
};

constexpr std::size_t layoutBits = 12;
constexpr unsigned shortUnits = 6;
constexpr unsigned longUnits = 4;
constexpr std::size_t shortShuffles = 64; // 2 to the 6
constexpr std::size_t longShuffles = 81;  // 3 to the 4

/// Layouts by the bits of those bytes that a byte of the same sequence follows.
consteval std::array<Layout, 1 << layoutBits> makeLayouts() {
    std::array<Layout, 1 << layoutBits> layouts{};
    for (unsigned pattern = 0; pattern < layouts.size(); ++pattern) {
        unsigned lengths[shortUnits] = {};
        unsigned position = 0;
        bool isShort = true;
        for (unsigned sequence = 0; sequence < shortUnits; ++sequence) {
            unsigned bytes = 1;
            while (bytes < 3 && (pattern >> (position + bytes - 1) & 1U) != 0) {
                ++bytes;
            }
            lengths[sequence] = bytes;
            position += bytes;
            isShort = isShort && bytes < 3;
        }
        unsigned index = 0;
        unsigned taken = 0;
        for (unsigned sequence = 0; sequence < (isShort ? shortUnits : longUnits); ++sequence) {
            index = index * (isShort ? 2 : 3) + lengths[sequence] - 1;
            taken += lengths[sequence];
        }
        layouts[pattern].shuffle = static_cast<unsigned char>(index + (isShort ? 0 : shortShuffles));
        layouts[pattern].bytes = static_cast<unsigned char>(taken);
    }
    return layouts;
}

/// Lays sequences out: two bytes a unit for the short ones, four for the others, the last byte of a sequence lowest.
consteval std::array<Shuffle, shortShuffles + longShuffles> makeDecodingShuffles() {
    std::array<Shuffle, shortShuffles + longShuffles> shuffles{};
    for (std::size_t entry = 0; entry < shuffles.size(); ++entry) {
        bool const isShort = entry < shortShuffles;
        unsigned const units = isShort ? shortUnits : longUnits;
        unsigned const lane = isShort ? 2 : 4;
        unsigned const base = isShort ? 2 : 3;
        std::size_t rest = isShort ? entry : entry - shortShuffles;
        unsigned lengths[shortUnits] = {};
        for (unsigned sequence = units; sequence-- > 0;) {
            lengths[sequence] = static_cast<unsigned>(rest % base) + 1;
            rest /= base;
        }
        Shuffle & shuffle = shuffles[entry];
        shuffle.from.fill(zeroByte);
        unsigned position = 0;
        for (unsigned sequence = 0; sequence < units; ++sequence) {
            position += lengths[sequence];
            for (unsigned byte = 0; byte < lengths[sequence]; ++byte) {
                shuffle.from[sequence * lane + byte] = static_cast<unsigned char>(position - 1 - byte);
            }
        }
        // Lanes to spare repeat the last unit, so that a unit of value 0 is always one of the text.
        for (unsigned spare = units * lane; spare < 16; ++spare) {
            shuffle.from[spare] = shuffle.from[spare - lane];
        }
    }
    return shuffles;
}

constexpr auto layouts = makeLayouts();
constexpr auto decodingShuffles = makeDecodingShuffles();

/// Stores the first `count` of eight units.
void storeUnits(unsigned short int * target, __m128i value, std::size_t count) noexcept {
    unsigned short int units[8];
    store(units, value);
    std::memcpy(target, units, count * sizeof *target);
}

/// Decodes the `units` units of a well-formed block, which has `blockMargin` readable bytes behind it. True when one is
/// 0.
MORVANE_SSSE3 bool decodeBlock(char const * block, std::uint64_t continuation, std::size_t units,
                               unsigned short int * target) noexcept {
    __m128i const narrow = _mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, 12, 13, 12, 13, 12, 13, 12, 13);
    __m128i zeros = _mm_setzero_si128();
    std::uint64_t followed = continuation >> 1;
    std::size_t done = 0;
    for (;;) {
        Layout const layout = layouts[followed & ((1U << layoutBits) - 1)];
        __m128i value = _mm_shuffle_epi8(load(block), load(&decodingShuffles[layout.shuffle]));
        std::size_t taken;
        if (layout.shuffle < shortShuffles) {
            value = _mm_or_si128(_mm_and_si128(value, _mm_set1_epi16(0x7F)),
                                 _mm_srli_epi16(_mm_and_si128(value, _mm_set1_epi16(0x1F00)), 2));
            taken = shortUnits;
        } else {
            value = _mm_or_si128(_mm_or_si128(_mm_and_si128(value, _mm_set1_epi32(0x7F)),
                                              _mm_srli_epi32(_mm_and_si128(value, _mm_set1_epi32(0x3F00)), 2)),
                                 _mm_srli_epi32(_mm_and_si128(value, _mm_set1_epi32(0x0F0000)), 4));
            value = _mm_shuffle_epi8(value, narrow);
            taken = longUnits;
        }
        __m128i const isZero = _mm_cmpeq_epi16(value, _mm_setzero_si128());
        if (done + 8 > units) {
            // The last steps of the block keep to its units, for what follows it may be a fault.
            std::size_t const count = std::min(taken, units - done);
            storeUnits(target + done, value, count);
            zeros =
                _mm_or_si128(zeros, _mm_and_si128(isZero, _mm_cmplt_epi16(_mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7),
                                                                          _mm_set1_epi16(static_cast<short>(count)))));
            if (done + taken >= units) {
                return signs(zeros) != 0;
            }
        } else {
            store(target + done, value);
            zeros = _mm_or_si128(zeros, isZero);
        }
        done += taken;
        block += layout.bytes;
        followed >>= layout.bytes;
    }
}

void widen(char const * block, unsigned short int * target) noexcept {
    for (unsigned part = 0; part < 4; ++part) {
        __m128i const bytes = load(block + part * 16);
        store(target + part * 16, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
        store(target + part * 16 + 8, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
    }
}

} // namespace

void countRunSse2(DataView source, Reading & reading) noexcept {
    while (reading.index < source.length) {
        char const * block = source.data + reading.index;
        std::size_t const rest = source.length - reading.index;
        char copy[blockBytes];
        if (rest < blockBytes) {
            std::memset(copy, 0, sizeof copy);
            std::memcpy(copy, block, rest);
            block = copy;
        }
        Marks const marks = mark(block);
        if (marks.high == 0) {
            std::size_t const bytes = std::min(rest, blockBytes);
            reading.index += bytes;
            reading.units += bytes;
            continue;
        }
        std::size_t const bytes = std::min(rest, wholeBytes(marks));
        if (bytes == 0) {
            return;
        }
        reading.index += bytes;
        reading.units += bytes - static_cast<std::size_t>(std::popcount(marks.continuation & bitsBelow(bytes)));
    }
}

MORVANE_SSSE3 void decodeRunSsse3(DataView source, unsigned short int * target, Reading & reading) noexcept {
    while (reading.index < source.length) {
        char const * block = source.data + reading.index;
        std::size_t const rest = source.length - reading.index;
        char copy[blockBytes + blockMargin];
        if (rest < sizeof copy) {
            std::memset(copy, 0, sizeof copy);
            std::memcpy(copy, block, rest);
            block = copy;
        }
        Marks const marks = mark(block);
        if (marks.high == 0) {
            std::size_t const bytes = std::min(rest, blockBytes);
            if (bytes == blockBytes) {
                widen(block, target + reading.units);
            } else {
                unsigned short int units[blockBytes];
                widen(block, units);
                std::memcpy(target + reading.units, units, bytes * sizeof *target);
            }
            reading.index += bytes;
            reading.units += bytes;
            continue;
        }
        std::size_t const bytes = std::min(rest, wholeBytes(marks));
        if (bytes == 0) {
            return;
        }
        std::size_t const units =
            bytes - static_cast<std::size_t>(std::popcount(marks.continuation & bitsBelow(bytes)));
        reading.hasZero |= decodeBlock(block, marks.continuation, units, target + reading.units);
        reading.index += bytes;
        reading.units += units;
    }
}

std::size_t countBytesSse2(WideView source) noexcept {
    // A unit takes three bytes, less one for each of two bounds that it does not pass.
    constexpr std::size_t roundUnits = 8 * 0x4000;
    __m128i const zero = _mm_setzero_si128();
    std::size_t bytes = source.length * 3;
    std::size_t index = 0;
    while (source.length - index >= 8) {
        std::size_t const stop = index + std::min(source.length - index, roundUnits) / 8 * 8;
        __m128i saved = zero; // at most -2 a step in each lane
        for (; index < stop; index += 8) {
            __m128i const units = load(source.data + index);
            saved = _mm_add_epi16(saved, _mm_cmpeq_epi16(_mm_subs_epu16(units, _mm_set1_epi16(0x7F)), zero));
            saved = _mm_add_epi16(saved, _mm_cmpeq_epi16(_mm_subs_epu16(units, _mm_set1_epi16(0x7FF)), zero));
        }
        std::int32_t sums[4];
        store(sums, _mm_madd_epi16(saved, _mm_set1_epi16(-1)));
        for (std::int32_t const sum : sums) {
            bytes -= static_cast<std::size_t>(sum);
        }
    }
    for (; index < source.length; ++index) {
        bytes -= (source[index] <= 0x7F ? 1U : 0U) + (source[index] <= 0x7FF ? 1U : 0U);
    }
    return bytes;
}

namespace {

/// For eight units below 0x800, two bytes each, by the bits of the ASCII ones: drops the second byte of these.
consteval std::array<Shuffle, 256> makeShortEncodingShuffles() {
    std::array<Shuffle, 256> shuffles{};
    for (unsigned ascii = 0; ascii < shuffles.size(); ++ascii) {
        shuffles[ascii].from.fill(zeroByte);
        unsigned bytes = 0;
        for (unsigned unit = 0; unit < 8; ++unit) {
            shuffles[ascii].from[bytes++] = static_cast<unsigned char>(unit * 2);
            if ((ascii >> unit & 1U) == 0) {
                shuffles[ascii].from[bytes++] = static_cast<unsigned char>(unit * 2 + 1);
            }
        }
    }
    return shuffles;
}

/// For four units, each as the three bytes of the longest form in four: by the bits of the ASCII ones, and above them
/// those of the ones of three bytes.
consteval std::array<Shuffle, 256> makeLongEncodingShuffles() {
    std::array<Shuffle, 256> shuffles{};
    for (unsigned kinds = 0; kinds < shuffles.size(); ++kinds) {
        shuffles[kinds].from.fill(zeroByte);
        unsigned bytes = 0;
        for (unsigned unit = 0; unit < 4; ++unit) {
            bool const isAscii = (kinds >> unit & 1U) != 0;
            bool const isLong = (kinds >> (unit + 4) & 1U) != 0;
            for (unsigned byte = isAscii ? 2 : isLong ? 0 : 1; byte < 3; ++byte) {
                shuffles[kinds].from[bytes++] = static_cast<unsigned char>(unit * 4 + byte);
            }
        }
    }
    return shuffles;
}

constexpr auto shortEncodingShuffles = makeShortEncodingShuffles();
constexpr auto longEncodingShuffles = makeLongEncodingShuffles();

/// Lane by lane, `whereSet` where the mask is set and `elsewhere` where it isn't.
__m128i choose(__m128i mask, __m128i whereSet, __m128i elsewhere) noexcept {
    return _mm_or_si128(_mm_and_si128(mask, whereSet), _mm_andnot_si128(mask, elsewhere));
}

/// The bytes of a long layout.
std::size_t longBytes(unsigned kinds) noexcept {
    return static_cast<std::size_t>(8 - std::popcount(kinds & 0xFU) + std::popcount(kinds >> 4));
}

} // namespace

MORVANE_SSSE3 std::size_t encodeSsse3(WideView source, char * target) noexcept {
    __m128i const zero = _mm_setzero_si128();
    char * end = target;
    std::size_t index = 0;
    // Every unit gives a byte at least: what a store writes behind its bytes is overwritten while as many units follow.
    while (source.length - index >= 8) {
        std::size_t const following = source.length - index - 8;
        __m128i const value = load(source.data + index);
        __m128i const isAscii = _mm_cmpeq_epi16(_mm_subs_epu16(value, _mm_set1_epi16(0x7F)), zero);
        unsigned const ascii = static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(isAscii, zero)));
        if (ascii == 0xFF) {
            _mm_storel_epi64(reinterpret_cast<__m128i *>(end), _mm_packus_epi16(value, zero));
            end += 8;
            index += 8;
            continue;
        }
        __m128i const isShort = _mm_cmpeq_epi16(_mm_subs_epu16(value, _mm_set1_epi16(0x7FF)), zero);
        unsigned const notLong = static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(isShort, zero)));
        if (notLong == 0xFF) {
            auto const bytes = static_cast<std::size_t>(16 - std::popcount(ascii));
            if (bytes + following < 16) {
                break;
            }
            __m128i const first = _mm_srli_epi16(value, 6);
            __m128i const second = _mm_and_si128(_mm_slli_epi16(value, 8), _mm_set1_epi16(0x3F00));
            __m128i const pair = _mm_or_si128(_mm_or_si128(first, second), _mm_set1_epi16(static_cast<short>(0x80C0)));
            store(end, _mm_shuffle_epi8(choose(isAscii, value, pair), load(&shortEncodingShuffles[ascii])));
            end += bytes;
            index += 8;
            continue;
        }
        unsigned const isLong = notLong ^ 0xFFU;
        unsigned const lowerKinds = (ascii & 0xFU) | (isLong & 0xFU) << 4;
        unsigned const upperKinds = ascii >> 4 | (isLong & 0xF0U);
        std::size_t const lowerBytes = longBytes(lowerKinds);
        std::size_t const upperBytes = longBytes(upperKinds);
        if (upperBytes + following < 16) {
            break;
        }
        __m128i const low = _mm_set1_epi16(0x3F);
        __m128i const last = choose(isAscii, value, _mm_or_si128(_mm_and_si128(value, low), _mm_set1_epi16(0x80)));
        __m128i const middle = _mm_or_si128(_mm_and_si128(_mm_srli_epi16(value, 6), low),
                                            choose(isShort, _mm_set1_epi16(0xC0), _mm_set1_epi16(0x80)));
        __m128i const first = _mm_or_si128(_mm_srli_epi16(value, 12), _mm_set1_epi16(0xE0));
        __m128i const head = _mm_or_si128(first, _mm_slli_epi16(middle, 8));
        store(end, _mm_shuffle_epi8(_mm_unpacklo_epi16(head, last), load(&longEncodingShuffles[lowerKinds])));
        end += lowerBytes;
        store(end, _mm_shuffle_epi8(_mm_unpackhi_epi16(head, last), load(&longEncodingShuffles[upperKinds])));
        end += upperBytes;
        index += 8;
    }
    return static_cast<std::size_t>(end - target) + encode(Kernel::plain, source.from(index), end);
}

} // namespace morvane::utf8

#endif
