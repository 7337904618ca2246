#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <morvane/core/lifecycle.h>
#include <morvane/core/memory.h>
#include <morvane/streams/file_stream.h>
#include <morvane/streams/file_utility.h>
#include <morvane/streams/memory_stream.h>
#include <morvane/streams/persistant.h>
#include <morvane/streams/reader.h>
#include <morvane/strings/data_string.h>
#include <optional>
#include <stream_testing.h>
#include <temporary_folder.h>
#include <tuple>
#include <utility>

using namespace std::string_literals;

namespace {

constexpr std::int32_t largest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t smallest = std::numeric_limits<std::int32_t>::min();

TEST(Stream, StoresValuesLeastSignificantByteFirst) {
    RecordingStream stream;
    stream.writeByte(0xFE);
    stream.writeChar(-2);
    stream.writeBoolean(true);
    stream.writeWord(0xFEDC);
    stream.writeShort(-2);
    stream.writeLong(smallest + 1);
    stream.writeLongWord(0xFEDCBA98);
    stream.writeFloat(-1.5f);
    stream.writeDouble(-0.1);
    for (char const * const text : {"ab", "", static_cast<char const *>(nullptr)}) {
        stream.writeString(text);
    }
    stream.writeText("cd");
    stream.writeText(nullptr);
    EXPECT_EQ(stream.calls(), "w1 w1 w1 w2 w2 w4 w4 w4 w8 w4 w2 w4 w4 w2 ");
    EXPECT_EQ(stream.bytes,
              "\xFE\xFE\1\xDC\xFE\xFE\xFF\1\0\0\x80\x98\xBA\xDC\xFE\0\0\xC0\xBF\x9A\x99\x99\x99\x99\x99\xB9"
              "\xBF\2\0\0\0ab\0\0\0\0\0\0\0\0cd"s);
    stream.bytes += "\x80\0"s;
    stream.seekToBegin();
    EXPECT_TRUE(stream.readByte() == 0xFE && stream.readChar() == char(-2) && stream.readBoolean());
    EXPECT_TRUE(stream.readWord() == 0xFEDC && stream.readShort() == -2);
    EXPECT_TRUE(stream.readLong() == smallest + 1 && stream.readLongWord() == 0xFEDCBA98);
    EXPECT_TRUE(stream.readFloat() == -1.5f && stream.readDouble() == -0.1);
    for (char const * const text : {"ab", "", ""}) {
        EXPECT_EQ(bytesOf(stream.readString()), text);
    }
    EXPECT_TRUE(bytesOf(stream.readText(2)) == "cd" && bytesOf(stream.readText(0)).empty());
    EXPECT_TRUE(stream.readBoolean() && !stream.readBoolean());
    EXPECT_EQ(stream.getPosition(), stream.getSize());
    EXPECT_TRUE(fails([&] { stream.readByte(); }));
}

TEST(Stream, CallsTheVirtualOperationsInAFixedOrder) {
    RecordingStream stream("0123456");
    char buffer[4];
    stream.position = 4;
    EXPECT_EQ(stream.getSize(), 7);
    EXPECT_EQ(stream.calls(), "c0 e0 b4 ");
    EXPECT_TRUE(fails([&] { stream.readLong(); }));
    EXPECT_EQ(stream.getPosition(), 7) << "what a short transfer moved stays moved";
    stream.mostMoved = 1;
    EXPECT_TRUE(fails([&] { stream.writeWord(0x4141); }));
    EXPECT_EQ(stream.bytes, "0123456A");
    EXPECT_EQ(stream.calls(), "r4 c0 w2 ");
    EXPECT_EQ(stream.readBuffer(buffer, 0), 0);
    EXPECT_EQ(stream.writeBuffer(nullptr, 0), 0);
    EXPECT_TRUE(fails([&] { stream.readBuffer(buffer, -1); }));
    EXPECT_TRUE(fails([&] { stream.writeBuffer(buffer, smallest); }));
    EXPECT_EQ(stream.calls(), "");
}

TEST(Stream, CopiesInBlocksOfBoundedSize) {
    std::tuple<std::int32_t, std::int32_t, char const *, char const *> const cases[] = {
        {61440, 61440, "r61440 ", "w61440 "},
        {61441, 61441, "r61440 r1 ", "w61440 w1 "},
        {130000, 0, "b0 c0 e0 b0 r61440 r61440 r7120 ", "w61440 w61440 w7120 "},
        {0, 0, "b0 c0 e0 b0 ", ""},
        {10, 4, "r4 ", "w4 "},
        {61441, 61442, "r61440 r2 ", "w61440 "},
        {10, -1, "", ""},
    };
    for (auto const & [size, count, sourceCalls, targetCalls] : cases) {
        RecordingStream source(std::string(static_cast<std::size_t>(size), 'x'));
        RecordingStream target;
        source.position = count == 0 ? size / 2 : 0;
        std::int32_t copied = -1;
        bool const failed = fails([&, wanted = count] { copied = target.copyFrom(source, wanted); });
        EXPECT_EQ(failed, count < 0 || count > size);
        EXPECT_EQ(copied, failed ? -1 : count != 0 ? count : size);
        EXPECT_EQ(source.calls(), sourceCalls);
        EXPECT_EQ(target.calls(), targetCalls);
    }
}

TEST(Stream, BelievesNoStoredLength) {
    std::tuple<std::int32_t, std::size_t, bool, bool, char const *> const cases[] = {
        {-1, 10, true, false, "r4 "},
        {3, 2, true, false, "r4 r3 "},
        {65536, 65536, true, true, "r4 r65536 "},
        {65537, 65537, true, true, "r4 c0 e0 b4 r65537 "},
        {largest, 10, true, false, "r4 c0 e0 b4 "},
        {largest, 70000, false, false, "r4 c0 e0 b-1 r65536 r65536 "},
        {140000, 140000, false, true, "r4 c0 e0 b-1 r65536 r65536 r8928 "},
    };
    for (auto const & [length, size, seekable, succeeds, calls] : cases) {
        RecordingStream stream;
        stream.writeLong(length);
        stream.bytes += std::string(size, 'x');
        stream.position = 0;
        stream.calls();
        stream.seekable = seekable;
        std::string text;
        EXPECT_EQ(fails([&] { text = bytesOf(stream.readString()); }), !succeeds) << length;
        EXPECT_EQ(text, std::string(succeeds ? size : 0, 'x'));
        EXPECT_EQ(stream.calls(), calls);
    }
}

TEST(MemoryStream, MovesWhatLiesInsideItsBlock) {
    constexpr std::int32_t cases[][3] = {
        {0, 10, 10},           {0, 11, 10}, {4, 6, 6}, {4, largest, 6},  {9, 2, 1},  {10, 1, 0},
        {largest, largest, 0}, {-1, 5, 0},  {3, 0, 0}, {smallest, 1, 0}, {3, -1, 0}, {3, smallest, 0}};
    for (auto const & [position, count, moved] : cases) {
        unsigned char bytes[] = "0123456789";
        _MemoryStream stream(bytes, 10);
        std::string buffer(16, '.');
        stream.setPosition(position);
        EXPECT_EQ(stream.read(buffer.data(), count), moved) << position << ' ' << count;
        EXPECT_EQ(stream.getPosition(), position + moved);
        auto const inside = static_cast<std::size_t>(moved);
        auto const from = inside == 0 ? 0 : static_cast<std::size_t>(position);
        EXPECT_EQ(buffer, "0123456789"s.substr(from, inside) + std::string(16 - inside, '.'));
        stream.setPosition(position);
        EXPECT_EQ(stream.write("xxxxxxxxxxxxxxxx", count), moved);
        EXPECT_EQ(std::count(bytes, bytes + 10, 'x'), moved);
    }
    _MemoryStream grown(-1);
    EXPECT_EQ(grown.write("text", 4), 0);
    grown.setSize(4);
    EXPECT_EQ(grown.write("text", 4), 4);
    EXPECT_EQ(_MemoryStream(nullptr, 10).write("text", 4), 0);
    _MemoryStream stream(10);
    constexpr std::int32_t seeks[][3] = {
        {-1, 2, 9}, {0, 2, 10}, {5, 1, 15}, {-20, 1, -5}, {7, 3, -5}, {7, -1, -5}, {largest, 2, smallest + 9}};
    for (auto const & [offset, origin, position] : seeks) {
        EXPECT_EQ(stream.seek(offset, static_cast<_Stream::SeekOrigin>(origin)), position) << offset << ' ' << origin;
    }
}

TEST(MemoryStream, SharesItsBlockWithItsCopiesAndLeavesTheCallersBytes) {
    using Calls = std::pair<std::int32_t, std::int32_t>;
    Calls former;
    // The blocks that were taken and given back since the last question.
    auto const heapCalls = [&former] {
        Calls const now{globalProcessMemory->heapAllocationCount(), globalProcessMemory->heapUnallocationCount()};
        Calls const before = std::exchange(former, now);
        return Calls(now.first - before.first, now.second - before.second);
    };
    unsigned char bytes[] = "caller";
    heapCalls();
    {
        std::optional<_MemoryStream> first(std::in_place);
        EXPECT_EQ(bytesOf(first->readText(1024)), std::string(1024, '\0'));
        first->seekToBegin();
        _MemoryStream second(*first);
        _MemoryStream third(4);
        EXPECT_EQ(heapCalls(), Calls(2, 0));
        third = *first;
        third.writeText("shared");
        first.reset();
        EXPECT_EQ(heapCalls(), Calls(0, 0)) << "neither a destructor nor an assignment gives back through the counts";
        third.setSize(4);
        EXPECT_EQ(heapCalls(), Calls(1, 0)) << "the other stream still stands over the former block";
        EXPECT_EQ(third.getPosition(), 6);
        EXPECT_EQ(bytesOf(second.readText(6)), "shared");
        second.setSize(12);
        EXPECT_EQ(heapCalls(), Calls(1, 1));
        EXPECT_EQ(bytesOf(second.readText(6)), std::string(6, '\0'));

        _MemoryStream callers(bytes, 6);
        callers.writeText("C");
        callers.setSize(6);
        callers.writeText("own");
        EXPECT_EQ(heapCalls(), Calls(1, 0));
    }
    EXPECT_EQ(heapCalls(), Calls(0, 0));
    EXPECT_EQ(std::string(bytes, bytes + 6), "Caller");
}

TEST(FileStream, ReadsAndWritesTheFile) {
    TemporaryFolder const folder;
    FileName const name = folder.put("file", "former text");
    {
        _FileStream stream(name, 0xFFFF);
        EXPECT_EQ(stream.getSize(), 0);
        stream.writeString("text");
        for (std::int32_t const size : {20, 8, 0, 8}) {
            stream.setSize(size);
            EXPECT_TRUE(stream.getPosition() == size && stream.getSize() == size) << size;
        }
        stream.setPosition(5);
        stream.setSize(-1);
        EXPECT_TRUE(stream.getPosition() == 5 && stream.getSize() == 8) << "a size that cannot be cuts nothing";
        EXPECT_EQ(stream.write("text", -1), 0);
    }
    _FileStream stream(name, 0);
    EXPECT_TRUE(fails([&] { stream.writeByte(1); }));
    stream.setSize(2);
    EXPECT_EQ(bytesOf(stream.readText(6)), std::string(6, '\0')) << "opened for reading";
    EXPECT_EQ(stream.read(nullptr, 1), 0);
    EXPECT_TRUE(fails([&] { stream.readByte(); }));
    EXPECT_TRUE(fails([&] { _FileStream(name, 3); })) << "no mode";
}

TEST(FileStream, ClosesOnceWithItsLastCopy) {
    TemporaryFolder const folder;
    FileName const name = folder.put("file", "0123456789");
    FileName const other = folder.put("other", "");
    auto const isOpen = [](FileName const & file) { return fails([&] { _FileStream(file, 0); }); };
    std::optional<_FileStream> first(std::in_place, name, 0u);
    std::optional<_FileStream> second(*first);
    first.reset();
    EXPECT_EQ(second->readByte(), '0');
    std::optional<_FileStream> third(std::in_place, other, 0u);
    EXPECT_TRUE(isOpen(name) && isOpen(other));
    *third = *second;
    *third = *&*third;
    EXPECT_FALSE(isOpen(other));
    second.reset();
    _HandleStream bare(*third);
    EXPECT_EQ(bare.readByte(), '1');
    third.reset();
    EXPECT_FALSE(isOpen(name));
    EXPECT_EQ(bare.seek(0, _Stream::seekBegin), -1);
    _HandleStream none;
    none.setSize(1);
    EXPECT_TRUE(none.write("", 1) == 0 && none.getSize() == -1);
}

std::string numberedBytes(std::size_t count) {
    std::string bytes;
    for (std::size_t index = 0; index < count; ++index) {
        bytes.push_back(static_cast<char>(index * 7 + 1));
    }
    return bytes;
}

TEST(Reader, CallsTheStreamOnlyWhereTheBufferEnds) {
    RecordingStream stream(numberedBytes(20));
    stream.position = 2;
    std::optional<_Reader> reader(std::in_place, stream, 4);
    EXPECT_EQ(stream.calls(), "c0 e0 b2 c0 r4 ");
    reader->readByte();
    reader->readWord();
    EXPECT_EQ(stream.calls(), "");
    reader->readWord();
    EXPECT_EQ(stream.calls(), "c-1 c0 e0 b5 c0 r4 ");
    char target[8];
    EXPECT_EQ(reader->read(target, 5), 5);
    EXPECT_EQ(stream.calls(), "c-2 r5 c0 e0 b12 c0 r4 ");
    EXPECT_EQ(std::string(target, 5), stream.bytes.substr(7, 5));
    EXPECT_EQ(reader->read(target, 0), 0);
    reader->readByte();
    reader.reset();
    EXPECT_EQ(stream.calls(), "c-3 ");
    EXPECT_EQ(stream.position, 13) << "what was not taken went back";
}

TEST(Reader, ReadsWhatTheStreamReads) {
    RecordingStream plain(numberedBytes(50));
    RecordingStream ahead(plain.bytes);
    auto const values = [](auto & source) {
        return std::tuple{source.readByte(), source.readChar(),     source.readBoolean(), source.readWord(),
                          source.readLong(), source.readLongWord(), source.readShort(),   source.readDouble()};
    };
    _Reader reader(ahead, 3);
    EXPECT_EQ(values(reader), values(plain));
    EXPECT_EQ(reader.readValue(), DataType(plain.readLong()));
    EXPECT_EQ(_Reader(plain, -5).readFloat(), reader.readFloat());
    RecordingStream text("\4\0\0\0text"s);
    EXPECT_EQ(bytesOf(_Reader(text, 6).readString()), "text");
}

TEST(Reader, FailsBeyondTheEndAsTheStreamDoes) {
    for (std::int32_t const bufferSize : {0, 3, 4, 100}) {
        RecordingStream stream(numberedBytes(10));
        {
            _Reader reader(stream, bufferSize);
            reader.readText(7);
            char target[4] = "...";
            EXPECT_TRUE(fails([&] { reader.read(target, 4); })) << bufferSize;
            EXPECT_EQ(std::string(target, 3), stream.bytes.substr(7)) << "what was left has been taken";
            EXPECT_TRUE(fails([&] { reader.readByte(); }));
            EXPECT_TRUE(fails([&] { reader.read(target, -1); }));
        }
        EXPECT_EQ(stream.position, 10);
        stream.position = 12;
        EXPECT_TRUE(fails([&] { _Reader(stream, bufferSize).readByte(); }));
    }
}

TEST(Reader, LeavesTheStreamWhereTheReadingStandsAfterAFailure) {
    RecordingStream stream(numberedBytes(20));
    _Reader reader(stream, 4);
    reader.readByte();
    stream.mostMoved = 2;
    EXPECT_TRUE(fails([&] { reader.readLong(); }));
    EXPECT_EQ(stream.position, 1);
    EXPECT_TRUE(fails([&] { _Reader(stream, 4); }));
    EXPECT_EQ(stream.position, 1);
    stream.mostMoved = 20;
    EXPECT_EQ(reader.readChar(), stream.bytes[1]);
}

TEST(Reader, ReadsAStreamWithoutASize) {
    RecordingStream stream(numberedBytes(20));
    stream.seekable = false;
    _Reader reader(stream, 8);
    EXPECT_EQ(bytesOf(reader.readText(5)), stream.bytes.substr(0, 5));
    EXPECT_EQ(bytesOf(reader.readText(15)), stream.bytes.substr(5));
    EXPECT_TRUE(fails([&] { reader.readByte(); }));
}

TEST(Reader, GivesBackOnceAmongCopies) {
    RecordingStream stream(numberedBytes(20));
    RecordingStream other(numberedBytes(20));
    std::optional<_Reader> first(std::in_place, stream, 8);
    std::optional<_Reader> second(*first);
    std::optional<_Reader> third(std::in_place, other, 8);
    first->readByte();
    second->readWord();
    stream.calls();
    other.calls();
    first.reset();
    *third = *second;
    *third = *&*third;
    EXPECT_EQ(other.calls(), "c-8 ") << "assignment lets go";
    second.reset();
    EXPECT_EQ(third->readChar(), stream.bytes[2]);
    EXPECT_EQ(stream.calls(), "");
    third.reset();
    EXPECT_EQ(stream.calls(), "c-5 ");
}

struct Note : _Persistant {
    bool _loadFromStream(_Stream & stream) override { return text = bytesOf(stream.readString()), true; }
    bool _saveToStream(_Stream & stream) override { return stream.writeString(text.c_str()), true; }

    std::string text;
};

TEST(Persistant, CarriesAnObjectThroughAFileThatItCloses) {
    TemporaryFolder const folder;
    FileName const name = folder.put("file", "former, longer text");
    Note note;
    note.text = "text";
    EXPECT_TRUE(note._saveToFile(name));
    EXPECT_EQ(folder.get("file"), "\4\0\0\0text"s);
    note.text = "";
    EXPECT_TRUE(note._loadFromFile(name));
    EXPECT_EQ(note.text, "text");
    _Persistant base;
    EXPECT_FALSE(base._loadFromFile(name) || base._saveToFile(name));
    EXPECT_EQ(folder.get("file"), "");
    EXPECT_TRUE(_FileUtility::fileClose(_FileUtility::fileOpen(name, 2)));
    EXPECT_EQ(bytesOf(base._toString()), "");
    EXPECT_TRUE(base._deepCopy(_Object()) && base._isEqual(_Object()));
}

} // namespace
