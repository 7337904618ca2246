// A call when a thread ends.
#pragma once

namespace morvane::platform {

using ThreadExitCall = void (*)(void * value);

/// Has `call` run with `value` on the calling thread when that ends; a later value takes the place of the former.
/// `call` is always the same function. False when the system has no room. Calls do not overlap.
bool setThreadExit(ThreadExitCall call, void * value) noexcept;

/// No thread makes its call any more. Does not overlap with `setThreadExit`.
void forgetThreadExits() noexcept;

} // namespace morvane::platform
