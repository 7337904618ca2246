#include "stream_testing.h"
#include "text_battery.h"

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <morvane/core/literals.h>
#include <morvane/strings/data_string.h>
#include <morvane/strings/wide_string.h>
#include <random>
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
    auto const kindsOf = [](TypeParam const & text) {
        std::string const kinds = text.isDecimalNumber() ? "decimal " : "";
        return kinds + (text.isFloatNumber() ? "float " : "") + (text.isHexNumber() ? "hex" : "");
    };
    std::pair<char const *, std::vector<char const *>> const kinds[] = {
        {"decimal float hex", {"0", "42", "4294967295", "4294967299"}},
        {"float ", {"1.5", ".5", "5.", "1.25.75", ".", "..5"}},
        {"hex", {"1e5", "abcDEF", "000000ff"}},
        {"", {"", "-5", "+5", " 5", "inf", "0x10", "#000000ff", "0x89abCDEF", "g"}}};
    for (auto const & [kind, texts] : kinds) {
        for (char const * const text : texts) {
            EXPECT_EQ(kindsOf(textOf<TypeParam>(text)), kind) << text;
        }
    }
    EXPECT_EQ(kindsOf(released<TypeParam>()), "");

    struct {
        char const * text;
        std::int32_t integer;
        std::uint32_t longWord;
        double value;
    } const numbers[] = {{"42", 42, 0, 42},
                         {"4294967295", -1, 0, 4294967295.0},
                         {"4294967299", 3, 0, 4294967299.0},
                         {"100000000000000000000000000007", -1610612729, 0, 1e29},
                         {"1.5", 0, 0, 1.5},
                         {".5", 0, 0, 0.5},
                         {"5.", 0, 0, 5},
                         {"1.25.75", 0, 0, 1.25},
                         {"#000000ff", 0, 255, 0},
                         {"#FFFFFFFF", 0, UINT_MAX, 0},
                         {"0x89abCDEF", 0, 0x89ABCDEF, 0},
                         {"0X0000000A", 0, 10, 0}};
    auto const expectNumbers = [](TypeParam const & text, std::int32_t integer, std::uint32_t longWord, double value) {
        EXPECT_EQ(text.toInteger(), integer);
        EXPECT_EQ(text.toLongWord(), longWord);
        EXPECT_EQ(text.toDouble(), value);
        EXPECT_EQ(text.toFloat(), static_cast<float>(value));
    };
    for (auto const & [text, integer, longWord, value] : numbers) {
        SCOPED_TRACE(text);
        expectNumbers(textOf<TypeParam>(text), integer, longWord, value);
    }
    for (char const * const text : {"", "0", "-5", "+5", " 5", ".", "..5", "1e5", "inf", "abcDEF", "0x10", "#0000000g",
                                    "#00000ff", "#0000000ff", "1x0000000A", "000000ff", "g"}) {
        SCOPED_TRACE(text);
        expectNumbers(textOf<TypeParam>(text), 0, 0, 0);
    }
    expectNumbers(released<TypeParam>(), 0, 0, 0);
    for (char const * word : {"true", "TRUE", "tRuE"}) {
        EXPECT_TRUE(textOf<TypeParam>(word).toBoolean());
    }
    EXPECT_FALSE(released<TypeParam>().toBoolean());
    for (char const * word : {"tru", "truex", "false", "1", " true", "\x54\x52\x55\x25"}) {
        EXPECT_FALSE(textOf<TypeParam>(word).toBoolean());
    }
    if constexpr (std::is_same_v<TypeParam, _DataString>) {
        EXPECT_TRUE(static_cast<bool>(_DataString("true")));
        EXPECT_EQ(static_cast<std::int32_t>(_DataString("42")), 42);
        EXPECT_EQ(static_cast<std::uint32_t>(_DataString("#000000ff")), 255U);
        EXPECT_EQ(static_cast<float>(_DataString("0.25")), 0.25F);
        EXPECT_EQ(static_cast<double>(_DataString("0.1")), 0.1);
    }
}

TYPED_TEST(TextValues, RoundsDecimalNumbersOfAnyLength) {
    std::mt19937 random(7);
    std::vector<std::string> numbers{// Midpoints of neighbouring doubles, and just above.
                                     "9007199254740993",
                                     "9007199254740993.00000000000000000000000000000000000001",
                                     std::string("9007199254740993").append(900, '0').append(".0"),
                                     std::string("9007199254740993.").append(900, '0').append("1"),
                                     "9007199254740991.5",
                                     std::string("0.").append(400, '0').append("1"),
                                     std::string("1").append(400, '0'),
                                     std::string(2000, '0').append("1.5"),
                                     std::string(2000, '9'),
                                     std::string(".").append(323, '0').append("4940656458412465441765"),
                                     "179769313486231580793728971405303415079934132710037826936173778980444968292764750"
                                     "946649017977587207096330286416"
                                     "692887910946555547851940402630657488671505820681908902000708383676273854845817711"
                                     "531764475730270069855571366959"
                                     "622842914819860834936475292719074168444365510704342711559699508093042880"};
    for (int count = 0; count < 500; ++count) {
        std::string number;
        for (auto digits = random() % 40; digits > 0; --digits) {
            number += static_cast<char>('0' + random() % 10);
        }
        number.insert(random() % (number.size() + 1), 1, '.');
        numbers.push_back(number);
    }
    for (std::string const & number : numbers) {
        EXPECT_EQ(textOf<TypeParam>(number).toDouble(), std::strtod(number.c_str(), nullptr)) << number;
    }
}

TEST(WideString, ComparesWithBytesValueForValue) {
    EXPECT_EQ(_WideString(u"abc"_w).compare("abc"), 0);
    EXPECT_EQ(_WideString(u"\u00e9"_w).compare("\xe9"), 0);
    EXPECT_EQ(_WideString(u"\u0100"_w).compare("\xff"), 1);
    EXPECT_EQ(_WideString(u"ab"_w).compare("abc"), -1);
    EXPECT_EQ(_WideString(u""_w).compare(static_cast<char const *>(nullptr)), 0);
    EXPECT_EQ(_WideString(u"\uffff"_w).compare(u"\u0001"_w), 1);
    EXPECT_EQ(_WideString(u"\u8000x"_w).compareNoCase(u"\u8000A"_w), 'x' - 'a');
    EXPECT_EQ(_WideString(u"a"_w).compareStr(_WideString(u"b"_w)), -1);
    EXPECT_EQ(_WideString(u"a"_w).compareStr(released<_WideString>()), 1);
    EXPECT_EQ(_DataString("\xe9").compareNoCase("A"), 1);
    EXPECT_EQ(_DataString("\xe9").compare(_DataString("z")), 1);
}

TEST(WideString, SwapsBytesAndFoldsNothingButAscii) {
    _WideString text(u"\u1234\u00ff"_w);
    text.bigEndian();
    EXPECT_EQ(text.compare(u"\u3412\uff00"_w), 0);
    text.bigEndian();
    EXPECT_EQ(text.compare(u"\u1234\u00ff"_w), 0);
    text = u"az{`AZ@[\u00e0\u0161"_w;
    text.makeUpper();
    EXPECT_EQ(text.compare(u"AZ{`AZ@[\u00e0\u0161"_w), 0);
    text.makeLower();
    EXPECT_EQ(text.compare(u"az{`az@[\u00e0\u0161"_w), 0);
    EXPECT_EQ(text.firstChar(), 'a');
    EXPECT_EQ(text.lastChar(), 0x161);
    EXPECT_EQ(text.getChar(1), 'z');
    EXPECT_EQ(_WideString().lastChar(), 0);
    EXPECT_EQ(text.toUniString().compareStr(text), 0);
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
            std::string holds;
            holds += text.isDOMTag() ? "t" : "";
            holds += text.isDOMComment() ? "c" : "";
            holds += text.isDOMDocumentType() ? "D" : "";
            holds += text.isDOMCDATASection() ? "C" : "";
            holds += text.isDOMProcessingInstruction() ? "p" : "";
            holds += text.isDOMElement(_WideString::TAG_STATUS_EMPTY) ? "e" : "";
            holds += text.isDOMElement(_WideString::TAG_STATUS_BEGINNING) ? "b" : "";
            holds += text.isDOMElement(_WideString::TAG_STATUS_ENDING) ? "n" : "";
            EXPECT_EQ(holds, expected) << each;
            EXPECT_FALSE(text.isDOMElement(static_cast<_WideString::TagStatus>(3)));
            EXPECT_TRUE(text.isDOMText() && text.isDOMAttribute() && text.isDOMEntityReference());
        }
    }
    EXPECT_FALSE(released<_WideString>().isDOMTag());
}

} // namespace
