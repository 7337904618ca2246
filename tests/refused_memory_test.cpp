// Every allocation of a piece of work is refused in turn: nothing leaks, nothing crashes, and the answers are those
// that are told.
#include "counting_heap.h"
#include "ordinary_allocator.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <memory>
#include <morvane/core/checks.h>
#include <morvane/core/lifecycle.h>
#include <morvane/morvane.h>
#include <morvane/platform/library_entry.h>
#include <new>
#include <string>
#include <string_view>
#include <temporary_folder.h>
#include <vector>

using namespace morvane::literals;

namespace {

constexpr std::uint32_t none = 0xFFFFFFFF;

/// The line of the first thing that did not hold; 0 if all did. An assertion would take memory of its own.
int badLine = 0;

void require(bool holds, int line = __builtin_LINE()) {
    badLine = badLine == 0 && !holds ? line : badLine;
}

/// True for a text that is there; one that was refused is released.
template <typename Text>
bool isThere(Text const & text, int line = __builtin_LINE()) {
    require(text.get_data() != nullptr ? text.get_data()[text.get_length()] == 0 : text.get_length() == 0, line);
    return text.get_data() != nullptr;
}

TemporaryFolder const * folder = nullptr;

std::string markup() {
    std::string text = "<?xml version='1.0' encoding='utf-8'?><r><d>x&#65;\u00E9</d><!--m--><![CDATA[n]]><e";
    for (char name = 'a'; name <= 'j'; ++name) {
        text += std::string(" ") + name + "='1'";
    }
    text += '>';
    for (int depth = 0; depth < 24; ++depth) {
        text += depth < 12 ? "<t u='v'>" : "</t>";
    }
    return text + "</e><f/><f/><f/><f/><f/><f/><f/><f/></r><!--z-->";
}

bool document() {
    static FileName const source = folder->put("source", markup());
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

template <typename Text>
void requireLength(Text const & text, std::int64_t length) {
    require(length == text.get_length());
}

/// One change after the other of a text, which then is whole or released; a number of hits is told in any case.
template <typename Text, typename Unit>
bool edits(Unit const * pattern) {
    static Unit const * const format = pattern;
    constexpr Unit b = 'b';
    static Unit word[] = {b, 0};
    static Text source(b, 500);
    static std::string const bytes(300, 'x');
    static std::vector<std::basic_string<Unit>> whole;
    void (*const changes[])(Text &) = {
        [](Text & text) { text = source; },
        [](Text & text) { text = word; },
        [](Text & text) { text = Unit('a'); },
        [](Text & text) { text = 0.5F; },
        [](Text & text) { isThere(text.mid(1)); },
        [](Text & text) { text.copy(text); },
        [](Text & text) { text.add(source); },
        [](Text & text) { text += text; },
        [](Text & text) { text += Unit('a'); },
        [](Text & text) { text.add(Unit('x'), 300); },
        [](Text & text) { text += source.get_data(); },
        [](Text & text) { text.add(bytes.c_str()); },
        [](Text & text) { requireLength(text, text.insert(3, word)); },
        [](Text & text) { requireLength(text, text.deleteArray(1, 2)); },
        [](Text & text) { require(text.remove(b) == 500); },
        [](Text & text) { require(text.remove(word) == 500); },
        [](Text & text) { require(text.replace(word, source.get_data()) == 500); },
        [](Text & text) { text.format(format, 7, text.get_data()); },
    };
    bool isWhole = true;
    for (std::size_t index = 0; index < std::size(changes); ++index) {
        Text text(source);
        if (isThere(text)) {
            changes[index](text);
            if (whole.size() == index) {
                whole.emplace_back(text.get_data(), text.get_length());
            }
            require(!isThere(text) || whole[index] == std::basic_string_view(text.get_data(), text.get_length()));
        }
        isWhole = isThere(text) && isWhole;
    }
    return isWhole;
}

bool lists() {
    _Container container;
    std::uint32_t held = 0;
    std::unique_ptr<_Container> sharer;
    for (int count = 0; count < 41; ++count) {
        auto object = std::make_unique<_Element>();
        if (container.addObject(object.get()) != none) {
            static_cast<void>(object.release());
            ++held;
        }
        sharer = count == 39 ? std::make_unique<_Container>(container) : std::move(sharer);
    }
    require(container.get_count() == held);
    _MutableArray bare;
    bare.append(container);
    _WideStringArray words;
    bool isWhole = held == 41 && bare.get_count() == 41;
    for (std::uint32_t index = 0; index < 20; ++index) {
        isWhole = words.addString(u"word"_w) != none && isThere(words.getString(index)) && isWhole;
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
    bool isWhole = dictionary.sort(nullptr) && dictionary.sortBy(_DictionaryItem::sortByValue);
    isWhole = isThere(dictionary.toString()) && isWhole;
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
    return isWhole;
}

bool componentsAndImages() {
    auto * factory = reinterpret_cast<COM::_IClassFactory *>(&badLine);
    auto * server = reinterpret_cast<COM::_IClassServer *>(&badLine);
    require(COM::createClassFactory(COM::comFactoryModule, &factory) == COM::comOk);
    require(COM::createClassServer(&server) == COM::comFailed);
    require(static_cast<void *>(factory) != &badLine && static_cast<void *>(server) != &badLine);
    bool const isWhole = factory != nullptr && server != nullptr;
    require(factory == nullptr || factory->release() == 0);
    require(server == nullptr || server->release() == 0);
    _Image const image(4, 4, 8);
    require(image.isValid() == (image.getPalette() != nullptr) && image.getWidth() == 4);
    return image.isValid() && isWhole;
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
    isWhole = isThere(_DictionaryItem(memory).getKey()) && isWhole;
    memory.setSize(200);
    return memory.write("x", 1) == 1 && isWhole;
}

bool scansAndConversions() {
    _WideStringParser parser(u"<a b='c'>text</a><!--d--> words 'in quotes'"_w);
    _WideTagArray tags;
    _WideStringArray words;
    _WideString wide;
    _DataString data;
    bool isWhole = parser.parseTags(&tags, _WideStringParser::docTypeXML, true) == 4;
    isWhole = parser.parseStrings(&words, true) == 5 && isThere(words.getString(4)) && isWhole;
    auto const format = _StringUtility::formatISO8859_1;
    isWhole = _StringUtility::convertDataStringToWideString("\xE9t\xE9", wide, format) && isThere(wide) && isWhole;
    isWhole = _StringUtility::convertWideStringToDataString(u"\u00E9t"_w, data, format) && isThere(data) && isWhole;
    for (auto const operation : {_StringUtility::operationEncode, _StringUtility::operationDecode}) {
        require(_StringUtility::convertWideStringToWideString(u"\u00E9&#65;"_w, wide, operation, 127));
        isWhole = isThere(wide) && isWhole;
    }
    return isThere(wide.toDataString()) && isWhole;
}

/// Another library beside the one that runs.
bool library() {
    _Memory * const memory = globalProcessMemory;
    _MemoryManager * const manager = globalMemoryManager;
    require(morvane::libraryEntry(nullptr, morvane::processAttach, nullptr) == 1);
    bool const isWhole = globalProcessMemory != nullptr && globalMemoryManager != nullptr;
    require(globalProcessMemory != nullptr || _WideString("nowhere").get_data() == nullptr);
    require(morvane::libraryEntry(nullptr, morvane::processDetach, nullptr) == 1);
    globalProcessMemory = memory;
    globalMemoryManager = manager;
    morvane::libraryIsDown = false; // the one that runs is not
    return isWhole;
}

/// Work, which gives true when it came out whole, and whether a failure may pass through it.
struct Work {
    char const * name;
    bool (*run)();
    bool throws;
};

void failInTurn(Work const & work) {
    EXPECT_TRUE(work.run()) << badLine; // what is made once is there from now on
    long failed = 0;
    for (int way = 0; way < 4; ++way) {
        bool const isHeap = way < 2;
        bool const goesOn = way % 2 != 0;
        bool wasRefused = true;
        for (long served = 0; wasRefused; ++served) {
            counting_heap::LeakCheck const leaks;
            long const live = ordinary_allocator::liveBlocks;
            auto const requests = [isHeap]() -> long {
                return isHeap ? counting_heap::requests() : ordinary_allocator::requests.load();
            };
            long const before = requests();
            bool isWhole = false;
            bool hasThrown = false;
            isHeap ? (goesOn ? counting_heap::refuseAfter(served) : counting_heap::refuseOnce(served))
                   : ordinary_allocator::refuse(served, goesOn);
            try {
                isWhole = work.run();
            } catch (std::bad_alloc const &) {
                hasThrown = true;
            } catch (int failure) {
                hasThrown = failure == 0;
            }
            counting_heap::serveAll();
            ordinary_allocator::serveAll();
            bool const isSound = ordinary_allocator::liveBlocks == live && badLine == 0 && hasThrown <= work.throws;
            ASSERT_TRUE(isSound) << work.name << ", way " << way << ", allocation " << served << ", line " << badLine;
            wasRefused = requests() - before > served;
            EXPECT_TRUE(wasRefused || isWhole);
            failed += wasRefused ? 1 : 0;
        }
    }
    std::printf("%s: %ld allocations failed\n", work.name, failed);
}

TEST(RefusedMemory, FailsTheWorkAloneAndLeaksNothing) {
    TemporaryFolder const files;
    folder = &files;
    auto const former = morvane::platform::setDebugListener([](unsigned short int const *) {});
    for (Work const & work : {Work{"document", document, true},
                              {"wide text", [] { return edits<_WideString>(u"%d of %s"_w); }, false},
                              {"text of bytes", [] { return edits<_DataString>("%d of %s"); }, false},
                              {"lists", lists, true},
                              {"dictionary", dictionary, true},
                              {"pools", pools, false},
                              {"components and images", componentsAndImages, false},
                              {"streams", streams, true},
                              {"scans and conversions", scansAndConversions, true},
                              {"library", library, false}}) {
        failInTurn(work);
    }
    morvane::platform::setDebugListener(former);
}

} // namespace
