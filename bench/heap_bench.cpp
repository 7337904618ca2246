// The process heap beside the C library's allocator.
//
// live       blocks that are alive at once
// pair       one block taken and given back at a time
// fifo, lifo all taken, then all given back in the same or the opposite order
// random     a full set in which a random block is given back and another one taken in its place

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <morvane/platform/process_heap.h>
#include <vector>

namespace {

struct ProcessHeap {
    static void * allocate(std::size_t bytes) { return morvane::platform::heapAllocate(bytes, false); }
    static void * allocateZeroed(std::size_t bytes) { return morvane::platform::heapAllocate(bytes, true); }
    static void free(void * block) { morvane::platform::heapFree(block); }
};

struct CLibrary {
    static void * allocate(std::size_t bytes) { return std::malloc(bytes); }
    static void * allocateZeroed(std::size_t bytes) { return std::calloc(1, bytes); }
    static void free(void * block) { std::free(block); }
};

class Random {
public:
    std::uint32_t next() {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        return static_cast<std::uint32_t>(state >> 16);
    }

private:
    std::uint64_t state = 88172645463325252U;
};

/// 16 to 64 bytes, as texts and nodes have.
std::vector<std::uint16_t> blockSizes(std::size_t count) {
    Random random;
    std::vector<std::uint16_t> sizes(count);
    for (std::uint16_t & size : sizes) {
        size = static_cast<std::uint16_t>(16 + random.next() % 49);
    }
    return sizes;
}

void touch(void * block) {
    *static_cast<char volatile *>(block) = 1;
}

template <typename Heap>
void pair(benchmark::State & state) {
    auto const bytes = static_cast<std::size_t>(state.range(0));
    for (auto _ : state) {
        void * block = Heap::allocate(bytes);
        benchmark::DoNotOptimize(block);
        Heap::free(block);
    }
}

template <typename Heap>
void zeroedPair(benchmark::State & state) {
    auto const bytes = static_cast<std::size_t>(state.range(0));
    for (auto _ : state) {
        void * block = Heap::allocateZeroed(bytes);
        benchmark::DoNotOptimize(block);
        Heap::free(block);
    }
}

template <typename Heap, bool reversed>
void batch(benchmark::State & state) {
    auto const live = static_cast<std::size_t>(state.range(0));
    std::vector<std::uint16_t> const sizes = blockSizes(live);
    std::vector<void *> blocks(live);
    for (auto _ : state) {
        for (std::size_t index = 0; index < live; ++index) {
            blocks[index] = Heap::allocate(sizes[index]);
            touch(blocks[index]);
        }
        for (std::size_t index = 0; index < live; ++index) {
            Heap::free(blocks[reversed ? live - 1 - index : index]);
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <typename Heap>
void fifo(benchmark::State & state) {
    batch<Heap, false>(state);
}

template <typename Heap>
void lifo(benchmark::State & state) {
    batch<Heap, true>(state);
}

template <typename Heap>
void random(benchmark::State & state) {
    auto const live = static_cast<std::size_t>(state.range(0));
    std::vector<std::uint16_t> const sizes = blockSizes(live);
    std::vector<void *> blocks(live);
    for (std::size_t index = 0; index < live; ++index) {
        blocks[index] = Heap::allocate(sizes[index]);
        touch(blocks[index]);
    }
    Random numbers;
    for (auto _ : state) {
        std::size_t const index = numbers.next() % live;
        Heap::free(blocks[index]);
        blocks[index] = Heap::allocate(sizes[numbers.next() % live]);
        touch(blocks[index]);
    }
    for (void * const block : blocks) {
        Heap::free(block);
    }
}

/// A set whose blocks go in random order, as those of a tree that was changed much, and the set made anew.
template <typename Heap>
void shuffled(benchmark::State & state) {
    auto const live = static_cast<std::size_t>(state.range(0));
    std::vector<std::uint16_t> const sizes = blockSizes(live);
    std::vector<std::uint32_t> order(live);
    Random numbers;
    for (std::uint32_t index = 0; index < live; ++index) {
        order[index] = index;
        std::swap(order[index], order[numbers.next() % (index + 1)]);
    }
    std::vector<void *> blocks(live);
    for (auto _ : state) {
        for (std::size_t index = 0; index < live; ++index) {
            blocks[index] = Heap::allocate(sizes[index]);
            touch(blocks[index]);
        }
        for (std::uint32_t const index : order) {
            Heap::free(blocks[index]);
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

#define HEAP_BENCHMARK(name, ...)                                                                                      \
    BENCHMARK(name<ProcessHeap>)->__VA_ARGS__;                                                                         \
    BENCHMARK(name<CLibrary>)->__VA_ARGS__

HEAP_BENCHMARK(pair, Arg(16)->Arg(40)->Arg(1000)->Arg(20000)->Arg(426000)->Arg(20000000));
HEAP_BENCHMARK(zeroedPair, Arg(2)->Arg(40)->Arg(1000));
HEAP_BENCHMARK(fifo, Arg(1000)->Arg(100000)->Arg(2000000));
HEAP_BENCHMARK(lifo, Arg(1000)->Arg(100000)->Arg(2000000));
HEAP_BENCHMARK(shuffled, Arg(1000)->Arg(100000)->Arg(2000000));
HEAP_BENCHMARK(random, Arg(1000)->Arg(100000)->Arg(2000000));
BENCHMARK(pair<ProcessHeap>)->Arg(40)->Threads(2);
BENCHMARK(pair<CLibrary>)->Arg(40)->Threads(2);

} // namespace

BENCHMARK_MAIN();
