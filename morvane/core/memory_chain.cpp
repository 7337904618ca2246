#include <morvane/core/memory_chain.h>

#include <morvane/platform/process_heap.h>
#include <new>

namespace morvane {
namespace {

/// Nodes that a walk may pass before an index is worth its memory.
constexpr int mostPlainSteps = 1;

} // namespace

MemoryChain * MemoryChain::create() noexcept {
    void * const block = platform::heapAllocate(sizeof(MemoryChain), false);
    return block != nullptr ? new (block) MemoryChain : nullptr;
}

void MemoryChain::destroy(MemoryChain * chain) noexcept {
    if (chain != nullptr) {
        chain->~MemoryChain();
        platform::heapFree(chain);
    }
}

void MemoryChain::setFirst(Node * node) {
    first = node;
    forgetIndex();
}

MemoryChain::Node * MemoryChain::findOpenSlowly(std::uint32_t nodeBytes) {
    Node * node = first;
    if (!index.isBuilt()) {
        for (int steps = 0; node != nullptr && node->freeCount == 0 && steps < mostPlainSteps; ++steps) {
            node = node->next;
        }
        if (node != nullptr && node->freeCount == 0) {
            index.build(first, nodeBytes);
        }
    }
    if (index.isBuilt()) {
        node = findOpenInIndex();
    } else {
        while (node != nullptr && node->freeCount == 0) {
            node = node->next;
        }
    }
    firstOpen = node;
    firstOpenSlot = slotOf(node);
    return node;
}

MemoryChain::Node * MemoryChain::findOpenInIndex() {
    for (NodeIndex::Slot slot = index.firstOpen(); slot != NodeIndex::none; slot = index.firstOpen()) {
        if (Node * const node = index.nodeAt(slot); node->freeCount != 0) {
            return node;
        }
        index.setFull(slot);
    }
    // Nodes that nobody told of may stand behind the last one.
    Node * node = behindIndex();
    if (node != nullptr) {
        forgetIndex();
        while (node != nullptr && node->freeCount == 0) {
            node = node->next;
        }
    }
    return node;
}

MemoryChain::Node * MemoryChain::findHolderSlowly(void const * address, NodeGeometry geometry) {
    Node * node = first;
    if (!index.isBuilt()) {
        for (int steps = 0; node != nullptr && !geometry.holds(node, address) && steps < mostPlainSteps; ++steps) {
            node = node->next;
        }
        if (node != nullptr && !geometry.holds(node, address)) {
            forgetOpen(); // it is known without its slot
            index.build(first, geometry.nodeBytes);
        }
    }
    NodeIndex::Slot slot = NodeIndex::none;
    if (index.isBuilt()) {
        slot = index.find(address);
        node = slot != NodeIndex::none ? index.nodeAt(slot) : behindIndex();
    }
    while (node != nullptr && !geometry.holds(node, address)) {
        node = index.isBuilt() && slotOf(node) != NodeIndex::none ? nullptr : node->next;
    }
    recent = node;
    recentSlot = slot;
    return node;
}

MemoryChain::Node * MemoryChain::findLast() const {
    Node * node = index.lastSlot() != NodeIndex::none ? index.nodeAt(index.lastSlot()) : first;
    while (node != nullptr && node->next != nullptr) {
        node = node->next;
    }
    return node;
}

MemoryChain::Node * MemoryChain::findPrevious(Node const * node) const {
    if (NodeIndex::Slot const slot = slotOf(node); slot != NodeIndex::none) {
        NodeIndex::Slot const previous = index.previousOf(slot);
        if (previous != NodeIndex::none && index.nodeAt(previous)->next == node) {
            return index.nodeAt(previous);
        }
    }
    Node * previous = first;
    while (previous != nullptr && previous->next != node) {
        previous = previous->next;
    }
    return node != nullptr ? previous : nullptr;
}

void MemoryChain::insertAfter(Node * node, Node * inserted) {
    if (node == nullptr || inserted == nullptr) {
        return;
    }
    inserted->next = node->next;
    node->next = inserted;
    forgetOpen();
    if (!index.isBuilt()) {
        return;
    }
    bool const isAtEnd = inserted->next == nullptr && index.lastSlot() != NodeIndex::none
                         && index.nodeAt(index.lastSlot()) == node && slotOf(inserted) == NodeIndex::none;
    if (!isAtEnd || !index.append(inserted)) {
        forgetIndex();
    }
}

void MemoryChain::remove(Node * node) {
    if (node == nullptr) {
        return;
    }
    if (first == node) {
        first = node->next;
    } else if (Node * const previous = findPrevious(node); previous != nullptr) {
        previous->next = node->next;
    } else {
        return;
    }
    if (NodeIndex::Slot const slot = slotOf(node); slot != NodeIndex::none) {
        index.remove(slot);
    }
    noteDestroyed(node);
}

void MemoryChain::noteOpenSlowly(Node * node) {
    forgetOpen();
    if (NodeIndex::Slot const slot = slotOf(node); slot != NodeIndex::none) {
        index.setOpen(slot);
    }
}

void MemoryChain::noteDestroyed(Node const * node) {
    if (recent == node) {
        recent = nullptr;
    }
    if (firstOpen == node || nextOpen == node) {
        forgetOpen();
    }
    if (slotOf(node) != NodeIndex::none) {
        forgetIndex(); // it goes without having been removed
    }
}

MemoryChain::Node * MemoryChain::behindIndex() const {
    return index.lastSlot() != NodeIndex::none ? index.nodeAt(index.lastSlot())->next : first;
}

NodeIndex::Slot MemoryChain::slotOf(Node const * node) const {
    return index.isBuilt() && node != nullptr ? index.slotOf(node) : NodeIndex::none;
}

void MemoryChain::forgetOpen() {
    firstOpen = nullptr;
    nextOpen = nullptr;
}

void MemoryChain::forgetIndex() {
    forgetOpen();
    recent = nullptr;
    index.clear();
}

} // namespace morvane
