#include "counting_heap.h"
#include "ordinary_allocator.h"
#include "text_testing.h"

#include <climits>
#include <gtest/gtest.h>
#include <iconv.h>
#include <map>
#include <memory>
#include <morvane/core/literals.h>
#include <morvane/encodings/code_page_kernels.h>
#include <morvane/encodings/string_utility.h>
#include <morvane/encodings/ucs.h>
#include <numeric>
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
                       {7, "Unicode Big Endian", "Unicode BE", 0x03},
                       {8, "UTF-8 (Raw)", "UTF-8 Raw, a transformation format of ISO 10646", 0x1D},
                       {12, "UTF-16BE (Raw)", "UTF-16BE Raw, an encoding of ISO 10646 (Big-endian)", 0x16},
                       {24, "Latin 5", "Latin 5", 0x08},
                       {30, "Latin 9", "Latin 9", 0x08},
                       {-1, "", "", 0},
                       {25, "", "", 0},
                       {31, "", "", 0},
                       {INT_MAX, "", "", 0}};
    for (auto const & [number, name, description, flags] : cases) {
        auto const format = static_cast<Format>(number);
        EXPECT_EQ(_StringUtility::formatName(format).compare(name), 0) << number;
        EXPECT_EQ(_StringUtility::formatDescription(format).compare(description), 0) << number;
        EXPECT_EQ(_StringUtility::formatFlags(format), flags) << number;
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
    Units all(0x10000);
    std::iota(all.begin(), all.end(), static_cast<unsigned short int>(0));
    for (int const part : parts) {
        CodePage const & page = pageOf(part);
        std::string expectedByte(all.size(), '?'); // of those with one unit the first
        for (std::size_t entry = page.entryCount; entry-- > 0;) {
            expectedByte[page.entries[entry].unicode] = static_cast<char>(page.entries[entry].code);
        }
        std::string encoded(all.size(), '#');
        encode(page, {all.data(), all.size()}, encoded.data());
        ASSERT_EQ(encoded, expectedByte) << part;
        for (std::size_t length = 0; length <= 200; ++length) {
            std::unique_ptr<char[]> const bytes(new char[length]);
            Units expected;
            for (std::size_t index = 0; index < length; ++index) {
                // Stretches of ASCII and of the page's own units.
                bytes[index] = static_cast<char>(random() % ((length + index) & 64 ? 0x80 : 0x100));
                expected.push_back(page.units[static_cast<unsigned char>(bytes[index])]);
            }
            std::unique_ptr<unsigned short int[]> const target(new unsigned short int[length]);
            for (Kernel const kernel : {Kernel::plain, Kernel::avx512}) {
                if (isAvailable(kernel)) {
                    decode(kernel, page, {bytes.get(), length}, target.get());
                    ASSERT_EQ(Units(target.get(), target.get() + length), expected) << part;
                }
            }
            encode(page, {target.get(), length}, bytes.get());
            for (std::size_t index = 0; index < length; ++index) {
                ASSERT_EQ(bytes[index], expectedByte[expected[index]]) << part << ", of " << length;
            }
        }
    }
}

TEST(CodePages, RefusalsLeaveOrEmptyTheResult) {
    struct {
        int format;
        char const * decoded; ///< what an empty text leaves where "before" was
        char const * encoded;
    } const cases[] = {{-1, "before", "before"}, {15, "before", "before"}, {16, "", ""},
                       {25, "", "before"},       {29, "", "before"},       {30, "", ""},
                       {31, "before", "before"}};
    for (auto const & [number, decoded, encoded] : cases) {
        SCOPED_TRACE(number);
        auto const format = static_cast<Format>(number);
        bool const isCodePage = *encoded == 0;
        _WideString wide(u"before"_w);
        _DataString data("before");
        EXPECT_FALSE(_StringUtility::convertDataStringToWideString(nullptr, wide, format)
                     || _StringUtility::convertWideStringToDataString(nullptr, data, format));
        EXPECT_TRUE(wide.compare("before") == 0 && data.compare("before") == 0);
        EXPECT_EQ(_StringUtility::convertDataStringToWideString("", wide, format), isCodePage);
        EXPECT_EQ(_StringUtility::convertWideStringToDataString(u""_w, data, format), isCodePage);
        EXPECT_TRUE(wide.compare(decoded) == 0 && data.compare(encoded) == 0);
    }
}

TEST(Numbers, AreReadByTheirGrammar) {
    struct {
        unsigned short int const * text;
        char const * digits; ///< of a hexadecimal number
        std::int32_t decimal, hex, number;
    } const rows[] = {{u""_w, "before", 0, 0, 0},
                      {u"4294967297"_w, "before", 1, 0, 1},
                      {u"0XaF"_w, "af", 0, 0xAF, 0xAF},
                      {u"xFFFFFFFF"_w, "ffffffff", 0, -1, -1},
                      {u"0x123456789"_w, "before", 0, 0, -1},
                      {u"0x1G"_w, "before", 0, 0, -1},
                      {u"-5"_w, "before", 0, 0, -1},
                      {nullptr, "before", 0, -1, -1}};
    for (auto const & row : rows) {
        SCOPED_TRACE(testing::PrintToString(textOf(row.text)));
        bool const isHex = row.digits != std::string("before");
        _WideString digits(u"before"_w);
        EXPECT_EQ(_StringUtility::isDecimalWideString(row.text), !isHex && row.number != -1);
        EXPECT_EQ(_StringUtility::isHexWideString(row.text, &digits), isHex);
        EXPECT_EQ(_StringUtility::isHexWideString(row.text, nullptr), isHex);
        EXPECT_EQ(digits.compare(row.digits), 0);
        EXPECT_EQ(_StringUtility::decWideStringToLong(row.text), row.decimal);
        EXPECT_EQ(_StringUtility::hexWideStringToLong(row.text), row.hex);
        EXPECT_EQ(_StringUtility::numWideStringToLong(row.text), row.number);
    }
}

TEST(Numbers, UnitsPrintInHexadecimal) {
    for (auto const & [value, expected] : {std::pair<unsigned short int, char const *>(0, "0"),
                                           {0xA, "a"},
                                           {0x10, "10"},
                                           {0x1000, "1000"},
                                           {0xBEEF, "beef"}}) {
        EXPECT_STREQ(_StringUtility::wideCharToHexDataString(value), expected);
        EXPECT_EQ(_StringUtility::wideCharToHexWideString(value).compare(expected), 0);
    }
}

TEST(References, AreResolvedAndWritten) {
    std::pair<unsigned short int const *, unsigned short int> const units[] = {
        {u"&#x41;"_w, 0x41},   {u"&#X41;"_w, 0},         {u"&#9;"_w, 0xFFFF},
        {u"&#-1;"_w, 0},       {u"&#x1F600;"_w, 0xF600}, {u"&#65535;"_w, 0xFFFF},
        {u"&#65601;"_w, 0x41}, {u"&amp;"_w, 0xFFFF},     {nullptr, 0xFFFF}};
    for (auto const & [text, unit] : units) {
        EXPECT_EQ(_StringUtility::wideStringCodeToWideChar(text), unit) << testing::PrintToString(textOf(text));
    }
    auto const decode = _StringUtility::operationDecode;
    auto const encode = _StringUtility::operationEncode;
    struct {
        _StringUtility::StringOperation operation;
        unsigned short int limit; ///< above it, encoding writes a reference
        unsigned short int const * text;
        std::u16string expected;
    } const cases[] = {
        {decode, 127, u"a & b; c"_w, u"a  c"},
        {decode, 127, u"a&&#65;b"_w, u"ab"},
        {decode, 127, u"&#65;&#66"_w, u"A&#66"},
        // A unit of value 0 is overwritten by what is appended behind it and leaves its place at the end.
        {decode, 127, u"a&#X41;bc&#00;d"_w, std::u16string(u"abcd\0\0", 6)},
        {encode, 127, u"\x7F\x80\u00E9z and then \uFFFF"_w, u"\x7F&#x80;&#xe9;z and then &#xffff;"},
        {encode, 0x7FFF, u"\u7FFF\u8000"_w, u"\u7FFF&#x8000;"},
    };
    for (auto const & [operation, limit, text, expected] : cases) {
        _WideString result(u"before"_w);
        EXPECT_TRUE(_StringUtility::convertWideStringToWideString(text, result, operation, limit));
        EXPECT_EQ(textOf(result), expected);
        EXPECT_EQ(result.get_size(), (expected.size() + 1) * 2);
    }
    _WideString result(u"before &#65;"_w);
    EXPECT_FALSE(_StringUtility::convertWideStringToWideString(nullptr, result, decode, 127));
    EXPECT_TRUE(_StringUtility::convertWideStringToWideString(result, result, decode, 127));
    EXPECT_EQ(result.compare("before A"), 0);
    auto const other = static_cast<_StringUtility::StringOperation>(2);
    EXPECT_FALSE(_StringUtility::convertWideStringToWideString(u"x"_w, result, other, 127));
    EXPECT_TRUE(result.isEmpty());
}

TEST(Conversions, SucceedWithAReleasedTextWhereTheHeapRefuses) {
    auto const latin1 = _StringUtility::formatISO8859_1;
    counting_heap::LeakCheck const leaks;
    _WideString wide(u"before"_w);
    _DataString data("before");
    counting_heap::refuseAfter(0);
    bool const isDecoded = _StringUtility::convertDataStringToWideString("a\xE9", wide, latin1);
    counting_heap::serveAll();
    ordinary_allocator::servedBeforeRefusal = 0;
    bool const isEncoded = _StringUtility::convertWideStringToDataString(u"\u00E9"_w, data, latin1);
    ordinary_allocator::servedBeforeRefusal = -1;
    EXPECT_TRUE(isDecoded && wide.get_data() == nullptr && wide.get_length() == 0);
    EXPECT_TRUE(isEncoded && data.get_data() == nullptr && data.get_length() == 0);
}

} // namespace
