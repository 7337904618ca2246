#include <morvane/core/checks.h>

#include <cstdlib>
#include <cstring>
#include <morvane/core/literals.h>
#include <morvane/platform/debug_output.h>

using namespace morvane::literals;

namespace morvane {

constinit bool libraryIsDown = false;

void stopForMisuse(unsigned short int const * what) {
    platform::debugOutput(what);
    std::abort();
}

void NodeUnits::checkRelease(void const * part) const {
    std::uintptr_t const data = reinterpret_cast<std::uintptr_t>(node) + geometry.headBytes;
    std::uintptr_t const offset = reinterpret_cast<std::uintptr_t>(part) - data;
    auto const number = static_cast<std::uint32_t>(offset / geometry.partBytes);
    if (offset % geometry.partBytes != 0 || number >= unitCount) {
        stopForMisuse(u"misuse: a pointer was released that is not the beginning of a unit\r\n"_w);
    }
    checkHeader(number);
    if (number + 1 < unitCount) {
        checkHeader(number + 1);
    }
    auto const * const stack = reinterpret_cast<char const *>(data) + geometry.dataBytes;
    for (std::uint32_t place = 0; place < node->freeCount; ++place) {
        auto const index = static_cast<std::uint16_t>(number);
        if (std::memcmp(stack + std::size_t{place} * sizeof(index), &index, sizeof(index)) == 0) {
            stopForMisuse(u"misuse: a unit was released twice\r\n"_w);
        }
    }
}

void NodeUnits::checkHeaders() const {
    for (std::uint32_t number = 0; number < unitCount; ++number) {
        checkHeader(number);
    }
}

void NodeUnits::checkHeader(std::uint32_t number) const {
    _MemoryBlock::_MemoryPart const whole{static_cast<std::uint16_t>(number), unitSize, 0};
    char const * const part =
        reinterpret_cast<char const *>(node) + geometry.headBytes + std::size_t{number} * geometry.partBytes;
    if (std::memcmp(part, &whole, sizeof(whole)) != 0) {
        stopForMisuse(u"misuse: a unit was written past its end, or in front of its beginning\r\n"_w);
    }
}

} // namespace morvane
