#include "counting_heap.h"
#include "ordinary_allocator.h"
#include "text_battery.h"

#include <climits>
#include <cstdint>
#include <functional>
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
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

using namespace morvane::literals;

namespace {

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
    for (std::int32_t const count : {-3, 0, 3}) {
        expectText(TypeParam(Unit{'x'}, count), count > 0 ? "xxx" : "");
    }
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

    std::pair<std::function<void(TypeParam &)>, char const *> const cases[] = {
        {[](TypeParam & t) { t.add(textOf<TypeParam>("ab")); }, "ab"},
        {[](TypeParam & t) { t.add(textOf<TypeParam>("")); }, ""},
        {[](TypeParam & t) { t.add(Unit{'x'}, 2); }, "xx"},
        {[](TypeParam & t) { t.add(Unit{'x'}, 0); }, ""},
        {[](TypeParam & t) { t.add(true); }, "true"},
        {[](TypeParam & t) { t.insert(3, Unit{'x'}); }, "x"},
        {[](TypeParam & t) { t.insert(3, static_cast<Unit const *>(nullptr)); }, ""},
        {[](TypeParam & t) { t.deleteArray(0, 1); }, ""},
        {[](TypeParam & t) { t = Unit{'x'}; }, "x"}};
    for (auto const & [act, expected] : cases) {
        text.empty();
        act(text);
        expectText(text, expected);
    }
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

TYPED_TEST(Text, TakesPlacesInsideItAndPassesOverOthers) {
    using Unit = UnitOf<TypeParam>;
    using Place = std::conditional_t<std::is_same_v<TypeParam, _WideString>, std::int32_t, std::uint32_t>;
    auto const text = textOf<TypeParam>("abcabc");
    std::pair<TypeParam, char const *> const parts[] = {{text.mid(2), "cabc"},     {text.mid(6), ""},
                                                        {text.mid(-1), ""},        {text.mid(INT_MIN), ""},
                                                        {text.mid(2, 2), "ca"},    {text.mid(5, INT_MAX), "c"},
                                                        {text.mid(2, -1), ""},     {text.mid(-2, 4), ""},
                                                        {text.left(2), "ab"},      {text.left(9), "abcabc"},
                                                        {text.left(-1), ""},       {text.right(2), "bc"},
                                                        {text.right(6), "abcabc"}, {text.right(7), ""},
                                                        {text.right(-1), ""},      {text.extract(1, 3), "bca"},
                                                        {text.extract(2, 2), "c"}, {text.extract(3, 2), ""},
                                                        {text.extract(-1, 2), ""}, {text.extract(4, INT_MAX), "bc"}};
    for (auto const & [part, expected] : parts) {
        expectText(part, expected);
    }
    TypeParam edited(text);
    for (std::int32_t const outside : {INT_MIN, -1, 6, INT_MAX}) {
        edited.setAt(outside, Unit{'x'});
        EXPECT_EQ(text.getAt(static_cast<Place>(outside)), 0);
        EXPECT_EQ(text.find(Unit{'c'}, outside), outside < 0 ? 2 : -1);
        EXPECT_EQ(text.find(Unit{0}, outside), outside < 0 ? 6 : -1);
    }
    edited.setAt(5, Unit{'x'});
    expectText(edited, "abcabx");
    EXPECT_EQ(edited.replace(Unit{'b'}, Unit{'b'}), 2);
    EXPECT_EQ(edited.replace(Unit{'b'}, Unit{'y'}), 2);
    expectText(edited, "aycayx");
    EXPECT_EQ(text.find(Unit{'c'}, 3), 5);
    EXPECT_EQ(text.reverseFind(Unit{0}), 6);
    std::tuple<char const *, char const *, int, int> const orders[] = {{"a", "b", -1, -1},  {"ab", "a", 1, 1},
                                                                       {"\xE9", "z", 1, 1}, {"b", "A", 1, 1},
                                                                       {"a", "B", 1, -1},   {"aZ", "Az", 1, 0}};
    for (auto const & [left, right, order, orderNoCase] : orders) {
        for (bool const isSwapped : {false, true}) {
            auto const first = units<TypeParam>(isSwapped ? right : left);
            auto const second = units<TypeParam>(isSwapped ? left : right);
            EXPECT_EQ(fromModel<TypeParam>(first).compare(second.c_str()), isSwapped ? -order : order) << left;
            auto const difference = fromModel<TypeParam>(first).compareNoCase(second.c_str());
            EXPECT_EQ((difference > 0) - (difference < 0), isSwapped ? -orderNoCase : orderNoCase) << left;
        }
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

TEST(TextBuilder, HandsOverWhatItGathered) {
    std::u16string model;
    morvane::WideBuilder builder;
    _WideString text;
    std::mt19937 random(5);
    for (int step = 0; step < 2000; ++step) {
        auto const kind = random() % 3;
        std::size_t const count = kind == 0 ? 1 : random() % 50;
        auto const unit = static_cast<unsigned short int>('a' + random() % 26);
        std::vector<unsigned short int> const piece(count, unit);
        kind == 0   ? builder.append(unit)
        : kind == 1 ? builder.append(unit, count)
                    : builder.append({piece.data(), count});
        model.append(count, unit);
    }
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
