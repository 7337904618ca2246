// A long text that is written once, from its beginning to its end.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <morvane/platform/process_heap.h>
#include <morvane/strings/text_storage.h>
#include <morvane/strings/text_view.h>
#include <morvane/strings/unit_search.h>
#include <morvane/xml/growing_stack.h>

namespace morvane {

/// Copies `text` up to its first zero to `target`, where all of it has room, and gives where the copy ends.
inline unsigned short int * copyUpToZero(unsigned short int * target, WideView text) noexcept {
    constexpr std::size_t step = sizeof(std::uint64_t) / sizeof(unsigned short int);
    constexpr std::uint64_t ones = 0x0001000100010001;
    constexpr std::uint64_t tops = 0x8000800080008000;
    if (text.length < step || text.length > 16 * step) {
        std::size_t const length = std::min(findUnit(text, 0), text.length);
        std::memcpy(target, text.data, length * sizeof(unsigned short int));
        return target + length;
    }
    std::uint64_t zeros = 0;
    auto const copy = [&](std::size_t index) {
        std::uint64_t units = 0;
        std::memcpy(&units, text.data + index, sizeof units);
        std::memcpy(target + index, &units, sizeof units);
        // Not 0 where one of the four units is.
        zeros |= (units - ones) & ~units & tops;
    };
    for (std::size_t index = 0; index + step <= text.length; index += step) {
        copy(index);
    }
    copy(text.length - step);
    return target + (zeros == 0 ? text.length : findUnit(text, 0));
}

/// Gathers a text in pieces that stay where they are, and hands it over once, at exact size.
///
/// Use it for a text of unknown length that may be long; unlike `TextBuilder` it never copies what was gathered to
/// grow. Short texts need no heap. Errors: when the heap refuses a piece, there is no more room, and the text that it
/// is handed to ends released.
class PrintedText {
public:
    using Unit = unsigned short int;

    PrintedText() noexcept = default;
    PrintedText(PrintedText const &) = delete;
    ~PrintedText() { release(); }

    PrintedText & operator=(PrintedText const &) = delete;

    bool hasFailed() const noexcept { return failed; }
    void fail() noexcept { failed = true; }

    /// Where the next `count` units may be written, at the end; null when there is no room. What was written is told by
    /// `finish`.
    Unit * room(std::size_t count) noexcept {
        return count <= static_cast<std::size_t>(end - place) || turn(count) ? place : nullptr;
    }
    /// The text ends there, in front of the units that `room` gave or among them.
    void finish(Unit * newEnd) noexcept { place = newEnd; }

    void append(WideView text) noexcept {
        if (Unit * const at = room(text.length)) {
            std::memcpy(at, text.data, text.length * sizeof(Unit));
            finish(at + text.length);
        }
    }

    /// Makes `target` the text that was gathered, and as many zeros behind it. Nothing is gathered afterwards.
    void moveTo(_WideString & target, std::size_t zeros) noexcept;

private:
    static constexpr std::size_t localUnits = 256;
    static constexpr std::size_t leastUnits = 1024;
    static constexpr std::size_t mostUnits = 131072;
    /// No text class holds more than that.
    static constexpr std::size_t limit = UINT32_MAX / sizeof(Unit);

    struct Piece {
        Unit * units;
        std::size_t length;
    };

    bool turn(std::size_t count) noexcept;
    void release() noexcept;

    Unit local[localUnits];
    /// The piece that is being filled, and what is left of it.
    Unit * piece = local;
    Unit * place = local;
    Unit * end = local + localUnits;
    std::size_t nextUnits = leastUnits;
    /// Units in the pieces in front of it.
    std::size_t fullUnits = 0;
    /// The pieces in front of it.
    GrowingStack<Piece, 32> full;
    bool failed = false;
};

} // namespace morvane
