// What a library that was built with MORVANE_CHECKED stops for.
#pragma once

#include <cstdint>
#include <morvane/core/literals.h>
#include <morvane/core/memory_chain.h>

namespace morvane {

#ifdef MORVANE_CHECKED
constexpr bool isChecked = true;
#else
constexpr bool isChecked = false;
#endif

/// Says on the debug channel what a program did wrong, and stops the process.
[[noreturn]] void stopForMisuse(unsigned short int const * what);

/// The units of one node of a pool.
struct NodeUnits {
    _MemoryBlock::_MemoryNode const * node;
    NodeGeometry geometry;
    std::uint16_t unitSize;
    std::uint32_t unitCount;

    /// Stops unless the part belongs to a unit in use, with its own header and the next one whole.
    void checkRelease(void const * part) const;
    /// Stops unless the headers of all units are whole.
    void checkHeaders() const;

private:
    void checkHeader(std::uint32_t number) const;
};

/// True from the moment when the library has gone down.
extern constinit bool libraryIsDown;

/// Stops when the library has gone down.
inline void checkLibraryIsUp() {
    if constexpr (isChecked) {
        if (libraryIsDown) {
            using namespace literals;
            stopForMisuse(u"misuse: a text or another block was used after the library went down\r\n"_w);
        }
    }
}

} // namespace morvane
