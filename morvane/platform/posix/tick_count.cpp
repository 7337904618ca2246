#include <morvane/platform/tick_count.h>

#include <ctime>

namespace morvane::platform {

std::uint32_t tickCount() noexcept {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(now.tv_sec) * 1000U
                                      + static_cast<std::uint64_t>(now.tv_nsec) / 1000000U);
}

} // namespace morvane::platform
