#include <morvane/containers/list_block.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <morvane/platform/process_heap.h>

namespace morvane {

ListBlock * ListBlock::create(std::uint32_t entryCount) noexcept {
    constexpr std::size_t mostEntries = (std::numeric_limits<std::size_t>::max() - sizeof(ListBlock)) / sizeof(void *);
    std::size_t const entryTotal = entryCount;
    if (entryTotal > mostEntries) {
        return nullptr;
    }
    auto * const block =
        static_cast<ListBlock *>(platform::heapAllocate(sizeof(ListBlock) + entryTotal * sizeof(void *), true));
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
    if (!needMarks()) {
        return false;
    }
    marks[index] = true;
    return true;
}

bool ListBlock::replace(ListBlock * former, std::uint32_t entryCount) noexcept {
    if (former->marks != nullptr) {
        if (!needMarks()) {
            return false;
        }
        std::copy_n(former->marks, entryCount, marks);
    }
    std::copy_n(former->entries(), entryCount, entries());
    owners = former->owners;
    leftCount = former->leftCount;
    destroy(former);
    return true;
}

bool ListBlock::partFrom(ListBlock & former, std::uint32_t itemCount, bool takesItems) noexcept {
    bool const needsMarks = !takesItems || former.marks != nullptr;
    if ((needsMarks && !needMarks()) || (takesItems && !former.needMarks())) {
        return false;
    }
    if (!takesItems) {
        std::fill_n(marks, itemCount, true);
    } else {
        if (needsMarks) {
            std::copy_n(former.marks, itemCount, marks);
        }
        std::fill_n(former.marks, itemCount, true);
    }
    std::copy_n(former.entries(), itemCount, entries());
    return true;
}

bool ListBlock::needMarks() noexcept {
    if (marks == nullptr) {
        marks = static_cast<bool *>(platform::heapAllocate(capacity * sizeof(bool), true));
    }
    return marks != nullptr;
}

} // namespace morvane
