#include "counting_heap.h"
#include "stream_testing.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <morvane/containers/mutable_dictionary.h>
#include <morvane/containers/quick_sort.h>
#include <morvane/streams/memory_stream.h>
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

using Lines = std::vector<std::string>;

std::string lineOf(_DictionaryItem const * item) {
    return item == nullptr ? "(null)" : bytesOf(item->getKey()) + "=" + bytesOf(item->getValue());
}

Lines linesOf(_Dictionary const & dictionary) {
    Lines lines;
    for (std::int32_t index = 0; index < dictionary.getCount(); ++index) {
        lines.push_back(lineOf(dictionary[index]));
    }
    return lines;
}

void fill(_MutableDictionary & dictionary, std::initializer_list<char const *> texts) {
    for (char const * const text : texts) {
        dictionary.add(text);
    }
}

/// The told sort, as it is told.
void slowQuickSort(std::vector<_DictionaryItem *> & items, int lo, int hi,
                   _MutableDictionary::CompareProcedure procedure) {
    auto const item = [&items](int index) -> _DictionaryItem *& { return items[static_cast<std::size_t>(index)]; };
    for (;;) {
        int i = lo;
        int j = hi;
        _DictionaryItem * const pivot = item((lo + hi) / 2);
        do {
            while (procedure(item(i), pivot) > 0) {
                ++i;
            }
            while (procedure(item(j), pivot) < 0) {
                --j;
            }
            if (i <= j) {
                std::swap(item(i), item(j));
                ++i;
                --j;
            }
        } while (i <= j);
        if (lo < j) {
            slowQuickSort(items, lo, j, procedure);
        }
        lo = i;
        if (i >= hi) {
            return;
        }
    }
}

std::int32_t keysAscending(_DictionaryItem * first, _DictionaryItem * second) {
    return second->compare(first, byKey);
}

std::int32_t valuesAscending(_DictionaryItem * first, _DictionaryItem * second) {
    return second->compare(first, byValue);
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
    Lines const starts{"",          "a",         "prefixab", "prefixa",
                       "prefixabc", "prefixabd", "\x80",     "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"};
    for (int round = 0; round < 1500; ++round) {
        _MutableDictionary dictionary;
        std::size_t const count = 1 + random() % 60;
        for (std::size_t index = 0; index < count; ++index) {
            std::string const key = starts[random() % starts.size()];
            std::string const value = starts[random() % starts.size()] + starts[random() % 2];
            dictionary.add(round % 4 == 3 ? new DerivedItem(key.c_str(), value.c_str())
                                          : new _DictionaryItem(key.c_str(), value.c_str()));
        }
        std::vector<_DictionaryItem *> expected;
        for (std::int32_t index = 0; index < dictionary.getCount(); ++index) {
            expected.push_back(dictionary[index]);
        }
        auto const expectSorted = [&](_MutableDictionary::CompareProcedure procedure) {
            slowQuickSort(expected, 0, static_cast<int>(count) - 1, procedure);
            for (std::size_t index = 0; index < count; ++index) {
                ASSERT_EQ(dictionary[static_cast<std::int32_t>(index)], expected[index]) << "round " << round;
            }
        };
        if (round % 4 == 2) {
            counting_heap::refuseAfter(0);
        }
        ASSERT_TRUE(dictionary.sortBy(byValue));
        expectSorted(valuesAscending);
        asked.clear();
        ASSERT_TRUE(dictionary.sort(valuesDescending));
        auto const askedBySort = std::exchange(asked, {});
        expectSorted(valuesDescending);
        ASSERT_EQ(askedBySort, asked);
        ASSERT_TRUE(dictionary.sort(nullptr));
        expectSorted(keysAscending);
        counting_heap::serveAll();
    }
}

TEST_F(Dictionary, SortsManyItemsInWhateverOrderTheyCome) {
    for (int order = 0; order < 3; ++order) {
        _MutableDictionary dictionary;
        for (int index = 0; index < 200000; ++index) {
            dictionary.add("key", std::to_string(order == 0 ? index : order == 1 ? 200000 - index : 7).c_str());
        }
        ASSERT_TRUE(order == 2 ? dictionary.sort(valuesAscending) : dictionary.sortBy(byValue));
        for (int index = 1; index < 200000; ++index) {
            ASSERT_LE(dictionary[index - 1]->compare(dictionary[index], byValue), 0);
        }
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
    _MutableDictionary::CompareProcedure const procedures[] = {
        [](_DictionaryItem *, _DictionaryItem *) -> std::int32_t { return 1; },
        [](_DictionaryItem *, _DictionaryItem *) -> std::int32_t { return -1; },
        [](_DictionaryItem *, _DictionaryItem *) -> std::int32_t { return ++callCount * 7919 % 5 - 2; },
        [](_DictionaryItem *, _DictionaryItem *) -> std::int32_t {
            if (++callCount % 40 == 0) {
                throw 7;
            }
            return callCount % 3 - 1;
        },
    };
    for (auto const procedure : procedures) {
        for (int count = 1; count < 40; ++count) {
            _MutableDictionary dictionary;
            Lines expected;
            for (int index = 0; index < count; ++index) {
                dictionary.add(std::to_string(index).c_str(), "");
                expected.push_back(std::to_string(index) + "=");
            }
            try {
                dictionary.sort(procedure);
            } catch (int) {
            }
            Lines lines = linesOf(dictionary);
            std::sort(lines.begin(), lines.end());
            std::sort(expected.begin(), expected.end());
            EXPECT_EQ(lines, expected);
        }
    }
}

TEST_F(Dictionary, SortsNullEntriesBehindTheItems) {
    _MutableDictionary dictionary;
    fill(dictionary, {"c=1", "x=2", "a=3", "b=4"});
    std::unique_ptr<_DictionaryItem> const removed(dictionary[1]);
    dictionary.removeAt(1, 1);
    EXPECT_TRUE(dictionary.sort(nullptr));
    EXPECT_EQ(linesOf(dictionary), (Lines{"a=3", "b=4", "c=1", "(null)"}));
    EXPECT_TRUE(dictionary.sort(valuesDescending));
    EXPECT_EQ(linesOf(dictionary), (Lines{"b=4", "a=3", "c=1", "(null)"}));
    _MutableDictionary empty;
    EXPECT_FALSE(empty.sort(keysAscending) || empty.sort(nullptr) || empty.sortBy(byKey));
    EXPECT_FALSE(dictionary.sortBy(byNothing));
}

TEST_F(Dictionary, FindsTheFirstItem) {
    _MutableDictionary dictionary;
    fill(dictionary,
         {"gone=gone", "key=one", "Key=two", "key=three", "no sign", "=empty key", "-1=key", "a longer key=1"});
    std::unique_ptr<_DictionaryItem> const removed(dictionary[0]);
    dictionary.removeAt(0, 1);
    struct Case {
        char const * text;
        std::int32_t key, keyNoCase, value, valueNoCase;
    };
    for (Case const & test : {Case{"key", 1, 1, 6, 6}, Case{"Key", 2, 1, -1, 6}, Case{"KEY", -1, 1, -1, 6},
                              Case{"ke", -1, -1, -1, -1}, Case{"keys", -1, -1, -1, -1}, Case{"", 4, 4, 4, 4},
                              Case{"gone", -1, -1, -1, -1}, Case{noText, -1, -1, -1, -1}, Case{"TWO", -1, -1, -1, 2},
                              Case{"a longer key", 7, 7, -1, -1}, Case{"A longer key", -1, 7, -1, -1}}) {
        SCOPED_TRACE(testing::PrintToString(test.text));
        auto const keyAt = [&](std::int32_t index) {
            return index == -1 ? "-1" : bytesOf(dictionary[index]->getKey());
        };
        auto const valueAt = [&](std::int32_t index) {
            return index == -1 ? "-1" : bytesOf(dictionary[index]->getValue());
        };
        EXPECT_EQ(dictionary.keyIndex(test.text), test.key);
        EXPECT_EQ(dictionary.keyIndexNoCase(test.text), test.keyNoCase);
        EXPECT_EQ(dictionary.valueIndex(test.text), test.value);
        EXPECT_EQ(dictionary.valueIndexNoCase(test.text), test.valueNoCase);
        EXPECT_EQ(dictionary.keyExists(test.text), test.key != -1);
        EXPECT_EQ(dictionary.keyExistsNoCase(test.text), test.keyNoCase != -1);
        EXPECT_EQ(dictionary.valueExists(test.text), test.value != -1);
        EXPECT_EQ(dictionary.valueExistsNoCase(test.text), test.valueNoCase != -1);
        EXPECT_EQ(bytesOf(dictionary.valueOf(test.text)), valueAt(test.key));
        EXPECT_EQ(bytesOf(dictionary.getValueForKey(test.text)), valueAt(test.key));
        EXPECT_EQ(bytesOf(dictionary.valueOfNoCase(test.text)), valueAt(test.keyNoCase));
        EXPECT_EQ(bytesOf(dictionary.keyOf(test.text)), keyAt(test.value));
        EXPECT_EQ(bytesOf(dictionary.getKeyForValue(test.text)), keyAt(test.value));
        EXPECT_EQ(bytesOf(dictionary.keyOfNoCase(test.text)), keyAt(test.valueNoCase));
    }
    EXPECT_EQ(bytesOf(_MutableDictionary().valueOf("key")), "-1");
}

TEST_F(Dictionary, ComparesASecondTextWithTheValueFoundFirst) {
    _MutableDictionary dictionary;
    fill(dictionary, {"key=one", "key=two"});
    EXPECT_TRUE(dictionary.exists("key", "one") && dictionary.contains("key", noText)
                && dictionary.existsNoCase("KEY", "ONE") && dictionary.containsNoCase("Key", noText));
    EXPECT_FALSE(dictionary.exists("key", "two") || dictionary.contains("key", "key")
                 || dictionary.exists("one", noText) || dictionary.exists(noText, noText)
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
    EXPECT_EQ(linesOf(dictionary), (Lines{"=v", "=", "k=", "p=", "b=2=3", "a=1", "b=2=3"}));
    EXPECT_EQ(dictionary.copy(&other), 2);
    EXPECT_EQ(linesOf(dictionary), linesOf(other));
    // The items change hands.
    EXPECT_EQ(dictionary.add(&other, false), 2);
    EXPECT_EQ(dictionary[2], other[0]);
    other.removeAll();
    EXPECT_EQ(other.getCount(), 2);
    EXPECT_EQ(dictionary.copy(nullptr), 0);
    EXPECT_EQ(dictionary.getCount(), 0);
    EXPECT_EQ(linesOf(_MutableDictionary(&dictionary)), Lines{});
}

TEST_F(Dictionary, TakesItselfAsItStandsAtTheCall) {
    _MutableDictionary dictionary;
    fill(dictionary, {"a=1", "b=2"});
    EXPECT_EQ(dictionary.copy(&dictionary), 2);
    dictionary.add(&dictionary, true);
    EXPECT_EQ(linesOf(dictionary), (Lines{"a=1", "b=2", "a=1", "b=2"}));
    dictionary.add(&dictionary, false);
    EXPECT_EQ(dictionary.getCount(), 8);
    EXPECT_EQ(dictionary[7], dictionary[3]);
    // Each item is deleted once, wherever its entries go.
    EXPECT_TRUE(dictionary.sort(nullptr) && dictionary.permute(0, 7));
}

TEST_F(Dictionary, SharesItsItemsWithCopies) {
    auto first = std::make_unique<_MutableDictionary>();
    fill(*first, {"d=1", "c=2", "b=3", "a=4"});
    _MutableDictionary second(*first);
    _Container data = first->get_data();
    data.set_deleteAll(false);
    _MutableDictionary third;
    fill(third, {"gone=0"});
    third = second;
    // Grows, and takes the items along; the others sort bare pointers.
    first->add("e=5");
    third.sort(nullptr);
    EXPECT_EQ(linesOf(second), (Lines{"a=4", "b=3", "c=2", "d=1"}));
    EXPECT_EQ(static_cast<_DictionaryItem *>(data.getObject(0)), second[0]);
    EXPECT_EQ(linesOf(*first), (Lines{"d=1", "c=2", "b=3", "a=4", "e=5"}));
    second.removeAll();
    second.add("f=6");
}

TEST_F(Dictionary, EditsEntries) {
    _MutableDictionary dictionary;
    fill(dictionary, {"a=1", "b=2", "c=3"});
    EXPECT_TRUE(dictionary.permute(0, 2) && dictionary.permute(1, 1));
    EXPECT_FALSE(dictionary.permute(0, 3) || dictionary.permute(-1, 0) || dictionary.permute(3, 0));
    EXPECT_EQ(linesOf(dictionary), (Lines{"c=3", "b=2", "a=1"}));
    dictionary.deleteAt(1, 1);
    EXPECT_NE(dictionary[1], nullptr);
    dictionary.removeAt(1, 1);
    EXPECT_EQ(bytesOf(dictionary.toString()), "c=3\r\na=1\r\n");
    dictionary.setItem(1, new _DictionaryItem("d", "4"));
    dictionary.setItem(-1, dictionary[0]);
    dictionary.setItem(4, dictionary[0]);
    EXPECT_EQ(dictionary[-1], nullptr);
    EXPECT_EQ(linesOf(dictionary), (Lines{"c=3", "d=4", "a=1"}));
    dictionary.removeKey("a");
    dictionary.removeValue("1");
    dictionary.setValueForKey("9", "a");
    dictionary.setKeyForValue("z", "1");
    EXPECT_EQ(bytesOf(dictionary.customString(noText, ";")), "c=3;d=4;a=1;");
    EXPECT_EQ(bytesOf(dictionary.customString("::", noText)), "c::3\r\nd::4\r\na::1\r\n");
    dictionary.deleteAll();
    EXPECT_EQ(dictionary.getCount(), 0);
    EXPECT_NE(dictionary.toString().get_data(), nullptr);
}

TEST_F(Dictionary, EqualsInOrder) {
    RecordingStream stream("some bytes");
    _MutableDictionary left(stream);
    EXPECT_TRUE(left.loadFromStream(stream) && left.saveToStream(stream));
    EXPECT_TRUE(left.getCount() == 0 && stream.getPosition() == 0);
    _MutableDictionary right;
    fill(left, {"a=1", "b=x"});
    fill(right, {"a=1", "B=X"});
    EXPECT_TRUE(left.equals(&left) && left.equalsNoCase(&right));
    EXPECT_FALSE(left.equals(&right) || left.equals(nullptr) || left.equalsNoCase(nullptr));
    right.permute(0, 1);
    EXPECT_FALSE(left.equalsNoCase(&right));
    right.add("c=1");
    EXPECT_FALSE(left.equals(&right));
    left.deleteAt(0, 1);
    left.removeAt(0, 1);
    EXPECT_FALSE(left.equals(&left));
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
    EXPECT_EQ(bytesOf(item.getValue()), "d=e");
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
    _DictionaryItem empty("", "");
    _DictionaryItem item("a", "b");
    _DictionaryItem large("A", "\x80");
    EXPECT_EQ(item.compare(&large, byKey), 1);
    EXPECT_EQ(item.compare(&large, byValue), -1);
    EXPECT_EQ(item.compare(&large, byNothing), 0);
    EXPECT_EQ(never.compare(&item, byKey), -1);
    EXPECT_EQ(item.compare(nullptr, byValue), 1);
    EXPECT_EQ(never.compare(nullptr, byKey), 0);
    EXPECT_TRUE(never.equals(empty) && empty.equalsNoCase(never) && item.equalsNoCase(_DictionaryItem("A=B")));
    EXPECT_FALSE(item.equals(_DictionaryItem("A=b")) || item.equals(_DictionaryItem("a=B")));
    EXPECT_EQ(bytesOf(never.toString()), "=");
}

TEST_F(DictionaryItem, PassesThroughAStream) {
    for (auto const & [text, bytes] : std::vector<std::pair<char const *, std::string>>{
             {"a=bc", std::string("\1\0\0\0a\2\0\0\0bc", 11)}, {noText, std::string(8, '\0')}}) {
        RecordingStream stream;
        _DictionaryItem item(text);
        EXPECT_TRUE(item.saveToStream(stream));
        EXPECT_EQ(stream.bytes, bytes);
        stream.seekToBegin();
        _DictionaryItem loaded(stream);
        EXPECT_TRUE(loaded.equals(item));
        for (std::size_t length = 0; length < bytes.size(); ++length) {
            RecordingStream shorter(bytes.substr(0, length));
            EXPECT_TRUE(fails([&] { loaded.loadFromStream(shorter); }));
            shorter.seekToBegin();
            EXPECT_TRUE(fails([&] { std::make_unique<_DictionaryItem>(shorter); }));
        }
    }
    RecordingStream claims(std::string("\xFF\xFF\xFF\x7F", 4) + "a");
    EXPECT_TRUE(fails([&] { std::make_unique<_DictionaryItem>(claims); }));
}

// A zero inside a text ends it for comparison and for what is put together.
TEST_F(DictionaryItem, SeesATextUpToItsFirstZero) {
    RecordingStream stream(std::string("\3\0\0\0a\0b\1\0\0\0c", 12));
    _MutableDictionary dictionary;
    dictionary.add(new _DictionaryItem(stream));
    dictionary.add(new _DictionaryItem(dictionary[0]));
    EXPECT_TRUE(dictionary.keyIndex("a") == 0 && dictionary.keyIndexNoCase("A") == 0);
    EXPECT_EQ(bytesOf(dictionary.customString("=", ";")), std::string("a=c;a=c;\0\0", 10));
    EXPECT_EQ(dictionary[0]->compare(dictionary[1], byKey), 0);
    EXPECT_EQ(dictionary[0]->getKey().get_length(), 3u);
    EXPECT_EQ(dictionary[1]->getKey().get_length(), 1u);
}

} // namespace
