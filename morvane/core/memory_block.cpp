#include <morvane/core/memory_block.h>

#include <charconv>
#include <limits>
#include <morvane/core/lifecycle.h>
#include <morvane/core/memory.h>
#include <morvane/core/memory_block_inline.h>
#include <morvane/platform/debug_output.h>
#include <new>

using morvane::indexBytes;
using morvane::MemoryChain;
using morvane::nodeHeadBytes;
using morvane::partHeaderBytes;
using morvane::platform::CriticalSectionGuard;

namespace {

/// An index has 16 bits.
constexpr std::uint32_t mostUnits = 65536;

char * bytesOf(void * pointer) {
    return static_cast<char *>(pointer);
}

} // namespace

_MemoryBlock::_MemoryNode * _MemoryBlock::addNode() {
    _MemoryNode * const node = createNode();
    if (node != nullptr) {
        fillStack(node);
        fillData(node);
        if (chain->firstNode() == nullptr) {
            chain->setFirst(node);
        } else {
            insert(node);
        }
    }
    return node;
}

_MemoryBlock::_MemoryBlock(std::uint16_t size, std::uint32_t count)
    : allocationCount(0), unallocationCount(0), unitSize(size), unitCount(count), chain(MemoryChain::create()) {}

_MemoryBlock::_MemoryBlock(_MemoryBlock const & other)
    : allocationCount(other.get_allocationCount()), unallocationCount(other.get_unallocationCount()),
      unitSize(other.unitSize), unitCount(other.unitCount), chain(shareChain(other)) {}

_MemoryBlock::~_MemoryBlock() {
    leaveChain();
}

_MemoryBlock & _MemoryBlock::operator=(_MemoryBlock const & other) {
    if (this == &other) {
        return *this;
    }
    MemoryChain * const shared = shareChain(other);
    leaveChain();
    chain = shared;
    set_allocationCount(other.get_allocationCount());
    set_unallocationCount(other.get_unallocationCount());
    unitSize = other.unitSize;
    unitCount = other.unitCount;
    return *this;
}

void * _MemoryBlock::allocate(bool zeroFill) {
    return allocateUnit(zeroFill);
}

void _MemoryBlock::unallocate(void * pointer) {
    unallocatePart(pointerToMemoryPart(pointer));
}

void _MemoryBlock::unallocatePart(_MemoryPart * part) {
    if (chain == nullptr) {
        return;
    }
    CriticalSectionGuard const guard(chain->protect);
    takeBack(part, chain->findHolder(part, geometry()));
}

void _MemoryBlock::dropNode(_MemoryNode * node) {
    if constexpr (morvane::isChecked) {
        morvane::NodeUnits{node, geometry(), unitSize, unitCount}.checkHeaders();
    }
    remove(node);
    destroyNode(node);
}

void _MemoryBlock::traceConsole() const {
    if (!morvane::platform::isDebugListening()) {
        return;
    }
    unsigned short int line[100];
    unsigned short int * end = line;
    auto const putText = [&end](char const * text) {
        while (*text != 0) {
            *end++ = static_cast<unsigned char>(*text++);
        }
    };
    auto const putNumber = [&putText](std::uint32_t number) {
        char digits[16]{};
        std::to_chars(digits, digits + sizeof(digits) - 1, static_cast<std::int32_t>(number));
        putText(digits);
    };
    putText("unitSize:");
    putNumber(unitSize);
    putText(" [allocCount:");
    putNumber(get_allocationCount());
    putText(", unallocCount:");
    putNumber(get_unallocationCount());
    putText("]\r\n");
    *end = 0;
    morvane::platform::debugOutput(line);
}

void * _MemoryBlock::memoryPartToPointer(_MemoryPart * part) {
    return reinterpret_cast<void *>(reinterpret_cast<std::uintptr_t>(part) + partHeaderBytes);
}

_MemoryBlock::_MemoryPart * _MemoryBlock::pointerToMemoryPart(void * pointer) {
    return reinterpret_cast<_MemoryPart *>(reinterpret_cast<std::uintptr_t>(pointer) - partHeaderBytes);
}

void _MemoryBlock::set_allocationCount(std::uint32_t count) {
    allocationCount.store(count, std::memory_order_relaxed);
}

void _MemoryBlock::set_first(_MemoryNode * node) {
    if (chain != nullptr && chain->firstNode() != node && chain->sharers.load(std::memory_order_acquire) > 1) {
        leaveChain();
        chain = nullptr;
    }
    if (chain == nullptr) {
        chain = MemoryChain::create();
    }
    if (chain != nullptr) {
        chain->setFirst(node);
    }
}

void _MemoryBlock::set_unallocationCount(std::uint32_t count) {
    unallocationCount.store(count, std::memory_order_relaxed);
}

void _MemoryBlock::set_unitCount(std::uint32_t count) {
    unitCount = count;
}

void _MemoryBlock::set_unitSize(std::uint16_t size) {
    unitSize = size;
}

_MemoryBlock::_MemoryNode * _MemoryBlock::createNode() {
    auto const parts = (std::uint64_t{unitSize} + partHeaderBytes + indexBytes) * unitCount;
    if (unitCount == 0 || unitCount > mostUnits || parts + nodeHeadBytes > std::numeric_limits<std::uint32_t>::max()
        || globalProcessMemory == nullptr) {
        return nullptr;
    }
    void * const block = globalProcessMemory->heapAllocate(nodeSize(), true);
    return block != nullptr ? new (block) _MemoryNode{nullptr, unitCount} : nullptr;
}

void _MemoryBlock::destroyNode(_MemoryNode * node) {
    if (chain != nullptr) {
        chain->noteDestroyed(node);
    }
    if (globalProcessMemory != nullptr) {
        globalProcessMemory->heapUnallocate(node);
    }
}

void * _MemoryBlock::createPointer(_MemoryNode * node, bool zeroFill) {
    return takeUnit(node, zeroFill);
}

void _MemoryBlock::destroyPart(_MemoryPart * part, _MemoryNode * node) {
    giveUnitBack(part, node);
}

void _MemoryBlock::fillData(_MemoryNode * node) {
    if (node == nullptr) {
        return;
    }
    char * part = bytesOf(node) + headSize();
    std::uint32_t const step = partSize();
    for (std::uint32_t index = 0; index < unitCount; ++index, part += step) {
        _MemoryPart const header{static_cast<std::uint16_t>(index), unitSize, 0};
        std::memcpy(part, &header, sizeof(header));
    }
}

void _MemoryBlock::fillStack(_MemoryNode * node) {
    if (node == nullptr) {
        return;
    }
    char * entry = bytesOf(getStack(node));
    for (std::uint32_t index = unitCount; index != 0; entry += indexBytes) {
        morvane::storeIndex(entry, static_cast<std::uint16_t>(--index));
    }
}

void _MemoryBlock::freeChain() {
    if (chain == nullptr) {
        return;
    }
    CriticalSectionGuard const guard(chain->protect);
    _MemoryNode * node = chain->firstNode();
    chain->setFirst(nullptr);
    while (node != nullptr) {
        _MemoryNode * const next = node->next;
        if constexpr (morvane::isChecked) {
            morvane::NodeUnits{node, geometry(), unitSize, unitCount}.checkHeaders();
        }
        destroyNode(node);
        node = next;
    }
}

_MemoryBlock::_MemoryNode * _MemoryBlock::getFirstNode() const {
    return get_first();
}

_MemoryBlock::_MemoryNode * _MemoryBlock::getLastNode() const {
    return chain != nullptr ? chain->findLast() : nullptr;
}

_MemoryBlock::_MemoryNode * _MemoryBlock::getPreviousNode(_MemoryNode * node) const {
    return chain != nullptr ? chain->findPrevious(node) : nullptr;
}

_MemoryBlock::_MemoryPart * _MemoryBlock::getPart(_MemoryNode * node, std::uint32_t index) const {
    return reinterpret_cast<_MemoryPart *>(bytesOf(node) + headSize() + std::size_t{partSize()} * index);
}

std::uint16_t * _MemoryBlock::getStack(_MemoryNode * node) const {
    return reinterpret_cast<std::uint16_t *>(bytesOf(node) + headSize() + dataSize());
}

void _MemoryBlock::insert(_MemoryNode * node) {
    insertAfter(getLastNode(), node);
}

void _MemoryBlock::insertAfter(_MemoryNode * node, _MemoryNode * inserted) {
    if (chain != nullptr) {
        chain->insertAfter(node, inserted);
    }
}

void _MemoryBlock::remove(_MemoryNode * node) {
    if (chain != nullptr) {
        chain->remove(node);
    }
}

bool _MemoryBlock::isEmpty(_MemoryNode * node) const {
    return node != nullptr && node->freeCount == unitCount;
}

bool _MemoryBlock::isFull(_MemoryNode * node) const {
    return node != nullptr && node->freeCount == 0;
}

std::uint32_t _MemoryBlock::dataSize() const {
    return partSize() * unitCount;
}

std::uint32_t _MemoryBlock::headSize() const {
    return nodeHeadBytes;
}

std::uint32_t _MemoryBlock::nodeSize() const {
    return stackSize() + headSize() + dataSize();
}

std::uint32_t _MemoryBlock::partSize() const {
    return unitSize + partHeaderBytes;
}

std::uint32_t _MemoryBlock::stackSize() const {
    return indexBytes * unitCount;
}

std::uint32_t _MemoryBlock::get_allocationCount() const {
    return allocationCount.load(std::memory_order_relaxed);
}

_MemoryBlock::_MemoryNode * _MemoryBlock::get_first() const {
    return chain != nullptr ? chain->firstNode() : nullptr;
}

std::uint32_t _MemoryBlock::get_unallocationCount() const {
    return unallocationCount.load(std::memory_order_relaxed);
}

std::uint32_t _MemoryBlock::get_unitCount() const {
    return unitCount;
}

std::uint16_t _MemoryBlock::get_unitSize() const {
    return unitSize;
}

MemoryChain * _MemoryBlock::shareChain(_MemoryBlock const & other) {
    if (other.get_first() == nullptr) {
        return MemoryChain::create();
    }
    other.chain->sharers.fetch_add(1, std::memory_order_relaxed);
    return other.chain;
}

void _MemoryBlock::leaveChain() {
    if (chain != nullptr && chain->sharers.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        freeChain();
        MemoryChain::destroy(chain);
    }
}
