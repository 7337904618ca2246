// Pools for all threads at once, and objects that belong to one thread at a time but go from thread to thread.
#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <morvane/core/lifecycle.h>
#include <morvane/core/literals.h>
#include <morvane/morvane.h>
#include <mutex>
#include <temporary_folder.h>
#include <thread>
#include <vector>

using namespace morvane::literals;

#ifdef __SANITIZE_THREAD__
/// The C library guards its time zone by a lock that the sanitizer does not see.
extern "C" char const * __tsan_default_suppressions() { // NOLINT(bugprone-reserved-identifier): the sanitizer's name
    return "race:tzset_internal";
}
#endif

namespace {

constexpr unsigned threadCount = 4;

/// What threads hand to each other.
template <typename Thing>
struct Mailbox {
    std::vector<Thing> takeAll() {
        std::scoped_lock const lock(mutex);
        return std::exchange(things, {});
    }
    void put(Thing thing) {
        std::scoped_lock const lock(mutex);
        things.push_back(std::move(thing));
    }

    std::mutex mutex;
    std::vector<Thing> things;
};

/// Runs `work` with the numbers of the threads, each on its own thread.
void runInThreads(std::function<void(unsigned)> const & work) {
    std::vector<std::jthread> threads;
    while (threads.size() < threadCount) {
        threads.emplace_back(work, static_cast<unsigned>(threads.size()));
    }
}

struct Block {
    unsigned char * bytes;
    std::uint32_t size;
    bool isOfPools;
};

TEST(Threads, HandBlocksOfThePoolsAndOfTheHeapToEachOther) {
    _MemoryManager & manager = *globalMemoryManager;
    std::array<Mailbox<Block>, threadCount> mailboxes;
    std::atomic<int> damaged{0};
    auto const giveBack = [&](unsigned number) {
        for (auto const & [bytes, size, isOfPools] : mailboxes[number].takeAll()) {
            damaged += std::count(bytes, bytes + size, size % 251) == size ? 0 : 1;
            isOfPools ? manager.fastUnallocate(bytes) : manager.heapUnallocate(bytes);
        }
    };
    runInThreads([&](unsigned number) {
        for (std::uint32_t round = 0; round < 40000; ++round) {
            std::uint32_t const size = round * 37 % 1500 + 1;
            bool const isOfPools = round % 2 == 0;
            void * const bytes = isOfPools ? manager.fastAllocate(size, false) : manager.heapAllocate(size, false);
            std::memset(bytes, static_cast<int>(size % 251), size);
            mailboxes[(number + round / 2) % threadCount].put({static_cast<unsigned char *>(bytes), size, isOfPools});
            giveBack(number);
        }
    });
    for (unsigned number = 0; number < threadCount; ++number) {
        giveBack(number);
    }
    EXPECT_EQ(damaged, 0);
}

TEST(Threads, HaveADocumentEach) {
    TemporaryFolder const folder;
    std::array<Mailbox<std::unique_ptr<DOM::_XMLDocument>>, threadCount> mailboxes;
    std::atomic<int> wrong{0};
    runInThreads([&](unsigned number) {
        std::string const own = std::to_string(number);
        FileName const source = folder.put("source" + own, "<?xml version='1.0'?><a b='c'><d>\u20AC</d><!--f--></a>");
        FileName const target = folder.name("target" + own);
        std::string first;
        for (unsigned round = 0; round < 200; ++round) {
            auto document = std::make_unique<DOM::_XMLDocument>();
            _WideString error;
            wrong += document->loadFromFile(source, error) ? 0 : 1;
            document->getRoot()->addElement(u"g"_w, u"h"_w);
            wrong += document->saveToFile(target, error) ? 0 : 1;
            std::string const saved = folder.get("target" + own);
            first = first.empty() ? saved : first;
            wrong += saved == first && saved.size() > 80 ? 0 : 1;
            mailboxes[(number + 1) % threadCount].put(std::move(document));
            for (auto const & former : mailboxes[number].takeAll()) {
                wrong += former->getRoot()->getAttributeCount() == 1 ? 0 : 1;
            }
        }
    });
    EXPECT_EQ(wrong, 0);
}

} // namespace
