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

    std::size_t size() const noexcept { return static_cast<std::size_t>(behind - items); }
    bool isEmpty() const noexcept { return behind == items; }
    Item & top() noexcept { return behind[-1]; }
    void pop() noexcept { --behind; }
    /// The items from `first` on, which stay where they are until the next push.
    Item * from(std::size_t first) noexcept { return items + first; }
    Item const * from(std::size_t first) const noexcept { return items + first; }
    /// Lets go of the items from `first` on.
    void cut(std::size_t first) noexcept { behind = items + first; }

    /// False, with the stack as it was, when the heap refuses.
    [[nodiscard]] bool push(Item const & item) noexcept {
        if (behind == limit && !grow()) [[unlikely]] {
            return false;
        }
        *behind++ = item;
        return true;
    }

private:
    bool grow() noexcept {
        std::size_t const count = size();
        auto * const block = static_cast<Item *>(platform::heapAllocate(2 * count * sizeof(Item), false));
        if (block == nullptr) {
            return false;
        }
        std::memcpy(block, items, count * sizeof(Item));
        if (items != local) {
            platform::heapFree(items);
        }
        items = block;
        behind = block + count;
        limit = block + 2 * count;
        return true;
    }

    Item local[Local];
    Item * items = local;
    Item * behind = local;
    Item * limit = local + Local;
};

} // namespace morvane
