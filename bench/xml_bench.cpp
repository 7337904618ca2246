// What reading, printing and deleting documents cost, and that the cost is linear.

#include <benchmark/benchmark.h>
#include <cstdint>
#include <map>
#include <memory>
#include <morvane/platform/debug_channel.h>
#include <morvane/strings/wide_string.h>
#include <morvane/xml/xml_document.h>
#include <string>
#include <vector>

namespace {

using Text = std::vector<unsigned short int>;

void append(Text & text, std::string const & ascii) {
    text.insert(text.end(), ascii.begin(), ascii.end());
}

/// Records of some fields each, about 36 bytes an element, as they come out of tables.
Text makeRecords(std::size_t units) {
    Text text;
    append(text, "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<records>\n");
    for (std::uint32_t number = 0; text.size() < units; ++number) {
        std::string const digits = std::to_string(number * 2654435761U);
        append(text, "  <record id=\"" + std::to_string(number) + "\" state=\"open\">\n    <name>Name " + digits
                         + "</name>\n    <street>" + digits + " Long Street</street>\n    <city code=\"" + digits
                         + "\">City</city>\n    <total>" + digits + ".00</total>\n  </record>\n");
    }
    append(text, "</records>");
    text.push_back(0);
    return text;
}

/// Elements of a dozen attributes.
Text makeAttributes(std::size_t units) {
    Text text;
    append(text, "<items>\n");
    for (std::uint32_t number = 0; text.size() < units; ++number) {
        append(text, "  <item");
        for (std::uint32_t attribute = 0; attribute < 12; ++attribute) {
            append(text, " name" + std::to_string(attribute) + "=\"value " + std::to_string(number + attribute) + "\"");
        }
        append(text, "/>\n");
    }
    append(text, "</items>");
    text.push_back(0);
    return text;
}

/// One tag of very many attributes.
Text makeOneTag(std::size_t units) {
    Text text;
    append(text, "<item");
    for (std::uint32_t number = 0; text.size() < units; ++number) {
        append(text, " name" + std::to_string(number) + "=\"1\"");
    }
    append(text, "/>");
    text.push_back(0);
    return text;
}

/// Elements one inside the other.
Text makeDeep(std::size_t units) {
    Text text;
    std::size_t const depth = units / 7;
    for (std::size_t level = 0; level < depth; ++level) {
        append(text, "<a>");
    }
    for (std::size_t level = 0; level < depth; ++level) {
        append(text, "</a>");
    }
    text.push_back(0);
    return text;
}

/// The text of that size, made once for all repetitions: what lies idle for long goes back to the system, and a
/// repetition shall find the heap as the one before it left it.
template <Text (*Make)(std::size_t)>
Text const & textOf(benchmark::State const & state) {
    static std::map<std::int64_t, Text> texts;
    Text & text = texts[state.range(0)];
    if (text.empty()) {
        text = Make(static_cast<std::size_t>(state.range(0)));
    }
    return text;
}

std::unique_ptr<DOM::_XMLDocument> load(Text const & text, benchmark::State & state) {
    auto document = std::make_unique<DOM::_XMLDocument>();
    _WideString error;
    if (!document->loadFromString(text.data(), error)) {
        state.SkipWithError("the document did not load");
    }
    return document;
}

/// The document's size is told in units, so the rate is that of a text of a byte a unit.
template <Text (*Make)(std::size_t)>
void loadAndDelete(benchmark::State & state) {
    Text const & text = textOf<Make>(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(load(text, state).get());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
    state.SetComplexityN(state.range(0));
}

template <Text (*Make)(std::size_t)>
void print(benchmark::State & state) {
    Text const & text = textOf<Make>(state);
    auto const document = load(text, state);
    // Indentation of a deep tree is a triangle of blanks.
    document->set_lineSpace(Make == makeDeep ? _WideString() : document->get_lineSpace());
    std::int64_t units = 0;
    for (auto _ : state) {
        units += document->toFormatString().get_length();
    }
    state.SetBytesProcessed(units);
    state.SetComplexityN(state.range(0));
}

constexpr std::int64_t smallest = std::int64_t{1} << 20;
constexpr std::int64_t largest = std::int64_t{1} << 26;

BENCHMARK(loadAndDelete<makeRecords>)->RangeMultiplier(4)->Range(smallest, largest)->Complexity(benchmark::oN);
BENCHMARK(loadAndDelete<makeAttributes>)->RangeMultiplier(4)->Range(smallest, largest)->Complexity(benchmark::oN);
BENCHMARK(loadAndDelete<makeOneTag>)->RangeMultiplier(4)->Range(smallest, largest)->Complexity(benchmark::oN);
BENCHMARK(loadAndDelete<makeDeep>)->RangeMultiplier(4)->Range(smallest, largest)->Complexity(benchmark::oN);
BENCHMARK(print<makeRecords>)->RangeMultiplier(4)->Range(smallest, largest)->Complexity(benchmark::oN);
BENCHMARK(print<makeAttributes>)->RangeMultiplier(4)->Range(smallest, largest)->Complexity(benchmark::oN);
BENCHMARK(print<makeDeep>)->RangeMultiplier(4)->Range(smallest, largest)->Complexity(benchmark::oN);

} // namespace

int main(int argc, char ** argv) {
    morvane::platform::setDebugListener(nullptr);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
