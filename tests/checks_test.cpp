// Programs that are wrong on purpose, which a library built with MORVANE_CHECKED stops.
#include <cstring>
#include <gtest/gtest.h>
#include <morvane/core/lifecycle.h>
#include <morvane/core/literals.h>
#include <morvane/core/memory_block.h>
#include <morvane/core/memory_manager.h>
#include <morvane/platform/library_entry.h>
#include <morvane/strings/wide_string.h>
#include <vector>

using namespace morvane::literals;

namespace {

/// What the wrong programs are made of.
struct Pools {
    _MemoryBlock pool{16, 4};
    _MemoryBlock other{16, 4};
    _MemoryBlock narrow{16, 1};
    void * unit = pool.allocate(false);
};

void releaseTwice(_MemoryBlock & pool, void * unit) {
    pool.unallocate(unit);
    pool.unallocate(unit);
}

void loseLibrary() {
    morvane::libraryEntry(nullptr, morvane::processDetach, nullptr);
}

char const twice[] = "misuse: a unit was released twice";
char const notHeld[] = "misuse: a pointer was released to a pool that does not hold it";
char const notGiven[] = "misuse: a pointer was released that no pool has given out";
char const notAUnit[] = "misuse: a pointer was released that is not the beginning of a unit";
char const writtenPast[] = "misuse: a unit was written past its end";
char const tooLate[] = "misuse: a text or another block was used after the library went down";

struct {
    char const * does;
    char const * heard;
    void (*run)(Pools & pools);
} const wrongPrograms[]{
    {"releases a unit twice", twice,
     [](Pools & pools) {
         pools.pool.allocate(false);
         releaseTwice(pools.pool, pools.unit);
     }},
    {"releases a block of the manager twice", twice,
     [](Pools &) {
         void * const block = globalMemoryManager->fastAllocate(40, false);
         globalMemoryManager->fastUnallocate(block);
         globalMemoryManager->fastUnallocate(block);
     }},
    {"releases a unit again whose node is gone", notHeld,
     [](Pools & pools) {
         pools.narrow.allocate(false);
         releaseTwice(pools.narrow, pools.narrow.allocate(false));
     }},
    {"releases to another pool", notHeld, [](Pools & pools) { pools.other.unallocate(pools.unit); }},
    {"releases to another manager", notHeld,
     [](Pools &) { globalMemoryManager->fastUnallocate(_MemoryManager().fastAllocate(40, false)); }},
    {"releases what is no block", notGiven,
     [](Pools &) {
         char block[32]{};
         globalMemoryManager->fastUnallocate(block + 16);
     }},
    {"releases the middle of a unit", notAUnit,
     [](Pools & pools) { pools.pool.unallocate(static_cast<char *>(pools.pool.allocate(true)) + 8); }},
    {"writes past a unit and releases it", writtenPast,
     [](Pools & pools) { pools.pool.unallocate(std::memset(pools.unit, 'x', 17)); }},
    {"writes past a unit whose pool goes", writtenPast, [](Pools & pools) { std::memset(pools.unit, 'x', 17); }},
    {"makes a text too late", tooLate,
     [](Pools &) {
         loseLibrary();
         _WideString const text(u"late"_w);
     }},
    {"keeps a text too long", tooLate,
     [](Pools &) {
         _WideString const text(u"late"_w);
         loseLibrary();
     }},
};

TEST(ChecksDeathTest, StopProgramsThatAreWrong) {
    for (auto const & [does, heard, run] : wrongPrograms) {
        auto const runWithPools = [run = run] {
            Pools pools;
            run(pools);
        };
        EXPECT_DEATH(runWithPools(), heard) << does;
    }
}

TEST(Checks, LetGoodProgramsPass) {
    _MemoryBlock pool(13, 3);
    std::vector<void *> units;
    for (int round = 0; round < 3; ++round) {
        for (int number = 0; number < 10; ++number) {
            units.push_back(std::memset(pool.allocate(true), 'x', 13));
        }
        for (; !units.empty(); units.pop_back()) {
            pool.unallocate(units.back());
        }
    }
    pool.unallocate(nullptr);
    globalMemoryManager->fastUnallocate(nullptr);
    for (std::uint32_t const size : {0U, 16U, 17U, 1024U, 1025U}) {
        globalMemoryManager->fastUnallocate(std::memset(globalMemoryManager->fastAllocate(size, false), 'x', size));
    }
    EXPECT_EQ(_WideString(u"in time"_w).get_length(), 7U);
}

} // namespace
