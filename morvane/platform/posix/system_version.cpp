#include <morvane/platform/system_version.h>

namespace morvane::platform {

std::uint32_t systemVersionWord() noexcept {
    return 0;
}

} // namespace morvane::platform
