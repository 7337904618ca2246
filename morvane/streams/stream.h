// The abstract byte stream and the binary value format.
#pragma once

#include <cstdint>
#include <morvane/export.h>

class _DataString;

/// A sequence of bytes with a position, read and written through one interface whatever holds the bytes.
///
/// A derived class supplies `read`, `write`, `seek` and, if it can, `setSize`; all else is built on these. Values are
/// stored as their bytes, least significant first, without tag or padding; floating point as IEEE 754 binary32 and
/// binary64.
/// Cost: a typed read or write is one virtual call; where many small ones follow each other, read through a `_Reader`.
/// Threads: a stream belongs to one thread at a time.
/// Errors: a transfer that could not move its whole count throws the `int` 0. The bytes moved stay moved, and the
/// position is not put back. Everything but `read`, `write`, `seek` and `setSize` fails this way, and in no other.
class MORVANE_EXPORT _Stream {
public:
    /// Where `seek` counts from; the numbers are those of `_FileUtility::fileSeek`.
    enum SeekOrigin : std::int32_t {
        seekBegin = 0,   ///< the start of the stream
        seekCurrent = 1, ///< the current position
        seekEnd = 2,     ///< the end of the stream
    };

    _Stream();
    /// Copies nothing.
    _Stream(_Stream const & other);

    /// Moves up to `count` bytes out of the stream and gives the number moved, 0 on failure.
    virtual std::int32_t read(void * buffer, std::int32_t count) = 0;
    /// Moves up to `count` bytes into the stream and gives the number moved, 0 on failure.
    virtual std::int32_t write(void const * buffer, std::int32_t count) = 0;

    virtual ~_Stream();

    /// Moves the position by `offset` bytes from `origin` and gives the new one.
    virtual std::int32_t seek(std::int32_t offset, SeekOrigin origin) = 0;
    /// Makes the stream `size` bytes long where the derived class can; does nothing here.
    virtual void setSize(std::int32_t size);

    /// Assigns nothing and gives the object back.
    _Stream & operator=(_Stream const & other);

    std::int32_t getPosition();
    /// The length in bytes, found by three seeks; the position is afterwards where it was.
    std::int32_t getSize();
    void seekToBegin();
    void seekToEnd();
    void setPosition(std::int32_t position);

    /// Moves exactly `count` bytes out of the stream and gives `count`. A `count` of 0 does not touch the stream.
    std::int32_t readBuffer(void * buffer, std::int32_t count);
    /// Moves exactly `count` bytes into the stream and gives `count`. A `count` of 0 does not touch the stream.
    std::int32_t writeBuffer(void const * buffer, std::int32_t count);
    /// Copies `count` bytes from where `source` stands, or all of `source` from its first byte when `count` is 0, and
    /// gives the number copied. Holds at most 61,440 bytes at a time.
    std::int32_t copyFrom(_Stream & source, std::int32_t count);

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
    float readFloat();
    /// The next value of the type; 8 bytes.
    double readDouble();
    /// The text written by `writeString`. A stored length below 0 fails at once; one above 65,536 fails where it is
    /// more than the whole stream holds.
    _DataString readString();
    /// A text of the next `count` bytes, zero bytes among them.
    _DataString readText(std::uint32_t count);

    /// Writes the value; 1 byte each, true as 1.
    void writeByte(unsigned char value);
    void writeChar(char value);
    void writeBoolean(bool value);
    /// Writes the value; 2 bytes each.
    void writeWord(unsigned short int value);
    void writeShort(short int value);
    /// Writes the value; 4 bytes each.
    void writeLong(std::int32_t value);
    void writeLongWord(std::uint32_t value);
    void writeFloat(float value);
    /// Writes the value; 8 bytes.
    void writeDouble(double value);
    /// Writes the length of `text` as a 32-bit number, then its bytes without the closing zero. Null reads as empty
    /// text.
    void writeString(char const * text);
    /// Writes the bytes of `text` alone, without the closing zero. Null reads as empty text.
    void writeText(char const * text);
};
