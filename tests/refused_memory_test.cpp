// Every allocation of a piece of work is refused in turn: nothing leaks, nothing crashes, and the answers are those
// that are told.
#include "counting_heap.h"
#include "ordinary_allocator.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <memory>
#include <morvane/core/lifecycle.h>
#include <morvane/morvane.h>
#include <morvane/platform/library_entry.h>
#include <new>
#include <source_location>
#include <string>
#include <temporary_folder.h>

using namespace morvane::literals;

namespace {

constexpr std::uint32_t none = 0xFFFFFFFF;

/// The line of the first thing that did not hold; 0 if all did. An assertion would take memory of its own.
unsigned badLine = 0;

void require(bool holds, std::source_location const place = std::source_location::current()) {
    badLine = badLine == 0 && !holds ? place.line() : badLine;
}

/// True for a text that is there; one that was refused is released.
template <typename Text>
bool isThere(Text const & text, std::source_location const place = std::source_location::current()) {
    require(text.get_data() != nullptr ? text.get_data()[text.get_length()] == 0 : text.get_length() == 0, place);
    return text.get_data() != nullptr;
}

TemporaryFolder const * folder = nullptr;
std::string const markup = [] {
    std::string text = "<?xml version='1.0' encoding='utf-8'?><r><d>x&#65;\u00E9</d><!--m--><![CDATA[n]]><e";
    for (char name = 'a'; name <= 'j'; ++name) {
        text += std::string(" ") + name + "='1'";
    }
    text += '>';
    for (int depth = 0; depth < 12; ++depth) {
        text += depth % 2 == 0 ? "<s>" : "<t u='v'>";
    }
    for (int depth = 12; depth-- > 0;) {
        text += depth % 2 == 0 ? "</s>" : "</t>";
    }
    return text + "</e></r><!--z-->";
}();

bool document() {
    static FileName const source = folder->put("source", markup);
    static FileName const target = folder->name("target");
    static std::string const path = folder->path("target");
    DOM::_XMLDocument document;
    _WideString error;
    bool isWhole = document.loadFromFile(source, error);
    require(isWhole == document.hasRoot());
    DOM::_XMLDocument const copy(document);
    if (!isWhole) {
        return false;
    }
    DOM::_XMLElement const element(*document.getRoot());
    _Container const & children = *document.getRoot()->get_childElements();
    std::uint32_t const count = children.get_count();
    DOM::_XMLElement * added = nullptr;
    try {
        added = document.getRoot()->addElement(u"added"_w, u"text"_w);
        require(added == nullptr || children[count] == added);
        isWhole = added != nullptr && added->setAttributeNamed(u"name"_w, u"value"_w) != nullptr;
    } catch (std::bad_alloc const &) {
        isWhole = false;
    }
    require(children.get_count() == count + (added != nullptr ? 1 : 0));
    for (auto const charset : {DOM::charsetUSASCII, DOM::charsetUTF8}) {
        document.set_encoding(charset);
        _WideString const printed = document.toFormatString();
        isWhole = isThere(printed) && isWhole;
        std::FILE * file = std::fopen(path.c_str(), "wb");
        std::fputs("former", file);
        std::fclose(file);
        bool const isSaved = document.saveToFile(target, error);
        file = std::fopen(path.c_str(), "rb");
        std::fseek(file, 0, SEEK_END);
        std::int64_t const bytes = std::ftell(file);
        std::fclose(file);
        require(isSaved ? bytes >= (isThere(printed) ? printed.get_length() : 400) : bytes == 6);
        isWhole = isSaved && isWhole;
    }
    return isWhole;
}

template <typename Text, typename Unit>
bool edits(Unit const * word, Unit const * pattern) {
    Text text(word);
    bool isWhole = isThere(text);
    auto const step = [&](auto change) {
        change();
        isWhole = isThere(text) && isWhole;
    };
    step([&] { text += word; });
    step([&] { text.add(Unit('x'), 300); });
    step([&] { text.insert(3, word); });
    step([&] { text.insert(0, Unit('y')); });
    step([&] { text.deleteArray(1, 2); });
    step([&] { text.replace(const_cast<Unit *>(word), const_cast<Unit *>(pattern)); });
    step([&] { text.remove(Unit('x')); });
    step([&] { text.makeReverse(); });
    step([&] { text = text.mid(1); });
    step([&] { text += text; });
    step([&] { text.format(pattern, 7, text.get_data()); });
    Text copy(text);
    copy = text.left(3);
    return isThere(copy) && isWhole;
}

bool lists() {
    _Container container;
    std::uint32_t held = 0;
    for (int count = 0; count < 40; ++count) {
        auto object = std::make_unique<_Element>();
        if (container.addObject(object.get()) != none) {
            static_cast<void>(object.release());
            ++held;
        }
    }
    _Container const sharer(container);
    auto last = std::make_unique<_Element>();
    if (container.addObject(last.get()) != none) {
        static_cast<void>(last.release());
        ++held;
    }
    require(container.get_count() == held);
    _MutableArray bare;
    bare.append(container);
    bare.append(sharer);
    _WideStringArray words;
    bool isWhole = held == 41 && bare.get_count() == 81;
    for (std::uint32_t count = 0; count < 20; ++count) {
        isWhole = words.addString(u"word"_w) != none && isWhole;
    }
    for (std::uint32_t index = 0; index < words.get_count(); ++index) {
        isWhole = isThere(words.getString(index)) && isWhole;
    }
    _Stack stack(4, 8);
    char item[8] = "1234567";
    return stack.push(item) && stack.pop(item) && isWhole;
}

bool dictionary() {
    _MutableDictionary dictionary;
    std::int32_t held = 0;
    for (char key[] = "a"; key[0] <= 'z'; ++key[0]) {
        held += dictionary.add(key, "value") != -1 ? 1 : 0;
    }
    require(dictionary.getCount() == held);
    bool isWhole = dictionary.sort(nullptr) && dictionary.sortBy(_DictionaryItem::sortByValue);
    _MemoryStream stream(1000);
    for (std::int32_t index = 0; index < dictionary.getCount(); ++index) {
        isWhole = dictionary[index]->saveToStream(stream) && isWhole;
    }
    stream.seekToBegin();
    isWhole = isThere(_DictionaryItem(stream).getKey()) && isThere(dictionary.toString()) && isWhole;
    _MutableDictionary const copy(&dictionary);
    require(dictionary.getCount() == held);
    return copy.equals(&dictionary) && held == 26 && isWhole;
}

bool pools() {
    _MemoryManager manager(1024);
    bool isWhole = true;
    void * blocks[70];
    for (std::uint32_t index = 0; index < 70; ++index) {
        blocks[index] = manager.fastAllocate(index * 16, true);
        isWhole = blocks[index] != nullptr && isWhole;
    }
    for (void * const block : blocks) {
        manager.fastUnallocate(block);
    }
    _MemoryManager const sharer(manager);
    return isWhole;
}

bool components() {
    auto * factory = reinterpret_cast<COM::_IClassFactory *>(&badLine);
    auto * server = reinterpret_cast<COM::_IClassServer *>(&badLine);
    require(COM::createClassFactory(COM::comFactoryModule, &factory) == COM::comOk);
    require(COM::createClassServer(&server) == COM::comFailed);
    require(static_cast<void *>(factory) != &badLine && static_cast<void *>(server) != &badLine);
    bool const isWhole = factory != nullptr && server != nullptr;
    require(factory == nullptr || factory->release() == 0);
    require(server == nullptr || server->release() == 0);
    return isWhole;
}

bool image() {
    _Image image(4, 4, 8);
    _Image const copy(image);
    require(image.isValid() == (image.getPalette() != nullptr) && image.getWidth() == 4);
    return image.isValid();
}

bool streams() {
    static FileName const name = folder->name("stream");
    _FileStream file(name, 0xFFFF);
    file.writeString("stored");
    _MemoryStream memory(100);
    bool isWhole = memory.copyFrom(file, 0) == 10;
    memory.seekToBegin();
    isWhole = isThere(_Reader(memory, 4).readString()) && isWhole;
    memory.seekToBegin();
    isWhole = isThere(memory.readString()) && isWhole;
    memory.setSize(200);
    return memory.write("x", 1) == 1 && isWhole;
}

bool scans() {
    _WideStringParser parser(u"<a b='c'>text</a><!--d--> words 'in quotes'"_w);
    _WideTagArray tags;
    _WideStringArray words;
    _WideString line;
    bool isWhole = parser.parseTags(&tags, _WideStringParser::docTypeXML, true) == 4;
    isWhole = parser.parseStrings(&words, true) == 5 && isWhole;
    for (std::uint32_t index = 0; index < words.get_count(); ++index) {
        isWhole = isThere(words.getString(index)) && isWhole;
    }
    parser.reset();
    return parser.nextLine(line) && isThere(line) && isWhole;
}

bool conversions() {
    _WideString wide;
    _DataString data;
    auto const format = _StringUtility::formatISO8859_1;
    bool isWhole = _StringUtility::convertDataStringToWideString("\xE9t\xE9", wide, format) && isThere(wide);
    isWhole = _StringUtility::convertWideStringToDataString(u"\u00E9t"_w, data, format) && isThere(data) && isWhole;
    for (auto const operation : {_StringUtility::operationEncode, _StringUtility::operationDecode}) {
        require(_StringUtility::convertWideStringToWideString(u"\u00E9&#65;"_w, wide, operation, 127));
        isWhole = isThere(wide) && isWhole;
    }
    return isThere(_StringUtility::formatName(_StringUtility::formatUTF8)) && isThere(wide.toDataString()) && isWhole;
}

/// Another library beside the one that runs.
bool library() {
    _Memory * const memory = globalProcessMemory;
    _MemoryManager * const manager = globalMemoryManager;
    require(morvane::libraryEntry(nullptr, morvane::processAttach, nullptr) == 1);
    bool const isWhole = globalProcessMemory != nullptr && globalMemoryManager != nullptr;
    if (globalMemoryManager != nullptr) {
        globalMemoryManager->fastUnallocate(globalMemoryManager->fastAllocate(16, true));
    }
    require(globalProcessMemory != nullptr || _WideString("nowhere").get_data() == nullptr);
    require(morvane::libraryEntry(nullptr, morvane::processDetach, nullptr) == 1);
    globalProcessMemory = memory;
    globalMemoryManager = manager;
    return isWhole;
}

struct Work {
    char const * name;
    bool (*run)(); ///< true when it came out whole
    bool throws;   ///< whether a failure may pass through it
};

class RefusedMemory : public testing::TestWithParam<Work> {
protected:
    static void SetUpTestSuite() {
        folder = new TemporaryFolder;
        morvane::platform::setDebugListener([](unsigned short int const *) {});
    }
    static void TearDownTestSuite() { delete folder; }
};

TEST_P(RefusedMemory, FailsTheWorkAloneAndLeaksNothing) {
    auto const & [name, run, throws] = GetParam();
    badLine = 0;
    EXPECT_TRUE(run()) << badLine; // what is made once is there from now on
    long failed = 0;
    for (int way = 0; way < 4; ++way) {
        bool const isHeap = way < 2;
        bool const goesOn = way % 2 != 0;
        for (long served = 0;; ++served) {
            counting_heap::LeakCheck const leaks;
            long const live = ordinary_allocator::liveBlocks;
            long const heapRequests = counting_heap::requests();
            long const ordinaryRequests = ordinary_allocator::requests;
            bool isWhole = false;
            bool hasThrown = false;
            isHeap ? (goesOn ? counting_heap::refuseAfter(served) : counting_heap::refuseOnce(served))
                   : ordinary_allocator::refuse(served, goesOn);
            try {
                isWhole = run();
            } catch (std::bad_alloc const &) {
                hasThrown = true;
            } catch (int failure) {
                hasThrown = true;
                require(failure == 0);
            }
            counting_heap::serveAll();
            ordinary_allocator::serveAll();
            long const leaked = ordinary_allocator::liveBlocks - live;
            SCOPED_TRACE(testing::Message() << name << ", way " << way << ", allocation " << served);
            ASSERT_EQ(badLine, 0u) << "the line that did not hold";
            ASSERT_EQ(leaked, 0);
            ASSERT_TRUE(!hasThrown || throws);
            if ((isHeap ? counting_heap::requests() - heapRequests : ordinary_allocator::requests - ordinaryRequests)
                <= served) {
                EXPECT_TRUE(isWhole);
                break;
            }
            ++failed;
        }
    }
    std::printf("%s: %ld allocations failed\n", name, failed);
    RecordProperty("failed", static_cast<int>(failed));
}

constexpr Work works[] = {
    {"document", document, true},
    {"wide text", [] { return edits<_WideString>(u"word "_w, u"%d of %s"_w); }, false},
    {"text of bytes", [] { return edits<_DataString>("word ", "%d of %s"); }, false},
    {"lists", lists, true},
    {"dictionary", dictionary, true},
    {"pools", pools, false},
    {"components", components, false},
    {"image", image, false},
    {"streams", streams, true},
    {"scans", scans, true},
    {"conversions", conversions, false},
    {"library", library, false},
};

INSTANTIATE_TEST_SUITE_P(Each, RefusedMemory, testing::ValuesIn(works),
                         [](auto const & row) { return "Work" + std::to_string(row.index); });

} // namespace
