// The quick sort whose order of equal items is part of the contract.
#pragma once

#include <array>
#include <cstdint>
#include <utility>

namespace morvane {

/// Sorts the items `lo` to `hi` of `items`, which has `at(index)` and `swap(index, index)`. `compare(item, pivot)` is
/// above 0 when the item belongs in front of the pivot, below 0 when behind.
///
/// Each part is cut at its middle item from both ends, which settles the order of equal items whatever order the parts
/// are taken in; the shorter one goes first, so that 32 waiting ranges are enough. A `compare` that contradicts itself
/// gives some order: no walk leaves its range.
template <typename Items, typename Compare>
void quickSort(Items & items, std::int32_t lo, std::int32_t hi, Compare compare) {
    struct Range {
        std::int32_t lo;
        std::int32_t hi;
    };
    std::array<Range, 32> waiting{};
    std::size_t waitingCount = 0;
    for (;;) {
        while (lo < hi) {
            auto const pivot = items.at(lo + (hi - lo) / 2);
            std::int32_t i = lo;
            std::int32_t j = hi;
            while (i <= j) {
                while (i < hi && compare(items.at(i), pivot) > 0) {
                    ++i;
                }
                while (j > lo && compare(items.at(j), pivot) < 0) {
                    --j;
                }
                if (i <= j) {
                    items.swap(i, j);
                    ++i;
                    --j;
                }
            }
            Range shorter{lo, j};
            Range longer{i, hi};
            if (shorter.hi - shorter.lo > longer.hi - longer.lo) {
                std::swap(shorter, longer);
            }
            if (longer.lo < longer.hi) {
                waiting[waitingCount] = longer;
                ++waitingCount;
            }
            lo = shorter.lo;
            hi = shorter.hi;
        }
        if (waitingCount == 0) {
            return;
        }
        --waitingCount;
        lo = waiting[waitingCount].lo;
        hi = waiting[waitingCount].hi;
    }
}

} // namespace morvane
