#include "counting_heap.h"
#include "text_battery.h"

#include <climits>
#include <cstdint>
#include <gtest/gtest.h>
#include <morvane/morvane.h>
#include <morvane/strings/text_builder.h>
#include <morvane/strings/text_view.h>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

using namespace morvane::literals;

namespace {

TYPED_TEST_SUITE(Text, Both);

template <typename String>
void expectAfter(String text, std::string_view expected, auto act, int line = __builtin_LINE()) {
    testing::ScopedTrace const trace(__FILE__, line, "this change");
    act(text);
    expectText(text, expected);
}

TYPED_TEST(Text, StartsAsItsClassTells) {
    constexpr UnitOf<TypeParam> x = 'x';
    auto const abc = units<TypeParam>("abc");
    for (TypeParam const & text : {TypeParam(abc.c_str()), TypeParam::createStr(abc.c_str())}) {
        expectText(text, "abc");
    }
    TypeParam const none = released<TypeParam>();
    for (TypeParam const & text : {TypeParam(none), TypeParam(x, -3), TypeParam(x, 0)}) {
        expectText(text, "");
    }
    expectText(TypeParam(x, 3), "xxx");
    expectText(TypeParam(std::uint32_t{255}), "#000000ff");
    expectText(TypeParam(std::uint32_t{0xFEDCBA98}), "#fedcba98");
    expectText(TypeParam(true), "true");
    expectText(TypeParam(false), "false");
    expectText(TypeParam(0.5F), "0.500000");
    expectText(TypeParam(-3.4028235e38F), "-340282346638528859811704183484516925440.000000");
}

TEST(DataString, StartsReleasedWithoutAText) {
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

TEST(WideString, StartsEmptyWithoutAText) {
    unsigned short int const * const null = nullptr;
    for (_WideString const & start :
         {_WideString(), _WideString(null), _WideString(static_cast<char const *>(nullptr)), _WideString(null, 3),
          _WideString::createStr(nullptr), _WideString(u"ab"_w, 0), _WideString(u"ab"_w, -1)}) {
        expectText(start, "");
    }
    expectText(_WideString(u"ab"_w, 3), "ababab");
    expectText(_WideString(std::int32_t{INT_MIN}), "-2147483648");
    EXPECT_EQ(_WideString("\xe9\xff").getAt(1), 0xff);
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
    auto const abc = textOf<TypeParam>("abcabc");
    expectAfter(abc, "abcabc", [](auto & t) { t = *&t; });
    expectAfter(abc, "abcabc", [](auto & t) { t.copy(t); });
    expectAfter(abc, "cabc", [](auto & t) { t = t.get_data() + 2; });
    expectAfter(abc, "abcabcabcabc", [](auto & t) { t.add(t); });
    expectAfter(abc, "abcabcabcabc", [](auto & t) { t += t; });
    expectAfter(abc, "abcabcbc", [](auto & t) { t.add(t.get_data() + 4); });
    expectAfter(abc, "abcbcabc", [](auto & t) { t.insert(1, t.get_data() + 4); });
    expectAfter(abc, "aa", [](auto & t) { t.remove(t.get_data() + 4); });
    expectAfter(abc, "ababcababc", [](auto & t) { t.replace(t.get_data() + 5, t.get_data() + 3); });
    expectAfter(released<TypeParam>(), "", [](auto & t) { t = *&t; });
}

TYPED_TEST(Text, TakesNullAndReleasedTextsAsEmpty) {
    using Unit = UnitOf<TypeParam>;
    constexpr bool isWide = std::is_same_v<TypeParam, _WideString>;
    Unit const * const null = nullptr;
    auto word = units<TypeParam>("a");
    TypeParam text = released<TypeParam>();
    EXPECT_TRUE(text.isEmpty());
    EXPECT_EQ(text.compare(null), 0);
    EXPECT_EQ(text.compareNoCase(null), 0);
    EXPECT_EQ(textOf<TypeParam>("a").compare(null), 1);
    EXPECT_EQ(text.findOneOf(null), -1);
    EXPECT_EQ(text.getAt(0), 0);
    expectText(text.mid(0), "");
    text.setAt(0, Unit{'a'});
    text.makeUpper();
    EXPECT_EQ(text.remove(Unit{'a'}), 0);
    EXPECT_EQ(text.remove(word.data()), 0);
    EXPECT_EQ(text.replace(Unit{'a'}, Unit{'b'}), 0);
    EXPECT_EQ(text.replace(word.data(), word.data()), 0);
    EXPECT_EQ(text.replaceAll(Unit{'a'}), 0);
    text.add(TypeParam(text));
    text.empty();
    text.add(released<TypeParam>());
    expectReleased(text);
    text.add(null);
    isWide ? expectText(text, "") : expectReleased(text);

    expectAfter(released<TypeParam>(), "ab", [](auto & t) { t.add(textOf<TypeParam>("ab")); });
    expectAfter(released<TypeParam>(), "", [](auto & t) { t.add(textOf<TypeParam>("")); });
    expectAfter(released<TypeParam>(), "xx", [](auto & t) { t.add(Unit{'x'}, 2); });
    expectAfter(released<TypeParam>(), "", [](auto & t) { t.add(Unit{'x'}, 0); });
    expectAfter(released<TypeParam>(), "true", [](auto & t) { t.add(true); });
    expectAfter(released<TypeParam>(), "x", [](auto & t) { t.insert(3, Unit{'x'}); });
    expectAfter(released<TypeParam>(), "", [null](auto & t) { t.insert(3, null); });
    expectAfter(released<TypeParam>(), "", [](auto & t) { t.deleteArray(0, 1); });
    expectAfter(released<TypeParam>(), "x", [](auto & t) { t = Unit{'x'}; });
    // Patterns: a null one is an empty one, which every text but some empty ones holds and no text gives up.
    text = textOf<TypeParam>("ab");
    for (Model<TypeParam> empty : {Model<TypeParam>(), word}) {
        Unit * const pattern = empty.empty() ? empty.data() : nullptr;
        EXPECT_EQ(text.find(pattern), 0);
        EXPECT_EQ(text.find(pattern, 1U), 1);
        EXPECT_EQ(text.find(pattern, 2U), isWide ? -1 : 2);
        EXPECT_EQ(text.find(pattern, 3U), -1);
        EXPECT_EQ(textOf<TypeParam>("").find(pattern), isWide ? -1 : 0);
        EXPECT_EQ(released<TypeParam>().find(pattern), isWide ? -1 : 0);
        EXPECT_EQ(text.replace(pattern, word.data()), 0);
        EXPECT_EQ(text.remove(pattern), 0);
    }
    EXPECT_EQ(text.replace(word.data(), static_cast<Unit *>(nullptr)), 1);
    expectText(text, "b");
}

// Two zeros stand inside these texts; 0 shows one.
TYPED_TEST(Text, CarriesInnerZerosAsTold) {
    using Unit = UnitOf<TypeParam>;
    constexpr bool isWide = std::is_same_v<TypeParam, _WideString>;
    auto const text = textOf<TypeParam>(std::string_view("ab\0cde\0f", 8));
    expectText(TypeParam(text), "ab0cde0f");
    expectText(text.mid(1, 5), "b0cde");
    // What is appended goes to the first zero, closed by one of its own; the rest stays, and zeros fill up the sum.
    expectAfter(text, "abxy0e0f00", [](auto & t) { t.add(units<TypeParam>("xy").c_str()); });
    expectAfter(text, "abx0de0f0", [](auto & t) { t.add(Unit{'x'}, 1); });
    expectAfter(text, "abab0e0f00000000", [&text](auto & t) { t.add(text); });
    expectAfter(text, "axb000000", [](auto & t) { t.insert(1, Unit{'x'}); });
    expectAfter(text, "abx0de0f0", [](auto & t) { t.insert(8, Unit{'x'}); });
    expectAfter(text, "ab0c00", [](auto & t) { t.deleteArray(4, 2); });
    expectAfter(text, "cde00", [](auto & t) { t.deleteArray(0, 3); });
    expectAfter(text, "abcef00", [](auto & t) { EXPECT_EQ(t.remove(Unit{'d'}), 1); });
    expectAfter(text, "abcdef", [](auto & t) { EXPECT_EQ(t.remove(Unit{0}), 2); });
    expectAfter(text, "ab0cde0g", [](auto & t) { EXPECT_EQ(t.replace(Unit{'f'}, Unit{'g'}), 1); });
    expectAfter(text, "xx0cde0f", [](auto & t) { EXPECT_EQ(t.replaceAll(Unit{'x'}), 8); });
    expectAfter(text, "ba0cde0f", [](auto & t) { t.makeReverse(); });
    expectAfter(text, "AB0cde0f", [](auto & t) { t.makeUpper(); });
    auto b = units<TypeParam>("b");
    auto c = units<TypeParam>("c");
    expectAfter(text, "ac000000", [&](auto & t) { EXPECT_EQ(t.replace(b.data(), c.data()), 1); });
    expectAfter(text, "ab0cde0f", [&](auto & t) { EXPECT_EQ(t.replace(c.data(), b.data()), 0); });
    EXPECT_EQ(text.compare(units<TypeParam>("ab").c_str()), 0);
    EXPECT_EQ(text.find(Unit{'c'}), -1);
    EXPECT_EQ(text.find(Unit{'c'}, 3), 3);
    EXPECT_EQ(text.find(Unit{'f'}, 3), -1);
    EXPECT_EQ(text.find(Unit{0}), 2);
    EXPECT_EQ(text.find(c.c_str()), -1);
    EXPECT_EQ(text.find(units<TypeParam>("").c_str(), 2U), isWide ? -1 : 2);
    EXPECT_EQ(text.find(units<TypeParam>("cd").c_str(), 3U), 3);
    EXPECT_EQ(text.findOneOf(units<TypeParam>("fc").c_str()), -1);
    EXPECT_EQ(text.reverseFind(Unit{'f'}), -1);
    EXPECT_EQ(text.reverseFind(Unit{'b'}), 1);
    EXPECT_FALSE(textOf<TypeParam>(std::string_view("1\0", 2)).isDecimalNumber());
}

TYPED_TEST(Text, PassesOverPlacesOutsideIt) {
    using Unit = UnitOf<TypeParam>;
    using Place = std::conditional_t<std::is_same_v<TypeParam, _WideString>, std::int32_t, std::uint32_t>;
    auto const text = textOf<TypeParam>("abcabc");
    TypeParam edited(text);
    for (std::int32_t const outside : {INT_MIN, -1, 6, INT_MAX}) {
        edited.setAt(outside, Unit{'x'});
        EXPECT_EQ(text.getAt(static_cast<Place>(outside)), 0);
        EXPECT_EQ(text.find(Unit{'c'}, outside), outside < 0 ? 2 : -1);
        EXPECT_EQ(text.find(Unit{0}, outside), outside < 0 ? 6 : -1);
        expectText(text.mid(outside), "");
        expectText(text.left(outside), outside > 0 ? "abcabc" : "");
        expectText(text.right(outside), outside == 6 ? "abcabc" : "");
        expectText(text.extract(2, outside), outside > 0 ? "cabc" : "");
    }
    expectText(edited, "abcabc");
    EXPECT_EQ(edited.replace(Unit{'b'}, Unit{'b'}), 2);
    EXPECT_EQ(text.reverseFind(Unit{0}), 6);
}

TYPED_TEST(Text, CountsItsOneBufferWhereItsClassTells) {
    auto const counted = [] {
        return globalProcessMemory->heapAllocationCount() - globalProcessMemory->heapUnallocationCount();
    };
    auto const before = counted();
    TypeParam text = textOf<TypeParam>("abcb");
    text.add(text);
    EXPECT_EQ(counted(), before + (std::is_same_v<TypeParam, _WideString> ? 1 : 0));
    text.empty();
    EXPECT_EQ(counted(), before);
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
    }
    huge.set_data(nullptr);
    huge.set_length(0);
}

TEST(TextBuilder, HandsOverWhatItGathered) {
    counting_heap::LeakCheck const leaks;
    std::basic_string<unsigned short int> told;
    morvane::WideBuilder builder;
    _WideString text;
    std::mt19937 random(5);
    for (int step = 0; step < 2000; ++step) {
        std::size_t const count = step % 3 == 0 ? 1 : random() % 50;
        auto const unit = static_cast<unsigned short int>('a' + random() % 26);
        std::vector<unsigned short int> const piece(count, unit);
        step % 3 == 0   ? builder.append(unit)
        : step % 3 == 1 ? builder.append(unit, count)
                        : builder.append({piece.data(), count});
        told.append(count, unit);
    }
    for (auto const & expected : {told, {}}) {
        ASSERT_TRUE(builder.moveTo(text));
        EXPECT_EQ(modelOf(text), expected);
        EXPECT_EQ(text.get_size(), (expected.size() + 1) * 2);
        EXPECT_EQ(builder.length(), 0U);
    }
    // A refusal lasts until what was gathered is asked for.
    builder.append(u'a', 1000);
    counting_heap::refuseAfter(0);
    builder.append(u'b', 1000);
    counting_heap::serveAll();
    builder.append(u'c');
    EXPECT_TRUE(builder.hasFailed());
    EXPECT_FALSE(builder.moveTo(text));
    expectReleased(text);
    builder.append(u'd', 300);
    EXPECT_TRUE(builder.moveTo(text));
    EXPECT_EQ(text.get_length(), 300U);
}

} // namespace
