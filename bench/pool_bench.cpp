// The size-class manager beside the C library's allocator: all blocks are taken, then all given back.
//
// ordered  in the order in which they were taken
// random   in random order
//
// The first argument is the number of blocks that live at once, the second their size.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <morvane/core/lifecycle.h>
#include <morvane/core/memory_manager.h>
#include <numeric>
#include <random>
#include <vector>

namespace {

struct Pools {
    static void * allocate(std::uint32_t bytes) { return globalMemoryManager->fastAllocate(bytes, false); }
    static void free(void * block) { globalMemoryManager->fastUnallocate(block); }
};

struct CLibrary {
    static void * allocate(std::uint32_t bytes) { return std::malloc(bytes); }
    static void free(void * block) { std::free(block); }
};

template <typename Allocator, bool shuffle>
void takeAndGiveBack(benchmark::State & state) {
    auto const live = static_cast<std::size_t>(state.range(0));
    auto const bytes = static_cast<std::uint32_t>(state.range(1));
    std::vector<std::uint32_t> order(live);
    std::iota(order.begin(), order.end(), 0U);
    if (shuffle) {
        std::shuffle(order.begin(), order.end(), std::mt19937(1));
    }
    std::vector<void *> blocks(live);
    for (auto _ : state) {
        for (void *& block : blocks) {
            block = Allocator::allocate(bytes);
            *static_cast<char volatile *>(block) = 1;
        }
        for (std::uint32_t const index : order) {
            Allocator::free(blocks[index]);
        }
    }
    state.counters["ns_a_pair"] = benchmark::Counter(
        static_cast<double>(live) * 1e-9, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

template <typename Allocator>
void ordered(benchmark::State & state) {
    takeAndGiveBack<Allocator, false>(state);
}

template <typename Allocator>
void random(benchmark::State & state) {
    takeAndGiveBack<Allocator, true>(state);
}

/// One block at a time, by several threads from one pool.
template <typename Allocator>
void pair(benchmark::State & state) {
    for (auto _ : state) {
        void * block = Allocator::allocate(64);
        benchmark::DoNotOptimize(block);
        Allocator::free(block);
    }
}

#define POOL_BENCHMARK(name)                                                                                           \
    BENCHMARK(name<Pools>)->ArgsProduct({{1000, 100000, 2000000}, {16, 64}})->Args({100000, 1024});                    \
    BENCHMARK(name<CLibrary>)->ArgsProduct({{1000, 100000, 2000000}, {16, 64}})->Args({100000, 1024})

POOL_BENCHMARK(ordered);
POOL_BENCHMARK(random);
BENCHMARK(pair<Pools>)->Threads(1)->Threads(2);
BENCHMARK(pair<CLibrary>)->Threads(1)->Threads(2);

} // namespace

BENCHMARK_MAIN();
