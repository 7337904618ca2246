#include "counting_heap.h"
#include "ordinary_allocator.h"
#include "stream_testing.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <morvane/core/lifecycle.h>
#include <morvane/core/literals.h>
#include <morvane/core/memory.h>
#include <morvane/strings/data_string.h>
#include <morvane/strings/text_builder.h>
#include <morvane/strings/text_view.h>
#include <morvane/strings/wide_string.h>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

using namespace morvane::literals;

namespace {

template <typename String>
using UnitOf = std::remove_cvref_t<decltype(*std::declval<String>().get_data())>;

/// The plain text that a text object is held against, and the form in which constants are written here.
template <typename String>
using Model = std::basic_string<UnitOf<String>>;

template <typename String>
Model<String> units(std::string_view text) {
    return Model<String>(text.begin(), text.end());
}

/// A live text with these units, zeros among them included.
template <typename String>
String fromModel(Model<String> const & model) {
    String text(UnitOf<String>{'x'}, static_cast<std::int32_t>(model.size()));
    std::copy(model.begin(), model.end(), text.get_data());
    return text;
}

template <typename String>
String textOf(std::string_view text) {
    return fromModel<String>(units<String>(text));
}

template <typename String>
Model<String> modelOf(String const & text) {
    return text.get_data() == nullptr ? Model<String>() : Model<String>(text.get_data(), text.get_length());
}

template <typename String>
std::string shown(Model<String> const & model) {
    std::string text;
    for (auto const unit : model) {
        text += unit == 0 ? '0' : static_cast<char>(unit);
    }
    return text;
}

/// Live, zero-closed, exact in size, and equal to `expected`, in which 0 stands for a zero unit.
template <typename String>
void expectText(String const & text, std::string_view expected) {
    ASSERT_NE(text.get_data(), nullptr);
    EXPECT_EQ(shown<String>(modelOf(text)), expected);
    EXPECT_EQ(text.get_data()[text.get_length()], 0);
    if constexpr (std::is_same_v<String, _WideString>) {
        EXPECT_EQ(text.get_size(), (text.get_length() + 1) * 2);
    }
}

template <typename String>
void expectReleased(String const & text) {
    EXPECT_EQ(text.get_data(), nullptr);
    EXPECT_EQ(text.get_length(), 0U);
    if constexpr (std::is_same_v<String, _WideString>) {
        EXPECT_EQ(text.get_size(), 0U);
    }
}

template <typename String>
String released() {
    String text;
    text.empty();
    return text;
}

/// Each test runs for both text classes and leaves no block behind in the heap.
template <typename T>
class Text : public testing::Test {
private:
    counting_heap::LeakCheck leakCheck;
};

using Both = testing::Types<_WideString, _DataString>;
TYPED_TEST_SUITE(Text, Both);

TYPED_TEST(Text, StartsAsItsClassTells) {
    using Unit = UnitOf<TypeParam>;
    if constexpr (std::is_same_v<TypeParam, _WideString>) {
        expectText(_WideString(), "");
        expectText(_WideString(static_cast<unsigned short int const *>(nullptr)), "");
        expectText(_WideString(static_cast<char const *>(nullptr)), "");
        expectText(_WideString::createStr(nullptr), "");
        expectText(_WideString(u"ab"_w, 3), "ababab");
        expectText(_WideString(u"ab"_w, 0), "");
        expectText(_WideString(u"ab"_w, -1), "");
        expectText(_WideString(static_cast<unsigned short int const *>(nullptr), 3), "");
        expectText(_WideString("bytes"), "bytes");
        EXPECT_EQ(_WideString("\xe9\xff").getAt(1), 0xff);
        expectText(_WideString(std::int32_t{-5}), "-5");
        expectText(_WideString(std::int32_t{INT_MIN}), "-2147483648");
    } else {
        expectReleased(_DataString());
        expectReleased(_DataString(static_cast<char const *>(nullptr)));
        expectReleased(_DataString::createStr(nullptr));
        _DataString text("abc");
        text = static_cast<char const *>(nullptr);
        expectReleased(text);
        text.add(std::int32_t{-5});
        expectText(text, "-5");
        EXPECT_TRUE(text.equals(_Object()));
        expectText(text.toString(), "");
    }
    TypeParam const text(units<TypeParam>("abc").c_str());
    expectText(text, "abc");
    expectText(TypeParam(text), "abc");
    TypeParam const none = released<TypeParam>();
    expectText(TypeParam(none), "");
    expectText(TypeParam(Unit{'x'}, 3), "xxx");
    expectText(TypeParam(Unit{'x'}, 0), "");
    expectText(TypeParam(Unit{'x'}, -3), "");
    expectText(TypeParam::createStr(units<TypeParam>("abc").c_str()), "abc");
    expectText(TypeParam(std::uint32_t{255}), "#000000ff");
    expectText(TypeParam(std::uint32_t{0xFEDCBA98}), "#fedcba98");
    expectText(TypeParam(true), "true");
    expectText(TypeParam(false), "false");
    expectText(TypeParam(0.5F), "0.500000");
    expectText(TypeParam(-3.4028235e38F), "-340282346638528859811704183484516925440.000000");
}

TYPED_TEST(Text, MovesItsBuffer) {
    TypeParam source = textOf<TypeParam>("abc");
    auto const * const buffer = source.get_data();
    TypeParam target(std::move(source));
    EXPECT_EQ(target.get_data(), buffer);
    expectReleased(source); // NOLINT(bugprone-use-after-move): the state is told.
    TypeParam other = textOf<TypeParam>("old");
    other = std::move(target);
    expectText(other, "abc");
    other = released<TypeParam>();
    expectText(other, "");
}

TYPED_TEST(Text, IsSafeAgainstItself) {
    auto const original = textOf<TypeParam>("abcabc");
    auto const check = [&original](std::function<void(TypeParam &)> const & act, char const * expected) {
        TypeParam text(original);
        act(text);
        expectText(text, expected);
    };
    check([](TypeParam & text) { text = *&text; }, "abcabc");
    check([](TypeParam & text) { text.copy(text); }, "abcabc");
    check([](TypeParam & text) { text = text.get_data() + 2; }, "cabc");
    check([](TypeParam & text) { text.add(text); }, "abcabcabcabc");
    check([](TypeParam & text) { text += text; }, "abcabcabcabc");
    check([](TypeParam & text) { text.add(text.get_data() + 4); }, "abcabcbc");
    check([](TypeParam & text) { text.insert(1, text.get_data() + 4); }, "abcbcabc");
    check([](TypeParam & text) { text.remove(text.get_data() + 4); }, "aa");
    check([](TypeParam & text) { text.replace(text.get_data() + 5, text.get_data() + 3); }, "ababcababc");
    TypeParam text = released<TypeParam>();
    text = *&text;
    expectText(text, "");
}

TYPED_TEST(Text, ReadsAsEmptyWhenReleased) {
    using Unit = UnitOf<TypeParam>;
    Unit const * const null = nullptr;
    auto const word = units<TypeParam>("a");
    auto mutableWord = units<TypeParam>("a");
    TypeParam text = released<TypeParam>();
    EXPECT_TRUE(text.isEmpty());
    EXPECT_EQ(text.compare(word.c_str()), -1);
    EXPECT_EQ(text.compare(null), 0);
    EXPECT_LT(text.compareNoCase(word.c_str()), 0);
    EXPECT_EQ(text.compareNoCase(null), 0);
    EXPECT_EQ(textOf<TypeParam>("a").compare(null), 1);
    EXPECT_EQ(text.find(Unit{'a'}), -1);
    EXPECT_EQ(text.find(Unit{0}), -1);
    EXPECT_EQ(text.find(word.c_str()), -1);
    EXPECT_EQ(text.findOneOf(word.c_str()), -1);
    EXPECT_EQ(text.findOneOf(null), -1);
    EXPECT_EQ(text.reverseFind(Unit{'a'}), -1);
    EXPECT_EQ(text.reverseFind(Unit{0}), 0);
    EXPECT_EQ(text.getAt(0), 0);
    EXPECT_EQ(text[0], 0);
    expectText(text.mid(0), "");
    expectText(text.mid(0, 5), "");
    expectText(text.left(1), "");
    expectText(text.right(1), "");
    expectText(text.extract(0, 3), "");
    EXPECT_FALSE(text.isDecimalNumber());
    EXPECT_FALSE(text.isFloatNumber());
    EXPECT_FALSE(text.isHexNumber());
    EXPECT_FALSE(text.toBoolean());
    EXPECT_EQ(text.toInteger(), 0);
    EXPECT_EQ(text.toLongWord(), 0U);
    EXPECT_EQ(text.toDouble(), 0);
    text.setAt(0, Unit{'a'});
    text.makeUpper();
    text.makeLower();
    text.makeReverse();
    EXPECT_EQ(text.remove(Unit{'a'}), 0);
    EXPECT_EQ(text.remove(mutableWord.data()), 0);
    EXPECT_EQ(text.replace(Unit{'a'}, Unit{'b'}), 0);
    EXPECT_EQ(text.replace(mutableWord.data(), mutableWord.data()), 0);
    EXPECT_EQ(text.replaceAll(Unit{'a'}), 0);
    text.add(TypeParam(text));
    text.empty();
    text.add(released<TypeParam>());
    expectReleased(text);

    struct Case {
        std::function<void(TypeParam &)> act;
        char const * expected;
    };
    for (Case const & each :
         {Case{[](TypeParam & t) { t.add(textOf<TypeParam>("ab")); }, "ab"},
          Case{[](TypeParam & t) { t.add(textOf<TypeParam>("")); }, ""},
          Case{[](TypeParam & t) { t.add(Unit{'x'}, 2); }, "xx"}, Case{[](TypeParam & t) { t.add(Unit{'x'}, 0); }, ""},
          Case{[](TypeParam & t) { t.add(true); }, "true"}, Case{[](TypeParam & t) { t.insert(3, Unit{'x'}); }, "x"},
          Case{[](TypeParam & t) { t.insert(3, static_cast<Unit const *>(nullptr)); }, ""},
          Case{[](TypeParam & t) { t.deleteArray(0, 1); }, ""}, Case{[](TypeParam & t) { t = Unit{'x'}; }, "x"}}) {
        text.empty();
        each.act(text);
        expectText(text, each.expected);
    }
    text.empty();
    text.add(null);
    if constexpr (std::is_same_v<TypeParam, _WideString>) {
        expectText(text, "");
    } else {
        expectReleased(text);
    }
}

TYPED_TEST(Text, LimitsPositionsAndCounts) {
    using Unit = UnitOf<TypeParam>;
    TypeParam text = textOf<TypeParam>("abcdef");
    expectText(text.mid(2, 100), "cdef");
    expectText(text.mid(2, INT_MAX), "cdef");
    expectText(text.mid(2, -1), "");
    expectText(text.mid(-1, 3), "");
    expectText(text.mid(INT_MIN), "");
    expectText(text.mid(6), "");
    expectText(text.mid(5), "f");
    expectText(text.left(100), "abcdef");
    expectText(text.left(0), "");
    expectText(text.left(-1), "");
    expectText(text.right(2), "ef");
    expectText(text.right(6), "abcdef");
    expectText(text.right(7), "");
    expectText(text.right(0), "");
    expectText(text.right(INT_MIN), "");
    expectText(text.extract(2, 2), "c");
    expectText(text.extract(2, 1), "");
    expectText(text.extract(0, INT_MAX), "abcdef");
    expectText(text.extract(INT_MIN, INT_MAX), "");
    EXPECT_EQ(text.getAt(6), 0);
    EXPECT_EQ(text.getAt(7), 0);
    EXPECT_EQ(text.getAt(static_cast<decltype(text.get_length())>(-1) >> 1), 0);
    text.setAt(6, Unit{'x'});
    text.setAt(-1, Unit{'x'});
    expectText(text, "abcdef");
    EXPECT_EQ(text.find(Unit{'a'}, -5), 0);
    EXPECT_EQ(text.find(Unit{'f'}, 5), 5);
    EXPECT_EQ(text.find(Unit{'f'}, 6), -1);
    EXPECT_EQ(text.find(Unit{0}, 5), 6);
    EXPECT_EQ(text.find(Unit{0}, 6), -1);
    EXPECT_EQ(text.find(units<TypeParam>("f").c_str(), 6U), -1);
    EXPECT_EQ(text.find(units<TypeParam>("a").c_str(), UINT_MAX), -1);
    EXPECT_EQ(text.reverseFind(Unit{0}), 6);

    struct Case {
        std::int32_t start;
        std::int32_t count;
        char const * expected;
    };
    for (Case const & each : {Case{0, 6, ""},
                              {0, 100, ""},
                              {2, INT_MAX, "ab"},
                              {-2, 3, "bcdef"},
                              {-2, 1, "abcdef"},
                              {3, -2, "abcdef"},
                              {9, 5, "abcdef"},
                              {9, -9, "abcdef"},
                              {INT_MIN, INT_MAX, "abcdef"},
                              {1, 2, "adef"},
                              {6, 1, "abcdef"}}) {
        TypeParam edited(text);
        EXPECT_EQ(static_cast<std::size_t>(edited.deleteArray(each.start, each.count)), std::strlen(each.expected));
        expectText(edited, each.expected);
    }
    for (Case const & each :
         {Case{-5, 0, "xabcdef"}, {0, 0, "xabcdef"}, {3, 0, "abcxdef"}, {6, 0, "abcdefx"}, {INT_MAX, 0, "abcdefx"}}) {
        TypeParam edited(text);
        EXPECT_EQ(edited.insert(each.start, Unit{'x'}), 7);
        expectText(edited, each.expected);
    }
    text.add(Unit{'x'}, -3);
    expectText(text, "abcdef");
}

TYPED_TEST(Text, FindsEmptyTextAsItsClassTells) {
    auto const empty = units<TypeParam>("");
    TypeParam const text = textOf<TypeParam>("ab");
    EXPECT_EQ(text.find(empty.c_str()), 0);
    EXPECT_EQ(text.find(empty.c_str(), 1U), 1);
    EXPECT_EQ(text.find(empty.c_str(), 3U), -1);
    bool const isWide = std::is_same_v<TypeParam, _WideString>;
    EXPECT_EQ(text.find(empty.c_str(), 2U), isWide ? -1 : 2);
    EXPECT_EQ(textOf<TypeParam>("").find(empty.c_str()), isWide ? -1 : 0);
    EXPECT_EQ(released<TypeParam>().find(empty.c_str()), isWide ? -1 : 0);
    EXPECT_EQ(text.find(static_cast<UnitOf<TypeParam> const *>(nullptr), 1U), 1);
}

TYPED_TEST(Text, ReplacesNothingForEmptyText) {
    auto empty = units<TypeParam>("");
    auto word = units<TypeParam>("xx");
    TypeParam text = textOf<TypeParam>("ab");
    EXPECT_EQ(text.replace(empty.data(), word.data()), 0);
    EXPECT_EQ(text.replace(static_cast<UnitOf<TypeParam> *>(nullptr), word.data()), 0);
    EXPECT_EQ(text.remove(empty.data()), 0);
    expectText(text, "ab");
    word = units<TypeParam>("b");
    EXPECT_EQ(text.replace(word.data(), static_cast<UnitOf<TypeParam> *>(nullptr)), 1);
    expectText(text, "a");
}

TYPED_TEST(Text, DoesNotSearchWhatItPutIn) {
    auto from = units<TypeParam>("aa");
    auto to = units<TypeParam>("aaaa");
    TypeParam text = textOf<TypeParam>("aaaaa");
    EXPECT_EQ(text.replace(from.data(), to.data()), 2);
    expectText(text, "aaaaaaaaa");
    EXPECT_EQ(text.replace(UnitOf<TypeParam>{'a'}, UnitOf<TypeParam>{'a'}), 9);
}

// Two zeros stand inside these texts; 0 shows one.
TYPED_TEST(Text, CarriesInnerZerosAsTold) {
    using Unit = UnitOf<TypeParam>;
    Model<TypeParam> const model = units<TypeParam>(std::string_view("ab\0cde\0f", 8));
    TypeParam const text = fromModel<TypeParam>(model);
    auto const edited = [&text](std::function<void(TypeParam &)> const & act) {
        TypeParam copy(text);
        act(copy);
        return copy;
    };
    expectText(TypeParam(text), "ab0cde0f");
    expectText(text.mid(1, 5), "b0cde");
    // What is appended goes to the first zero, closed by one of its own; the rest stays, and zeros fill up the sum.
    expectText(edited([](TypeParam & t) { t.add(units<TypeParam>("xy").c_str()); }), "abxy0e0f00");
    expectText(edited([](TypeParam & t) { t.add(Unit{'x'}, 1); }), "abx0de0f0");
    expectText(edited([&text](TypeParam & t) { t.add(text); }), "abab0e0f00000000");
    expectText(edited([](TypeParam & t) { t.insert(1, Unit{'x'}); }), "axb000000");
    expectText(edited([](TypeParam & t) { t.insert(8, Unit{'x'}); }), "abx0de0f0");
    expectText(edited([](TypeParam & t) { t.deleteArray(4, 2); }), "ab0c00");
    expectText(edited([](TypeParam & t) { t.deleteArray(0, 3); }), "cde00");
    expectText(edited([](TypeParam & t) { EXPECT_EQ(t.remove(Unit{'d'}), 1); }), "abcef00");
    expectText(edited([](TypeParam & t) { EXPECT_EQ(t.remove(Unit{0}), 2); }), "abcdef");
    expectText(edited([](TypeParam & t) { EXPECT_EQ(t.replace(Unit{'f'}, Unit{'g'}), 1); }), "ab0cde0g");
    expectText(edited([](TypeParam & t) { EXPECT_EQ(t.replaceAll(Unit{'x'}), 8); }), "xx0cde0f");
    expectText(edited([](TypeParam & t) { t.makeReverse(); }), "ba0cde0f");
    expectText(edited([](TypeParam & t) { t.makeUpper(); }), "AB0cde0f");
    auto b = units<TypeParam>("b");
    auto c = units<TypeParam>("c");
    expectText(edited([&](TypeParam & t) { EXPECT_EQ(t.replace(b.data(), c.data()), 1); }), "ac000000");
    expectText(edited([&](TypeParam & t) { EXPECT_EQ(t.replace(c.data(), b.data()), 0); }), "ab0cde0f");
    EXPECT_EQ(text.compare(units<TypeParam>("ab").c_str()), 0);
    EXPECT_EQ(text.find(Unit{'c'}), -1);
    EXPECT_EQ(text.find(Unit{'c'}, 3), 3);
    EXPECT_EQ(text.find(Unit{'f'}, 3), -1);
    EXPECT_EQ(text.find(Unit{0}), 2);
    EXPECT_EQ(text.find(c.c_str()), -1);
    EXPECT_EQ(text.find(units<TypeParam>("cd").c_str(), 3U), 3);
    EXPECT_EQ(text.findOneOf(units<TypeParam>("fc").c_str()), -1);
    EXPECT_EQ(text.reverseFind(Unit{'f'}), -1);
    EXPECT_EQ(text.reverseFind(Unit{'b'}), 1);
    EXPECT_FALSE(fromModel<TypeParam>(units<TypeParam>(std::string_view("1\0", 2))).isDecimalNumber());
}

/// A long run of random edits and questions, each held against the plain model.
TYPED_TEST(Text, AgreesWithAPlainModel) {
    using Unit = UnitOf<TypeParam>;
    std::mt19937 random(20240229);
    auto const pick = [&random](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
    auto const randomText = [&pick](int longest) {
        Model<TypeParam> text;
        for (int count = pick(0, longest); count > 0; --count) {
            text += static_cast<Unit>(pick(0, 20) == 0 ? 0xE9 : "abAz"[pick(0, 3)]);
        }
        return text;
    };
    auto const fold = [](Model<TypeParam> text) {
        for (Unit & unit : text) {
            unit = static_cast<Unit>(unit >= 'A' && unit <= 'Z' ? unit + 32 : unit);
        }
        return text;
    };
    auto const index = [](std::size_t found) { return static_cast<std::int32_t>(found); };
    auto const sign = [](int value) { return (value > 0) - (value < 0); };
    // Unsigned order for bytes too.
    auto const order = [](Model<TypeParam> const & a, Model<TypeParam> const & b) {
        using Number = std::make_unsigned_t<Unit>;
        auto const less = [](Unit x, Unit y) { return static_cast<Number>(x) < static_cast<Number>(y); };
        bool const below = std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), less);
        return below ? -1 : a == b ? 0 : 1;
    };

    TypeParam text;
    text = Unit{'a'};
    Model<TypeParam> model(1, Unit{'a'});
    for (int step = 0; step < 20000; ++step) {
        Model<TypeParam> piece = randomText(pick(0, 9) == 0 ? 40 : 3);
        auto const start = static_cast<std::size_t>(pick(0, static_cast<int>(model.size())));
        auto const count = static_cast<std::size_t>(pick(0, 12));
        auto const unit = static_cast<Unit>("abAz"[pick(0, 3)]);
        switch (pick(0, 9)) {
        case 0:
            text.add(piece.c_str());
            model += piece;
            break;
        case 1:
            EXPECT_EQ(text.insert(index(start), piece.c_str()), index(model.size() + piece.size()));
            model.insert(start, piece);
            break;
        case 2:
            text.deleteArray(index(start), index(count));
            model.erase(start, count);
            break;
        case 3: {
            EXPECT_EQ(text.remove(unit), index(static_cast<std::size_t>(std::count(model.begin(), model.end(), unit))));
            std::erase(model, unit);
            break;
        }
        case 4: {
            Model<TypeParam> to = randomText(4);
            int hits = 0;
            for (std::size_t at = 0; !piece.empty() && (at = model.find(piece, at)) != model.npos; at += to.size()) {
                model.replace(at, piece.size(), to);
                ++hits;
            }
            EXPECT_EQ(text.replace(piece.data(), to.data()), hits);
            break;
        }
        case 5:
            text.makeReverse();
            std::reverse(model.begin(), model.end());
            break;
        case 6:
            text.makeLower();
            model = fold(model);
            break;
        case 7:
            text = text.mid(index(start), index(count + 60));
            model = start < model.size() ? model.substr(start, count + 60) : Model<TypeParam>();
            break;
        case 8:
            text.replace(unit, Unit{'A'});
            std::replace(model.begin(), model.end(), unit, Unit{'A'});
            break;
        default:
            text.add(unit, index(count));
            model.append(count, unit);
            break;
        }
        ASSERT_EQ(modelOf(text), model) << step;
        ASSERT_EQ(text.get_data()[model.size()], 0) << step;

        if (start < model.size()) {
            EXPECT_EQ(text.find(unit, index(start)), index(model.find(unit, start)));
            EXPECT_EQ(text.find(piece.c_str(), static_cast<std::uint32_t>(start)), index(model.find(piece, start)));
        }
        EXPECT_EQ(text.reverseFind(unit), index(model.rfind(unit)));
        EXPECT_EQ(text.findOneOf(piece.c_str()), index(model.find_first_of(piece)));
        EXPECT_EQ(text.compare(piece.c_str()), order(model, piece));
        EXPECT_EQ(text.compare(model.c_str()), 0);
        EXPECT_EQ(sign(text.compareNoCase(piece.c_str())), order(fold(model), fold(piece)));
        EXPECT_EQ(modelOf(text.right(index(count))),
                  count <= model.size() ? model.substr(model.size() - count) : Model<TypeParam>());
        if (model.size() > 200) {
            text.empty();
            text.add(Unit{'z'}, 1);
            model.assign(1, Unit{'z'});
        }
    }
}

TYPED_TEST(Text, ReadsNumbersAsTold) {
    struct Case {
        char const * text;
        bool isDecimal, isFloat, isHex;
        std::int32_t integer;
        std::uint32_t longWord;
        double value;
    };
    for (Case const & each : {Case{"", false, false, false, 0, 0, 0},
                              {"0", true, true, true, 0, 0, 0},
                              {"42", true, true, true, 42, 0, 42},
                              {"-5", false, false, false, 0, 0, 0},
                              {"+5", false, false, false, 0, 0, 0},
                              {" 5", false, false, false, 0, 0, 0},
                              {"4294967295", true, true, true, -1, 0, 4294967295.0},
                              {"4294967299", true, true, true, 3, 0, 4294967299.0},
                              {"100000000000000000000000000007", true, true, true, -1610612729, 0, 1e29},
                              {"1.5", false, true, false, 0, 0, 1.5},
                              {".5", false, true, false, 0, 0, 0.5},
                              {"5.", false, true, false, 0, 0, 5},
                              {"1.25.75", false, true, false, 0, 0, 1.25},
                              {".", false, true, false, 0, 0, 0},
                              {"..5", false, true, false, 0, 0, 0},
                              {"1e5", false, false, true, 0, 0, 0},
                              {"inf", false, false, false, 0, 0, 0},
                              {"abcDEF", false, false, true, 0, 0, 0},
                              {"0x10", false, false, false, 0, 0, 0},
                              {"#000000ff", false, false, false, 0, 255, 0},
                              {"#FFFFFFFF", false, false, false, 0, UINT_MAX, 0},
                              {"#0000000g", false, false, false, 0, 0, 0},
                              {"#00000ff", false, false, false, 0, 0, 0},
                              {"#0000000ff", false, false, false, 0, 0, 0},
                              {"0x89abCDEF", false, false, false, 0, 0x89ABCDEF, 0},
                              {"0X0000000A", false, false, false, 0, 10, 0},
                              {"1x0000000A", false, false, false, 0, 0, 0},
                              {"000000ff", false, false, true, 0, 0, 0},
                              {"g", false, false, false, 0, 0, 0}}) {
        TypeParam const text = textOf<TypeParam>(each.text);
        EXPECT_EQ(text.isDecimalNumber(), each.isDecimal) << each.text;
        EXPECT_EQ(text.isFloatNumber(), each.isFloat) << each.text;
        EXPECT_EQ(text.isHexNumber(), each.isHex) << each.text;
        EXPECT_EQ(text.toInteger(), each.integer) << each.text;
        EXPECT_EQ(text.toLongWord(), each.longWord) << each.text;
        EXPECT_EQ(text.toDouble(), each.value) << each.text;
        EXPECT_EQ(text.toFloat(), static_cast<float>(each.value)) << each.text;
    }
    for (char const * word : {"true", "TRUE", "tRuE"}) {
        EXPECT_TRUE(textOf<TypeParam>(word).toBoolean());
    }
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

TYPED_TEST(Text, RoundsDecimalNumbersOfAnyLength) {
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

TYPED_TEST(Text, EndsReleasedWhenTheHeapRefuses) {
    using Unit = UnitOf<TypeParam>;
    auto word = units<TypeParam>("bc");
    auto longWord = units<TypeParam>(std::string(300, 'y'));
    TypeParam const source = textOf<TypeParam>(std::string(500, 'b') + std::string(200, 'c'));
    std::vector<std::function<void(TypeParam &)>> const acts{
        [&](TypeParam & t) { t = source; },
        [&](TypeParam & t) { t.copy(t); },
        [&](TypeParam & t) { t = word.c_str(); },
        [&](TypeParam & t) { t = Unit{'a'}; },
        [&](TypeParam & t) { t = 0.5F; },
        [&](TypeParam & t) { t.add(source); },
        [&](TypeParam & t) { t.add(t); },
        [&](TypeParam & t) { t += Unit{'a'}; },
        [&](TypeParam & t) { t.add(longWord.c_str()); },
        [&](TypeParam & t) { t.add(std::string(300, 'y').c_str()); },
        [&](TypeParam & t) { EXPECT_EQ(t.insert(1, word.c_str()), 0); },
        [&](TypeParam & t) { EXPECT_EQ(t.deleteArray(0, 1), 0); },
        [&](TypeParam & t) { EXPECT_EQ(t.remove(Unit{'b'}), 500); },
        [&](TypeParam & t) { EXPECT_EQ(t.replace(word.data(), longWord.data()), 1); },
        [&](TypeParam & t) { EXPECT_EQ(t.replace(units<TypeParam>("b").data(), longWord.data()), 500); },
        [&](TypeParam & t) { t.format(units<TypeParam>("%d").c_str(), 5); },
        [&](TypeParam & t) {
            morvane::TextBuilder<Unit> builder;
            builder.append(morvane::viewOf(source));
            EXPECT_FALSE(builder.moveTo(t));
        }};
    for (std::size_t act = 0; act < acts.size(); ++act) {
        TypeParam text(source);
        counting_heap::refuseAfter(0);
        ordinary_allocator::servedBeforeRefusal = 0;
        acts[act](text);
        TypeParam const copy(source);
        counting_heap::serveAll();
        ordinary_allocator::servedBeforeRefusal = -1;
        expectReleased(text);
        expectReleased(copy);
    }
    // One block of scratch for the positions is served, the buffer is refused.
    TypeParam text(source);
    counting_heap::refuseAfter(1);
    ordinary_allocator::servedBeforeRefusal = 0;
    EXPECT_EQ(text.remove(units<TypeParam>("b").data()), 500);
    counting_heap::serveAll();
    ordinary_allocator::servedBeforeRefusal = -1;
    expectReleased(text);
}

/// Blocks of the heap that the class takes its buffers from.
template <typename String>
long liveBuffers() {
    return std::is_same_v<String, _WideString> ? counting_heap::liveBlocks() : ordinary_allocator::liveBlocks.load();
}

TYPED_TEST(Text, KeepsExactlyOneBufferAlive) {
    constexpr bool isWide = std::is_same_v<TypeParam, _WideString>;
    auto const counted = [] {
        return globalProcessMemory->heapAllocationCount() - globalProcessMemory->heapUnallocationCount();
    };
    long const blocksBefore = liveBuffers<TypeParam>();
    auto const countBefore = counted();
    auto word = units<TypeParam>("b");
    auto to = units<TypeParam>("xyz");
    TypeParam text = textOf<TypeParam>("abcb");
    text.add(text);
    text.insert(2, to.c_str());
    text.replace(word.data(), to.data());
    text.remove(word[0]);
    text.format(units<TypeParam>("%s!").c_str(), text.get_data());
    EXPECT_EQ(liveBuffers<TypeParam>(), blocksBefore + 1);
    EXPECT_EQ(counted(), countBefore + (isWide ? 1 : 0));
    text.empty();
    EXPECT_EQ(liveBuffers<TypeParam>(), blocksBefore);
    EXPECT_EQ(counted(), countBefore);
}

TYPED_TEST(Text, CountsAsReleasedBeyond32BitsOfBytes) {
    TypeParam huge = released<TypeParam>();
    huge.set_length(UINT_MAX);
    auto one = units<TypeParam>("x");
    huge.set_data(one.data());
    TypeParam text = textOf<TypeParam>("abc");
    text.copy(huge);
    expectReleased(text);
    if constexpr (std::is_same_v<TypeParam, _WideString>) {
        huge.set_length(UINT_MAX / 2);
        text.copy(huge);
        expectReleased(text);
        expectReleased(_WideString(u'x', INT_MAX));
        expectReleased(_WideString(u"abcd"_w, INT_MAX));
        text = u"abc"_w;
        text.add(u'x', INT_MAX);
        expectReleased(text);
    }
    huge.set_data(nullptr);
    huge.set_length(0);
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
}

TEST(DataString, WidensEveryByte) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) {
        all += static_cast<char>(byte);
    }
    _WideString const wide = textOf<_DataString>(all).toWideString();
    ASSERT_EQ(wide.get_length(), 256U);
    for (std::int32_t index = 0; index < 256; ++index) {
        EXPECT_EQ(wide.getAt(index), index);
    }
    expectText(released<_DataString>().toWideString(), "");
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
    struct Case {
        char const * text;
        // t tag, c comment, D document type, C CDATA, p instruction, e empty, b beginning, n ending
        char const * holds;
    };
    for (Case const & each : {Case{"", ""},
                              {"<", ""},
                              {">", ""},
                              {"<>", "tb"},
                              {"</>", "tebn"},
                              {"<//>", "tebn"},
                              {"<a/>", "teb"},
                              {"</a>", "tbn"},
                              {"</a/>", "tebn"},
                              {"<!--->", "tb"},
                              {"<!---->", "tcb"},
                              {"<!--x-->", "tcb"},
                              {"<?>", "tb"},
                              {"<?"
                               "?>",
                               "tpb"},
                              {"<?xml?>", "tpb"},
                              {"<![CDATA[]]>", "tCb"},
                              {"<![CDATA[]>", "tb"},
                              {"<![cdata[]]>", "tb"},
                              {"<!DOCTYPE]>", "tDb"},
                              {"<!DOCTYPE a>", "tb"},
                              {"<!doctype]>", "tb"},
                              {"<!DOCTYPE>", "tb"},
                              {"a<b>", ""},
                              {"<a> ", ""}}) {
        _WideString const text(each.text);
        std::string holds;
        holds += text.isDOMTag() ? "t" : "";
        holds += text.isDOMComment() ? "c" : "";
        holds += text.isDOMDocumentType() ? "D" : "";
        holds += text.isDOMCDATASection() ? "C" : "";
        holds += text.isDOMProcessingInstruction() ? "p" : "";
        holds += text.isDOMElement(_WideString::TAG_STATUS_EMPTY) ? "e" : "";
        holds += text.isDOMElement(_WideString::TAG_STATUS_BEGINNING) ? "b" : "";
        holds += text.isDOMElement(_WideString::TAG_STATUS_ENDING) ? "n" : "";
        EXPECT_EQ(holds, each.holds) << each.text;
        EXPECT_FALSE(text.isDOMElement(static_cast<_WideString::TagStatus>(3)));
        EXPECT_TRUE(text.isDOMText() && text.isDOMAttribute() && text.isDOMEntityReference());
    }
    EXPECT_FALSE(released<_WideString>().isDOMTag());
}

TEST(TextBuilder, HandsOverWhatItGathered) {
    std::u16string model;
    morvane::WideBuilder builder;
    std::mt19937 random(5);
    for (int step = 0; step < 2000; ++step) {
        std::size_t const count = random() % 50;
        auto const unit = static_cast<unsigned short int>('a' + random() % 26);
        std::vector<unsigned short int> const piece(count, unit);
        switch (random() % 3) {
        case 0:
            builder.append({piece.data(), count});
            model.append(count, unit);
            break;
        case 1:
            builder.append(unit);
            model.append(1, unit);
            break;
        default:
            builder.append(unit, count);
            model.append(count, unit);
            break;
        }
    }
    _WideString text;
    ASSERT_TRUE(builder.moveTo(text));
    EXPECT_EQ(std::u16string(text.arg(), text.arg() + text.get_length()), model);
    EXPECT_EQ(text.get_size(), (model.size() + 1) * 2);
    EXPECT_EQ(builder.length(), 0U);
    ASSERT_TRUE(builder.moveTo(text));
    expectText(text, "");

    long const blocks = counting_heap::liveBlocks();
    builder.append(u'a', 1000);
    counting_heap::refuseAfter(0);
    builder.append(u'b', 1000);
    counting_heap::serveAll();
    EXPECT_TRUE(builder.hasFailed());
    builder.append(u'c');
    EXPECT_FALSE(builder.moveTo(text));
    expectReleased(text);
    EXPECT_LE(counting_heap::liveBlocks(), blocks);
    builder.append(u'd', 300);
    EXPECT_TRUE(builder.moveTo(text));
    EXPECT_EQ(text.get_length(), 300U);
}

} // namespace
