#include <morvane/encodings/text_loading.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <morvane/encodings/utf8_codec.h>
#include <morvane/streams/file_stream.h>
#include <morvane/streams/file_utility.h>
#include <morvane/streams/whole_file_stream.h>
#include <morvane/strings/unit_search.h>
#include <utility>

namespace morvane {

namespace {

/// The bytes that a mark is looked for in.
constexpr std::int32_t probeBytes = 3;
constexpr std::uint32_t readMode = 0;

/// True when units in memory have the other byte order.
constexpr bool mustSwap(bool isBigEndian) noexcept {
    return isBigEndian != (std::endian::native == std::endian::big);
}

void copySwapped(unsigned short int const * source, unsigned short int * target, std::size_t count) noexcept {
    for (std::size_t index = 0; index < count; ++index) {
        unsigned const unit = source[index];
        target[index] = static_cast<unsigned short int>(unit << 8 | unit >> 8);
    }
}

/// False after a short write.
bool writeBlock(_Stream & stream, char const * bytes, std::size_t count) {
    constexpr std::size_t mostBytes = 0x40000000; // counts of transfers are signed 32-bit numbers
    while (count > 0) {
        auto const block = static_cast<std::int32_t>(std::min(count, mostBytes));
        if (stream.write(bytes, block) != block) {
            return false;
        }
        bytes += block;
        count -= static_cast<std::size_t>(block);
    }
    return true;
}

} // namespace

MarkedBytes findMark(DataView bytes) noexcept {
    if (bytes.startsWith({"\xFF\xFE", 2})) {
        return {_StringUtility::formatUnicode, bytes.from(2)};
    }
    if (bytes.startsWith({"\xFE\xFF", 2})) {
        return {_StringUtility::formatUnicodeBigEndian, bytes.from(2)};
    }
    if (bytes.startsWith({"\xEF\xBB\xBF", 3})) {
        return {_StringUtility::formatUTF8, bytes.from(3)};
    }
    return {_StringUtility::formatUnknown, bytes};
}

DataView dataReading(DataView body) noexcept {
    return body.first(std::min(findUnit(body, '\0'), body.length));
}

bool wideReading(DataView body, bool isBigEndian, _WideString & wide) {
    std::size_t const length = body.length / sizeof(unsigned short int);
    TextBuffer<unsigned short int> text(allocateText<unsigned short int>(length));
    if (text != nullptr) {
        std::memcpy(text.get(), body.data, length * sizeof(unsigned short int));
    }
    return adoptReading(std::move(text), length, isBigEndian, wide);
}

bool adoptReading(TextBuffer<char> text, std::size_t length, _DataString & data) {
    if (text != nullptr) {
        DataView const reading = dataReading({text.get(), length});
        if (reading.length < length) {
            return assignText(data, reading);
        }
    }
    bool const isLive = text != nullptr;
    adoptText(data, text.release(), length);
    return isLive;
}

bool adoptReading(TextBuffer<unsigned short int> text, std::size_t length, bool isBigEndian, _WideString & wide) {
    if (text == nullptr) {
        adoptText(wide, nullptr, 0);
        return false;
    }
    WideView const units = {text.get(), length};
    std::size_t const used = std::min(findUnit(units, 0), length);
    if (mustSwap(isBigEndian)) {
        copySwapped(text.get(), text.get(), used);
    }
    if (used < length) {
        return assignText(wide, units.first(used));
    }
    adoptText(wide, text.release(), length);
    return true;
}

bool loadText(_Stream & stream, LoadedText & loaded) {
    std::int32_t size = stream.getSize();
    bool const isProbed = size < probeBytes;
    MarkedBytes marked;
    if (isProbed) {
        // Too short, which throws here, or a file of a kind that tells no size: of that the mark counts, and then its
        // size.
        char probe[probeBytes];
        stream.readBuffer(probe, probeBytes);
        marked = findMark({probe, probeBytes});
        std::int32_t const skipped = probeBytes - static_cast<std::int32_t>(marked.body.length);
        stream.setPosition(skipped);
        size -= skipped;
        if (size < 0) {
            throw 0;
        }
    }
    auto const length = static_cast<std::size_t>(size);
    loaded.bytes.reset(allocateText<char>(length));
    if (loaded.bytes == nullptr) {
        return false;
    }
    stream.readBuffer(loaded.bytes.get(), size);
    DataView const bytes = {loaded.bytes.get(), length};
    loaded.text = isProbed ? MarkedBytes{marked.format, bytes} : findMark(bytes);
    return true;
}

TextLoading loadTextFile(unsigned short int const * filename, LoadedText & loaded) {
    if (!_FileUtility::fileExists(filename)) {
        return TextLoading::fileNotFound;
    }
    _FileStream stream(filename, readMode);
    return loadText(stream, loaded) ? TextLoading::done : TextLoading::refused;
}

void writeBytes(_Stream & stream, DataView bytes) {
    writeBlock(stream, bytes.data, bytes.length);
}

void writeUnits(_Stream & stream, WideView units, bool isBigEndian) {
    if (!mustSwap(isBigEndian)) {
        writeBlock(stream, reinterpret_cast<char const *>(units.data), units.length * sizeof *units.data);
        return;
    }
    unsigned short int block[0x4000];
    for (std::size_t index = 0; index < units.length; index += std::size(block)) {
        std::size_t const count = std::min(units.length - index, std::size(block));
        copySwapped(units.data + index, block, count);
        if (!writeBlock(stream, reinterpret_cast<char const *>(block), count * sizeof *block)) {
            return;
        }
    }
}

void saveUtf8File(unsigned short int const * filename, WideView text) {
    constexpr std::size_t pieceUnits = 0x4000;
    constexpr std::size_t markBytes = 3;
    char block[markBytes + pieceUnits * 3] = {'\xEF', '\xBB', '\xBF'};
    WholeFileStream stream(filename);
    std::size_t used = markBytes;
    std::size_t index = 0;
    bool isEnd = false;
    while (!isEnd) {
        WideView const rest = text.from(index);
        WideView piece = rest.first(std::min(rest.length, pieceUnits));
        piece = piece.first(std::min(findUnit(piece, 0), piece.length));
        isEnd = piece.length < pieceUnits;
        index += piece.length;
        used += utf8::encode(piece, block + used);
        if (!writeBlock(stream, block, used)) {
            return;
        }
        used = 0;
    }
}

} // namespace morvane
