// Loads and unloads the shared library, which this program does not link.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <malloc.h>
#include <string>
#include <thread>
#include <unistd.h>

namespace {

char const * const libraryLines = "Init Quorlis Morvane Library...\r\n"
                                  "memory allocation count : 1\r\n"
                                  "memory unallocation count : 1\r\n"
                                  "Done Quorlis Morvane Library...\r\n"
                                  "unitSize:16 [allocCount:0, unallocCount:0]\r\n"
                                  "unitSize:32 [allocCount:0, unallocCount:0]\r\n"
                                  "unitSize:64 [allocCount:0, unallocCount:0]\r\n"
                                  "unitSize:128 [allocCount:0, unallocCount:0]\r\n"
                                  "unitSize:256 [allocCount:0, unallocCount:0]\r\n"
                                  "unitSize:512 [allocCount:0, unallocCount:0]\r\n"
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

/// Takes and gives back blocks of all kinds by the exported heap.
class Heap {
public:
    explicit Heap(void * library)
        : allocate(functionOf<Allocate>(library, "_ZN7_Memory12heapAllocateEjb")),
          unallocate(functionOf<Unallocate>(library, "_ZN7_Memory14heapUnallocateEPv")),
          memory(*static_cast<void **>(dlsym(library, "globalProcessMemory"))) {}

    void use() const {
        for (unsigned const bytes : {2U, 40U, 5000U, 100000U, 5000000U}) {
            auto * const block = static_cast<char *>(allocate(memory, bytes, true));
            block[bytes - 1] = 1;
            unallocate(memory, block);
            static_cast<void>(allocate(memory, bytes, false)); // the library takes it along
        }
    }

private:
    using Allocate = void * (*)(void *, unsigned, bool);
    using Unallocate = void (*)(void *, void *);

    Allocate allocate;
    Unallocate unallocate;
    void * memory;
};

/// Sends standard error into a file, as long as it lives.
class ErrorChannel {
public:
    ErrorChannel() : file(std::tmpfile()), former(dup(STDERR_FILENO)) { dup2(fileno(file), STDERR_FILENO); }
    ErrorChannel(ErrorChannel const &) = delete;
    ~ErrorChannel() {
        restore();
        std::fclose(file);
    }

    ErrorChannel & operator=(ErrorChannel const &) = delete;

    void restore() {
        if (former >= 0) {
            dup2(former, STDERR_FILENO);
            close(former);
            former = -1;
        }
    }

    std::string bytes() {
        restore();
        std::string read(static_cast<std::size_t>(lseek(fileno(file), 0, SEEK_END)), ' ');
        EXPECT_EQ(pread(fileno(file), read.data(), read.size(), 0), static_cast<ssize_t>(read.size()));
        return read;
    }

private:
    std::FILE * file;
    int former;
};

std::size_t addressSpaceBytes() {
    std::ifstream statistics("/proc/self/statm");
    std::size_t pages = 0;
    statistics >> pages;
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

TEST(Library, SaysElevenLinesFromLoadingToUnloading) {
    ErrorChannel channel;
    unload(load());
    EXPECT_EQ(channel.bytes(), libraryLines);
}

TEST(Library, LeavesNothingBehindHoweverOftenItComesAndGoes) {
    ErrorChannel channel;
    auto const round = [] {
        void * const library = load();
#if !defined(__SANITIZE_ADDRESS__)
        Heap(library).use();
#endif
        unload(library);
    };
    // The loader settles within a few rounds.
    for (int warming = 0; warming < 10; ++warming) {
        round();
    }
    std::size_t const blocks = mallinfo2().uordblks;
    std::size_t const space = addressSpaceBytes();
    for (int count = 0; count < 100; ++count) {
        round();
    }
    channel.restore();
    EXPECT_LE(mallinfo2().uordblks, blocks + 1000);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    EXPECT_LE(addressSpaceBytes(), space + 65536);
#else
    static_cast<void>(space);
#endif
}

TEST(Library, CanGoBeforeAThreadThatUsedItEnds) {
    ErrorChannel channel;
    for (int count = 0; count < 20; ++count) {
        void * const library = load();
        std::promise<void> used;
        std::promise<void> gone;
        std::thread thread([&] {
#if !defined(__SANITIZE_ADDRESS__)
            Heap(library).use();
#endif
            used.set_value();
            gone.get_future().wait();
        });
        used.get_future().wait();
        unload(library);
        gone.set_value();
        thread.join();
    }
}

} // namespace
