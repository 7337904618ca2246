// Where a scan stops: units of a fixed few, many at a look.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <morvane/strings/text_view.h>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define MORVANE_STOPS_SSE2
#endif

namespace morvane {

/// Units of one look.
inline constexpr std::size_t stopsAtOnce = 16;

/// One look at the units of `text`, sixteen of them at least, from `from` on, for stops of several kinds.
class UnitLook {
public:
    UnitLook(WideView text, std::size_t from) noexcept {
        std::size_t const first = std::min(from, text.length - stopsAtOnce);
        passed = from - first;
#ifdef MORVANE_STOPS_SSE2
        auto const * const eights = reinterpret_cast<__m128i const *>(text.data + first);
        sixteen = _mm_packs_epi16(_mm_loadu_si128(eights), _mm_loadu_si128(eights + 1));
#else
        units = text.data + first;
#endif
    }

    /// One bit for each unit that is one of `Stops`, all of which are below 127.
    template <unsigned short int... Stops>
    std::uint32_t stops() const noexcept {
        static_assert(((Stops < 127) && ...));
#ifdef MORVANE_STOPS_SSE2
        // As signed bytes the units below 127 stay what they are, and no other one becomes one of them.
        __m128i hits = _mm_setzero_si128();
        ((hits = _mm_or_si128(hits, _mm_cmpeq_epi8(sixteen, _mm_set1_epi8(static_cast<char>(Stops))))), ...);
        return static_cast<std::uint32_t>(_mm_movemask_epi8(hits)) >> passed;
#else
        std::uint32_t hits = 0;
        for (std::size_t index = 0; index < stopsAtOnce; ++index) {
            hits |= static_cast<std::uint32_t>(((units[index] == Stops) || ...)) << index;
        }
        return hits >> passed;
#endif
    }

private:
#ifdef MORVANE_STOPS_SSE2
    __m128i sixteen;
#else
    unsigned short int const * units;
#endif
    /// Units of the look that stand in front of `from`.
    std::size_t passed;
};

/// One bit, from the lowest, for each of the sixteen units that is one of `Stops`, all of which are below 127.
template <unsigned short int... Stops>
inline std::uint32_t stopsOf(unsigned short int const * units) noexcept {
    return UnitLook({units, stopsAtOnce}, 0).stops<Stops...>();
}

/// The same for the units of `text` from `from` on, of which there may be fewer.
template <unsigned short int... Stops>
inline std::uint32_t stopsFrom(WideView text, std::size_t from) noexcept {
    if (text.length >= stopsAtOnce) {
        return UnitLook(text, from).stops<Stops...>();
    }
    std::uint32_t hits = 0;
    for (std::size_t index = from; index < text.length; ++index) {
        hits |= static_cast<std::uint32_t>(((text[index] == Stops) || ...)) << (index - from);
    }
    return hits;
}

/// Units of a long look.
inline constexpr std::size_t stopsAtLength = 4 * stopsAtOnce;

/// One bit for each of the units of `text` from `from` on, up to sixty-four of them.
template <unsigned short int... Stops>
inline std::uint64_t longStopsFrom(WideView text, std::size_t from) noexcept {
    std::uint64_t hits = 0;
    if (text.length - from >= stopsAtLength) {
        for (std::size_t part = 0; part < 4; ++part) {
            hits |= std::uint64_t{stopsOf<Stops...>(text.data + from + part * stopsAtOnce)} << (part * stopsAtOnce);
        }
        return hits;
    }
    for (std::size_t at = 0; from + at < text.length; at += stopsAtOnce) {
        hits |= std::uint64_t{stopsFrom<Stops...>(text, from + at)} << at;
    }
    return hits;
}

/// The index of the first unit at or after `from` that is one of `Stops`, or the length of the text.
template <unsigned short int... Stops>
inline std::size_t findStop(WideView text, std::size_t from) noexcept {
    for (; from < text.length; from += stopsAtOnce) {
        std::uint32_t const hits = stopsFrom<Stops...>(text, from);
        if (hits != 0) {
            return from + static_cast<std::size_t>(std::countr_zero(hits));
        }
    }
    return text.length;
}

} // namespace morvane

#undef MORVANE_STOPS_SSE2
