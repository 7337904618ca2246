#include "counting_heap.h"
#include "ordinary_allocator.h"
#include "pool_model.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <morvane/core/checks.h>
#include <morvane/core/lifecycle.h>
#include <morvane/core/memory.h>
#include <morvane/core/memory_block.h>
#include <morvane/core/memory_manager.h>
#include <morvane/platform/debug_channel.h>
#include <random>
#include <string>
#include <thread>
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

/// Runs the work, which is told its number, in four threads at once.
void runInThreads(std::function<void(unsigned)> const & work) {
    std::vector<std::jthread> threads;
    for (unsigned number = 0; number < 4; ++number) {
        threads.emplace_back([&work, number] { work(number); });
    }
}

/// A pool that shows its nodes.
class OpenBlock : public _MemoryBlock {
public:
    using Base = _MemoryBlock;
    using Base::_MemoryBlock, Base::createNode, Base::createPointer, Base::dataSize, Base::destroyNode;
    using Base::fillData, Base::fillStack, Base::freeChain, Base::getFirstNode, Base::getLastNode, Base::getPart;
    using Base::getPreviousNode, Base::getStack, Base::headSize, Base::insert, Base::insertAfter, Base::isEmpty;
    using Base::nodeSize, Base::partSize, Base::remove, Base::stackSize;

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

TEST_F(Memory, CountsEveryCallOfAllThreadsWhetherItIsServedOrNot) {
    _Memory memory;
    counting_heap::refuseOnce(0);
    EXPECT_EQ(memory.heapAllocate(10, false), nullptr);
    memory.heapUnallocate(nullptr);
    runInThreads([&memory](unsigned) {
        for (int round = 0; round < 5000; ++round) {
            memory.heapUnallocate(memory.heapAllocate(8, false));
        }
    });
    void * const empty = memory.heapAllocate(0, true);
    EXPECT_NE(empty, nullptr);
    memory.heapUnallocate(empty);
    _Memory assigned;
    assigned = memory;
    for (_Memory const & counted : {memory, _Memory(memory), assigned}) {
        EXPECT_EQ(counted.heapAllocationCount(), 20002);
        EXPECT_EQ(counted.heapUnallocationCount(), 20002);
        EXPECT_EQ(counted.heapFree(), 0U);
    }
}

TEST_F(Pool, LaysItsNodesOutAsItsClientsExpect) {
    for (std::uint16_t const unitSize : std::initializer_list<std::uint16_t>{16, 13, 1, 65535}) {
        constexpr std::uint32_t units = 5;
        OpenBlock block(unitSize, units);
        EXPECT_EQ(block.getFirstNode(), nullptr);
        EXPECT_EQ(block.headSize(), 16U);
        EXPECT_EQ(block.partSize(), unitSize + 8U);
        EXPECT_EQ(block.dataSize(), units * (unitSize + 8U));
        EXPECT_EQ(block.stackSize(), units * 2U);
        EXPECT_EQ(block.nodeSize(), 26U + block.dataSize());

        long const asked = counting_heap::requests();
        auto * const unit = static_cast<char *>(block.allocate(false));
        auto * const node = reinterpret_cast<char *>(block.getFirstNode());
        EXPECT_GT(counting_heap::requests(), asked);
        EXPECT_EQ(counting_heap::lastBytes(), block.nodeSize());
        EXPECT_EQ(unit, node + 24);
        EXPECT_EQ(block.getFirstNode()->freeCount, 4U);
        EXPECT_EQ(reinterpret_cast<char *>(block.getStack(block.getFirstNode())), node + 16 + block.dataSize());
        EXPECT_TRUE(std::all_of(unit, unit + unitSize, [](char byte) { return byte == 0; }));
        EXPECT_EQ(block.allocate(false), unit + block.partSize());
        for (std::uint16_t index = 0; index < units; ++index) {
            Part const header = headerOf(_MemoryBlock::memoryPartToPointer(block.getPart(block.getFirstNode(), index)));
            EXPECT_EQ(header.index, index);
            EXPECT_EQ(header.unitSize, unitSize);
            EXPECT_EQ(header.size, 0U);
        }
    }
}

TEST_F(Pool, ClearsExactlyTheUnitAndOnlyOnDemand) {
    OpenBlock block(13, 4);
    auto * const unit = static_cast<char *>(block.allocate(false));
    auto * const next = static_cast<char *>(block.allocate(false));
    std::memset(unit, 'a', 13);
    std::memset(next, 'b', 13);
    for (bool const cleared : {false, true}) {
        block.unallocate(unit);
        EXPECT_EQ(block.allocate(cleared), unit);
        EXPECT_EQ(std::string(unit, 13), std::string(13, cleared ? '\0' : 'a'));
        EXPECT_EQ(headerOf(unit).unitSize, 13);
        EXPECT_EQ(headerOf(next).index, 1);
        EXPECT_EQ(std::string(next, 13), std::string(13, 'b'));
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
    block.set_allocationCount(7);
    block.set_unallocationCount(0xFFFFFFFF);
    EXPECT_EQ(traceOf(block), "unitSize:16 [allocCount:7, unallocCount:-1]\r\n");
}

TEST_F(Pool, GivesNullWhereNoNodeCanBe) {
    std::pair<std::uint16_t, std::uint32_t> const cases[] = {{16, 0}, {16, 65537}, {65535, 65536}, {16, 0xFFFFFFFF}};
    for (auto const & [unitSize, unitCount] : cases) {
        OpenBlock block(unitSize, unitCount);
        long const asked = counting_heap::requests();
        EXPECT_EQ(block.allocate(true), nullptr);
        EXPECT_EQ(counting_heap::requests(), asked) << "no node was asked for";
    }
    // Every allocation behind a pool refused in turn: null now, a unit next time.
    for (long served = 0; served < 4; ++served) {
        counting_heap::refuseOnce(served);
        OpenBlock block(8, 1);
        std::vector<void *> units;
        std::generate_n(std::back_inserter(units), 40, [&block] { return block.allocate(true); });
        counting_heap::serveAll();
        auto const refused = static_cast<unsigned>(std::count(units.begin(), units.end(), nullptr));
        EXPECT_LE(refused, served == 0 ? 40U : 1U);
        EXPECT_EQ(block.nodes().size(), 40U - refused);
        for (void * const unit : units) {
            block.unallocate(unit);
        }
        EXPECT_LE(block.nodes().size(), 1U);
    }
}

void expectSame(OpenBlock const & block, PlainPool const & plain) {
    std::vector<Node *> const nodes = block.nodes();
    ASSERT_EQ(nodes.size(), plain.chain.size());
    for (std::size_t place = 0; place < nodes.size(); ++place) {
        PlainPool::PlainNode const & expected = plain.chain[place];
        ASSERT_EQ(nodes[place], expected.node);
        ASSERT_EQ(nodes[place]->freeCount, expected.stack.size());
        ASSERT_EQ(std::memcmp(block.getStack(nodes[place]), expected.stack.data(), expected.stack.size() * 2), 0);
    }
}

/// What a derived class does to the chain now and then.
void meddle(OpenBlock & block, PlainPool & plain, unsigned long dice, std::size_t place) {
    auto & chain = plain.chain;
    if (dice == 0 && !chain.empty()) {
        // It puts a node of its own somewhere behind the first.
        Node * const node = block.createFreeNode();
        block.insertAfter(chain[place % chain.size()].node, node);
        plain.add(place % chain.size() + 1).node = node;
    } else if (dice == 1 && chain.size() > 1) {
        // It takes one away and puts it back at the end.
        auto const taken = chain.begin() + static_cast<std::ptrdiff_t>(1 + place % (chain.size() - 1));
        Node * const node = taken->node;
        block.remove(node);
        std::rotate(taken, taken + 1, chain.end());
        node->next = nullptr;
        block.insert(node);
    } else if (dice == 2 && chain.size() > 1) {
        // It lets the chain begin with its second node, the first one behind that.
        Node * const second = chain[1].node;
        chain[0].node->next = second->next;
        second->next = chain[0].node;
        block.set_first(second);
        std::swap(chain[0], chain[1]);
    }
}

TEST_F(Pool, WorksAsAWalkAlongItsChainWould) {
    for (auto const & [units, most] : {std::pair{1, 400}, {2, 30}, {2, 400}, {7, 400}}) {
        std::mt19937 random(7);
        OpenBlock block(16, static_cast<std::uint16_t>(units));
        _MemoryManager manager(16 * static_cast<std::uint32_t>(units));
        PlainPool plain{static_cast<std::uint16_t>(units)};
        PlainPool managed = plain;
        // Places and numbers of units; the manager, whose nodes can't be seen, gets the same calls.
        std::vector<std::pair<char *, char *>> live;
        for (int step = 0; step < 6000; ++step) {
            auto const dice = random() % 100;
            meddle(block, plain, dice, random());
            if (!live.empty() && (live.size() > static_cast<unsigned>(most) || dice < (step / 1000 % 2 ? 70 : 30))) {
                std::swap(live[random() % live.size()], live.back());
                auto const [unit, managedUnit] = live.back();
                live.pop_back();
                plain.unallocate(unit);
                block.unallocate(unit);
                managed.unallocate(managedUnit);
                manager.fastUnallocate(managedUnit);
            } else {
                live.emplace_back(static_cast<char *>(block.allocate(true)),
                                  static_cast<char *>(manager.fastAllocate(16, true)));
                ASSERT_TRUE(plain.allocates(live.back().first));
                ASSERT_TRUE(managed.allocates(live.back().second));
            }
            expectSame(block, plain);
            if (HasFatalFailure()) {
                return;
            }
            for (std::size_t place = 0; place < plain.chain.size(); place += 1 + random() % 16) {
                ASSERT_EQ(block.getPreviousNode(plain.chain[place].node),
                          place != 0 ? plain.chain[place - 1].node : nullptr);
            }
            ASSERT_EQ(block.getLastNode(), plain.chain.empty() ? nullptr : plain.chain.back().node);
        }
    }
}

TEST_F(Pool, FollowsADerivedClassThatTakesItsNodesApart) {
    OpenBlock block(8, 1);
    std::vector<void *> units;
    std::generate_n(std::back_inserter(units), 100, [&block] { return block.allocate(false); });
    std::vector<Node *> nodes = block.nodes();
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
    EXPECT_EQ(block.nodes().size(), 97U);
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

TEST_F(Pool, ServesSeveralThreadsAtOnce) {
    OpenBlock block(24, 16);
    std::atomic<int> damaged{0};
    runInThreads([&block, &damaged](unsigned number) {
        std::mt19937 random(number);
        std::vector<char *> units;
        for (int round = 0; round < 5000 || !units.empty(); ++round) {
            if (round >= 5000 || units.size() > 200 || (random() % 2 != 0 && !units.empty())) {
                std::swap(units[random() % units.size()], units.back());
                damaged += std::string(units.back(), 24) == std::string(24, static_cast<char>(number)) ? 0 : 1;
                block.unallocate(units.back());
                units.pop_back();
            } else {
                units.push_back(static_cast<char *>(block.allocate(false)));
                std::memset(units.back(), static_cast<int>(number), 24);
            }
        }
    });
    EXPECT_EQ(damaged, 0);
    EXPECT_EQ(block.nodes().size(), 1U);
    EXPECT_TRUE(block.isEmpty(block.getFirstNode()));
}

/// The lines that the manager says, without what is the same in all.
std::string countsOf(_MemoryManager const & manager) {
    std::string counts = traceOf(manager);
    std::erase_if(counts, [](char c) { return std::strchr("0123456789:,\n", c) == nullptr; });
    return counts;
}

TEST_F(Manager, SendsEverySizeToItsPool) {
    std::pair<std::uint32_t, std::uint16_t> const cases[] = {
        {0, 16},    {16, 16},   {17, 32},   {32, 32},   {33, 64},    {64, 64},     {65, 128},
        {128, 128}, {129, 256}, {257, 512}, {512, 512}, {513, 1024}, {1024, 1024}, {1025, 65535}};
    for (auto const & [size, pool] : cases) {
        _MemoryManager manager;
        std::int32_t const nodes = globalProcessMemory->heapAllocationCount();
        auto * const pointer = static_cast<char *>(manager.fastAllocate(size, true));
        EXPECT_EQ(headerOf(pointer).unitSize, pool) << size;
        EXPECT_EQ(headerOf(pointer).index, 0);
        bool const fromPool = pool != 65535;
        EXPECT_EQ(headerOf(pointer).size, fromPool ? 0 : size);
        EXPECT_EQ(globalProcessMemory->heapAllocationCount() - nodes, fromPool ? 1 : 0);
        EXPECT_EQ(counting_heap::lastBytes(), fromPool ? 262144U / pool * (pool + 10U) + 16 : size + 8);
        EXPECT_TRUE(std::all_of(pointer, pointer + size, [](char byte) { return byte == 0; }));
        manager.fastUnallocate(pointer);
        manager.fastUnallocate(nullptr);
        std::string const line = std::to_string(pool) + ":1,:1\n";
        EXPECT_EQ(countsOf(manager).find(line) != std::string::npos, fromPool) << size;
        EXPECT_EQ(manager.heapFree(), 0U);
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
    // A pool that could not be made refuses, and the others serve.
    ordinary_allocator::servedBeforeRefusal = 3;
    _MemoryManager cramped;
    ordinary_allocator::servedBeforeRefusal = -1;
    EXPECT_NE(cramped.fastAllocate(64, false), nullptr);
    EXPECT_EQ(cramped.fastAllocate(65, false), nullptr);
    EXPECT_EQ(countsOf(cramped), ":16:0,:0\n:32:0,:0\n:64:1,:0\n");
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
    std::string const unused = countsOf(*globalMemoryManager);
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
        EXPECT_EQ(countsOf(second), unused);
        third.fastUnallocate(pointer);
        EXPECT_NE(fourth.fastAllocate(1, false), nullptr);
    }
    EXPECT_EQ(ordinary_allocator::liveBlocks, before);
}

} // namespace
