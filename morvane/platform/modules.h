// Code modules: shared libraries that are loaded, found and let go while the program runs.
#pragma once

#include <cstddef>

struct HINSTANCE__;

namespace morvane::platform {

/// Loads the module of this name, or counts one more load of it. A name without a separator is searched for where the
/// system keeps its libraries. Null when it can't be loaded, which the last error of the thread then tells.
HINSTANCE__ * loadModule(unsigned short int const * name) noexcept;

/// Gives back one load; the last one takes the module out of the process. False for null and for a handle of no module
/// that was loaded by request.
bool unloadModule(HINSTANCE__ * module) noexcept;

/// The loaded module whose file bears this name, or has this path where the name holds a separator; it is not counted
/// as loaded once more. Null when there is none.
HINSTANCE__ * findModule(unsigned short int const * name) noexcept;

/// Writes the path of the module's file, or of the program where `module` is null, into `buffer`, zero-closed and cut
/// to `capacity` - 1 units, and gives the count of units. 0 and an empty text for a handle of no loaded module.
std::size_t modulePath(HINSTANCE__ * module, unsigned short int * buffer, std::size_t capacity) noexcept;

} // namespace morvane::platform
