// What the copies of a pool share.
#pragma once

#include <atomic>
#include <cstdint>
#include <morvane/core/memory_block.h>
#include <morvane/core/node_index.h>
#include <morvane/platform/critical_section.h>

namespace morvane {

/// The bytes of the areas of a node, of one part, and of all of it.
struct NodeGeometry {
    std::uint32_t headBytes;
    std::uint32_t partBytes;
    std::uint32_t dataBytes;
    std::uint32_t nodeBytes;

    /// Whether the address lies in the data of the node or just behind it.
    bool holds(_MemoryBlock::_MemoryNode const * node, void const * address) const {
        return reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(node) - headBytes
               <= dataBytes;
    }
};

/// The chain of nodes of a pool, its lock, and the number of pools that share it.
///
/// A chain of a few nodes is walked; a longer one has an index, which is built at the first walk that gets long. The
/// chain itself is what counts: a change that the index does not follow clears it, and what it says is held against the
/// nodes.
class MemoryChain {
public:
    using Node = _MemoryBlock::_MemoryNode;

    /// A chain without a node, for one sharer; null when there is no memory.
    static MemoryChain * create() noexcept;
    /// Gives the memory of the chain back, not that of its nodes.
    static void destroy(MemoryChain * chain) noexcept;

    Node * firstNode() const { return first; }
    /// Makes the chain begin with another node.
    void setFirst(Node * node);

    /// The first node with a free unit; null when there is none.
    Node * findOpen(NodeGeometry geometry) {
        return firstOpen != nullptr && firstOpen->freeCount != 0 ? firstOpen : findOpenSlowly(geometry.nodeBytes);
    }
    /// The node that `geometry` tells to hold the address; null when there is none.
    Node * findHolder(void const * address, NodeGeometry geometry) {
        return recent != nullptr && geometry.holds(recent, address) ? recent : findHolderSlowly(address, geometry);
    }
    /// The same for the address of a part, which says itself that it is the part of that number in its node.
    Node * findHolder(void const * part, std::uint32_t number, NodeGeometry geometry) {
        auto * const node = reinterpret_cast<Node *>(reinterpret_cast<std::uintptr_t>(part) - geometry.headBytes
                                                     - std::uintptr_t{number} * geometry.partBytes);
        if (number * std::uint64_t{geometry.partBytes} < geometry.dataBytes) [[likely]] {
            if (node == recent && node != nullptr) {
                return node;
            }
            if (index.isBuilt()) {
                if (NodeIndex::Slot const slot = index.slotOf(node); slot != NodeIndex::none) [[likely]] {
                    recent = node;
                    recentSlot = slot;
                    return node;
                }
            }
        }
        return findHolderSlowly(part, geometry);
    }

    Node * findLast() const;
    /// The node in front; null for the first one, and for one outside the chain.
    Node * findPrevious(Node const * node) const;

    void insertAfter(Node * node, Node * inserted);
    void remove(Node * node);

    /// The node has its first free unit again, or has lost its last one.
    void noteOpen(Node * node) {
        if (node != recent || recentSlot == NodeIndex::none || firstOpen == nullptr) [[unlikely]] {
            noteOpenSlowly(node);
            return;
        }
        // A node that is full again keeps its mark until a search comes by.
        if (!index.isOpen(recentSlot)) [[unlikely]] {
            index.setOpen(recentSlot);
        }
        if (recentSlot < firstOpenSlot) {
            nextOpen = firstOpen;
            nextOpenSlot = firstOpenSlot;
            firstOpen = node;
            firstOpenSlot = recentSlot;
        } else if (recentSlot < nextOpenSlot && nextOpen != nullptr) {
            nextOpen = node;
            nextOpenSlot = recentSlot;
        }
    }
    void noteFull(Node const * node) {
        if (node == firstOpen) [[likely]] {
            firstOpen = nextOpen;
            firstOpenSlot = nextOpenSlot;
            nextOpen = nullptr;
        } else if (node == nextOpen) {
            nextOpen = nullptr;
        }
    }
    /// The node's memory goes.
    void noteDestroyed(Node const * node);

    _RTL_CRITICAL_SECTION protect;
    std::atomic<std::uint32_t> sharers{1};

private:
    void noteOpenSlowly(Node * node);
    Node * findOpenSlowly(std::uint32_t nodeBytes);
    Node * findOpenInIndex();
    Node * findHolderSlowly(void const * address, NodeGeometry geometry);
    /// What the last node that the index knows leads to: null, unless somebody has linked nodes himself.
    Node * behindIndex() const;
    NodeIndex::Slot slotOf(Node const * node) const;
    void forgetOpen();
    void forgetIndex();

    Node * first = nullptr;
    /// The first node with a free unit, and the second; null when it must be searched. The slots of both, where the
    /// index is built.
    Node * firstOpen = nullptr;
    Node * nextOpen = nullptr;
    NodeIndex::Slot firstOpenSlot = NodeIndex::none;
    NodeIndex::Slot nextOpenSlot = NodeIndex::none;
    /// The node that held an address last, and its slot, if that is known; units tend to come back in the order in
    /// which they lie.
    Node * recent = nullptr;
    NodeIndex::Slot recentSlot = NodeIndex::none;
    NodeIndex index;
};

} // namespace morvane
