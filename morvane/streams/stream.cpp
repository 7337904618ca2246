#include <morvane/streams/stream.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <morvane/streams/stored_text.h>
#include <morvane/streams/value_format.h>
#include <new>

using namespace morvane;

namespace {

constexpr std::int32_t copyBufferSize = 61440;

/// The bytes of `text` in front of its closing zero, none for null; more than a stream can count fail.
std::int32_t textLength(char const * text) {
    std::size_t const length = text != nullptr ? std::strlen(text) : 0;
    if (length > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        throw 0;
    }
    return static_cast<std::int32_t>(length);
}

template <typename Value>
Value readFrom(_Stream & stream) {
    unsigned char bytes[sizeof(Value)];
    stream.readBuffer(bytes, sizeof bytes);
    return loadValue<Value>(bytes);
}

template <typename Value>
void writeTo(_Stream & stream, Value value) {
    unsigned char bytes[sizeof(Value)];
    storeValue(value, bytes);
    stream.writeBuffer(bytes, sizeof bytes);
}

} // namespace

_Stream::_Stream() = default;

_Stream::_Stream(_Stream const &) {}

_Stream::~_Stream() = default;

void _Stream::setSize(std::int32_t) {}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign.
_Stream & _Stream::operator=(_Stream const &) {
    return *this;
}

std::int32_t _Stream::getPosition() {
    return seek(0, seekCurrent);
}

std::int32_t _Stream::getSize() {
    std::int32_t const position = seek(0, seekCurrent);
    std::int32_t const size = seek(0, seekEnd);
    seek(position, seekBegin);
    return size;
}

void _Stream::seekToBegin() {
    seek(0, seekBegin);
}

void _Stream::seekToEnd() {
    seek(0, seekEnd);
}

void _Stream::setPosition(std::int32_t position) {
    seek(position, seekBegin);
}

std::int32_t _Stream::readBuffer(void * buffer, std::int32_t count) {
    if (count != 0 && (count < 0 || read(buffer, count) != count)) {
        throw 0;
    }
    return count;
}

std::int32_t _Stream::writeBuffer(void const * buffer, std::int32_t count) {
    if (count != 0 && (count < 0 || write(buffer, count) != count)) {
        throw 0;
    }
    return count;
}

std::int32_t _Stream::copyFrom(_Stream & source, std::int32_t count) {
    if (count == 0) {
        source.setPosition(0);
        count = source.getSize();
    }
    if (count < 0) {
        throw 0;
    }
    if (count == 0) {
        return 0;
    }
    std::int32_t const bufferSize = std::min(count, copyBufferSize);
    std::unique_ptr<char[]> const buffer(new (std::nothrow) char[static_cast<std::size_t>(bufferSize)]);
    if (buffer == nullptr) {
        throw 0;
    }
    for (std::int32_t left = count; left > 0;) {
        std::int32_t const part = std::min(left, bufferSize);
        source.readBuffer(buffer.get(), part);
        writeBuffer(buffer.get(), part);
        left -= part;
    }
    return count;
}

unsigned char _Stream::readByte() {
    return readFrom<unsigned char>(*this);
}

char _Stream::readChar() {
    return readFrom<char>(*this);
}

bool _Stream::readBoolean() {
    return readByte() != 0;
}

unsigned short int _Stream::readWord() {
    return readFrom<unsigned short int>(*this);
}

short int _Stream::readShort() {
    return readFrom<short int>(*this);
}

std::int32_t _Stream::readLong() {
    return readFrom<std::int32_t>(*this);
}

std::uint32_t _Stream::readLongWord() {
    return readFrom<std::uint32_t>(*this);
}

float _Stream::readFloat() {
    return readFrom<float>(*this);
}

double _Stream::readDouble() {
    return readFrom<double>(*this);
}

_DataString _Stream::readString() {
    auto const readWhole = [this](void * buffer, std::int32_t count) { readBuffer(buffer, count); };
    return readStoredText(readLong(), *this, readWhole);
}

_DataString _Stream::readText(std::uint32_t count) {
    auto const readWhole = [this](void * buffer, std::int32_t length) { readBuffer(buffer, length); };
    return readWholeText(count, readWhole);
}

void _Stream::writeByte(unsigned char value) {
    writeTo(*this, value);
}

void _Stream::writeChar(char value) {
    writeTo(*this, value);
}

void _Stream::writeBoolean(bool value) {
    writeByte(value ? 1 : 0);
}

void _Stream::writeWord(unsigned short int value) {
    writeTo(*this, value);
}

void _Stream::writeShort(short int value) {
    writeTo(*this, value);
}

void _Stream::writeLong(std::int32_t value) {
    writeTo(*this, value);
}

void _Stream::writeLongWord(std::uint32_t value) {
    writeTo(*this, value);
}

void _Stream::writeFloat(float value) {
    writeTo(*this, value);
}

void _Stream::writeDouble(double value) {
    writeTo(*this, value);
}

void _Stream::writeString(char const * text) {
    std::int32_t const length = textLength(text);
    writeLong(length);
    writeBuffer(text, length);
}

void _Stream::writeText(char const * text) {
    writeBuffer(text, textLength(text));
}
