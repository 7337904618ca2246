#include "text_testing.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <morvane/core/literals.h>
#include <morvane/encodings/string_utility.h>
#include <morvane/encodings/utf8_codec.h>
#include <morvane/encodings/utf8_kernels.h>
#include <string>
#include <tuple>
#include <vector>

using namespace morvane;
using namespace morvane::literals;
using Units = std::vector<unsigned short int>;

namespace {

constexpr unsigned short int untouched = 0xABCD;

/// Holds both directions of every kernel against the plain one, over blocks of exactly the sizes needed.
void expectAllKernelsAgree(std::string const & text) {
    std::unique_ptr<char[]> const bytes(new char[text.size()]);
    std::copy(text.begin(), text.end(), bytes.get());
    DataView const source = {bytes.get(), text.size()};
    Units units(text.size());
    utf8::Reading const expected = utf8::decode(Kernel::plain, source, units.data());
    units.resize(expected.units);
    std::string written(units.size() * 3, '#');
    written.resize(utf8::encode(Kernel::plain, {units.data(), units.size()}, written.data()));
    for (Kernel const kernel : {Kernel::plain, Kernel::ssse3, Kernel::avx512}) {
        if (!isAvailable(kernel)) {
            continue;
        }
        SCOPED_TRACE(static_cast<int>(kernel));
        Units target(units.size() + 16, untouched);
        utf8::Reading const decoded = utf8::decode(kernel, source, target.data());
        for (utf8::Reading const & reading :
             {utf8::countUnits(kernel, source), decoded, utf8::countUnits(text.c_str())}) {
            ASSERT_EQ(std::tie(reading.units, reading.index, reading.fault, reading.lead),
                      std::tie(expected.units, expected.index, expected.fault, expected.lead));
        }
        ASSERT_EQ(decoded.hasZero, std::count(units.begin(), units.end(), 0) > 0);
        Units guarded = units;
        guarded.resize(target.size(), untouched);
        ASSERT_EQ(target, guarded);
        ASSERT_EQ(utf8::countBytes(kernel, {units.data(), units.size()}), written.size());
        std::string encoded(written.size() + 16, '#');
        ASSERT_EQ(utf8::encode(kernel, {units.data(), units.size()}, encoded.data()), written.size());
        ASSERT_EQ(encoded, written + std::string(16, '#'));
    }
    // A zero-closed text, which a unit of value 0 would end.
    Units closed(units.size() + 1);
    ASSERT_EQ(utf8::decode(text.c_str(), closed.data()).units, units.size());
    ASSERT_TRUE(std::equal(units.begin(), units.end(), closed.begin()));
    if (!expected.hasZero) {
        std::string encoded(written.size(), '#');
        ASSERT_EQ(utf8::countBytes(closed.data()), written.size());
        ASSERT_EQ(utf8::encode(closed.data(), encoded.data()), written.size());
        ASSERT_EQ(encoded, written);
    }
}

TEST(Utf8, SequencesReadTheSameAcrossEveryBlockEdge) {
    std::string const pieces[] = {"\xC3\xA9", "\xE2\x82\xAC",     "\xC3",         "\xE2",         "\xE2\x82",
                                  "\x80",     "\xF0\x9F\x98\x80", "\xC0\x80",     "\xE0\x80\x80", "\xC3Z",
                                  "\xE2ZZ",   "\xE2\x82Z",        "\xC3\xC3\xA9", "\xEF\xBF\xBF", "\xC0\x40\xFF"};
    std::string const fillers[] = {"a", "\xD0\x96", "\xE4\xB8\xAD", "a\xE2\x82\xAC \xC3\xA9s"};
    for (std::string const & piece : pieces) {
        for (std::string const & filler : fillers) {
            // Up to and around the stretch in which zero-closed texts are measured.
            for (std::size_t before = 0; before <= 0x2001; before = before == 200 ? 0x1FFC : before + 1) {
                std::string text;
                while (text.size() + filler.size() <= before) {
                    text += filler;
                }
                text.insert(0, before - text.size(), 'x');
                for (std::string const & behind : {std::string(), std::string("b"), text}) {
                    ASSERT_NO_FATAL_FAILURE(expectAllKernelsAgree(text + piece + behind))
                        << testing::PrintToString(piece) << " behind " << before;
                }
            }
        }
    }
}

TEST(Utf8, EveryUnitSurvivesTheRoundTrip) {
    Units units;
    for (unsigned unit = 1; unit <= 0xFFFF; ++unit) {
        units.push_back(static_cast<unsigned short int>(unit));
    }
    std::string text(units.size() * 3, '#');
    text.resize(utf8::encode(Kernel::plain, {units.data(), units.size()}, text.data()));
    Units read(text.size());
    read.resize(utf8::decode(Kernel::plain, {text.data(), text.size()}, read.data()).units);
    ASSERT_EQ(read, units);
    // The sums of the counting pass hold beyond one round of its lanes.
    std::string longText;
    for (int repeat = 0; repeat < 10; ++repeat) {
        longText += text;
    }
    expectAllKernelsAgree(longText);
}

TEST(Utf8, ReadsLenientlyAndTellsWhereItFails) {
    struct {
        std::string bytes;
        Units units;                        ///< those in front of a fault
        unsigned short int const * message; ///< "before" where everything reads
    } const cases[] = {{"ab\xC3", {'a', 'b'}, u"error A: (d(3) >= length(3))"_w},
                       {"a\xE2", {'a'}, u"error B: (d:3) >= length:2))"_w},
                       {"\xF0\x9F\x98\x80", {}, u"error C: (c0:240) (d:0) (length:4)"_w},
                       {"a\xC3\xA9\x80z", {'a', 0xE9}, u"error C: (c0:128) (d:3) (length:5)"_w},
                       {"\xC0\x80\xC1\xBF\xE0\x80\x8A", {0, 0x7F, 0x0A}, u"before"_w},
                       {"\xC3Z\xE2ZZ", {0xDA, 0x269A}, u"before"_w}};
    for (auto const & row : cases) {
        SCOPED_TRACE(testing::PrintToString(row.bytes));
        for (bool const isCounting : {true, false}) {
            Units target(8, untouched);
            _WideString message(u"before"_w);
            std::int32_t count = -7;
            auto const error = _StringUtility::convertUTF8StringToWideString(
                row.bytes.c_str(), isCounting ? nullptr : target.data(), message, count);
            EXPECT_EQ(textOf(message), textOf(row.message));
            EXPECT_EQ(error == _StringUtility::utilErrorNone, textOf(message) == u"before");
            ASSERT_EQ(count, static_cast<std::int32_t>(row.units.size()));
            Units expected = isCounting ? Units() : row.units;
            expected.resize(8, untouched);
            EXPECT_EQ(target, expected);
        }
    }
}

TEST(Utf8, WritesTheShortestFormAndNoZeroBehindIt) {
    std::string const expected = "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\xA0\xBD\xEF\xBF\xBF";
    std::string bytes(expected.size() + 1, '#');
    for (char * const buffer : {static_cast<char *>(nullptr), bytes.data()}) {
        std::int32_t count = -7;
        EXPECT_TRUE(_StringUtility::convertWideStringToUTF8String(u"\x7F\x80\x7FF\x800\xD83D\xFFFF"_w, buffer, count));
        EXPECT_EQ(count, static_cast<std::int32_t>(expected.size()));
    }
    EXPECT_EQ(bytes, expected + '#');
}

TEST(Utf8, NullSourcesAreBadAndUtf16IsCopied) {
    _WideString message;
    std::int32_t count = -7;
    EXPECT_EQ(_StringUtility::convertUTF8StringToWideString(nullptr, nullptr, message, count),
              _StringUtility::utilErrorBadInput);
    EXPECT_EQ(message.compare("bad input string"), 0);
    EXPECT_FALSE(_StringUtility::convertWideStringToUTF8String(nullptr, nullptr, count));
    EXPECT_EQ(count, -7);
    for (unsigned short int const * const source :
         {u"a\xD800"_w, u""_w, static_cast<unsigned short int const *>(nullptr)}) {
        _WideString results[] = {u"before"_w, u"before"_w};
        EXPECT_EQ(_StringUtility::convertUTF16StringToWideString(source, results[0]), _StringUtility::utilErrorNone);
        EXPECT_TRUE(_StringUtility::convertWideStringToUTF16String(source, results[1]));
        for (_WideString const & result : results) {
            EXPECT_EQ(textOf(result), textOf(source));
            EXPECT_NE(result.get_data(), nullptr);
        }
    }
}

TEST(Utf8, TextsAreMadeAtExactSize) {
    _WideString wide(u"before"_w);
    EXPECT_EQ(utf8::decodeTo(viewOf("a\xC3"), wide).fault, utf8::Fault::shortOfTwo);
    EXPECT_EQ(textOf(wide), u"before");
    // The text of a zero-closed buffer ends at its first zero unit.
    for (char const * const bytes : {"a\xE2\x82\xAC", "a\xE2\x82\xAC\xC0\x80z, and more than sixteen bytes"}) {
        utf8::decodeTo(viewOf(bytes), wide);
        EXPECT_EQ(textOf(wide), u"a\u20AC");
        EXPECT_EQ(wide.get_size(), 6U);
    }
    _DataString data;
    utf8::encodeTo(viewOf(u"a\u20AC"_w), data);
    EXPECT_EQ(textOf(data), "a\xE2\x82\xAC");
}

} // namespace
