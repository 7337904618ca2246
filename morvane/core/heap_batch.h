// A block and two text buffers in one go.
#pragma once

#include <cstddef>

namespace morvane {

/// The block of an object, uncounted from the process heap, and two buffers from `globalProcessMemory`, which counts
/// two calls. Use it for what is made and goes by the million.
struct HeapBatch {
    /// Takes the object's block first, then the buffers, each of so many bytes, uncleared; false, with none taken, when
    /// the heap refuses one. The buffers' bytes are below 2 to the 32.
    static bool take(std::size_t const (&bytes)[3], void * (&blocks)[3]) noexcept;
    /// Takes all three back; none is null.
    static void giveBack(void * const (&blocks)[3]) noexcept;
};

} // namespace morvane
