#include <morvane/core/lifecycle.h>

#include <morvane/core/literals.h>
#include <morvane/core/memory.h>
#include <morvane/core/memory_manager.h>
#include <morvane/core/system_utility.h>
#include <morvane/platform/library_entry.h>
#include <new>

using namespace morvane::literals;

constinit _Memory * globalProcessMemory = nullptr;
constinit _MemoryManager * globalMemoryManager = nullptr;

namespace morvane {
namespace {

void startUp() {
    globalProcessMemory = new (std::nothrow) _Memory;
    globalMemoryManager = new (std::nothrow) _MemoryManager(262144);
    _SystemUtility::outputDebugString(u"Init Quorlis Morvane Library...\r\n"_w);
}

void shutDown() {
    _SystemUtility::outputDebugString(u"Done Quorlis Morvane Library...\r\n"_w);
    if (globalMemoryManager != nullptr) {
        globalMemoryManager->traceConsole();
    }
    delete globalMemoryManager;
    delete globalProcessMemory;
}

} // namespace

std::int32_t libraryEntry(void *, std::uint32_t reason, void *) noexcept {
    if (reason == processAttach) {
        startUp();
    } else if (reason == processDetach) {
        shutDown();
    }
    return 1;
}

} // namespace morvane
