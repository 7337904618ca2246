// Text between the library's 16-bit code units and the UTF-8 of the system.
#pragma once

#include <cstddef>

namespace morvane::platform {

/// What becomes of a surrogate without its other half.
enum class UnpairedSurrogate { refused, replaced };

/// The zero-closed UTF-8 form of a zero-closed 16-bit text; a null text reads as empty.
class Utf8Text {
public:
    /// A replaced surrogate becomes U+FFFD.
    Utf8Text(unsigned short int const * text, UnpairedSurrogate unpaired) noexcept;
    Utf8Text(Utf8Text const &) = delete;
    ~Utf8Text();

    Utf8Text & operator=(Utf8Text const &) = delete;

    /// Null when there is no memory for it, or when the text was refused.
    char const * bytes() const noexcept { return data; }
    /// Bytes without the closing zero.
    std::size_t length() const noexcept { return count; }

private:
    static constexpr std::size_t smallSize = 256;

    char * data;
    std::size_t count;
    char small[smallSize];
};

/// Writes zero-closed UTF-8 as 16-bit units into `buffer`, zero-closed and cut to `capacity` - 1 units, and gives the
/// count of units. A byte that fits no sequence becomes U+FFFD.
std::size_t widenUtf8(char const * bytes, unsigned short int * buffer, std::size_t capacity) noexcept;

} // namespace morvane::platform
