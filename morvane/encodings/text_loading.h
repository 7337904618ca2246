// Whole texts out of files and blocks of bytes, as views where no string is needed.
#pragma once

#include <cstddef>
#include <memory>
#include <morvane/encodings/string_utility.h>
#include <morvane/strings/text_view.h>

class _WideString;

namespace morvane {

/// A block of bytes with its byte order mark told and taken off.
struct MarkedBytes {
    _StringUtility::StringFileFormat format = _StringUtility::formatUnknown; ///< 5, 7, 9 or -1
    DataView body{nullptr, 0}; ///< the bytes behind the mark, zero bytes included
};

/// Looks at the first three bytes; fewer give the stream's failure, an `int` of value 0.
MarkedBytes readMark(DataView bytes);

/// `body` as byte text: up to its first zero byte.
DataView dataReading(DataView body) noexcept;

/// `body` as wide text of exact size: an odd last byte dropped, up to the first zero unit. False when the heap refused;
/// `wide` is released then.
bool wideReading(DataView body, bool bigEndian, _WideString & wide);

/// What came of reading a file.
enum class FileReading : unsigned char { done, notFound, refused };

/// The bytes of one file, owned.
struct TextFile {
    std::unique_ptr<char[]> bytes;
    MarkedBytes text; ///< views `bytes`
};

/// Reads a text file with one read and tells its mark. A file that can't be opened, or that has fewer than three bytes,
/// gives the stream's failure.
FileReading readTextFile(unsigned short int const * filename, TextFile & file);

/// Writes `text`, encoded as UTF-8 piece by piece, behind a mark to a new or emptied file: what `saveDataStringToFile`
/// with `formatUTF8` would leave. Failures as there.
void saveUtf8File(unsigned short int const * filename, WideView text);

} // namespace morvane
