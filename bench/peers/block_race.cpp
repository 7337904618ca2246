// Small blocks of 16 to 64 bytes beside the allocators that a program could take instead.
#include "race.h"

#include <boost/pool/pool_alloc.hpp>
#include <boost/pool/singleton_pool.hpp>
#include <cstdint>
#include <cstdlib>
#include <dlfcn.h>
#include <memory>
#include <memory_resource>
#include <morvane/core/lifecycle.h>
#include <morvane/core/memory.h>
#include <morvane/core/memory_manager.h>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

/// Pairs of functions found in a library that was loaded aside, so that it replaces nobody's malloc.
struct LoadedHeap {
    void * (*take)(std::size_t) = nullptr;
    void (*give)(void *) = nullptr;

    LoadedHeap(char const * library, char const * takeName, char const * giveName) {
        void * handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
        if (handle == nullptr) {
            std::fprintf(stderr, "%s\n", dlerror());
            std::exit(1);
        }
        take = reinterpret_cast<void * (*)(std::size_t)>(dlsym(handle, takeName));
        give = reinterpret_cast<void (*)(void *)>(dlsym(handle, giveName));
    }
};

LoadedHeap const & mimalloc() {
    static LoadedHeap const heap("libmimalloc.so.2", "mi_malloc", "mi_free");
    return heap;
}

LoadedHeap const & jemalloc() {
    static LoadedHeap const heap("libjemalloc.so.2", "malloc", "free");
    return heap;
}

struct PoolsOfMorvane {
    void * take(std::uint32_t size) { return globalMemoryManager->fastAllocate(size, false); }
    void give(void * block, std::uint32_t) { globalMemoryManager->fastUnallocate(block); }
};

struct HeapOfMorvane {
    void * take(std::uint32_t size) { return globalProcessMemory->heapAllocate(size, false); }
    void give(void * block, std::uint32_t) { globalProcessMemory->heapUnallocate(block); }
};

struct Malloc {
    void * take(std::uint32_t size) { return std::malloc(size); }
    void give(void * block, std::uint32_t) { std::free(block); }
};

struct Mimalloc {
    LoadedHeap const heap = mimalloc();
    void * take(std::uint32_t size) { return heap.take(size); }
    void give(void * block, std::uint32_t) { heap.give(block); }
};

struct Jemalloc {
    LoadedHeap const heap = jemalloc();
    void * take(std::uint32_t size) { return heap.take(size); }
    void give(void * block, std::uint32_t) { heap.give(block); }
};

/// The pool behind boost::fast_pool_allocator: one for each size of block.
struct BoostFastPool {
    template <unsigned Size>
    using Pool = boost::singleton_pool<boost::fast_pool_allocator_tag, Size>;

    void * take(std::uint32_t size) {
        switch ((size + 15) / 16) {
        case 1:
            return Pool<16>::malloc();
        case 2:
            return Pool<32>::malloc();
        case 3:
            return Pool<48>::malloc();
        default:
            return Pool<64>::malloc();
        }
    }
    void give(void * block, std::uint32_t size) {
        switch ((size + 15) / 16) {
        case 1:
            Pool<16>::free(block);
            break;
        case 2:
            Pool<32>::free(block);
            break;
        case 3:
            Pool<48>::free(block);
            break;
        default:
            Pool<64>::free(block);
            break;
        }
    }
};

template <typename Resource>
struct StandardPool {
    std::shared_ptr<Resource> resource = std::make_shared<Resource>();
    void * take(std::uint32_t size) { return resource->allocate(size, 8); }
    void give(void * block, std::uint32_t size) { resource->deallocate(block, size, 8); }
};

/// Sizes and order of a run, the same for all.
struct Plan {
    std::vector<std::uint32_t> sizes;
    std::vector<std::uint32_t> order;

    explicit Plan(std::uint32_t count) : sizes(count), order(count) {
        std::mt19937 random(7);
        for (std::uint32_t index = 0; index < count; ++index) {
            sizes[index] = 16 + random() % 49;
            order[index] = index;
        }
        for (std::uint32_t index = count - 1; index > 0; --index) {
            std::swap(order[index], order[random() % (index + 1)]);
        }
    }
};

enum class Pattern { pair, lastInFirstOut, firstInFirstOut, random };

template <typename Heap>
void runPattern(Heap & heap, Pattern pattern, Plan const & plan, std::vector<void *> & blocks) {
    auto const count = static_cast<std::uint32_t>(plan.sizes.size());
    switch (pattern) {
    case Pattern::pair:
        for (std::uint32_t index = 0; index < count; ++index) {
            void * block = heap.take(plan.sizes[index]);
            *static_cast<std::uint32_t *>(block) = index;
            race::keep(block); // a compiler may leave out the pair else
            heap.give(block, plan.sizes[index]);
        }
        break;
    case Pattern::lastInFirstOut:
    case Pattern::firstInFirstOut:
        for (std::uint32_t index = 0; index < count; ++index) {
            blocks[index] = heap.take(plan.sizes[index]);
            *static_cast<std::uint32_t *>(blocks[index]) = index;
        }
        for (std::uint32_t step = 0; step < count; ++step) {
            std::uint32_t const index = pattern == Pattern::firstInFirstOut ? step : count - 1 - step;
            heap.give(blocks[index], plan.sizes[index]);
        }
        break;
    case Pattern::random:
        // All live, then each replaced once in random order.
        for (std::uint32_t const index : plan.order) {
            heap.give(blocks[index], plan.sizes[index]);
            blocks[index] = heap.take(plan.sizes[index]);
            *static_cast<std::uint32_t *>(blocks[index]) = index;
        }
        break;
    }
}

template <typename Heap>
void fill(Heap & heap, Plan const & plan, std::vector<void *> & blocks) {
    for (std::size_t index = 0; index < plan.sizes.size(); ++index) {
        blocks[index] = heap.take(plan.sizes[index]);
    }
}

template <typename Heap>
void drain(Heap & heap, Plan const & plan, std::vector<void *> const & blocks) {
    for (std::size_t index = 0; index < plan.sizes.size(); ++index) {
        heap.give(blocks[index], plan.sizes[index]);
    }
}

/// Times of all contestants of one row; each holds its live blocks only while it runs its turn.
class Row {
public:
    Row(race::Race & contest, std::string group, std::string name, Pattern pattern, std::uint32_t live, int threads)
        : contest_(contest), group_(std::move(group)), name_(std::move(name)), pattern_(pattern), plan_(live),
          threads_(threads) {}

    template <typename Heap>
    void add(char const * name) {
        names_.emplace_back(name);
        turns_.push_back([this, heap = Heap{}]() mutable { return turn(heap); });
    }

    void run() {
        std::vector<std::vector<double>> seconds(names_.size());
        for (int round = -1; round < contest_.rounds(); ++round) {
            for (std::size_t turn = 0; turn < turns_.size(); ++turn) {
                std::size_t const index = (turn + static_cast<std::size_t>(round + 1)) % turns_.size();
                double const time = turns_[index]();
                if (round >= 0) {
                    seconds[index].push_back(time);
                }
            }
        }
        for (std::size_t index = 0; index < names_.size(); ++index) {
            contest_.record(group_, name_, static_cast<double>(plan_.sizes.size()) * threads_, names_[index],
                            seconds[index]);
        }
    }

private:
    template <typename Heap>
    double turn(Heap & heap) {
        if (threads_ == 1) {
            return work(heap);
        }
        std::vector<double> seconds(static_cast<std::size_t>(threads_));
        std::vector<std::thread> threads;
        for (int thread = 0; thread < threads_; ++thread) {
            threads.emplace_back(
                [this, &heap, &seconds, thread] { seconds[static_cast<std::size_t>(thread)] = work(heap); });
        }
        double most = 0;
        for (int thread = 0; thread < threads_; ++thread) {
            threads[static_cast<std::size_t>(thread)].join();
            most = std::max(most, seconds[static_cast<std::size_t>(thread)]);
        }
        return most;
    }

    template <typename Heap>
    double work(Heap & heap) {
        std::vector<void *> blocks(plan_.sizes.size());
        if (pattern_ == Pattern::random) {
            fill(heap, plan_, blocks);
        }
        double const time = race::timeOf([&] { runPattern(heap, pattern_, plan_, blocks); }, 0.005);
        if (pattern_ == Pattern::random) {
            drain(heap, plan_, blocks);
        }
        return time;
    }

    race::Race & contest_;
    std::string group_;
    std::string name_;
    Pattern pattern_;
    Plan plan_;
    int threads_;
    std::vector<std::string> names_;
    std::vector<std::function<double()>> turns_;
};

} // namespace

int main(int count, char ** arguments) {
    race::Race contest(count, arguments);
    struct Kind {
        char const * name;
        Pattern pattern;
    };
    Kind const kinds[]{{"pair", Pattern::pair},
                       {"last in, first out", Pattern::lastInFirstOut},
                       {"first in, first out", Pattern::firstInFirstOut},
                       {"random lifetimes", Pattern::random}};
    // One thread first: once a second thread has run, nobody is single-threaded any more.
    for (int const threads : {1, 2}) {
        std::string const group = threads == 1 ? "small blocks, one thread" : "small blocks, two threads";
        for (Kind const & kind : kinds) {
            for (std::uint32_t const live : {1'000U, 100'000U, contest.quick() ? 500'000U : 2'000'000U}) {
                std::string const name = kind.pattern == Pattern::pair
                                             ? kind.name
                                             : std::string(kind.name) + ", " + std::to_string(live) + " live";
                if ((kind.pattern == Pattern::pair && live != 1'000U) || !contest.wants(group, name)) {
                    continue;
                }
                Row row(contest, group, name, kind.pattern, live, threads);
                row.add<HeapOfMorvane>("Morvane heap");
                row.add<PoolsOfMorvane>("Morvane pools");
                row.add<Malloc>("malloc");
                row.add<Mimalloc>("mimalloc");
                row.add<Jemalloc>("jemalloc");
                row.add<BoostFastPool>("Boost fast pool");
                row.add<StandardPool<std::pmr::synchronized_pool_resource>>("pmr synchronized");
                if (threads == 1) {
                    row.add<StandardPool<std::pmr::unsynchronized_pool_resource>>("pmr unsynchronized");
                }
                row.run();
            }
        }
    }
    return 0;
}
