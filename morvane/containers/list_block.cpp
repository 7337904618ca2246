#include <morvane/containers/list_block.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <morvane/platform/process_heap.h>

namespace morvane {

ListBlock * ListBlock::create(std::uint32_t entryCount) noexcept {
    constexpr std::size_t mostEntries = (std::numeric_limits<std::size_t>::max() - sizeof(ListBlock)) / sizeof(void *);
    if (entryCount > mostEntries) {
        return nullptr;
    }
    auto * const block = static_cast<ListBlock *>(
        platform::heapAllocate(sizeof(ListBlock) + std::size_t{entryCount} * sizeof(void *), true));
    if (block != nullptr) {
        block->capacity = entryCount;
        block->sharers = 1;
    }
    return block;
}

void ListBlock::destroy(ListBlock * block) noexcept {
    platform::heapFree(block->marks);
    platform::heapFree(block);
}

bool ListBlock::disclaim(std::uint32_t index) noexcept {
    // As many marks as entries, so that they are moved as seldom.
    if ((marks == nullptr || index >= marks->count) && !reserveMarks(capacity)) {
        return false;
    }
    flags()[index] = 1;
    return true;
}

void ListBlock::replace(ListBlock * former, std::uint32_t entryCount) noexcept {
    std::memcpy(entries(), former->entries(), std::size_t{entryCount} * sizeof(void *));
    marks = former->marks;
    owners = former->owners;
    leftCount = former->leftCount;
    former->marks = nullptr;
    destroy(former);
}

bool ListBlock::partFrom(ListBlock & former, std::uint32_t itemCount, bool takesItems) noexcept {
    if ((!takesItems || former.marks != nullptr) && !reserveMarks(itemCount)) {
        return false;
    }
    if (takesItems && !former.reserveMarks(itemCount)) {
        return false;
    }
    if (!takesItems) {
        std::fill_n(flags(), itemCount, std::uint8_t{1});
    } else {
        if (marks != nullptr) {
            std::copy_n(former.flags(), itemCount, flags());
        }
        std::fill_n(former.flags(), itemCount, std::uint8_t{1});
    }
    std::copy_n(former.entries(), itemCount, entries());
    return true;
}

bool ListBlock::reserveMarks(std::uint32_t count) noexcept {
    if (marks != nullptr && marks->count >= count) {
        return true;
    }
    Marks * const grown = createMarks(count);
    if (grown == nullptr) {
        return false;
    }
    if (marks != nullptr) {
        std::copy_n(flags(), marks->count, flagsOf(grown));
        platform::heapFree(marks);
    }
    marks = grown;
    return true;
}

ListBlock::Marks * ListBlock::createMarks(std::uint32_t count) noexcept {
    auto * const created = static_cast<Marks *>(platform::heapAllocate(sizeof(Marks) + count, true));
    if (created != nullptr) {
        created->count = count;
    }
    return created;
}

} // namespace morvane
