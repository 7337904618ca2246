#include <morvane/platform/heap_segment.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <morvane/platform/critical_section_guard.h>
#include <morvane/platform/system_pages.h>

namespace morvane::platform {
namespace {

using SliceBits = std::uint64_t;

/// All slices but the head.
constexpr SliceBits allSlices = ~SliceBits{1};

/// Free memory that is kept for later, at most: enough for a large document that comes and goes.
constexpr std::size_t mostKeptBytes = std::size_t{sizeof(void *) >= 8 ? 256U : 32U} << 20;

/// The memory of huge blocks that is kept, in blocks.
constexpr std::size_t mostKeptHuge = 8;

/// Slices taken and given back in a period, at least. What lay idle for a whole period goes back to the system.
constexpr std::size_t leastPeriod = 4096;

/// Segments before large pages are asked for: a small program shall stay small.
constexpr std::size_t smallPageSegments = 2;

constexpr std::size_t systemPageBytes = 4096;

SliceBits sliceRun(std::size_t begin, std::size_t count) {
    return ((SliceBits{1} << count) - 1) << begin;
}

std::uint32_t longestRunOf(SliceBits bits) {
    std::uint32_t length = 0;
    for (; bits != 0; ++length) {
        bits &= bits << 1;
    }
    return length;
}

/// The first place where a run of `count` bits begins.
std::size_t findRun(SliceBits bits, std::size_t count) {
    for (std::size_t length = 1; length < count; ++length) {
        bits &= bits >> 1;
    }
    return static_cast<std::size_t>(std::countr_zero(bits));
}

char * sliceAt(HeapSegment & segment, std::size_t slice) {
    return reinterpret_cast<char *>(&segment) + slice * sliceBytes;
}

std::size_t bytesOf(SliceBits slices) {
    return static_cast<std::size_t>(std::popcount(slices)) * sliceBytes;
}

/// All segments of the process.
class SegmentPool {
public:
    /// Slices of one segment, and which of them may hold old bytes.
    struct Slices {
        HeapSegment * segment;
        std::size_t first;
        SliceBits dirty;
    };

    Slices acquire(std::size_t count);
    void release(HeapSegment & segment, std::size_t first, std::size_t count);

    /// A segment with room for one block of so many bytes; `dirty` tells whether it was used before.
    HeapSegment * acquireHuge(std::size_t bytes, bool & dirty);
    void releaseHuge(HeapSegment & segment);

    void releaseAll();

    std::size_t mappedBytes() {
        CriticalSectionGuard const guard(lock);
        return mapped;
    }

    _RTL_CRITICAL_SECTION lock;

private:
    HeapSegment * addSegment();
    HeapSegment * mapSegment(std::size_t bytes, bool huge);
    void enlist(HeapSegment & segment);

    void fileSegment(HeapSegment & segment);
    void unfileSegment(HeapSegment & segment);

    /// Takes the segment out of the pool, and puts it before those that `doomed` leads to.
    void doom(HeapSegment & segment, HeapSegment *& doomed);
    static void unmap(HeapSegment * doomed);

    /// Counts slices that changed hands, and ends the period when it is due.
    void turnOver(std::size_t slices, HeapSegment *& doomed);
    void endPeriod(HeapSegment *& doomed);
    void discardIdle(HeapSegment & segment);

    /// Segments whose longest free run has so many slices, and a bit for each list that is not empty.
    HeapSegment * segmentsByRun[segmentSlices]{};
    SliceBits runLengths = 0;

    /// Every segment, but those of huge blocks that are kept.
    HeapSegment * all = nullptr;
    std::size_t sharedSegments = 0;
    std::size_t mapped = 0;

    HeapSegment * keptHuge[mostKeptHuge]{};
    std::size_t keptHugeCount = 0;
    /// Memory that is free and holds old bytes, in segments and under huge blocks.
    std::size_t keptBytes = 0;

    std::size_t turnover = 0;
};

constinit SegmentPool pool;

SegmentPool::Slices SegmentPool::acquire(std::size_t count) {
    HeapSegment * doomed = nullptr;
    Slices slices{nullptr, 0, 0};
    {
        CriticalSectionGuard const guard(lock);
        SliceBits const longEnough = runLengths & ~sliceRun(0, count);
        HeapSegment * const segment = longEnough != 0 ? segmentsByRun[std::countr_zero(longEnough)] : addSegment();
        if (segment == nullptr) {
            return slices;
        }
        std::size_t const first = findRun(segment->freeSlices, count);
        SliceBits const taken = sliceRun(first, count);
        slices = {segment, first, segment->dirtySlices & taken};
        keptBytes -= bytesOf(slices.dirty);
        unfileSegment(*segment);
        segment->freeSlices &= ~taken;
        segment->idleSlices &= ~taken;
        fileSegment(*segment);
        turnOver(count, doomed);
    }
    unmap(doomed);
    return slices;
}

void SegmentPool::release(HeapSegment & segment, std::size_t first, std::size_t count) {
    HeapSegment * doomed = nullptr;
    {
        CriticalSectionGuard const guard(lock);
        SliceBits const slices = sliceRun(first, count);
        unfileSegment(segment);
        segment.freeSlices |= slices;
        segment.dirtySlices |= slices;
        keptBytes += bytesOf(slices);
        fileSegment(segment);
        if (segment.freeSlices == allSlices && keptBytes > mostKeptBytes) {
            doom(segment, doomed);
        }
        turnOver(count, doomed);
    }
    unmap(doomed);
}

HeapSegment * SegmentPool::acquireHuge(std::size_t bytes, bool & dirty) {
    constexpr std::size_t mostBytes = std::numeric_limits<std::size_t>::max() - 2 * segmentBytes;
    if (bytes > mostBytes) {
        return nullptr;
    }
    std::size_t const needed = (bytes + 2 * sliceBytes - 1) / sliceBytes * sliceBytes;
    CriticalSectionGuard const guard(lock);
    std::size_t best = keptHugeCount;
    for (std::size_t index = 0; index < keptHugeCount; ++index) {
        std::size_t const held = keptHuge[index]->mappedBytes;
        if (held >= needed && held / 2 <= needed && (best == keptHugeCount || held < keptHuge[best]->mappedBytes)) {
            best = index;
        }
    }
    dirty = best != keptHugeCount;
    if (!dirty) {
        return mapSegment(needed, true);
    }
    HeapSegment * const segment = keptHuge[best];
    std::copy(keptHuge + best + 1, keptHuge + keptHugeCount, keptHuge + best);
    --keptHugeCount;
    keptBytes -= segment->mappedBytes;
    segment->idleSlices = 0;
    enlist(*segment);
    return segment;
}

void SegmentPool::releaseHuge(HeapSegment & segment) {
    HeapSegment * doomed = nullptr;
    {
        CriticalSectionGuard const guard(lock);
        std::size_t const bytes = segment.mappedBytes;
        doom(segment, doomed);
        if (bytes <= mostKeptBytes / 2 && keptBytes <= mostKeptBytes - bytes) {
            doomed = nullptr;
            mapped += bytes;
            keptBytes += bytes;
            segment.idleSlices = 0;
            if (keptHugeCount == mostKeptHuge) {
                HeapSegment * const oldest = keptHuge[0];
                std::copy(keptHuge + 1, keptHuge + keptHugeCount, keptHuge);
                --keptHugeCount;
                keptBytes -= oldest->mappedBytes;
                mapped -= oldest->mappedBytes;
                oldest->next = doomed;
                doomed = oldest;
            }
            keptHuge[keptHugeCount++] = &segment;
        }
        turnOver(bytes / sliceBytes, doomed);
    }
    unmap(doomed);
}

void SegmentPool::releaseAll() {
    CriticalSectionGuard const guard(lock);
    HeapSegment * doomed = nullptr;
    while (all != nullptr) {
        doom(*all, doomed);
    }
    for (std::size_t index = 0; index < keptHugeCount; ++index) {
        keptHuge[index]->next = doomed;
        doomed = keptHuge[index];
    }
    keptHugeCount = 0;
    keptBytes = 0;
    mapped = 0;
    sharedSegments = 0;
    turnover = 0;
    unmap(doomed);
}

HeapSegment * SegmentPool::addSegment() {
    HeapSegment * const segment = mapSegment(segmentBytes, false);
    if (segment != nullptr) {
        if (++sharedSegments > smallPageSegments) {
            preferLargePages(segment, segmentBytes);
        }
        segment->freeSlices = allSlices;
        fileSegment(*segment);
    }
    return segment;
}

HeapSegment * SegmentPool::mapSegment(std::size_t bytes, bool huge) {
    auto * const segment = static_cast<HeapSegment *>(mapPages(bytes, segmentBytes));
    if (segment == nullptr) {
        return nullptr;
    }
    if (huge) {
        preferLargePages(segment, bytes);
    }
    // The system's zeros are the rest of the head.
    segment->mappedBytes = bytes;
    segment->huge = huge;
    mapped += bytes;
    enlist(*segment);
    return segment;
}

void SegmentPool::enlist(HeapSegment & segment) {
    segment.nextOfAll = all;
    segment.previousOfAll = nullptr;
    if (all != nullptr) {
        all->previousOfAll = &segment;
    }
    all = &segment;
}

void SegmentPool::fileSegment(HeapSegment & segment) {
    std::uint32_t const length = longestRunOf(segment.freeSlices);
    segment.longestRun = length;
    if (length == 0) {
        return;
    }
    segment.previous = nullptr;
    segment.next = segmentsByRun[length];
    if (segment.next != nullptr) {
        segment.next->previous = &segment;
    }
    segmentsByRun[length] = &segment;
    runLengths |= SliceBits{1} << length;
}

void SegmentPool::unfileSegment(HeapSegment & segment) {
    std::uint32_t const length = segment.longestRun;
    if (length == 0) {
        return;
    }
    if (segment.next != nullptr) {
        segment.next->previous = segment.previous;
    }
    if (segment.previous != nullptr) {
        segment.previous->next = segment.next;
    } else {
        segmentsByRun[length] = segment.next;
        if (segment.next == nullptr) {
            runLengths &= ~(SliceBits{1} << length);
        }
    }
}

void SegmentPool::doom(HeapSegment & segment, HeapSegment *& doomed) {
    unfileSegment(segment);
    if (segment.nextOfAll != nullptr) {
        segment.nextOfAll->previousOfAll = segment.previousOfAll;
    }
    if (segment.previousOfAll != nullptr) {
        segment.previousOfAll->nextOfAll = segment.nextOfAll;
    } else {
        all = segment.nextOfAll;
    }
    mapped -= segment.mappedBytes;
    if (!segment.huge) {
        --sharedSegments;
        keptBytes -= bytesOf(segment.freeSlices & segment.dirtySlices);
    }
    segment.next = doomed;
    doomed = &segment;
}

void SegmentPool::unmap(HeapSegment * doomed) {
    while (doomed != nullptr) {
        HeapSegment * const next = doomed->next;
        unmapPages(doomed, doomed->mappedBytes);
        doomed = next;
    }
}

void SegmentPool::turnOver(std::size_t slices, HeapSegment *& doomed) {
    turnover += slices;
    if (turnover >= leastPeriod && turnover / 4 >= mapped / sliceBytes) {
        turnover = 0;
        endPeriod(doomed);
    }
}

void SegmentPool::endPeriod(HeapSegment *& doomed) {
    for (HeapSegment * segment = all; segment != nullptr;) {
        HeapSegment * const next = segment->nextOfAll;
        if (segment->idleSlices == allSlices) {
            doom(*segment, doomed);
        } else {
            discardIdle(*segment);
            segment->idleSlices = segment->freeSlices;
        }
        segment = next;
    }
    std::size_t stay = 0;
    for (std::size_t index = 0; index < keptHugeCount; ++index) {
        HeapSegment * const segment = keptHuge[index];
        if (segment->idleSlices != 0) {
            keptBytes -= segment->mappedBytes;
            mapped -= segment->mappedBytes;
            segment->next = doomed;
            doomed = segment;
        } else {
            segment->idleSlices = allSlices;
            keptHuge[stay++] = segment;
        }
    }
    keptHugeCount = stay;
}

void SegmentPool::discardIdle(HeapSegment & segment) {
    SliceBits idle = segment.idleSlices & segment.dirtySlices;
    while (idle != 0) {
        auto const first = static_cast<std::size_t>(std::countr_zero(idle));
        auto const count = static_cast<std::size_t>(std::countr_one(idle >> first));
        SliceBits const run = sliceRun(first, count);
        if (discardPages(sliceAt(segment, first), count * sliceBytes)) {
            segment.dirtySlices &= ~run;
            keptBytes -= count * sliceBytes;
        }
        idle &= ~run;
    }
}

} // namespace

HeapPage * acquirePage(bool populate) noexcept {
    SegmentPool::Slices const slices = pool.acquire(1);
    if (slices.segment == nullptr) {
        return nullptr;
    }
    HeapPage & page = slices.segment->pages[slices.first];
    page.zeroed = slices.dirty == 0;
    page.spanSlices = 0;
    if (populate && page.zeroed) {
        populatePages(sliceAt(*slices.segment, slices.first), sliceBytes);
    }
    return &page;
}

void releasePage(HeapPage & page) noexcept {
    HeapSegment & segment = segmentOf(&page);
    page.owner.store(nullptr, std::memory_order_relaxed);
    pool.release(segment, static_cast<std::size_t>(&page - segment.pages), 1);
}

void * acquireLarge(std::size_t bytes, bool zeroed) noexcept {
    if (bytes > mostSpanSlices * sliceBytes) {
        bool dirty = false;
        HeapSegment * const segment = pool.acquireHuge(bytes, dirty);
        if (segment == nullptr) {
            return nullptr;
        }
        char * const block = sliceAt(*segment, 1);
        if (zeroed && dirty) {
            std::memset(block, 0, bytes);
        }
        return block;
    }
    std::size_t const count = std::max<std::size_t>((bytes + sliceBytes - 1) / sliceBytes, 1);
    SegmentPool::Slices const slices = pool.acquire(count);
    if (slices.segment == nullptr) {
        return nullptr;
    }
    slices.segment->pages[slices.first].spanSlices = static_cast<std::uint8_t>(count);
    char * const block = sliceAt(*slices.segment, slices.first);
    if (slices.dirty != sliceRun(slices.first, count)) {
        populatePages(block, (bytes + systemPageBytes - 1) / systemPageBytes * systemPageBytes);
    }
    if (zeroed) {
        for (std::size_t slice = 0; slice < count; ++slice) {
            if ((slices.dirty >> (slices.first + slice) & 1) != 0) {
                std::size_t const offset = slice * sliceBytes;
                std::memset(block + offset, 0, std::min(sliceBytes, bytes - offset));
            }
        }
    }
    return block;
}

void releaseLarge(void * block) noexcept {
    HeapSegment & segment = segmentOf(block);
    if (segment.huge) {
        pool.releaseHuge(segment);
        return;
    }
    std::size_t const first = sliceNumber(block);
    std::size_t const count = segment.pages[first].spanSlices;
    if (count != 0) {
        segment.pages[first].spanSlices = 0;
        pool.release(segment, first, count);
    }
}

void releaseSegments() noexcept {
    pool.releaseAll();
}

std::size_t mappedHeapBytes() noexcept {
    return pool.mappedBytes();
}

void lockSegments() noexcept {
    pool.lock.enter();
}

void unlockSegments() noexcept {
    pool.lock.leave();
}

} // namespace morvane::platform
