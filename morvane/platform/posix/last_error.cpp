#include <morvane/platform/last_error.h>

#include <cerrno>
#include <cstring>
#include <cwchar>

namespace morvane::platform {

namespace {

// The two forms of `strerror_r`. One gives 0 where there is a text, in the buffer; the other a text always, in the
// buffer where it had to be made up.
[[maybe_unused]] char const * ownText(int result, char const * buffer) {
    return result == 0 ? buffer : nullptr;
}

[[maybe_unused]] char const * ownText(char const * result, char const * buffer) {
    return result != buffer ? result : nullptr;
}

} // namespace

std::int32_t lastError() noexcept {
    return errno;
}

void setLastError(std::int32_t code) noexcept {
    errno = code;
}

std::size_t lastErrorText(std::int32_t code, unsigned short int * text, std::size_t capacity) noexcept {
    if (capacity == 0) {
        return 0;
    }
    int const before = errno;
    char buffer[1024]{};
    char const * bytes = ownText(strerror_r(code, buffer, sizeof buffer), buffer);
    std::size_t left = bytes != nullptr ? std::strlen(bytes) : 0;
    std::size_t units = 0;
    std::mbstate_t state{};
    while (left > 0 && units + 2 < capacity) {
        wchar_t wide = 0;
        std::size_t length = std::mbrtowc(&wide, bytes, left, &state);
        std::uint32_t point = static_cast<char32_t>(wide);
        if (length == 0 || length > left) { // no character: the byte alone
            point = 0xFFFD;
            length = 1;
            state = {};
        }
        if (point >= 0x10000) {
            text[units++] = static_cast<unsigned short int>(0xD800 + ((point - 0x10000) >> 10 & 0x3FF));
            point = 0xDC00 + (point & 0x3FF);
        }
        text[units++] = static_cast<unsigned short int>(point);
        bytes += length;
        left -= length;
    }
    text[units] = 0;
    errno = before;
    return units;
}

} // namespace morvane::platform
