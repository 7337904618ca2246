#include <morvane/strings/unit_search.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <morvane/strings/unit_block.h>

namespace morvane {

namespace plain {

template <typename Unit>
std::size_t findUnit(TextView<Unit> text, std::type_identity_t<Unit> unit, std::size_t from) noexcept {
    for (std::size_t index = from; index < text.length; ++index) {
        if (text[index] == unit) {
            return index;
        }
    }
    return notFound;
}

template <typename Unit>
std::size_t findOneOfFew(TextView<Unit> text, std::type_identity_t<TextView<Unit>> set, std::size_t from) noexcept {
    for (std::size_t index = from; index < text.length; ++index) {
        if (plain::findUnit(set, text[index], 0) != notFound) {
            return index;
        }
    }
    return notFound;
}

template <typename Unit>
std::size_t findLastUnit(TextView<Unit> text, std::type_identity_t<Unit> unit) noexcept {
    for (std::size_t index = text.length; index > 0; --index) {
        if (text[index - 1] == unit) {
            return index - 1;
        }
    }
    return notFound;
}

template <typename Unit>
std::size_t findDifference(Unit const * left, Unit const * right, std::size_t count) noexcept {
    return static_cast<std::size_t>(std::mismatch(left, left + count, right).first - left);
}

/// The first place at or after `from` where both `first` and, `distance` units behind it, `last` stand; `end` is behind
/// the last place to look at.
template <typename Unit>
std::size_t findPair(Unit const * text, std::size_t from, std::size_t end, Unit first, Unit last,
                     std::size_t distance) noexcept {
    for (std::size_t index = from; index < end; ++index) {
        if (text[index] == first && text[index + distance] == last) {
            return index;
        }
    }
    return notFound;
}

} // namespace plain

namespace {

#if MORVANE_HAS_UNIT_BLOCK

template <typename Unit>
std::size_t findPair(Unit const * text, std::size_t from, std::size_t end, Unit first, Unit last,
                     std::size_t distance) noexcept {
    using Block = UnitBlock<Unit>;
    Block const firsts = Block::filled(first);
    Block const lasts = Block::filled(last);
    for (; end - from >= Block::count; from += Block::count) {
        Block const hits = Block::load(text + from).equal(firsts) & Block::load(text + from + distance).equal(lasts);
        if (unsigned const mask = hits.mask()) {
            return from + Block::firstIn(mask);
        }
    }
    return plain::findPair(text, from, end, first, last, distance);
}

#else

using plain::findPair;

#endif

/// Units compared in vain that a searcher forgives before it goes over to the two-way algorithm.
constexpr std::size_t forgivenDebt = 1024;

/// Where the largest suffix of `text` begins, in the order of the units or in the reverse one, and its period.
template <typename Unit>
std::size_t findLargestSuffix(TextView<Unit> text, bool isReversed, std::size_t & period) noexcept {
    // `start` is the suffix found so far, `rival` the one that is held against it, `step` the unit of both in question.
    std::size_t start = 0;
    std::size_t rival = 1;
    std::size_t step = 0;
    period = 1;
    while (rival + step < text.length) {
        Unit const ours = text[start + step];
        Unit const theirs = text[rival + step];
        if (ours == theirs) {
            if (++step == period) {
                rival += period;
                step = 0;
            }
        } else if ((theirs < ours) != isReversed) {
            rival += step + 1;
            step = 0;
            period = rival - start;
        } else {
            start = rival;
            ++rival;
            step = 0;
            period = 1;
        }
    }
    return start;
}

} // namespace

template <typename Unit>
std::size_t findUnit(TextView<Unit> text, std::type_identity_t<Unit> unit, std::size_t from) noexcept {
    if (from == text.length) {
        return notFound;
    }
    if constexpr (sizeof(Unit) == 1) {
        void const * const found = std::memchr(text.data + from, static_cast<unsigned char>(unit), text.length - from);
        return found == nullptr ? notFound : static_cast<std::size_t>(static_cast<Unit const *>(found) - text.data);
    }
#if MORVANE_HAS_UNIT_BLOCK
    using Block = UnitBlock<Unit>;
    Block const wanted = Block::filled(unit);
    Unit const * const data = text.data;
    // Four blocks at a turn keep the loads going in long texts.
    while (text.length - from >= 4 * Block::count) {
        Block const a = Block::load(data + from).equal(wanted);
        Block const b = Block::load(data + from + Block::count).equal(wanted);
        Block const c = Block::load(data + from + 2 * Block::count).equal(wanted);
        Block const d = Block::load(data + from + 3 * Block::count).equal(wanted);
        if (((a | b) | (c | d)).mask() != 0) {
            break;
        }
        from += 4 * Block::count;
    }
    for (; text.length - from >= Block::count; from += Block::count) {
        if (unsigned const mask = Block::load(data + from).equal(wanted).mask()) {
            return from + Block::firstIn(mask);
        }
    }
#endif
    return plain::findUnit(text, unit, from);
}

template <typename Unit>
std::size_t findOneOfFew(TextView<Unit> text, std::type_identity_t<TextView<Unit>> set, std::size_t from) noexcept {
#if MORVANE_HAS_UNIT_BLOCK
    using Block = UnitBlock<Unit>;
    if (text.length - from >= Block::count) {
        std::size_t const kinds = std::min<std::size_t>(set.length, 8);
        Block const first = Block::filled(set[0]);
        Block others[8] = {first, first, first, first, first, first, first, first};
        for (std::size_t kind = 1; kind < kinds; ++kind) {
            others[kind] = Block::filled(set[kind]);
        }
        do {
            Block const units = Block::load(text.data + from);
            Block hits = units.equal(first);
            for (std::size_t kind = 1; kind < kinds; ++kind) {
                hits = hits | units.equal(others[kind]);
            }
            if (unsigned const mask = hits.mask()) {
                return from + Block::firstIn(mask);
            }
            from += Block::count;
        } while (text.length - from >= Block::count);
    }
#endif
    return plain::findOneOfFew(text, set, from);
}

template <typename Unit>
std::size_t findOneOf(TextView<Unit> text, std::type_identity_t<TextView<Unit>> set, std::size_t from) noexcept {
    if (set.isEmpty()) {
        return notFound;
    }
    if (set.length <= 8) {
        return findOneOfFew(text, set, from);
    }
    // A bit for every unit there is: 8 KB for 16-bit text. It pays from a few thousand comparisons on.
    if (sizeof(Unit) > 1 && text.length - from <= 4096 / set.length) {
        for (std::size_t index = from; index < text.length; ++index) {
            if (findUnit(set, text[index]) != notFound) {
                return index;
            }
        }
        return notFound;
    }
    using Index = std::make_unsigned_t<Unit>;
    std::uint64_t wanted[(std::size_t{1} << 8 * sizeof(Unit)) / 64] = {};
    for (Unit const unit : set) {
        auto const index = static_cast<Index>(unit);
        wanted[index / 64] |= std::uint64_t{1} << index % 64;
    }
    for (; from < text.length; ++from) {
        auto const index = static_cast<Index>(text[from]);
        if ((wanted[index / 64] >> index % 64 & 1) != 0) {
            return from;
        }
    }
    return notFound;
}

template <typename Unit>
std::size_t findLastUnit(TextView<Unit> text, std::type_identity_t<Unit> unit) noexcept {
#if MORVANE_HAS_UNIT_BLOCK
    using Block = UnitBlock<Unit>;
    Block const wanted = Block::filled(unit);
    for (; text.length >= Block::count; text.length -= Block::count) {
        std::size_t const from = text.length - Block::count;
        if (unsigned const mask = Block::load(text.data + from).equal(wanted).mask()) {
            return from + Block::lastIn(mask);
        }
    }
#endif
    return plain::findLastUnit(text, unit);
}

template <typename Unit>
std::size_t countUnit(TextView<Unit> text, std::type_identity_t<Unit> unit) noexcept {
    // Counters as wide as a unit let the compiler count a register full of units at once.
    using Counter = std::make_unsigned_t<Unit>;
    constexpr std::size_t stretch = static_cast<Counter>(-1);
    std::size_t count = 0;
    for (std::size_t start = 0; start < text.length; start += stretch) {
        std::size_t const end = std::min(text.length, start + stretch);
        Counter hits = 0;
        for (std::size_t index = start; index < end; ++index) {
            hits = static_cast<Counter>(hits + (text[index] == unit ? 1 : 0));
        }
        count += hits;
    }
    return count;
}

template <typename Unit>
std::size_t findDifference(Unit const * left, Unit const * right, std::size_t count) noexcept {
    std::size_t index = 0;
#if MORVANE_HAS_UNIT_BLOCK
    using Block = UnitBlock<Unit>;
    for (; count - index >= Block::count; index += Block::count) {
        unsigned const mask = Block::load(left + index).equal(Block::load(right + index)).mask();
        if (mask != Block::fullMask) {
            return index + Block::firstIn(~mask);
        }
    }
#endif
    return index + plain::findDifference(left + index, right + index, count - index);
}

template <typename Unit>
TextSearcher<Unit> TextSearcher<Unit>::twoWay(TextView<Unit> text) noexcept {
    TextSearcher searcher(text);
    searcher.factor();
    return searcher;
}

template <typename Unit>
std::size_t TextSearcher<Unit>::find(TextView<Unit> text, std::size_t from) noexcept {
    if (sought.length > text.length - from) {
        return notFound;
    }
    if (sought.length < 2) {
        return sought.isEmpty() ? from : findUnit(text, sought[0], from);
    }
    if (isTwoWay) {
        return findTwoWay(text, from);
    }
    std::size_t const last = sought.length - 1;
    std::size_t const end = text.length - last;
    for (;;) {
        std::size_t const hit = findPair(text.data, from, end, sought[0], sought[last], last);
        if (hit == notFound) {
            return notFound;
        }
        std::size_t const same = findDifference(text.data + hit + 1, sought.data + 1, last - 1);
        if (same == last - 1) {
            return hit;
        }
        // A false start may cost as much as four times the way that was passed over; what goes beyond is debt.
        std::size_t const paid = 4 * (hit + 1 - from);
        debt = debt + same > paid ? debt + same - paid : 0;
        from = hit + 1;
        if (debt > forgivenDebt) {
            factor();
            return findTwoWay(text, from);
        }
    }
}

template <typename Unit>
void TextSearcher<Unit>::factor() noexcept {
    std::size_t forward = 0;
    std::size_t backward = 0;
    std::size_t const cutForward = findLargestSuffix(sought, false, forward);
    std::size_t const cutBackward = findLargestSuffix(sought, true, backward);
    cut = std::max(cutForward, cutBackward);
    period = cutForward > cutBackward ? forward : backward;
    isPeriodic = cut + period <= sought.length && sought.first(cut) == sought.part(period, cut);
    if (!isPeriodic) {
        period = std::max(cut, sought.length - cut) + 1;
    }
    isTwoWay = true;
}

template <typename Unit>
std::size_t TextSearcher<Unit>::findTwoWay(TextView<Unit> text, std::size_t from) const noexcept {
    // The units of `sought` that are known to match at `from`; only a periodic text can know any.
    std::size_t known = 0;
    while (text.length - from >= sought.length) {
        Unit const * const place = text.data + from;
        std::size_t const start = std::max(cut, known);
        // The first unit tells in most places.
        std::size_t const same = place[start] != sought[start]
                                     ? 0
                                     : findDifference(place + start, sought.data + start, sought.length - start);
        if (start + same < sought.length) {
            from += start + same - cut + 1;
            known = 0;
            continue;
        }
        std::size_t left = cut;
        while (left > known && place[left - 1] == sought[left - 1]) {
            --left;
        }
        if (left <= known) {
            return from;
        }
        from += period;
        known = isPeriodic ? sought.length - period : 0;
        if (from > text.length) {
            break;
        }
    }
    return notFound;
}

#define MORVANE_FOR_UNIT(Unit)                                                                                         \
    template std::size_t findUnit<Unit>(TextView<Unit>, Unit, std::size_t) noexcept;                                   \
    template std::size_t findOneOfFew<Unit>(TextView<Unit>, TextView<Unit>, std::size_t) noexcept;                     \
    template std::size_t findOneOf<Unit>(TextView<Unit>, TextView<Unit>, std::size_t) noexcept;                        \
    template std::size_t findLastUnit<Unit>(TextView<Unit>, Unit) noexcept;                                            \
    template std::size_t countUnit<Unit>(TextView<Unit>, Unit) noexcept;                                               \
    template std::size_t findDifference<Unit>(Unit const *, Unit const *, std::size_t) noexcept;                       \
    template class TextSearcher<Unit>;                                                                                 \
    template std::size_t plain::findUnit<Unit>(TextView<Unit>, Unit, std::size_t) noexcept;                            \
    template std::size_t plain::findOneOfFew<Unit>(TextView<Unit>, TextView<Unit>, std::size_t) noexcept;              \
    template std::size_t plain::findLastUnit<Unit>(TextView<Unit>, Unit) noexcept;                                     \
    template std::size_t plain::findDifference<Unit>(Unit const *, Unit const *, std::size_t) noexcept;

MORVANE_FOR_UNIT(unsigned short int)
MORVANE_FOR_UNIT(char)

#undef MORVANE_FOR_UNIT

} // namespace morvane
