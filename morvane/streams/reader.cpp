#include <morvane/streams/reader.h>

#include <algorithm>
#include <cstring>
#include <morvane/streams/stored_text.h>
#include <morvane/streams/stream.h>
#include <morvane/streams/value_format.h>
#include <new>

using namespace morvane;

namespace {

template <typename Value>
Value readFrom(_Reader & reader) {
    unsigned char bytes[sizeof(Value)];
    reader.read(bytes, sizeof bytes);
    return loadValue<Value>(bytes);
}

} // namespace

_Reader::_Reader(_Stream & stream_, std::int32_t bufferSize_)
    : bufferCount(0), bufferPosition(0), bufferSize(std::max(bufferSize_, 0)), stream(&stream_) {
    try {
        buffer.reset(new char[static_cast<std::size_t>(bufferSize)]);
    } catch (std::bad_alloc const &) {
        throw 0;
    }
    initBuffer();
}

_Reader::_Reader(_Reader const & other) = default;

_Reader::~_Reader() {
    try {
        giveBack();
    } catch (...) { // NOLINT(bugprone-empty-catch): nobody is left to be told
    }
}

_Reader & _Reader::operator=(_Reader const & other) {
    if (this != &other) {
        giveBack();
        buffer = other.buffer;
        bufferCount = other.bufferCount;
        bufferPosition = other.bufferPosition;
        bufferSize = other.bufferSize;
        stream = other.stream;
    }
    return *this;
}

std::int32_t _Reader::read(void * target, std::int32_t count) {
    if (count < 0) {
        throw 0;
    }
    std::int32_t const unread = bufferCount - bufferPosition;
    if (count <= unread) {
        take(target, count);
        return count;
    }
    stream->seek(-unread, _Stream::seekCurrent);
    // From here on nothing is read ahead, so that a failure leaves the stream where the reading stands.
    bufferCount = 0;
    bufferPosition = 0;
    if (count > bufferSize) {
        stream->readBuffer(target, count);
        initBuffer();
        return count;
    }
    initBuffer();
    std::int32_t const inside = std::min(count, bufferCount);
    take(target, inside);
    // What the stream did not count among its rest: it has it, or it fails.
    stream->readBuffer(static_cast<char *>(target) + inside, count - inside);
    return count;
}

unsigned char _Reader::readByte() {
    return readFrom<unsigned char>(*this);
}

char _Reader::readChar() {
    return readFrom<char>(*this);
}

bool _Reader::readBoolean() {
    return readByte() != 0;
}

unsigned short int _Reader::readWord() {
    return readFrom<unsigned short int>(*this);
}

short int _Reader::readShort() {
    return readFrom<short int>(*this);
}

std::int32_t _Reader::readLong() {
    return readFrom<std::int32_t>(*this);
}

std::uint32_t _Reader::readLongWord() {
    return readFrom<std::uint32_t>(*this);
}

DataType _Reader::readValue() {
    return static_cast<DataType>(readLong());
}

float _Reader::readFloat() {
    return readFrom<float>(*this);
}

double _Reader::readDouble() {
    return readFrom<double>(*this);
}

_DataString _Reader::readString() {
    auto const readWhole = [this](void * target, std::int32_t count) { read(target, count); };
    return readStoredText(readLong(), *stream, readWhole);
}

_DataString _Reader::readText(std::uint32_t count) {
    auto const readWhole = [this](void * target, std::int32_t length) { read(target, length); };
    return readWholeText(count, readWhole);
}

void _Reader::initBuffer() {
    bufferPosition = 0;
    bufferCount = 0;
    std::int64_t const size = stream->getSize();
    std::int32_t const position = stream->getPosition();
    std::int64_t const rest = std::max<std::int64_t>(size - position, 0);
    auto const count = static_cast<std::int32_t>(std::min<std::int64_t>(rest, bufferSize));
    try {
        stream->readBuffer(buffer.get(), count);
    } catch (...) {
        stream->setPosition(position); // nobody took what came
        throw;
    }
    bufferCount = count;
}

void _Reader::take(void * target, std::int32_t count) noexcept {
    if (count > 0) {
        std::memcpy(target, buffer.get() + bufferPosition, static_cast<std::size_t>(count));
        bufferPosition += count;
    }
}

void _Reader::giveBack() {
    if (buffer.use_count() == 1) {
        stream->seek(bufferPosition - bufferCount, _Stream::seekCurrent);
    }
}
