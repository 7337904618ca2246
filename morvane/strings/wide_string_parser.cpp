#include <morvane/strings/wide_string_parser.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <morvane/strings/tag_scanner.h>
#include <morvane/strings/text_view.h>
#include <morvane/strings/unit_search.h>
#include <morvane/strings/unit_stops.h>
#include <morvane/strings/wide_string_array.h>
#include <morvane/strings/wide_tag.h>
#include <morvane/strings/wide_tag_array.h>
#include <morvane/strings/word_splitter.h>
#include <utility>

using morvane::findStop;
using morvane::findUnit;
using morvane::MarkupPiece;
using morvane::notFound;
using morvane::TagScanner;
using morvane::viewOf;
using morvane::WideView;
using morvane::WordSplitter;

namespace {

constexpr std::uint32_t noIndex = static_cast<std::uint32_t>(-1);

constexpr unsigned short int lineFeed = 10;
constexpr unsigned short int carriageReturn = 13;

/// `notFound` becomes -1.
std::int32_t toPosition(std::size_t index) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(index));
}

/// Wraps around instead of overflowing.
std::int32_t addPositions(std::int32_t left, std::int32_t right) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(left) + static_cast<std::uint32_t>(right));
}

TagScanner::Rules rulesOf(_WideStringParser::DocType type) {
    return type == _WideStringParser::docTypeXML ? TagScanner::Rules::xml : TagScanner::Rules::plain;
}

bool isBlank(unsigned short int unit) {
    return unit == u' ' || unit == u'\t';
}

} // namespace

_WideStringParser::_WideStringParser() : position(0) {}

_WideStringParser::_WideStringParser(unsigned short int const * text) : position(0), wideString(text) {}

_WideStringParser::_WideStringParser(_WideStringParser const & other) = default;

_WideStringParser::~_WideStringParser() {
    _uninitialize();
}

_WideStringParser & _WideStringParser::operator=(_WideStringParser const & other) = default;

void _WideStringParser::assign(unsigned short int const * text) {
    wideString = text;
    reset();
}

void _WideStringParser::reset() {
    seek(0);
}

void _WideStringParser::increment() {
    offset(1);
}

void _WideStringParser::decrement() {
    if (position > 0) {
        --position;
    }
}

void _WideStringParser::offset(std::int32_t delta) {
    position = addPositions(position, delta);
}

_WideString _WideStringParser::get_wideString() const {
    return wideString;
}

void _WideStringParser::set_wideString(_WideString text) {
    wideString = std::move(text);
}

std::int32_t _WideStringParser::nextBlank() {
    WideView const text = viewOf(wideString);
    std::size_t const start = place();
    if (start == text.length) {
        return -1;
    }
    std::size_t const blank = findStop<u' ', u'\t'>(text, start);
    position = toPosition(blank);
    return blank == text.length ? -1 : position;
}

bool _WideStringParser::skipBlank() {
    if (!isBlank(wideString.getAt(toPosition(place())))) {
        return false;
    }
    ++position;
    return true;
}

std::int32_t _WideStringParser::skipBlanks() {
    std::int32_t skipped = 0;
    while (skipBlank()) {
        ++skipped;
    }
    return skipped;
}

unsigned short int _WideStringParser::nextChar() {
    WideView const text = viewOf(wideString);
    std::size_t const start = place();
    if (start == text.length) {
        return 0xFFFF;
    }
    ++position;
    return text[start];
}

std::int32_t _WideStringParser::nextChar(unsigned short int c) {
    std::int32_t const found = wideString.find(c, toPosition(place()));
    if (found != -1) {
        position = found;
    }
    return found;
}

std::int32_t _WideStringParser::nextString(unsigned short int const * text) {
    std::int32_t const found = wideString.find(text, place());
    if (found != -1) {
        position = found;
    }
    return found;
}

bool _WideStringParser::nextCode(std::int32_t & start, std::int32_t & end) {
    start = wideString.find(u'&', toPosition(place()));
    if (start == -1) {
        return false;
    }
    end = wideString.find(u';', start);
    position = (end == -1 ? start : end) + 1;
    return end != -1;
}

bool _WideStringParser::nextLine(_WideString & line) {
    std::int32_t const start = toPosition(place());
    std::int32_t const feed = wideString.find(lineFeed, start);
    std::int32_t const end = feed == -1 ? toPosition(viewOf(wideString).length) : feed;
    position = feed == -1 ? end : feed + 1;
    if (start == end) {
        return false;
    }
    line = wideString.mid(start, end - start);
    line.remove(carriageReturn);
    // A zero unit may have hidden some.
    line.remove(lineFeed);
    return true;
}

std::int32_t _WideStringParser::nextPart(unsigned short int *, unsigned short int *) {
    return 0;
}

bool _WideStringParser::nextTag(std::int32_t & start, std::int32_t & end, DocType type) {
    TagScanner scanner(viewOf(wideString), rulesOf(type), place());
    std::size_t begin = notFound;
    std::size_t last = notFound;
    TagScanner::Found const found = scanner.findTag(begin, last);
    start = toPosition(begin);
    end = toPosition(last);
    if (found == TagScanner::Found::nothing) {
        return false;
    }
    position = toPosition(scanner.position());
    return true;
}

std::int32_t _WideStringParser::parseTags(_WideTagArray * target, DocType type, bool fromStart) {
    if (target == nullptr) {
        return 0;
    }
    if (fromStart) {
        reset();
    }
    std::size_t const start = place();
    TagScanner scanner(viewOf(wideString), rulesOf(type), start);
    MarkupPiece piece{};
    while (scanner.next(piece)) {
        std::unique_ptr<_WideTag> tag(
            new _WideTag(wideString.mid(toPosition(piece.begin), toPosition(piece.end - piece.begin)), piece.isTag));
        if (target->addTag(tag.get()) == noIndex) {
            // No memory: a later call may go on with this piece.
            return toPosition(target->get_count());
        }
        static_cast<void>(tag.release());
        position = toPosition(piece.end);
    }
    if (scanner.position() != start) {
        position = toPosition(scanner.position());
    }
    return toPosition(target->get_count());
}

std::int32_t _WideStringParser::parseStrings(_WideStringArray * target, bool fromStart) {
    return parseWords(target, fromStart, false);
}

std::int32_t _WideStringParser::parseStringsEx(_WideStringArray * target, bool fromStart) {
    return parseWords(target, fromStart, true);
}

void _WideStringParser::_initialize() {
    position = 0;
}

void _WideStringParser::_uninitialize() {}

std::uint32_t _WideStringParser::place() const {
    std::uint32_t const length = static_cast<std::uint32_t>(viewOf(wideString).length);
    return position < 0 || static_cast<std::uint32_t>(position) > length ? length
                                                                         : static_cast<std::uint32_t>(position);
}

std::int32_t _WideStringParser::parseWords(_WideStringArray * target, bool fromStart, bool holdQuotes) {
    if (target == nullptr) {
        return 0;
    }
    if (fromStart) {
        reset();
    }
    WideView const text = viewOf(wideString);
    WordSplitter splitter(text, holdQuotes ? WordSplitter::Quotes::hold : WordSplitter::Quotes::ignore, place());
    WideView word;
    while (splitter.next(word)) {
        // A zero unit ends the text that is added.
        std::size_t const zero = findUnit(word, 0);
        std::size_t const length = zero == notFound ? word.length : zero;
        _WideString piece =
            wideString.mid(toPosition(static_cast<std::size_t>(word.data - text.data)), toPosition(length));
        if (target->addMade(std::move(piece)) == noIndex) {
            break;
        }
        position = toPosition(splitter.position());
    }
    return toPosition(target->get_count());
}
