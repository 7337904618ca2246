#include "temporary_folder.h"
#include "text_testing.h"

#include <array>
#include <cfloat>
#include <climits>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <morvane/core/literals.h>
#include <string>
#include <vector>

using namespace morvane::literals;

namespace {

/// What the text of bytes makes of a pattern.
template <typename... Arguments>
std::string formatted(char const * pattern, Arguments... arguments) {
    _DataString data;
    data.format(pattern, arguments...);
    EXPECT_EQ(data.get_length(), std::strlen(data.get_data())) << pattern;
    return textOf(data);
}

/// What the text of 16-bit units makes of a pattern.
template <typename... Arguments>
std::u16string formatted(unsigned short int const * pattern, Arguments... arguments) {
    _WideString wide;
    wide.format(pattern, arguments...);
    EXPECT_EQ(wide.get_size(), (wide.get_length() + 1) * 2);
    return textOf(wide);
}

/// Holds both text classes against the C library's printf.
template <typename... Arguments>
void expectAsPrinted(std::string const & pattern, Arguments... arguments) {
    std::array<char, 40000> told{};
    std::snprintf(told.data(), told.size(), pattern.c_str(), arguments...);
    std::string const expected = told.data();
    ASSERT_EQ(formatted(pattern.c_str(), arguments...), expected) << pattern;
    ASSERT_EQ(formatted(_WideString(pattern.c_str()), arguments...), std::u16string(expected.begin(), expected.end()))
        << pattern;
}

/// Every flag set that C gives a meaning, with widths and precisions. At `%#g` some C libraries drop the zeros behind
/// the point when rounding carries into the exponent.
template <typename Value>
void expectAllAsPrinted(std::string const & size, std::string const & conversions, std::vector<Value> const & values) {
    for (char const conversion : conversions) {
        std::string const flags = std::strchr("eEfFaA", conversion) != nullptr ? "-+ #0"
                                  : std::strchr("digG", conversion) != nullptr ? "-+ 0"
                                                                               : "-#0";
        for (unsigned choice = 0; choice < 1U << flags.size(); ++choice) {
            std::string set = "[%";
            for (std::size_t flag = 0; flag < flags.size(); ++flag) {
                set.append(choice >> flag & (conversion != 'u' || flags[flag] != '#'), flags[flag]);
            }
            for (char const * extent : {"", "1", "30", ".", "9.0", "1.3", "30.15", ".40"}) {
                for (Value const value : values) {
                    expectAsPrinted(set + extent + size + conversion + "]", value);
                }
            }
        }
    }
}

TEST(Format, PrintsIntegersOfEverySizeAsTheCLibraryDoes) {
    for (char const * size : {"", "h", "hh"}) {
        expectAllAsPrinted<int>(size, "di", {0, 8, -1, 127, 128, -129, 255, 70000, INT_MAX, INT_MIN});
        expectAllAsPrinted<unsigned>(size, "ouxX", {0, 8, 255, 0x12345, 0xABCDEF01, UINT_MAX});
    }
    expectAllAsPrinted<long>("l", "d", {0, 5, -5, INT_MAX, INT_MIN});
    expectAllAsPrinted<unsigned long>("l", "uxo", {0, 5, UINT_MAX});
    expectAllAsPrinted<long long>("ll", "di", {0, -5, LLONG_MAX, LLONG_MIN});
    expectAllAsPrinted<std::uintmax_t>("j", "ouxX", {0, 77, UINTMAX_MAX});
    expectAllAsPrinted<std::size_t>("z", "ux", {0, 5, SIZE_MAX});
    expectAllAsPrinted<std::ptrdiff_t>("t", "d", {0, -5, PTRDIFF_MIN});
}

template <typename Float>
void expectFloatsAsPrinted(std::string const & size) {
    using Limits = std::numeric_limits<Float>;
    expectAllAsPrinted<Float>(size, "eEfFgGaA",
                              {0, Float(-1234.5678), Float(2.5), Float(9.5), Float(99.9999999), Float(0.000099995),
                               Float(1e22), Limits::max(), -Limits::min(), Limits::denorm_min(), Limits::infinity(),
                               Limits::quiet_NaN()});
    expectAsPrinted("%.1100" + size + "e", Limits::max());
}

TEST(Format, PrintsFloatsOfEverySizeAsTheCLibraryDoes) {
    std::setlocale(LC_NUMERIC, "C"); // for the C library's sake
    expectFloatsAsPrinted<double>("");
    expectFloatsAsPrinted<double>("l");
    expectFloatsAsPrinted<long double>("L");
    expectAsPrinted("%.20000Lf", LDBL_TRUE_MIN);
    expectAsPrinted("%.17000Le", LDBL_TRUE_MIN * 3);
    expectAsPrinted("%.5000Lg", LDBL_MAX);
    EXPECT_EQ(formatted("%#.2g %#G %#.3g %#.1g", 99.99, 999999.5, 100.0, 1e5), "1.0e+02 1.00000E+06 100. 1.e+05");
}

TEST(Format, PrintsTextCharactersAndPointersAsTheCLibraryDoes) {
    char const * const a = "a";
    char const * const text = "abcdef";
    EXPECT_EQ(formatted(u"%hs|%9hs|%-9hs|%.hs|%.2hs|%-5.50hs|"_w, "", text, text, text, text, a),
              u"|   abcdef|abcdef   ||ab|a    |");
    expectAsPrinted("%c|%5c|%-5c|%*c|%-*c", 'a', 'b', 'c', 4, 'd', -4, 'e');
    expectAsPrinted("%*d|%-*d|%*d|%.*d|%.*d|%.*d", 6, 42, 6, 42, -6, 42, 4, 42, 0, 0, -4, 42);
    expectAsPrinted("%p %20p %-20p|", static_cast<void *>(nullptr), reinterpret_cast<void *>(0x1234abcd),
                    reinterpret_cast<void *>(0xff));
    expectAsPrinted("100%% of %d%%", 7);
}

TEST(Format, TellsTextOf16BitsFromBytes) {
    EXPECT_EQ(
        formatted(u"%s|%ls|%hs|%c|%lc|%hc|%.2s"_w, u"\u4e2d\xd800"_w, u"w"_w, "b\xff", 0x4e2d, 0x4e2d, 0x1ff, u"xyz"_w),
        u"\u4e2d\xd800|w|b\u00ff|\u4e2d|\u4e2d|\u00ff|xy");
    EXPECT_EQ(formatted("%s|%hs|%ls|%c|%hc|%lc|%lc|%5ls|", "b\xff", "h", u"a\u00e9\u0100z"_w, 'c', 'd', 0xe9, 0x100,
                        u"\u0100"_w),
              "b\xff|h|a\xe9|c|d|\xe9||     |");
}

TEST(Format, ReadsNoTextBeyondItsPrecision) {
    std::vector<char> const bytes{'a', 'b', 'c'};
    std::vector<unsigned short int> const units{'a', 'b', 'c'};
    EXPECT_EQ(formatted("%.3s %.*ls", bytes.data(), 2, units.data()), "abc ab");
    EXPECT_EQ(formatted(u"%.3s %.*hs"_w, units.data(), 2, bytes.data()), u"abc ab");
}

TEST(Format, PrintsWhatIsNoDirectiveAsItStands) {
    for (char const * const unfinished : {"%", "5%", "%l", "%#08"}) {
        EXPECT_EQ(formatted(unfinished, 7), unfinished);
    }
    for (std::string const text : {"%y ", "%-08.3k", "%S%C", "%\xe9"}) {
        EXPECT_EQ(formatted((text + "%d").c_str(), 7), text + "7");
    }
    EXPECT_EQ(formatted(u"%\u4e2d%d"_w, 7), u"%\u4e2d7");
}

TEST(Format, GoesItsOwnWayWhereTheCLibraryDiffersOrHasNone) {
    EXPECT_EQ(formatted("%ld %lx", static_cast<long>(0x700000005), static_cast<long>(0x7FFFFFFFF)), "5 ffffffff")
        << "the low 32 bits of a long";
    int untouched = 5;
    EXPECT_EQ(formatted("a%nb%hhn%d", &untouched, &untouched, 3), "ab3");
    EXPECT_EQ(untouched, 5);
    EXPECT_EQ(formatted(u"<%s><%10s><%hs>"_w, nullptr, nullptr, nullptr), u"<(null)><    (null)><(null)>");
    EXPECT_EQ(formatted("<%s><%-8ls>", nullptr, nullptr), "<(null)><(null)  >");
    EXPECT_EQ(formatted("ab%ccd", 0), "ab") << "a zero ends the text";
    // Cut at 32,767 units.
    EXPECT_EQ(formatted("%s%d", std::string(40000, 'x').c_str(), 5), std::string(32767, 'x'));
    EXPECT_EQ(formatted("%050000d", 5), std::string(32767, '0'));
    EXPECT_EQ(formatted(u"%2147483647s|%-*d"_w, u""_w, INT_MIN, 5), std::u16string(32767, u' '));
    EXPECT_EQ(formatted(u"%.2000000000f"_w, 0.5), u"0.5" + std::u16string(32764, u'0'));
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

TEST(Format, LooksAtNoLocale) {
    // A locale whose decimal point is a comma, one made for the purpose where the system has none.
    if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) {
        TemporaryFolder const folder;
        setenv("LOCPATH", folder.path("").c_str(), 1);
        std::string const making = "localedef -i de_DE -f UTF-8 '" + folder.path("made").string() + "' >/dev/null 2>&1";
        if (std::system(making.c_str()) != 0 || std::setlocale(LC_ALL, "made") == nullptr) {
            GTEST_SKIP() << "no locale with a comma, and none could be made";
        }
    }
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    EXPECT_EQ(formatted("%.2f %g %e %a %.1Lf", 1234.5, 0.25, 1.5, 1.5, 2.5L), "1234.50 0.25 1.500000e+00 0x1.8p+0 2.5");
    EXPECT_EQ(_DataString("2.25").toDouble(), 2.25);
    EXPECT_STREQ(_DataString(0.5F).get_data(), "0.500000");
    std::setlocale(LC_ALL, "C");
}

} // namespace
