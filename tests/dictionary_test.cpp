#include "counting_heap.h"
#include "stream_testing.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <morvane/containers/mutable_dictionary.h>
#include <morvane/containers/quick_sort.h>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

/// No test leaves a block behind in the heap.
class Pairs : public testing::Test {
private:
    counting_heap::LeakCheck check;
};
using Dictionary = Pairs;
using DictionaryItem = Pairs;

constexpr auto byKey = _DictionaryItem::sortByKey;
constexpr auto byValue = _DictionaryItem::sortByValue;
constexpr auto byNothing = static_cast<_DictionaryItem::DictionarySortFilter>(2);

char const * const noText = nullptr;

std::string lineOf(_DictionaryItem const * item) {
    return item == nullptr ? "(null)" : bytesOf(item->getKey()) + "=" + bytesOf(item->getValue());
}

std::vector<_DictionaryItem *> itemsOf(_Dictionary const & dictionary) {
    std::vector<_DictionaryItem *> items;
    for (std::int32_t index = 0; index < dictionary.getCount(); ++index) {
        items.push_back(dictionary[index]);
    }
    return items;
}

/// Its pairs, each closed by a semicolon.
std::string linesOf(_Dictionary const & dictionary) {
    std::string lines;
    for (_DictionaryItem const * const item : itemsOf(dictionary)) {
        lines += lineOf(item) + ";";
    }
    return lines;
}

void fill(_MutableDictionary & dictionary, std::initializer_list<char const *> texts) {
    for (char const * const text : texts) {
        dictionary.add(text);
    }
}

/// Leaves a null entry.
std::unique_ptr<_DictionaryItem> takeOut(_MutableDictionary & dictionary, std::uint32_t index) {
    std::unique_ptr<_DictionaryItem> item(dictionary[static_cast<std::int32_t>(index)]);
    dictionary.removeAt(index, 1);
    return item;
}

using Procedure = _MutableDictionary::CompareProcedure;

/// The told sort, as it is told. There must be a place in front of the first item, which the walk back may come to.
void slowQuickSort(_DictionaryItem ** lo, _DictionaryItem ** hi, Procedure procedure) {
    _DictionaryItem ** i = lo;
    _DictionaryItem ** j = hi;
    _DictionaryItem * const pivot = lo[(hi - lo) / 2];
    while (i <= j) {
        while (procedure(*i, pivot) > 0) {
            ++i;
        }
        while (procedure(*j, pivot) < 0) {
            --j;
        }
        if (i <= j) {
            std::swap(*i++, *j--);
        }
    }
    if (lo < j) {
        slowQuickSort(lo, j, procedure);
    }
    if (i < hi) {
        slowQuickSort(i, hi, procedure);
    }
}

template <_DictionaryItem::DictionarySortFilter filter>
std::int32_t ascending(_DictionaryItem * first, _DictionaryItem * second) {
    return second->compare(first, filter);
}

/// What `valuesDescending` was asked.
std::vector<std::pair<_DictionaryItem *, _DictionaryItem *>> asked;

std::int32_t valuesDescending(_DictionaryItem * first, _DictionaryItem * second) {
    asked.emplace_back(first, second);
    return first->compare(second, byValue);
}

/// Compares as any other, but is known to nobody.
class DerivedItem : public _DictionaryItem {
public:
    using _DictionaryItem::_DictionaryItem;
};

TEST_F(Dictionary, SortsToTheToldOrderEqualItemsIncluded) {
    std::mt19937 random(2);
    std::string const starts[] = {"",          "a",         "prefixab", "prefixa",
                                  "prefixabc", "prefixabd", "\x80",     "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"};
    for (int round = 0; round < 1500; ++round) {
        _MutableDictionary dictionary;
        for (auto count = 1 + random() % 60; count != 0; --count) {
            std::string const key = starts[random() % 8];
            std::string const value = starts[random() % 8] + starts[random() % 2];
            dictionary.add(round % 4 == 3 ? new DerivedItem(key.c_str(), value.c_str())
                                          : new _DictionaryItem(key.c_str(), value.c_str()));
        }
        std::vector<_DictionaryItem *> expected = itemsOf(dictionary);
        expected.insert(expected.begin(), nullptr);
        auto const expectSorted = [&](Procedure procedure) {
            slowQuickSort(&expected[1], &expected.back(), procedure);
            ASSERT_TRUE(std::equal(expected.begin() + 1, expected.end(), itemsOf(dictionary).begin())) << round;
        };
        if (round % 4 == 2) {
            counting_heap::refuseAfter(0);
        }
        ASSERT_TRUE(dictionary.sortBy(byValue));
        expectSorted(ascending<byValue>);
        asked.clear();
        ASSERT_TRUE(dictionary.sort(valuesDescending));
        auto const askedBySort = std::exchange(asked, {});
        expectSorted(valuesDescending);
        ASSERT_EQ(askedBySort, asked);
        ASSERT_TRUE(dictionary.sort(nullptr));
        expectSorted(ascending<byKey>);
        counting_heap::serveAll();
    }
}

/// Items that a comparison cannot tell but by their places: they stay where they are.
struct Places {
    static std::int32_t at(std::int32_t index) { return index; }
    void swap(std::int32_t, std::int32_t) { ++swaps; }

    int swaps = 0;
};

TEST(QuickSort, HasRoomForEveryPartThatWaits) {
    // Each cut leaves two items on one side, which wait, and all others on the other.
    Places places;
    morvane::quickSort(places, 0, 2000,
                       [](std::int32_t index, std::int32_t pivot) { return index < 2 * pivot - 3 ? 1 : 0; });
    EXPECT_GT(places.swaps, 2000);
}

std::int32_t callCount = 0;

TEST_F(Dictionary, LosesNoItemToAProcedureThatContradictsItselfOrThrows) {
    Procedure const procedures[] = {
        [](_DictionaryItem *, _DictionaryItem *) -> std::int32_t { return 1; },
        [](_DictionaryItem *, _DictionaryItem *) -> std::int32_t { return -1; },
        [](_DictionaryItem *, _DictionaryItem *) -> std::int32_t { return ++callCount * 7919 % 5 - 2; },
        [](_DictionaryItem *, _DictionaryItem *) -> std::int32_t {
            return ++callCount % 40 == 0 ? throw 7 : callCount % 3 - 1;
        },
    };
    for (auto const procedure : procedures) {
        for (int count = 1; count < 40; ++count) {
            _MutableDictionary dictionary;
            for (int index = 0; index < count; ++index) {
                dictionary.add("key=value");
            }
            std::vector<_DictionaryItem *> const items = itemsOf(dictionary);
            try {
                dictionary.sort(procedure);
            } catch (int) {
            }
            EXPECT_TRUE(std::is_permutation(items.begin(), items.end(), itemsOf(dictionary).begin()));
        }
    }
}

TEST_F(Dictionary, SortsNullEntriesBehindTheItems) {
    _MutableDictionary dictionary;
    fill(dictionary, {"c=1", "x=2", "a=3", "b=4"});
    auto const removed = takeOut(dictionary, 1);
    EXPECT_TRUE(dictionary.sort(nullptr));
    EXPECT_EQ(linesOf(dictionary), "a=3;b=4;c=1;(null);");
    EXPECT_TRUE(dictionary.sort(valuesDescending));
    EXPECT_EQ(linesOf(dictionary), "b=4;a=3;c=1;(null);");
    EXPECT_FALSE(dictionary.sortBy(byNothing));
    _MutableDictionary empty;
    EXPECT_FALSE(empty.sort(valuesDescending) || empty.sort(nullptr) || empty.sortBy(byKey));
}

TEST_F(Dictionary, FindsTheFirstItem) {
    _MutableDictionary dictionary;
    fill(dictionary,
         {"gone=gone", "key=one", "Key=two", "key=three", "no sign", "=empty key", "-1=key", "a longer key=1"});
    auto const removed = takeOut(dictionary, 0);
    auto const found = [&](std::int32_t index, auto getText) {
        return index == -1 ? "-1" : bytesOf((dictionary[index]->*getText)());
    };
    auto const getKey = &_DictionaryItem::getKey;
    auto const getValue = &_DictionaryItem::getValue;
    struct {
        char const * text;
        std::int32_t key, keyNoCase, value, valueNoCase;
    } const cases[] = {{"key", 1, 1, 6, 6},      {"Key", 2, 1, -1, 6},           {"KEY", -1, 1, -1, 6},
                       {"ke", -1, -1, -1, -1},   {"keys", -1, -1, -1, -1},       {"", 4, 4, 4, 4},
                       {"TWO", -1, -1, -1, 2},   {"gone", -1, -1, -1, -1},       {"a longer key", 7, 7, -1, -1},
                       {noText, -1, -1, -1, -1}, {"A longer key", -1, 7, -1, -1}};
    for (auto const & [text, key, keyNoCase, value, valueNoCase] : cases) {
        SCOPED_TRACE(testing::PrintToString(text));
        EXPECT_EQ(dictionary.keyIndex(text), key);
        EXPECT_EQ(dictionary.keyIndexNoCase(text), keyNoCase);
        EXPECT_EQ(dictionary.valueIndex(text), value);
        EXPECT_EQ(dictionary.valueIndexNoCase(text), valueNoCase);
        EXPECT_EQ(dictionary.keyExists(text), key != -1);
        EXPECT_EQ(dictionary.keyExistsNoCase(text), keyNoCase != -1);
        EXPECT_EQ(dictionary.valueExists(text), value != -1);
        EXPECT_EQ(dictionary.valueExistsNoCase(text), valueNoCase != -1);
        EXPECT_EQ(bytesOf(dictionary.valueOf(text)), found(key, getValue));
        EXPECT_EQ(bytesOf(dictionary.getValueForKey(text)), found(key, getValue));
        EXPECT_EQ(bytesOf(dictionary.valueOfNoCase(text)), found(keyNoCase, getValue));
        EXPECT_EQ(bytesOf(dictionary.keyOf(text)), found(value, getKey));
        EXPECT_EQ(bytesOf(dictionary.getKeyForValue(text)), found(value, getKey));
        EXPECT_EQ(bytesOf(dictionary.keyOfNoCase(text)), found(valueNoCase, getKey));
    }
}

TEST_F(Dictionary, ComparesASecondTextWithTheValueFoundFirst) {
    _MutableDictionary dictionary;
    fill(dictionary, {"key=one", "key=two"});
    EXPECT_TRUE(dictionary.exists("key", "one") && dictionary.contains("key", noText)
                && dictionary.existsNoCase("KEY", "ONE") && dictionary.containsNoCase("Key", noText));
    EXPECT_FALSE(dictionary.exists("key", "two") || dictionary.contains("key", "key")
                 || dictionary.exists("one", noText) || dictionary.contains(noText, noText)
                 || dictionary.exists("KEY", "one") || dictionary.existsNoCase("KEY", "two"));
}

TEST_F(Dictionary, AddsPairsOfEveryForm) {
    _MutableDictionary other;
    fill(other, {"a=1", "b=2=3"});
    _MutableDictionary dictionary;
    EXPECT_EQ(dictionary.add("=v"), 0);
    EXPECT_EQ(dictionary.add(noText), 1);
    EXPECT_EQ(dictionary.add("k", noText), 2);
    EXPECT_EQ(dictionary.add(new _DictionaryItem("p=")), 3);
    EXPECT_EQ(dictionary.add(*other[1]), 4);
    EXPECT_EQ(dictionary.add(static_cast<_DictionaryItem *>(nullptr)), -1);
    EXPECT_EQ(dictionary.add(&other, true), 2);
    EXPECT_EQ(dictionary.add(static_cast<_Dictionary const *>(nullptr), true), -1);
    EXPECT_EQ(linesOf(dictionary), "=v;=;k=;p=;b=2=3;a=1;b=2=3;");
    EXPECT_EQ(dictionary.copy(&other), 2);
    EXPECT_EQ(linesOf(dictionary), "a=1;b=2=3;");
    // The items change hands.
    EXPECT_EQ(dictionary.add(&other, false), 2);
    EXPECT_EQ(dictionary[2], other[0]);
    other.removeAll();
    EXPECT_EQ(linesOf(_MutableDictionary(&other)), "=;=;");
    EXPECT_EQ(dictionary.copy(nullptr), 0);
    EXPECT_EQ(dictionary.getCount(), 0);
}

TEST_F(Dictionary, SharesItsItemsWithCopiesAndTakesItselfAsItStandsAtTheCall) {
    _MutableDictionary dictionary;
    fill(dictionary, {"b=1", "a=2"});
    _MutableDictionary copy;
    fill(copy, {"gone=0"});
    copy = _MutableDictionary(dictionary);
    EXPECT_TRUE(copy.sort(nullptr));
    EXPECT_EQ(linesOf(dictionary), "a=2;b=1;");
    // It grows, and takes the items along.
    EXPECT_EQ(dictionary.copy(&dictionary), 2);
    EXPECT_EQ(dictionary.add(&dictionary, true), 4);
    dictionary.add(&dictionary, false);
    EXPECT_EQ(linesOf(dictionary), "a=2;b=1;a=2;b=1;a=2;b=1;a=2;b=1;");
    EXPECT_EQ(dictionary[7], dictionary[3]);
    // Each item is deleted once, wherever its entries go.
    EXPECT_TRUE(dictionary.sortBy(byValue) && dictionary.permute(0, 7) && copy.permute(0, 1));
    EXPECT_EQ(linesOf(dictionary), "a=2;b=1;b=1;b=1;a=2;a=2;a=2;b=1;");
    EXPECT_EQ(linesOf(copy), "b=1;a=2;");
}

TEST_F(Dictionary, EditsEntries) {
    RecordingStream stream("some bytes");
    _MutableDictionary dictionary(stream);
    EXPECT_TRUE(dictionary.loadFromStream(stream) && dictionary.saveToStream(stream));
    EXPECT_EQ(stream.calls(), "") << "nothing is read or written";
    EXPECT_NE(dictionary.toString().get_data(), nullptr);
    fill(dictionary, {"a=1", "b=2", "c=3"});
    EXPECT_TRUE(dictionary.permute(0, 2) && dictionary.permute(1, 1));
    dictionary.deleteAt(1, 1);
    EXPECT_NE(dictionary[1], nullptr);
    dictionary.removeAt(1, 1);
    EXPECT_EQ(bytesOf(dictionary.toString()), "c=3\r\na=1\r\n");
    dictionary.setItem(1, new _DictionaryItem("d", "4"));
    dictionary.setItem(-1, dictionary[0]);
    EXPECT_EQ(dictionary[-1], nullptr);
    dictionary.removeKey("a");
    dictionary.removeValue("1");
    dictionary.setValueForKey("9", "a");
    dictionary.setKeyForValue("z", "1");
    EXPECT_EQ(bytesOf(dictionary.customString(noText, ";")), "c=3;d=4;a=1;") << "those four do nothing";
    EXPECT_EQ(bytesOf(dictionary.customString("::", noText)), "c::3\r\nd::4\r\na::1\r\n");
}

TEST_F(Dictionary, EqualsInOrder) {
    _MutableDictionary left;
    _MutableDictionary right;
    fill(left, {"a=1", "b=x"});
    fill(right, {"a=1", "B=X"});
    EXPECT_TRUE(left.equals(&left) && left.equalsNoCase(&right));
    EXPECT_FALSE(left.equals(&right) || left.equals(nullptr) || left.equalsNoCase(nullptr));
    right.permute(0, 1);
    EXPECT_FALSE(left.equalsNoCase(&right));
    right.add("c=1");
    EXPECT_FALSE(right.equals(&left) || left.equals(&right));
    auto const removed = takeOut(left, 0);
    EXPECT_FALSE(left.equals(&left)) << "a null entry equals nothing";
}

TEST_F(DictionaryItem, CutsATextAtItsFirstSign) {
    for (auto const & [text, line] : std::vector<std::pair<char const *, std::string>>{
             {"a=b", "a=b"}, {"a=b=c", "a=b=c"}, {"=b", "=b"}, {"a=", "a="}, {"ab", "="}, {noText, "="}}) {
        EXPECT_EQ(lineOf(std::make_unique<_DictionaryItem>(text).get()), line);
    }
    _DictionaryItem item("a", "b");
    item.setKeyAndValue("no sign");
    EXPECT_EQ(bytesOf(item.getKeyAndValue()), "a=b");
    item.setKeyAndValue("c=d=e");
    EXPECT_EQ(bytesOf(item.getKey()), "c");
    EXPECT_EQ(bytesOf(item.customString(':')), "c:d=e");
    _DictionaryItem const copy(item);
    item.setKey("z");
    item.setValue(noText);
    EXPECT_EQ(bytesOf(item.toString()), "z=");
    EXPECT_EQ(lineOf(&(item = copy)), "c=d=e");
    EXPECT_EQ(lineOf(std::make_unique<_DictionaryItem>(&copy).get()), "c=d=e");
    EXPECT_EQ(lineOf(std::make_unique<_DictionaryItem>(static_cast<_DictionaryItem *>(nullptr)).get()), "=");
}

TEST_F(DictionaryItem, Compares) {
    _DictionaryItem never;
    _DictionaryItem item("a", "b");
    _DictionaryItem large("A", "\x80");
    EXPECT_EQ(item.compare(&large, byKey), 1);
    EXPECT_EQ(item.compare(&large, byValue), -1);
    EXPECT_EQ(item.compare(&large, byNothing), 0);
    EXPECT_EQ(item.compare(nullptr, byValue), 1);
    EXPECT_EQ(never.compare(nullptr, byKey), 0);
    EXPECT_TRUE(never.equals(_DictionaryItem("", "")) && item.equalsNoCase(_DictionaryItem("A=B")));
    EXPECT_FALSE(item.equals(_DictionaryItem("A=b")) || item.equals(_DictionaryItem("a=B")));
}

// A zero inside a text ends it for comparison and for what is put together.
TEST_F(DictionaryItem, PassesThroughAStreamUpToTheFirstZeros) {
    std::string const bytes("\3\0\0\0a\0b\1\0\0\0c", 12);
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        RecordingStream shorter(bytes.substr(0, length));
        EXPECT_TRUE(fails([&] { std::make_unique<_DictionaryItem>(shorter); })) << length;
    }
    RecordingStream stream(bytes);
    _MutableDictionary dictionary;
    dictionary.add(new _DictionaryItem(stream));
    dictionary.add(new _DictionaryItem(dictionary[0]));
    EXPECT_TRUE(dictionary[0]->saveToStream(stream) && _DictionaryItem().saveToStream(stream));
    EXPECT_EQ(stream.bytes, bytes + std::string("\1\0\0\0a\1\0\0\0c\0\0\0\0\0\0\0\0", 18));
    EXPECT_TRUE(dictionary.keyIndex("a") == 0 && dictionary.keyIndexNoCase("A") == 0);
    EXPECT_EQ(bytesOf(dictionary.customString("=", ";")), std::string("a=c;a=c;\0\0", 10));
    EXPECT_TRUE(dictionary[0]->equals(*dictionary[1]));
    EXPECT_EQ(dictionary[0]->getKey().get_length(), 3u);
    EXPECT_EQ(dictionary[1]->getKey().get_length(), 1u);
}

} // namespace
