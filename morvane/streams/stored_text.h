// Texts out of a stream or a reader, safe against lengths that the bytes do not keep.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <morvane/streams/stream.h>
#include <morvane/strings/data_string.h>
#include <morvane/strings/text_builder.h>
#include <morvane/strings/text_storage.h>

namespace morvane {

/// A stored length up to here is believed; it is also the step in which a text of unknown bounds is read.
constexpr std::int32_t trustedTextLength = 65536;

/// A text of the next `count` bytes. `read(buffer, count)` moves exactly `count` bytes or throws. A buffer that the
/// heap refuses is the stream failure.
template <typename Read>
_DataString readWholeText(std::uint32_t count, Read read) {
    if (count > std::uint32_t{std::numeric_limits<std::int32_t>::max()}) {
        throw 0;
    }
    _DataString text;
    adoptText(text, allocateText<char>(count), count);
    if (text.get_data() == nullptr) {
        throw 0;
    }
    read(text.get_data(), static_cast<std::int32_t>(count));
    return text;
}

/// A text of the next `count` bytes, in memory that grows only as bytes really come.
template <typename Read>
_DataString readTextInSteps(std::int32_t count, Read read) {
    DataBuilder builder;
    for (std::int32_t left = count; left > 0;) {
        std::int32_t const step = std::min(left, trustedTextLength);
        char * const end = builder.extend(static_cast<std::size_t>(step));
        if (end == nullptr) {
            throw 0;
        }
        read(end, step);
        left -= step;
    }
    _DataString text;
    if (!builder.moveTo(text)) {
        throw 0;
    }
    return text;
}

/// A text behind its stored `length`. A negative length fails, and so does a long one beyond the size of `stream`,
/// which the bytes come out of.
template <typename Read>
_DataString readStoredText(std::int32_t length, _Stream & stream, Read read) {
    if (length < 0) {
        throw 0;
    }
    if (length > trustedTextLength) {
        std::int32_t const size = stream.getSize();
        if (size < 0) {
            return readTextInSteps(length, read);
        }
        if (length > size) {
            throw 0;
        }
    }
    return readWholeText(static_cast<std::uint32_t>(length), read);
}

} // namespace morvane
