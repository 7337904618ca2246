// Puts a long text together.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <morvane/platform/process_heap.h>
#include <morvane/strings/text_storage.h>
#include <morvane/strings/text_view.h>

namespace morvane {

/// A text that grows at its end and is handed over once, at exact size.
///
/// Cost: constant time a unit on the average; the block is scratch from the process heap and counts nowhere; short
/// texts need none. The hand-over copies once. Errors: when the heap refuses a block, what was gathered is let go,
/// further units are ignored, and the text that it is handed to ends released.
template <typename Unit>
class TextBuilder {
public:
    TextBuilder() noexcept = default;
    TextBuilder(TextBuilder const &) = delete;
    ~TextBuilder() { releaseBlock(); }

    TextBuilder & operator=(TextBuilder const &) = delete;

    std::size_t length() const noexcept { return used; }
    /// What was gathered so far; valid until the next change.
    TextView<Unit> view() const noexcept { return {units, used}; }
    /// True when the heap refused a block since the start or the last `clear`.
    bool hasFailed() const noexcept { return failed; }

    /// Forgets what was gathered and keeps the block.
    void clear() noexcept {
        used = 0;
        failed = false;
    }
    /// Makes the first `count` units all that was gathered; `count` is not above the length.
    void truncate(std::size_t count) noexcept { used = count; }

    /// Makes room for `count` more units at once.
    void reserve(std::size_t count) noexcept {
        if (count > capacity - used) {
            grow(count);
        }
    }

    /// `count` units at the end, to be written by the caller; null when the heap refused.
    Unit * extend(std::size_t count) noexcept {
        reserve(count);
        if (failed) {
            return nullptr;
        }
        Unit * const end = units + used;
        used += count;
        return end;
    }

    /// Appends units that do not lie in this builder.
    void append(TextView<Unit> text) noexcept {
        if (Unit * const end = extend(text.length)) {
            std::copy_n(text.data, text.length, end);
        }
    }
    void append(Unit unit) noexcept {
        if (Unit * const end = extend(1)) {
            *end = unit;
        }
    }
    void append(Unit unit, std::size_t count) noexcept {
        if (Unit * const end = extend(count)) {
            std::fill_n(end, count, unit);
        }
    }

    /// Makes `target` the text gathered, in a buffer of exactly its size, and starts anew. False when the heap refused:
    /// `target` is released then.
    template <typename String>
    bool moveTo(String & target) noexcept {
        Unit * const text = failed ? nullptr : allocateText<Unit>(used);
        if (text != nullptr) {
            std::memcpy(text, units, used * sizeof(Unit));
        }
        adoptText(target, text, used);
        releaseBlock();
        units = local;
        capacity = localCapacity;
        clear();
        return text != nullptr;
    }

private:
    static constexpr std::size_t localCapacity = 256 / sizeof(Unit);
    static constexpr std::size_t largestCapacity = std::numeric_limits<std::uint32_t>::max() / sizeof(Unit);

    void releaseBlock() noexcept {
        if (units != local) {
            platform::heapFree(units);
        }
    }

    void grow(std::size_t count) noexcept {
        if (failed) {
            return;
        }
        Unit * block = nullptr;
        std::size_t wanted = 0;
        // No text class holds more than that, so that sizes cannot overflow here.
        if (count <= largestCapacity - used) {
            wanted = std::min(std::max(used + count, 2 * capacity), largestCapacity);
            block = static_cast<Unit *>(platform::heapAllocate(wanted * sizeof(Unit), false));
        }
        if (block != nullptr) {
            std::memcpy(block, units, used * sizeof(Unit));
        }
        releaseBlock();
        failed = block == nullptr;
        units = failed ? local : block;
        capacity = failed ? 0 : wanted;
        used = failed ? 0 : used;
    }

    Unit local[localCapacity];
    Unit * units = local;
    std::size_t used = 0;
    std::size_t capacity = localCapacity;
    bool failed = false;
};

using WideBuilder = TextBuilder<unsigned short int>;
using DataBuilder = TextBuilder<char>;

} // namespace morvane
