#include <morvane/xml/printed_text.h>

#include <utility>

namespace morvane {

void PrintedText::moveTo(_WideString & target, std::size_t zeros) noexcept {
    std::size_t const length = fullUnits + static_cast<std::size_t>(place - piece) + zeros;
    Unit * const text = failed ? nullptr : allocateText<Unit>(length);
    if (text != nullptr) {
        Unit * at = text;
        for (std::size_t index = 0; index < full.size(); ++index) {
            Piece const & part = *full.from(index);
            at = std::copy_n(part.units, part.length, at);
        }
        at = std::copy(piece, place, at);
        std::fill_n(at, zeros, Unit{0});
    }
    adoptText(target, text, length);
    release();
}

/// Goes on with a new piece, that has room for `count` units.
bool PrintedText::turn(std::size_t count) noexcept {
    auto const length = static_cast<std::size_t>(place - piece);
    if (failed || count > limit || fullUnits + length > limit - count) {
        failed = true;
        return false;
    }
    std::size_t const units = std::max(count, nextUnits);
    auto * const fresh = static_cast<Unit *>(platform::heapAllocate(units * sizeof(Unit), false));
    if (fresh == nullptr || !full.push({piece, length})) {
        platform::heapFree(fresh);
        failed = true;
        return false;
    }
    fullUnits += length;
    piece = fresh;
    place = fresh;
    end = fresh + units;
    nextUnits = std::min(4 * nextUnits, mostUnits);
    return true;
}

void PrintedText::release() noexcept {
    // The first piece is the local one.
    for (; !full.isEmpty(); full.pop()) {
        platform::heapFree(std::exchange(piece, full.top().units));
    }
    place = local;
    end = local;
}

} // namespace morvane
