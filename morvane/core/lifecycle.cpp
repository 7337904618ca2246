#include <morvane/core/lifecycle.h>

#include <morvane/core/checks.h>
#include <morvane/core/literals.h>
#include <morvane/core/memory.h>
#include <morvane/core/memory_manager.h>
#include <morvane/core/system_utility.h>
#include <morvane/platform/debug_output.h>
#include <morvane/platform/library_entry.h>
#include <morvane/strings/wide_string.h>
#include <new>

using namespace morvane::literals;

constinit _Memory * globalProcessMemory = nullptr;
constinit _MemoryManager * globalMemoryManager = nullptr;

namespace morvane {
namespace {

void startUp() {
    libraryIsDown = false;
    globalProcessMemory = new (std::nothrow) _Memory;
    globalMemoryManager = new (std::nothrow) _MemoryManager(262144);
    _SystemUtility::outputDebugString(u"Init Quorlis Morvane Library...\r\n"_w);
}

/// Says how often the heap was called. `text` takes its buffer from that heap, and so shows in the counts itself.
void reportCounts(_WideString & text) {
    if (globalProcessMemory == nullptr) {
        _SystemUtility::outputDebugString(u"memory allocation count : 0\r\n"_w);
        _SystemUtility::outputDebugString(u"memory unallocation count : 0\r\n"_w);
        return;
    }
    text.format(u"memory allocation count : %d\r\n"_w, globalProcessMemory->heapAllocationCount());
    _SystemUtility::outputDebugString(text);
    text.format(u"memory unallocation count : %d\r\n"_w, globalProcessMemory->heapUnallocationCount());
    _SystemUtility::outputDebugString(text);
}

/// The heap's face while the library is down: whoever comes late is told there.
alignas(_Memory) unsigned char lateFace[sizeof(_Memory)];

/// Deletes the allocators when it goes, also when a listener throws. The nodes of the pools go back through the heap.
struct LastOfAll {
    LastOfAll() = default;
    LastOfAll(LastOfAll const &) = delete;
    ~LastOfAll() {
        delete globalMemoryManager;
        delete globalProcessMemory;
        if constexpr (isChecked) {
            libraryIsDown = true;
            globalProcessMemory = ::new (lateFace) _Memory;
        }
    }

    LastOfAll & operator=(LastOfAll const &) = delete;
};

void shutDown() {
    LastOfAll const last;
    platform::DebugBatch const batch;
    _WideString text;
    reportCounts(text);
    _SystemUtility::outputDebugString(u"Done Quorlis Morvane Library...\r\n"_w);
    if (globalMemoryManager != nullptr) {
        globalMemoryManager->traceConsole();
    }
}

} // namespace

std::int32_t libraryEntry(void *, std::uint32_t reason, void *) {
    if (reason == processAttach) {
        startUp();
    } else if (reason == processDetach) {
        shutDown();
    }
    return 1;
}

} // namespace morvane
