// Text encodings: formats, code pages, UTF-8 and UTF-16, numbers, character references, text files.
#pragma once

#include <cstdint>
#include <morvane/export.h>

class _DataString;
class _Stream;
class _WideString;

/// The library's text encoding toolbox: static functions without state.
///
/// Use it to carry text between bytes and 16-bit code units and between files and strings; the XML document does so by
/// itself. Cost: one pass over the text, or one to count and one to fill, at several bytes a step. Threads: all
/// functions work on their arguments alone. Errors: told by results. The functions over streams and files let the `int`
/// 0 of a short transfer, or of a file that can't be opened or created, pass to the caller; nothing stays open or
/// allocated then. A result that the heap refuses ends released.
class MORVANE_EXPORT _StringUtility {
public:
    /// How text is stored. A Raw format is the one without a byte order mark.
    enum StringFileFormat : std::int32_t {
        formatUnknown = -1,
        formatANSI = 0,
        formatASCII = 1,
        formatASCIIExtended = 2,
        formatISO8859 = 3,
        formatUnicodeRaw = 4,
        formatUnicode = 5,
        formatUnicodeBigEndianRaw = 6,
        formatUnicodeBigEndian = 7,
        formatUTF8Raw = 8,
        formatUTF8 = 9,
        formatUTF16Raw = 10,
        formatUTF16 = 11,
        formatUTF16BERaw = 12,
        formatUTF16BE = 13,
        formatUTF16LERaw = 14,
        formatUTF16LE = 15,
        formatISO8859_1 = 16,
        formatISO8859_2 = 17,
        formatISO8859_3 = 18,
        formatISO8859_4 = 19,
        formatISO8859_5 = 20,
        formatISO8859_6 = 21,
        formatISO8859_7 = 22,
        formatISO8859_8 = 23,
        formatISO8859_9 = 24,
        formatISO8859_10 = 25,
        formatISO8859_11 = 26,
        formatISO8859_12 = 27,
        formatISO8859_13 = 28,
        formatISO8859_14 = 29,
        formatISO8859_15 = 30
    };

    /// What a text function came to.
    enum StringUtilError : std::int32_t {
        utilErrorNone = 0,
        utilErrorConversion = 1,
        utilErrorFileNotFound = 3,
        utilErrorBadInput = 4
    };

    /// The direction of `convertWideStringToWideString`.
    enum StringOperation : std::int32_t { operationEncode = 0, operationDecode = 1 };

    _StringUtility();
    /// Copies nothing.
    _StringUtility(_StringUtility const & other);
    virtual ~_StringUtility();

    /// Does nothing and gives the object back.
    _StringUtility & operator=(_StringUtility const & other);

    // Formats.

    /// The short name of a format, such as "UTF-16LE" or "Latin 1"; empty for `formatUnknown`, for ISO 8859-10 to -14
    /// and for values outside the enum.
    static _WideString formatName(StringFileFormat format);
    /// The longer description of a format; empty where the name is empty.
    static _WideString formatDescription(StringFileFormat format);
    /// The flags of a format; 0 where the name is empty.
    static std::uint32_t formatFlags(StringFileFormat format);

    // Code pages: ISO/IEC 8859, parts 1 to 9 and 15. Part 7 is the edition of 1987.

    /// Decodes zero-closed bytes through the code page of `format`: one unit a byte; an undefined byte stands for its
    /// own value. False with `result` as it was for a null `text` or a format that is no code page; false with `result`
    /// empty for ISO 8859-10 to -14.
    static bool convertDataStringToWideString(char const * text, _WideString & result, StringFileFormat format);
    /// Encodes zero-closed units through the code page of `format`: one byte a unit, "?" for a unit that the page can't
    /// express. False with `result` as it was for a null `text` or a format without a table.
    static bool convertWideStringToDataString(unsigned short int const * text, _DataString & result,
                                              StringFileFormat format);

    // Unicode transformations. Units are carried one by one: a surrogate is a unit like any other.

    /// Decodes zero-closed UTF-8 of one to three bytes a unit into `target`, or counts alone when `target` is null;
    /// `count` becomes the units produced. `target` has room for what a counting call told, and gets no terminator.
    ///
    /// Continuation bytes are masked and not tested; overlong forms are accepted. A truncated sequence, a stray
    /// continuation byte or a byte from 0xF0 on gives `utilErrorConversion` and its story in `message`; `count` and
    /// `target` then hold what came before. A null `source` gives `utilErrorBadInput` with `count` as it was.
    static StringUtilError convertUTF8StringToWideString(char const * source, unsigned short int * target,
                                                         _WideString & message, std::int32_t & count);
    /// Encodes zero-closed units into `target` as UTF-8 of one to three bytes a unit, or counts alone when `target` is
    /// null; `count` becomes the bytes produced. `target` gets no terminator. False, with `count` as it was, only for a
    /// null `source`.
    static bool convertWideStringToUTF8String(unsigned short int const * source, char * target, std::int32_t & count);
    /// Assigns `source` to `result`: UTF-16 text already is wide text; a null `source` makes it empty. Always
    /// `utilErrorNone`.
    static StringUtilError convertUTF16StringToWideString(unsigned short int const * source, _WideString & result);
    /// Assigns `source` to `result`; a null `source` makes it empty. Always true.
    static bool convertWideStringToUTF16String(unsigned short int const * source, _WideString & result);

    // Numbers and character references.

    /// True for decimal digits alone, also for empty text; false for null.
    static bool isDecimalWideString(unsigned short int const * text);
    /// True for "0x" in either case or "x", then 1 to 8 hexadecimal digits; `digits`, if not null, then receives the
    /// digits in lower case.
    static bool isHexWideString(unsigned short int const * text, _WideString * digits);
    /// The value of decimal text modulo 2 to the 32; 0 for other text and for null.
    static std::int32_t decWideStringToLong(unsigned short int const * text);
    /// The value of hexadecimal text with its prefix; 0 for other text, -1 for null.
    static std::int32_t hexWideStringToLong(unsigned short int const * text);
    /// The value of decimal or hexadecimal text; -1 for other text and for null.
    static std::int32_t numWideStringToLong(unsigned short int const * text);
    /// The unit in lower-case hexadecimal digits, without prefix or leading zeros.
    static _WideString wideCharToHexWideString(unsigned short int unit);
    static _DataString wideCharToHexDataString(unsigned short int unit);
    /// The unit of a reference such as "&#233;" or "&#xe9;": the low 16 bits of its number, 0 for a bad number; 0xFFFF
    /// for text that is no reference or has 4 units or fewer, and for null.
    static unsigned short int wideStringCodeToWideChar(unsigned short int const * text);
    /// Writes units above `limit` as character references (`operationEncode`), or resolves references and drops all
    /// else between an "&" and the next
    /// ";" (`operationDecode`). False with `result` as it was for a null `text`; false with `result` empty for another
    /// operation. A reference to the unit 0 adds no unit to the text that can be read, but 1 to its length.
    static bool convertWideStringToWideString(unsigned short int const * text, _WideString & result,
                                              StringOperation operation, unsigned short int limit);

    // Text files. A byte order mark is told by `format` and taken off; nothing is decoded.

    /// Reads a whole stream, which stands at its start, and reports its mark: `formatUnicode` and
    /// `formatUnicodeBigEndian` fill `wide`, `formatUTF8` fills `data`, and `formatUnknown` fills both, the units low
    /// byte first. A text ends at its first zero; an odd last byte of wide text is dropped.
    ///
    /// True with `error` at `utilErrorNone`; false, with `error` as it was, when a heap refused a text. A source of
    /// fewer than three bytes gives the stream's failure, with `format` at `formatASCII`.
    static bool loadStringFromStream(_Stream & stream, _DataString & data, _WideString & wide,
                                     StringFileFormat & format, StringUtilError & error);
    /// The same for a file, read once. False with `error` at `utilErrorFileNotFound` and all else as it was when there
    /// is no such file.
    static bool loadStringFromFile(unsigned short int const * filename, _DataString & data, _WideString & wide,
                                   StringFileFormat & format, StringUtilError & error);
    /// The same for a block of `size` bytes, which stays the caller's.
    static bool loadStringFromBinary(unsigned char const * bytes, std::int32_t size, _DataString & data,
                                     _WideString & wide, StringFileFormat & format, StringUtilError & error);
    /// Reads a whole file as bytes, a mark included, up to the first zero. `utilErrorFileNotFound` when there is no
    /// such file; `utilErrorConversion` when a heap refused the text.
    static StringUtilError loadDataStringFromFile(unsigned short int const * filename, _DataString & data);
    /// Reads a whole file as units, low byte first, a mark included, up to the first zero; results as for
    /// `loadDataStringFromFile`.
    static StringUtilError loadWideStringFromFile(unsigned short int const * filename, _WideString & wide);
    /// Writes `text` to a new or emptied file as UTF-16 with the mark and byte order of `format`; a format that isn't
    /// one of 4 to 7 and 10 to 15 leaves the file empty. False only for a null `text`; a failed write is not noticed.
    static bool saveWideStringToFile(unsigned short int const * filename, unsigned short int const * text,
                                     StringFileFormat format);
    /// Writes the bytes of `text` to a new or emptied file, behind a mark for `formatUTF8`; a format that isn't one of
    /// 0 to 3, 8 and 9 leaves the file empty. False only for a null `text`; a failed write is not noticed.
    static bool saveDataStringToFile(unsigned short int const * filename, char const * text, StringFileFormat format);

protected:
    /// Reads `count` bytes as units and assigns them up to the first zero; an odd last byte is dropped. False when a
    /// heap refused.
    static bool loadWideStringFromStream(_Stream * stream, _WideString * wide, std::int32_t count, bool bigEndian);
    /// Reads `count` bytes and assigns them up to the first zero. False when a heap refused.
    static bool loadDataStringFromStream(_Stream * stream, _DataString * data, std::int32_t count);
};
