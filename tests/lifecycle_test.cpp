#include "ordinary_allocator.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <morvane/core/lifecycle.h>
#include <morvane/core/memory.h>
#include <morvane/core/memory_manager.h>
#include <morvane/platform/debug_channel.h>
#include <morvane/platform/library_entry.h>
#include <morvane/strings/wide_string.h>
#include <string>
#include <unistd.h>

namespace {

/// A static object of a client, which uses the library before `main` begins and after it has ended.
class EarlyClient {
public:
    EarlyClient() : text("early"), unit(globalMemoryManager->fastAllocate(40, true)) {}
    EarlyClient(EarlyClient const &) = delete;
    ~EarlyClient() {
        text += text;
        if (text.get_length() != 10 || unit == nullptr || globalMemoryManager->fastAllocate(40, true) == nullptr) {
            _exit(EXIT_FAILURE);
        }
        globalMemoryManager->fastUnallocate(unit);
    }

    EarlyClient & operator=(EarlyClient const &) = delete;

    _WideString text;
    void * unit;
};

[[gnu::init_priority(103)]] EarlyClient earlyClient;

std::string heard;

void listen(unsigned short int const * text) {
    while (*text != 0) {
        heard += static_cast<char>(*text++);
    }
}

/// Brings the library up and down once more, beside the one that runs, and gathers what it says.
class Lifecycle : public testing::Test {
protected:
    Lifecycle()
        : memory(globalProcessMemory), manager(globalMemoryManager),
          listener(morvane::platform::setDebugListener(listen)) {
        heard.clear();
        heard.reserve(1000);
    }

    ~Lifecycle() override {
        ordinary_allocator::servedBeforeRefusal = -1;
        morvane::platform::setDebugListener(listener);
        globalProcessMemory = memory;
        globalMemoryManager = manager;
    }

private:
    _Memory * memory;
    _MemoryManager * manager;
    morvane::platform::DebugListener listener;
};

TEST_F(Lifecycle, ServesStaticObjectsOfItsClients) {
    EXPECT_EQ(earlyClient.text.get_length(), 5);
    EXPECT_NE(earlyClient.unit, nullptr);
}

TEST_F(Lifecycle, DoesNothingForOtherReasons) {
    _Memory * const before = globalProcessMemory;
    for (std::uint32_t const reason : {2U, 3U, 4U, 0xFFFFFFFFU}) {
        EXPECT_EQ(morvane::libraryEntry(nullptr, reason, nullptr), 1);
    }
    EXPECT_EQ(globalProcessMemory, before);
    EXPECT_EQ(heard, "");
}

TEST_F(Lifecycle, ReportsWhatTheHeapAndThePoolsWereAskedFor) {
    long const before = ordinary_allocator::liveBlocks;
    EXPECT_EQ(morvane::libraryEntry(nullptr, morvane::processAttach, nullptr), 1);
    EXPECT_EQ(heard, "Init Quorlis Morvane Library...\r\n");
    heard.clear();
    globalProcessMemory->heapUnallocate(globalProcessMemory->heapAllocate(10, false));
    globalMemoryManager->fastUnallocate(globalMemoryManager->fastAllocate(100, false));
    globalMemoryManager->fastAllocate(16, false);
    globalMemoryManager->fastUnallocate(globalMemoryManager->fastAllocate(5000, false));
    EXPECT_EQ(morvane::libraryEntry(nullptr, morvane::processDetach, nullptr), 1);
    // One block of its own, two pool nodes, and the report's text.
    EXPECT_EQ(heard, "memory allocation count : 4\r\n"
                     "memory unallocation count : 2\r\n"
                     "Done Quorlis Morvane Library...\r\n"
                     "unitSize:16 [allocCount:1, unallocCount:0]\r\n"
                     "unitSize:32 [allocCount:0, unallocCount:0]\r\n"
                     "unitSize:64 [allocCount:0, unallocCount:0]\r\n"
                     "unitSize:128 [allocCount:1, unallocCount:1]\r\n"
                     "unitSize:256 [allocCount:0, unallocCount:0]\r\n"
                     "unitSize:512 [allocCount:0, unallocCount:0]\r\n"
                     "unitSize:1024 [allocCount:0, unallocCount:0]\r\n");
    EXPECT_EQ(ordinary_allocator::liveBlocks, before);
}

TEST_F(Lifecycle, ComesUpAndGoesDownWithoutMemory) {
    ordinary_allocator::servedBeforeRefusal = 0;
    EXPECT_EQ(morvane::libraryEntry(nullptr, morvane::processAttach, nullptr), 1);
    EXPECT_EQ(globalProcessMemory, nullptr);
    EXPECT_EQ(globalMemoryManager, nullptr);
    {
        _WideString text("nowhere");
        EXPECT_EQ(text.get_length(), 0);
    }
    EXPECT_EQ(morvane::libraryEntry(nullptr, morvane::processDetach, nullptr), 1);
    EXPECT_EQ(heard, "Init Quorlis Morvane Library...\r\n"
                     "memory allocation count : 0\r\n"
                     "memory unallocation count : 0\r\n"
                     "Done Quorlis Morvane Library...\r\n");
}

} // namespace
