// Numbers at the ends of 32 bits in the public calls that take a size, a count, an index or a position: nothing is done
// before they are checked. What asks for more memory than the test admits meets a heap that refuses.
#include "counting_heap.h"
#include "ordinary_allocator.h"

#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <morvane/core/lifecycle.h>
#include <morvane/morvane.h>
#include <temporary_folder.h>
#include <vector>

using namespace morvane::literals;

namespace {

using Int = std::int32_t;
using Word = std::uint32_t;
constexpr Int most = std::numeric_limits<Int>::max();
constexpr Int numbers[] = {-most - 1, -most, -most / 2,  -65536,     -2,         -1,         0,        1,
                           4,         65536, 0x1FFFFFFF, 0x20000000, 0x3FFFFFFF, 0x40000000, most - 1, most};

/// `call` with each pair of the numbers, signed and unsigned.
void withAll(std::function<void(Int a, Int b, Word c, Word d)> const & call) {
    counting_heap::LeakCheck const leaks;
    long const live = ordinary_allocator::liveBlocks;
    counting_heap::refuseAbove(1 << 24);
    ordinary_allocator::refuseAbove(1 << 24);
    for (Int const a : numbers) {
        for (Int const b : numbers) {
            try {
                call(a, b, static_cast<Word>(a), static_cast<Word>(b));
            } catch (int failure) {
                EXPECT_EQ(failure, 0);
            }
        }
    }
    ordinary_allocator::serveAll();
    EXPECT_EQ(ordinary_allocator::liveBlocks, live);
}

template <typename Text, typename Unit>
void checkTexts(Unit const * word) {
    constexpr Unit x = 'x';
    withAll([word](Int a, Int b, Word c, Word) {
        Text const text(word);
        std::vector<Text> results{Text(x, a),   text.mid(a, b), text.mid(a),
                                  text.left(a), text.right(a),  text.extract(a, b)};
        results.insert(results.end(), 4, text);
        results[6].add(x, a);
        results[7].insert(a, x);
        results[7].insert(b, word);
        results[8].deleteArray(a, b);
        results[9].setAt(a, text.find(x, b) < text.find(word, c) ? x : word[0]);
        for (Text const & result : results) {
            ASSERT_TRUE(result.get_data() != nullptr ? result.get_data()[result.get_length()] == 0
                                                     : result.get_length() == 0);
        }
    });
}

TEST(Limits, HoldTextsAndTrees) {
    checkTexts<_WideString>(u"word"_w);
    checkTexts<_DataString>("word");
    DOM::_XMLDocument document;
    _WideString error;
    ASSERT_TRUE(document.loadFromString(u"<a b='c'><d/><!--e--></a>"_w, error));
    DOM::_XMLElement & root = *document.getRoot();
    withAll([&](Int a, Int b, Word c, Word d) {
        EXPECT_EQ(_WideString(u"word"_w, a).get_data() == nullptr, a > 65536) << "so many words";
        EXPECT_EQ(root.toString(a).get_data() == nullptr, a > 65536) << "indented by so much";
        EXPECT_TRUE((root.getNode(c) != nullptr) == (c < 2) && (root.getAttribute(d) != nullptr) == (d < 1));
        _WideString line;
        _WideStringParser parser(u"<a>word"_w);
        parser.set_position(a);
        parser.offset(b);
        parser.nextLine(line);
        EXPECT_LE(line.get_length(), 7u);
    });
}

TEST(Limits, HoldListsAndPools) {
    withAll([](Int a, Int b, Word c, Word d) {
        _MutableDictionary dictionary;
        dictionary.add("key", "value");
        dictionary.add("other", "value");
        dictionary.deleteAt(c, d);
        dictionary.removeAt(c, d);
        EXPECT_EQ(dictionary.permute(a, b), c < 2 && d < 2);
        _MutableArray array;
        array.set_delta(c);
        bool const isAdded = array.add(&array) == 0;
        EXPECT_EQ(array[0], isAdded ? &array : nullptr);
        _WideStringArray texts;
        texts.addString(u"text"_w);
        texts.setString(c, texts.getString(d));
        EXPECT_EQ(_MutableArray(c, d).get_count() + texts.get_count(), 1u);
        _Stack stack(c, d);
        EXPECT_TRUE(d > sizeof stack || stack.isFull() || stack.push(&stack) == (c != 0));
        _MemoryManager manager(c);
        manager.fastUnallocate(manager.fastAllocate(d, true));
    });
}

TEST(Limits, HoldStreams) {
    TemporaryFolder const folder;
    FileName const name = folder.put("file", "0123456789");
    void (*const calls[])(_Stream &, Int, Int) = {
        [](_Stream & stream, Int a, Int b) { stream.seek(a, _Stream::seekEnd), stream.seek(b, _Stream::seekCurrent); },
        [](_Stream & stream, Int a, Int b) { stream.setPosition(a), stream.readText(static_cast<Word>(b)); },
        [](_Stream & stream, Int a, Int b) { _MemoryStream(a, b).copyFrom(stream, b); },
        [](_Stream & stream, Int a, Int b) { _Reader(stream, a).readText(static_cast<Word>(b)); },
        [](_Stream & stream, Int a, Int) { stream.writeLong(a), stream.seekToBegin(), stream.readString(); },
        [](_Stream & stream, Int a, Int) { stream.setSize(a), stream.readByte(); },
    };
    for (auto const call : calls) {
        withAll([&](Int a, Int b, Word, Word) {
            _MemoryStream memory(10);
            _FileStream file(name, 2);
            call(a % 2 != 0 ? static_cast<_Stream &>(memory) : file, a, b);
        });
        std::filesystem::resize_file(folder.path("file"), 10);
    }
}

TEST(Limits, HoldTextsOf64MiB) {
    constexpr Word units = 1 << 25;
    DOM::_XMLDocument document;
    _WideString error;
    _WideString text('x', units);
    text.insert(0, u"<a>"_w);
    text += u"</a>"_w;
    ASSERT_TRUE(document.loadFromString(text, error));
    text = _WideString();
    EXPECT_EQ(document.getRoot()->getNode(0)->get_nodeValue().get_length(), units);
    EXPECT_EQ(document.toFormatString().get_length(), units + 9);
}

} // namespace
