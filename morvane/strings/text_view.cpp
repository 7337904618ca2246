#include <morvane/strings/text_view.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <morvane/strings/unit_block.h>

namespace morvane {

#if MORVANE_READS_TO_PAGE_END

namespace {

/// True when one of the units of four blocks is zero.
bool hasZero(unsigned short int const * units) noexcept {
    using Block = UnitBlock<unsigned short int>;
    Block const zero = Block::filled(0);
    auto const zeros = [&](std::size_t block) { return Block::load(units + block * Block::count).equal(zero); };
    return ((zeros(0) | zeros(1)) | (zeros(2) | zeros(3))).mask() != 0;
}

} // namespace

#endif

std::size_t unitLength(unsigned short int const * text) noexcept {
    return unitLength(text, std::numeric_limits<std::size_t>::max());
}

std::size_t unitLength(char const * text, std::size_t most) noexcept {
    void const * const zero = std::memchr(text, 0, most);
    return zero == nullptr ? most : static_cast<std::size_t>(static_cast<char const *>(zero) - text);
}

std::size_t unitLength(unsigned short int const * text, std::size_t most) noexcept {
    std::size_t length = 0;
#if MORVANE_READS_TO_PAGE_END
    // A block at an address that 16 divides lies in one page, so that it can be read wherever one of its bytes can; the
    // same goes for four blocks where 64 divides it.
    using Block = UnitBlock<unsigned short int>;
    auto const address = reinterpret_cast<std::uintptr_t>(text);
    if (address % sizeof(unsigned short int) == 0) {
        Block const zero = Block::filled(0);
        std::size_t const before = address % 16 / sizeof(unsigned short int);
        if (unsigned const mask = Block::load(text - before).equal(zero).mask() >> address % 16) {
            return std::min(most, Block::firstIn(mask));
        }
        for (length = Block::count - before; length < most; length += Block::count) {
            if (reinterpret_cast<std::uintptr_t>(text + length) % 64 == 0) {
                while (length < most && !hasZero(text + length)) {
                    length += 4 * Block::count;
                }
                if (length >= most) {
                    break;
                }
            }
            if (unsigned const mask = Block::load(text + length).equal(zero).mask()) {
                return std::min(most, length + Block::firstIn(mask));
            }
        }
        return most;
    }
#endif
    while (length < most && text[length] != 0) {
        ++length;
    }
    return length;
}

} // namespace morvane
