// The cursor over a text, and the scanner of words and tags.
#pragma once

#include <cstdint>
#include <morvane/export.h>
#include <morvane/strings/wide_string.h>

class _WideStringArray;
class _WideTagArray;

/// A place in a text of its own, moved on by scanning operations.
///
/// Use it to cut a text into lines, words, or tags and the text between them. To read an XML document take
/// `DOM::_XMLDocument`.
/// A blank is a tab or a space; line ends are none. As in all searches of `_WideString`, a zero unit ends the text for
/// what searches a unit, a text or a tag.
/// Cost: every operation is linear in what it moves over, the searches in what they search.
/// Threads: a parser belongs to one thread at a time.
/// Ownership: a parser owns its copy of the text.
/// Errors: none is raised; a search that finds nothing gives -1 or false. A position outside the text counts as its
/// end.
class MORVANE_EXPORT _WideStringParser {
public:
    /// The rules that tags follow: those of XML, or, for any other value, that a tag ends at its first ">".
    enum DocType : std::int32_t { docTypeXML = 3 };

    _WideStringParser();
    _WideStringParser(unsigned short int const * text);
    _WideStringParser(_WideStringParser const & other);
    virtual ~_WideStringParser();

    _WideStringParser & operator=(_WideStringParser const & other);

    /// Takes a copy of `text` and goes to its start.
    void assign(unsigned short int const * text);
    /// Goes to the start.
    void reset();

    /// The index of the next unit to look at.
    std::int32_t get_position() const { return position; }
    void set_position(std::int32_t value) { position = value; }
    void seek(std::int32_t value) { position = value; }
    /// Adds 1.
    void increment();
    /// Takes 1 away unless the position is 0 or below.
    void decrement();
    void offset(std::int32_t delta);

    /// A copy of the text.
    _WideString get_wideString() const;
    /// Takes another text; the position stays.
    void set_wideString(_WideString text);

    /// Moves on to the next blank and gives its index; where there is none, -1, and the position is the end.
    std::int32_t nextBlank();
    /// Moves over one blank; false where there is none.
    bool skipBlank();
    /// Moves over all blanks and gives how many there were.
    std::int32_t skipBlanks();
    /// The unit at the position, which moves on; 0xFFFF at the end.
    unsigned short int nextChar();
    /// Moves on to the next `c`, or the next `text`, and gives its index; where there is none, -1, and the position
    /// stays.
    std::int32_t nextChar(unsigned short int c);
    std::int32_t nextString(unsigned short int const * text);
    /// Finds the next character reference: `start` becomes the index of its "&" and `end` that of the first ";" behind
    /// it, and the position moves behind that. Without "&": `start` is -1, and `end` and the position stay. Without
    /// ";": `end` is -1, and the position moves behind the "&".
    bool nextCode(std::int32_t & start, std::int32_t & end);
    /// Makes `line` the units up to the next line feed, or to the end, without any line feed or carriage return, and
    /// moves behind them. False at the end, and at a line of a line feed alone, which is passed: `line` stays then.
    bool nextLine(_WideString & line);
    /// Does nothing and gives 0.
    std::int32_t nextPart(unsigned short int * first, unsigned short int * second);
    /// Finds the next tag: `start` becomes the index of the next "<" and `end` that of the ">" that closes it, and the
    /// position moves behind that. False where one of the two is -1; the position stays then.
    ///
    /// A tag ends at the first ">" behind the position, also where that stands in front of `start`. Under the rules of
    /// XML "<!DOCTYPE" ends at "]>" instead, and "<![CDATA[" at "]]>".
    bool nextTag(std::int32_t & start, std::int32_t & end, DocType type);

    /// Appends the tags from the position, or the start, on, and the text between them, and gives the count of
    /// `target`, 0 for null. It stops at a ">" that stands in front of the next "<", and where there is no further tag;
    /// text behind the last tag is not added.
    std::int32_t parseTags(_WideTagArray * target, DocType type, bool reset);
    /// Appends the words between blanks, from the position, or the start, on, and gives the count of `target`, 0 for
    /// null. Behind a blank at the end stands one more empty word.
    std::int32_t parseStrings(_WideStringArray * target, bool reset);
    /// The same, but a word does not end at a blank while it holds exactly one quote, of either kind, so that quoted
    /// values hold together.
    std::int32_t parseStringsEx(_WideStringArray * target, bool reset);

    /// Sets the position to 0.
    void _initialize();
    /// Does nothing.
    void _uninitialize();

private:
    /// The position, or the length of the text where that lies outside.
    std::uint32_t place() const;
    std::int32_t parseWords(_WideStringArray * target, bool reset, bool holdQuotes);

    std::int32_t position;
    _WideString wideString;
};
