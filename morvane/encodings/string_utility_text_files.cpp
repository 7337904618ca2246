#include <cstddef>
#include <morvane/encodings/string_utility.h>
#include <morvane/encodings/text_loading.h>
#include <morvane/streams/file_stream.h>
#include <morvane/streams/file_utility.h>
#include <morvane/streams/whole_file_stream.h>
#include <morvane/strings/text_storage.h>
#include <utility>

namespace {

using namespace morvane;

constexpr std::uint32_t readMode = 0;

/// Hands out the readings of a text that was loaded at once. False when a heap refused one.
bool deliver(MarkedBytes const & text, _DataString & data, _WideString & wide) {
    switch (text.format) {
    case _StringUtility::formatUnicode:
        return wideReading(text.body, false, wide);
    case _StringUtility::formatUnicodeBigEndian:
        return wideReading(text.body, true, wide);
    case _StringUtility::formatUTF8:
        return assignText(data, dataReading(text.body));
    default:
        break;
    }
    // The bytes may lie in one of the two strings: both readings are taken before either is changed.
    _WideString reading;
    bool const isWide = wideReading(text.body, false, reading);
    bool const isData = assignText(data, dataReading(text.body));
    wide = std::move(reading);
    return isWide && isData;
}

/// Sets `error` where a load came to its end.
bool conclude(bool isLoaded, _StringUtility::StringUtilError & error) {
    if (isLoaded) {
        error = _StringUtility::utilErrorNone;
    }
    return isLoaded;
}

} // namespace

bool _StringUtility::loadStringFromStream(_Stream & stream, _DataString & data, _WideString & wide,
                                          StringFileFormat & format, StringUtilError & error) {
    format = formatASCII;
    char probe[3];
    stream.readBuffer(probe, sizeof probe);
    MarkedBytes const text = findMark({probe, sizeof probe});
    format = text.format;
    auto const markBytes = static_cast<std::int32_t>(sizeof probe - text.body.length);
    bool isLoaded = false;
    switch (format) {
    case formatUnicode:
    case formatUnicodeBigEndian:
        stream.setPosition(markBytes);
        isLoaded = loadWideStringFromStream(&stream, &wide, stream.getSize() - markBytes, format != formatUnicode);
        break;
    case formatUTF8:
        stream.setPosition(markBytes);
        isLoaded = loadDataStringFromStream(&stream, &data, stream.getSize() - markBytes);
        break;
    default: {
        std::int32_t const size = stream.getSize();
        stream.seekToBegin();
        bool const isData = loadDataStringFromStream(&stream, &data, size);
        stream.seekToBegin();
        isLoaded = loadWideStringFromStream(&stream, &wide, size, false) && isData;
        break;
    }
    }
    return conclude(isLoaded, error);
}

bool _StringUtility::loadStringFromFile(unsigned short int const * filename, _DataString & data, _WideString & wide,
                                        StringFileFormat & format, StringUtilError & error) {
    if (!_FileUtility::fileExists(filename)) {
        error = utilErrorFileNotFound;
        return false;
    }
    LoadedText loaded;
    bool isLoaded = false;
    {
        _FileStream stream(filename, readMode);
        format = formatASCII;
        isLoaded = loadText(stream, loaded);
    }
    if (!isLoaded) {
        return false;
    }
    format = loaded.text.format;
    if (format != formatUnknown) {
        return conclude(deliver(loaded.text, data, wide), error);
    }
    // Without a mark the block as it was read is the buffer of the bytes.
    std::size_t const length = loaded.text.body.length;
    bool const isWide = wideReading(loaded.text.body, false, wide);
    return conclude(adoptReading(std::move(loaded.bytes), length, data) && isWide, error);
}

bool _StringUtility::loadStringFromBinary(unsigned char const * bytes, std::int32_t size, _DataString & data,
                                          _WideString & wide, StringFileFormat & format, StringUtilError & error) {
    format = formatASCII;
    if (bytes == nullptr || size < 3) {
        throw 0;
    }
    MarkedBytes const text = findMark({reinterpret_cast<char const *>(bytes), static_cast<std::size_t>(size)});
    format = text.format;
    return conclude(deliver(text, data, wide), error);
}

_StringUtility::StringUtilError _StringUtility::loadDataStringFromFile(unsigned short int const * filename,
                                                                       _DataString & data) {
    if (!_FileUtility::fileExists(filename)) {
        return utilErrorFileNotFound;
    }
    _FileStream stream(filename, readMode);
    return loadDataStringFromStream(&stream, &data, stream.getSize()) ? utilErrorNone : utilErrorConversion;
}

_StringUtility::StringUtilError _StringUtility::loadWideStringFromFile(unsigned short int const * filename,
                                                                       _WideString & wide) {
    if (!_FileUtility::fileExists(filename)) {
        return utilErrorFileNotFound;
    }
    _FileStream stream(filename, readMode);
    return loadWideStringFromStream(&stream, &wide, stream.getSize(), false) ? utilErrorNone : utilErrorConversion;
}

bool _StringUtility::saveWideStringToFile(unsigned short int const * filename, unsigned short int const * text,
                                          StringFileFormat format) {
    if (text == nullptr) {
        return false;
    }
    WideView const units = viewOf(text);
    morvane::WholeFileStream stream(filename);
    bool hasMark = false;
    bool isBigEndian = false;
    switch (format) {
    case formatUnicodeRaw:
    case formatUTF16Raw:
    case formatUTF16LERaw:
        break;
    case formatUnicode:
    case formatUTF16:
    case formatUTF16LE:
        hasMark = true;
        break;
    case formatUnicodeBigEndian:
    case formatUTF16BE:
        hasMark = true;
        isBigEndian = true;
        break;
    case formatUnicodeBigEndianRaw:
    case formatUTF16BERaw:
        isBigEndian = true;
        break;
    default:
        return true;
    }
    if (hasMark) {
        stream.write(isBigEndian ? "\xFE\xFF" : "\xFF\xFE", 2);
    }
    writeUnits(stream, units, isBigEndian);
    return true;
}

bool _StringUtility::saveDataStringToFile(unsigned short int const * filename, char const * text,
                                          StringFileFormat format) {
    if (text == nullptr) {
        return false;
    }
    DataView const bytes = viewOf(text);
    morvane::WholeFileStream stream(filename);
    switch (format) {
    case formatANSI:
    case formatASCII:
    case formatASCIIExtended:
    case formatISO8859:
    case formatUTF8Raw:
        break;
    case formatUTF8:
        stream.write("\xEF\xBB\xBF", 3);
        break;
    default:
        return true;
    }
    writeBytes(stream, bytes);
    return true;
}

bool _StringUtility::loadWideStringFromStream(_Stream * stream, _WideString * wide, std::int32_t count,
                                              bool bigEndian) {
    if (count < 0) {
        throw 0;
    }
    // The closing unit of the buffer leaves room for an odd last byte, which it then takes the place of.
    std::size_t const length = static_cast<std::size_t>(count) / sizeof(unsigned short int);
    TextBuffer<unsigned short int> text(allocateText<unsigned short int>(length));
    if (text != nullptr) {
        stream->readBuffer(text.get(), count);
        text.get()[length] = 0;
    }
    return adoptReading(std::move(text), length, bigEndian, *wide);
}

bool _StringUtility::loadDataStringFromStream(_Stream * stream, _DataString * data, std::int32_t count) {
    if (count < 0) {
        throw 0;
    }
    auto const length = static_cast<std::size_t>(count);
    TextBuffer<char> text(allocateText<char>(length));
    if (text != nullptr) {
        stream->readBuffer(text.get(), count);
    }
    return adoptReading(std::move(text), length, *data);
}
