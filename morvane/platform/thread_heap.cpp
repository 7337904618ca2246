#include <morvane/platform/thread_heap.h>

#include <algorithm>
#include <morvane/platform/critical_section_guard.h>
#include <morvane/platform/process_heap.h>
#include <morvane/platform/system_pages.h>
#include <morvane/platform/thread_exit.h>
#include <new>

namespace morvane::platform {

constinit ThreadHeap noHeap;

thread_local constinit ThreadHeap * currentHeap = &noHeap;
thread_local constinit std::uint32_t threadNumber = 0;

/// The heaps of threads that have ended.
///
/// Lock order: this one, then that of the segments.
class IdleHeaps {
public:
    /// A heap for the calling thread: one that waits, or a new one; null when the system refuses.
    ThreadHeap * takeOne() noexcept;
    /// The calling thread ends.
    void putBack(ThreadHeap & heap) noexcept;
    /// A page of the class with free blocks from a heap that waits, if the next one to be looked at has one; null
    /// otherwise.
    HeapPage * takePage(std::size_t sizeClass) noexcept;

    void releaseAll() noexcept;

    _RTL_CRITICAL_SECTION lock;

private:
    void append(ThreadHeap & heap) noexcept;
    ThreadHeap * removeFirst() noexcept;

    std::atomic<ThreadHeap *> first{nullptr};
    ThreadHeap * last = nullptr;
    ThreadHeap * all = nullptr;
    std::uint32_t numbersGiven = 0;
};

namespace {

constinit IdleHeaps idleHeaps;

constexpr std::size_t heapBytes = (sizeof(ThreadHeap) + 4095) / 4096 * 4096;

void leaveHeap() {
    currentHeap = &noHeap;
    threadNumber = 0;
}

void endThread(void * heap) {
    leaveHeap();
    idleHeaps.putBack(*static_cast<ThreadHeap *>(heap));
}

void *& nextRemote(void * block) {
    return *static_cast<void **>(block);
}

} // namespace

ThreadHeap * IdleHeaps::takeOne() noexcept {
    CriticalSectionGuard const guard(lock);
    ThreadHeap * heap = removeFirst();
    if (heap == nullptr) {
        void * const pages = mapPages(heapBytes, alignof(ThreadHeap));
        if (pages == nullptr) {
            return nullptr;
        }
        heap = new (pages) ThreadHeap;
        heap->nextOfAll = all;
        heap->bearer = numbersGiven != mostThreadNumber ? ++numbersGiven : 0;
        all = heap;
    }
    // Without a call at its end the thread's heap stays behind, and its free blocks with it; the thread itself works.
    setThreadExit(endThread, heap);
    return heap;
}

void IdleHeaps::putBack(ThreadHeap & heap) noexcept {
    CriticalSectionGuard const guard(lock);
    heap.takeRemote();
    heap.closeRuns();
    append(heap);
}

HeapPage * IdleHeaps::takePage(std::size_t sizeClass) noexcept {
    if (first.load(std::memory_order_relaxed) == nullptr) {
        return nullptr;
    }
    CriticalSectionGuard const guard(lock);
    ThreadHeap * const heap = removeFirst();
    if (heap == nullptr) {
        return nullptr;
    }
    heap->takeRemote();
    HeapPage * const page = heap->lists[sizeClass].first;
    if (page != nullptr) {
        heap->unlist(*page);
    }
    append(*heap); // the next look goes to the next heap
    return page;
}

void IdleHeaps::releaseAll() noexcept {
    CriticalSectionGuard const guard(lock);
    while (all != nullptr) {
        ThreadHeap * const heap = all;
        all = heap->nextOfAll;
        unmapPages(heap, heapBytes);
    }
    first.store(nullptr, std::memory_order_relaxed);
    last = nullptr;
}

void IdleHeaps::append(ThreadHeap & heap) noexcept {
    heap.nextIdle = nullptr;
    if (last != nullptr) {
        last->nextIdle = &heap;
    } else {
        first.store(&heap, std::memory_order_relaxed);
    }
    last = &heap;
}

ThreadHeap * IdleHeaps::removeFirst() noexcept {
    ThreadHeap * const heap = first.load(std::memory_order_relaxed);
    if (heap != nullptr) {
        first.store(heap->nextIdle, std::memory_order_relaxed);
        if (heap->nextIdle == nullptr) {
            last = nullptr;
        }
    }
    return heap;
}

/// The calling thread has its first block to come; null when the system refuses it a heap.
ThreadHeap * ThreadHeap::begin() noexcept {
    ThreadHeap * const heap = idleHeaps.takeOne();
    if (heap != nullptr) {
        currentHeap = heap;
        threadNumber = heap->bearer;
    }
    return heap;
}

void * ThreadHeap::allocateSlowly(std::size_t sizeClass, std::size_t bytes, bool zeroed) noexcept {
    if (this == &noHeap) {
        ThreadHeap * const heap = begin();
        return heap != nullptr ? heap->allocate(sizeClass, bytes, zeroed) : nullptr;
    }
    return refill(sizeClass) ? allocate(sizeClass, bytes, zeroed) : nullptr;
}

LaidGap & ThreadHeap::currentGap() noexcept {
    ThreadHeap * const heap = currentHeap != &noHeap ? currentHeap : begin();
    return heap != nullptr ? heap->gap : noHeap.gap;
}

void * ThreadHeap::laySlowly(std::size_t bytes) noexcept {
    if (this == &noHeap) {
        ThreadHeap * const heap = begin();
        return heap != nullptr ? heap->lay(bytes) : nullptr;
    }
    return openGap(bytes) ? gap.lay(bytes) : nullptr;
}

bool ThreadHeap::refill(std::size_t sizeClass) noexcept {
    Run & run = runs[sizeClass];
    if (run.page != nullptr && openRun(run, *run.page)) {
        return true;
    }
    HeapPage * const page = nextPage(sizeClass);
    if (page == nullptr) {
        return false;
    }
    run.page = page;
    run.blockBytes = page->blockBytes;
    return openRun(run, *page);
}

bool ThreadHeap::openRun(Run & run, HeapPage & page) noexcept {
    std::size_t first = 0;
    if (page.freeWords != 0) {
        auto const word = static_cast<std::size_t>(std::countr_zero(page.freeWords));
        first = word * 64;
        run.bits = page.freeBits[word];
        run.zeroed = false;
        page.freeBits[word] = 0;
        page.freeWords &= page.freeWords - 1;
        page.usedBlocks += static_cast<std::uint32_t>(std::popcount(run.bits));
    } else if (page.openedBlocks < page.capacity) {
        first = page.openedBlocks;
        std::size_t const count = std::min<std::size_t>(page.capacity - first, 64);
        run.bits = ~std::uint64_t{0} >> (64 - count);
        run.zeroed = page.zeroed;
        page.openedBlocks = static_cast<std::uint16_t>(first + count);
        page.usedBlocks += static_cast<std::uint32_t>(count);
    } else {
        return false;
    }
    run.base = blocksOf(page) + first * page.blockBytes;
    return true;
}

HeapPage * ThreadHeap::nextPage(std::size_t sizeClass) noexcept {
    Run const & run = runs[sizeClass];
    if (lists[sizeClass].first == nullptr) {
        takeRemote();
        if (run.page != nullptr && run.page->freeWords != 0) {
            return run.page;
        }
    }
    if (HeapPage * const page = listedPage(sizeClass); page != nullptr) {
        return page;
    }
    // A class that has filled a page is likely to fill the next one.
    return makePage(sizeClass, run.page != nullptr);
}

/// A page of the class with free blocks, from this heap's list or one that waits; null when there is none.
HeapPage * ThreadHeap::listedPage(std::size_t sizeClass) noexcept {
    if (HeapPage * const page = lists[sizeClass].first; page != nullptr) {
        unlist(*page);
        return page;
    }
    HeapPage * const page = idleHeaps.takePage(sizeClass);
    if (page != nullptr) {
        page->owner.store(this, std::memory_order_relaxed);
    }
    return page;
}

HeapPage * ThreadHeap::makePage(std::size_t sizeClass, bool populate) noexcept {
    HeapPage * const page = acquirePage(populate);
    if (page == nullptr) {
        return nullptr;
    }
    std::size_t const bytes = blockBytesOf(sizeClass);
    std::size_t const capacity = std::min(sliceBytes / bytes, mostPageBlocks);
    page->freeWords = 0;
    page->reciprocal = static_cast<std::uint32_t>(((std::uint64_t{1} << 32) + bytes - 1) / bytes);
    page->usedBlocks = 0;
    page->fewBlocks = 0;
    page->blockBytes = static_cast<std::uint16_t>(bytes);
    page->capacity = static_cast<std::uint16_t>(capacity);
    page->openedBlocks = 0;
    page->sizeClass = static_cast<std::uint8_t>(sizeClass);
    page->listed = false;
    std::fill_n(page->freeBits, (capacity + 63) / 64, 0);
    if (sizeClass == laidClass) {
        prepareLaidPage(*page);
    }
    page->owner.store(this, std::memory_order_relaxed);
    return page;
}

/// Finds a gap with room for so many bytes, in this page or others.
bool ThreadHeap::openGap(std::size_t bytes) noexcept {
    bool const hadPage = gap.page() != nullptr;
    bool wasOfUse = true;
    while (gap.page() == nullptr || !gap.advance(bytes)) {
        if (gap.page() != nullptr) {
            HeapPage & page = closeGap();
            // It is of use again when half its blocks are back; after it had no room at all, when there is more.
            page.fewBlocks = wasOfUse ? countLaidBlocks(page) / 2 : page.usedBlocks / 4 * 3;
            lookAtLaid(page);
        }
        if (lists[laidClass].first == nullptr) {
            takeRemote();
        }
        HeapPage * page = listedPage(laidClass);
        if (page == nullptr) {
            page = makePage(laidClass, hadPage);
        }
        if (page == nullptr) {
            return false;
        }
        gap.open(*page);
        wasOfUse = false;
    }
    return true;
}

HeapPage & ThreadHeap::closeGap() noexcept {
    HeapPage & page = *gap.page();
    gap.close();
    return page;
}

void ThreadHeap::lookAtLaid(HeapPage & page) noexcept {
    if (page.usedBlocks > page.fewBlocks) {
        return;
    }
    if (gap.page() == &page) {
        gap.beginAnew();
    } else if (page.usedBlocks == 0) {
        if (page.listed) {
            unlist(page);
        }
        releasePage(page);
    } else if (!page.listed) {
        page.fewBlocks = 0;
        enlist(page);
    }
}

void ThreadHeap::freeFromAfar(void * block) noexcept {
    void * head = remote.load(std::memory_order_relaxed);
    do {
        nextRemote(block) = head;
    } while (!remote.compare_exchange_weak(head, block, std::memory_order_release, std::memory_order_relaxed));
}

void ThreadHeap::freeSlowly(HeapPage & page, std::size_t word) noexcept {
    if (page.sizeClass == laidClass) {
        lookAtLaid(page);
        return;
    }
    bool const wasFull = page.freeWords == 0;
    page.freeWords |= std::uint64_t{1} << word;
    if (runs[page.sizeClass].page == &page) {
        return;
    }
    if (page.usedBlocks == 0) {
        if (page.listed) {
            unlist(page);
        }
        releasePage(page);
    } else if (wasFull && !page.listed) {
        enlist(page);
    }
}

void ThreadHeap::enlist(HeapPage & page) noexcept {
    PageList & list = lists[page.sizeClass];
    page.listed = true;
    page.next = nullptr;
    page.previous = list.last;
    if (list.last != nullptr) {
        list.last->next = &page;
    } else {
        list.first = &page;
    }
    list.last = &page;
}

void ThreadHeap::unlist(HeapPage & page) noexcept {
    PageList & list = lists[page.sizeClass];
    page.listed = false;
    (page.next != nullptr ? page.next->previous : list.last) = page.previous;
    (page.previous != nullptr ? page.previous->next : list.first) = page.next;
}

void ThreadHeap::takeRemote() noexcept {
    if (remote.load(std::memory_order_relaxed) == nullptr) {
        return;
    }
    for (void * block = remote.exchange(nullptr, std::memory_order_acquire); block != nullptr;) {
        void * const next = nextRemote(block);
        HeapPage & page = pageOf(block);
        ThreadHeap * const owner = page.owner.load(std::memory_order_relaxed);
        if (owner == this) {
            putBack(page, block);
        } else {
            owner->freeFromAfar(block); // the page was taken over meanwhile
        }
        block = next;
    }
}

void ThreadHeap::closeRuns() noexcept {
    if (gap.page() != nullptr) {
        HeapPage & page = closeGap();
        page.fewBlocks = page.usedBlocks;
        lookAtLaid(page);
    }
    for (std::size_t sizeClass = 0; sizeClass < sizeClasses; ++sizeClass) {
        Run & run = runs[sizeClass];
        if (run.spare != nullptr) {
            putBack(pageOf(run.spare), run.spare);
        }
        HeapPage * const page = run.page;
        if (page == nullptr) {
            continue;
        }
        if (run.bits != 0) {
            auto const word = static_cast<std::size_t>(run.base - blocksOf(*page)) / page->blockBytes / 64;
            page->freeBits[word] |= run.bits;
            page->freeWords |= std::uint64_t{1} << word;
            page->usedBlocks -= static_cast<std::uint32_t>(std::popcount(run.bits));
        }
        run = Run();
        if (page->usedBlocks == 0) {
            releasePage(*page);
        } else if (page->freeWords != 0 || page->openedBlocks < page->capacity) {
            enlist(*page);
        }
    }
}

void segmentLookAt(LaidPage & last) noexcept {
    HeapPage & page = *last.page;
    last = {};
    page.owner.load(std::memory_order_relaxed)->lookAtLaid(page);
}

void segmentFreeElsewhere(void * first, void * second, void * third, LaidPage & last) noexcept {
    HeapPage & page = pageOf(first);
    bool const isOwn = page.owner.load(std::memory_order_relaxed) == currentHeap && page.sizeClass == laidClass;
    if (isOwn && &laidHeadOf(second) == &laidHeadOf(first) && &laidHeadOf(third) == &laidHeadOf(first)) {
        last = {&page, reinterpret_cast<std::uintptr_t>(first)};
        segmentFreeThree(first, second, third, last);
        return;
    }
    segmentFree(first);
    segmentFree(second);
    segmentFree(third);
    last = {};
}

void releaseHeap() noexcept {
    forgetThreadExits();
    leaveHeap();
    idleHeaps.releaseAll();
    releaseSegments();
}

void lockHeap() noexcept {
    idleHeaps.lock.enter();
    lockSegments();
}

void unlockHeap() noexcept {
    unlockSegments();
    idleHeaps.lock.leave();
}

} // namespace morvane::platform
