#include "temporary_folder.h"

#include <array>
#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <morvane/core/literals.h>
#include <morvane/strings/data_string.h>
#include <morvane/strings/wide_string.h>
#include <string>
#include <vector>

using namespace morvane::literals;

namespace {

using WideText = std::basic_string<unsigned short int>;

WideText widened(std::string const & text) {
    return {text.begin(), text.end()};
}

std::string narrowed(_WideString const & text) {
    return {text.arg(), text.arg() + text.get_length()};
}

/// True where the C library itself errs: at `%#g` some drop the zeros behind the point when rounding carries into the
/// exponent. `KeepsZerosInTheAlternateForm` holds these by hand.
bool losesZeros(std::string const & pattern, std::string const & printed) {
    return pattern.find('#') != std::string::npos && pattern.find_first_of("gG") != std::string::npos
           && pattern.find(".0") == std::string::npos && pattern.find(".1") == std::string::npos
           && (printed.find(".e") != std::string::npos || printed.find(".E") != std::string::npos);
}

/// Holds both text classes against the C library's printf.
template <typename... Arguments>
void expectAsPrinted(std::string const & pattern, Arguments... arguments) {
    std::array<char, 40000> expected{};
    std::snprintf(expected.data(), expected.size(), pattern.c_str(), arguments...);
    if (losesZeros(pattern, expected.data())) {
        return;
    }
    _DataString data;
    data.format(pattern.c_str(), arguments...);
    ASSERT_STREQ(data.get_data(), expected.data()) << pattern;
    _WideString wide;
    wide.format(widened(pattern).c_str(), arguments...);
    ASSERT_EQ(narrowed(wide), expected.data()) << pattern;
}

std::vector<std::string> flagSets(std::string const & flags) {
    std::vector<std::string> sets;
    for (unsigned choice = 0; choice < 1U << flags.size(); ++choice) {
        std::string set;
        for (std::size_t flag = 0; flag < flags.size(); ++flag) {
            if ((choice >> flag & 1) != 0) {
                set += flags[flag];
            }
        }
        sets.push_back(set);
    }
    return sets;
}

/// Every flag set, width and precision in front of `ending`.
std::vector<std::string> directives(std::string const & flags, std::vector<std::string> const & precisions,
                                    std::string const & ending) {
    std::vector<std::string> all;
    for (std::string const & set : flagSets(flags)) {
        for (char const * width : {"", "1", "9", "30"}) {
            for (std::string const & precision : precisions) {
                all.push_back("[%" + set + width + precision + ending + "]");
            }
        }
    }
    return all;
}

template <typename Value>
void expectIntegersAsPrinted(std::string const & size, std::string const & conversions,
                             std::vector<Value> const & values) {
    for (char const conversion : conversions) {
        bool const isSigned = conversion == 'd' || conversion == 'i';
        std::string const flags = isSigned ? "-+ 0" : conversion == 'u' ? "-0" : "-#0";
        for (std::string const & directive : directives(flags, {"", ".", ".0", ".3", ".15"}, size + conversion)) {
            for (Value const value : values) {
                expectAsPrinted(directive, value);
            }
        }
    }
}

TEST(Format, PrintsIntegersOfEverySizeAsTheCLibraryDoes) {
    std::vector<int> const small{0, 1, -1, 7, 8, 127, 128, -129, 255, 300, 70000, INT_MAX, INT_MIN};
    for (char const * size : {"", "h", "hh"}) {
        expectIntegersAsPrinted<int>(size, "di", small);
        expectIntegersAsPrinted<unsigned>(size, "ouxX", {0, 1, 8, 255, 0x12345, 0xABCDEF01, UINT_MAX});
    }
    expectIntegersAsPrinted<long>("l", "d", {0, 5, -5, INT_MAX, INT_MIN});
    expectIntegersAsPrinted<unsigned long>("l", "uxo", {0, 5, UINT_MAX});
    expectIntegersAsPrinted<long long>("ll", "di", {0, -5, LLONG_MAX, LLONG_MIN});
    expectIntegersAsPrinted<unsigned long long>("ll", "ouxX", {0, 77, ULLONG_MAX});
    expectIntegersAsPrinted<std::intmax_t>("j", "d", {0, -5, INTMAX_MIN});
    expectIntegersAsPrinted<std::size_t>("z", "ux", {0, 5, SIZE_MAX});
    expectIntegersAsPrinted<std::ptrdiff_t>("t", "d", {0, -5, PTRDIFF_MIN});
}

TEST(Format, TakesTheLow32BitsOfALong) {
    _DataString text;
    text.format("%ld %lx", 0x700000005L, 0x7FFFFFFFFL);
    EXPECT_STREQ(text.get_data(), "5 ffffffff");
}

template <typename Float>
std::vector<Float> floatValues() {
    using Limits = std::numeric_limits<Float>;
    std::vector<Float> values{0,
                              1,
                              Float(0.5),
                              Float(1.5),
                              Float(2.5),
                              Float(0.1),
                              Float(9.5),
                              Float(99.9999999),
                              Float(0.00001234),
                              Float(0.000099995),
                              Float(123456.5),
                              Float(999999.5),
                              Float(1e15),
                              Float(1e22),
                              Float(3.0e100),
                              Float(0x1.fffffep+3),
                              Limits::max(),
                              Limits::min(),
                              Limits::denorm_min(),
                              Limits::min() - 3 * Limits::denorm_min(),
                              Limits::infinity(),
                              Limits::quiet_NaN()};
    std::uint64_t seed = 12345;
    for (int count = 0; count < 30; ++count) {
        seed = seed * 6364136223846793005U + 1442695040888963407U;
        Float const mantissa = static_cast<Float>(seed >> 1) + Limits::epsilon() * static_cast<Float>(seed >> 20);
        values.push_back(std::ldexp(mantissa, static_cast<int>(seed >> 40 & 0xFF) - 190));
    }
    std::size_t const positive = values.size();
    for (std::size_t index = 0; index < positive; ++index) {
        values.push_back(-values[index]);
    }
    return values;
}

template <typename Float>
void expectFloatsAsPrinted(std::string const & size) {
    std::vector<std::string> const precisions{"", ".0", ".1", ".2", ".5", ".17", ".40"};
    for (char const conversion : std::string("eEfFgGaA")) {
        for (std::string const & directive : directives("-+ #0", precisions, size + conversion)) {
            // All flags on few values, all values on few flags.
            for (Float const value : {Float(0), Float(2.5), Float(-1234.5678), Float(1e-7)}) {
                expectAsPrinted(directive, value);
            }
        }
        for (Float const value : floatValues<Float>()) {
            for (std::string const & directive : directives("#", precisions, size + conversion)) {
                expectAsPrinted(directive, value);
            }
            expectAsPrinted("%.1100" + size + conversion, value);
            expectAsPrinted("%.0" + size + conversion, value);
        }
    }
}

TEST(Format, PrintsDoublesAsTheCLibraryDoes) {
    expectFloatsAsPrinted<double>("");
    expectFloatsAsPrinted<double>("l");
}

TEST(Format, KeepsZerosInTheAlternateForm) {
    _DataString data;
    data.format("%#.2g %#G %#.3g %#.1g", 99.99, 999999.5, 100.0, 1e5);
    EXPECT_STREQ(data.get_data(), "1.0e+02 1.00000E+06 100. 1.e+05");
}

TEST(Format, PrintsLongDoublesAsTheCLibraryDoes) {
    expectFloatsAsPrinted<long double>("L");
    expectAsPrinted("%.20000Lf", LDBL_TRUE_MIN);
    expectAsPrinted("%.17000Le", LDBL_TRUE_MIN * 3);
    expectAsPrinted("%.5000Lg", LDBL_MAX);
}

TEST(Format, PrintsTextCharactersAndPointersAsTheCLibraryDoes) {
    for (std::string const & directive : directives("-", {"", ".", ".0", ".2", ".50"}, "hs")) {
        std::string narrow = directive;
        narrow.erase(narrow.find('h'), 1);
        for (char const * text : {"", "a", "abcdef"}) {
            std::array<char, 100> expected{};
            std::snprintf(expected.data(), expected.size(), narrow.c_str(), text);
            _DataString data;
            data.format(directive.c_str(), text);
            EXPECT_STREQ(data.get_data(), expected.data()) << directive;
            _WideString wide;
            wide.format(widened(directive).c_str(), text);
            EXPECT_EQ(narrowed(wide), expected.data()) << directive;
        }
    }
    expectAsPrinted("%c|%5c|%-5c|%*c|%-*c", 'a', 'b', 'c', 4, 'd', -4, 'e');
    expectAsPrinted("%*d|%-*d|%*d|%.*d|%.*d", 6, 42, 6, 42, -6, 42, 4, 42, -4, 42);
    expectAsPrinted("%p %20p %-20p|", static_cast<void *>(nullptr), reinterpret_cast<void *>(0x1234abcd),
                    reinterpret_cast<void *>(0xff));
    expectAsPrinted("100%% of %d%%", 7);
}

TEST(Format, TellsTextOf16BitsFromBytes) {
    _WideString wide;
    wide.format(u"%s|%ls|%hs|%c|%lc|%hc|%.2s"_w, u"\u4e2d\xd800"_w, u"w"_w, "b\xff", 0x4e2d, 0x4e2d, 0x1ff, u"xyz"_w);
    EXPECT_EQ(wide.compare(u"\u4e2d\xd800|w|b\u00ff|\u4e2d|\u4e2d|\u00ff|xy"_w), 0);

    _DataString data;
    data.format("%s|%hs|%ls|%c|%hc|%lc|%lc|%5ls|", "b\xff", "h", u"a\u00e9\u0100z"_w, 'c', 'd', 0xe9, 0x100,
                u"\u0100"_w);
    EXPECT_STREQ(data.get_data(), "b\xff|h|a\xe9|c|d|\xe9||     |");
}

TEST(Format, ReadsNoTextBeyondItsPrecision) {
    std::vector<char> const bytes{'a', 'b', 'c'};
    std::vector<unsigned short int> const units{'a', 'b', 'c'};
    _DataString data;
    data.format("%.3s %.*ls", bytes.data(), 2, units.data());
    EXPECT_STREQ(data.get_data(), "abc ab");
    _WideString wide;
    wide.format(u"%.3s %.*hs"_w, units.data(), 2, bytes.data());
    EXPECT_EQ(wide.compare("abc ab"), 0);
}

TEST(Format, PrintsWhatIsNoDirectiveAsItStands) {
    struct Case {
        char const * pattern;
        char const * expected;
    };
    for (Case const & each : {Case{"%", "%"},
                              {"5%", "5%"},
                              {"%y %d", "%y 7"},
                              {"%-08.3k%d", "%-08.3k7"},
                              {"%l", "%l"},
                              {"%S%C%d", "%S%C7"},
                              {"%#08", "%#08"},
                              {"%\xe9", "%\xe9"}}) {
        _DataString data;
        data.format(each.pattern, 7);
        EXPECT_STREQ(data.get_data(), each.expected);
    }
    _WideString wide;
    wide.format(u"%\u4e2d%d"_w, 7);
    EXPECT_EQ(wide.compare(u"%\u4e2d7"_w), 0);
}

TEST(Format, TakesTheArgumentOfACountAndWritesNothingThere) {
    int untouched = 5;
    _DataString data;
    data.format("a%nb%hhn%d", &untouched, &untouched, 3);
    EXPECT_STREQ(data.get_data(), "ab3");
    EXPECT_EQ(untouched, 5);
}

TEST(Format, NamesANullText) {
    _WideString released;
    released.empty();
    _WideString wide;
    wide.format(u"<%s><%10s><%hs>"_w, released.arg(), nullptr, nullptr);
    EXPECT_EQ(wide.compare("<(null)><    (null)><(null)>"), 0);
    _DataString data;
    data.format("<%s><%-8ls>", nullptr, nullptr);
    EXPECT_STREQ(data.get_data(), "<(null)><(null)  >");
}

TEST(Format, CutsAt32767Units) {
    std::string const longText(40000, 'x');
    _DataString data;
    data.format("%s%d", longText.c_str(), 5);
    EXPECT_EQ(data.get_length(), 32767U);
    data.format("%050000d", 5);
    EXPECT_EQ(data.get_length(), 32767U);
    EXPECT_EQ(data.reverseFind('5'), -1);
    _WideString wide;
    wide.format(u"%2147483647s|%-*d"_w, u""_w, INT_MIN, 5);
    EXPECT_EQ(wide.get_length(), 32767U);
    EXPECT_EQ(wide.get_size(), 65536U);
    wide.format(u"%.2000000000f"_w, 0.5);
    EXPECT_EQ(wide.get_length(), 32767U);
}

TEST(Format, EndsAtAZeroThatItPrints) {
    _DataString data;
    data.format("ab%ccd", 0);
    EXPECT_STREQ(data.get_data(), "ab");
    EXPECT_EQ(data.get_length(), 2U);
}

TEST(Format, MayTakeItsOwnTextAsPatternAndArgument) {
    _WideString wide(u"[%s]"_w);
    wide.format(wide.arg(), wide.arg());
    EXPECT_EQ(wide.compare("[[%s]]"), 0);
    _DataString data("x");
    data.format("%s%s", data.get_data(), data.get_data());
    EXPECT_STREQ(data.get_data(), "xx");
    data.format(nullptr);
    ASSERT_NE(data.get_data(), nullptr);
    EXPECT_TRUE(data.isEmpty());
}

/// Sets a locale whose decimal point is a comma, one made for the purpose where the system has none.
bool setCommaLocale(TemporaryFolder const & folder) {
    for (char const * name : {"de_DE.UTF-8", "fr_FR.UTF-8", "made"}) {
        if (name == std::string("made")) {
            std::string const target = folder.path("made").string();
            setenv("LOCPATH", folder.path("").c_str(), 1);
            if (std::system(("localedef -i de_DE -f UTF-8 '" + target + "' >/dev/null 2>&1").c_str()) != 0) {
                return false;
            }
        }
        if (std::setlocale(LC_ALL, name) != nullptr && *std::localeconv()->decimal_point == ',') {
            return true;
        }
    }
    return false;
}

TEST(Format, LooksAtNoLocale) {
    TemporaryFolder const folder;
    if (!setCommaLocale(folder)) {
        GTEST_SKIP() << "no locale with a comma, and none could be made";
    }
    _DataString data;
    data.format("%.2f %g %e %a %.1Lf", 1234.5, 0.25, 1.5, 1.5, 2.5L);
    EXPECT_STREQ(data.get_data(), "1234.50 0.25 1.500000e+00 0x1.8p+0 2.5");
    EXPECT_EQ(_DataString("2.25").toDouble(), 2.25);
    EXPECT_STREQ(_DataString(0.5F).get_data(), "0.500000");
    std::setlocale(LC_ALL, "C");
}

} // namespace
