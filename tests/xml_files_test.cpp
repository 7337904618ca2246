#include "temporary_folder.h"
#include "xml_support.h"

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

        DOM::XMLCharset charset = DOM::charsetEUCKR;
        _WideString blockError;
        _WideString blockText(u"as it was"_w);
        if (row.charset >= 0) {
            bool const decoded = DOM::_XMLDocument::loadStringFromBinary(
                reinterpret_cast<unsigned char const *>(row.bytes.data()), static_cast<std::int32_t>(row.bytes.size()),
                blockError, charset, blockText);
            EXPECT_EQ(charset, row.charset) << row.what;
            EXPECT_EQ(decoded, units(blockError).empty()) << row.what;
            EXPECT_EQ(decoded, units(blockText) != u"as it was") << row.what;
        }
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
    std::string const lost = "<lost>";
    for (std::int32_t number = -1; number < 31; ++number) {
        std::string expected = lost;
        char const * message = "";
        if (number == 0) {
            expected = "<a>&#xe9;&#x20ac;&#x391;z</a>";
        } else if (number == 1) {
            expected = utf8Mark + "<a>\xC3\xA9\xE2\x82\xAC\xCE\x91z</a>";
        } else if (number == 2 || number == 3) {
            expected = utf16Mark + unitBytes(text);
        } else if (number == 11) {
            expected = "<a>??\xC1z</a>";
        } else if (number == 19) {
            expected = "<a>\xE9\xA4?z</a>";
        } else if (number == 9 || number == 10 || number == 12) {
            expected = "<a>???z</a>";
        } else if (number >= 5 && number <= 13) {
            expected = "<a>\xE9??z</a>";
        } else if (number >= 14 && number <= 18) {
            message = "charset convertion error";
        }
        std::string const file = std::to_string(number);
        FileName const name = folder.name(file);
        _WideString error;
        bool const result =
            DOM::_XMLDocument::saveStringToFile(name, error, static_cast<DOM::XMLCharset>(number), Units(text));
        EXPECT_EQ(result, expected != lost) << number;
        EXPECT_EQ(shown(error), message) << number;
        EXPECT_EQ(std::filesystem::exists(folder.path(file)), result) << number;
        if (result) {
            EXPECT_EQ(folder.get(file), expected) << number;
        }
    }
}

TEST_F(Files, SaveOfANullText) {
    for (auto const charset : {DOM::charsetUSASCII, DOM::charsetUTF8, DOM::charsetUTF16, DOM::charsetISO8859_1}) {
        _WideString error;
        bool const isAscii = charset == DOM::charsetUSASCII;
        FileName const name = folder.name(std::to_string(charset));
        EXPECT_EQ(DOM::_XMLDocument::saveStringToFile(name, error, charset, nullptr), isAscii) << charset;
        EXPECT_EQ(std::filesystem::exists(folder.path(std::to_string(charset))), isAscii) << charset;
        EXPECT_EQ(shown(error), charset == DOM::charsetISO8859_1 ? "charset convertion error" : "");
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

/// The events with the milliseconds of the two measures taken out.
std::vector<std::string> withoutTimes(std::vector<std::string> events) {
    for (std::string & event : events) {
        for (char const * const measure : {"IdentifyTime: ", "TotalTime: "}) {
            if (event.starts_with(measure)) {
                event = std::string(measure) + (event.ends_with("\\x000d\\x000a") ? "n" : "without line end");
            }
        }
    }
    return events;
}

TEST(FileTraces, TellTheWayOfALoad) {
    std::string const end = "\\x000d\\x000a";
    struct {
        std::string bytes;
        std::vector<std::string> events;
    } const rows[] = {
        {declared("us-ascii", ""), {"ASCII XML Format Identified" + end, "TotalTime: n"}},
        {declared("utf-8", ""), {"UTF-8 XML Format Identified" + end, "TotalTime: n"}},
        {declared("utf-16", ""), {"UTF-16 XML Format Identified" + end, "TotalTime: n"}},
        {declared("iso-10646-ucs-4", ""), {"UCS XML Format Identified" + end, "TotalTime: n"}},
        {declared("iso-8859-1", ""), {"ISO LATIN XML Format Identified" + end, "TotalTime: n"}},
        {declared("iso-8859-10", ""), {"ISO LATIN XML Format Identified" + end}},
        {declared("euc-kr", ""), {"Unknown: Not Implemented" + end, "TotalTime: n"}},
        {declared("utf-8", "\xFF"), {"UTF-8 XML Format Identified" + end, "error C: (c0:255) (d:41) (length:46)"}},
    };
    for (auto const & row : rows) {
        DebugChannel channel;
        DOM::XMLCharset charset = DOM::charsetUTF8;
        _WideString error;
        _WideString result;
        DOM::_XMLDocument::loadStringFromBinary(reinterpret_cast<unsigned char const *>(row.bytes.data()),
                                                static_cast<std::int32_t>(row.bytes.size()), error, charset, result);
        std::vector<std::string> expected = {"loadString..." + end, "Unknown XML Format" + end, "IdentifyTime: n"};
        expected.insert(expected.end(), row.events.begin(), row.events.end());
        EXPECT_EQ(withoutTimes(channel.events()), expected) << row.bytes;
    }
    for (auto const & [bytes, events] :
         {std::pair(utf8Mark + "<a/>", std::vector<std::string>{"UTF-8 XML Format" + end, "TotalTime: n"}),
          std::pair(utf16Mark + unitBytes(u"<a/>"),
                    std::vector<std::string>{"Unicode XML Format" + end, "TotalTime: n"}),
          // The message of the fault is heard only where no mark was.
          std::pair(utf8Mark + "\xFF", std::vector<std::string>{"UTF-8 XML Format" + end})}) {
        TemporaryFolder const folder;
        FileName const name = folder.put("in", bytes);
        DebugChannel channel;
        DOM::XMLCharset charset = DOM::charsetUTF8;
        _WideString error;
        _WideString result;
        DOM::_XMLDocument::loadStringFromFile(name, error, charset, result);
        EXPECT_EQ(withoutTimes(channel.events()), events);
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
