// The stream over an open file handle of somebody else.
#pragma once

#include <cstdint>
#include <morvane/export.h>
#include <morvane/streams/stream.h>

class _FileStream;

/// A stream over an open handle that it does not own: a file of `_FileUtility`, a pipe, a standard stream.
///
/// Cost: each `read` and `write` is one call of the system; nothing is buffered.
/// Ownership: the handle stays open when the stream goes.
class MORVANE_EXPORT _HandleStream : public _Stream {
public:
    /// Makes a stream over no file: its handle is -1, and every transfer fails.
    _HandleStream();
    _HandleStream(std::int32_t handle);
    _HandleStream(_HandleStream const & other);

    /// As in `_Stream`; 0 on failure and for a negative `count`.
    std::int32_t read(void * buffer, std::int32_t count) override;
    /// As in `_Stream`; 0 on failure and for a negative `count`.
    std::int32_t write(void const * buffer, std::int32_t count) override;

    ~_HandleStream() override;

    /// As `_FileUtility::fileSeek`: -1 on failure, with the position where it was.
    std::int32_t seek(std::int32_t offset, SeekOrigin origin) override;
    /// Seeks to `size` and cuts or lengthens the file there; changes nothing where it cannot seek there.
    void setSize(std::int32_t size) override;

    _HandleStream & operator=(_HandleStream const & other);

private:
    friend class _FileStream;

    std::int32_t get_handle() const;
    void set_handle(std::int32_t value);

    std::int32_t handle;
};
