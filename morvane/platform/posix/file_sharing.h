// Which opens of one file are admitted beside each other.
#pragma once

#include <morvane/platform/files.h>
#include <sys/stat.h>

namespace morvane::platform {

/// Enters an open of the file that `status` tells of; false, with errno set, where another open refuses it or it would
/// refuse another.
bool enterOpenFile(int descriptor, struct stat const & status, FileUse access, FileUse sharing) noexcept;

/// Takes an open out again, before its descriptor closes; one that was never entered is ignored.
void leaveOpenFile(int descriptor) noexcept;

} // namespace morvane::platform
