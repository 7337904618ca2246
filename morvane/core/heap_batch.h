// Blocks of an object and its two text buffers, one such three after the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <morvane/platform/laid_blocks.h>
#include <morvane/platform/process_heap.h>

namespace morvane {

/// Takes and gives back blocks three at a time: that of an object, uncounted from the process heap, and two buffers
/// from `globalProcessMemory`, which counts two calls.
///
/// Use one for many: it stands on the stack of one thread, and counts for them in one go, when it ends or is told to
/// `settle`. It must be settled before other code runs that may read the counts or give such blocks back.
class HeapBatch {
public:
    struct Blocks {
        void * object;
        void * first;
        void * second;
    };

    HeapBatch() noexcept;
    HeapBatch(HeapBatch const &) = delete;
    ~HeapBatch() { settle(); }

    HeapBatch & operator=(HeapBatch const &) = delete;

    /// Takes the object's block, then the buffers, each of so many bytes, above 0, uncleared; all null when the heap
    /// refuses one or a buffer's bytes pass 32 bits.
    Blocks take(std::size_t objectBytes, std::size_t firstBytes, std::size_t secondBytes) noexcept {
        if ((firstBytes | secondBytes) < platform::laidBytesLimit) [[likely]] {
            std::size_t const first = platform::laidBytes(objectBytes);
            std::size_t const second = first + platform::laidBytes(firstBytes);
            std::size_t const all = second + platform::laidBytes(secondBytes);
            if (char * const laid = gap->fits(all) ? gap->lay(all) : laySlowly(all)) [[likely]] {
                taken += 2;
                return {laid, laid + first, laid + second};
            }
        }
        return takeApart(objectBytes, firstBytes, secondBytes);
    }
    /// Takes all three back; none is null.
    void giveBack(void * object, void * first, void * second) noexcept {
        givenBack += 2;
        platform::heapFreeThree(object, first, second, lastPage);
    }

    /// Counts what was taken and given back so far, and forgets where it went.
    void settle() noexcept {
        lastPage = {};
        if ((taken | givenBack) != 0) {
            settleCounts();
        }
    }

private:
    static char * laySlowly(std::size_t bytes) noexcept;
    Blocks takeApart(std::size_t objectBytes, std::size_t firstBytes, std::size_t secondBytes) noexcept;
    void settleCounts() noexcept;

    /// Where the heap of this thread lays blocks.
    platform::LaidGap * gap;
    platform::LaidPage lastPage;
    std::uint32_t taken = 0;
    std::uint32_t givenBack = 0;
};

} // namespace morvane
