// A block and two text buffers in one go.
#pragma once

#include <cstddef>
#include <morvane/platform/process_heap.h>

namespace morvane {

/// The block of an object, uncounted from the process heap, and two buffers from `globalProcessMemory`, which counts
/// two calls. Use it for what is made and goes by the million.
struct HeapBatch {
    struct Blocks {
        void * object;
        void * first;
        void * second;
    };

    /// Takes the object's block, then the buffers, each of so many bytes, uncleared; all null when the heap refuses
    /// one. The buffers' bytes are above 0 and below 2 to the 32.
    static Blocks take(std::size_t objectBytes, std::size_t firstBytes, std::size_t secondBytes) noexcept {
        constexpr std::size_t most = platform::mostLaidBytes;
        std::size_t const first = platform::laidBytes(objectBytes);
        std::size_t const second = first + platform::laidBytes(firstBytes);
        std::size_t const all = second + platform::laidBytes(secondBytes);
        if (firstBytes <= most && secondBytes <= most && all <= most) [[likely]] {
            if (auto * const laid = static_cast<char *>(takeLaid(all))) [[likely]] {
                return {laid, laid + first, laid + second};
            }
        }
        return takeApart(objectBytes, firstBytes, secondBytes);
    }
    /// Takes all three back; none is null.
    static void giveBack(void * object, void * first, void * second) noexcept;

private:
    static void * takeLaid(std::size_t bytes) noexcept;
    static Blocks takeApart(std::size_t objectBytes, std::size_t firstBytes, std::size_t secondBytes) noexcept;
};

} // namespace morvane
