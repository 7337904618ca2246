// The lists and the dictionary beside those of the standard library; the scanners beside a search for every unit.
//
// append   a million pointers into an empty list
// lookUp   the key in the middle of a list of the given number of pairs
// sort     pairs in random order, by key

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <morvane/containers/container.h>
#include <morvane/containers/mutable_dictionary.h>
#include <morvane/strings/tag_scanner.h>
#include <morvane/strings/wide_string_array.h>
#include <morvane/strings/wide_string_parser.h>
#include <morvane/strings/wide_tag_array.h>
#include <morvane/strings/word_splitter.h>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr int appended = 1000000;

void appendToArray(benchmark::State & state) {
    int item = 0;
    for (auto _ : state) {
        _MutableArray array;
        for (int count = 0; count < appended; ++count) {
            array.add(&item);
        }
        benchmark::DoNotOptimize(array.getItem(0));
    }
    state.SetItemsProcessed(state.iterations() * appended);
}
BENCHMARK(appendToArray)->Unit(benchmark::kMillisecond);

void appendToVector(benchmark::State & state) {
    int item = 0;
    for (auto _ : state) {
        std::vector<void *> list;
        for (int count = 0; count < appended; ++count) {
            list.push_back(&item);
        }
        benchmark::DoNotOptimize(list.data());
    }
    state.SetItemsProcessed(state.iterations() * appended);
}
BENCHMARK(appendToVector)->Unit(benchmark::kMillisecond);

/// An empty container and one of a single item, as a tree has many.
void makeSmallContainers(benchmark::State & state) {
    _Object item;
    for (auto _ : state) {
        _Container empty;
        _Container single;
        single.set_deleteAll(false);
        single.addObject(&item);
        benchmark::DoNotOptimize(empty.get_count() + single.get_count());
    }
}
BENCHMARK(makeSmallContainers);

std::vector<std::pair<std::string, std::string>> shuffledPairs(std::int64_t count) {
    std::vector<int> numbers(static_cast<std::size_t>(count));
    std::iota(numbers.begin(), numbers.end(), 0);
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937(1));
    std::vector<std::pair<std::string, std::string>> pairs;
    for (int const number : numbers) {
        pairs.emplace_back("settings/key" + std::to_string(number), "value " + std::to_string(number));
    }
    return pairs;
}

void fill(_MutableDictionary & dictionary, std::vector<std::pair<std::string, std::string>> const & pairs) {
    for (auto const & [key, value] : pairs) {
        dictionary.add(key.c_str(), value.c_str());
    }
}

void lookUpInDictionary(benchmark::State & state) {
    auto const pairs = shuffledPairs(state.range(0));
    _MutableDictionary dictionary;
    fill(dictionary, pairs);
    std::string const & key = pairs[pairs.size() / 2].first;
    for (auto _ : state) {
        benchmark::DoNotOptimize(dictionary.keyIndex(key.c_str()));
    }
}
BENCHMARK(lookUpInDictionary)->Arg(10)->Arg(1000)->Arg(100000);

void lookUpInVector(benchmark::State & state) {
    auto const pairs = shuffledPairs(state.range(0));
    std::string const & key = pairs[pairs.size() / 2].first;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            std::find_if(pairs.begin(), pairs.end(), [&key](auto const & pair) { return pair.first == key; }));
    }
}
BENCHMARK(lookUpInVector)->Arg(10)->Arg(1000)->Arg(100000);

void sortDictionary(benchmark::State & state) {
    auto const pairs = shuffledPairs(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        _MutableDictionary dictionary;
        fill(dictionary, pairs);
        state.ResumeTiming();
        dictionary.sortBy(_DictionaryItem::sortByKey);
        state.PauseTiming();
        dictionary.deleteAll();
        state.ResumeTiming();
    }
}
BENCHMARK(sortDictionary)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMillisecond);

void sortDictionaryByProcedure(benchmark::State & state) {
    auto const pairs = shuffledPairs(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        _MutableDictionary dictionary;
        fill(dictionary, pairs);
        state.ResumeTiming();
        dictionary.sort([](_DictionaryItem * first, _DictionaryItem * second) {
            return second->compare(first, _DictionaryItem::sortByKey);
        });
        state.PauseTiming();
        dictionary.deleteAll();
        state.ResumeTiming();
    }
}
BENCHMARK(sortDictionaryByProcedure)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMillisecond);

void sortVector(benchmark::State & state) {
    auto const pairs = shuffledPairs(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        auto sorted = pairs;
        state.ResumeTiming();
        std::sort(sorted.begin(), sorted.end(),
                  [](auto const & left, auto const & right) { return left.first < right.first; });
        state.PauseTiming();
        sorted.clear();
        state.ResumeTiming();
    }
}
BENCHMARK(sortVector)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMillisecond);

/// About ten megabytes of units: short elements, or elements with many attributes.
std::u16string document(bool hasAttributes) {
    std::u16string text;
    for (int count = 0; text.size() < 5000000; ++count) {
        text += hasAttributes ? u"<record id=\"12345\" name=\"some name\" kind='short' flag=\"yes\"/>\n"
                              : u"<record>\n  <name>some name</name>\n  <kind>short</kind>\n</record>\n";
    }
    return text;
}

morvane::WideView viewOfUnits(std::u16string const & text) {
    return {reinterpret_cast<unsigned short int const *>(text.data()), text.size()};
}

/// What the reader of a document does with its text: tags, and the words of each.
void scanDocument(benchmark::State & state) {
    std::u16string const text = document(state.range(0) != 0);
    morvane::WideView const units = viewOfUnits(text);
    bool const cutsWords = state.range(1) != 0;
    for (auto _ : state) {
        morvane::TagScanner scanner(units, morvane::TagScanner::Rules::xml);
        morvane::MarkupPiece piece{};
        std::size_t count = 0;
        while (scanner.next(piece)) {
            ++count;
            if (cutsWords && piece.isTag) {
                morvane::WordSplitter splitter(units.part(piece.begin + 1, piece.end - piece.begin - 2),
                                               morvane::WordSplitter::Quotes::hold);
                for (morvane::WideView word; splitter.next(word);) {
                    ++count;
                }
            }
        }
        benchmark::DoNotOptimize(count);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(scanDocument)
    ->ArgNames({"attributes", "words"})
    ->ArgsProduct({{0, 1}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

/// The same by hand, unit by unit, without the rules.
void searchDocument(benchmark::State & state) {
    std::u16string const text = document(state.range(0) != 0);
    for (auto _ : state) {
        std::size_t count = 0;
        for (std::size_t at = 0; (at = text.find(u'<', at)) != std::u16string::npos; ++count) {
            at = text.find(u'>', at);
        }
        benchmark::DoNotOptimize(count);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(searchDocument)->ArgName("attributes")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void parseTags(benchmark::State & state) {
    std::u16string const text = document(state.range(0) != 0);
    _WideStringParser parser(viewOfUnits(text).data);
    for (auto _ : state) {
        _WideTagArray tags;
        parser.parseTags(&tags, _WideStringParser::docTypeXML, true);
        benchmark::DoNotOptimize(tags.get_count());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(parseTags)->ArgName("attributes")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void parseStrings(benchmark::State & state) {
    std::u16string const text = document(false);
    _WideStringParser parser(viewOfUnits(text).data);
    for (auto _ : state) {
        _WideStringArray words;
        parser.parseStrings(&words, true);
        benchmark::DoNotOptimize(words.get_count());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(parseStrings)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
