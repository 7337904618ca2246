#include "counting_heap.h"
#include "ordinary_allocator.h"
#include "stream_testing.h"
#include "temporary_folder.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <morvane/core/literals.h>
#include <morvane/encodings/string_utility.h>
#include <morvane/encodings/text_loading.h>
#include <morvane/strings/data_string.h>
#include <morvane/strings/text_view.h>
#include <morvane/strings/wide_string.h>
#include <optional>
#include <string>
#include <vector>

using namespace morvane;
using namespace morvane::literals;

namespace {

using Format = _StringUtility::StringFileFormat;

std::u16string textOf(_WideString const & text) {
    WideView const view = viewOf(text);
    return {view.begin(), view.end()};
}

std::string textOf(_DataString const & text) {
    DataView const view = viewOf(text);
    return {view.begin(), view.end()};
}

/// What a load left behind; all of it is set to something before.
struct Loaded {
    _DataString data{"data"};
    _WideString wide{u"wide"_w};
    Format format = _StringUtility::formatISO8859_9;
    _StringUtility::StringUtilError error = _StringUtility::utilErrorConversion;
};

struct LoadCase {
    std::string bytes;
    Format format;
    std::optional<std::string> data;    ///< nothing where the string isn't touched
    std::optional<std::u16string> wide; ///< likewise
};

LoadCase const loadCases[] = {
    {std::string("\xFF\xFE\x41\0", 4), _StringUtility::formatUnicode, std::nullopt, u"A"},
    {std::string("\xFF\xFE\x41\0\x42", 5), _StringUtility::formatUnicode, std::nullopt, u"A"},
    {std::string("\xFF\xFE\x41\0\0\0\x42\0", 8), _StringUtility::formatUnicode, std::nullopt, u"A"},
    {"\xFF\xFE!", _StringUtility::formatUnicode, std::nullopt, u""},
    {std::string("\xFE\xFF\0\x41\x20\xAC", 6), _StringUtility::formatUnicodeBigEndian, std::nullopt, u"A\u20AC"},
    {"\xEF\xBB\xBF", _StringUtility::formatUTF8, "", std::nullopt},
    {"\xEF\xBB\xBF\xC3\xA9\xFF", _StringUtility::formatUTF8, "\xC3\xA9\xFF", std::nullopt},
    {std::string("\xEF\xBB\xBF"
                 "a\0b",
                 6),
     _StringUtility::formatUTF8, "a", std::nullopt},
    {"\xEF\xBB\x41", _StringUtility::formatUnknown, "\xEF\xBB\x41", u"\xBBEF"},
    {"\xFF\xFF\xFE", _StringUtility::formatUnknown, "\xFF\xFF\xFE", u"\xFFFF"},
    {"text", _StringUtility::formatUnknown, "text", u"\x6574\x7478"},
    {std::string("a\0b\0c", 5), _StringUtility::formatUnknown, "a", u"ab"},
    {std::string("\0\0\0", 3), _StringUtility::formatUnknown, "", u""},
};

void expectLoaded(LoadCase const & row, Loaded const & loaded, bool result) {
    EXPECT_TRUE(result);
    EXPECT_EQ(loaded.error, _StringUtility::utilErrorNone);
    EXPECT_EQ(loaded.format, row.format);
    EXPECT_EQ(textOf(loaded.data), row.data.value_or("data"));
    EXPECT_EQ(textOf(loaded.wide), row.wide.value_or(u"wide"));
    EXPECT_EQ(loaded.wide.get_size(), (loaded.wide.get_length() + 1) * 2);
}

TEST(TextFiles, LoadTellsTheMarkAndTheReadings) {
    TemporaryFolder const folder;
    for (LoadCase const & row : loadCases) {
        SCOPED_TRACE(testing::PrintToString(row.bytes));
        {
            Loaded loaded;
            FileName const name = folder.put("text", row.bytes);
            expectLoaded(
                row, loaded,
                _StringUtility::loadStringFromFile(name, loaded.data, loaded.wide, loaded.format, loaded.error));
        }
        {
            Loaded loaded;
            // At an odd address, and with nothing behind it that may be read.
            std::vector<unsigned char> block(row.bytes.size() + 1);
            std::copy(row.bytes.begin(), row.bytes.end(), block.begin() + 1);
            expectLoaded(row, loaded,
                         _StringUtility::loadStringFromBinary(block.data() + 1,
                                                              static_cast<std::int32_t>(row.bytes.size()), loaded.data,
                                                              loaded.wide, loaded.format, loaded.error));
        }
        {
            Loaded loaded;
            RecordingStream stream(row.bytes);
            expectLoaded(
                row, loaded,
                _StringUtility::loadStringFromStream(stream, loaded.data, loaded.wide, loaded.format, loaded.error));
        }
    }
}

TEST(TextFiles, ClientStreamsSeeTheSameCalls) {
    struct {
        std::string bytes;
        std::string calls;
    } const cases[] = {
        {"\xFF\xFE\x41\x42\x43", "r3 b2 c0 e0 b2 r3 "}, {"\xFE\xFF\x41\x42", "r3 b2 c0 e0 b2 r2 "},
        {"\xEF\xBB\xBF\x41", "r3 b3 c0 e0 b3 r1 "},     {"\xEF\xBB\xBF", "r3 b3 c0 e0 b3 "},
        {"plain", "r3 c0 e0 b3 b0 r5 b0 r5 "},
    };
    for (auto const & row : cases) {
        Loaded loaded;
        RecordingStream stream(row.bytes);
        EXPECT_TRUE(
            _StringUtility::loadStringFromStream(stream, loaded.data, loaded.wide, loaded.format, loaded.error));
        EXPECT_EQ(stream.calls(), row.calls);
    }
}

TEST(TextFiles, ShortSourcesFailAsTheirStreamDoes) {
    TemporaryFolder const folder;
    for (std::string const & bytes : {std::string(), std::string("a"), std::string("\xFF\xFE")}) {
        auto expectFailure = [](auto const & load) {
            Loaded loaded;
            EXPECT_TRUE(fails([&] { load(loaded); }));
            EXPECT_EQ(loaded.format, _StringUtility::formatASCII);
            EXPECT_EQ(loaded.error, _StringUtility::utilErrorConversion);
            EXPECT_EQ(textOf(loaded.data), "data");
            EXPECT_EQ(textOf(loaded.wide), u"wide");
        };
        expectFailure([&](Loaded & loaded) {
            _StringUtility::loadStringFromFile(folder.put("short", bytes), loaded.data, loaded.wide, loaded.format,
                                               loaded.error);
        });
        expectFailure([&](Loaded & loaded) {
            _StringUtility::loadStringFromBinary(reinterpret_cast<unsigned char const *>(bytes.data()),
                                                 static_cast<std::int32_t>(bytes.size()), loaded.data, loaded.wide,
                                                 loaded.format, loaded.error);
        });
        expectFailure([&](Loaded & loaded) {
            RecordingStream stream(bytes);
            _StringUtility::loadStringFromStream(stream, loaded.data, loaded.wide, loaded.format, loaded.error);
        });
    }
    Loaded loaded;
    EXPECT_TRUE(fails([&] {
        _StringUtility::loadStringFromBinary(nullptr, 9, loaded.data, loaded.wide, loaded.format, loaded.error);
    }));
}

/// Reads well so many times, then comes up short.
class BreakingStream : public RecordingStream {
public:
    BreakingStream(std::string const & text, int count) : RecordingStream(text), reads(count) {}

    std::int32_t read(void * buffer, std::int32_t count) override {
        return --reads < 0 ? 0 : RecordingStream::read(buffer, count);
    }

private:
    int reads;
};

TEST(TextFiles, StreamsThatBreakOffLeaveWhatCameBefore) {
    Loaded loaded;
    BreakingStream stream("plain", 2); // the third read is the one of the wide text
    EXPECT_TRUE(fails(
        [&] { _StringUtility::loadStringFromStream(stream, loaded.data, loaded.wide, loaded.format, loaded.error); }));
    EXPECT_EQ(loaded.format, _StringUtility::formatUnknown);
    EXPECT_EQ(textOf(loaded.data), "plain");
    EXPECT_EQ(textOf(loaded.wide), u"wide");
    EXPECT_EQ(loaded.error, _StringUtility::utilErrorConversion);

    // A stream that cannot tell its size reads as a negative count, which no stream moves.
    Loaded other;
    RecordingStream unsized("\xFF\xFEplain");
    unsized.seekable = false;
    EXPECT_TRUE(fails(
        [&] { _StringUtility::loadStringFromStream(unsized, other.data, other.wide, other.format, other.error); }));
    EXPECT_EQ(other.format, _StringUtility::formatUnicode);
}

TEST(TextFiles, MissingFilesAreTold) {
    TemporaryFolder const folder;
    FileName const name = folder.name("missing");
    Loaded loaded;
    EXPECT_FALSE(_StringUtility::loadStringFromFile(name, loaded.data, loaded.wide, loaded.format, loaded.error));
    EXPECT_EQ(loaded.error, _StringUtility::utilErrorFileNotFound);
    EXPECT_EQ(loaded.format, _StringUtility::formatISO8859_9);
    EXPECT_EQ(_StringUtility::loadDataStringFromFile(name, loaded.data), _StringUtility::utilErrorFileNotFound);
    EXPECT_EQ(_StringUtility::loadWideStringFromFile(name, loaded.wide), _StringUtility::utilErrorFileNotFound);
    EXPECT_EQ(textOf(loaded.data), "data");
    EXPECT_EQ(textOf(loaded.wide), u"wide");
    LoadedText text;
    EXPECT_EQ(loadTextFile(name, text), TextLoading::fileNotFound);
}

TEST(TextFiles, WholeFilesLoadWithTheirMark) {
    TemporaryFolder const folder;
    struct {
        std::string bytes;
        std::string data;
        std::u16string wide;
    } const cases[] = {
        {"", "", u""},
        {"a", "a", u""},
        {"\xEF\xBB\xBF!", "\xEF\xBB\xBF!", u"\xBBEF\x21BF"},
        {std::string("\xFF\xFE\x41\0\x42", 5), "\xFF\xFE\x41", u"\xFEFF\x41"},
    };
    for (auto const & row : cases) {
        FileName const name = folder.put("text", row.bytes);
        _DataString data("before");
        _WideString wide(u"before"_w);
        EXPECT_EQ(_StringUtility::loadDataStringFromFile(name, data), _StringUtility::utilErrorNone);
        EXPECT_EQ(_StringUtility::loadWideStringFromFile(name, wide), _StringUtility::utilErrorNone);
        EXPECT_EQ(textOf(data), row.data);
        EXPECT_EQ(textOf(wide), row.wide);
        EXPECT_NE(data.get_data(), nullptr);
        EXPECT_NE(wide.get_data(), nullptr);
    }
}

TEST(TextFiles, SavesWriteTheMarkAndOrderOfTheFormat) {
    TemporaryFolder const folder;
    std::string const little("\x41\0\xAC\x20", 4);
    std::string const big("\0\x41\x20\xAC", 4);
    std::map<int, std::string> const wideFiles = {
        {4, little},  {5, "\xFF\xFE" + little},  {6, big},  {7, "\xFE\xFF" + big},
        {10, little}, {11, "\xFF\xFE" + little}, {12, big}, {13, "\xFE\xFF" + big},
        {14, little}, {15, "\xFF\xFE" + little}};
    std::map<int, std::string> const dataFiles = {{0, "text"}, {1, "text"}, {2, "text"},
                                                  {3, "text"}, {8, "text"}, {9, "\xEF\xBB\xBFtext"}};
    auto expected = [](std::map<int, std::string> const & files, int format) {
        auto const file = files.find(format);
        return file == files.end() ? std::string() : file->second;
    };
    for (int format = -1; format <= 31; ++format) {
        SCOPED_TRACE(format);
        FileName const name = folder.put("saved", "former and longer contents");
        EXPECT_TRUE(_StringUtility::saveWideStringToFile(name, u"A\u20AC"_w, static_cast<Format>(format)));
        EXPECT_EQ(folder.get("saved"), expected(wideFiles, format));
        EXPECT_TRUE(_StringUtility::saveDataStringToFile(name, "text", static_cast<Format>(format)));
        EXPECT_EQ(folder.get("saved"), expected(dataFiles, format));
    }
}

TEST(TextFiles, SavesOfEmptyAndNullTexts) {
    TemporaryFolder const folder;
    FileName const name = folder.name("text");
    EXPECT_FALSE(_StringUtility::saveWideStringToFile(name, nullptr, _StringUtility::formatUnicode));
    EXPECT_FALSE(_StringUtility::saveDataStringToFile(name, nullptr, _StringUtility::formatUTF8));
    EXPECT_FALSE(std::filesystem::exists(folder.path("text")));
    EXPECT_TRUE(_StringUtility::saveWideStringToFile(name, u""_w, _StringUtility::formatUnicodeBigEndian));
    EXPECT_EQ(folder.get("text"), "\xFE\xFF");
    EXPECT_TRUE(_StringUtility::saveDataStringToFile(name, "", _StringUtility::formatUTF8));
    EXPECT_EQ(folder.get("text"), "\xEF\xBB\xBF");
    FileName const folderName = folder.name("");
    EXPECT_TRUE(
        fails([&] { _StringUtility::saveWideStringToFile(folderName, u"x"_w, _StringUtility::formatUnicode); }));
    EXPECT_TRUE(fails([&] { _StringUtility::saveDataStringToFile(folderName, "x", _StringUtility::formatANSI); }));
}

TEST(TextFiles, LongTextsComeBack) {
    TemporaryFolder const folder;
    FileName const name = folder.name("text");
    std::vector<unsigned short int> units;
    for (unsigned unit = 0; unit < 100000; ++unit) {
        units.push_back(static_cast<unsigned short int>(1 + unit % 0xFFFF));
    }
    units.push_back(0);
    _WideString const text(units.data());
    for (Format const format : {_StringUtility::formatUnicode, _StringUtility::formatUnicodeBigEndian}) {
        Loaded loaded;
        EXPECT_TRUE(_StringUtility::saveWideStringToFile(name, text, format));
        EXPECT_TRUE(_StringUtility::loadStringFromFile(name, loaded.data, loaded.wide, loaded.format, loaded.error));
        EXPECT_EQ(loaded.format, format);
        EXPECT_EQ(loaded.wide.compareStr(text), 0);
    }

    // Encoded piece by piece, the file is the one of a save at once.
    std::int32_t bytes = 0;
    _StringUtility::convertWideStringToUTF8String(text, nullptr, bytes);
    std::string encoded(static_cast<std::size_t>(bytes), '#');
    _StringUtility::convertWideStringToUTF8String(text, encoded.data(), bytes);
    for (std::size_t const length : {std::size_t{0}, std::size_t{0x4000}, units.size() - 1, units.size()}) {
        saveUtf8File(name, {units.data(), length});
        std::int32_t part = 0;
        std::vector<unsigned short int> piece(units.begin(), units.begin() + static_cast<std::ptrdiff_t>(length));
        piece.push_back(0);
        _StringUtility::convertWideStringToUTF8String(piece.data(), nullptr, part);
        EXPECT_EQ(folder.get("text"), "\xEF\xBB\xBF" + encoded.substr(0, static_cast<std::size_t>(part)));
    }
}

TEST(TextFiles, ReadingsOfABlockInsideTheResults) {
    Loaded loaded;
    loaded.data = "plain text";
    auto const * bytes = reinterpret_cast<unsigned char const *>(loaded.data.get_data());
    EXPECT_TRUE(_StringUtility::loadStringFromBinary(bytes, 10, loaded.data, loaded.wide, loaded.format, loaded.error));
    EXPECT_EQ(textOf(loaded.data), "plain text");
    EXPECT_EQ(textOf(loaded.wide), u"\x6C70\x6961\x206E\x6574\x7478");
    bytes = reinterpret_cast<unsigned char const *>(loaded.wide.get_data());
    EXPECT_TRUE(_StringUtility::loadStringFromBinary(bytes, 10, loaded.data, loaded.wide, loaded.format, loaded.error));
    EXPECT_EQ(textOf(loaded.data), "plain text");
}

TEST(TextFiles, TextsThatAHeapRefusesFailTheLoad) {
    TemporaryFolder const folder;
    std::string const sources[] = {"\xFF\xFE" + std::string(300, 'u'), "\xEF\xBB\xBF" + std::string(300, 'd'),
                                   std::string(300, 'b'), std::string(200, 'b') + '\0' + std::string(99, 'b')};
    for (std::string const & bytes : sources) {
        FileName const name = folder.put("text", bytes);
        RecordingStream stream(bytes);
        std::function<bool(Loaded &)> const ways[] = {
            [&](Loaded & loaded) {
                return _StringUtility::loadStringFromFile(name, loaded.data, loaded.wide, loaded.format, loaded.error);
            },
            [&](Loaded & loaded) {
                return _StringUtility::loadStringFromBinary(reinterpret_cast<unsigned char const *>(bytes.data()),
                                                            static_cast<std::int32_t>(bytes.size()), loaded.data,
                                                            loaded.wide, loaded.format, loaded.error);
            },
            [&](Loaded & loaded) {
                stream.position = 0;
                return _StringUtility::loadStringFromStream(stream, loaded.data, loaded.wide, loaded.format,
                                                            loaded.error);
            },
        };
        for (auto const & load : ways) {
            for (bool const isProcessHeap : {true, false}) {
                long const liveAtFirst = ordinary_allocator::liveBlocks;
                bool isLoaded = false;
                for (long served = 0; !isLoaded; ++served) {
                    ASSERT_LT(served, 10);
                    counting_heap::LeakCheck const leaks;
                    Loaded loaded;
                    if (isProcessHeap) {
                        counting_heap::refuseAfter(served);
                    } else {
                        ordinary_allocator::servedBeforeRefusal = served;
                    }
                    isLoaded = load(loaded);
                    counting_heap::serveAll();
                    ordinary_allocator::servedBeforeRefusal = -1;
                    EXPECT_EQ(loaded.error,
                              isLoaded ? _StringUtility::utilErrorNone : _StringUtility::utilErrorConversion);
                    EXPECT_TRUE(!isLoaded || (loaded.data.get_data() != nullptr && loaded.wide.get_data() != nullptr));
                }
                stream.calls();
                EXPECT_EQ(ordinary_allocator::liveBlocks, liveAtFirst);
            }
        }
    }
}

TEST(TextFiles, FailuresLeaveNothingBehind) {
    long const liveAtFirst = ordinary_allocator::liveBlocks;
    {
        counting_heap::LeakCheck const leaks;
        for (int reads = 1; reads <= 2; ++reads) {
            for (char const * const start : {"\xFF\xFE", "\xEF\xBB\xBF", ""}) {
                Loaded loaded;
                BreakingStream stream(start + std::string(300, 'x'), reads);
                fails([&] {
                    _StringUtility::loadStringFromStream(stream, loaded.data, loaded.wide, loaded.format, loaded.error);
                });
            }
        }
    }
    EXPECT_EQ(ordinary_allocator::liveBlocks, liveAtFirst);
}

} // namespace
