#include <morvane/platform/heap_segment.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>
#include <limits>
#include <morvane/platform/critical_section_guard.h>
#include <morvane/platform/system_pages.h>
#include <morvane/platform/tick_count.h>

namespace morvane::platform {
namespace {

using SliceBits = std::uint64_t;

/// All slices but the head.
constexpr SliceBits allSlices = ~SliceBits{1};

/// Free memory is kept as long as the heap holds no more than a quarter above the most that was in use in this period
/// and the last, and so much.
constexpr std::size_t spareBytes = std::size_t{sizeof(void *) >= 8 ? 64U : 8U} << 20;

/// A period ends when as many slices have changed hands, and four times as many as the heap holds, or when its time is
/// up. What lay idle for a whole period goes back to the system.
constexpr std::size_t leastPeriodSlices = 4096;
constexpr std::uint32_t mostPeriodMilliseconds = 10000;

/// Slices that change hands between two looks at the clock.
constexpr std::size_t clockSlices = 64;

/// Lengths of huge blocks: eight steps to each doubling, from 32 slices on.
constexpr std::size_t hugeClasses = (std::numeric_limits<std::size_t>::digits - 16 - 5) * 8;

/// Classes above its own that a huge block may be taken from: up to twice its length.
constexpr std::size_t hugeReach = 8;

/// Segments before large pages are asked for: a small program shall stay small.
constexpr std::size_t smallPageSegments = 2;

constexpr std::size_t systemPageBytes = 4096;
constexpr std::size_t cacheLineBytes = 64;

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

/// The shortest class of huge blocks with so many slices, at least 33.
std::size_t hugeClassOf(std::size_t slices) {
    std::size_t const last = slices - 1;
    auto const shift = static_cast<std::size_t>(std::bit_width(last)) - 4;
    return (shift - 2) * 8 + (last >> shift) - 8;
}

/// Slices of the class.
std::size_t hugeSlicesOf(std::size_t hugeClass) {
    return (hugeClass % 8 + 9) << (hugeClass / 8 + 2);
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

    /// Ends the period if it began long before `milliseconds`.
    void passTime(std::uint32_t milliseconds);

    std::size_t mappedBytes() {
        CriticalSectionGuard const guard(lock);
        return mapped;
    }

    _RTL_CRITICAL_SECTION lock;

private:
    HeapSegment * addSegment();
    HeapSegment * mapSegment(std::size_t bytes, bool huge);
    void enlist(HeapSegment & segment);
    void unlist(HeapSegment & segment);

    /// Notes bytes that came into use.
    void use(std::size_t bytes);
    /// Whether the heap holds more than it should keep.
    bool holdsTooMuch() const;

    void fileSegment(HeapSegment & segment);
    void unfileSegment(HeapSegment & segment);

    /// Takes the segment out of the pool, and puts it before those that `doomed` leads to.
    void doom(HeapSegment & segment, HeapSegment *& doomed);
    static void unmap(HeapSegment * doomed);

    /// Counts slices that changed hands, and ends the period when it is due.
    void turnOver(std::size_t slices, HeapSegment *& doomed);
    void endPeriodByTime(std::uint32_t milliseconds, HeapSegment *& doomed);
    void endPeriod(HeapSegment *& doomed);
    static void discardIdle(HeapSegment & segment);

    /// Segments whose longest free run has so many slices, and a bit for each list that is not empty.
    HeapSegment * segmentsByRun[segmentSlices]{};
    SliceBits runLengths = 0;

    /// Every segment, those of huge blocks that are kept included.
    HeapSegment * all = nullptr;
    std::size_t sharedSegments = 0;
    /// Bytes from the system, and those of them in slices and huge blocks that are with somebody; the most of these in
    /// this period and in the last.
    std::size_t mapped = 0;
    std::size_t used = 0;
    std::size_t mostUsed = 0;
    std::size_t mostUsedBefore = 0;

    /// What is kept of huge blocks, by class, the last that came first.
    HeapSegment * keptHuge[hugeClasses]{};

    std::size_t turnover = 0;
    std::uint32_t periodBegin = 0;
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
        unfileSegment(*segment);
        segment->freeSlices &= ~taken;
        segment->idleSlices &= ~taken;
        fileSegment(*segment);
        use(count * sliceBytes);
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
        fileSegment(segment);
        used -= count * sliceBytes;
        if (segment.freeSlices == allSlices && holdsTooMuch()) {
            doom(segment, doomed);
        }
        turnOver(count, doomed);
    }
    unmap(doomed);
}

HeapSegment * SegmentPool::acquireHuge(std::size_t bytes, bool & dirty) {
    constexpr std::size_t mostBytes = std::numeric_limits<std::size_t>::max() / 2;
    if (bytes > mostBytes) {
        return nullptr;
    }
    std::size_t const hugeClass = hugeClassOf((bytes + 2 * sliceBytes - 1) / sliceBytes);
    std::size_t const behind = std::min(hugeClass + hugeReach + 1, hugeClasses);
    CriticalSectionGuard const guard(lock);
    HeapSegment ** const kept =
        std::find_if(keptHuge + hugeClass, keptHuge + behind, [](auto * first) { return first != nullptr; });
    dirty = kept != keptHuge + behind;
    HeapSegment * const segment = dirty ? *kept : mapSegment(hugeSlicesOf(hugeClass) * sliceBytes, true);
    if (segment == nullptr) {
        return nullptr;
    }
    if (dirty) {
        *kept = segment->next;
    }
    use(segment->mappedBytes);
    return segment;
}

void SegmentPool::releaseHuge(HeapSegment & segment) {
    HeapSegment * doomed = nullptr;
    {
        CriticalSectionGuard const guard(lock);
        std::size_t const bytes = segment.mappedBytes;
        used -= bytes;
        if (holdsTooMuch()) {
            doom(segment, doomed);
        } else {
            HeapSegment *& first = keptHuge[hugeClassOf(bytes / sliceBytes)];
            segment.next = first;
            first = &segment;
            segment.idleSlices = 0;
        }
        turnOver(bytes / sliceBytes, doomed);
    }
    unmap(doomed);
}

void SegmentPool::passTime(std::uint32_t milliseconds) {
    HeapSegment * doomed = nullptr;
    {
        CriticalSectionGuard const guard(lock);
        endPeriodByTime(milliseconds, doomed);
    }
    unmap(doomed);
}

void SegmentPool::releaseAll() {
    CriticalSectionGuard const guard(lock);
    HeapSegment * doomed = nullptr;
    while (all != nullptr) {
        doom(*all, doomed);
    }
    std::fill(std::begin(keptHuge), std::end(keptHuge), nullptr);
    used = 0;
    mostUsed = 0;
    mostUsedBefore = 0;
    turnover = 0;
    unmap(doomed);
}

HeapSegment * SegmentPool::addSegment() {
    HeapSegment * const segment = mapSegment(segmentBytes, false);
    if (segment != nullptr) {
        ++sharedSegments;
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
    if (huge || sharedSegments >= smallPageSegments) {
        preferLargePages(segment, bytes); // before the first touch
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

void SegmentPool::unlist(HeapSegment & segment) {
    if (segment.nextOfAll != nullptr) {
        segment.nextOfAll->previousOfAll = segment.previousOfAll;
    }
    (segment.previousOfAll != nullptr ? segment.previousOfAll->nextOfAll : all) = segment.nextOfAll;
}

void SegmentPool::use(std::size_t bytes) {
    used += bytes;
    mostUsed = std::max(mostUsed, used);
}

bool SegmentPool::holdsTooMuch() const {
    std::size_t const most = std::max(mostUsed, mostUsedBefore);
    return mapped > most + most / 4 + spareBytes;
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
    unlist(segment);
    mapped -= segment.mappedBytes;
    sharedSegments -= segment.huge ? 0 : 1;
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
    std::size_t const before = turnover;
    turnover += slices;
    if (turnover >= leastPeriodSlices && turnover / 4 >= mapped / sliceBytes) {
        endPeriod(doomed);
    } else if (before / clockSlices != turnover / clockSlices) {
        endPeriodByTime(tickCount(), doomed);
    }
}

void SegmentPool::endPeriodByTime(std::uint32_t milliseconds, HeapSegment *& doomed) {
    if (milliseconds - periodBegin >= mostPeriodMilliseconds) {
        endPeriod(doomed);
        periodBegin = milliseconds;
    }
}

void SegmentPool::endPeriod(HeapSegment *& doomed) {
    turnover = 0;
    mostUsedBefore = mostUsed;
    mostUsed = used;
    for (HeapSegment *& first : keptHuge) {
        for (HeapSegment ** link = &first; *link != nullptr;) {
            HeapSegment & segment = **link;
            if (segment.idleSlices != 0) {
                *link = segment.next;
                doom(segment, doomed);
            } else {
                segment.idleSlices = allSlices;
                link = &segment.next;
            }
        }
    }
    for (HeapSegment * segment = all; segment != nullptr;) {
        HeapSegment * const next = segment->nextOfAll;
        if (!segment->huge) {
            if (segment->idleSlices == allSlices) {
                doom(*segment, doomed);
            } else {
                discardIdle(*segment);
                segment->idleSlices = segment->freeSlices;
            }
        }
        segment = next;
    }
}

void SegmentPool::discardIdle(HeapSegment & segment) {
    SliceBits idle = segment.idleSlices & segment.dirtySlices;
    while (idle != 0) {
        auto const first = static_cast<std::size_t>(std::countr_zero(idle));
        auto const count = static_cast<std::size_t>(std::countr_one(idle >> first));
        SliceBits const run = sliceRun(first, count);
        if (discardPages(sliceAt(segment, first), count * sliceBytes)) {
            segment.dirtySlices &= ~run;
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
    HeapPage & page = pagesOf(*slices.segment)[slices.first];
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
    pool.release(segment, static_cast<std::size_t>(&page - pagesOf(segment)), 1);
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
    pagesOf(*slices.segment)[slices.first].spanSlices = static_cast<std::uint8_t>(count);
    char * const begin = sliceAt(*slices.segment, slices.first);
    // Where there is room, blocks begin in different cache lines of their first slice, so that many of one kind do not
    // compete for the same cache sets.
    std::size_t const places = (count * sliceBytes - bytes) / cacheLineBytes + 1;
    std::size_t const shift = reinterpret_cast<std::uintptr_t>(begin) / sliceBytes % places * cacheLineBytes;
    if (slices.dirty != sliceRun(slices.first, count)) {
        populatePages(begin, (shift + bytes + systemPageBytes - 1) / systemPageBytes * systemPageBytes);
    }
    if (zeroed) {
        for (std::size_t slice = 0; slice < count; ++slice) {
            if ((slices.dirty >> (slices.first + slice) & 1) != 0) {
                std::size_t const first = std::max(slice * sliceBytes, shift);
                std::size_t const behind = std::min((slice + 1) * sliceBytes, shift + bytes);
                std::memset(begin + first, 0, behind > first ? behind - first : 0);
            }
        }
    }
    return begin + shift;
}

void releaseLarge(void * block) noexcept {
    HeapSegment & segment = segmentOf(block);
    if (segment.huge) {
        pool.releaseHuge(segment);
        return;
    }
    std::size_t const first = sliceNumber(block);
    std::size_t const count = pagesOf(segment)[first].spanSlices;
    if (count != 0) {
        pagesOf(segment)[first].spanSlices = 0;
        pool.release(segment, first, count);
    }
}

void releaseSegments() noexcept {
    pool.releaseAll();
}

std::size_t mappedHeapBytes() noexcept {
    return pool.mappedBytes();
}

void passTime(std::uint32_t milliseconds) noexcept {
    pool.passTime(milliseconds);
}

void lockSegments() noexcept {
    pool.lock.enter();
}

void unlockSegments() noexcept {
    pool.lock.leave();
}

} // namespace morvane::platform
