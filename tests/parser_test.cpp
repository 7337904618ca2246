#include "counting_heap.h"
#include "text_testing.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <morvane/core/literals.h>
#include <morvane/streams/memory_stream.h>
#include <morvane/strings/wide_string_array.h>
#include <morvane/strings/wide_string_parser.h>
#include <morvane/strings/wide_tag.h>
#include <morvane/strings/wide_tag_array.h>
#include <string>
#include <vector>

namespace {

using namespace morvane::literals;
using counting_heap::LeakCheck;

constexpr std::uint32_t none = 0xFFFFFFFF;
constexpr auto xml = _WideStringParser::docTypeXML;

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

/// The words, with a "|" behind each.
std::u16string shown(_WideStringArray const & words) {
    std::u16string all;
    for (std::uint32_t index = 0; index < words.get_count(); ++index) {
        all += textOf(words.getString(index)) + u"|";
    }
    return all;
}

TEST(WideStringParser, CutsTagsUpToAStrayEnd) {
    struct {
        char16_t const * text;
        _WideStringParser::DocType type;
        int pieces, position;
    } const rows[] = {{u"<a> > <b>", xml, 1, 5},
                      {u"<![CDATA[a>b]]>c<d>", xml, 3, 19},
                      {u"<![CDATA[a>b]]>c<d>", static_cast<_WideStringParser::DocType>(0), 1, 15},
                      {u"<!DOCTYPE a [<!X>]><b>", xml, 2, 22}};
    for (auto const & row : rows) {
        _WideStringParser parser = parserOf(row.text);
        _WideTagArray tags;
        EXPECT_EQ(parser.parseTags(&tags, row.type, true), row.pieces) << testing::PrintToString(row.text);
        EXPECT_EQ(parser.get_position(), row.position) << testing::PrintToString(row.text);
    }
}

TEST(WideStringParser, FindsReferencesAndLines) {
    struct {
        std::u16string text;
        bool hasCode;
        int start, end, behindCode;
        char16_t const * line; ///< null where there is none
        int behindLine;
    } const rows[] = {
        {u"x&a;&b;", true, 1, 3, 4, u"x&a;&b;", 7}, {u"x;&a", false, 2, -1, 3, u"x;&a", 4},
        {u"\r\n&;\n", true, 2, 3, 4, u"", 2},       {u"\n&;", true, 1, 2, 3, nullptr, 1},
        {u"a\rb\nc", false, -1, 7, 0, u"ab", 4},    {std::u16string(u"a\0&;\nb\r\n", 8), false, -1, 7, 0, u"a&;b", 8},
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
    _WideStringParser const copy(parser);
    parser.assign(nullptr);
    EXPECT_TRUE(parser.get_position() == 0 && parser.get_wideString().isEmpty());
    EXPECT_TRUE(copy.get_position() == 4 && textOf(copy.get_wideString()) == u"a b");
    EXPECT_EQ(parser.nextPart(nullptr, nullptr) + parser.parseTags(nullptr, xml, true)
                  + parser.parseStrings(nullptr, true) + parser.parseStringsEx(nullptr, true),
              0);
}

TEST(WideStringParser, TakesAPositionOutsideItsTextAsTheEnd) {
    for (std::int32_t const position : {-1, 4, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
        SCOPED_TRACE(position);
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
    // The array is added to.
    EXPECT_EQ(parserOf(u"<a> <b>").parseTags(&tags, xml, true), 50003);
}

TEST(WideStringArray, KeepsCopiesOfTexts) {
    LeakCheck const check;
    _WideStringArray array;
    EXPECT_EQ(array.addString(nullptr), none);
    std::uint32_t next = 0;
    for (char16_t const * const text : {u"One", u"", u"two", u"ONE", u"five"}) {
        EXPECT_EQ(array.addString(wideOf(text)), next++);
    }
    EXPECT_EQ(array.get_size(), 8u);
    EXPECT_EQ(array.findString(u"one"_w), 0u);
    EXPECT_EQ(array.findString(nullptr), 1u);
    EXPECT_EQ(array.findString(u"on"_w), none);
    array.removeAt(0, 2);
    EXPECT_EQ(array.findString(u"one"_w), 3u);
    EXPECT_EQ(array.findString(nullptr), none);
    EXPECT_TRUE(array.getString(0).get_data() != nullptr && array.getString(5).get_data() != nullptr);
    array.setString(0, u"new"_w);
    array.setString(2, u"changed"_w);
    array.setString(5, u"outside"_w);
    EXPECT_EQ(shown(array), u"new||changed|ONE|five|");
    EXPECT_EQ(array.getItem(5), nullptr);
}

TEST(WideStringArray, OwnsItsTextsToItsEndWhateverBecomesOfTheirEntries) {
    LeakCheck const check;
    struct Open : _WideStringArray {
        using _WideStringArray::getStringItem;
    } array;
    for (int round = 0; round < 6; ++round) {
        array.addString(u"text"_w);
    }
    _WideString const * const putOut = array.getStringItem(0);
    array.setItem(0, array.getItem(1));
    array.removeAt(1, 2);
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
    EXPECT_EQ(shown(*second), u"a|b|c|c|c|c|");
    second.reset();
    third.setString(0, u"z"_w);
    _WideStringArray const & same = third;
    third = same;
    EXPECT_EQ(shown(third), u"z|b|");
}

TEST(WideTagArray, TakesTagsOver) {
    LeakCheck const check;
    _WideTagArray tags;
    EXPECT_EQ(tags.addTag(nullptr), none);
    EXPECT_EQ(tags.addTag(new _WideTag(u"<a>"_w, true)), 0u);
    EXPECT_TRUE(tags.getTag(1) == nullptr && tags.getTag(4) == nullptr);
    std::unique_ptr<_WideTag> const former(tags.getTag(0));
    tags.setTag(0, new _WideTag(nullptr, false));
    tags.setTag(4, former.get());
    _WideTag const & held = *_WideTagArray(tags).getTag(0);
    EXPECT_TRUE(tags.get_count() == 1 && !held.isTag() && held.get_wideString().get_size() == 2);
    _WideTag copy(*former);
    copy.set_wideString(_WideString(u"text"_w));
    copy.set_tag(false);
    EXPECT_TRUE(former->get_tag() && textOf(former->get_wideString()) == u"<a>");
    *former = copy;
    EXPECT_TRUE(!former->isTag() && textOf(former->get_wideString()) == u"text");
    _MemoryStream stream(0);
    EXPECT_TRUE(copy.saveToStream(stream) && copy.loadFromStream(stream));
    EXPECT_TRUE(copy.toString().get_data() != nullptr && copy.toString().isEmpty());
}

} // namespace
