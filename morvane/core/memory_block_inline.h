// The short ways through a pool, for the pool itself and the manager above it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <morvane/core/checks.h>
#include <morvane/core/memory_block.h>
#include <morvane/core/memory_chain.h>
#include <morvane/platform/critical_section_guard.h>

namespace morvane {

inline constexpr std::uint32_t partHeaderBytes = 8;
static_assert(sizeof(_MemoryBlock::_MemoryPart) == partHeaderBytes);

inline constexpr std::uint32_t nodeHeadBytes = 16;
static_assert(sizeof(_MemoryBlock::_MemoryNode) <= nodeHeadBytes);

inline constexpr std::uint32_t indexBytes = 2;

inline std::uint16_t loadIndex(void const * entry) {
    std::uint16_t index = 0;
    std::memcpy(&index, entry, sizeof(index));
    return index;
}

inline void storeIndex(void * entry, std::uint16_t index) {
    std::memcpy(entry, &index, sizeof(index));
}

/// Counts one more unit. The lock keeps other writers out; readers take none.
inline void countUnit(std::atomic<std::uint32_t> & units) {
    units.store(units.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}

} // namespace morvane

inline morvane::NodeGeometry _MemoryBlock::geometry() const {
    std::uint32_t const partBytes = unitSize + morvane::partHeaderBytes;
    std::uint32_t const dataBytes = partBytes * unitCount;
    return {morvane::nodeHeadBytes, partBytes, dataBytes,
            morvane::nodeHeadBytes + dataBytes + morvane::indexBytes * unitCount};
}

inline void * _MemoryBlock::takeUnit(_MemoryNode * node, bool zeroFill) {
    if (node == nullptr || node->freeCount == 0) [[unlikely]] {
        return nullptr;
    }
    std::uint32_t const place = node->freeCount - 1;
    node->freeCount = place;
    if (place == 0 && chain != nullptr) [[unlikely]] {
        chain->noteFull(node);
    }
    morvane::NodeGeometry const sizes = geometry();
    char * const data = reinterpret_cast<char *>(node) + sizes.headBytes;
    std::size_t const index = morvane::loadIndex(data + sizes.dataBytes + std::size_t{place} * morvane::indexBytes);
    char * const unit = data + index * sizes.partBytes + morvane::partHeaderBytes;
    if (zeroFill) {
        std::memset(unit, 0, unitSize);
    }
    morvane::countUnit(allocationCount);
    return unit;
}

inline void _MemoryBlock::giveUnitBack(_MemoryPart * part, _MemoryNode * node) {
    if constexpr (morvane::isChecked) {
        if (node != nullptr && part != nullptr) {
            morvane::NodeUnits{node, geometry(), unitSize, unitCount}.checkRelease(part);
        }
    }
    if (node == nullptr || part == nullptr || node->freeCount >= unitCount) [[unlikely]] {
        return;
    }
    // A header that was overwritten must not bring an index outside the node onto the stack.
    std::uint16_t const index = morvane::loadIndex(part);
    if (index >= unitCount) [[unlikely]] {
        return;
    }
    morvane::NodeGeometry const sizes = geometry();
    std::uint32_t const place = node->freeCount;
    char * const stack = reinterpret_cast<char *>(node) + sizes.headBytes + sizes.dataBytes;
    morvane::storeIndex(stack + std::size_t{place} * morvane::indexBytes, index);
    node->freeCount = place + 1;
    if (place == 0 && chain != nullptr) [[unlikely]] {
        chain->noteOpen(node);
    }
    morvane::countUnit(unallocationCount);
}

inline void _MemoryBlock::takeBack(_MemoryPart * part, _MemoryNode * node) {
    if (node == nullptr) [[unlikely]] {
        if constexpr (morvane::isChecked) {
            if (memoryPartToPointer(part) != nullptr) {
                using namespace morvane::literals;
                morvane::stopForMisuse(u"misuse: a pointer was released to a pool that does not hold it\r\n"_w);
            }
        }
        return;
    }
    giveUnitBack(part, node);
    if (node->freeCount == unitCount && node != chain->firstNode()) [[unlikely]] {
        dropNode(node);
    }
}

inline void * _MemoryBlock::allocateUnit(bool zeroFill) {
    if (chain == nullptr) [[unlikely]] {
        return nullptr;
    }
    morvane::platform::CriticalSectionGuard const guard(chain->protect);
    _MemoryNode * node = chain->findOpen(geometry());
    if (node == nullptr) [[unlikely]] {
        node = addNode();
    }
    return takeUnit(node, zeroFill);
}

inline void _MemoryBlock::unallocateHeaded(_MemoryPart * part) {
    if (chain == nullptr) [[unlikely]] {
        return;
    }
    morvane::platform::CriticalSectionGuard const guard(chain->protect);
    takeBack(part, chain->findHolder(part, morvane::loadIndex(part), geometry()));
}
