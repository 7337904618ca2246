// Loads and unloads the shared library, which this program does not link.

#include <cstring>
#include <dlfcn.h>
#include <fstream>
#include <gtest/gtest.h>
#include <latch>
#include <malloc.h>
#include <string>
#include <thread>
#include <unistd.h>

namespace {

char const * const libraryLines =
    "Init Quorlis Morvane Library...\r\n"
    "memory allocation count : 1\r\n"
    "memory unallocation count : 1\r\n"
    "Done Quorlis Morvane Library...\r\n"
    "unitSize:16 [allocCount:0, unallocCount:0]\r\nunitSize:32 [allocCount:0, unallocCount:0]\r\n"
    "unitSize:64 [allocCount:0, unallocCount:0]\r\nunitSize:128 [allocCount:0, unallocCount:0]\r\n"
    "unitSize:256 [allocCount:0, unallocCount:0]\r\nunitSize:512 [allocCount:0, unallocCount:0]\r\n"
    "unitSize:1024 [allocCount:0, unallocCount:0]\r\n";

void * load() {
    void * const library = dlopen(MORVANE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    EXPECT_NE(library, nullptr) << dlerror();
    return library;
}

void unload(void * library) {
    EXPECT_EQ(dlclose(library), 0);
    EXPECT_EQ(dlopen(MORVANE_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "the library is still there";
}

template <typename Function>
Function functionOf(void * library, char const * name) {
    Function function = nullptr;
    void * const symbol = dlsym(library, name);
    EXPECT_NE(symbol, nullptr) << name;
    std::memcpy(&function, &symbol, sizeof(function));
    return function;
}

/// Takes and gives back blocks of all kinds by the exported heap, and leaves others for the library to take along.
void useHeap([[maybe_unused]] void * library) {
#if !defined(__SANITIZE_ADDRESS__)
    auto * const allocate = functionOf<void * (*)(void *, unsigned, bool)>(library, "_ZN7_Memory12heapAllocateEjb");
    auto * const unallocate = functionOf<void (*)(void *, void *)>(library, "_ZN7_Memory14heapUnallocateEPv");
    void * const memory = *static_cast<void **>(dlsym(library, "globalProcessMemory"));
    for (unsigned const bytes : {2U, 40U, 5000U, 100000U, 5000000U}) {
        auto * const block = static_cast<char *>(allocate(memory, bytes, true));
        block[bytes - 1] = 1;
        unallocate(memory, block);
        static_cast<void>(allocate(memory, bytes, false));
    }
#endif
}

std::size_t addressSpaceBytes() {
    std::ifstream statistics("/proc/self/statm");
    std::size_t pages = 0;
    statistics >> pages;
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

// A sanitizer maps memory of its own as it goes.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

TEST(Library, SaysElevenLinesFromLoadingToUnloading) {
    CaptureStderr();
    unload(load());
    EXPECT_EQ(GetCapturedStderr(), libraryLines);
}

TEST(Library, LeavesNothingBehindHoweverOftenItComesAndGoes) {
    CaptureStderr();
    std::size_t blocks = 0;
    std::size_t space = 0;
    for (int round = 0; round < 110; ++round) {
        if (round == 10) { // The loader has settled.
            blocks = mallinfo2().uordblks;
            space = addressSpaceBytes();
        }
        void * const library = load();
        useHeap(library);
        unload(library);
    }
    EXPECT_LE(mallinfo2().uordblks, blocks + 1000);
    if (!isSanitized) {
        EXPECT_LE(addressSpaceBytes(), space + 65536);
    }
    GetCapturedStderr();
}

TEST(Library, CanGoBeforeAThreadThatUsedItEnds) {
    CaptureStderr();
    for (int count = 0; count < 20; ++count) {
        void * const library = load();
        std::latch used(1);
        std::latch gone(1);
        std::jthread const thread([&] {
            useHeap(library);
            used.count_down();
            gone.wait();
        });
        used.wait();
        unload(library);
        gone.count_down();
    }
    GetCapturedStderr();
}

} // namespace
