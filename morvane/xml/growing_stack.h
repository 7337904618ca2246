// The stack of a walk down a tree, on the heap where the tree is deep.
#pragma once

#include <cstddef>
#include <cstring>
#include <morvane/platform/process_heap.h>
#include <type_traits>

namespace morvane {

/// A stack of plain items; the first `Local` of them need no heap. Errors: nothing is raised.
template <typename Item, std::size_t Local>
class GrowingStack {
    static_assert(std::is_trivially_copyable_v<Item> && std::is_trivially_destructible_v<Item>);

public:
    GrowingStack() noexcept = default;
    GrowingStack(GrowingStack const &) = delete;
    ~GrowingStack() {
        if (items != local) {
            platform::heapFree(items);
        }
    }

    GrowingStack & operator=(GrowingStack const &) = delete;

    std::size_t size() const noexcept { return count; }
    bool isEmpty() const noexcept { return count == 0; }
    Item & top() noexcept { return items[count - 1]; }
    void pop() noexcept { --count; }
    /// The items from `first` on, which stay where they are until the next push.
    Item * from(std::size_t first) noexcept { return items + first; }
    Item const * from(std::size_t first) const noexcept { return items + first; }
    /// Lets go of the items from `first` on.
    void cut(std::size_t first) noexcept { count = first; }

    /// False, with the stack as it was, when the heap refuses.
    [[nodiscard]] bool push(Item const & item) noexcept {
        if (count == capacity && !grow()) {
            return false;
        }
        items[count++] = item;
        return true;
    }

private:
    bool grow() noexcept {
        auto * const block = static_cast<Item *>(platform::heapAllocate(2 * capacity * sizeof(Item), false));
        if (block == nullptr) {
            return false;
        }
        std::memcpy(block, items, count * sizeof(Item));
        if (items != local) {
            platform::heapFree(items);
        }
        items = block;
        capacity *= 2;
        return true;
    }

    Item local[Local];
    Item * items = local;
    std::size_t count = 0;
    std::size_t capacity = Local;
};

} // namespace morvane
