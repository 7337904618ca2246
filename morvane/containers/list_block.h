// The block behind the list of an array: a head, and the entries behind it.
#pragma once

#include <cstdint>
#include <utility>

namespace morvane {

/// What the arrays that share a list know in common.
///
/// An entry is bare when its item belongs to another list, or to another entry: nobody deletes it here. Blocks come
/// from the process heap.
class ListBlock {
public:
    /// A block of `entryCount` null entries for one sharer that owns no items; null when the heap refuses.
    static ListBlock * create(std::uint32_t entryCount) noexcept;
    static void destroy(ListBlock * block) noexcept;

    /// The block of a list, which is not null.
    static ListBlock & of(void ** list) noexcept { return *(reinterpret_cast<ListBlock *>(list) - 1); }
    void ** entries() noexcept { return reinterpret_cast<void **>(this + 1); }

    bool hasMarks() const noexcept { return marks != nullptr; }
    bool isBare(std::uint32_t index) const noexcept { return marks != nullptr && marks[index]; }
    /// The entry at `index` has a new item, which belongs here.
    void claim(std::uint32_t index) noexcept {
        if (marks != nullptr) {
            marks[index] = false;
        }
    }
    /// The entry at `index` has an item that belongs elsewhere; false when the heap refuses.
    bool disclaim(std::uint32_t index) noexcept;
    void swapEntries(std::uint32_t first, std::uint32_t second) noexcept {
        std::swap(entries()[first], entries()[second]);
        if (marks != nullptr) {
            std::swap(marks[first], marks[second]);
        }
    }

    /// Takes head and entries of `former`, whose only sharer goes over to this block, and destroys it. False when the
    /// heap refuses, with nothing changed.
    bool replace(ListBlock * former, std::uint32_t entryCount) noexcept;
    /// Takes the first `itemCount` entries of `former`, where others stay behind; `takesItems` tells whether the items
    /// are bare there or here from now on. False when the heap refuses, with nothing changed.
    bool partFrom(ListBlock & former, std::uint32_t itemCount, bool takesItems) noexcept;

private:
    bool needMarks() noexcept;

    /// Whether each entry is bare; null when none is.
    bool * marks;

public:
    /// Entries of the block; a list may be seen as shorter.
    std::uint32_t capacity;
    /// Arrays that have this list.
    std::uint32_t sharers;
    /// Those among them that delete the items.
    std::uint32_t owners;
    /// The largest count of an owner that left while others stayed: up to there items may wait for the last one.
    std::uint32_t leftCount;
};

} // namespace morvane
