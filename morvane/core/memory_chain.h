// What the copies of a pool share.
#pragma once

#include <atomic>
#include <cstdint>
#include <morvane/core/memory_block.h>
#include <morvane/core/node_index.h>
#include <morvane/platform/critical_section.h>

namespace morvane {

/// The chain of nodes of a pool, its lock, and the number of pools that share it.
///
/// A chain of a few nodes is walked; a longer one has an index, which is built at the first walk that gets long. The
/// chain itself is what counts: a change that the index does not follow clears it, and what it says is held against the
/// nodes.
class MemoryChain {
public:
    using Node = _MemoryBlock::_MemoryNode;

    /// The bytes of the areas of a node, and of all of it.
    struct Geometry {
        std::uint32_t headBytes;
        std::uint32_t dataBytes;
        std::uint32_t nodeBytes;

        /// Whether the address lies in the data of the node or just behind it.
        bool holds(Node const * node, void const * address) const {
            return reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(node) - headBytes
                   <= dataBytes;
        }
    };

    /// A chain without a node, for one sharer; null when there is no memory.
    static MemoryChain * create() noexcept;
    /// Gives the memory of the chain back, not that of its nodes.
    static void destroy(MemoryChain * chain) noexcept;

    Node * firstNode() const { return first; }
    /// Makes the chain begin with another node.
    void setFirst(Node * node);

    /// The first node with a free unit; null when there is none. `nodeBytes`: of every node.
    Node * findOpen(std::uint32_t nodeBytes) {
        return firstOpen != nullptr && firstOpen->freeCount != 0 ? firstOpen : findOpenSlowly(nodeBytes);
    }
    /// The node that `geometry` tells to hold the address; null when there is none.
    Node * findHolder(void const * address, Geometry geometry) {
        return recent != nullptr && geometry.holds(recent, address) ? recent : findHolderSlowly(address, geometry);
    }

    Node * findLast() const;
    /// The node in front; null for the first one, and for one outside the chain.
    Node * findPrevious(Node const * node) const;

    void insertAfter(Node * node, Node * inserted);
    void remove(Node * node);

    /// The node has its first free unit again, or has lost its last one.
    void noteOpen(Node const * node);
    void noteFull(Node const * node);
    /// The node's memory goes.
    void noteDestroyed(Node const * node);

    _RTL_CRITICAL_SECTION protect;
    std::atomic<std::uint32_t> sharers{1};

private:
    Node * findOpenSlowly(std::uint32_t nodeBytes);
    Node * findOpenInIndex();
    Node * findHolderSlowly(void const * address, Geometry geometry);
    /// What the last node that the index knows leads to: null, unless somebody has linked nodes himself.
    Node * behindIndex() const;
    NodeIndex::Slot slotOf(Node const * node) const;
    void forgetIndex();

    Node * first = nullptr;
    /// The first node with a free unit, as far as nobody has opened another one since; null when it must be searched.
    Node * firstOpen = nullptr;
    /// The node that held an address last; units tend to come back in the order in which they lie.
    Node * recent = nullptr;
    NodeIndex index;
};

} // namespace morvane
