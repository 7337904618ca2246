// The quick sort whose order of equal items is part of the contract.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace morvane {

/// Sorts the items `lo` to `hi` of `items`, which has `at(index)` and `swap(index, index)`; `lo` is not above `hi`.
/// `compare(item, pivot)` is above 0 when the item belongs in front of the pivot, below 0 when behind.
///
/// Each part is cut at its middle item from both ends, which settles the order of equal items; the left part goes
/// first. Where many parts wait, the shorter one goes first instead, so that the room for them is enough for any count.
/// A `compare` that contradicts itself gives some order: no walk leaves its part.
template <typename Items, typename Compare>
void quickSort(Items & items, std::int32_t lo, std::int32_t hi, Compare compare) {
    struct Part {
        std::int32_t lo;
        std::int32_t hi;

        bool isSorted() const { return lo >= hi; }
        std::int32_t length() const { return hi - lo; }
    };
    // Halving from 2 to the 31 needs 32 places.
    constexpr std::size_t mostWaiting = 128;
    constexpr std::size_t manyWaiting = mostWaiting - 32;
    std::array<Part, mostWaiting> waiting;
    std::size_t waitingCount = 0;
    for (;;) {
        auto const pivot = items.at(lo + (hi - lo) / 2);
        std::int32_t i = lo;
        std::int32_t j = hi;
        while (i <= j) {
            while (compare(items.at(i), pivot) > 0 && i < hi) {
                ++i;
            }
            while (compare(items.at(j), pivot) < 0 && j > lo) {
                --j;
            }
            if (i <= j) {
                items.swap(i, j);
                ++i;
                --j;
            }
        }
        Part next{lo, j};
        Part later{i, hi};
        if (next.isSorted() || (waitingCount >= manyWaiting && !later.isSorted() && later.length() < next.length())) {
            std::swap(next, later);
        }
        if (next.isSorted()) {
            if (waitingCount == 0) {
                return;
            }
            --waitingCount;
            next = waiting[waitingCount];
        } else if (!later.isSorted()) {
            waiting[waitingCount] = later;
            ++waitingCount;
        }
        lo = next.lo;
        hi = next.hi;
    }
}

} // namespace morvane
