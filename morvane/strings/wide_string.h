// The library's text: 16-bit code units.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <morvane/export.h>

class _DataString;

namespace morvane {
struct TextMaker;
}

/// A text of 16-bit code units in one zero-closed buffer of exactly its size.
///
/// Use it wherever text is stored or handed out. It knows code units only: a surrogate is a unit like any other. To put
/// a long text together piece by piece, format it at once or gather the pieces first, for every append copies the text.
/// A text is live (`arg()` points to its units) or released (`arg()` is null, see `empty`); each member also takes a
/// released text and reads it as empty text. A null text argument reads as empty text too.
/// A zero unit inside the text is carried along by what works by `get_length`; search, comparison, case change and
/// appending see the text as ending at the first zero.
/// Cost: every change of the length takes one block from `globalProcessMemory` and copies the text; no spare capacity.
/// Threads: an object belongs to one thread at a time; `const` members may run side by side.
/// Ownership: the object owns its buffer; the raw setters trust the caller to keep that straight.
/// Errors: none is raised; a search that finds nothing gives -1; when the heap refuses, or the buffer would pass 32
/// bits of bytes, the text ends released.
class MORVANE_EXPORT _WideString {
public:
    /// The three forms of an element tag.
    enum TagStatus : std::int32_t { TAG_STATUS_EMPTY = 0, TAG_STATUS_BEGINNING = 1, TAG_STATUS_ENDING = 2 };

    /// Makes empty text, live.
    _WideString();
    /// Makes a copy, live also where `other` is released.
    _WideString(_WideString const & other);
    /// Takes the buffer of `other`, which ends released.
    _WideString(_WideString && other) noexcept;
    /// Makes `c` repeated `count` times; a `count` below 1 gives empty text.
    _WideString(unsigned short int c, std::int32_t count);
    /// Makes `text` repeated `count` times; a `count` below 1 or a null `text` gives empty text.
    _WideString(unsigned short int const * text, std::int32_t count);
    /// Makes the text of the bytes of `text`, each widened to the unit of its value.
    _WideString(char const * text);
    /// Makes a copy of the zero-closed `text`.
    _WideString(unsigned short int const * text);
    /// Makes the decimal digits of `value`, with a minus sign where it is negative.
    _WideString(std::int32_t value);
    /// Makes the unit # and the eight lower-case hexadecimal digits of `value`.
    _WideString(std::uint32_t value);
    /// Makes the word "true" or "false".
    _WideString(bool value);
    /// Makes `value` in decimal with six digits behind the point.
    _WideString(float value);
    ~_WideString();

    /// A copy of the zero-closed `text`.
    static _WideString createStr(unsigned short int const * text);

    /// Puts what the constructor from the same argument makes in the place of the text. The source may be the object
    /// itself or lie in its buffer.
    _WideString const & operator=(_WideString const & other);
    _WideString const & operator=(_WideString && other) noexcept;
    _WideString const & operator=(unsigned short int c);
    _WideString const & operator=(unsigned short int const * text);
    _WideString const & operator=(char const * text);
    _WideString const & operator=(std::int32_t value);
    _WideString const & operator=(std::uint32_t value);
    _WideString const & operator=(bool value);
    _WideString const & operator=(float value);

    /// Puts a copy of `other` in the place of the text; live also where `other` is released.
    void copy(_WideString const & other);

    /// Appends what the constructor from the same arguments makes. A released `other` appends nothing; anything else
    /// makes a released text live.
    void add(_WideString const & other);
    void add(unsigned short int c, std::int32_t count);
    void add(char const * text);
    void add(unsigned short int const * text);
    void add(std::uint32_t value);
    void add(bool value);
    void add(float value);

    /// Appends as `add` does, a unit once.
    _WideString const & operator+=(_WideString const & other);
    _WideString const & operator+=(unsigned short int c);
    _WideString const & operator+=(char const * text);
    _WideString const & operator+=(unsigned short int const * text);
    _WideString const & operator+=(std::uint32_t value);
    _WideString const & operator+=(bool value);
    _WideString const & operator+=(float value);

    /// The units, zero-closed; null when released.
    unsigned short int const * arg() const { return data; }
    unsigned short int * get_data() const { return data; }
    unsigned short int * getData() const { return data; }
    operator unsigned short int const *() const { return data; }

    /// Code units of text, without the closing zero.
    std::uint32_t get_length() const { return length; }
    /// Bytes of the buffer, closing zero included; 0 when released.
    std::uint32_t get_size() const { return size; }

    /// Store the field and nothing else. A block given to `set_data` comes from `globalProcessMemory`, is zero-closed,
    /// and is the object's from then on; the former one is not released.
    void set_data(unsigned short int * value) { data = value; }
    void set_length(std::uint32_t value) { length = value; }
    void set_size(std::uint32_t value) { size = value; }

    /// True when the length is 0, released or not.
    bool isEmpty() const { return length == 0; }
    /// Gives the buffer back and leaves the text released.
    void empty();

    /// The unit at `index`; at the length, and outside the text, 0.
    unsigned short int getAt(std::int32_t index) const;
    unsigned short int getChar(std::int32_t index) const;
    unsigned short int operator[](std::int32_t index) const;
    /// The first and the last unit; 0 for empty text.
    unsigned short int firstChar() const;
    unsigned short int lastChar() const;
    /// Stores `c` at `index`; outside the text it is ignored.
    void setAt(std::int32_t index, unsigned short int c);

    /// -1, 0 or 1 by unit values.
    std::int32_t compare(unsigned short int const * text) const;
    std::int32_t compare(char const * text) const;
    std::int32_t compareStr(_WideString const & other) const;
    /// Below 0, 0 or above 0 with A to Z taken as a to z: the difference of the first unequal pair of units.
    std::int32_t compareNoCase(unsigned short int const * text) const;

    /// The index of the first `c` at or after `from`; -1 where `from` is not below the length. `c` 0 finds the end.
    std::int32_t find(unsigned short int c) const;
    std::int32_t find(unsigned short int c, std::int32_t from) const;
    /// The index of the first `text` at or after `from`; an empty `text` is found at `from`, but nothing is at the end.
    /// Cost: linear in both texts.
    std::int32_t find(unsigned short int const * text) const;
    std::int32_t find(unsigned short int const * text, std::uint32_t from) const;
    /// The index of the first unit that is one of `set`.
    std::int32_t findOneOf(unsigned short int const * set) const;
    /// The index of the last `c`; `c` 0 gives the end.
    std::int32_t reverseFind(unsigned short int c) const;

    /// The `count` units from `start`, as far as they exist; empty text where `start` is outside the text or `count`
    /// below 1.
    _WideString mid(std::int32_t start, std::int32_t count) const;
    /// The units from `start` on.
    _WideString mid(std::int32_t start) const;
    /// The first `count` units, as far as they exist.
    _WideString left(std::int32_t count) const;
    /// The last `count` units; empty text where `count` is above the length.
    _WideString right(std::int32_t count) const;
    /// The units from `first` to `last`, both included.
    _WideString extract(std::int32_t first, std::int32_t last) const;

    /// Puts the unit or text in front of `position`, brought to the nearest end of the text, and gives the new length.
    std::int32_t insert(std::int32_t position, unsigned short int c);
    std::int32_t insert(std::int32_t position, unsigned short int const * text);
    /// Removes those of the units `start` to `start` + `count` - 1 that exist and gives the new length.
    std::int32_t deleteArray(std::int32_t start, std::int32_t count);
    /// Removes every `c`, or every `text` from left to right, and gives how many went.
    std::int32_t remove(unsigned short int c);
    std::int32_t remove(unsigned short int * text);
    /// Changes every unit `from` to `to` in place and gives how many there were.
    std::int32_t replace(unsigned short int from, unsigned short int to);
    /// Changes every text `from` to `to` from left to right and gives how many there were; what was put in is not
    /// searched. A null or empty `from` gives 0. Cost: linear in the text and in the result.
    std::int32_t replace(unsigned short int * from, unsigned short int * to);
    /// Overwrites every unit with `c` and gives the length.
    std::int32_t replaceAll(unsigned short int c);

    /// Turn a to z into A to Z and the reverse, in place; no other unit changes.
    void makeUpper();
    void makeLower();
    /// Reverses the order of the units, in place.
    void makeReverse();
    /// Swaps the two bytes of each unit, in place.
    void bigEndian();

    /// True when every unit is a digit (and there is one).
    bool isDecimalNumber() const;
    /// True when every unit is a digit or the point (and there is one), wherever and however many the points are.
    bool isFloatNumber() const;
    /// True when every unit is a hexadecimal digit of either case (and there is one).
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
    /// A copy.
    _WideString toUniString() const;
    /// The units narrowed to bytes: each of the value of its unit, up to the first unit above 255, which becomes a zero
    /// byte followed by spaces up to the length of this text.
    _DataString toDataString() const;

    /// Puts the formatted text in the place of the text, cut at 32,767 units; the object's own text may be an argument.
    ///
    /// The directives are those of C's `printf`: `%s`, `%ls`, `%c`, `%lc` take 16-bit text, `%hs` and `%hc` bytes; `l`
    /// is 32 bits wide in front of a number, `ll` and `j` 64, `z` and `t` the pointer's width. A null text prints
    /// "(null)", an unknown directive as it stands; `%n` writes nothing. It depends on no locale and uses 64 KB of
    /// stack.
    void format(unsigned short int const * pattern, ...);
    void formatArgList(unsigned short int const * pattern, std::va_list arguments);

    /// Tell from the first and last units alone which piece of markup the text is; case counts.
    /// "<...>"
    bool isDOMTag() const;
    /// "<!--...-->"
    bool isDOMComment() const;
    /// "<!DOCTYPE...]>"
    bool isDOMDocumentType() const;
    /// "<![CDATA[...]]>"
    bool isDOMCDATASection() const;
    /// "<?...?>"
    bool isDOMProcessingInstruction() const;
    /// "<.../>", "<...>" or "</...>" by `status`; false for any other status.
    bool isDOMElement(TagStatus status) const;
    /// True for every text.
    bool isDOMAttribute() const;
    bool isDOMEntityReference() const;
    bool isDOMText() const;

private:
    friend struct morvane::TextMaker;

    /// Takes over the buffer `text` of `count` units; null makes a released text.
    _WideString(morvane::TextMaker maker, unsigned short int * text, std::uint32_t count) noexcept;

    void _assign(_WideString const & other);
    void _assign(unsigned short int c);
    void _assign(unsigned short int c, std::uint32_t count);
    void _assign(unsigned short int const * text);
    void _assign(char const * text);
    void _assign(std::int32_t value);
    void _assign(std::uint32_t value);
    void _assign(bool value);
    void _assign(float value);

    /// A cleared block of `count` units, its bytes in `size`; null when the heap refuses or `size` would pass 32 bits.
    unsigned short int * _allocate(std::uint32_t count, std::uint32_t & size);
    /// Moves `count` units.
    void _copy(unsigned short int const * source, unsigned short int * target, std::uint32_t count);
    /// Widens and narrows up to the zero of `source`, the closing zero included; `count` is not used.
    void _copy(char const * source, unsigned short int * target, std::uint32_t count);
    void _copy(unsigned short int const * source, char * target, std::uint32_t count);
    void _initialize();
    void _uninitialize();
    /// The value of a text of eight hexadecimal digits; 0 for any other length.
    std::uint32_t _toLongWord();

    unsigned short int * data;
    std::uint32_t length;
    std::uint32_t size;
};
