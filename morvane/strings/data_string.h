// The library's 8-bit text.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <morvane/core/object.h>
#include <morvane/export.h>

class _Stream;
class _WideString;

namespace morvane {
struct TextMaker;
}

/// A text of bytes in one zero-closed buffer of exactly its size.
///
/// Use it for the contents of files, encoded text and keys; a `_DataString` of zero bytes also serves as a byte buffer.
/// The bytes have no encoding here. It offers what `_WideString` offers; they differ in the default constructor and
/// null texts, which leave a `_DataString` released, and in `find` of an empty text, which is found everywhere here. A
/// text is live (`get_data()` points to its bytes) or released (it is null); each member also takes a released text and
/// reads it as empty text. A null text argument reads as empty text too.
/// A zero byte inside the text is carried along by what works by `get_length`; search, comparison, case change and
/// appending see the text as ending at the first zero.
/// Cost: every change of the length takes one block with `new[]` and copies the text; no spare capacity.
/// Threads: an object belongs to one thread at a time; `const` members may run side by side.
/// Ownership: the object owns its buffer; the raw setters trust the caller to keep that straight.
/// Errors: none is raised but by `saveToStream`; a search that finds nothing gives -1; when the heap refuses, or the
/// buffer would pass 32 bits of bytes, the text ends released.
class MORVANE_EXPORT _DataString : public _Object {
public:
    /// Makes a released text.
    _DataString();
    /// Makes a copy, live also where `other` is released.
    _DataString(_DataString const & other);
    /// Takes the buffer of `other`, which ends released.
    _DataString(_DataString && other) noexcept;
    /// Makes `c` repeated `count` times; a `count` below 1 gives empty text, live.
    _DataString(char c, std::int32_t count);
    /// Makes a copy of the zero-closed `text`; null leaves the object released.
    _DataString(char const * text);
    /// Makes the byte # and the eight lower-case hexadecimal digits of `value`.
    _DataString(std::uint32_t value);
    /// Makes the word "true" or "false".
    _DataString(bool value);
    /// Makes `value` in decimal with six digits behind the point.
    _DataString(float value);
    ~_DataString() override;

    /// True, whatever `other` is.
    virtual bool equals(_Object const & other) const;
    /// Reads nothing and gives true; `_Stream::readString` reads what `saveToStream` writes.
    virtual bool loadFromStream(_Stream & stream);
    /// Writes the length, four bytes with the lowest first, then the bytes, and gives true. What the stream throws at a
    /// short write passes through.
    virtual bool saveToStream(_Stream & stream);
    /// Empty text, not the object's own.
    virtual _DataString toString() const;

    /// A copy of the zero-closed `text`; released for null.
    static _DataString createStr(char const * text);

    /// Puts what the constructor from the same argument makes in the place of the text. The source may be the object
    /// itself or lie in its buffer.
    _DataString const & operator=(_DataString const & other);
    _DataString const & operator=(_DataString && other) noexcept;
    _DataString const & operator=(char c);
    _DataString const & operator=(char const * text);
    _DataString const & operator=(std::uint32_t value);
    _DataString const & operator=(bool value);
    _DataString const & operator=(float value);

    /// Puts a copy of `other` in the place of the text; live also where `other` is released.
    void copy(_DataString const & other);

    /// Appends what the constructor from the same arguments makes, a signed number in decimal. A released `other` and a
    /// null text append nothing; anything else makes a released text live.
    void add(_DataString const & other);
    void add(char c, std::int32_t count);
    void add(char const * text);
    void add(std::int32_t value);
    void add(std::uint32_t value);
    void add(bool value);
    void add(float value);

    /// Appends as `add` does, a byte once.
    _DataString const & operator+=(_DataString const & other);
    _DataString const & operator+=(char c);
    _DataString const & operator+=(char const * text);
    _DataString const & operator+=(std::uint32_t value);
    _DataString const & operator+=(bool value);
    _DataString const & operator+=(float value);

    /// The bytes, zero-closed; null when released.
    char * get_data() const { return data; }
    char * getData() const { return data; }
    operator char const *() const { return data; }

    /// Bytes of text, without the closing zero.
    std::uint32_t get_length() const { return length; }

    /// Store the field and nothing else. A block given to `set_data` comes from `new char[]`, is zero-closed, and is
    /// the object's from then on; the former one is not released.
    void set_data(char * value) { data = value; }
    void set_length(std::uint32_t value) { length = value; }

    /// True when the length is 0, released or not.
    bool isEmpty() const { return length == 0; }
    /// Gives the buffer back and leaves the text released.
    void empty();

    /// The byte at `index`; at the length, and outside the text, 0.
    char getAt(std::uint32_t index) const;
    char operator[](std::uint32_t index) const;
    /// Stores `c` at `index`; outside the text it is ignored.
    void setAt(std::int32_t index, char c);

    /// -1, 0 or 1 by unsigned byte values.
    std::int32_t compare(char const * text) const;
    std::int32_t compare(_DataString const & other) const;
    /// -1, 0 or 1 with A to Z taken as a to z.
    std::int32_t compareNoCase(char const * text) const;

    /// The index of the first `c` at or after `from`; -1 where `from` is not below the length. `c` 0 finds the end.
    std::int32_t find(char c) const;
    std::int32_t find(char c, std::int32_t from) const;
    /// The index of the first `text` at or after `from`; an empty `text` is found at `from`. Cost: linear in both
    /// texts.
    std::int32_t find(char const * text) const;
    std::int32_t find(char const * text, std::uint32_t from) const;
    /// The index of the first byte that is one of `set`.
    std::int32_t findOneOf(char const * set) const;
    /// The index of the last `c`; `c` 0 gives the end.
    std::int32_t reverseFind(char c) const;

    /// The `count` bytes from `start`, as far as they exist; empty text where `start` is outside the text or `count`
    /// below 1.
    _DataString mid(std::int32_t start, std::int32_t count) const;
    /// The bytes from `start` on.
    _DataString mid(std::int32_t start) const;
    /// The first `count` bytes, as far as they exist.
    _DataString left(std::int32_t count) const;
    /// The last `count` bytes; empty text where `count` is above the length.
    _DataString right(std::int32_t count) const;
    /// The bytes from `first` to `last`, both included.
    _DataString extract(std::int32_t first, std::int32_t last) const;

    /// Puts the byte or text in front of `position`, brought to the nearest end of the text, and gives the new length.
    std::int32_t insert(std::int32_t position, char c);
    std::int32_t insert(std::int32_t position, char const * text);
    /// Removes those of the bytes `start` to `start` + `count` - 1 that exist and gives the new length.
    std::int32_t deleteArray(std::int32_t start, std::int32_t count);
    /// Removes every `c`, or every `text` from left to right, and gives how many went.
    std::int32_t remove(char c);
    std::int32_t remove(char const * text);
    /// Changes every byte `from` to `to` in place and gives how many there were.
    std::int32_t replace(char from, char to);
    /// Changes every text `from` to `to` from left to right and gives how many there were; what was put in is not
    /// searched. A null or empty `from` gives 0. Cost: linear in the text and in the result.
    std::int32_t replace(char const * from, char const * to);
    /// Overwrites every byte with `c` and gives the length.
    std::int32_t replaceAll(char c);

    /// Turn a to z into A to Z and the reverse, in place; no other byte changes.
    void makeUpper();
    void makeLower();
    /// Reverses the order of the bytes, in place.
    void makeReverse();

    /// True when every byte is a digit (and there is one).
    bool isDecimalNumber() const;
    /// True when every byte is a digit or the point (and there is one), wherever and however many the points are.
    bool isFloatNumber() const;
    /// True when every byte is a hexadecimal digit of either case (and there is one).
    bool isHexNumber() const;

    /// True for "true" in any case.
    bool toBoolean() const;
    /// The value of a decimal number modulo 2 to the 32; 0 for anything else, a sign included.
    std::int32_t toInteger() const;
    /// The value of "#" or "0x" and eight hexadecimal digits; 0 for anything else.
    std::uint32_t toLongWord() const;
    /// The value of the leading decimal number of digits and points, up to the second point; 0 for anything else.
    float toFloat() const;
    double toDouble() const;
    /// The same values under another name.
    operator bool() const { return toBoolean(); }
    operator std::int32_t() const { return toInteger(); }
    operator std::uint32_t() const { return toLongWord(); }
    operator float() const { return toFloat(); }
    operator double() const { return toDouble(); }
    /// All the bytes, each widened to the unit of its value.
    _WideString toWideString() const;

    /// Puts the formatted text in the place of the text, cut at 32,767 bytes; the object's own text may be an argument.
    ///
    /// The directives are those of C's `printf`: `%s`, `%hs`, `%c`, `%hc` take bytes, `%ls` and `%lc` 16-bit text,
    /// which is narrowed; `l` is 32 bits wide in front of a number, `ll` and `j` 64, `z` and `t` the pointer's width. A
    /// null text prints "(null)", an unknown directive as it stands; `%n` writes nothing. It depends on no locale and
    /// uses 32 KB of stack.
    void format(char const * pattern, ...);
    void formatArgList(char const * pattern, std::va_list arguments);

private:
    friend struct morvane::TextMaker;

    /// Takes over the buffer `text` of `count` bytes; null makes a released text.
    _DataString(morvane::TextMaker maker, char * text, std::uint32_t count) noexcept;

    void _assign(_DataString const & other);
    void _assign(char c);
    void _assign(char c, std::uint32_t count);
    void _assign(char const * text);
    void _assign(std::int32_t value);
    void _assign(std::uint32_t value);
    void _assign(bool value);
    void _assign(float value);

    /// A cleared block of `count` bytes; null when the heap refuses.
    char * _allocate(std::uint32_t count);
    /// Moves `count` bytes.
    void _copy(char const * source, char * target, std::uint32_t count);
    void _initialize();
    void _uninitialize();
    /// The value of a text of eight hexadecimal digits; 0 for any other length.
    std::uint32_t _toLongWord() const;

    char * data;
    std::uint32_t length;
};
