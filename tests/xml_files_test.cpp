#include "temporary_folder.h"
#include "xml_support.h"

#include <algorithm>
#include <morvane/core/literals.h>
#include <morvane/encodings/string_utility.h>
#include <morvane/strings/data_string.h>

namespace {

using namespace morvane::literals;
using namespace xml_test;

/// The units of `text` as bytes, low byte first or high byte first.
std::string unitBytes(std::u16string_view text, bool bigEndian = false) {
    std::string bytes;
    for (char16_t const unit : text) {
        char const low = static_cast<char>(unit & 0xFF);
        char const high = static_cast<char>(unit >> 8);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    }
    return bytes;
}

std::string declared(std::string const & charset, std::string const & content) {
    return "<?xml version=\"1.0\" encoding=\"" + charset + "\"?><a>" + content + "</a>";
}

std::string const utf8Mark = "\xEF\xBB\xBF";
std::string const utf16Mark = "\xFF\xFE";
std::string const bigMark = "\xFE\xFF";

class Files : public Silent {
protected:
    TemporaryFolder folder;
};

TEST_F(Files, LoadIdentifiesTheCharsetAndDecodes) {
    std::u16string const wideDeclared = u"<?xml version=\"1.0\" encoding=\"%\"?><a>\u20AC</a>";
    auto const wide = [&](std::u16string const & name) {
        return std::u16string(wideDeclared).replace(wideDeclared.find(u'%'), 1, name);
    };
    struct {
        char const * what;
        std::string bytes;
        int charset;        // -1: as it was, 27
        char const * value; // of the text of the root, or behind "!" the error
    } const rows[] = {
        {"UTF-8 mark, other declaration", utf8Mark + declared("ISO-8859-1", "\xC3\xA9"), 1, "\\x00e9"},
        {"UTF-8 mark, none", utf8Mark + "<a>\xE2\x82\xAC</a>", 1, "\\x20ac"},
        {"UTF-8 mark, malformed", utf8Mark + "<a>\xC3", 1, "!utf-8 convertion error"},
        {"UTF-16 mark, upper case", utf16Mark + unitBytes(wide(u"UTF-8")), 2, "\\x20ac"},
        {"UTF-16 mark, lower case", utf16Mark + unitBytes(wide(u"utf-8")), 1, "\\x20ac"},
        {"UTF-16 mark, lowest first", utf16Mark + unitBytes(wide(u"iso-8859-15")), 5, "\\x20ac"},
        {"UTF-16 mark, none", utf16Mark + unitBytes(u"<a>x</a>"), 2, "x"},
        {"UTF-16 mark, second declaration", utf16Mark + unitBytes(u"<?xml a?><?xml b='big5'?><a>x</a>"), 23, "x"},
        {"UTF-16 mark, odd byte", utf16Mark + unitBytes(u"<a>x</a>") + "y", 2, "x"},
        {"big-endian mark", bigMark + unitBytes(wide(u"shift_jis"), true), 21, "\\x20ac"},
        {"bytes, highest first", declared("ISO-8859-15", "\xA4"), 19, "\\x20ac"},
        {"bytes, beginning of the name", declared("iso-8859-1", "\xA4"), 5, "\\x00a4"},
        {"bytes, code page", declared("ISO-8859-7", "\xC1"), 11, "\\x0391"},
        {"bytes, US-ASCII", declared("us-ascii", "\xC1"), 0, "\\x00c1"},
        {"bytes, none named", declared("gb2312", "\xC3\xA9"), 1, "\\x00e9"},
        {"bytes, no declaration", "<a>\xC3\xA9</a>", 1, "\\x00e9"},
        {"bytes, only the first declaration", "<?xml a?><?xml b='us-ascii'?><a>\xC3\xA9</a>", 1, "\\x00e9"},
        {"bytes, end before begin", "<?p?><?xml b='us-ascii'?><a>\xC3\xA9</a>", 1, "\\x00e9"},
        {"bytes, malformed", declared("utf-8", "\x80"), 1, "!utf-8 convertion error"},
        {"bytes, no code page", declared("iso-8859-11", "x"), 15, "!charset conversion error"},
        {"bytes, UCS-4", declared("iso-10646-ucs-4", "x"), 4, "!loadFromString:no nodes"},
        {"bytes, Big5", declared("big5", "x"), 23, "!loadFromString:no nodes"},
        {"bytes declare UTF-16", declared("utf-16", "x"), 2, "!loadFromString:no nodes"},
        {"units, in any case", unitBytes(wide(u"UTF-16")), 2, "\\x20ac"},
        {"units, lowest first", unitBytes(wide(u"ISO-8859-15")), 5, "!loadFromString:no nodes"},
        {"units, UCS-2", unitBytes(wide(u"ISO-10646-UCS-2")), 3, "\\x20ac"},
        {"units, none named", unitBytes(u"<?xml version='1.0'?><a>x</a>"), 1, "!loadFromString:no nodes"},
        {"units, second declaration", unitBytes(u"?><?xml a?><?xml b='Utf-16'?>"), 2, "!loadFromString:no nodes"},
        {"units at an odd place", "?" + unitBytes(u"<?xml b='Utf-16'?><a>x</a>"), 1, "!loadFromString:no nodes"},
        {"no file", "", -1, "!binary stream error"},
    };
    for (auto const & row : rows) {
        FileName const name = *row.bytes.c_str() == 0 ? folder.name("missing") : folder.put("in.xml", row.bytes);
        DOM::_XMLDocument document;
        document.set_encoding(DOM::charsetEUCKR);
        document.get_childNodes()->deleteAll();
        document.addElement(u"former"_w, u""_w);
        _WideString error;
        bool const result = document.loadFromFile(name, error);
        std::string value = joined({"!", shown(error)});
        if (result) {
            auto const * const text = document.getRoot()->firstChild();
            value = text == nullptr ? "(no text)" : shown(text->get_nodeValue());
        } else if (value != "!loadFromString:no nodes") {
            EXPECT_EQ(shownDocument(document), "former") << row.what;
        }
        EXPECT_EQ(value, row.value) << row.what;
        EXPECT_EQ(document.get_encoding(), row.charset < 0 ? 27 : row.charset) << row.what;
    }
}

TEST_F(Files, LoadStringTakesBothReadings) {
    _WideString error;
    _WideString result(u"as it was"_w);
    DOM::XMLCharset charset = DOM::charsetEUCKR;
    auto const load = [&](_StringUtility::StringFileFormat format, char const * data, char16_t const * wide) {
        return DOM::_XMLDocument::loadString(format, data, Units(wide), error, charset, result);
    };
    EXPECT_FALSE(load(_StringUtility::formatASCII, "x", u"y"));
    EXPECT_EQ(units(error), u"unknown file");
    EXPECT_EQ(units(result), u"as it was");
    EXPECT_EQ(charset, DOM::charsetEUCKR);
    EXPECT_TRUE(load(_StringUtility::formatUnknown, "<?xml utf-16?>", u"wide"));
    EXPECT_EQ(units(result), u"wide");
    EXPECT_EQ(charset, DOM::charsetUTF16);
    EXPECT_TRUE(load(_StringUtility::formatUnknown, "bytes", u"<?xml US-ASCII?>"));
    EXPECT_EQ(units(result), u"bytes");
    EXPECT_EQ(charset, DOM::charsetUSASCII);
    EXPECT_TRUE(DOM::_XMLDocument::loadString(_StringUtility::formatUnknown, nullptr, nullptr, error, charset, result));
    EXPECT_EQ(units(result), u"");
    EXPECT_EQ(charset, DOM::charsetUTF8);
    EXPECT_TRUE(load(_StringUtility::formatUnicode, nullptr, u"wide"));
    EXPECT_EQ(units(result), u"wide");
    EXPECT_EQ(units(error), u"unknown file");
}

TEST_F(Files, ShortSourcesGiveTheFailureOfTheStream) {
    DOM::_XMLDocument document;
    document.addElement(u"former"_w, u""_w);
    _WideString error;
    FileName const name = folder.put("short.xml", "<a");
    EXPECT_THROW(document.loadFromFile(name, error), int);
    EXPECT_EQ(shownDocument(document), "former");
    DOM::XMLCharset charset = DOM::charsetUTF8;
    _WideString result;
    unsigned char const bytes[] = {'<', 'a'};
    EXPECT_THROW(DOM::_XMLDocument::loadStringFromBinary(bytes, 2, error, charset, result), int);
    EXPECT_THROW(DOM::_XMLDocument::loadStringFromBinary(nullptr, 9, error, charset, result), int);
    EXPECT_THROW(DOM::_XMLDocument::loadStringFromBinary(bytes, -1, error, charset, result), int);
    EXPECT_EQ(units(error), u"");
    // The file was closed again, so that it opens for writing.
    EXPECT_TRUE(document.saveToFile(name, error));
}

TEST_F(Files, SaveWritesTheBytesOfEachCharset) {
    std::u16string const text = u"<a>\u00E9\u20AC\u0391z</a>";
    std::string const refused = "-";
    std::string const latin = "<a>\xE9??z</a>";
    std::string const units = utf16Mark + unitBytes(text);
    std::string const expected[] = {refused,
                                    "<a>&#xe9;&#x20ac;&#x391;z</a>",
                                    utf8Mark + "<a>\xC3\xA9\xE2\x82\xAC\xCE\x91z</a>",
                                    units,
                                    units,
                                    refused,
                                    latin,
                                    latin,
                                    latin,
                                    latin,
                                    "<a>???z</a>",
                                    "<a>???z</a>",
                                    "<a>??\xC1z</a>",
                                    "<a>???z</a>",
                                    latin,
                                    refused,
                                    refused,
                                    refused,
                                    refused,
                                    refused,
                                    "<a>\xE9\xA4?z</a>",
                                    refused};
    for (std::int32_t number = -1; number < 31; ++number) {
        std::string const & bytes = expected[std::min(number + 1, 21)];
        bool const hasMessage = number >= 14 && number <= 18;
        std::string const file = std::to_string(number);
        auto const charset = static_cast<DOM::XMLCharset>(number);
        _WideString error;
        EXPECT_EQ(DOM::_XMLDocument::saveStringToFile(folder.name(file), error, charset, Units(text)),
                  bytes != refused);
        EXPECT_EQ(shown(error), hasMessage ? "charset convertion error" : "") << number;
        EXPECT_EQ(std::filesystem::exists(folder.path(file)) ? folder.get(file) : refused, bytes) << number;
        // Null makes an empty file of one charset alone.
        error = u""_w;
        std::filesystem::remove(folder.path(file));
        EXPECT_EQ(DOM::_XMLDocument::saveStringToFile(folder.name(file), error, charset, nullptr), number == 0);
        EXPECT_EQ(std::filesystem::exists(folder.path(file)), number == 0) << number;
        EXPECT_EQ(shown(error), number >= 5 && number <= 19 ? "charset convertion error" : "") << number;
    }
}

TEST_F(Files, SavingAnEmptyOrRefusedDocument) {
    DOM::_XMLDocument document;
    _WideString error;
    EXPECT_TRUE(document.saveToFile(folder.name("empty"), error));
    EXPECT_EQ(folder.get("empty"), utf8Mark);
    document.set_encoding(DOM::charsetUCS4);
    EXPECT_FALSE(document.saveToFile(folder.name("refused"), error));
    EXPECT_FALSE(std::filesystem::exists(folder.path("refused")));
    EXPECT_EQ(units(error), u"");
    document.set_encoding(DOM::charsetUTF8);
    EXPECT_THROW(document.saveToFile(folder.name("no folder/x"), error), int);
}

TEST_F(Files, ADocumentComesBackWithAMarkAndItsDeclaration) {
    FileName const name = folder.put("doc", "<!--c--><?xml version='1.0' encoding='ISO-8859-1' x?>\n<a  b='\xC3\xA9'\n>"
                                            "&#8364;&lt;<c/>lost</a><d/>");
    folder.put("doc", utf8Mark + folder.get("doc"));
    DOM::_XMLDocument document;
    document.set_version(u"kept"_w);
    document.set_standalone(false);
    _WideString error;
    ASSERT_TRUE(document.loadFromFile(name, error));
    EXPECT_EQ(units(document.get_version()), u"kept");
    EXPECT_FALSE(document.get_standalone());
    EXPECT_TRUE(document.saveToFile(name, error));
    EXPECT_EQ(folder.get("doc"),
              utf8Mark + "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\r\n<a b=\"\">\r\n  <c/>\r\n</a>\r\n");
    document.set_encoding(DOM::charsetUSASCII);
    document.getRoot()->addElement(u"e"_w, u"\u00E9"_w);
    EXPECT_TRUE(document.saveToFile(name, error));
    EXPECT_EQ(folder.get("doc"), "<?xml version=\"1.0\" encoding=\"us-ascii\"?>\r\n<a b=\"\">\r\n  <c/>\r\n"
                                 "  <e>&#xe9;</e>\r\n</a>\r\n");
}

TEST_F(Files, FindsDeclarationsInBytesAndUnits) {
    struct {
        char const * text;
        std::uint32_t from;
        std::uint32_t position;
        char const * found; // as it was: "-"
    } const rows[] = {{"<?xml a?>b", 0, 9, "<?xml a?>"},
                      {"xy<?xml a?>b", 2, 11, "<?xml a?>"},
                      {"<?xml a?><?xml b?>", 9, 18, "<?xml b?>"},
                      {"<?xml a?><?xml b?>", 1, 9, ""},
                      {"?><?xml a?>", 0, 2, ""},
                      {"<?xml a", 0, 0, "-"},
                      {"a?>", 0, 0, "-"},
                      {"<?xml?>", 8, 8, "-"},
                      {"<?xml?>", 0xFFFFFFFF, 0xFFFFFFFF, "-"},
                      {"<?XML a?>", 0, 0, "-"}};
    for (auto const & row : rows) {
        _DataString const data(row.text);
        _WideString const units(row.text);
        _DataString foundData("-");
        _WideString foundWide("-");
        std::uint32_t positions[] = {row.from, row.from};
        bool const isFound = *row.found != '-';
        using Document = DOM::_XMLDocument;
        EXPECT_EQ(Document::findProcessingInstructionData(&data, positions[0], foundData), isFound) << row.text;
        EXPECT_EQ(Document::findProcessingInstructionWide(&units, positions[1], foundWide), isFound) << row.text;
        EXPECT_EQ(positions[0], row.position) << row.text;
        EXPECT_EQ(positions[1], row.position) << row.text;
        EXPECT_STREQ(foundData.get_data(), row.found) << row.text;
        EXPECT_EQ(shown(foundWide), row.found) << row.text;
    }
}

/// The events without their line ends, which a "!" tells to be missing, and without the milliseconds of the two
/// measures.
std::vector<std::string> plainEvents(std::vector<std::string> events) {
    std::string const end = "\\x000d\\x000a";
    for (std::string & event : events) {
        event = event.ends_with(end) ? event.substr(0, event.size() - end.size()) : "!" + event;
        std::size_t const colon = event.find("Time: ");
        event = colon != event.npos ? event.substr(0, colon + 6) + "n" : event;
    }
    return events;
}

TEST(FileTraces, TellTheWayOfALoad) {
    using Events = std::vector<std::string>;
    struct {
        std::string bytes;
        bool isUnmarked; ///< the way begins with three events more
        Events events;
    } const rows[] = {
        {declared("us-ascii", ""), true, {"ASCII XML Format Identified", "TotalTime: n"}},
        {declared("utf-8", ""), true, {"UTF-8 XML Format Identified", "TotalTime: n"}},
        {declared("utf-16", ""), true, {"UTF-16 XML Format Identified", "TotalTime: n"}},
        {declared("iso-10646-ucs-4", ""), true, {"UCS XML Format Identified", "TotalTime: n"}},
        {declared("iso-8859-1", ""), true, {"ISO LATIN XML Format Identified", "TotalTime: n"}},
        {declared("iso-8859-10", ""), true, {"ISO LATIN XML Format Identified"}},
        {declared("euc-kr", ""), true, {"Unknown: Not Implemented", "TotalTime: n"}},
        {utf8Mark + "<a/>", false, {"UTF-8 XML Format", "TotalTime: n"}},
        {utf16Mark + unitBytes(u"<a/>"), false, {"Unicode XML Format", "TotalTime: n"}},
        // The message of the fault, which has no line end, is heard only where no mark was.
        {declared("utf-8", "\xFF"), true, {"UTF-8 XML Format Identified", "!error C: (c0:255) (d:41) (length:46)"}},
        {utf8Mark + "\xFF", false, {"UTF-8 XML Format"}},
    };
    TemporaryFolder const folder;
    for (auto const & row : rows) {
        Events expected = row.isUnmarked ? Events{"Unknown XML Format", "IdentifyTime: n"} : Events();
        expected.insert(expected.end(), row.events.begin(), row.events.end());
        FileName const name = folder.put("in", row.bytes);
        DebugChannel channel;
        DOM::XMLCharset charset = DOM::charsetUTF8;
        _WideString error;
        _WideString result;
        DOM::_XMLDocument::loadStringFromFile(name, error, charset, result);
        EXPECT_EQ(plainEvents(channel.events()), expected) << row.bytes;
        std::size_t const heard = channel.events().size();
        DOM::_XMLDocument::loadStringFromBinary(reinterpret_cast<unsigned char const *>(row.bytes.data()),
                                                static_cast<std::int32_t>(row.bytes.size()), error, charset, result);
        expected.insert(expected.begin(), "loadString...");
        EXPECT_EQ(plainEvents({channel.events().begin() + static_cast<std::ptrdiff_t>(heard), channel.events().end()}),
                  expected);
    }
}

TEST_F(Files, ManyEndsInFrontOfADeclarationTakeOnePass) {
    std::u16string text;
    for (int count = 0; count < 300000; ++count) {
        text += u"?>";
    }
    FileName const name = folder.put("in", utf16Mark + unitBytes(text + u"<?xml euc-jp?>"));
    DOM::XMLCharset charset = DOM::charsetUTF8;
    _WideString error;
    _WideString result;
    EXPECT_TRUE(DOM::_XMLDocument::loadStringFromFile(name, error, charset, result));
    EXPECT_EQ(charset, DOM::charsetEUCJP);
    EXPECT_EQ(result.get_length(), 600014U);
}

} // namespace
