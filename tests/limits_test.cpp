// Numbers at the ends of 32 bits in the public calls that take a size, a count, an index or a position: nothing is done
// before they are checked. Where they ask for more memory than the test admits they meet a heap that refuses.
#include "counting_heap.h"
#include "ordinary_allocator.h"

#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
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
    void (*const changes[])(Text &, Unit const *, Int, Int) = {
        [](Text & text, Unit const *, Int a, Int) { text = Text(Unit('x'), a); },
        [](Text & text, Unit const *, Int a, Int) { text.add(Unit('x'), a); },
        [](Text & text, Unit const *, Int a, Int) { text.insert(a, Unit('x')); },
        [](Text & text, Unit const * piece, Int a, Int) { text.insert(a, piece); },
        [](Text & text, Unit const *, Int a, Int b) { text.deleteArray(a, b); },
        [](Text & text, Unit const *, Int a, Int b) { text = text.mid(a, b); },
        [](Text & text, Unit const *, Int a, Int) { text = text.mid(a); },
        [](Text & text, Unit const *, Int a, Int) { text = text.left(a); },
        [](Text & text, Unit const *, Int a, Int) { text = text.right(a); },
        [](Text & text, Unit const *, Int a, Int b) { text = text.extract(a, b); },
        [](Text & text, Unit const *, Int a, Int b) {
            text.setAt(a, text.find(Unit('x'), b) < 0 ? Unit('y') : Unit('x'));
        },
        [](Text & text, Unit const * piece, Int a, Int) { EXPECT_GE(text.find(piece, static_cast<Word>(a)), -1); },
    };
    for (auto const change : changes) {
        withAll([&](Int a, Int b, Word, Word) {
            Text text(word);
            change(text, word, a, b);
            ASSERT_TRUE(text.get_data() != nullptr ? text.get_data()[text.get_length()] == 0 : text.get_length() == 0);
        });
    }
}

TEST(Limits, HoldTexts) {
    checkTexts<_WideString>(u"word"_w);
    checkTexts<_DataString>("word");
    withAll([](Int a, Int b, Word, Word) {
        EXPECT_EQ(_WideString(u"word"_w, a).get_data() == nullptr, a > 65536) << "so many words";
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
        _Container container;
        container.set_delta(c);
        auto first = std::make_unique<_Element>();
        if (container.addObject(first.get()) == 0) {
            static_cast<void>(first.release());
        }
        EXPECT_EQ(container[d] == nullptr, d != 0 || first != nullptr);
        _WideStringArray texts;
        texts.addString(u"text"_w);
        texts.setString(c, texts.getString(d));
        EXPECT_EQ(_MutableArray(c, d).get_count() + texts.get_count(), 1u);
        _Stack stack(c, d);
        EXPECT_TRUE(d > sizeof stack || stack.isFull() || stack.push(&stack) == (c != 0));
        _MemoryManager manager(c);
        manager.fastUnallocate(manager.fastAllocate(d, true));
        manager.heapUnallocate(manager.heapAllocate(d, true));
    });
}

TEST(Limits, HoldStreams) {
    TemporaryFolder const folder;
    FileName const name = folder.put("file", "0123456789");
    std::vector<char> bytes(65536);
    std::function<void(_Stream &, Int, Int)> const calls[] = {
        [&](_Stream & stream, Int a, Int b) {
            stream.seek(a, _Stream::seekBegin);
            stream.read(bytes.data(), std::min(b, 65536));
        },
        [&](_Stream & stream, Int a, Int b) {
            stream.seek(a, _Stream::seekEnd);
            stream.seek(b, _Stream::seekCurrent);
        },
        [](_Stream & stream, Int a, Int b) {
            stream.setPosition(a);
            stream.readText(static_cast<Word>(b));
        },
        [](_Stream & stream, Int a, Int b) {
            _MemoryStream target(a, b);
            target.copyFrom(stream, b);
        },
        [&](_Stream & stream, Int a, Int b) { _Reader(stream, a).read(bytes.data(), std::min(b, 65536)); },
        [](_Stream & stream, Int a, Int b) { _Reader(stream, a).readText(static_cast<Word>(b)); },
        [](_Stream & stream, Int a, Int) {
            stream.writeLong(a);
            stream.seekToBegin();
            stream.readString();
        },
        [](_Stream & stream, Int a, Int) {
            stream.setSize(a);
            stream.readByte();
        },
    };
    for (auto const & call : calls) {
        withAll([&](Int a, Int b, Word, Word) {
            _MemoryStream stream(10);
            call(stream, a, b);
        });
        withAll([&](Int a, Int b, Word, Word) {
            _FileStream stream(name, 2);
            call(stream, a, b);
        });
        std::filesystem::resize_file(folder.path("file"), 10);
    }
}

TEST(Limits, HoldDocuments) {
    DOM::_XMLDocument document;
    _WideString error;
    ASSERT_TRUE(document.loadFromString(u"<?xml a='b'?><a b='c'><d/><!--e--></a>"_w, error));
    DOM::_XMLElement & root = *document.getRoot();
    withAll([&](Int a, Int b, Word c, Word d) {
        EXPECT_EQ(root.toString(a).get_data() == nullptr, a > 65536) << "indented by so much";
        EXPECT_EQ(root.getNode(c) != nullptr, c < 2);
        EXPECT_EQ(root.getAttribute(d) != nullptr, d < 1);
        EXPECT_EQ(UCS::scriptName(b).isEmpty(), UCS::scriptDescription(b).isEmpty());
    });
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
