#include "text_testing.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <morvane/core/literals.h>
#include <morvane/encodings/string_utility.h>
#include <morvane/encodings/utf8_codec.h>
#include <morvane/encodings/utf8_kernels.h>
#include <random>
#include <string>
#include <vector>

using namespace morvane;
using namespace morvane::literals;
using Units = std::vector<unsigned short int>;

namespace {

constexpr unsigned short int untouched = 0xABCD;

/// What the codec must give, one sequence after the other.
struct Expected {
    Units units;
    std::size_t index = 0;
    utf8::Fault fault = utf8::Fault::none;
};

Expected readSlowly(std::string const & bytes) {
    Expected result;
    auto at = [&bytes](std::size_t index) { return static_cast<unsigned>(static_cast<unsigned char>(bytes[index])); };
    std::size_t & index = result.index;
    for (; index < bytes.size(); ++index) {
        unsigned const first = at(index);
        std::size_t const behind = first < 0x80 ? 0 : (first >> 5) == 6 ? 1 : (first >> 4) == 14 ? 2 : 3;
        if (behind == 3) {
            result.fault = utf8::Fault::badLead;
            return result;
        }
        index += behind;
        if (index >= bytes.size()) {
            result.fault = behind == 1 ? utf8::Fault::shortOfTwo : utf8::Fault::shortOfThree;
            return result;
        }
        unsigned const masks[] = {0x7F, 0x1F, 0x0F};
        unsigned unit = first & masks[behind];
        for (std::size_t byte = behind; byte > 0; --byte) {
            unit = unit * 64 + at(index + 1 - byte) % 64;
        }
        result.units.push_back(static_cast<unsigned short int>(unit));
    }
    return result;
}

std::string writeSlowly(Units const & units) {
    std::string bytes;
    auto put = [&bytes](unsigned byte) { bytes += static_cast<char>(byte); };
    for (unsigned const unit : units) {
        if (unit <= 0x7F) {
            put(unit);
            continue;
        }
        if (unit <= 0x7FF) {
            put(0xC0 + unit / 64);
        } else {
            put(0xE0 + unit / 4096);
            put(0x80 + unit / 64 % 64);
        }
        put(0x80 + unit % 64);
    }
    return bytes;
}

/// Holds both directions of every kernel against the slow forms, over blocks of exactly the sizes needed.
void expectAllKernelsAgree(std::string const & text) {
    Expected const expected = readSlowly(text);
    std::unique_ptr<char[]> const bytes(new char[text.size()]);
    std::copy(text.begin(), text.end(), bytes.get());
    DataView const source = {bytes.get(), text.size()};
    for (utf8::Kernel const kernel : {utf8::Kernel::plain, utf8::Kernel::ssse3, utf8::Kernel::avx512}) {
        if (!utf8::isAvailable(kernel)) {
            continue;
        }
        SCOPED_TRACE(static_cast<int>(kernel));
        auto expectReading = [&expected](utf8::Reading const & reading) {
            ASSERT_EQ(reading.units, expected.units.size());
            ASSERT_EQ(reading.index, expected.index);
            ASSERT_EQ(reading.fault, expected.fault);
        };
        expectReading(utf8::countUnits(kernel, source));
        Units target(expected.units.size() + 16, untouched);
        utf8::Reading const reading = utf8::decode(kernel, source, target.data());
        expectReading(reading);
        ASSERT_EQ(reading.hasZero, std::count(expected.units.begin(), expected.units.end(), 0) > 0);
        ASSERT_EQ(std::count(target.end() - 16, target.end(), untouched), 16);
        target.resize(expected.units.size());
        ASSERT_EQ(target, expected.units);

        WideView const units = {target.data(), target.size()};
        std::string const written = writeSlowly(target);
        ASSERT_EQ(utf8::countBytes(kernel, units), written.size());
        std::string encoded(written.size() + 16, '#');
        ASSERT_EQ(utf8::encode(kernel, units, encoded.data()), written.size());
        ASSERT_EQ(encoded, written + std::string(16, '#'));
    }
}

TEST(Utf8, FastFormsAgreeWithTheSlowOneOnRandomText) {
    std::mt19937 random(8);
    auto below = [&random](std::size_t limit) { return static_cast<std::size_t>(random() % limit); };
    for (int round = 0; round < 20000; ++round) {
        std::size_t const script = below(5);
        Units units;
        for (std::size_t count = below(180); count > 0; --count) {
            std::size_t const kind = script == 4 ? below(4) : below(9) == 0 ? 0 : script;
            std::size_t const ranges[][2] = {{1, 0x7F}, {0x80, 0x780}, {0x800, 0xF800}, {0x400, 0x60}};
            units.push_back(static_cast<unsigned short int>(ranges[kind][0] + below(ranges[kind][1])));
        }
        std::string text = writeSlowly(units);
        std::size_t const damage = below(4);
        if (damage == 1 && !text.empty()) {
            for (std::size_t count = 1 + below(3); count > 0; --count) {
                text[below(text.size())] = static_cast<char>(1 + below(255));
            }
        } else if (damage == 2) {
            text.resize(text.size() - std::min(below(4), text.size()));
        } else if (damage == 3) {
            for (char & byte : text) {
                // Garbage with many leads and continuations, so that a part of it reads.
                byte = static_cast<char>(below(2) == 0 ? 1 + below(255) : 0x80 + below(0x70));
            }
        }
        ASSERT_NO_FATAL_FAILURE(expectAllKernelsAgree(text)) << "round " << round;
    }
}

TEST(Utf8, SequencesReadTheSameAcrossEveryBlockEdge) {
    std::string const pieces[] = {"\xC3\xA9", "\xE2\x82\xAC",     "\xC3",         "\xE2",         "\xE2\x82",
                                  "\x80",     "\xF0\x9F\x98\x80", "\xC0\x80",     "\xE0\x80\x80", "\xC3Z",
                                  "\xE2ZZ",   "\xE2\x82Z",        "\xC3\xC3\xA9", "\xEF\xBF\xBF", "\xC0\x40\xFF"};
    std::string const fillers[] = {"a", "\xD0\x96", "\xE4\xB8\xAD"};
    for (std::string const & piece : pieces) {
        for (std::string const & filler : fillers) {
            for (std::size_t before = 0; before < 140; ++before) {
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
    std::string const text = writeSlowly(units);
    ASSERT_EQ(readSlowly(text).units, units);
    expectAllKernelsAgree(text);
    // The sums of the counting pass hold beyond one round of its lanes.
    std::string longText;
    for (int repeat = 0; repeat < 10; ++repeat) {
        longText += text;
    }
    expectAllKernelsAgree(longText);
}

TEST(Utf8, ReadsLenientlyTellsWhereItFailsAndWritesTheShortestForm) {
    struct {
        std::string bytes;
        Units units;                        ///< those in front of a fault
        unsigned short int const * message; ///< null where everything reads
    } const cases[] = {{"\xC3", {}, u"error A: (d(1) >= length(1))"_w},
                       {"ab\xC3", {'a', 'b'}, u"error A: (d(3) >= length(3))"_w},
                       {"\xE2\x82", {}, u"error B: (d:2) >= length:2))"_w},
                       {"a\xE2", {'a'}, u"error B: (d:3) >= length:2))"_w},
                       {"\xF0\x9F\x98\x80", {}, u"error C: (c0:240) (d:0) (length:4)"_w},
                       {"a\xC3\xA9\x80z", {'a', 0xE9}, u"error C: (c0:128) (d:3) (length:5)"_w},
                       {"\xFF", {}, u"error C: (c0:255) (d:0) (length:1)"_w},
                       {"\xC0\x80", {0}, nullptr},
                       {"\xC1\xBF\xE0\x80\x8A", {0x7F, 0x0A}, nullptr},
                       {"\xC3Z\xE2ZZ", {0xDA, 0x269A}, nullptr},
                       {"", {}, nullptr},
                       {"\x7F\xC2\x80", {0x7F, 0x80}, nullptr},
                       {"\xDF\xBF\xE0\xA0\x80", {0x7FF, 0x800}, nullptr},
                       {"\xED\xA0\xBD\xED\xB8\x80", {0xD83D, 0xDE00}, nullptr},
                       {"\xEF\xBF\xBF", {0xFFFF}, nullptr}};
    for (auto const & row : cases) {
        SCOPED_TRACE(testing::PrintToString(row.bytes));
        std::int32_t count = -7;
        for (bool const isCounting : {true, false}) {
            Units target(8, untouched);
            _WideString message(u"before"_w);
            auto const error = _StringUtility::convertUTF8StringToWideString(
                row.bytes.c_str(), isCounting ? nullptr : target.data(), message, count);
            EXPECT_EQ(error,
                      row.message == nullptr ? _StringUtility::utilErrorNone : _StringUtility::utilErrorConversion);
            EXPECT_EQ(textOf(message), row.message == nullptr ? u"before" : textOf(row.message));
            ASSERT_EQ(count, static_cast<std::int32_t>(row.units.size()));
            Units expected = isCounting ? Units() : row.units;
            expected.resize(8, untouched);
            EXPECT_EQ(target, expected);
        }
        if (writeSlowly(row.units) != row.bytes) {
            continue; // not its shortest form
        }
        Units closed = row.units;
        closed.push_back(0);
        std::string bytes(row.bytes.size() + 1, '#');
        for (char * const buffer : {static_cast<char *>(nullptr), bytes.data()}) {
            EXPECT_TRUE(_StringUtility::convertWideStringToUTF8String(closed.data(), buffer, count));
            EXPECT_EQ(count, static_cast<std::int32_t>(row.bytes.size()));
        }
        EXPECT_EQ(bytes, row.bytes + '#');
    }
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
    EXPECT_EQ(wide.compare(u"before"_w), 0);
    utf8::decodeTo(viewOf("a\xE2\x82\xAC"), wide);
    EXPECT_EQ(wide.compare(u"a\u20AC"_w), 0);
    EXPECT_EQ(wide.get_length(), 2U);
    EXPECT_EQ(wide.get_size(), 6U);
    // The text of a zero-closed buffer ends at its first zero unit.
    utf8::decodeTo(viewOf("a\xC0\x80z, and more than sixteen bytes"), wide);
    EXPECT_EQ(wide.get_length(), 1U);
    EXPECT_EQ(wide.get_size(), 4U);
    _DataString data;
    utf8::encodeTo(viewOf(u"a\u20AC"_w), data);
    EXPECT_EQ(data.get_length(), 4U);
    EXPECT_STREQ(data, "a\xE2\x82\xAC");
}

} // namespace
