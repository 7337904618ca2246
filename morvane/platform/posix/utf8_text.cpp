#include <morvane/platform/posix/utf8_text.h>

#include <cstdint>
#include <morvane/platform/process_heap.h>
#include <morvane/platform/utf8.h>

namespace morvane::platform {

namespace {

constexpr std::uint32_t replacement = 0xFFFD;

/// The code point that starts at `bytes`, which moves behind it; a byte that starts none is passed over alone.
std::uint32_t takeBytes(unsigned char const *& bytes) {
    std::uint32_t const first = *bytes++;
    if (first < 0x80) {
        return first;
    }
    int const more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
    if (first < 0xC2 || first > 0xF4) {
        return replacement;
    }
    std::uint32_t point = first & (0x3Fu >> more);
    for (int index = 0; index < more; ++index) {
        if ((bytes[index] & 0xC0) != 0x80) {
            return replacement;
        }
        point = point << 6 | (bytes[index] & 0x3Fu);
    }
    constexpr std::uint32_t least[] = {0, 0x80, 0x800, 0x10000};
    if (point < least[more] || point > 0x10FFFF || isSurrogate(point)) {
        return replacement;
    }
    bytes += more;
    return point;
}

} // namespace

Utf8Text::Utf8Text(unsigned short int const * text, UnpairedSurrogate unpaired) noexcept : data(small), count(0) {
    small[0] = 0;
    if (text == nullptr) {
        return;
    }
    std::size_t units = 0;
    while (text[units] != 0) {
        ++units;
    }
    if (units * 3 >= smallSize) {
        data = static_cast<char *>(heapAllocate(units * 3 + 1, false));
        if (data == nullptr) {
            return;
        }
    }
    char * target = data;
    while (*text != 0) {
        std::uint32_t point = takeCodePoint(text);
        if (isSurrogate(point)) {
            if (unpaired == UnpairedSurrogate::refused) {
                if (data != small) {
                    heapFree(data);
                }
                data = nullptr;
                return;
            }
            point = replacement;
        }
        target = putCodePoint(target, point);
    }
    *target = 0;
    count = static_cast<std::size_t>(target - data);
}

Utf8Text::~Utf8Text() {
    if (data != small) {
        heapFree(data);
    }
}

std::size_t widenUtf8(char const * bytes, unsigned short int * buffer, std::size_t capacity) noexcept {
    if (capacity == 0) {
        return 0;
    }
    std::size_t units = 0;
    auto const put = [&](std::uint32_t unit) {
        if (units < capacity - 1) {
            buffer[units++] = static_cast<unsigned short int>(unit);
        }
    };
    auto const * source = reinterpret_cast<unsigned char const *>(bytes);
    while (*source != 0 && units < capacity - 1) {
        std::uint32_t const point = takeBytes(source);
        if (point < 0x10000) {
            put(point);
        } else {
            put(0xD800 + ((point - 0x10000) >> 10));
            put(0xDC00 + (point & 0x3FF));
        }
    }
    buffer[units] = 0;
    return units;
}

} // namespace morvane::platform
