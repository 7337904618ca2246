// Sixteen bytes of text in one register.
#pragma once

#include <bit>
#include <cstddef>

#if defined(__SSE2__)
#define MORVANE_HAS_UNIT_BLOCK 1
#include <emmintrin.h>
#else
#define MORVANE_HAS_UNIT_BLOCK 0
#endif

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define MORVANE_IS_SANITIZED 1
#endif
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define MORVANE_IS_SANITIZED 1
#endif

// Whether a read may go past the end of a text whose length is not known, as far as its page goes. The hardware allows
// it; a sanitizer does not.
#if MORVANE_HAS_UNIT_BLOCK && !defined(MORVANE_IS_SANITIZED)
#define MORVANE_READS_TO_PAGE_END 1
#else
#define MORVANE_READS_TO_PAGE_END 0
#endif

#if MORVANE_HAS_UNIT_BLOCK

namespace morvane {

/// The units in 16 bytes. A mask has two bits for a 16-bit unit, one for a byte, the first unit lowest.
template <typename Unit>
class UnitBlock {
public:
    static constexpr std::size_t count = 16 / sizeof(Unit);

    static UnitBlock load(Unit const * units) noexcept {
        return UnitBlock(_mm_loadu_si128(reinterpret_cast<__m128i const *>(units)));
    }
    static UnitBlock filled(Unit unit) noexcept {
        if constexpr (sizeof(Unit) == 1) {
            return UnitBlock(_mm_set1_epi8(static_cast<char>(unit)));
        } else {
            return UnitBlock(_mm_set1_epi16(static_cast<short>(unit)));
        }
    }
    void store(Unit * units) const noexcept { _mm_storeu_si128(reinterpret_cast<__m128i *>(units), bits); }

    /// All bits set in the units that are equal.
    UnitBlock equal(UnitBlock other) const noexcept {
        if constexpr (sizeof(Unit) == 1) {
            return UnitBlock(_mm_cmpeq_epi8(bits, other.bits));
        } else {
            return UnitBlock(_mm_cmpeq_epi16(bits, other.bits));
        }
    }
    UnitBlock operator|(UnitBlock other) const noexcept { return UnitBlock(_mm_or_si128(bits, other.bits)); }
    UnitBlock operator&(UnitBlock other) const noexcept { return UnitBlock(_mm_and_si128(bits, other.bits)); }

    unsigned mask() const noexcept { return static_cast<unsigned>(_mm_movemask_epi8(bits)); }

    /// The same units with A to Z as a to z.
    UnitBlock lowered() const noexcept {
        __m128i below;
        __m128i above;
        if constexpr (sizeof(Unit) == 1) {
            below = _mm_cmpgt_epi8(bits, _mm_set1_epi8('A' - 1));
            above = _mm_cmplt_epi8(bits, _mm_set1_epi8('Z' + 1));
        } else {
            below = _mm_cmpgt_epi16(bits, _mm_set1_epi16('A' - 1));
            above = _mm_cmplt_epi16(bits, _mm_set1_epi16('Z' + 1));
        }
        __m128i const step = filled(static_cast<Unit>('a' - 'A')).bits;
        return UnitBlock(_mm_or_si128(bits, _mm_and_si128(_mm_and_si128(below, above), step)));
    }

    /// The index of the first and of the last unit in a mask that is not 0.
    static std::size_t firstIn(unsigned mask) noexcept {
        return static_cast<std::size_t>(std::countr_zero(mask)) / sizeof(Unit);
    }
    static std::size_t lastIn(unsigned mask) noexcept {
        return static_cast<std::size_t>(31 - std::countl_zero(mask)) / sizeof(Unit);
    }
    /// A mask of all units.
    static constexpr unsigned fullMask = 0xFFFF;

private:
    explicit UnitBlock(__m128i value) noexcept : bits(value) {}

    __m128i bits;
};

} // namespace morvane

#endif
