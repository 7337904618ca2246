// Whether the process has one thread, so that locks and counts need no atomic instruction.
#pragma once

namespace morvane::platform {

/// Points to a byte that is not 0 while the process has surely no second thread. It changes only while one thread runs.
extern char const * const singleThreadFlag;

/// True while the process has surely no second thread; false where the system can't tell.
inline bool isSingleThreaded() noexcept {
    return *static_cast<char const volatile *>(singleThreadFlag) != 0;
}

} // namespace morvane::platform
