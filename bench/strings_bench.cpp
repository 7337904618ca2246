// The text classes beside std::u16string, std::string and the C library.

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <morvane/core/literals.h>
#include <morvane/strings/data_string.h>
#include <morvane/strings/text_builder.h>
#include <morvane/strings/text_view.h>
#include <morvane/strings/wide_string.h>
#include <random>
#include <string>

using namespace morvane::literals;

namespace {

constexpr std::size_t megabyte = 1 << 20;

/// Words of letters, as prose has them; "needle" is not among them.
template <typename Text>
Text words(std::size_t length) {
    std::mt19937 random(42);
    Text text;
    while (text.size() < length) {
        text.push_back(static_cast<typename Text::value_type>(random() % 6 == 0 ? ' ' : 'a' + random() % 26));
    }
    return text;
}

template <typename Target, typename Source>
Target converted(Source const & text) {
    return Target(text.begin(), text.end());
}

using WideUnits = std::basic_string<unsigned short int>;

_WideString wideWords(std::size_t length) {
    return _WideString(converted<WideUnits>(words<std::string>(length)).c_str());
}

void constructWide(benchmark::State & state) {
    WideUnits const text = converted<WideUnits>(words<std::string>(static_cast<std::size_t>(state.range(0))));
    for (auto _ : state) {
        _WideString copy(text.c_str());
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(constructWide)->Arg(0)->Arg(10)->Arg(100);

void constructStandard(benchmark::State & state) {
    std::u16string const text = words<std::u16string>(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        std::u16string copy(text.c_str());
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(constructStandard)->Arg(0)->Arg(10)->Arg(100);

void appendWide(benchmark::State & state) {
    for (auto _ : state) {
        _WideString text;
        for (int count = 0; count < 100; ++count) {
            text.add(u"ten units."_w);
        }
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(appendWide);

void appendBuilder(benchmark::State & state) {
    for (auto _ : state) {
        morvane::WideBuilder builder;
        for (int count = 0; count < 100; ++count) {
            builder.append(morvane::viewOf(u"ten units."_w));
        }
        _WideString text;
        builder.moveTo(text);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(appendBuilder);

void appendStandard(benchmark::State & state) {
    for (auto _ : state) {
        std::u16string text;
        for (int count = 0; count < 100; ++count) {
            text.append(u"ten units.");
        }
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(appendStandard);

void findUnitWide(benchmark::State & state) {
    _WideString const text = wideWords(megabyte);
    for (auto _ : state) {
        benchmark::DoNotOptimize(text.find(static_cast<unsigned short int>('#')));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(2 * megabyte));
}
BENCHMARK(findUnitWide);

void findUnitStandard(benchmark::State & state) {
    auto const text = words<std::u16string>(megabyte);
    for (auto _ : state) {
        benchmark::DoNotOptimize(text.find(u'#'));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(2 * megabyte));
}
BENCHMARK(findUnitStandard);

void findTextWide(benchmark::State & state) {
    _WideString const text = wideWords(megabyte);
    for (auto _ : state) {
        benchmark::DoNotOptimize(text.find(u"needle"_w));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(2 * megabyte));
}
BENCHMARK(findTextWide);

void findTextWideStandard(benchmark::State & state) {
    auto const text = words<std::u16string>(megabyte);
    for (auto _ : state) {
        benchmark::DoNotOptimize(text.find(u"needle"));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(2 * megabyte));
}
BENCHMARK(findTextWideStandard);

void findTextData(benchmark::State & state) {
    _DataString const text(words<std::string>(megabyte).c_str());
    for (auto _ : state) {
        benchmark::DoNotOptimize(text.find("needle"));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(megabyte));
}
BENCHMARK(findTextData);

void findTextDataStandard(benchmark::State & state) {
    auto const text = words<std::string>(megabyte);
    for (auto _ : state) {
        benchmark::DoNotOptimize(text.find("needle"));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(megabyte));
}
BENCHMARK(findTextDataStandard);

/// "aa...ab...aa" in a text of nothing but a: every place is a start in vain.
void findTextInVain(benchmark::State & state) {
    std::string const half(static_cast<std::size_t>(state.range(0)), 'a');
    _DataString const text(std::string(megabyte / 16, 'a').c_str());
    std::string const sought = half + 'b' + half;
    for (auto _ : state) {
        benchmark::DoNotOptimize(text.find(sought.c_str()));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(megabyte / 16));
}
BENCHMARK(findTextInVain)->Arg(16)->Arg(1024)->Arg(8192);

void findTextInVainStandard(benchmark::State & state) {
    std::string const half(static_cast<std::size_t>(state.range(0)), 'a');
    std::string const text(megabyte / 16, 'a');
    std::string const sought = half + 'b' + half;
    for (auto _ : state) {
        benchmark::DoNotOptimize(text.find(sought));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(megabyte / 16));
}
BENCHMARK(findTextInVainStandard)->Arg(16)->Arg(1024)->Arg(8192);

void replaceTextWide(benchmark::State & state) {
    _WideString const text = wideWords(megabyte);
    WideUnits from = converted<WideUnits>(std::string(" a"));
    WideUnits to = converted<WideUnits>(std::string("<and>"));
    for (auto _ : state) {
        _WideString copy(text);
        benchmark::DoNotOptimize(copy.replace(from.data(), to.data()));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(2 * megabyte));
}
BENCHMARK(replaceTextWide);

void replaceTextStandard(benchmark::State & state) {
    auto const text = words<std::u16string>(megabyte);
    for (auto _ : state) {
        // The standard class has no such call; this is the usual loop that copies once.
        std::u16string result;
        std::size_t done = 0;
        for (std::size_t hit = 0; (hit = text.find(u" a", done)) != text.npos; done = hit + 2) {
            result.append(text, done, hit - done).append(u"<and>");
        }
        result.append(text, done);
        benchmark::DoNotOptimize(result);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(2 * megabyte));
}
BENCHMARK(replaceTextStandard);

void replaceUnitWide(benchmark::State & state) {
    _WideString text = wideWords(megabyte);
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            text.replace(static_cast<unsigned short int>('a'), static_cast<unsigned short int>('a')));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(2 * megabyte));
}
BENCHMARK(replaceUnitWide);

void removeUnitWide(benchmark::State & state) {
    _WideString const text = wideWords(megabyte);
    for (auto _ : state) {
        _WideString copy(text);
        benchmark::DoNotOptimize(copy.remove(static_cast<unsigned short int>(' ')));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(2 * megabyte));
}
BENCHMARK(removeUnitWide);

void compareNoCaseWide(benchmark::State & state) {
    _WideString const text = wideWords(megabyte);
    _WideString upper(text);
    upper.makeUpper();
    for (auto _ : state) {
        benchmark::DoNotOptimize(text.compareNoCase(upper.arg()));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(2 * megabyte));
}
BENCHMARK(compareNoCaseWide);

void narrowWide(benchmark::State & state) {
    _WideString const text = wideWords(megabyte);
    for (auto _ : state) {
        benchmark::DoNotOptimize(text.toDataString().get_length());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(2 * megabyte));
}
BENCHMARK(narrowWide);

void formatWide(benchmark::State & state) {
    _WideString text;
    for (auto _ : state) {
        text.format(u"%s: %d of %08x"_w, u"a name of some length"_w, 12345, 0xABCDEFU);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(formatWide);

void formatData(benchmark::State & state) {
    _DataString text;
    for (auto _ : state) {
        text.format("%s: %d of %08x", "a name of some length", 12345, 0xABCDEFU);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(formatData);

void formatStandard(benchmark::State & state) {
    for (auto _ : state) {
        char buffer[256];
        std::snprintf(buffer, sizeof(buffer), "%s: %d of %08x", "a name of some length", 12345, 0xABCDEFU);
        std::string text(buffer);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(formatStandard);

void formatFloat(benchmark::State & state) {
    _DataString text;
    for (auto _ : state) {
        text.format("%f %.17g", 1234.5678, 0.1);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(formatFloat);

void formatFloatStandard(benchmark::State & state) {
    for (auto _ : state) {
        char buffer[256];
        std::snprintf(buffer, sizeof(buffer), "%f %.17g", 1234.5678, 0.1);
        std::string text(buffer);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(formatFloatStandard);

} // namespace

BENCHMARK_MAIN();
