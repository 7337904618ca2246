#include "counting_heap.h"
#include "ordinary_allocator.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <morvane/core/checks.h>
#include <morvane/core/lifecycle.h>
#include <morvane/core/memory.h>
#include <morvane/core/memory_block.h>
#include <morvane/core/memory_manager.h>
#include <morvane/platform/debug_channel.h>
#include <string>
#include <vector>

namespace {

std::string heard;

/// What it traces on the debug channel.
template <typename Speaker>
std::string const & traceOf(Speaker const & speaker) {
    heard.clear();
    auto const former = morvane::platform::setDebugListener([](unsigned short int const * text) {
        for (; *text != 0; ++text) {
            heard += static_cast<char>(*text);
        }
    });
    speaker.traceConsole();
    morvane::platform::setDebugListener(former);
    return heard;
}

/// A pool that shows its nodes.
struct OpenBlock : _MemoryBlock {
    using _MemoryBlock::_MemoryBlock, _MemoryBlock::createNode, _MemoryBlock::createPointer, _MemoryBlock::dataSize;
    using _MemoryBlock::destroyNode, _MemoryBlock::fillData, _MemoryBlock::fillStack, _MemoryBlock::freeChain;
    using _MemoryBlock::getFirstNode, _MemoryBlock::getLastNode, _MemoryBlock::getPart, _MemoryBlock::getPreviousNode;
    using _MemoryBlock::getStack, _MemoryBlock::headSize, _MemoryBlock::insert, _MemoryBlock::insertAfter;
    using _MemoryBlock::nodeSize, _MemoryBlock::partSize, _MemoryBlock::remove, _MemoryBlock::stackSize;

    /// A node with all units free, in no chain yet.
    _MemoryNode * createFreeNode() {
        _MemoryNode * const node = createNode();
        fillStack(node);
        fillData(node);
        return node;
    }

    std::vector<_MemoryNode *> nodes() const {
        std::vector<_MemoryNode *> found;
        for (_MemoryNode * node = getFirstNode(); node != nullptr; node = node->next) {
            found.push_back(node);
        }
        return found;
    }
};

using Node = _MemoryBlock::_MemoryNode;
using Part = _MemoryBlock::_MemoryPart;

Part headerOf(void * pointer) {
    Part header{};
    std::memcpy(&header, _MemoryBlock::pointerToMemoryPart(pointer), sizeof(header));
    return header;
}

class Pool : public testing::Test {
    counting_heap::LeakCheck leaks;
};

using Memory = Pool;
using Manager = Pool;

TEST_F(Memory, CountsEveryCallWhetherItIsServedOrNot) {
    _Memory memory;
    counting_heap::refuseOnce(0);
    EXPECT_EQ(memory.heapAllocate(10, false), nullptr);
    memory.heapUnallocate(nullptr);
    void * const empty = memory.heapAllocate(0, true);
    EXPECT_NE(empty, nullptr);
    memory.heapUnallocate(empty);
    _Memory assigned;
    assigned = memory;
    for (_Memory const & counted : {memory, _Memory(memory), assigned}) {
        EXPECT_EQ(counted.heapAllocationCount(), 2);
        EXPECT_EQ(counted.heapUnallocationCount(), 2);
        EXPECT_EQ(counted.heapFree(), 0U);
    }
}

TEST_F(Pool, LaysItsNodesOutAsItsClientsExpect) {
    for (std::uint16_t const unitSize : std::initializer_list<std::uint16_t>{16, 13, 1, 65535}) {
        OpenBlock block(unitSize, 5);
        EXPECT_EQ(block.getFirstNode(), nullptr);
        EXPECT_EQ(block.headSize(), 16U);
        EXPECT_EQ(block.partSize(), unitSize + 8U);
        EXPECT_EQ(block.dataSize(), 5 * (unitSize + 8U));
        EXPECT_EQ(block.stackSize(), 10U);
        EXPECT_EQ(block.nodeSize(), 26U + block.dataSize());

        auto * const unit = static_cast<char *>(block.allocate(false));
        auto * const node = reinterpret_cast<char *>(block.getFirstNode());
        EXPECT_EQ(counting_heap::lastBytes(), block.nodeSize());
        EXPECT_EQ(unit, node + 24);
        EXPECT_EQ(block.getFirstNode()->freeCount, 4U);
        EXPECT_EQ(reinterpret_cast<char *>(block.getStack(block.getFirstNode())), node + 16 + block.dataSize());
        EXPECT_EQ(std::string(unit, unitSize), std::string(unitSize, '\0')) << "a new node is cleared";
        // A unit of old is cleared on demand only, and nothing around it.
        for (bool const cleared : {false, true}) {
            std::memset(unit, 'a', unitSize);
            block.unallocate(unit);
            EXPECT_EQ(block.allocate(cleared), unit);
            EXPECT_EQ(std::string(unit, unitSize), std::string(unitSize, cleared ? '\0' : 'a'));
        }
        for (std::uint16_t index = 0; index < 5; ++index) {
            Part const header = headerOf(unit + index * block.partSize());
            EXPECT_TRUE(header.index == index && header.unitSize == unitSize && header.size == 0) << index;
        }
    }
}

TEST_F(Pool, IgnoresPointersThatItDoesNotHold) {
    OpenBlock block(16, 4);
    int foreign[8]{};
    void * const unit = block.allocate(false);
    block.unallocate(nullptr);
    block.unallocate(unit);
    if constexpr (!morvane::isChecked) {
        block.unallocate(foreign + 4);
        block.unallocate(unit);
    }
    EXPECT_EQ(block.getFirstNode()->freeCount, 4U);
    EXPECT_EQ(traceOf(block), "unitSize:16 [allocCount:1, unallocCount:1]\r\n");
    block.set_unallocationCount(0xFFFFFFFF);
    EXPECT_EQ(traceOf(block), "unitSize:16 [allocCount:1, unallocCount:-1]\r\n");
}

TEST_F(Pool, GivesNullWhereNoNodeCanBe) {
    std::pair<std::uint16_t, std::uint32_t> const cases[] = {{16, 0}, {16, 65537}, {65535, 65536}, {16, 0xFFFFFFFF}};
    for (auto const & [unitSize, unitCount] : cases) {
        OpenBlock block(unitSize, unitCount);
        long const asked = counting_heap::requests();
        EXPECT_EQ(block.allocate(true), nullptr) << unitSize << ' ' << unitCount;
        EXPECT_EQ(counting_heap::requests(), asked) << "no node was asked for";
    }
    // Every allocation behind a pool refused in turn: null now, a unit next time.
    for (long served = 0; served < 4; ++served) {
        counting_heap::refuseOnce(served);
        OpenBlock block(8, 1);
        unsigned units = 0;
        for (int call = 0; call < 40; ++call) {
            units += block.allocate(true) != nullptr ? 1 : 0;
        }
        EXPECT_GE(units, served == 0 ? 0U : 39U);
        EXPECT_EQ(block.nodes().size(), units);
    }
}

TEST_F(Pool, FollowsADerivedClassThatTakesItsNodesApart) {
    OpenBlock block(8, 1);
    std::vector<void *> units(100);
    std::generate(units.begin(), units.end(), [&block] { return block.allocate(false); });
    std::vector<Node *> const nodes = block.nodes();
    // Gone without a word: the link is written first, then the node destroyed.
    nodes[49]->next = nodes[51];
    block.destroyNode(nodes[50]);
    block.unallocate(units[49]);
    block.unallocate(units[51]);
    EXPECT_EQ(block.nodes().size(), 97U);
    // Linked on behind the last one without a word.
    Node * const added = block.createFreeNode();
    block.getLastNode()->next = added;
    EXPECT_EQ(block.allocate(false), _MemoryBlock::memoryPartToPointer(block.getPart(added, 0)));
    EXPECT_EQ(block.getLastNode(), added);
    block.unallocatePart(block.getPart(added, 0));
    // Nodes outside the chain are nobody's predecessor, and nothing happens without a node.
    EXPECT_EQ(block.getPreviousNode(nullptr), nullptr);
    block.insertAfter(nullptr, nodes[0]);
    block.insertAfter(nodes[0], nullptr);
    block.remove(nullptr);
    EXPECT_EQ(block.createPointer(nullptr, true), nullptr);
    EXPECT_EQ(block.nodes().size(), 97U);
    block.freeChain();
    EXPECT_EQ(block.getFirstNode(), nullptr);
    EXPECT_NE(block.allocate(false), nullptr);
}

TEST_F(Pool, ReleasesASharedChainOnce) {
    OpenBlock empty(16, 2);
    OpenBlock apart(empty);
    EXPECT_NE(empty.allocate(false), nullptr);
    EXPECT_EQ(apart.getFirstNode(), nullptr) << "there was nothing to share";
    auto * const owner = new OpenBlock(16, 2);
    void * const unit = owner->allocate(false);
    OpenBlock sharer(*owner);
    OpenBlock leaver(*owner);
    apart = *owner;
    OpenBlock & same = apart;
    apart = same;
    EXPECT_EQ(sharer.getFirstNode(), owner->getFirstNode());
    leaver.set_first(nullptr);
    delete owner;
    EXPECT_EQ(leaver.getFirstNode(), nullptr);
    EXPECT_EQ(sharer.allocate(false), static_cast<char *>(unit) + 24);
    apart.unallocate(unit);
    EXPECT_EQ(sharer.allocate(false), unit);
    sharer.freeChain();
    EXPECT_EQ(apart.getFirstNode(), nullptr) << "the chain is gone for all";
}

TEST_F(Manager, SendsEverySizeToItsPool) {
    std::pair<std::uint32_t, std::uint16_t> const cases[] = {
        {0, 16},    {16, 16},   {17, 32},   {32, 32},   {33, 64},    {64, 64},     {65, 128},
        {128, 128}, {129, 256}, {257, 512}, {512, 512}, {513, 1024}, {1024, 1024}, {1025, 65535}};
    for (auto const & [size, pool] : cases) {
        SCOPED_TRACE(size);
        _MemoryManager manager;
        std::int32_t const nodes = globalProcessMemory->heapAllocationCount();
        auto * const pointer = static_cast<char *>(manager.fastAllocate(size, true));
        bool const fromPool = pool != 65535;
        Part const header = headerOf(pointer);
        EXPECT_TRUE(header.index == 0 && header.unitSize == pool && header.size == (fromPool ? 0 : size));
        EXPECT_EQ(globalProcessMemory->heapAllocationCount() - nodes, fromPool ? 1 : 0);
        EXPECT_EQ(counting_heap::lastBytes(), fromPool ? 262144U / pool * (pool + 10U) + 16 : size + 8);
        EXPECT_EQ(std::string(pointer, size), std::string(size, '\0'));
        manager.fastUnallocate(pointer);
        manager.fastUnallocate(nullptr);
        std::string const line = "unitSize:" + std::to_string(pool) + " [allocCount:1, unallocCount:1]";
        EXPECT_EQ(traceOf(manager).find(line) != std::string::npos, fromPool);
    }
}

TEST_F(Manager, GivesNullForWhatCannotBeHad) {
    _MemoryManager manager;
    EXPECT_EQ(manager.fastAllocate(0xFFFFFFF8, false), nullptr);
    counting_heap::refuseOnce(0);
    EXPECT_EQ(manager.fastAllocate(2000, true), nullptr);
    counting_heap::refuseOnce(0);
    EXPECT_EQ(manager.fastAllocate(20, true), nullptr);
    char unknown[16] = "no known header";
    if constexpr (!morvane::isChecked) {
        manager.fastUnallocate(unknown + 8);
    }
    manager.heapUnallocate(manager.heapAllocate(100, true));
    EXPECT_EQ(manager.heapFree(), 0U);
    // A pool that could not be made refuses, and the others serve.
    ordinary_allocator::servedBeforeRefusal = 3;
    _MemoryManager cramped;
    ordinary_allocator::servedBeforeRefusal = -1;
    EXPECT_NE(cramped.fastAllocate(64, false), nullptr);
    EXPECT_EQ(cramped.fastAllocate(65, false), nullptr);
    EXPECT_EQ(traceOf(cramped), "unitSize:16 [allocCount:0, unallocCount:0]\r\n"
                                "unitSize:32 [allocCount:0, unallocCount:0]\r\n"
                                "unitSize:64 [allocCount:1, unallocCount:0]\r\n");
}

TEST_F(Manager, BringsOddSizesIntoRange) {
    for (std::uint32_t const size : {0U, 15U, 1023U, 1024U, 1048592U, 0xFFFFFFFFU}) {
        _MemoryManager manager(size);
        auto const units = std::clamp<std::uint64_t>(size / 16, 1, 65536);
        EXPECT_NE(manager.fastAllocate(16, false), nullptr);
        EXPECT_EQ(counting_heap::lastBytes(), units * 26 + 16);
        EXPECT_NE(manager.fastAllocate(1000, false), nullptr) << size;
    }
}

TEST_F(Manager, DeletesSharedPoolsOnce) {
    std::string const unused = traceOf(*globalMemoryManager);
    long const before = ordinary_allocator::liveBlocks;
    {
        auto * const first = new _MemoryManager(4096);
        void * const pointer = first->fastAllocate(100, false);
        _MemoryManager second(*first);
        _MemoryManager third(1024);
        _MemoryManager fourth(third);
        third = second;
        _MemoryManager & same = third;
        third = same;
        delete first;
        second.fastUnallocate(pointer);
        EXPECT_EQ(third.fastAllocate(100, false), pointer);
        second.default_ctor_closure();
        EXPECT_EQ(traceOf(second), unused);
        third.fastUnallocate(pointer);
        EXPECT_NE(fourth.fastAllocate(1, false), nullptr);
    }
    EXPECT_EQ(ordinary_allocator::liveBlocks, before);
}

} // namespace
