#include "temporary_folder.h"
#include "xml_support.h"

#include <map>
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
    auto const wide = [](std::u16string const & name) {
        return u"<?xml version=\"1.0\" encoding=\"" + name + u"\"?><a>\u20AC</a>";
    };
    struct {
        char const * what;
        std::string bytes;
        int charset;        // 27: as it was
        char const * value; // of the text of the root, or behind "!" the error
    } const rows[] = {
        {"UTF-8 mark, other declaration", utf8Mark + declared("ISO-8859-1", "\xC3\xA9"), 1, "\\x00e9"},
        {"UTF-8 mark, malformed", utf8Mark + "<a>\xC3", 1, "!utf-8 convertion error"},
        {"UTF-16 mark, upper case", utf16Mark + unitBytes(wide(u"UTF-8")), 2, "\\x20ac"},
        {"UTF-16 mark, lowest first", utf16Mark + unitBytes(wide(u"iso-8859-15")), 5, "\\x20ac"},
        {"UTF-16 mark, second declaration", utf16Mark + unitBytes(u"<?xml a?><?xml b='big5'?><a>x</a>"), 23, "x"},
        {"big-endian mark", bigMark + unitBytes(wide(u"shift_jis"), true), 21, "\\x20ac"},
        {"bytes, highest first", declared("ISO-8859-15", "\xA4"), 19, "\\x20ac"},
        {"bytes, beginning of the name", declared("iso-8859-1", "\xA4"), 5, "\\x00a4"},
        {"bytes, no declaration", "<a>\xC3\xA9</a>", 1, "\\x00e9"},
        {"bytes, only the first declaration", "<?xml a?><?xml b='us-ascii'?><a>\xC3\xA9</a>", 1, "\\x00e9"},
        {"bytes, end before begin", "<?p?><?xml b='us-ascii'?><a>\xC3\xA9</a>", 1, "\\x00e9"},
        {"bytes, malformed", declared("utf-8", "\x80"), 1, "!utf-8 convertion error"},
        {"bytes, no code page", declared("iso-8859-11", "x"), 15, "!charset conversion error"},
        {"bytes declare UTF-16", declared("utf-16", "x"), 2, "!loadFromString:no nodes"},
        {"units, in any case", unitBytes(wide(u"UTF-16")), 2, "\\x20ac"},
        {"units, lowest first", unitBytes(wide(u"ISO-8859-15")), 5, "!loadFromString:no nodes"},
        {"units, second declaration", unitBytes(u"?><?xml a?><?xml b='Utf-16'?>"), 2, "!loadFromString:no nodes"},
        {"no file", "", 27, "!binary stream error"},
    };
    for (auto const & row : rows) {
        SCOPED_TRACE(row.what);
        DOM::_XMLDocument document;
        document.set_encoding(DOM::charsetEUCKR);
        document.get_childNodes()->deleteAll();
        document.addElement(u"former"_w, u""_w);
        _WideString error;
        FileName const name = row.bytes.empty() ? folder.name("missing") : folder.put("in.xml", row.bytes);
        bool const isLoaded = document.loadFromFile(name, error);
        EXPECT_EQ(isLoaded ? shown(document.getRoot()->firstChild()->get_nodeValue()) : "!" + shown(error), row.value);
        EXPECT_TRUE(isLoaded || units(error) == u"loadFromString:no nodes" || shownDocument(document) == "former");
        EXPECT_EQ(document.get_encoding(), row.charset);
    }
}

TEST_F(Files, LoadStringTakesBothReadings) {
    struct {
        _StringUtility::StringFileFormat format;
        char const * data;
        unsigned short int const * wide;
        int charset;
        char16_t const * result; // null where the format is refused
    } const rows[] = {{_StringUtility::formatASCII, "x", u"y"_w, 27, nullptr},
                      {_StringUtility::formatUnknown, "<?xml utf-16?>", u"wide"_w, 2, u"wide"},
                      {_StringUtility::formatUnknown, "bytes", u"<?xml US-ASCII?>"_w, 0, u"bytes"},
                      {_StringUtility::formatUnknown, nullptr, nullptr, 1, u""},
                      {_StringUtility::formatUnicode, nullptr, u"wide"_w, 2, u"wide"}};
    for (auto const & row : rows) {
        _WideString error;
        _WideString result(u"as it was"_w);
        DOM::XMLCharset charset = DOM::charsetEUCKR;
        bool const isRead = row.result != nullptr;
        EXPECT_EQ(DOM::_XMLDocument::loadString(row.format, row.data, row.wide, error, charset, result), isRead);
        EXPECT_EQ(shown(result), shown(isRead ? row.result : u"as it was"));
        EXPECT_EQ(units(error), isRead ? u"" : u"unknown file");
        EXPECT_EQ(charset, row.charset) << shown(result);
    }
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
    unsigned char const bytes[] = {'<', 'a', '/'};
    for (auto const & [source, size] : {std::pair{bytes, 2}, {bytes, -1}, {nullptr, 9}}) {
        EXPECT_THROW(DOM::_XMLDocument::loadStringFromBinary(source, size, error, charset, result), int);
    }
    EXPECT_EQ(units(error), u"");
    // The file was closed again, so that it opens for writing.
    EXPECT_TRUE(document.saveToFile(name, error));
}

TEST_F(Files, SaveWritesTheBytesOfEachCharset) {
    Units const text = std::u16string_view(u"<a>\u00E9\u20AC\u0391z</a>");
    std::string const wide = utf16Mark + unitBytes(u"<a>\u00E9\u20AC\u0391z</a>");
    std::string const latin = "<a>\xE9??z</a>";
    std::string const other = "<a>???z</a>";
    std::map<int, std::string> const files = {{0, "<a>&#xe9;&#x20ac;&#x391;z</a>"},
                                              {1, utf8Mark + "<a>\xC3\xA9\xE2\x82\xAC\xCE\x91z</a>"},
                                              {11, "<a>??\xC1z</a>"},
                                              {19, "<a>\xE9\xA4?z</a>"},
                                              {2, wide},
                                              {3, wide},
                                              {5, latin},
                                              {6, latin},
                                              {7, latin},
                                              {8, latin},
                                              {9, other},
                                              {10, other},
                                              {12, other},
                                              {13, latin}};
    for (std::int32_t number = -1; number < 31; ++number) {
        SCOPED_TRACE(number);
        std::string const file = std::to_string(number);
        auto const charset = static_cast<DOM::XMLCharset>(number);
        auto const found = files.find(number);
        // Null makes an empty file of one charset alone.
        for (bool const isNull : {true, false}) {
            _WideString error;
            bool const isSaved = isNull ? number == 0 : found != files.end();
            bool const hasMessage = number >= (isNull ? 5 : 14) && number <= (isNull ? 19 : 18);
            unsigned short int const * const source = isNull ? nullptr : static_cast<unsigned short int const *>(text);
            EXPECT_EQ(DOM::_XMLDocument::saveStringToFile(folder.name(file), error, charset, source), isSaved);
            EXPECT_EQ(shown(error), hasMessage ? "charset convertion error" : "");
            EXPECT_EQ(std::filesystem::exists(folder.path(file)), isSaved);
            EXPECT_EQ(folder.get(file), isNull || !isSaved ? "" : found->second);
        }
    }
}

TEST_F(Files, SavingAnEmptyOrRefusedDocument) {
    DOM::_XMLDocument document;
    _WideString error;
    EXPECT_TRUE(document.saveToFile(folder.name("empty"), error));
    EXPECT_EQ(folder.get("empty"), utf8Mark);
    EXPECT_THROW(document.saveToFile(folder.name("no folder/x"), error), int);
    document.set_encoding(DOM::charsetUCS4);
    EXPECT_FALSE(document.saveToFile(folder.name("refused"), error));
    EXPECT_EQ(units(error), u"");
}

TEST_F(Files, ADocumentComesBackWithAMarkAndItsDeclaration) {
    FileName const name = folder.put("doc", utf8Mark
                                                + "<!--c--><?xml version='1.0' encoding='ISO-8859-1' x?>\n"
                                                  "<a  b='\xC3\xA9'\n>&#8364;&lt;<c/>lost</a><d/>");
    DOM::_XMLDocument document;
    document.set_version(u"kept"_w);
    document.set_standalone(false);
    _WideString error;
    ASSERT_TRUE(document.loadFromFile(name, error));
    EXPECT_EQ(settings(document), "\"|  |\\x000d\\x000a|1|no|kept");
    EXPECT_TRUE(document.saveToFile(name, error));
    EXPECT_EQ(folder.get("doc"),
              utf8Mark + "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\r\n<a b=\"\">\r\n  <c/>\r\n</a>\r\n");
    document.set_encoding(DOM::charsetUSASCII);
    EXPECT_TRUE(document.saveToFile(name, error));
    EXPECT_EQ(folder.get("doc"), "<?xml version=\"1.0\" encoding=\"us-ascii\"?>\r\n<a b=\"\">\r\n  <c/>\r\n</a>\r\n");
}

TEST_F(Files, FindsDeclarationsInBytesAndUnits) {
    using Document = DOM::_XMLDocument;
    struct {
        char const * text;
        std::uint32_t from;
        std::uint32_t position;
        char const * found; // as it was: "-"
    } const rows[] = {{"xy<?xml a?>b", 2, 11, "<?xml a?>"},
                      {"<?xml a?><?xml b?>", 9, 18, "<?xml b?>"},
                      {"<?xml a?><?xml b?>", 1, 9, ""},
                      {"?><?xml a?>", 0, 2, ""},
                      {"<?xml a", 0, 0, "-"},
                      {"a?>", 0, 0, "-"},
                      {"<?XML a?>", 0, 0, "-"},
                      {"<?xml?>", 0xFFFFFFFF, 0xFFFFFFFF, "-"}};
    for (auto const & [text, from, position, found] : rows) {
        SCOPED_TRACE(text);
        _DataString const data(text);
        _WideString const units(text);
        _DataString foundData("-");
        _WideString foundWide("-");
        std::uint32_t dataPosition = from;
        std::uint32_t widePosition = from;
        EXPECT_EQ(Document::findProcessingInstructionData(&data, dataPosition, foundData), *found != '-');
        EXPECT_EQ(Document::findProcessingInstructionWide(&units, widePosition, foundWide), *found != '-');
        EXPECT_TRUE(dataPosition == position && widePosition == position);
        EXPECT_TRUE(foundData.compare(found) == 0 && foundWide.compare(found) == 0) << shown(foundWide);
    }
}

/// The events in one text, without the milliseconds of the two measures.
std::string plainEvents(DebugChannel const & channel) {
    std::string all;
    for (std::string const & event : channel.events()) {
        std::size_t const colon = event.find("Time: ");
        all += colon == event.npos ? event + "|" : event.substr(0, colon) + event.substr(event.find('\\')) + "|";
    }
    return all;
}

TEST(FileTraces, TellTheWayOfALoad) {
    std::string const end = "\\x000d\\x000a|";
    std::string const total = end + "Total" + end;
    struct {
        std::string bytes;
        std::string events; // behind a "?" those of the search for a declaration go first
    } const rows[] = {
        {declared("us-ascii", ""), "?ASCII XML Format Identified" + total},
        {declared("utf-8", ""), "?UTF-8 XML Format Identified" + total},
        {declared("utf-16", ""), "?UTF-16 XML Format Identified" + total},
        {declared("iso-10646-ucs-4", ""), "?UCS XML Format Identified" + total},
        {declared("iso-8859-1", ""), "?ISO LATIN XML Format Identified" + total},
        {declared("iso-8859-10", ""), "?ISO LATIN XML Format Identified" + end},
        {declared("euc-kr", ""), "?Unknown: Not Implemented" + total},
        {utf8Mark + "<a/>", "UTF-8 XML Format" + total},
        {utf16Mark + unitBytes(u"<a/>"), "Unicode XML Format" + total},
        // The message of the fault, which has no line end, is heard only where no mark was.
        {declared("utf-8", "\xFF"), "?UTF-8 XML Format Identified" + end + "error C: (c0:255) (d:41) (length:46)|"},
        {utf8Mark + "\xFF", "UTF-8 XML Format" + end},
    };
    TemporaryFolder const folder;
    for (auto const & row : rows) {
        bool const isSearched = row.events[0] == '?';
        std::string const expected =
            isSearched ? "Unknown XML Format" + end + "Identify" + end + row.events.substr(1) : row.events;
        FileName const name = folder.put("in", row.bytes);
        DOM::XMLCharset charset = DOM::charsetUTF8;
        _WideString error;
        _WideString result;
        DebugChannel const channel;
        DOM::_XMLDocument::loadStringFromFile(name, error, charset, result);
        EXPECT_EQ(plainEvents(channel), expected) << row.bytes;
        DOM::_XMLDocument::loadStringFromBinary(reinterpret_cast<unsigned char const *>(row.bytes.data()),
                                                static_cast<std::int32_t>(row.bytes.size()), error, charset, result);
        EXPECT_EQ(plainEvents(channel), expected + "loadString..." + end + expected) << row.bytes;
    }
}

TEST_F(Files, ManyEndsInFrontOfADeclarationTakeOnePass) {
    std::u16string text;
    for (int count = 0; count < 300000; ++count) {
        text += u"?>";
    }
    DOM::_XMLDocument document;
    _WideString error;
    EXPECT_FALSE(document.loadFromFile(folder.put("in", utf16Mark + unitBytes(text + u"<?xml euc-jp?>")), error));
    EXPECT_EQ(units(error), u"loadFromString:no nodes");
    EXPECT_EQ(document.get_encoding(), DOM::charsetEUCJP);
}

} // namespace
