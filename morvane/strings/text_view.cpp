#include <morvane/strings/text_view.h>

#include <cstdint>
#include <morvane/strings/unit_block.h>

namespace morvane {

std::size_t unitLength(unsigned short int const * text) noexcept {
    unsigned short int const * unit = text;
#if MORVANE_READS_TO_PAGE_END
    // A block at an address that 16 divides lies in one page, so that it can be read wherever its first byte can.
    using Block = UnitBlock<unsigned short int>;
    if (reinterpret_cast<std::uintptr_t>(text) % sizeof(unsigned short int) == 0) {
        while (reinterpret_cast<std::uintptr_t>(unit) % 16 != 0) {
            if (*unit == 0) {
                return static_cast<std::size_t>(unit - text);
            }
            ++unit;
        }
        Block const zero = Block::filled(0);
        for (;; unit += Block::count) {
            if (unsigned const mask = Block::load(unit).equal(zero).mask()) {
                return static_cast<std::size_t>(unit - text) + Block::firstIn(mask);
            }
        }
    }
#endif
    while (*unit != 0) {
        ++unit;
    }
    return static_cast<std::size_t>(unit - text);
}

} // namespace morvane
