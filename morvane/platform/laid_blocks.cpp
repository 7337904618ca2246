#include <morvane/platform/laid_blocks.h>

#include <algorithm>
#include <bit>

namespace morvane::platform {
namespace {

constexpr std::size_t stepWords = laidSteps / 64;
constexpr std::size_t headSteps = sizeof(LaidHead) / laidStep;

LaidHead & headOf(HeapPage const & page) {
    return *reinterpret_cast<LaidHead *>(blocksOf(page));
}

char * stepAt(HeapPage const & page, std::size_t step) {
    return blocksOf(page) + step * laidStep;
}

/// The first step at or after `from` whose bit is in the words that `wordAt` gives, or `laidSteps`.
template <typename WordAt>
std::size_t findStep(std::size_t from, WordAt wordAt) {
    std::uint64_t mask = ~std::uint64_t{0} << (from % 64);
    for (std::size_t word = from / 64; word < stepWords; ++word) {
        if (std::uint64_t const bits = wordAt(word) & mask; bits != 0) {
            return word * 64 + static_cast<std::size_t>(std::countr_zero(bits));
        }
        mask = ~std::uint64_t{0};
    }
    return laidSteps;
}

/// The bits of the steps `first` to `behind` - 1 that are in the word of that number.
std::uint64_t bitsBetween(std::size_t word, std::size_t first, std::size_t behind) {
    std::uint64_t bits = ~std::uint64_t{0};
    if (word == first / 64) {
        bits &= ~(laidBit(first) - 1);
    }
    if (word == behind / 64) {
        bits &= laidBit(behind) - 1;
    }
    return bits;
}

void clearSteps(std::uint64_t * words, std::size_t first, std::size_t behind) {
    for (std::size_t word = first / 64; word * 64 < behind; ++word) {
        words[word] &= ~bitsBetween(word, first, behind);
    }
}

int countSteps(std::uint64_t const * words, std::size_t first, std::size_t behind) {
    int count = 0;
    for (std::size_t word = first / 64; word * 64 < behind; ++word) {
        count += std::popcount(words[word] & bitsBetween(word, first, behind));
    }
    return count;
}

/// Finds the threes whose blocks came back one by one.
void gatherSingles(HeapPage & page) {
    if (std::all_of(page.freeBits, page.freeBits + stepWords, [](std::uint64_t word) { return word == 0; })) {
        return;
    }
    LaidHead & head = headOf(page);
    auto const begins = [&](std::size_t word) { return head.begins[word]; };
    for (std::size_t first = headSteps; first < laidSteps;) {
        std::size_t const behind = findStep(first + 1, begins);
        if (countSteps(page.freeBits, first, behind) == 3) {
            head.back[first / 64] |= laidBit(first);
            clearSteps(page.freeBits, first, behind);
        }
        first = behind;
    }
}

} // namespace

void LaidGap::open(HeapPage & page) noexcept {
    gatherSingles(page);
    next = stepAt(page, headSteps);
    end = next;
    filled = &page;
}

bool LaidGap::advance(std::size_t bytes) noexcept {
    LaidHead & head = headOf(*filled);
    leaveRest();
    std::size_t from = laidStepOf(end - 1) + 1;
    for (;;) {
        std::size_t const first = findStep(from, [&](std::size_t word) { return head.back[word]; });
        std::size_t const behind =
            findStep(first, [&](std::size_t word) { return head.begins[word] & ~head.back[word]; });
        next = stepAt(*filled, first);
        end = stepAt(*filled, behind);
        if (first == laidSteps) {
            return false;
        }
        if ((behind - first) * laidStep >= bytes) {
            clearSteps(head.begins, first, behind);
            clearSteps(head.back, first, behind);
            return true;
        }
        from = behind;
    }
}

void LaidGap::beginAnew() noexcept {
    LaidHead & head = headOf(*filled);
    char * const last = stepAt(*filled, laidSteps);
    // No three begin in a gap.
    std::size_t const behind = end == last ? laidStepOf(next - 1) + 1 : laidSteps;
    for (std::uint64_t * words : {head.begins, head.back, filled->freeBits}) {
        clearSteps(words, headSteps, behind);
    }
    next = stepAt(*filled, headSteps);
    end = last;
}

void LaidGap::close() noexcept {
    leaveRest();
    *this = LaidGap();
}

/// What is left of the gap counts as three blocks that are back.
void LaidGap::leaveRest() noexcept {
    if (next != end) {
        std::size_t const step = laidStepOf(next);
        headOf(*filled).begins[step / 64] |= laidBit(step);
        headOf(*filled).back[step / 64] |= laidBit(step);
    }
}

void prepareLaidPage(HeapPage & page) noexcept {
    LaidHead & head = headOf(page);
    head = LaidHead{};
    head.begins[headSteps / 64] = laidBit(headSteps);
    head.back[headSteps / 64] = laidBit(headSteps);
}

std::uint32_t countLaidBlocks(HeapPage const & page) noexcept {
    return 3 * static_cast<std::uint32_t>(countSteps(headOf(page).begins, headSteps, laidSteps));
}

} // namespace morvane::platform
