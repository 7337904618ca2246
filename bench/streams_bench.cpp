// Typed reads from a file and from memory: straight from the stream, and ahead through a reader; and what an open and a
// close cost beside the system's own calls.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <morvane/streams/file_stream.h>
#include <morvane/streams/file_utility.h>
#include <morvane/streams/memory_stream.h>
#include <morvane/streams/reader.h>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr std::int32_t valueCount = 1 << 16;

/// A file of 32-bit values, gone with the program.
class ValueFile {
public:
    ValueFile() {
        std::string text = (std::filesystem::temp_directory_path() / "morvane-XXXXXX").string();
        ::close(mkstemp(text.data()));
        path = text;
        std::u16string const wide = path.u16string();
        units.assign(wide.begin(), wide.end());
        units.push_back(0);
        std::vector<std::int32_t> const values(valueCount, 7);
        _FileStream(name(), 0xFFFF).writeBuffer(values.data(), valueCount * 4);
    }
    ValueFile(ValueFile const &) = delete;
    ~ValueFile() { std::filesystem::remove(path); }

    ValueFile & operator=(ValueFile const &) = delete;

    unsigned short int const * name() const { return units.data(); }

    std::filesystem::path path;

private:
    std::vector<unsigned short int> units;
};

ValueFile const & valueFile() {
    static ValueFile const file;
    return file;
}

template <typename Source>
void readLongs(benchmark::State & state, Source & source) {
    std::int32_t sum = 0;
    for (std::int32_t index = 0; index < valueCount; ++index) {
        sum += source.readLong();
    }
    benchmark::DoNotOptimize(sum);
    state.SetItemsProcessed(state.items_processed() + valueCount);
}

void fileStraight(benchmark::State & state) {
    for (auto _ : state) {
        _FileStream stream(valueFile().name(), 0);
        readLongs(state, stream);
    }
}

void fileAhead(benchmark::State & state) {
    for (auto _ : state) {
        _FileStream stream(valueFile().name(), 0);
        _Reader reader(stream, static_cast<std::int32_t>(state.range(0)));
        readLongs(state, reader);
    }
}

void memoryStraight(benchmark::State & state) {
    for (auto _ : state) {
        _MemoryStream stream(valueCount * 4);
        readLongs(state, stream);
    }
}

void memoryAhead(benchmark::State & state) {
    for (auto _ : state) {
        _MemoryStream stream(valueCount * 4);
        _Reader reader(stream, static_cast<std::int32_t>(state.range(0)));
        readLongs(state, reader);
    }
}

void openAndClose(benchmark::State & state) {
    for (auto _ : state) {
        _FileUtility::fileClose(_FileUtility::fileOpen(valueFile().name(), 0));
    }
}

void systemOpenAndClose(benchmark::State & state) {
    for (auto _ : state) {
        ::close(::open(valueFile().path.c_str(), O_RDONLY | O_CLOEXEC));
    }
}

BENCHMARK(fileStraight);
BENCHMARK(fileAhead)->Arg(64)->Arg(4096)->Arg(65536);
BENCHMARK(memoryStraight);
BENCHMARK(memoryAhead)->Arg(64)->Arg(4096)->Arg(65536);
BENCHMARK(openAndClose);
BENCHMARK(systemOpenAndClose);

} // namespace

BENCHMARK_MAIN();
