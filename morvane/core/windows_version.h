// What a version word tells.
#pragma once

#include <cstdint>
#include <morvane/core/system_utility.h>

namespace morvane {

/// The system that a version word names: its low byte is the major version, the next one the minor version, and its top
/// bit marks the family before NT.
constexpr TWindowsVersion windowsVersionOf(std::uint32_t word) noexcept {
    std::uint32_t const major = word & 0xFF;
    std::uint32_t const minor = word >> 8 & 0xFF;
    bool const isBeforeNT = (word & 0x80000000) != 0;
    if (isBeforeNT) {
        if (major < 4) {
            return windowsWin32s;
        }
        switch (minor) {
        case 0:
            return windows95;
        case 10:
            return windows98;
        case 90:
            return windowsMe;
        default:
            return windowsUnknown;
        }
    }
    if (major == 4) {
        return windowsNT4;
    }
    if (major == 5 && minor <= 1) {
        return minor == 0 ? windows2000 : windowsXP;
    }
    return windowsUnknown;
}

} // namespace morvane
