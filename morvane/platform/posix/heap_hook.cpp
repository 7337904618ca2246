// The heap goes after everything else of the library, and keeps whole when the process is copied.

#include <morvane/platform/thread_heap.h>
#include <pthread.h>

namespace morvane::platform {
namespace {

[[gnu::constructor(101)]] void watchForks() {
    pthread_atfork(lockHeap, unlockHeap, unlockHeap);
}

[[gnu::destructor(101)]] void leaveHeap() {
    releaseHeap();
}

} // namespace
} // namespace morvane::platform
