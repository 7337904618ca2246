// Whole texts out of files and blocks of bytes, as views where no string is needed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <morvane/encodings/string_utility.h>
#include <morvane/strings/text_storage.h>
#include <morvane/strings/text_view.h>

namespace morvane {

/// A block of bytes with its byte order mark told and taken off.
struct MarkedBytes {
    _StringUtility::StringFileFormat format = _StringUtility::formatUnknown; ///< one of four: 5, 7, 9 or -1
    DataView body; ///< the bytes behind the mark, zero bytes included
};

/// The mark of at least three bytes.
MarkedBytes findMark(DataView bytes) noexcept;

/// `body` as byte text: up to its first zero byte.
DataView dataReading(DataView body) noexcept;

/// Makes `wide` what `body` is as wide text: an odd last byte dropped, up to the first zero unit. False when the heap
/// refused; `wide` is released then.
bool wideReading(DataView body, bool isBigEndian, _WideString & wide);

/// Gives back a buffer from `allocateText` that was not adopted.
struct TextRelease {
    void operator()(unsigned short int * text) const noexcept { releaseText(text); }
    void operator()(char * text) const noexcept { releaseText(text); }
};
template <typename Unit>
using TextBuffer = std::unique_ptr<Unit, TextRelease>;

/// Makes a buffer of bytes as read the text of `data` or `wide`, up to its first zero; `length` in units. A null buffer
/// leaves the text released and gives false; so does a heap that refuses.
bool adoptReading(TextBuffer<char> text, std::size_t length, _DataString & data);
bool adoptReading(TextBuffer<unsigned short int> text, std::size_t length, bool isBigEndian, _WideString & wide);

/// The bytes of one text source, owned and zero-closed.
struct LoadedText {
    TextBuffer<char> bytes;
    MarkedBytes text; ///< views `bytes`
};

/// Reads all of a file's stream, which stands at its start, by one read, and tells its mark. Fewer than three bytes, or
/// a short transfer, give the stream's failure. False when there was no memory.
bool loadText(_Stream & stream, LoadedText & loaded);

/// What came of loading a file.
enum class TextLoading : std::uint8_t { done, fileNotFound, refused };

/// `loadText` from a file by name. One that is there and can't be opened gives the stream's failure.
TextLoading loadTextFile(unsigned short int const * filename, LoadedText & loaded);

/// Writes units with the byte order asked for, the rest being dropped after a short write.
void writeUnits(_Stream & stream, WideView units, bool isBigEndian);
/// Writes bytes, the rest being dropped after a short write.
void writeBytes(_Stream & stream, DataView bytes);

/// Writes `text`, up to its first zero unit, as UTF-8 behind a mark to a new or emptied file, encoding it piece by
/// piece: the file is what `saveDataStringToFile` with `formatUTF8` would leave. A file that can't be created gives the
/// stream's failure; a failed write is not noticed.
void saveUtf8File(unsigned short int const * filename, WideView text);

} // namespace morvane
