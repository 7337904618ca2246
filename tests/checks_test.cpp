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

struct WrongProgram {
    char const * does;
    void (*run)();
    char const * heard;
};

char const twice[] = "misuse: a unit was released twice";
char const notHeld[] = "misuse: a pointer was released to a pool that does not hold it";
char const notGiven[] = "misuse: a pointer was released that no pool has given out";
char const notAUnit[] = "misuse: a pointer was released that is not the beginning of a unit";
char const writtenPast[] = "misuse: a unit was written past its end";
char const tooLate[] = "misuse: a text or another block was used after the library went down";

void loseLibrary() {
    morvane::libraryEntry(nullptr, morvane::processDetach, nullptr);
}

WrongProgram const wrongPrograms[]{
    {"releases a unit twice",
     [] {
         _MemoryBlock pool(16, 4);
         void * const units[]{pool.allocate(false), pool.allocate(false)};
         pool.unallocate(units[0]);
         pool.unallocate(units[0]);
     },
     twice},
    {"releases a block of the manager twice",
     [] {
         void * const block = globalMemoryManager->fastAllocate(40, false);
         globalMemoryManager->fastUnallocate(block);
         globalMemoryManager->fastUnallocate(block);
     },
     twice},
    {"releases a unit again whose node is gone",
     [] {
         _MemoryBlock pool(16, 1);
         pool.allocate(false);
         void * const unit = pool.allocate(false);
         pool.unallocate(unit);
         pool.unallocate(unit);
     },
     notHeld},
    {"releases to another pool",
     [] {
         _MemoryBlock pool(16, 4);
         _MemoryBlock other(16, 4);
         other.unallocate(pool.allocate(false));
     },
     notHeld},
    {"releases to another manager",
     [] {
         _MemoryManager manager;
         globalMemoryManager->fastUnallocate(manager.fastAllocate(40, false));
     },
     notHeld},
    {"releases what is no block",
     [] {
         char block[32]{};
         globalMemoryManager->fastUnallocate(block + 16);
     },
     notGiven},
    {"releases the middle of a unit",
     [] {
         _MemoryBlock pool(32, 4);
         pool.unallocate(static_cast<char *>(pool.allocate(true)) + 16);
     },
     notAUnit},
    {"writes past a unit and releases it",
     [] {
         _MemoryBlock pool(16, 4);
         pool.unallocate(std::memset(pool.allocate(false), 'x', 17));
     },
     writtenPast},
    {"writes past a unit whose pool goes",
     [] {
         _MemoryBlock pool(16, 4);
         std::memset(pool.allocate(false), 'x', 17);
     },
     writtenPast},
    {"makes a text too late",
     [] {
         loseLibrary();
         _WideString const text(u"late"_w);
     },
     tooLate},
    {"keeps a text too long",
     [] {
         _WideString const text(u"late"_w);
         loseLibrary();
     },
     tooLate},
};

TEST(ChecksDeathTest, StopProgramsThatAreWrong) {
    for (WrongProgram const & program : wrongPrograms) {
        EXPECT_DEATH(program.run(), program.heard) << program.does;
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
