#include <morvane/platform/thread_heap.h>

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <latch>
#include <morvane/core/memory.h>
#include <morvane/platform/process_heap.h>
#include <morvane/platform/tick_count.h>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace morvane::platform;

namespace {

struct Block {
    unsigned char * bytes;
    std::size_t count;
    unsigned char mark;
};

bool holds(Block const & block, unsigned char value) {
    return std::all_of(block.bytes, block.bytes + block.count, [value](unsigned char byte) { return byte == value; });
}

Block take(std::size_t count, bool zeroed, unsigned char mark) {
    Block const block{static_cast<unsigned char *>(segmentAllocate(count, zeroed)), count, mark};
    EXPECT_NE(block.bytes, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block.bytes) % (count != 0 && count % 16 == 0 ? 16 : 8), 0U);
    EXPECT_TRUE(!zeroed || holds(block, 0)) << count;
    std::memset(block.bytes, mark, count);
    return block;
}

std::vector<void *> takeMany(std::size_t blocks, std::size_t bytes) {
    std::vector<void *> taken(blocks);
    std::generate(taken.begin(), taken.end(), [bytes] { return segmentAllocate(bytes, false); });
    return taken;
}

struct Three {
    Block blocks[3];
};

Three layThree(std::size_t object, std::size_t first, std::size_t second, unsigned char mark = 0) {
    auto * at = static_cast<unsigned char *>(segmentLay(laidBytes(object) + laidBytes(first) + laidBytes(second)));
    EXPECT_NE(at, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(at) % laidStep, 0U);
    Three three{};
    Block * block = three.blocks;
    for (std::size_t const count : {object, first, second}) {
        *block = {at, count, ++mark};
        std::memset(at, mark, count);
        at += laidBytes(count);
        ++block;
    }
    return three;
}

void freeThree(Three const & three) {
    auto const & [object, first, second] = three.blocks;
    LaidPage last;
    segmentFreeThree(object.bytes, first.bytes, second.bytes, last);
}

/// As many blocks, laid three by three.
std::vector<void *> layMany(std::size_t blocks, std::size_t bytes) {
    std::vector<void *> laid;
    while (laid.size() < blocks) {
        for (Block const & block : layThree(bytes, bytes / 4, bytes / 2).blocks) {
            laid.push_back(block.bytes);
        }
    }
    return laid;
}

void freeAll(std::vector<void *> const & blocks) {
    std::for_each(blocks.begin(), blocks.end(), segmentFree);
}

/// Two periods of other work at least: what is not used meanwhile goes back to the system.
void letIdleMemoryGo() {
    for (int round = 0; round < 100000; ++round) {
        segmentFree(segmentAllocate(100000, false));
    }
}

TEST(Heap, KeepsEveryBlockWholeThroughRandomLifetimes) {
    std::mt19937 random(7);
    std::vector<Block> live;
    for (int step = 0; step < 30000 || !live.empty(); ++step) {
        if (step >= 30000 || live.size() > 2000 || (random() % 5 < 2 && !live.empty())) {
            std::swap(live[random() % live.size()], live.back());
            ASSERT_TRUE(holds(live.back(), live.back().mark)) << live.back().count;
            segmentFree(live.back().bytes);
            live.pop_back();
        } else {
            // Mostly small ones; all size classes, spans of slices and a few huge ones.
            auto const kind = random() % 1000;
            std::size_t const most = kind < 900 ? 200 : kind < 990 ? 40000 : kind < 999 ? 200000 : 5000000;
            live.push_back(take(random() % most, random() % 2 == 0, static_cast<unsigned char>(random())));
        }
    }
}

TEST(Heap, KeepsLaidBlocksWholeThroughRandomLifetimes) {
    std::mt19937 random(11);
    std::vector<Three> live;
    std::vector<Block> alone;
    auto const takeOut = [&random](auto & from) {
        std::swap(from[random() % from.size()], from.back());
        auto const item = from.back();
        from.pop_back();
        return item;
    };
    std::size_t held = 0;
    for (int step = 0; step < 200000; ++step) {
        // Few and many in turn, so that pages empty and fill.
        std::size_t const most = step % 40000 < 20000 ? 4000 : 200;
        if (live.size() < most && random() % 8 < 5) {
            live.push_back(layThree(40 + random() % 64, 1 + random() % 40, 1 + random() % (random() % 500 + 1),
                                    static_cast<unsigned char>(random())));
        } else if (!live.empty()) {
            Three three = takeOut(live);
            for (Block const & block : three.blocks) {
                ASSERT_TRUE(holds(block, block.mark)) << step;
            }
            switch (random() % 4) {
            case 0: // one by one, some of them later
                alone.insert(alone.end(), three.blocks, three.blocks + 3);
                break;
            case 1: // with a buffer of another place
                alone.push_back(three.blocks[2]);
                three.blocks[2] = take(random() % 90 + 1, false, 1);
                [[fallthrough]];
            default:
                freeThree(three);
            }
        }
        while (alone.size() > 1000 || (!alone.empty() && random() % 2 == 0)) {
            Block const block = takeOut(alone);
            ASSERT_TRUE(holds(block, block.mark)) << step;
            segmentFree(block.bytes);
        }
        held = step == 80000 ? mappedHeapBytes() : held;
    }
    EXPECT_LE(mappedHeapBytes(), held + segmentBytes);
    std::for_each(live.begin(), live.end(), freeThree);
    std::for_each(alone.begin(), alone.end(), [](Block const & block) { segmentFree(block.bytes); });
}

TEST(Heap, LaysAnewWhatCameBackBesideWhatStays) {
    for (bool const oneByOne : {false, true}) {
        Three const former = layThree(80, 14, 2);
        freeThree(former);
        std::vector<Three> stays{layThree(80, 14, 2)};
        EXPECT_EQ(stays[0].blocks[0].bytes, former.blocks[0].bytes) << "the page was empty";
        std::size_t const before = mappedHeapBytes();
        for (int round = 0; round < 500; ++round) {
            std::vector<Three> threes(1000);
            std::generate(threes.begin(), threes.end(), [] { return layThree(80, 14, 2); });
            stays.push_back(threes[static_cast<std::size_t>(round * 37 % 1000)]);
            for (Three const & three : threes) {
                if (three.blocks[0].bytes == stays.back().blocks[0].bytes) {
                    continue;
                }
                if (oneByOne) {
                    freeAll({three.blocks[1].bytes, three.blocks[2].bytes, three.blocks[0].bytes});
                } else {
                    freeThree(three);
                }
            }
        }
        EXPECT_LE(mappedHeapBytes(), before + segmentBytes) << "fifty megabytes came and went";
        std::for_each(stays.begin(), stays.end(), freeThree);
    }
}

TEST(Heap, FillsAPageOfLaidBlocksAgainWhenAllAreBack) {
    HeapPage & page = *acquirePage(false);
    page.usedBlocks = 0;
    std::fill(std::begin(page.freeBits), std::end(page.freeBits), 0);
    prepareLaidPage(page);
    LaidGap gap;
    gap.open(page);
    auto const fill = [&gap] {
        std::vector<void *> threes;
        do {
            while (gap.fits(96)) {
                threes.push_back(gap.lay(96));
            }
        } while (gap.advance(96));
        return threes;
    };
    std::vector<void *> const threes = fill();
    EXPECT_EQ(threes.size(), (sliceBytes - sizeof(LaidHead)) / 96);
    gap.close();
    // Every other one is back when it is opened again, and all before it is full.
    for (std::size_t index = 0; index < threes.size(); index += 2) {
        takeBackThree(page, threes[index]);
    }
    gap.open(page);
    EXPECT_TRUE(gap.advance(96));
    EXPECT_EQ(gap.lay(96), threes[0]);
    gap.beginAnew();
    EXPECT_EQ(fill(), threes);
    gap.close();
    gap.open(page);
    EXPECT_FALSE(gap.advance(96)) << "all are in use";
    releasePage(page);
}

TEST(Heap, FitsEverySizeIntoItsClass) {
    for (std::size_t bytes = 0; bytes <= mostSmallBytes; ++bytes) {
        std::size_t const sizeClass = bytes <= mostFineBytes ? fineClassOf(bytes) : coarseClassOf(bytes);
        ASSERT_LT(sizeClass, sizeClasses);
        ASSERT_GE(blockBytesOf(sizeClass), bytes);
        ASSERT_TRUE(sizeClass == 0 || blockBytesOf(sizeClass - 1) < bytes || bytes <= 8) << bytes;
    }
}

TEST(Heap, HandsBlocksOutInAddressOrderHoweverTheyCameBack) {
    std::vector<void *> blocks = takeMany(5000, 72);
    std::shuffle(blocks.begin(), blocks.end(), std::mt19937(3));
    freeAll(blocks);
    blocks = takeMany(5000, 72);
    int steps = 0;
    for (std::size_t index = 1; index < blocks.size(); ++index) {
        steps += blocks[index] < blocks[index - 1] ? 1 : 0;
    }
    EXPECT_LE(steps, 6) << "addresses go back at the end of a page at most";
    freeAll(blocks);
}

TEST(Heap, IgnoresNullAndBlocksFreedTwiceAndRefusesWhatNoSystemCanGive) {
    void * const block = segmentAllocate(24, false);
    freeAll({nullptr, block, block});
    std::vector<void *> const fresh = takeMany(2, 24);
    EXPECT_NE(fresh[0], fresh[1]);
    freeAll(fresh);
    Three const three = layThree(80, 2, 2);
    Three const neighbour = layThree(80, 2, 2, 5);
    freeThree(three);
    freeThree(three);
    segmentFree(neighbour.blocks[1].bytes);
    segmentFree(neighbour.blocks[1].bytes);
    EXPECT_TRUE(holds(neighbour.blocks[0], 6)) << "laid anew after two frees too many";
    freeAll({neighbour.blocks[0].bytes, neighbour.blocks[2].bytes});
    EXPECT_EQ(segmentAllocate(~std::size_t{0}, true), nullptr);
    EXPECT_EQ(segmentAllocate(~std::size_t{0} - 100000, false), nullptr);
}

TEST(Heap, KeepsAsMuchAsWasUsedAndGivesBackTheRest) {
    constexpr std::size_t megabyte = std::size_t{1} << 20;
    letIdleMemoryGo();
    // A document that comes and goes: all of it stays, and is used again, its text for shorter ones too.
    std::size_t held = 0;
    for (std::size_t const text : {64U, 40U, 33U, 64U}) {
        Block const block = take(text * megabyte, true, 1);
        std::vector<void *> const nodes = takeMany(280000, 1000);
        segmentFree(block.bytes);
        freeAll(nodes);
        held = held == 0 ? mappedHeapBytes() : held;
        EXPECT_EQ(mappedHeapBytes(), held);
    }
    EXPECT_GE(held, 320 * megabyte);
    letIdleMemoryGo();
    // Ever longer blocks, none of which fits where the last one was.
    std::size_t const before = mappedHeapBytes();
    for (std::size_t bytes = 3 * megabyte; bytes < 100 * megabyte; bytes += bytes / 7) {
        segmentFree(segmentAllocate(bytes, false));
        EXPECT_LE(mappedHeapBytes(), before + bytes * 3 / 2 + 80 * megabyte);
    }
}

void letTimePass() {
    for (std::uint32_t const seconds : {11U, 22U, 33U}) {
        passTime(tickCount() + seconds * 1000);
    }
}

TEST(Heap, GivesBackWhatLiesIdleAfterOtherWorkOrSomeTime) {
    for (auto * const pass : {letIdleMemoryGo, letTimePass}) {
        pass();
        std::size_t const before = mappedHeapBytes();
        std::vector<void *> blocks = takeMany(60000, 1000);
        blocks.push_back(segmentAllocate(9000000, false));
        freeAll(blocks);
        EXPECT_GE(mappedHeapBytes(), 69000000U);
        pass();
        EXPECT_LE(mappedHeapBytes(), before + 2 * segmentBytes);
    }
}

TEST(Heap, ReusesWhatOtherThreadsFreeOrLeave) {
    for (auto * const takeSome : {takeMany, layMany}) {
        std::vector<void *> left;
        std::size_t early = 0;
        for (int round = 0; round < 50; ++round) {
            // All blocks of one thread go in another one, but for those that stay from its every page.
            std::vector<void *> blocks;
            std::thread([&] { blocks = takeSome(20000, 56); }).join();
            std::thread([&] {
                for (std::size_t index = 0; index < blocks.size(); ++index) {
                    index % 100 == 0 ? left.push_back(blocks[index]) : segmentFree(blocks[index]);
                }
            }).join();
            early = round == 10 ? mappedHeapBytes() : early;
        }
        EXPECT_LE(mappedHeapBytes(), early + segmentBytes);
        // This thread, which has few of the kind, finds room in the pages of the threads that are gone.
        std::size_t const before = mappedHeapBytes();
        std::vector<void *> const found = takeSome(1000, 56);
        EXPECT_EQ(mappedHeapBytes(), before);
        freeAll(found);
        freeAll(left);
    }
    // Threads that leave a few blocks each share a page.
    std::vector<Three> stays(300);
    std::size_t const before = mappedHeapBytes();
    for (Three & three : stays) {
        std::thread([&three] { three = layThree(80, 2, 2); }).join();
    }
    EXPECT_LE(mappedHeapBytes(), before + segmentBytes);
    std::for_each(stays.begin(), stays.end(), freeThree);
}

TEST(Heap, KeepsTheCountsOfMoreThreadsThanHaveANumber) {
    _Memory memory;
    for (int round = 0; round < 3; ++round) {
        std::vector<std::jthread> threads(mostThreadNumber + 5);
        for (std::jthread & thread : threads) {
            thread = std::jthread([&memory] {
                for (int call = 0; call < 2000; ++call) {
                    memory.heapUnallocate(memory.heapAllocate(8, false));
                }
            });
        }
    }
    EXPECT_EQ(memory.heapAllocationCount(), 72000);
    EXPECT_EQ(memory.heapUnallocationCount(), 72000);
}

TEST(Heap, LetsThreadsTradeBlocks) {
    std::vector<std::atomic<Three *>> exchange(4096);
    std::latch start(4);
    std::atomic<int> damaged{0};
    auto const check = [&damaged](Three * three) {
        if (three == nullptr) {
            return;
        }
        for (Block const & block : three->blocks) {
            damaged += holds(block, block.mark) ? 0 : 1;
        }
        three->blocks[0].bytes != nullptr ? freeThree(*three) : freeAll({three->blocks[2].bytes});
        segmentFree(three);
    };
    std::vector<std::jthread> workers;
    for (unsigned number = 0; number < 4; ++number) {
        workers.emplace_back([&, number] {
            std::mt19937 random(number);
            start.arrive_and_wait();
            for (int step = 0; step < 40000; ++step) {
                // Laid ones go together; of others there is one.
                std::size_t const count = random() % 300 + 1;
                auto const mark = static_cast<unsigned char>(random());
                auto * const three = new (segmentAllocate(sizeof(Three), false)) Three{};
                if (count % 2 == 0) {
                    *three = layThree(count, 2, 16, mark);
                } else {
                    three->blocks[2] = take(count, false, mark);
                }
                check(exchange[random() % exchange.size()].exchange(three));
            }
        });
    }
    workers.clear();
    for (std::atomic<Three *> const & three : exchange) {
        check(three);
    }
    EXPECT_EQ(damaged, 0);
}

TEST(Heap, WorksOnInTheChildOfAFork) {
    Block const block = take(100, true, 1);
    pid_t const child = fork();
    if (child == 0) {
        bool const whole = holds(block, 1);
        segmentFree(block.bytes);
        for (std::size_t bytes = 0; bytes < 100000; bytes += 797) {
            segmentFree(take(bytes, true, 2).bytes);
        }
        _exit(whole && !testing::Test::HasFailure() ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(holds(block, 1));
    segmentFree(block.bytes);
}

} // namespace
