#include "counting_heap.h"
#include "ordinary_allocator.h"
#include "text_testing.h"

#include <climits>
#include <functional>
#include <gtest/gtest.h>
#include <iconv.h>
#include <map>
#include <memory>
#include <morvane/core/literals.h>
#include <morvane/encodings/code_page_kernels.h>
#include <morvane/encodings/string_utility.h>
#include <morvane/encodings/ucs.h>
#include <morvane/encodings/utf8_codec.h>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace morvane;
using namespace morvane::literals;

namespace {

using Format = _StringUtility::StringFileFormat;
using Units = std::vector<unsigned short int>;

TEST(Formats, HaveNamesDescriptionsAndFlags) {
    struct {
        std::int32_t format;
        char const * name;
        char const * description;
        std::uint32_t flags;
    } const cases[] = {{0, "ANSI", "ANSI", 0x08},
                       {2, "ASCII Extended", "ASCII Extended", 0x10},
                       {5, "Unicode", "Unicode", 0x1B},
                       {7, "Unicode Big Endian", "Unicode BE", 0x03},
                       {8, "UTF-8 (Raw)", "UTF-8 Raw, a transformation format of ISO 10646", 0x1D},
                       {12, "UTF-16BE (Raw)", "UTF-16BE Raw, an encoding of ISO 10646 (Big-endian)", 0x16},
                       {15, "UTF-16LE", "UTF-16LE, an encoding of ISO 10646 (Little-endian)", 0x17},
                       {24, "Latin 5", "Latin 5", 0x08},
                       {30, "Latin 9", "Latin 9", 0x08}};
    for (auto const & [number, name, description, flags] : cases) {
        auto const format = static_cast<Format>(number);
        EXPECT_EQ(_StringUtility::formatName(format).compare(name), 0) << number;
        EXPECT_EQ(_StringUtility::formatDescription(format).compare(description), 0) << number;
        EXPECT_EQ(_StringUtility::formatFlags(format), flags) << number;
    }
    for (std::int32_t const number : {-2, -1, 25, 29, 31, INT_MAX}) {
        auto const none = static_cast<Format>(number);
        EXPECT_TRUE(_StringUtility::formatName(none).isEmpty() && _StringUtility::formatDescription(none).isEmpty());
        EXPECT_EQ(_StringUtility::formatFlags(none), 0U);
    }
}

TEST(Scripts, HaveNoEntries) {
    unsigned short int first = 1;
    unsigned short int last = 2;
    UCS::scriptArray(0, first, last);
    EXPECT_TRUE(UCS::scriptCount() == 0 && first == 1 && last == 2);
    EXPECT_TRUE(UCS::scriptName(0).isEmpty() && UCS::scriptDescription(7).isEmpty());
}

/// The parts of ISO/IEC 8859 that there are.
constexpr int parts[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 15};

CodePage const & pageOf(int part) {
    return *findCodePage(15 + part);
}

/// What the system's converter makes of a byte, but where this library's pages differ; 0 for an undefined one.
unsigned publishedUnit(iconv_t converter, int part, unsigned byte) {
    static std::map<std::pair<int, unsigned>, unsigned> const differing{
        {{7, 0xA1}, 0x2BD}, {{7, 0xA2}, 0x2BC}, {{8, 0xAF}, 0x203E}, {{8, 0xFD}, 0}, {{8, 0xFE}, 0}};
    if (auto const found = differing.find({part, byte}); found != differing.end()) {
        return found->second;
    }
    char in = static_cast<char>(byte);
    unsigned char out[2];
    char * source = &in;
    char * target = reinterpret_cast<char *>(out);
    std::size_t sourceBytes = 1;
    std::size_t targetBytes = sizeof out;
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    return iconv(converter, &source, &sourceBytes, &target, &targetBytes) == 0 ? out[0] + 256U * out[1] : 0;
}

TEST(CodePages, HoldThePublishedMappings) {
    for (int const part : parts) {
        std::string const charset = "ISO-8859-" + std::to_string(part);
        SCOPED_TRACE(charset);
        iconv_t const converter = iconv_open("UTF-16LE", charset.c_str());
        ASSERT_NE(converter, reinterpret_cast<iconv_t>(-1));
        CodePage const & page = pageOf(part);
        EXPECT_EQ(_WideString(page.name).compare((charset + "      ").substr(0, 15).c_str()), 0);
        std::string const missing = part == 7 ? "\xA4\xA5\xAA\xAE\xD2" : "";
        ASSERT_EQ(page.entryCount, 256 - missing.size());
        CodePageEntry const * entry = page.entries;
        for (unsigned byte = 0; byte < 256; ++byte) {
            bool const isMissing = byte != 0 && missing.find(static_cast<char>(byte)) != std::string::npos;
            unsigned const published = isMissing ? 0 : publishedUnit(converter, part, byte);
            unsigned const unit = published == 0 ? byte : published;
            EXPECT_EQ(page.units[byte], unit);
            if (!isMissing) {
                bool const isGraphic = published != 0 && byte >= 0x20 && (byte < 0x7F || byte >= 0xA0);
                EXPECT_TRUE(entry->code == byte && entry->unicode == unit && entry->defined == isGraphic) << byte;
                ++entry;
            }
        }
        iconv_close(converter);
    }
}

// Both directions by every kernel, at any length and alignment and in blocks of exactly the sizes needed.
TEST(CodePages, ConvertUnitByUnit) {
    std::mt19937 random(5);
    for (int const part : parts) {
        CodePage const & page = pageOf(part);
        std::string expectedByte(0x10000, '?'); // of those with one unit the first
        for (std::size_t entry = page.entryCount; entry-- > 0;) {
            expectedByte[page.entries[entry].unicode] = static_cast<char>(page.entries[entry].code);
        }
        std::string bytes;
        Units units;
        Units all;
        for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
            // Stretches of ASCII and of the page's own units.
            bytes += static_cast<char>(random() % (unit & 64 ? 0x80 : 0x100));
            units.push_back(page.units[static_cast<unsigned char>(bytes.back())]);
            all.push_back(static_cast<unsigned short int>(unit));
        }
        for (Kernel const kernel : {Kernel::plain, Kernel::avx512}) {
            if (!isAvailable(kernel)) {
                continue;
            }
            SCOPED_TRACE(std::to_string(part) + ' ' + std::to_string(static_cast<int>(kernel)));
            std::string encoded(all.size(), '#');
            encode(page, {all.data(), all.size()}, encoded.data());
            ASSERT_EQ(encoded, expectedByte);
            for (std::size_t length = 0; length <= 200; ++length) {
                std::string const source = bytes.substr(length * 3, length);
                Units const expected(units.begin() + static_cast<std::ptrdiff_t>(length * 3),
                                     units.begin() + static_cast<std::ptrdiff_t>(length * 4));
                std::unique_ptr<unsigned short int[]> const target(new unsigned short int[length]);
                decode(kernel, page, {source.data(), length}, target.get());
                ASSERT_EQ(Units(target.get(), target.get() + length), expected);
                std::unique_ptr<char[]> const back(new char[length]);
                encode(page, {target.get(), length}, back.get());
                for (std::size_t index = 0; index < length; ++index) {
                    ASSERT_EQ(back[index], expectedByte[expected[index]]) << length;
                }
            }
        }
    }
}

TEST(CodePages, RefusalsLeaveOrEmptyTheResult) {
    struct {
        int format;
        char const * decoded; ///< what an empty text leaves where "before" was
        char const * encoded;
    } const cases[] = {{-1, "before", "before"},
                       {5, "before", "before"},
                       {15, "before", "before"},
                       {16, "", ""},
                       {25, "", "before"},
                       {29, "", "before"},
                       {30, "", ""},
                       {31, "before", "before"}};
    for (auto const & [number, decoded, encoded] : cases) {
        auto const format = static_cast<Format>(number);
        bool const isCodePage = *encoded == 0;
        _WideString wide(u"before"_w);
        _DataString data("before");
        EXPECT_FALSE(_StringUtility::convertDataStringToWideString(nullptr, wide, format));
        EXPECT_FALSE(_StringUtility::convertWideStringToDataString(nullptr, data, format));
        EXPECT_TRUE(wide.compare("before") == 0 && data.compare("before") == 0);
        EXPECT_EQ(_StringUtility::convertDataStringToWideString("", wide, format), isCodePage) << number;
        EXPECT_EQ(_StringUtility::convertWideStringToDataString(u""_w, data, format), isCodePage) << number;
        EXPECT_TRUE(wide.compare(decoded) == 0 && data.compare(encoded) == 0) << number;
    }
}

TEST(Numbers, AreReadByTheirGrammar) {
    struct {
        unsigned short int const * text;
        char const * digits; ///< null where the text is not hexadecimal
        std::int32_t value;
    } const numbers[] = {{u""_w, nullptr, 0},
                         {u"007"_w, nullptr, 7},
                         {u"4294967295"_w, nullptr, -1},
                         {u"4294967297"_w, nullptr, 1},
                         {u"100000000000000000000000000000007"_w, nullptr, 7},
                         {u"0X1"_w, "1", 1},
                         {u"xAF"_w, "af", 0xAF},
                         {u"0XaF"_w, "af", 0xAF},
                         {u"0x0000000F"_w, "0000000f", 15},
                         {u"0xFFFFFFFF"_w, "ffffffff", -1},
                         {u"0x80000000"_w, "80000000", INT32_MIN}};
    for (auto const & row : numbers) {
        SCOPED_TRACE(testing::PrintToString(textOf(row.text)));
        bool const isHex = row.digits != nullptr;
        _WideString digits(u"before"_w);
        EXPECT_EQ(_StringUtility::isDecimalWideString(row.text), !isHex);
        EXPECT_EQ(_StringUtility::isHexWideString(row.text, &digits), isHex);
        EXPECT_EQ(_StringUtility::isHexWideString(row.text, nullptr), isHex);
        EXPECT_EQ(digits.compare(isHex ? row.digits : "before"), 0);
        EXPECT_EQ(_StringUtility::decWideStringToLong(row.text), isHex ? 0 : row.value);
        EXPECT_EQ(_StringUtility::hexWideStringToLong(row.text), isHex ? row.value : 0);
        EXPECT_EQ(_StringUtility::numWideStringToLong(row.text), row.value);
    }
    for (unsigned short int const * const text :
         {u"-5"_w, u"12a"_w, u"\u0661"_w, u"ff"_w, u"x"_w, u"0x"_w, u"X1"_w, u"0x123456789"_w, u"x123456789"_w,
          u"0x1G"_w, u"0x1@"_w, u"0x\x10"_w, u"00x1"_w, static_cast<unsigned short int const *>(nullptr)}) {
        SCOPED_TRACE(testing::PrintToString(textOf(text)));
        EXPECT_FALSE(_StringUtility::isDecimalWideString(text));
        EXPECT_FALSE(_StringUtility::isHexWideString(text, nullptr));
        EXPECT_EQ(_StringUtility::decWideStringToLong(text), 0);
        EXPECT_EQ(_StringUtility::hexWideStringToLong(text), text == nullptr ? -1 : 0);
        EXPECT_EQ(_StringUtility::numWideStringToLong(text), -1);
    }
}

TEST(Numbers, UnitsPrintInHexadecimal) {
    for (auto const & [unit, expected] :
         {std::pair(0, "0"), {9, "9"}, {0xA, "a"}, {0x10, "10"}, {0xFFF, "fff"}, {0x1000, "1000"}, {0xBEEF, "beef"}}) {
        auto const value = static_cast<unsigned short int>(unit);
        EXPECT_STREQ(_StringUtility::wideCharToHexDataString(value), expected);
        EXPECT_EQ(_StringUtility::wideCharToHexWideString(value).compare(expected), 0);
    }
}

TEST(References, StandForTheirUnit) {
    std::pair<unsigned short int const *, unsigned short int> const cases[] = {
        {u"&#65;"_w, 0x41},      {u"&#x41;"_w, 0x41},   {u"&#X41;"_w, 0},      {u"&#9;"_w, 0xFFFF},
        {u"&#09;"_w, 9},         {u"&#xx;"_w, 0},       {u"&#-1;"_w, 0},       {u"&#x1F600;"_w, 0xF600},
        {u"&#65535;"_w, 0xFFFF}, {u"&#65601;"_w, 0x41}, {u"&#65;;"_w, 0},      {u"&#x123456789;"_w, 0},
        {u"&amp;"_w, 0xFFFF},    {u"&#65"_w, 0xFFFF},   {u" &#65;"_w, 0xFFFF}, {nullptr, 0xFFFF}};
    for (auto const & [text, unit] : cases) {
        EXPECT_EQ(_StringUtility::wideStringCodeToWideChar(text), unit) << testing::PrintToString(textOf(text));
    }
}

TEST(References, AreResolvedAndWritten) {
    auto const decode = _StringUtility::operationDecode;
    auto const encode = _StringUtility::operationEncode;
    struct {
        _StringUtility::StringOperation operation;
        unsigned short int limit; ///< above it, encoding writes a reference
        unsigned short int const * text;
        std::u16string expected;
    } const cases[] = {
        {decode, 127, u"a&#x41;b"_w, u"aAb"},
        {decode, 127, u"a & b; c"_w, u"a  c"},
        {decode, 127, u"&#233;&#234;"_w, u"\u00E9\u00EA"},
        {decode, 127, u"a&&#65;b"_w, u"ab"},
        {decode, 127, u"&#65;&#66"_w, u"A&#66"},
        // A unit of value 0 is overwritten by what is appended behind it and leaves its place at the end.
        {decode, 127, u"a&#X41;bc&#00;d"_w, std::u16string(u"abcd\0\0", 6)},
        {encode, 127, u"\x7F\x80\u00E9z"_w, u"\x7F&#x80;&#xe9;z"},
        {encode, 127, u"eight units and then \uFFFF, \u20AC"_w, u"eight units and then &#xffff;, &#x20ac;"},
        {encode, 0x7FFF, u"\u7FFF\u8000"_w, u"\u7FFF&#x8000;"},
    };
    for (auto const & [operation, limit, text, expected] : cases) {
        _WideString result(u"before"_w);
        EXPECT_TRUE(_StringUtility::convertWideStringToWideString(text, result, operation, limit));
        EXPECT_EQ(textOf(result), expected);
        EXPECT_EQ(result.get_size(), (expected.size() + 1) * 2);
    }
}

TEST(References, ConversionRefusesAndTakesItsOwnResult) {
    auto const convert = [](unsigned short int const * text, _WideString & result, int operation) {
        return _StringUtility::convertWideStringToWideString(
            text, result, static_cast<_StringUtility::StringOperation>(operation), 127);
    };
    _WideString result(u"before &#65;"_w);
    EXPECT_FALSE(convert(nullptr, result, 1));
    EXPECT_TRUE(convert(result, result, 1));
    EXPECT_EQ(result.compare("before A"), 0);
    EXPECT_FALSE(convert(u"x"_w, result, 2));
    EXPECT_TRUE(result.isEmpty());
}

TEST(Conversions, TextsThatAHeapRefusesEndReleased) {
    std::string const bytes(300, 'a');
    _WideString const units = wideText(std::u16string(300, u'\u00E9') + u"&#65;");
    auto const latin1 = _StringUtility::formatISO8859_1;
    counting_heap::LeakCheck const leaks;
    using Result = _WideString;
    std::vector<std::function<bool(Result &)>> const ways{
        [&](Result & result) { return _StringUtility::convertDataStringToWideString(bytes.c_str(), result, latin1); },
        [&](Result & result) { return utf8::decodeTo(viewOf(bytes.c_str()), result).fault == utf8::Fault::none; },
        [&](Result & result) {
            return _StringUtility::convertWideStringToWideString(units, result, _StringUtility::operationEncode, 127);
        },
        [&](Result & result) {
            return _StringUtility::convertWideStringToWideString(units, result, _StringUtility::operationDecode, 127);
        }};
    for (auto const & convert : ways) {
        bool isServed = false;
        for (long served = 0; !isServed; ++served) {
            ASSERT_LT(served, 10);
            _WideString result(u"before"_w);
            counting_heap::refuseAfter(served);
            EXPECT_TRUE(convert(result));
            counting_heap::serveAll();
            isServed = result.get_data() != nullptr;
            EXPECT_EQ(isServed, result.get_length() > 0);
        }
    }
    _DataString result("before");
    ordinary_allocator::servedBeforeRefusal = 0;
    bool const isEncoded = _StringUtility::convertWideStringToDataString(units, result, latin1);
    ordinary_allocator::servedBeforeRefusal = -1;
    EXPECT_TRUE(isEncoded && result.get_data() == nullptr && result.get_length() == 0);
}

} // namespace
