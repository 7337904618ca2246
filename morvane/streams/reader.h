// Typed reads through a read-ahead buffer.
#pragma once

#include <cstdint>
#include <memory>
#include <morvane/core/object.h>
#include <morvane/export.h>

class _DataString;
class _Stream;

/// The type of a value, as a stream stores it in 4 bytes; its numbers are the client's.
enum DataType : std::int32_t {};

/// Reads the value format of `_Stream` ahead in blocks, so that many small reads cost few calls of the stream. When it
/// goes, the stream stands behind the last byte that was taken.
///
/// Cost: a read that the buffer holds is a copy; a refill is one read and four seeks; a read larger than the buffer
/// goes straight to the stream. Ownership: the stream is the caller's and outlives the reader. Copies share the buffer,
/// so that only one of them may go on reading; the last to go gives its unread bytes back. Errors: a read beyond the
/// stream throws the `int` 0 of `_Stream`. What was left has then been taken, and the reader can go on from there.
class MORVANE_EXPORT _Reader : public _Object {
public:
    using DataType = ::DataType;

    /// Reads the first block at once from where the stream stands. `bufferSize` in bytes; below 1 it counts as 0, and
    /// nothing is read ahead.
    _Reader(_Stream & stream, std::int32_t bufferSize);
    _Reader(_Reader const & other);
    ~_Reader() override;

    _Reader & operator=(_Reader const & other);

    /// Moves exactly `count` bytes to `target` and gives `count`.
    std::int32_t read(void * target, std::int32_t count);

    /// The next value of the type; 1 byte each, any byte but 0 being true.
    unsigned char readByte();
    char readChar();
    bool readBoolean();
    /// The next value of the type; 2 bytes each.
    unsigned short int readWord();
    short int readShort();
    /// The next value of the type; 4 bytes each.
    std::int32_t readLong();
    std::uint32_t readLongWord();
    DataType readValue();
    float readFloat();
    /// The next value of the type; 8 bytes.
    double readDouble();
    /// The text written by `_Stream::writeString`; a stored length fails as it does under `_Stream::readString`.
    _DataString readString();
    /// A text of the next `count` bytes, zero bytes among them.
    _DataString readText(std::uint32_t count);

protected:
    /// Reads the next block from where the stream stands.
    void initBuffer();

private:
    void take(void * target, std::int32_t count) noexcept;
    void giveBack();

    std::shared_ptr<char[]> buffer;
    std::int32_t bufferCount;
    std::int32_t bufferPosition;
    std::int32_t bufferSize;
    _Stream * stream;
};
