// Text encodings beside the C library's iconv and a plain loop: UTF-8 both ways and code pages both ways, for four
// scripts, at 64 bytes and at 1 MB of encoded text.
//
// morvane  the public functions; for UTF-8 both passes, the one that counts and the one that fills
// iconv    one call into a buffer that is large enough
// plain    one sequence or one unit at a time; for UTF-8 both passes
//
// Bytes per second are those of the encoded text.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <iconv.h>
#include <morvane/encodings/code_page.h>
#include <morvane/encodings/string_utility.h>
#include <morvane/encodings/utf8_kernels.h>
#include <morvane/strings/data_string.h>
#include <morvane/strings/wide_string.h>
#include <string>
#include <vector>

namespace {

using namespace morvane;

enum Script { ascii, latin, greek, cyrillic, chinese };

char const * const scriptNames[] = {"ASCII", "Latin", "Greek", "Cyrillic", "Chinese"};

/// Sentences of the script, repeated up to `bytes` bytes of UTF-8.
std::vector<unsigned short int> unitsOf(Script script, std::size_t bytes) {
    std::u16string const sentences[] = {
        u"The quick brown fox jumps over the lazy dog, and runs on. ",
        u"Voyez le brick g\u00E9ant que j'examine pr\u00E8s du wharf, o\u00F9 l'\u00E9t\u00E9 s'ach\u00E8ve. ",
        u"\u039E\u03B5\u03C3\u03BA\u03B5\u03C0\u03AC\u03B6\u03C9 \u03C4\u03B7\u03BD "
        u"\u03C8\u03C5\u03C7\u03BF\u03C6\u03B8\u03CC\u03C1\u03B1 "
        u"\u03B2\u03B4\u03B5\u03BB\u03C5\u03B3\u03BC\u03AF\u03B1. ",
        u"\u0421\u044A\u0435\u0448\u044C \u0436\u0435 \u0435\u0449\u0451 \u044D\u0442\u0438\u0445 "
        u"\u043C\u044F\u0433\u043A\u0438\u0445 \u0431\u0443\u043B\u043E\u043A, \u0434\u0430 \u0447\u0430\u044E. ",
        u"\u89C6\u91CE\u65E0\u9650\u5E7F\uFF0C\u7A97\u5916\u6709\u84DD\u5929\u3002",
    };
    std::vector<unsigned short int> units;
    std::size_t used = 0;
    for (std::size_t index = 0; used + 3 <= bytes; ++index) {
        char16_t const unit = sentences[script][index % sentences[script].size()];
        used += unit < 0x80 ? 1 : unit < 0x800 ? 2 : 3;
        units.push_back(unit);
    }
    units.push_back(0);
    return units;
}

struct Sample {
    Sample(Script script, std::size_t bytes) : units(unitsOf(script, bytes)) {
        WideView const view = {units.data(), units.size() - 1};
        utf8Text.resize(utf8::countBytes(view));
        utf8::encode(view, utf8Text.data());
    }

    std::vector<unsigned short int> units; ///< zero-closed
    std::string utf8Text;
};

/// A converter of the C library, used for one whole text at a time.
class Converter {
public:
    Converter(char const * to, char const * from) : handle(iconv_open(to, from)) {}
    Converter(Converter const &) = delete;
    ~Converter() { iconv_close(handle); }

    Converter & operator=(Converter const &) = delete;

    void convert(void const * source, std::size_t sourceBytes, std::vector<char> & target) {
        char * in = const_cast<char *>(static_cast<char const *>(source));
        char * out = target.data();
        std::size_t outBytes = target.size();
        iconv(handle, &in, &sourceBytes, &out, &outBytes);
        benchmark::DoNotOptimize(target.data());
    }

private:
    iconv_t handle;
};

enum Way { morvaneWay, iconvWay, plainWay };

char const * const wayNames[] = {"morvane", "iconv", "plain"};

void decodeUtf8(benchmark::State & state, Script script, std::size_t bytes, Way way) {
    Sample const sample(script, bytes);
    std::vector<unsigned short int> target(sample.units.size());
    std::vector<char> raw(sample.units.size() * 2);
    Converter converter("UTF-16LE", "UTF-8");
    DataView const view = {sample.utf8Text.data(), sample.utf8Text.size()};
    _WideString message;
    for (auto _ : state) {
        std::int32_t count = 0;
        switch (way) {
        case morvaneWay:
            _StringUtility::convertUTF8StringToWideString(view.data, nullptr, message, count);
            _StringUtility::convertUTF8StringToWideString(view.data, target.data(), message, count);
            break;
        case iconvWay:
            converter.convert(view.data, view.length, raw);
            break;
        case plainWay:
            benchmark::DoNotOptimize(utf8::countUnits(utf8::Kernel::plain, view));
            benchmark::DoNotOptimize(utf8::decode(utf8::Kernel::plain, view, target.data()));
            break;
        }
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(view.length));
}

void encodeUtf8(benchmark::State & state, Script script, std::size_t bytes, Way way) {
    Sample const sample(script, bytes);
    std::vector<char> target(sample.utf8Text.size() + 1);
    Converter converter("UTF-8", "UTF-16LE");
    WideView const view = {sample.units.data(), sample.units.size() - 1};
    for (auto _ : state) {
        std::int32_t count = 0;
        switch (way) {
        case morvaneWay:
            _StringUtility::convertWideStringToUTF8String(view.data, nullptr, count);
            _StringUtility::convertWideStringToUTF8String(view.data, target.data(), count);
            break;
        case iconvWay:
            converter.convert(view.data, view.length * 2, target);
            break;
        case plainWay:
            benchmark::DoNotOptimize(utf8::countBytes(utf8::Kernel::plain, view));
            benchmark::DoNotOptimize(utf8::encode(utf8::Kernel::plain, view, target.data()));
            break;
        }
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(sample.utf8Text.size()));
}

struct PageCase {
    Script script;
    std::int32_t format;
    char const * charset;
};

constexpr PageCase pageCases[] = {
    {ascii, 16, "ISO-8859-1"},    {latin, 16, "ISO-8859-1"}, {latin, 17, "ISO-8859-2"},
    {cyrillic, 20, "ISO-8859-5"}, {greek, 22, "ISO-8859-7"},
};

void decodePage(benchmark::State & state, PageCase row, std::size_t bytes, Way way) {
    CodePage const & page = *findCodePage(row.format);
    std::vector<unsigned short int> const units = unitsOf(row.script, bytes);
    std::size_t const length = units.size() - 1;
    std::string text(length, ' ');
    encode(page, {units.data(), length}, text.data());
    std::vector<unsigned short int> target(length);
    std::vector<char> raw(length * 2);
    Converter converter("UTF-16LE", row.charset);
    for (auto _ : state) {
        switch (way) {
        case morvaneWay:
            decode(page, {text.data(), length}, target.data());
            break;
        case iconvWay:
            converter.convert(text.data(), length, raw);
            break;
        case plainWay:
            for (std::size_t index = 0; index < length; ++index) {
                target[index] = page.entries[static_cast<unsigned char>(text[index]) % page.entryCount].unicode;
            }
            break;
        }
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(length));
}

void encodePage(benchmark::State & state, PageCase row, std::size_t bytes, Way way) {
    CodePage const & page = *findCodePage(row.format);
    std::vector<unsigned short int> const units = unitsOf(row.script, bytes);
    std::size_t const length = units.size() - 1;
    std::vector<char> target(length + 1);
    Converter converter((std::string(row.charset) + "//TRANSLIT").c_str(), "UTF-16LE");
    for (auto _ : state) {
        switch (way) {
        case morvaneWay:
            encode(page, {units.data(), length}, target.data());
            break;
        case iconvWay:
            converter.convert(units.data(), length * 2, target);
            break;
        case plainWay:
            for (std::size_t index = 0; index < length; ++index) {
                auto const * const entry =
                    std::find_if(page.entries, page.entries + page.entryCount,
                                 [&](CodePageEntry const & each) { return each.unicode == units[index]; });
                target[index] = entry == page.entries + page.entryCount ? '?' : static_cast<char>(entry->code);
            }
            break;
        }
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(length));
}

} // namespace

int main(int argc, char ** argv) {
    for (std::size_t const bytes : {std::size_t{64}, std::size_t{1} << 20}) {
        for (Way const way : {morvaneWay, iconvWay, plainWay}) {
            auto const add = [&](std::string const & name, auto function, auto what) {
                std::string const full = name + "/" + std::to_string(bytes) + "/" + wayNames[way];
                benchmark::RegisterBenchmark(full.c_str(),
                                             [=](benchmark::State & state) { function(state, what, bytes, way); });
            };
            for (Script const script : {ascii, latin, greek, cyrillic, chinese}) {
                add(std::string("utf8_decode/") + scriptNames[script], decodeUtf8, script);
                add(std::string("utf8_encode/") + scriptNames[script], encodeUtf8, script);
            }
            for (PageCase const & row : pageCases) {
                std::string const name = std::string(row.charset) + "/" + scriptNames[row.script];
                add("page_decode/" + name, decodePage, row);
                add("page_encode/" + name, encodePage, row);
            }
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
