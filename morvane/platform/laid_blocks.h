// Pages of blocks that are laid three by three: an object and its two buffers, of any sizes, which mostly go together.
//
// step   16 bytes, where a block may begin
// three  the blocks that were laid in one go, one behind the other; they reach to where the next three begin
// gap    the room that is being filled
//
// No block has a header. The page begins with two bits for each step: whether three blocks begin there, and whether all
// three came back in one go. A block that comes back alone has its bit in the page's entry. The room of three that are
// back, one way or the other, is laid anew when the page is opened again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <morvane/platform/heap_segment.h>
#include <morvane/platform/process_heap.h>

namespace morvane::platform {

inline constexpr std::size_t laidSteps = sliceBytes / laidStep;

/// What a page of laid blocks begins with.
struct LaidHead {
    std::uint64_t begins[laidSteps / 64];
    std::uint64_t back[laidSteps / 64];
};

static_assert(laidSteps <= mostPageBlocks && sizeof(LaidHead) % laidStep == 0);

inline std::size_t laidStepOf(void const * address) noexcept {
    return reinterpret_cast<std::uintptr_t>(address) % sliceBytes / laidStep;
}

inline std::uint64_t laidBit(std::size_t step) noexcept {
    return std::uint64_t{1} << (step % 64);
}

inline LaidHead & laidHeadOf(void const * address) noexcept {
    return *reinterpret_cast<LaidHead *>(reinterpret_cast<std::uintptr_t>(address) & ~(std::uintptr_t{sliceBytes} - 1));
}

/// Notes that the three blocks from `first` on are back, if they were not.
inline void takeBackThree(HeapPage & page, void const * first) noexcept {
    std::size_t const step = laidStepOf(first);
    std::uint64_t & word = laidHeadOf(first).back[step / 64];
    std::uint64_t const before = word;
    word |= laidBit(step);
    page.usedBlocks -= word != before ? 3 : 0;
}

/// The gap that a heap fills, and its page; none at first.
class LaidGap {
public:
    HeapPage * page() const noexcept { return filled; }

    /// Whether there is room for three blocks of so many bytes in all, a multiple of the step.
    bool fits(std::size_t bytes) const noexcept { return bytes <= static_cast<std::size_t>(end - next); }
    /// That room, when there is.
    char * lay(std::size_t bytes) noexcept {
        char * const first = next;
        next = first + bytes;
        std::size_t const step = laidStepOf(first);
        laidHeadOf(first).begins[step / 64] |= laidBit(step);
        filled->usedBlocks += 3;
        return first;
    }

    /// Begins with a page, in front of its first gap.
    void open(HeapPage & page) noexcept;
    /// Goes on to the next gap of the page that has so many bytes; false when there is none behind.
    bool advance(std::size_t bytes) noexcept;
    /// All blocks of the page are back: it is one gap again.
    void beginAnew() noexcept;
    /// Leaves the page.
    void close() noexcept;

private:
    void leaveRest() noexcept;

    char * next = nullptr;
    char * end = nullptr;
    HeapPage * filled = nullptr;
};

/// Makes a page that holds no blocks one gap.
void prepareLaidPage(HeapPage & page) noexcept;

/// The blocks of a page that is not open, in use or back.
std::uint32_t countLaidBlocks(HeapPage const & page) noexcept;

} // namespace morvane::platform
