// Where a scan stops: the first of a few fixed units.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <morvane/strings/text_view.h>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define MORVANE_STOPS_SSE2
#endif

namespace morvane {

/// The index of the first unit at or after `from` that is one of `Stops`, or the length of the text. For scans that
/// stop every few units: it starts at once and is meant to be inlined.
template <unsigned short int... Stops>
inline std::size_t findStop(WideView text, std::size_t from) noexcept {
    std::size_t index = from;
#ifdef MORVANE_STOPS_SSE2
    for (; text.length - index >= 8; index += 8) {
        __m128i const units = _mm_loadu_si128(reinterpret_cast<__m128i const *>(text.data + index));
        __m128i hits = _mm_setzero_si128();
        ((hits = _mm_or_si128(hits, _mm_cmpeq_epi16(units, _mm_set1_epi16(static_cast<short>(Stops))))), ...);
        auto const mask = static_cast<std::uint32_t>(_mm_movemask_epi8(hits));
        if (mask != 0) {
            return index + static_cast<std::size_t>(std::countr_zero(mask)) / 2;
        }
    }
#endif
    for (; index < text.length; ++index) {
        if (((text[index] == Stops) || ...)) {
            return index;
        }
    }
    return text.length;
}

} // namespace morvane

#undef MORVANE_STOPS_SSE2
