// What the two text classes do, written once over the unit.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <morvane/platform/process_heap.h>
#include <morvane/strings/text_storage.h>
#include <morvane/strings/text_view.h>
#include <morvane/strings/unit_search.h>
#include <type_traits>

namespace morvane {

/// The text as search, comparison, case change and appending see it: up to its first zero.
template <typename Unit>
TextView<Unit> upToZero(TextView<Unit> text) noexcept {
    return text.first(std::min(findUnit(text, 0), text.length));
}

/// The units `start` to `start` + `count` - 1 that exist; none where `start` is no index or `count` is below 1.
template <typename Unit>
TextView<Unit> partOf(TextView<Unit> text, std::uint32_t start, std::int64_t count) noexcept {
    if (start >= text.length || count < 1) {
        return {};
    }
    return text.part(start, std::min(text.length - start, static_cast<std::size_t>(count)));
}

/// The last `count` units; none where there are not as many or `count` is below 1.
template <typename Unit>
TextView<Unit> lastPartOf(TextView<Unit> text, std::int32_t count) noexcept {
    auto const units = static_cast<std::uint32_t>(count);
    return count < 1 || units > text.length ? TextView<Unit>{} : text.from(text.length - units);
}

/// An index, or -1 for `notFound`, in the 32 bits in which it is told.
constexpr std::int32_t toIndex(std::size_t index) noexcept {
    return static_cast<std::int32_t>(index);
}

/// The first `unit` at or after `from` and up to the next zero. Zero itself is found there too, the closing one
/// included.
template <typename Unit>
std::size_t searchUnit(TextView<Unit> text, std::type_identity_t<Unit> unit, std::int32_t from) noexcept {
    auto const start = static_cast<std::size_t>(std::max(from, 0));
    if (start >= text.length) {
        return notFound;
    }
    std::size_t const hit = findUnit(text, unit, start);
    if (unit == 0) {
        return std::min(hit, text.length);
    }
    // A zero in front of the hit ends the text. Only what was passed over is looked at, so that a walk from hit to hit
    // stays linear.
    return hit == notFound || findUnit(text.first(hit), 0, start) != notFound ? notFound : hit;
}

/// The first `sought` at or after `from` and up to the next zero. `findsEmptyAtEnd` tells whether empty text is found
/// where the text ends.
template <typename Unit>
std::size_t searchText(TextView<Unit> text, std::type_identity_t<TextView<Unit>> sought, std::uint32_t from,
                       bool findsEmptyAtEnd) noexcept {
    if (from > text.length) {
        return notFound;
    }
    if (sought.isEmpty()) {
        bool const isEnd = from == text.length || text[from] == 0;
        return isEnd && !findsEmptyAtEnd ? notFound : from;
    }
    std::size_t const hit = findText(text, sought, from);
    return hit == notFound || findUnit(text.first(hit), 0, from) != notFound ? notFound : hit;
}

/// The first unit up to the first zero that is one of `set`.
template <typename Unit>
std::size_t searchOneOf(TextView<Unit> text, std::type_identity_t<TextView<Unit>> set) noexcept {
    std::size_t const hit = findOneOf(text, set);
    return hit == notFound || findUnit(text.first(hit), 0) != notFound ? notFound : hit;
}

/// The last `unit` up to the first zero; for 0 that zero.
template <typename Unit>
std::size_t searchLastUnit(TextView<Unit> text, std::type_identity_t<Unit> unit) noexcept {
    TextView<Unit> const seen = upToZero(text);
    return unit == 0 ? seen.length : findLastUnit(seen, unit);
}

/// A text that is appended `count` times.
template <typename Unit>
struct TextPiece {
    TextView<Unit> text;
    std::uint32_t count = 1;
};

/// Fills `target` with `count` copies of `text`.
template <typename Unit>
void fillRepeated(Unit * target, TextView<Unit> text, std::size_t count) noexcept {
    if (text.length == 1) {
        std::fill_n(target, count, text[0]);
        return;
    }
    std::size_t const total = text.length * count;
    std::size_t done = std::min(text.length, total);
    std::memcpy(target, text.data, done * sizeof(Unit));
    while (done < total) {
        std::size_t const step = std::min(done, total - done);
        std::memcpy(target + done, target, step * sizeof(Unit));
        done += step;
    }
}

/// A buffer that holds `head` and behind it `pieces`, appended one after the other, its length in `length`; null when
/// the heap refuses. Each goes to the first zero of what stands there and counts with its whole length, so that where a
/// zero stands inside, what is not written stays: the rest of `head`, and zeros.
template <typename Unit>
Unit * joinTexts(TextView<Unit> head, std::initializer_list<TextPiece<Unit>> pieces, std::uint64_t & length) noexcept {
    length = head.length;
    for (TextPiece<Unit> const & piece : pieces) {
        length += std::uint64_t{piece.text.length} * piece.count;
    }
    Unit * const target = allocateText<Unit>(length);
    if (target == nullptr) {
        return nullptr;
    }
    std::memcpy(target, head.data, head.length * sizeof(Unit));
    std::size_t written = head.length;
    std::size_t end = upToZero(head).length;
    for (TextPiece<Unit> const & piece : pieces) {
        TextView<Unit> const seen = upToZero(piece.text);
        std::size_t const ownLength = piece.text.length * piece.count;
        // A piece with a zero inside is appended up to it each time, and makes room for all of it.
        std::size_t const seenLength = seen.length * piece.count;
        if (seenLength != 0) {
            fillRepeated(target + end, seen, piece.count);
            end += seenLength;
        }
        std::size_t const grown = written + ownLength;
        if (end < grown) {
            std::size_t const clean = std::max(end, written);
            std::fill(target + clean, target + grown, Unit{});
            target[end] = 0;
        }
        written = grown;
    }
    return target;
}

/// Makes `target` the text that `joinTexts` tells, all of which may lie in its buffer.
template <typename String, typename Unit>
void assignJoined(String & target, TextView<Unit> head, std::initializer_list<TextPiece<Unit>> pieces) noexcept {
    std::uint64_t length = 0;
    Unit * const text = joinTexts(head, pieces, length);
    adoptText(target, text, length);
}

/// Makes `target` the units of `text` `count` times over.
template <typename String, typename Unit>
void assignRepeated(String & target, TextView<Unit> text, std::uint32_t count) noexcept {
    std::uint64_t const length = std::uint64_t{text.length} * count;
    Unit * const block = allocateText<Unit>(length);
    if (block != nullptr && length != 0) {
        fillRepeated(block, text, count);
    }
    adoptText(target, block, length);
}

/// Appends `piece`, which may lie in the buffer of `target`. A released `target` becomes a copy of it.
template <typename String, typename Unit>
void appendText(String & target, TextPiece<Unit> piece) noexcept {
    if (target.get_data() == nullptr) {
        assignRepeated(target, piece.text, piece.count);
    } else if (piece.text.length != 0 && piece.count != 0) {
        assignJoined(target, viewOf(target), {piece});
    }
}

/// Puts `piece` in front of `position`, brought to the nearest end.
template <typename String, typename Unit>
void insertText(String & target, std::int32_t position, TextView<Unit> piece) noexcept {
    TextView<Unit> const text = viewOf(target);
    std::size_t const place = std::min(text.length, static_cast<std::size_t>(std::max(position, 0)));
    assignJoined(target, text.first(place), {{piece}, {text.from(place)}});
}

/// Takes the units `start` to `start` + `count` - 1 out, as far as they exist.
template <typename String>
void deletePart(String & target, std::int32_t start, std::int32_t count) noexcept {
    auto const text = viewOf(target);
    auto const end = static_cast<std::int64_t>(text.length);
    std::int64_t const first = std::clamp<std::int64_t>(start, 0, end);
    std::int64_t const behind = std::clamp<std::int64_t>(std::int64_t{start} + count, first, end);
    assignJoined(target, text.first(static_cast<std::size_t>(first)), {{text.from(static_cast<std::size_t>(behind))}});
}

/// Takes every `unit` out and gives how many there were. Each unit that stays is appended in its turn, so that zeros
/// between them come to stand at the end.
template <typename String, typename Unit>
std::size_t removeUnit(String & target, Unit unit) noexcept {
    if (target.get_data() == nullptr) {
        return 0;
    }
    TextView<Unit> const text = viewOf(target);
    std::size_t const count = countUnit(text, unit);
    bool const hasZero = unit != 0 && findUnit(text, 0) != notFound;
    if (count == 0 && !hasZero) {
        return 0;
    }
    std::size_t const length = text.length - count;
    Unit * const block = allocateText<Unit>(length);
    if (block != nullptr) {
        std::size_t kept = 0;
        for (Unit const each : text) {
            // Written in any case, kept by moving on: the closing zero is the last place that is written.
            block[kept] = each;
            kept += each != unit && each != 0 ? 1 : 0;
        }
        std::fill(block + kept, block + length + 1, Unit{});
    }
    adoptText(target, block, length);
    return count;
}

/// Changes every `from` in `count` units to `to` and gives how many there were.
template <typename Unit>
std::size_t replaceUnit(Unit * text, std::size_t count, std::type_identity_t<Unit> from,
                        std::type_identity_t<Unit> to) noexcept {
    std::size_t const hits = countUnit(TextView<Unit>{text, count}, from);
    if (hits != 0 && from != to) {
        std::replace(text, text + count, from, to);
    }
    return hits;
}

/// Positions that a search found, first in place and then in a growing scratch block.
class PositionList {
public:
    PositionList() noexcept = default;
    PositionList(PositionList const &) = delete;
    ~PositionList() { release(); }

    PositionList & operator=(PositionList const &) = delete;

    /// False when the heap refused.
    bool add(std::size_t position) noexcept {
        if (used == capacity) {
            auto * const block =
                static_cast<std::uint32_t *>(platform::heapAllocate(2 * capacity * sizeof(std::uint32_t), false));
            if (block == nullptr) {
                return false;
            }
            std::memcpy(block, positions, used * sizeof(std::uint32_t));
            release();
            positions = block;
            capacity *= 2;
        }
        positions[used++] = static_cast<std::uint32_t>(position);
        return true;
    }
    std::size_t count() const noexcept { return used; }
    std::uint32_t const * begin() const noexcept { return positions; }
    std::uint32_t const * end() const noexcept { return positions + used; }

private:
    void release() noexcept {
        if (positions != local) {
            platform::heapFree(positions);
        }
    }

    std::uint32_t local[64];
    std::uint32_t * positions = local;
    std::size_t used = 0;
    std::size_t capacity = 64;
};

/// Puts `to` in the place of every `from` up to the first zero and gives how many there were; what was put in is not
/// searched. Both may lie in the buffer of `target`. Where something was replaced, what stood behind a zero is cleared.
template <typename String, typename Unit>
std::size_t replaceText(String & target, TextView<Unit> from, TextView<Unit> to) noexcept {
    if (from.isEmpty()) {
        return 0;
    }
    TextView<Unit> const text = viewOf(target);
    TextSearcher<Unit> searcher(from);
    std::size_t hit = searcher.find(text);
    if (hit == notFound) {
        return 0;
    }
    TextView<Unit> const seen = upToZero(text);
    PositionList hits;
    std::size_t count = 0;
    bool hasFailed = false;
    while (hit != notFound && hit < seen.length) {
        ++count;
        hasFailed = hasFailed || !hits.add(hit);
        hit = searcher.find(seen, hit + from.length);
    }
    if (count == 0) {
        return 0;
    }
    std::uint64_t const length = text.length - std::uint64_t{count} * from.length + std::uint64_t{count} * to.length;
    Unit * const block = hasFailed ? nullptr : allocateText<Unit>(length);
    if (block != nullptr) {
        Unit * end = block;
        std::size_t done = 0;
        auto const append = [&end](TextView<Unit> piece) {
            std::memcpy(end, piece.data, piece.length * sizeof(Unit));
            end += piece.length;
        };
        for (std::size_t const position : hits) {
            append(seen.part(done, position - done));
            append(to);
            done = position + from.length;
        }
        append(seen.from(done));
        std::fill(end, block + length, Unit{});
    }
    adoptText(target, block, length);
    return count;
}

/// Turns the units from `first` to `last` up to the first zero by `step`; `first` to `last` are one alphabet's letters.
template <typename Unit>
void shiftLetters(Unit * text, std::size_t count, char first, char last, int step) noexcept {
    std::size_t const end = upToZero(TextView<Unit>{text, count}).length;
    auto const low = static_cast<Unit>(first);
    auto const high = static_cast<Unit>(last);
    for (std::size_t index = 0; index < end; ++index) {
        Unit const unit = text[index];
        text[index] = static_cast<Unit>(unit + (unit >= low && unit <= high ? step : 0));
    }
}

/// Overwrites what stands in front of the first zero with `unit`.
template <typename Unit>
void overwrite(Unit * text, std::size_t count, std::type_identity_t<Unit> unit) noexcept {
    std::fill_n(text, upToZero(TextView<Unit>{text, count}).length, unit);
}

/// Reverses what stands in front of the first zero.
template <typename Unit>
void reverseUnits(Unit * text, std::size_t count) noexcept {
    std::reverse(text, text + upToZero(TextView<Unit>{text, count}).length);
}

} // namespace morvane
