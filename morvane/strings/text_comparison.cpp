#include <morvane/strings/text_comparison.h>

#include <cstddef>
#include <morvane/strings/unit_block.h>
#include <type_traits>

namespace morvane {

namespace {

template <bool FoldsCase, typename Unit>
std::int32_t foldUnit(Unit unit) noexcept {
    std::int32_t const value = static_cast<std::make_unsigned_t<Unit>>(unit);
    return FoldsCase && value >= 'A' && value <= 'Z' ? value + ('a' - 'A') : value;
}

template <bool FoldsCase, typename Unit>
std::int32_t compareUnits(Unit const * left, Unit const * right, std::size_t from) noexcept {
    for (;; ++from) {
        std::int32_t const difference = foldUnit<FoldsCase>(left[from]) - foldUnit<FoldsCase>(right[from]);
        if (difference != 0 || left[from] == 0) {
            return difference;
        }
    }
}

#if MORVANE_READS_TO_PAGE_END

/// True when a block from `unit` on would go beyond the page of its first byte. No page is smaller than that.
bool crossesPage(void const * unit) noexcept {
    return reinterpret_cast<std::uintptr_t>(unit) % 4096 > 4096 - 16;
}

#endif

template <bool FoldsCase, typename Unit>
std::int32_t compareBlocks(Unit const * left, Unit const * right) noexcept {
    std::size_t from = 0;
#if MORVANE_READS_TO_PAGE_END
    using Block = UnitBlock<Unit>;
    Block const zero = Block::filled(0);
    // Most pairs differ at once.
    while (foldUnit<FoldsCase>(left[from]) == foldUnit<FoldsCase>(right[from]) && left[from] != 0) {
        if (crossesPage(left + from) || crossesPage(right + from)) {
            ++from;
            continue;
        }
        Block const ours = Block::load(left + from);
        Block const theirs = Block::load(right + from);
        unsigned same = FoldsCase ? ours.lowered().equal(theirs.lowered()).mask() : ours.equal(theirs).mask();
        same &= ~ours.equal(zero).mask();
        if (same != Block::fullMask) {
            from += Block::firstIn(~same);
            break;
        }
        from += Block::count;
    }
#endif
    return compareUnits<FoldsCase>(left, right, from);
}

} // namespace

template <typename Unit>
std::int32_t compareText(Unit const * left, Unit const * right) noexcept {
    return compareBlocks<false>(left, right);
}

template <typename Unit>
std::int32_t compareTextNoCase(Unit const * left, Unit const * right) noexcept {
    return compareBlocks<true>(left, right);
}

template <typename Unit>
std::int32_t plain::compareText(Unit const * left, Unit const * right) noexcept {
    return compareUnits<false>(left, right, 0);
}

template <typename Unit>
std::int32_t plain::compareTextNoCase(Unit const * left, Unit const * right) noexcept {
    return compareUnits<true>(left, right, 0);
}

template std::int32_t compareText<unsigned short int>(unsigned short int const *, unsigned short int const *) noexcept;
template std::int32_t compareText<char>(char const *, char const *) noexcept;
template std::int32_t compareTextNoCase<unsigned short int>(unsigned short int const *,
                                                            unsigned short int const *) noexcept;
template std::int32_t compareTextNoCase<char>(char const *, char const *) noexcept;
template std::int32_t plain::compareText<unsigned short int>(unsigned short int const *,
                                                             unsigned short int const *) noexcept;
template std::int32_t plain::compareText<char>(char const *, char const *) noexcept;
template std::int32_t plain::compareTextNoCase<unsigned short int>(unsigned short int const *,
                                                                   unsigned short int const *) noexcept;
template std::int32_t plain::compareTextNoCase<char>(char const *, char const *) noexcept;

} // namespace morvane
