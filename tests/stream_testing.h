// What the tests of streams share.
#pragma once

#include <algorithm>
#include <cstring>
#include <morvane/streams/stream.h>
#include <morvane/strings/data_string.h>
#include <string>
#include <utility>

/// True if `call` throws the `int` 0.
template <typename Call>
bool fails(Call call) {
    try {
        call();
    } catch (int failure) {
        return failure == 0;
    }
    return false;
}

inline std::string bytesOf(_DataString const & text) {
    return text.get_data() == nullptr ? "(released)" : std::string(text.get_data(), text.get_length());
}

/// A stream over a string that notes the calls of its virtual operations.
class RecordingStream : public _Stream {
public:
    RecordingStream() = default;
    explicit RecordingStream(std::string bytes_) : bytes(std::move(bytes_)) {}

    std::int32_t read(void * buffer, std::int32_t count) override {
        note('r', count);
        std::int32_t const moved = std::clamp(std::min(count, size() - position), 0, mostMoved);
        std::memcpy(buffer, bytes.data() + position, static_cast<std::size_t>(moved));
        position += moved;
        return moved;
    }
    std::int32_t write(void const * buffer, std::int32_t count) override {
        note('w', count);
        std::int32_t const moved = std::min(count, mostMoved);
        std::string const text(static_cast<char const *>(buffer), static_cast<std::size_t>(moved));
        bytes.replace(static_cast<std::size_t>(position), text.size(), text);
        position += moved;
        return moved;
    }
    std::int32_t seek(std::int32_t offset, SeekOrigin origin) override {
        note(origin == seekBegin ? 'b' : origin == seekCurrent ? 'c' : 'e', offset);
        if (!seekable) {
            return -1;
        }
        position = offset + (origin == seekBegin ? 0 : origin == seekCurrent ? position : size());
        return position;
    }

    /// The calls since the last time, as "r4 " for a read of 4 bytes, "w" for writes; "b", "c", "e" for seeks.
    std::string calls() { return std::exchange(noted, {}); }

    std::string bytes;
    std::int32_t position = 0;
    std::int32_t mostMoved = 0x7FFFFFFF; ///< by one call
    bool seekable = true;

private:
    std::int32_t size() const { return static_cast<std::int32_t>(bytes.size()); }
    void note(char call, std::int32_t number) { noted += call + std::to_string(number) + ' '; }

    std::string noted;
};
