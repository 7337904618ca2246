#include "stream_testing.h"
#include "text_battery.h"

#include <climits>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <iterator>
#include <morvane/morvane.h>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

using namespace morvane::literals;

namespace {

template <typename T>
class TextValues : public Text<T> {};

TYPED_TEST_SUITE(TextValues, Both);

TYPED_TEST(TextValues, ReadsNumbersAsTold) {
    struct {
        std::vector<char const *> texts;
        char const * kinds; ///< d decimal, f float, h hexadecimal
        std::int32_t integer = 0;
        std::uint32_t longWord = 0;
        double value = 0;
    } const cases[] = {
        {{"42", "00042"}, "dfh", 42, 0, 42},
        {{"4294967295"}, "dfh", -1, 0, 4294967295.0},
        {{"4294967299"}, "dfh", 3, 0, 4294967299.0},
        {{"100000000000000000000000000007"}, "dfh", -1610612729, 0, 1e29},
        {{".5"}, "f", 0, 0, 0.5},
        {{"5."}, "f", 0, 0, 5},
        {{"1.25.75"}, "f", 0, 0, 1.25},
        {{".", "..5"}, "f"},
        {{"1e5", "abcDEF", "000000ff"}, "h"},
        {{"#000000ff"}, "", 0, 255},
        {{"#FFFFFFFF"}, "", 0, UINT_MAX},
        {{"0x89abCDEF", "0X89ABcdef"}, "", 0, 0x89ABCDEF},
        {{"", "-5", "+5", " 5", "inf", "0x10", "#0000000g", "#00000ff", "#0000000ff", "1x0000000A", "g"}, ""}};
    auto const expectNumbers = [](TypeParam const & text, auto const & row) {
        std::string const kinds = text.isDecimalNumber() ? "d" : "";
        EXPECT_EQ(kinds + (text.isFloatNumber() ? "f" : "") + (text.isHexNumber() ? "h" : ""), row.kinds);
        EXPECT_TRUE(text.toInteger() == row.integer && text.toLongWord() == row.longWord);
        EXPECT_TRUE(text.toDouble() == row.value && text.toFloat() == static_cast<float>(row.value));
        if constexpr (std::is_same_v<TypeParam, _DataString>) {
            EXPECT_EQ(static_cast<std::int32_t>(text), row.integer);
            EXPECT_EQ(static_cast<std::uint32_t>(text), row.longWord);
            EXPECT_EQ(static_cast<float>(text), text.toFloat());
            EXPECT_EQ(static_cast<double>(text), row.value);
        }
    };
    for (auto const & row : cases) {
        for (char const * const text : row.texts) {
            SCOPED_TRACE(text);
            expectNumbers(textOf<TypeParam>(text), row);
        }
    }
    expectNumbers(released<TypeParam>(), std::end(cases)[-1]);
    for (char const * word : {"true", "TRUE", "tRuE"}) {
        EXPECT_TRUE(textOf<TypeParam>(word).toBoolean());
    }
    EXPECT_FALSE(released<TypeParam>().toBoolean());
    for (char const * word : {"tru", "truex", "false", "1", " true", "\x54\x52\x55\x25"}) {
        EXPECT_FALSE(textOf<TypeParam>(word).toBoolean());
    }
}

TYPED_TEST(TextValues, RoundsDecimalNumbersOfAnyLength) {
    std::setlocale(LC_NUMERIC, "C"); // for the C library's sake
    // Midpoints of neighbouring doubles and what lies just above, and the ends of their range.
    for (std::string const & number :
         {std::string("9007199254740993"), std::string("9007199254740993").append(900, '0').append(".0"),
          std::string("9007199254740993.").append(900, '0').append("1"), std::string("9007199254740991.5"),
          std::string("0.").append(400, '0').append("1"), std::string("1").append(400, '0'),
          std::string(2000, '0').append("1.5"), std::string(2000, '9'),
          std::string("179769313486231570").append(291, '9'),
          std::string(".").append(323, '0').append("4940656458412465441765")}) {
        EXPECT_EQ(textOf<TypeParam>(number).toDouble(), std::strtod(number.c_str(), nullptr)) << number;
    }
}

TEST(WideString, ComparesWithBytesValueForValue) {
    EXPECT_EQ(_WideString(u"\u00e9"_w).compare("\xe9"), 0);
    EXPECT_EQ(_WideString(u"\u0100"_w).compare("\xff"), 1);
    EXPECT_EQ(_WideString(u"ab"_w).compare("abc"), -1);
    EXPECT_EQ(_WideString(u""_w).compare(static_cast<char const *>(nullptr)), 0);
    EXPECT_EQ(_WideString(u"\u8000x"_w).compareNoCase(u"\u8000A"_w), 'x' - 'a');
    EXPECT_EQ(_WideString(u"a"_w).compareStr(_WideString(u"b"_w)), -1);
    EXPECT_EQ(_WideString(u"a"_w).compareStr(released<_WideString>()), 1);
    EXPECT_EQ(_DataString("\xe9").compareNoCase("A"), 1);
    EXPECT_EQ(_DataString("\xe9").compare(_DataString("z")), 1);
}

TEST(WideString, SwapsBytesAndFoldsNothingButAscii) {
    _WideString text(u"az{`AZ@[\u00e0\u1234"_w);
    text.makeUpper();
    EXPECT_EQ(text.compare(u"AZ{`AZ@[\u00e0\u1234"_w), 0);
    text.makeLower();
    EXPECT_EQ(text.compare(u"az{`az@[\u00e0\u1234"_w), 0);
    EXPECT_TRUE(text.firstChar() == 'a' && text.lastChar() == 0x1234 && text.getChar(1) == 'z');
    EXPECT_EQ(_WideString().lastChar(), 0);
    EXPECT_EQ(text.toUniString().compareStr(text), 0);
    text.bigEndian();
    EXPECT_TRUE(text.firstChar() == 'a' << 8 && text.lastChar() == 0x3412);
}

TEST(WideString, NarrowsUpToTheFirstUnitAbove255) {
    auto const bytes = [](_DataString const & text) { return std::string(text.get_data(), text.get_length()); };
    EXPECT_EQ(bytes(_WideString(u"ab\u00ff"_w).toDataString()), "ab\xff");
    EXPECT_EQ(bytes(_WideString(u"abc\u0100e"_w).toDataString()), std::string("abc\0 ", 5));
    EXPECT_EQ(bytes(_WideString(u"0123456789abcdef\u20ac0123456789abcdef"_w).toDataString()),
              std::string("0123456789abcdef\0", 17) + std::string(16, ' '));
    EXPECT_EQ(bytes(fromModel<_WideString>(units<_WideString>(std::string_view("a\0b", 3))).toDataString()),
              std::string("a\0 ", 3));
    expectText(released<_WideString>().toDataString(), "");
    expectText(released<_DataString>().toWideString(), "");
    EXPECT_EQ(_DataString("a\xff").toWideString().compare("a\xff"), 0);
}

TEST(DataString, SavesItselfAsItsLengthAndItsBytes) {
    RecordingStream stream;
    _DataString text = fromModel<_DataString>(std::string("a\0b", 3));
    EXPECT_TRUE(text.saveToStream(stream));
    EXPECT_EQ(stream.bytes, std::string("\3\0\0\0a\0b", 7));
    stream.position = 0;
    EXPECT_EQ(modelOf(stream.readString()), std::string("a\0b", 3));
    EXPECT_TRUE(released<_DataString>().saveToStream(stream));
    EXPECT_EQ(stream.bytes.substr(7), std::string(4, '\0'));
    stream.mostMoved = 2;
    EXPECT_TRUE(fails([&] { text.saveToStream(stream); }));
    EXPECT_TRUE(text.loadFromStream(stream));
    EXPECT_EQ(text.get_length(), 3U);
}

TEST(WideString, TellsTagsByTheirEnds) {
    // t tag, c comment, D document type, C CDATA, p instruction, e empty, b beginning, n ending
    std::pair<char const *, std::vector<char const *>> const cases[] = {
        {"", {"", "<", ">", "a<b>", "<a> "}},
        {"tb", {"<>", "<!--->", "<?>", "<![CDATA[]>", "<![cdata[]]>", "<!DOCTYPE a>", "<!doctype]>", "<!DOCTYPE>"}},
        {"tebn", {"</>", "<//>", "</a/>"}},
        {"teb", {"<a/>"}},
        {"tbn", {"</a>"}},
        {"tcb", {"<!---->", "<!--x-->"}},
        {"tpb", {"<?\?>", "<?xml?>"}},
        {"tCb", {"<![CDATA[]]>"}},
        {"tDb", {"<!DOCTYPE]>"}}};
    for (auto const & [expected, texts] : cases) {
        for (char const * const each : texts) {
            _WideString const text(each);
            std::string holds = text.isDOMTag() ? "t" : "";
            holds += text.isDOMComment() ? "c" : "";
            holds += text.isDOMDocumentType() ? "D" : "";
            holds += text.isDOMCDATASection() ? "C" : "";
            holds += text.isDOMProcessingInstruction() ? "p" : "";
            for (auto const status : {_WideString::TAG_STATUS_EMPTY, _WideString::TAG_STATUS_BEGINNING,
                                      _WideString::TAG_STATUS_ENDING, static_cast<_WideString::TagStatus>(3)}) {
                holds.append(text.isDOMElement(status), "ebn3"[status]);
            }
            EXPECT_EQ(holds, expected) << each;
            EXPECT_TRUE(text.isDOMText() && text.isDOMAttribute() && text.isDOMEntityReference());
        }
    }
    EXPECT_FALSE(released<_WideString>().isDOMTag());
}

} // namespace
