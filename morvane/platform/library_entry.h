// The one call when the library has been loaded and the one before it is unloaded.
#pragma once

#include <cstdint>

namespace morvane {

inline constexpr std::uint32_t processDetach = 0;
inline constexpr std::uint32_t processAttach = 1;

/// Brings the library up on `processAttach` and down on `processDetach`; any other reason does nothing. The module and
/// the reserved word are not looked at. 1, success, always. The system's load hook calls it, under whatever order the
/// loader keeps.
std::int32_t libraryEntry(void * module, std::uint32_t reason, void * reserved);

} // namespace morvane
