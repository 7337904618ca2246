#include "temporary_folder.h"

#include <array>
#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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

/// What the text of bytes makes of a pattern.
template <typename... Arguments>
std::string formatted(char const * pattern, Arguments... arguments) {
    _DataString data;
    data.format(pattern, arguments...);
    EXPECT_EQ(data.get_length(), std::strlen(data.get_data())) << pattern;
    return {data.get_data(), data.get_length()};
}

/// What the text of 16-bit units makes of a pattern.
template <typename... Arguments>
std::u16string formatted(WideText const & pattern, Arguments... arguments) {
    _WideString wide;
    wide.format(pattern.c_str(), arguments...);
    EXPECT_EQ(wide.get_size(), (wide.get_length() + 1) * 2);
    return {wide.arg(), wide.arg() + wide.get_length()};
}

std::u16string plain(std::string const & text) {
    return {text.begin(), text.end()};
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
    ASSERT_EQ(formatted(pattern.c_str(), arguments...), expected.data()) << pattern;
    ASSERT_EQ(formatted(widened(pattern), arguments...), plain(expected.data())) << pattern;
}

/// Every flag set, width and precision in front of `ending`.
std::vector<std::string> directives(std::string const & flags, std::vector<std::string> const & precisions,
                                    std::string const & ending) {
    std::vector<std::string> all;
    for (unsigned choice = 0; choice < 1U << flags.size(); ++choice) {
        std::string set;
        for (std::size_t flag = 0; flag < flags.size(); ++flag) {
            set.append(choice >> flag & 1, flags[flag]);
        }
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

template <typename Float>
std::vector<Float> floatValues() {
    using Limits = std::numeric_limits<Float>;
    std::vector<Float> values{Limits::max(),        Limits::min(),
                              Limits::denorm_min(), Limits::min() - 3 * Limits::denorm_min(),
                              Limits::infinity(),   Limits::quiet_NaN()};
    for (double const value : {0.0, 1.0, 0.5, 1.5, 2.5, 0.1, 9.5, 99.9999999, 0.00001234, 0.000099995, 123456.5,
                               999999.5, 1e15, 1e22, 3.0e100, 0x1.fffffep+3}) {
        values.push_back(static_cast<Float>(value));
    }
    std::uint64_t seed = 12345;
    for (int count = 0; count < 30; ++count) {
        seed = seed * 6364136223846793005U + 1442695040888963407U;
        Float const mantissa = static_cast<Float>(seed >> 1) + Limits::epsilon() * static_cast<Float>(seed >> 20);
        values.push_back(std::ldexp(mantissa, static_cast<int>(seed >> 40 & 0xFF) - 190));
    }
    for (std::size_t index = 0, positive = values.size(); index < positive; ++index) {
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

TEST(Format, PrintsFloatsOfEverySizeAsTheCLibraryDoes) {
    expectFloatsAsPrinted<double>("");
    expectFloatsAsPrinted<double>("l");
    expectFloatsAsPrinted<long double>("L");
    expectAsPrinted("%.20000Lf", LDBL_TRUE_MIN);
    expectAsPrinted("%.17000Le", LDBL_TRUE_MIN * 3);
    expectAsPrinted("%.5000Lg", LDBL_MAX);
    EXPECT_EQ(formatted("%#.2g %#G %#.3g %#.1g", 99.99, 999999.5, 100.0, 1e5), "1.0e+02 1.00000E+06 100. 1.e+05");
}

TEST(Format, PrintsTextCharactersAndPointersAsTheCLibraryDoes) {
    for (std::string const & directive : directives("-", {"", ".", ".0", ".2", ".50"}, "hs")) {
        std::string narrow = directive;
        narrow.erase(narrow.find('h'), 1);
        for (char const * text : {"", "a", "abcdef"}) {
            std::array<char, 100> expected{};
            std::snprintf(expected.data(), expected.size(), narrow.c_str(), text);
            EXPECT_EQ(formatted(directive.c_str(), text), expected.data()) << directive;
            EXPECT_EQ(formatted(widened(directive), text), plain(expected.data())) << directive;
        }
    }
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
    EXPECT_EQ(formatted("%ld %lx", 0x700000005L, 0x7FFFFFFFFL), "5 ffffffff") << "the low 32 bits of a long";
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
    EXPECT_EQ(formatted("%.2f %g %e %a %.1Lf", 1234.5, 0.25, 1.5, 1.5, 2.5L), "1234.50 0.25 1.500000e+00 0x1.8p+0 2.5");
    EXPECT_EQ(_DataString("2.25").toDouble(), 2.25);
    EXPECT_STREQ(_DataString(0.5F).get_data(), "0.500000");
    std::setlocale(LC_ALL, "C");
}

} // namespace
