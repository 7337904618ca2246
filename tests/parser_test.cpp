#include "counting_heap.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <morvane/core/literals.h>
#include <morvane/streams/memory_stream.h>
#include <morvane/strings/tag_scanner.h>
#include <morvane/strings/wide_string_array.h>
#include <morvane/strings/wide_string_parser.h>
#include <morvane/strings/wide_tag.h>
#include <morvane/strings/wide_tag_array.h>
#include <morvane/strings/word_splitter.h>
#include <string>
#include <vector>

namespace {

using namespace morvane::literals;
using counting_heap::LeakCheck;

constexpr std::uint32_t none = 0xFFFFFFFF;
constexpr auto xml = _WideStringParser::docTypeXML;
constexpr auto plain = static_cast<_WideStringParser::DocType>(0);

std::u16string textOf(_WideString const & text) {
    return {text.arg(), text.arg() + text.get_length()};
}

/// Units with zeros among them, as a text that a client made by hand holds them.
_WideString wideOf(std::u16string const & units) {
    _WideString text(u' ', static_cast<std::int32_t>(units.size()));
    std::copy(units.begin(), units.end(), text.get_data());
    return text;
}

_WideStringParser parserOf(std::u16string const & units, std::int32_t position = 0) {
    _WideStringParser parser;
    parser.set_wideString(wideOf(units));
    parser.set_position(position);
    return parser;
}

/// "T" and the text of a tag, "-" and the text between tags.
std::u16string pieceOf(bool isTag, std::u16string const & text) {
    std::u16string piece(1, isTag ? u'T' : u'-');
    piece += text;
    return piece;
}

std::vector<std::u16string> piecesOf(_WideTagArray const & tags) {
    std::vector<std::u16string> pieces;
    for (std::uint32_t index = 0; index < tags.get_count(); ++index) {
        _WideTag const & tag = *tags.getTag(index);
        pieces.push_back(pieceOf(tag.isTag(), textOf(tag.get_wideString())));
    }
    return pieces;
}

std::vector<std::u16string> wordsOf(_WideStringArray const & array) {
    std::vector<std::u16string> words;
    for (std::uint32_t index = 0; index < array.get_count(); ++index) {
        words.push_back(textOf(array.getString(index)));
    }
    return words;
}

TEST(WideStringParser, CutsTags) {
    LeakCheck const check;
    struct Case {
        char16_t const * text;
        _WideStringParser::DocType type;
        std::vector<std::u16string> pieces;
        int position;
    };
    for (Case const & test : {
             Case{u"<a>\r\n <b/>x</a>y", xml, {u"T<a>", u"-\r\n ", u"T<b/>", u"-x", u"T</a>"}, 15},
             Case{u"<a> > <b>", xml, {u"T<a>"}, 5},
             Case{u"<!-- a > b --><c>", xml, {u"T<!-- a >"}, 14},
             Case{u"<![CDATA[a>b]]>c<d>", xml, {u"T<![CDATA[a>b]]>", u"-c", u"T<d>"}, 19},
             Case{u"<![CDATA[a>b]]>c<d>", plain, {u"T<![CDATA[a>"}, 15},
             Case{u"<!DOCTYPE a [<!X>]><b>", xml, {u"T<!DOCTYPE a [<!X>]>", u"T<b>"}, 22},
             Case{u"<!DOCTYPE a><b>", xml, {}, 0},
             Case{u"<a><!DOCTYP>", xml, {u"T<a>", u"T<!DOCTYP>"}, 12},
         }) {
        _WideStringParser parser = parserOf(test.text);
        _WideTagArray tags;
        EXPECT_EQ(parser.parseTags(&tags, test.type, true), static_cast<int>(test.pieces.size()));
        EXPECT_EQ(piecesOf(tags), test.pieces);
        EXPECT_EQ(parser.get_position(), test.position) << testing::PrintToString(test.text);
        EXPECT_EQ(parser.parseTags(&tags, test.type, true), static_cast<int>(2 * test.pieces.size()));
    }
}

TEST(WideStringParser, CutsWords) {
    LeakCheck const check;
    using Words = std::vector<std::u16string>;
    struct Case {
        char16_t const * text;
        Words words, quoted;
    };
    for (Case const & test : {
             Case{u" \t ", {u""}, {u""}},
             Case{u"a\nb\tc ", {u"a\nb", u"c", u""}, {u"a\nb", u"c", u""}},
             Case{u"n a=\"b c\"  d='e'", {u"n", u"a=\"b", u"c\"", u"d='e'"}, {u"n", u"a=\"b c\"", u"d='e'"}},
             Case{u"a=\"b c  ", {u"a=\"b", u"c", u""}, {u"a=\"b c  "}},
             Case{u"a=\"it's b\" c", {u"a=\"it's", u"b\"", u"c"}, {u"a=\"it's", u"b\" c"}},
         }) {
        _WideStringParser parser = parserOf(test.text);
        _WideStringArray words;
        _WideStringArray quoted;
        parser.parseStrings(&words, false);
        parser.parseStringsEx(&quoted, true);
        EXPECT_EQ(wordsOf(words), test.words);
        EXPECT_EQ(wordsOf(quoted), test.quoted);
    }
}

TEST(WideStringParser, FindsReferencesAndLines) {
    LeakCheck const check;
    struct {
        std::u16string text;
        bool hasCode;
        int start, end, behindCode;
        char16_t const * line; ///< null where there is none
        int behindLine;
    } const rows[] = {
        {u"x&a;&b;", true, 1, 3, 4, u"x&a;&b;", 7},
        {u"x;&a", false, 2, -1, 3, u"x;&a", 4},
        {u"none", false, -1, 7, 0, u"none", 4},
        {u"\r\n&;\n", true, 2, 3, 4, u"", 2},
        {u"\n&;", true, 1, 2, 3, nullptr, 1},
        {u"a\rb\nc", false, -1, 7, 0, u"ab", 4},
        {std::u16string(u"a\0&;\nb\r\n", 8), false, -1, 7, 0, u"a&;b", 8},
        {u"", false, -1, 7, 0, nullptr, 0},
    };
    for (auto const & row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.text));
        _WideStringParser parser = parserOf(row.text);
        std::int32_t start = 7;
        std::int32_t end = 7;
        EXPECT_EQ(parser.nextCode(start, end), row.hasCode);
        EXPECT_EQ(std::pair(start, end), std::pair(row.start, row.end));
        EXPECT_EQ(parser.get_position(), row.behindCode);
        parser.reset();
        _WideString line(u"former"_w);
        EXPECT_EQ(parser.nextLine(line), row.line != nullptr);
        EXPECT_EQ(line.compare(wideOf(row.line == nullptr ? u"former" : row.line)), 0);
        EXPECT_EQ(parser.get_position(), row.behindLine);
    }
}

TEST(WideStringParser, MovesItsPosition) {
    _WideStringParser parser(u"a b"_w);
    parser.decrement();
    EXPECT_EQ(parser.nextChar(), u'a');
    EXPECT_EQ(parser.nextChar(u'b'), 2);
    EXPECT_EQ(parser.nextChar(u'b'), 2);
    EXPECT_EQ(parser.nextChar(u'a'), -1);
    EXPECT_EQ(parser.get_position(), 2);
    parser.reset();
    EXPECT_EQ(parser.nextString(u" b"_w), 1);
    EXPECT_EQ(parser.nextString(u"a"_w), -1);
    EXPECT_TRUE(parser.skipBlank());
    EXPECT_FALSE(parser.skipBlank());
    parser.decrement();
    parser.offset(2);
    EXPECT_EQ(parser.nextChar(), 0xFFFF);
    parser.increment();
    EXPECT_EQ(parser.get_position(), 4);
    parser.set_wideString(_WideString(u"other text"_w));
    EXPECT_EQ(parser.nextChar(), u'r');
    _WideStringParser const copy(parser);
    parser.assign(nullptr);
    EXPECT_EQ(parser.get_position(), 0);
    EXPECT_TRUE(parser.get_wideString().isEmpty());
    EXPECT_EQ(copy.get_position(), 5);
    EXPECT_EQ(textOf(copy.get_wideString()), u"other text");
    EXPECT_EQ(parser.nextPart(nullptr, nullptr) + parser.parseTags(nullptr, xml, true)
                  + parser.parseStrings(nullptr, true) + parser.parseStringsEx(nullptr, true),
              0);
}

TEST(WideStringParser, TakesAPositionOutsideItsTextAsTheEnd) {
    for (std::int32_t const position : {-1, 4, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
        _WideStringParser parser = parserOf(u"<a>", position);
        std::int32_t start = 7;
        std::int32_t end = 8;
        EXPECT_FALSE(parser.nextCode(start, end));
        EXPECT_EQ(std::pair(start, end), std::pair(-1, 8));
        EXPECT_FALSE(parser.nextTag(start, end, xml) || parser.skipBlank());
        EXPECT_EQ(std::pair(start, end), std::pair(-1, -1));
        EXPECT_EQ(parser.nextChar(u'<') + parser.nextString(u"<"_w) + parser.nextBlank(), -3);
        EXPECT_EQ(parser.nextChar(), 0xFFFF);
        _WideTagArray tags;
        _WideStringArray words;
        EXPECT_EQ(parser.parseTags(&tags, xml, false) + parser.parseStrings(&words, false)
                      + parser.parseStringsEx(&words, false),
                  0);
        EXPECT_EQ(parser.get_position(), position);
        _WideString line(u"former"_w);
        EXPECT_FALSE(parser.nextLine(line));
        EXPECT_EQ(textOf(line), u"former");
        EXPECT_EQ(parser.get_position(), 3);
    }
}

// Half a million times half a million steps would be seen at once.
TEST(WideStringParser, StaysLinearWhereQuotesOpenersAndSectionsPileUp) {
    std::u16string quotes = u"a=\"";
    std::u16string sections;
    for (int count = 0; count < 500000; ++count) {
        quotes += u"b ";
        sections += count % 10 == 0 ? u"<![CDATA[]>]]>" : u"";
    }
    _WideStringArray words;
    EXPECT_EQ(parserOf(quotes).parseStringsEx(&words, true), 1);
    _WideTagArray tags;
    EXPECT_EQ(parserOf(std::u16string(1000000, u'<')).parseTags(&tags, xml, true), 0);
    EXPECT_EQ(parserOf(sections).parseTags(&tags, xml, true), 50000);
}

TEST(TagScanner, YieldsViewsAndGoesOnFromACopy) {
    auto const text = u"<a>b<c>"_wv;
    morvane::TagScanner scanner(text, morvane::TagScanner::Rules::xml);
    morvane::MarkupPiece piece{};
    ASSERT_TRUE(scanner.next(piece) && scanner.next(piece));
    EXPECT_FALSE(piece.isTag);
    morvane::TagScanner copy = scanner;
    for (morvane::TagScanner * const each : {&scanner, &copy}) {
        ASSERT_TRUE(each->next(piece));
        EXPECT_TRUE(piece.isTag && piece.begin == 4 && piece.end == 7);
        EXPECT_FALSE(each->next(piece));
    }
}

/// Shows the entry that only derived classes see.
class OpenStringArray : public _WideStringArray {
public:
    using _WideStringArray::getStringItem;
};

TEST(WideStringArray, KeepsCopiesOfTexts) {
    LeakCheck const check;
    _WideStringArray array;
    EXPECT_EQ(array.findString(u"a"_w), none);
    EXPECT_EQ(array.addString(nullptr), none);
    std::vector<std::u16string> const texts{u"One", u"", u"two", u"ONE", u"five"};
    for (std::uint32_t index = 0; index < texts.size(); ++index) {
        EXPECT_EQ(array.addString(wideOf(texts[index])), index);
    }
    EXPECT_EQ(array.get_size(), 8u);
    EXPECT_EQ(array.findString(u"one"_w), 0u);
    EXPECT_EQ(array.findString(nullptr), 1u);
    EXPECT_EQ(array.findString(u"on"_w), none);
    array.removeAt(0, 2);
    EXPECT_EQ(array.findString(u"one"_w), 3u);
    EXPECT_EQ(array.findString(nullptr), none);
    EXPECT_NE(array.getString(0).get_data(), nullptr);
    array.setString(0, u"new"_w);
    array.setString(2, u"changed"_w);
    array.setString(5, u"outside"_w);
    EXPECT_EQ(wordsOf(array), (std::vector<std::u16string>{u"new", u"", u"changed", u"ONE", u"five"}));
    EXPECT_TRUE(array.getString(5).isEmpty() && array.getItem(5) == nullptr);
}

TEST(WideStringArray, OwnsItsTextsToItsEndWhateverBecomesOfTheirEntries) {
    LeakCheck const check;
    OpenStringArray array;
    for (int round = 0; round < 6; ++round) {
        array.addString(u"text"_w);
    }
    _WideString const * const putOut = array.getStringItem(0);
    array.setItem(0, array.getItem(1));
    array.removeAt(1, 2);
    array.removeAll();
    array.deleteAll();
    array.freeExtra();
    EXPECT_EQ(textOf(*putOut), u"text");
    // What a client puts in goes too, wherever it stands.
    array.addString(u"made"_w);
    array.add(new _WideString(u"set"_w));
    array.addString(u"made"_w);
    array.add(array.getItem(1));
}

TEST(WideStringArray, SharesItsTextsWithCopies) {
    LeakCheck const check;
    auto first = std::make_unique<_WideStringArray>();
    first->addString(u"a"_w);
    first->add(new _WideString(u"b"_w));
    auto second = std::make_unique<_WideStringArray>(*first);
    _WideStringArray third;
    third.addString(u"gone"_w);
    third = *second;
    // Grows, and so takes a list of its own.
    for (int count = 0; count < 4; ++count) {
        second->addString(u"c"_w);
    }
    first->addString(u"d"_w);
    first.reset();
    EXPECT_EQ(wordsOf(*second), (std::vector<std::u16string>{u"a", u"b", u"c", u"c", u"c", u"c"}));
    second.reset();
    third.setString(0, u"z"_w);
    EXPECT_EQ(wordsOf(third), (std::vector<std::u16string>{u"z", u"b"}));
    _WideStringArray const & same = third;
    third = same;
    EXPECT_EQ(third.get_count(), 2u);
}

TEST(WideTagArray, TakesTagsOver) {
    LeakCheck const check;
    _WideTagArray tags;
    EXPECT_EQ(tags.addTag(nullptr), none);
    EXPECT_EQ(tags.addTag(new _WideTag(u"<a>"_w, true)), 0u);
    EXPECT_TRUE(tags.getTag(1) == nullptr && tags.getTag(4) == nullptr);
    std::unique_ptr<_WideTag> const former(tags.getTag(0));
    _WideTag copy(*former);
    tags.setTag(0, new _WideTag(nullptr, false));
    tags.setTag(4, former.get());
    EXPECT_EQ(piecesOf(_WideTagArray(tags)), std::vector<std::u16string>{u"-"});
    copy.set_wideString(_WideString(u"text"_w));
    EXPECT_TRUE(copy.get_tag() && textOf(former->get_wideString()) == u"<a>");
    *former = copy;
    former->set_tag(false);
    EXPECT_TRUE(!former->isTag() && textOf(former->get_wideString()) == u"text");
    _MemoryStream stream(0);
    EXPECT_TRUE(copy.saveToStream(stream) && copy.loadFromStream(stream));
    EXPECT_TRUE(copy.toString().get_data() != nullptr && copy.toString().get_length() == 0);
}

} // namespace
