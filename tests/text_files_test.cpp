#include "counting_heap.h"
#include "ordinary_allocator.h"
#include "stream_testing.h"
#include "temporary_folder.h"
#include "text_testing.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <morvane/core/literals.h>
#include <morvane/encodings/string_utility.h>
#include <morvane/encodings/text_loading.h>
#include <morvane/encodings/utf8_codec.h>
#include <optional>
#include <string>
#include <vector>

using namespace morvane;
using namespace morvane::literals;

namespace {

using Format = _StringUtility::StringFileFormat;

/// What a load left behind; all of it is set to something before.
struct Loaded {
    bool fromStream(_Stream & stream) {
        return _StringUtility::loadStringFromStream(stream, data, wide, format, error);
    }
    bool fromFile(FileName const & name) { return _StringUtility::loadStringFromFile(name, data, wide, format, error); }
    bool fromBlock(void const * bytes, std::size_t size) {
        return _StringUtility::loadStringFromBinary(static_cast<unsigned char const *>(bytes),
                                                    static_cast<std::int32_t>(size), data, wide, format, error);
    }
    /// The same bytes from a file, from a stream and from a block.
    bool load(std::string const & bytes, int way, RecordingStream & stream) {
        TemporaryFolder const folder;
        // At an odd address, and with nothing behind it that may be read.
        std::vector<char> block(1, 'x');
        block.insert(block.end(), bytes.begin(), bytes.end());
        stream = RecordingStream(bytes);
        return way == 0   ? fromFile(folder.put("source", bytes))
               : way == 1 ? fromStream(stream)
                          : fromBlock(block.data() + 1, bytes.size());
    }

    _DataString data{"data"};
    _WideString wide{u"wide"_w};
    Format format = _StringUtility::formatISO8859_9;
    _StringUtility::StringUtilError error = _StringUtility::utilErrorConversion;
};

constexpr int ways = 3;

TEST(TextFiles, LoadTellsTheMarkAndTheReadings) {
    struct {
        std::string bytes;
        Format format;
        std::optional<std::string> data;    ///< nothing where the string isn't touched
        std::optional<std::u16string> wide; ///< likewise
        std::string calls = {};             ///< those that a stream of the client sees, where they are told
    } const rows[] = {
        {"\xFF\xFE\x41\x42\x43", _StringUtility::formatUnicode, {}, u"\x4241", "r3 b2 c0 e0 b2 r3 "},
        {std::string("\xFF\xFE\x41\0\0\0\x42\0", 8), _StringUtility::formatUnicode, {}, u"A"},
        {std::string("\xFE\xFF\0\x41\x20\xAC", 6),
         _StringUtility::formatUnicodeBigEndian,
         {},
         u"A\u20AC",
         "r3 b2 c0 e0 b2 r4 "},
        {"\xEF\xBB\xBF", _StringUtility::formatUTF8, "", {}, "r3 b3 c0 e0 b3 "},
        {"\xEF\xBB\xBF\xC3\xA9\xFF", _StringUtility::formatUTF8, "\xC3\xA9\xFF", {}, "r3 b3 c0 e0 b3 r3 "},
        {std::string("\xEF\xBB\xBFz\0z", 6), _StringUtility::formatUTF8, "z", {}},
        {"\xEF\xBB\x41", _StringUtility::formatUnknown, "\xEF\xBB\x41", u"\xBBEF"},
        {"text", _StringUtility::formatUnknown, "text", u"\x6574\x7478", "r3 c0 e0 b3 b0 r4 b0 r4 "},
        {std::string("a\0b\0c", 5), _StringUtility::formatUnknown, "a", u"ab"},
        {std::string("\0\0\0", 3), _StringUtility::formatUnknown, "", u""},
        {"", _StringUtility::formatASCII, {}, {}, "r3 "},
        {"\xFF\xFE", _StringUtility::formatASCII, {}, {}},
    };
    for (auto const & row : rows) {
        bool const isShort = row.bytes.size() < 3;
        for (int way = 0; way < ways; ++way) {
            SCOPED_TRACE(testing::PrintToString(row.bytes) + std::to_string(way));
            Loaded loaded;
            RecordingStream stream;
            EXPECT_EQ(fails([&] { EXPECT_TRUE(loaded.load(row.bytes, way, stream)); }), isShort);
            EXPECT_EQ(loaded.error, isShort ? _StringUtility::utilErrorConversion : _StringUtility::utilErrorNone);
            EXPECT_EQ(loaded.format, row.format);
            EXPECT_EQ(textOf(loaded.data), row.data.value_or("data"));
            EXPECT_EQ(textOf(loaded.wide), row.wide.value_or(u"wide"));
            EXPECT_EQ(loaded.wide.get_size(), (loaded.wide.get_length() + 1) * 2);
            EXPECT_TRUE(way != 1 || row.calls.empty() || stream.calls() == row.calls);
        }
    }
    EXPECT_TRUE(fails([] { Loaded().fromBlock(nullptr, 9); }));
}

TEST(TextFiles, StreamsThatBreakOffLeaveWhatCameBefore) {
    struct BreakingStream : RecordingStream {
        using RecordingStream::RecordingStream;
        std::int32_t read(void * buffer, std::int32_t count) override {
            return --readsLeft < 0 ? 0 : RecordingStream::read(buffer, count);
        }
        int readsLeft = 0;
    };
    long const liveAtFirst = ordinary_allocator::liveBlocks;
    struct {
        std::string bytes;
        int reads;
        char const * data;
    } const rows[] = {{"\xFF\xFEplain", 1, "data"},
                      {"\xEF\xBB\xBFplain", 1, "data"},
                      {"noplain", 1, "data"},
                      {"plain", 2, "plain"}}; // the third read is the one of the wide text
    for (auto const & [bytes, reads, data] : rows) {
        counting_heap::LeakCheck const leaks;
        Loaded loaded;
        BreakingStream stream(bytes);
        stream.readsLeft = reads;
        EXPECT_TRUE(fails([&] { loaded.fromStream(stream); }));
        EXPECT_EQ(textOf(loaded.data), data);
        EXPECT_EQ(textOf(loaded.wide), u"wide");
        EXPECT_EQ(loaded.error, _StringUtility::utilErrorConversion);
    }
    EXPECT_EQ(ordinary_allocator::liveBlocks, liveAtFirst);

    // A stream that cannot tell its size reads as a negative count, which no stream moves.
    Loaded loaded;
    RecordingStream unsized("\xFF\xFEplain");
    unsized.seekable = false;
    EXPECT_TRUE(fails([&] { loaded.fromStream(unsized); }));
    EXPECT_EQ(loaded.format, _StringUtility::formatUnicode);
}

TEST(TextFiles, FilesThatTellNoSizeAreProbedFirst) {
    struct SizelessStream : RecordingStream {
        using RecordingStream::RecordingStream;
        std::int32_t seek(std::int32_t offset, SeekOrigin origin) override {
            return origin == seekEnd ? 0 : RecordingStream::seek(offset, origin);
        }
    };
    LoadedText loaded;
    SizelessStream plain("plain");
    EXPECT_TRUE(loadText(plain, loaded));
    EXPECT_TRUE(loaded.text.format == _StringUtility::formatUnknown && loaded.text.body.length == 0);
    SizelessStream marked("\xEF\xBB\xBFplain");
    EXPECT_TRUE(fails([&] { loadText(marked, loaded); }));
}

TEST(TextFiles, MissingFilesAreTold) {
    TemporaryFolder const folder;
    FileName const name = folder.name("missing");
    Loaded loaded;
    EXPECT_FALSE(loaded.fromFile(name));
    EXPECT_EQ(loaded.error, _StringUtility::utilErrorFileNotFound);
    EXPECT_EQ(_StringUtility::loadDataStringFromFile(name, loaded.data), _StringUtility::utilErrorFileNotFound);
    EXPECT_EQ(_StringUtility::loadWideStringFromFile(name, loaded.wide), _StringUtility::utilErrorFileNotFound);
    EXPECT_EQ(loaded.format, _StringUtility::formatISO8859_9);
    EXPECT_EQ(textOf(loaded.data), "data");
    EXPECT_EQ(textOf(loaded.wide), u"wide");
}

TEST(TextFiles, WholeFilesLoadWithTheirMark) {
    TemporaryFolder const folder;
    std::pair<std::string, std::u16string> const cases[] = {
        {"", u""}, {"a", u""}, {"\xEF\xBB\xBF!", u"\xBBEF\x21BF"}, {"\xFF\xFE\x41\x42\x43", u"\xFEFF\x4241"}};
    for (auto const & [bytes, units] : cases) {
        FileName const name = folder.put("text", bytes);
        Loaded loaded;
        EXPECT_EQ(_StringUtility::loadDataStringFromFile(name, loaded.data), _StringUtility::utilErrorNone);
        EXPECT_EQ(_StringUtility::loadWideStringFromFile(name, loaded.wide), _StringUtility::utilErrorNone);
        EXPECT_EQ(textOf(loaded.data), bytes);
        EXPECT_EQ(textOf(loaded.wide), units);
        EXPECT_TRUE(loaded.data.get_data() != nullptr && loaded.wide.get_data() != nullptr);
    }
}

TEST(TextFiles, SavesWriteTheMarkAndOrderOfTheFormat) {
    TemporaryFolder const folder;
    std::string const little("\x41\0\xAC\x20", 4);
    std::string const big("\0\x41\x20\xAC", 4);
    std::map<int, std::string> wideFiles = {{4, little},  {5, "\xFF\xFE" + little},  {6, big},  {7, "\xFE\xFF" + big},
                                            {10, little}, {11, "\xFF\xFE" + little}, {12, big}, {13, "\xFE\xFF" + big},
                                            {14, little}, {15, "\xFF\xFE" + little}};
    std::map<int, std::string> dataFiles = {{0, "text"}, {1, "text"}, {2, "text"},
                                            {3, "text"}, {8, "text"}, {9, "\xEF\xBB\xBFtext"}};
    for (int number = -1; number <= 31; ++number) {
        SCOPED_TRACE(number);
        auto const format = static_cast<Format>(number);
        FileName const name = folder.put("saved", "former and longer contents");
        EXPECT_TRUE(_StringUtility::saveWideStringToFile(name, u"A\u20AC"_w, format));
        EXPECT_EQ(folder.get("saved"), wideFiles[number]);
        EXPECT_TRUE(_StringUtility::saveDataStringToFile(name, "text", format));
        EXPECT_EQ(folder.get("saved"), dataFiles[number]);
        FileName const none = folder.name("none");
        EXPECT_FALSE(_StringUtility::saveWideStringToFile(none, nullptr, format));
        EXPECT_FALSE(_StringUtility::saveDataStringToFile(none, nullptr, format));
        EXPECT_FALSE(std::filesystem::exists(folder.path("none")));
    }
    EXPECT_TRUE(fails([] { _StringUtility::saveWideStringToFile(u""_w, u"x"_w, _StringUtility::formatUnicode); }));
    EXPECT_TRUE(fails([] { _StringUtility::saveDataStringToFile(u""_w, "x", _StringUtility::formatUTF8); }));
}

TEST(TextFiles, LongTextsComeBack) {
    TemporaryFolder const folder;
    FileName const name = folder.name("text");
    std::u16string units;
    for (unsigned unit = 0; unit < 100000; ++unit) {
        units += static_cast<char16_t>(1 + unit % 0xFFFF);
    }
    _WideString const text = wideText(units);
    for (Format const format : {_StringUtility::formatUnicode, _StringUtility::formatUnicodeBigEndian}) {
        Loaded loaded;
        EXPECT_TRUE(_StringUtility::saveWideStringToFile(name, text, format) && loaded.fromFile(name));
        EXPECT_EQ(loaded.format, format);
        EXPECT_EQ(loaded.wide.compareStr(text), 0);
    }
    // Encoded piece by piece, the file is the one of a save at once; the closing zero ends the text.
    for (std::size_t const length : {std::size_t{0}, std::size_t{0x4000}, units.size(), units.size() + 1}) {
        _DataString encoded;
        utf8::encodeTo(viewOf(text).first(std::min(length, units.size())), encoded);
        saveUtf8File(name, {text.arg(), length});
        EXPECT_EQ(folder.get("text"), "\xEF\xBB\xBF" + textOf(encoded));
    }
}

TEST(TextFiles, ABlockMayLieInTheResults) {
    Loaded loaded;
    loaded.data = "plain text";
    for (bool const isWide : {false, true}) {
        void const * const block = isWide ? static_cast<void *>(loaded.wide.get_data()) : loaded.data.get_data();
        EXPECT_TRUE(loaded.fromBlock(block, 10));
        EXPECT_EQ(textOf(loaded.data), "plain text");
        EXPECT_EQ(textOf(loaded.wide), u"\x6C70\x6961\x206E\x6574\x7478");
    }
}

TEST(TextFiles, TextsThatAHeapRefusesFailTheLoad) {
    for (std::string const & bytes : {"\xFF\xFE" + std::string(300, 'u'), "\xEF\xBB\xBF" + std::string(300, 'd'),
                                      std::string(200, 'b') + '\0' + std::string(99, 'b')}) {
        for (int round = 0; round < 2 * ways; ++round) {
            long const liveAtFirst = ordinary_allocator::liveBlocks;
            bool isLoaded = false;
            for (long served = 0; !isLoaded; ++served) {
                ASSERT_LT(served, 10);
                counting_heap::LeakCheck const leaks;
                Loaded loaded;
                RecordingStream stream;
                round < ways ? counting_heap::refuseAfter(served)
                             : void(ordinary_allocator::servedBeforeRefusal = served);
                isLoaded = loaded.load(bytes, round % ways, stream);
                counting_heap::serveAll();
                ordinary_allocator::servedBeforeRefusal = -1;
                EXPECT_EQ(loaded.error, isLoaded ? _StringUtility::utilErrorNone : _StringUtility::utilErrorConversion);
            }
            EXPECT_EQ(ordinary_allocator::liveBlocks, liveAtFirst);
        }
    }
}

} // namespace
