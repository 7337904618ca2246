#include <morvane/platform/thread_exit.h>

#include <pthread.h>

namespace morvane::platform {
namespace {

constinit bool hasKey = false;
constinit pthread_key_t key{};

} // namespace

bool setThreadExit(ThreadExitCall call, void * value) noexcept {
    hasKey = hasKey || pthread_key_create(&key, call) == 0;
    return hasKey && pthread_setspecific(key, value) == 0;
}

void forgetThreadExits() noexcept {
    if (hasKey) {
        pthread_key_delete(key);
        hasKey = false;
    }
}

} // namespace morvane::platform
