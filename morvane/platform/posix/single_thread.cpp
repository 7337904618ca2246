#include <morvane/platform/single_thread.h>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#define MORVANE_SYSTEM_TELLS_THREADS 1
#endif

namespace morvane::platform {

#ifdef MORVANE_SYSTEM_TELLS_THREADS
// NOLINTNEXTLINE(bugprone-reserved-identifier): the C library's name.
constinit char const * const singleThreadFlag = &__libc_single_threaded;
#else
namespace {
constexpr char neverSure = 0;
}
constinit char const * const singleThreadFlag = &neverSure;
#endif

} // namespace morvane::platform
