#include <morvane/core/node_index.h>

#include <algorithm>
#include <bit>
#include <limits>
#include <memory>
#include <morvane/platform/process_heap.h>

namespace morvane {
namespace {

constexpr std::size_t wordBits = 64;

/// Slots of a new index: room for as many nodes again.
constexpr std::size_t leastCapacity = 64;

std::uintptr_t addressOf(void const * pointer) {
    return reinterpret_cast<std::uintptr_t>(pointer);
}

} // namespace

bool NodeIndex::build(Node * first, std::uint32_t bytesOfNode) noexcept {
    clear();
    std::size_t count = 0;
    for (Node const * node = first; node != nullptr; node = node->next) {
        ++count;
    }
    if (count > none / 4) {
        return false;
    }
    std::size_t const slots = std::max(std::bit_ceil(count * 2), leastCapacity);
    std::size_t const entryCount = slots * 2;
    std::size_t words = 0;
    std::size_t levelWords[mostLevels]{};
    levelCount = 0;
    for (std::size_t length = slots; levelCount == 0 || length > 1;) {
        length = (length + wordBits - 1) / wordBits;
        levelWords[levelCount++] = length;
        words += length;
    }
    std::size_t const bytes = words * sizeof(std::uint64_t) + slots * sizeof(Record) + entryCount * sizeof(Entry);
    storage = platform::heapAllocate(bytes, true);
    if (storage == nullptr) {
        return false;
    }
    auto * word = static_cast<std::uint64_t *>(storage);
    for (std::size_t level = 0; level < levelCount; ++level) {
        levels[level] = word;
        word += levelWords[level];
    }
    records = reinterpret_cast<Record *>(word);
    entries = reinterpret_cast<Entry *>(records + slots);
    entryMask = entryCount - 1;
    hashShift = std::numeric_limits<std::uint64_t>::digits - std::countr_zero(std::uint64_t{entryCount});
    granuleShift = static_cast<int>(std::bit_width(bytesOfNode - 1));
    nodeBytes = bytesOfNode;
    capacity = static_cast<Slot>(slots);
    for (Node * node = first; node != nullptr; node = node->next) {
        append(node);
    }
    return true;
}

void NodeIndex::clear() noexcept {
    platform::heapFree(storage);
    storage = nullptr;
    capacity = 0;
    usedSlots = 0;
    last = none;
    open = none;
}

bool NodeIndex::append(Node * node) noexcept {
    if (usedSlots == capacity) {
        return false;
    }
    Slot const slot = usedSlots++;
    records[slot] = {node, last, none};
    if (last != none) {
        records[last].next = slot;
    }
    last = slot;
    enter(node, slot);
    if (node->freeCount != 0) {
        setOpen(slot);
    }
    return true;
}

void NodeIndex::remove(Slot slot) noexcept {
    Record const record = records[slot];
    setFull(slot);
    erase(record.node);
    if (record.previous != none) {
        records[record.previous].next = record.next;
    }
    (record.next != none ? records[record.next].previous : last) = record.previous;
    if (slot + 1 == usedSlots) {
        --usedSlots; // a node that comes and goes at the end takes no further slots
    }
}

NodeIndex::Slot NodeIndex::find(void const * address) const noexcept {
    std::uintptr_t const granule = addressOf(address) >> granuleShift;
    for (std::uintptr_t const candidate : {granule, granule - 1}) {
        for (std::size_t place = homeOf(candidate); entries[place].node != nullptr; place = (place + 1) & entryMask) {
            if (addressOf(address) - addressOf(entries[place].node) < nodeBytes) {
                return entries[place].slot;
            }
        }
    }
    return none;
}

void NodeIndex::setOpen(Slot slot) noexcept {
    std::size_t place = slot;
    for (std::size_t level = 0; level < levelCount; ++level, place /= wordBits) {
        std::uint64_t & word = levels[level][place / wordBits];
        bool const wasEmpty = word == 0;
        word |= std::uint64_t{1} << (place % wordBits);
        if (!wasEmpty) {
            break;
        }
    }
    open = std::min(open, slot);
}

void NodeIndex::setFull(Slot slot) noexcept {
    std::size_t place = slot;
    for (std::size_t level = 0; level < levelCount; ++level, place /= wordBits) {
        std::uint64_t & word = levels[level][place / wordBits];
        word &= ~(std::uint64_t{1} << (place % wordBits));
        if (word != 0) {
            break;
        }
    }
    if (slot == open) {
        open = findFirstOpen();
    }
}

void NodeIndex::enter(Node * node, Slot slot) {
    std::size_t place = homeOf(node);
    while (entries[place].node != nullptr) {
        place = (place + 1) & entryMask;
    }
    entries[place] = {node, slot};
}

void NodeIndex::erase(Node const * node) {
    std::size_t hole = homeOf(node);
    while (entries[hole].node != node) {
        hole = (hole + 1) & entryMask;
    }
    // What stands behind the hole moves into it, unless its home lies behind the hole.
    for (std::size_t place = (hole + 1) & entryMask; entries[place].node != nullptr; place = (place + 1) & entryMask) {
        std::size_t const home = homeOf(entries[place].node);
        if (((place - home) & entryMask) >= ((place - hole) & entryMask)) {
            entries[hole] = entries[place];
            hole = place;
        }
    }
    entries[hole].node = nullptr;
}

NodeIndex::Slot NodeIndex::findFirstOpen() const {
    std::size_t place = 0;
    for (std::size_t level = levelCount; level-- != 0;) {
        std::uint64_t const word = levels[level][place];
        if (word == 0) {
            return none;
        }
        place = place * wordBits + static_cast<std::size_t>(std::countr_zero(word));
    }
    return static_cast<Slot>(place);
}

} // namespace morvane
