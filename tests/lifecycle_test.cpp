#include "ordinary_allocator.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <morvane/core/checks.h>
#include <morvane/morvane.h>
#include <morvane/platform/library_entry.h>
#include <string>
#include <unistd.h>

namespace {

/// A static object of a client, which uses the library before `main` begins and after it has ended.
struct EarlyClient {
    ~EarlyClient() {
        text += text;
        if (text.get_length() != 10 || unit == nullptr || globalMemoryManager->fastAllocate(40, true) == nullptr) {
            _exit(EXIT_FAILURE);
        }
        globalMemoryManager->fastUnallocate(unit);
    }

    _WideString text{"early"};
    void * unit = globalMemoryManager->fastAllocate(40, true);
};

[[gnu::init_priority(103)]] EarlyClient earlyClient;

std::string heard;

/// Brings the library up and down once more, beside the one that runs, and gathers what it says.
class Lifecycle : public testing::Test {
protected:
    Lifecycle() {
        heard.clear();
        heard.reserve(1000);
    }

    ~Lifecycle() override {
        ordinary_allocator::servedBeforeRefusal = -1;
        morvane::platform::setDebugListener(listener);
        globalProcessMemory = memory;
        globalMemoryManager = manager;
        morvane::libraryIsDown = false;
    }

private:
    _Memory * memory = globalProcessMemory;
    _MemoryManager * manager = globalMemoryManager;
    morvane::platform::DebugListener listener =
        morvane::platform::setDebugListener([](unsigned short int const * text) {
            for (; *text != 0; ++text) {
                heard += static_cast<char>(*text);
            }
        });
};

void tell(std::uint32_t reason) {
    EXPECT_EQ(morvane::libraryEntry(nullptr, reason, nullptr), 1);
}

TEST_F(Lifecycle, ServesStaticObjectsOfItsClientsAndDoesNothingForOtherReasons) {
    EXPECT_EQ(earlyClient.text.get_length(), 5);
    EXPECT_NE(earlyClient.unit, nullptr);
    _Memory * const before = globalProcessMemory;
    for (std::uint32_t const reason : {2U, 3U, 4U, 0xFFFFFFFFU}) {
        tell(reason);
    }
    EXPECT_EQ(globalProcessMemory, before);
    EXPECT_EQ(heard, "");
}

TEST_F(Lifecycle, ReportsWhatTheHeapAndThePoolsWereAskedFor) {
    long const before = ordinary_allocator::liveBlocks;
    tell(morvane::processAttach);
    EXPECT_EQ(heard, "Init Quorlis Morvane Library...\r\n");
    globalProcessMemory->heapUnallocate(globalProcessMemory->heapAllocate(10, false));
    globalMemoryManager->fastUnallocate(globalMemoryManager->fastAllocate(100, false));
    globalMemoryManager->fastAllocate(16, false);
    globalMemoryManager->fastUnallocate(globalMemoryManager->fastAllocate(5000, false));
    tell(morvane::processDetach);
    // One block of its own, two pool nodes, and the report's text.
    EXPECT_EQ(heard, "Init Quorlis Morvane Library...\r\n"
                     "memory allocation count : 4\r\n"
                     "memory unallocation count : 2\r\n"
                     "Done Quorlis Morvane Library...\r\n"
                     "unitSize:16 [allocCount:1, unallocCount:0]\r\nunitSize:32 [allocCount:0, unallocCount:0]\r\n"
                     "unitSize:64 [allocCount:0, unallocCount:0]\r\nunitSize:128 [allocCount:1, unallocCount:1]\r\n"
                     "unitSize:256 [allocCount:0, unallocCount:0]\r\nunitSize:512 [allocCount:0, unallocCount:0]\r\n"
                     "unitSize:1024 [allocCount:0, unallocCount:0]\r\n");
    EXPECT_EQ(ordinary_allocator::liveBlocks, before);
}

TEST_F(Lifecycle, ComesUpAndGoesDownWithoutMemory) {
    ordinary_allocator::servedBeforeRefusal = 0;
    tell(morvane::processAttach);
    EXPECT_EQ(globalProcessMemory, nullptr);
    EXPECT_EQ(globalMemoryManager, nullptr);
    EXPECT_EQ(_WideString("nowhere").get_length(), 0);
    tell(morvane::processDetach);
    EXPECT_EQ(heard, "Init Quorlis Morvane Library...\r\n"
                     "memory allocation count : 0\r\n"
                     "memory unallocation count : 0\r\n"
                     "Done Quorlis Morvane Library...\r\n");
}

} // namespace
