#include <cmath>
#include <cstdint>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits>
#include <morvane/core/lifecycle.h>
#include <morvane/core/literals.h>
#include <morvane/core/memory.h>
#include <morvane/streams/file_stream.h>
#include <morvane/streams/file_utility.h>
#include <morvane/streams/memory_stream.h>
#include <morvane/strings/data_string.h>
#include <optional>
#include <stream_testing.h>
#include <temporary_folder.h>
#include <unistd.h>

using namespace morvane::literals;
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
    stream.writeString("ab");
    stream.writeString("");
    stream.writeString(_DataString()); // released: its text is null
    stream.writeText("cd");
    stream.writeText(nullptr);
    EXPECT_EQ(stream.calls(), "w1 w1 w1 w2 w2 w4 w4 w4 w8 w4 w2 w4 w4 w2 ");
    EXPECT_EQ(stream.bytes,
              "\xFE\xFE\1\xDC\xFE\xFE\xFF\1\0\0\x80\x98\xBA\xDC\xFE\0\0\xC0\xBF\x9A\x99\x99\x99\x99\x99\xB9"
              "\xBF\2\0\0\0ab\0\0\0\0\0\0\0\0cd"s);
    stream.seekToBegin();
    EXPECT_EQ(stream.readByte(), 0xFE);
    EXPECT_EQ(stream.readChar(), char(-2));
    EXPECT_TRUE(stream.readBoolean());
    EXPECT_EQ(stream.readWord(), 0xFEDC);
    EXPECT_EQ(stream.readShort(), -2);
    EXPECT_EQ(stream.readLong(), smallest + 1);
    EXPECT_EQ(stream.readLongWord(), 0xFEDCBA98u);
    EXPECT_EQ(stream.readFloat(), -1.5f);
    EXPECT_EQ(stream.readDouble(), -0.1);
    EXPECT_EQ(bytesOf(stream.readString()), "ab");
    EXPECT_EQ(bytesOf(stream.readString()), "");
    EXPECT_EQ(bytesOf(stream.readString()), "");
    EXPECT_EQ(bytesOf(stream.readText(2)), "cd");
    EXPECT_EQ(bytesOf(stream.readText(0)), "");
    EXPECT_EQ(stream.getPosition(), stream.getSize());
    EXPECT_TRUE(fails([&] { stream.readByte(); }));

    RecordingStream booleans("\2\x80"s + '\0');
    EXPECT_TRUE(booleans.readBoolean());
    EXPECT_TRUE(booleans.readBoolean());
    EXPECT_FALSE(booleans.readBoolean());
}

TEST(Stream, CallsTheVirtualOperationsInAFixedOrder) {
    RecordingStream stream("0123456789");
    char buffer[4];
    stream.position = 3;
    EXPECT_EQ(stream.getSize(), 10);
    EXPECT_EQ(stream.calls(), "c0 e0 b3 ");
    EXPECT_EQ(stream.getPosition(), 3);
    stream.setPosition(5);
    stream.seekToEnd();
    stream.seekToBegin();
    EXPECT_EQ(stream.calls(), "c0 b5 e0 b0 ");
    EXPECT_EQ(stream.readBuffer(buffer, 0), 0);
    EXPECT_EQ(stream.writeBuffer(nullptr, 0), 0);
    EXPECT_TRUE(fails([&] { stream.readBuffer(buffer, -1); }));
    EXPECT_TRUE(fails([&] { stream.writeBuffer(buffer, smallest); }));
    stream.setSize(3);
    EXPECT_EQ(stream.calls(), "");
}

TEST(Stream, LeavesMovedWhatAShortTransferMoved) {
    RecordingStream stream("0123456");
    stream.position = 4;
    EXPECT_TRUE(fails([&] { stream.readLong(); }));
    EXPECT_EQ(stream.position, 7);
    stream.mostMoved = 1;
    EXPECT_TRUE(fails([&] { stream.writeWord(0x4141); }));
    EXPECT_EQ(stream.bytes, "0123456A");
}

TEST(Stream, CopiesInBlocksOfBoundedSize) {
    struct {
        std::size_t size;
        std::int32_t count;
        char const * sourceCalls;
        char const * targetCalls;
    } const cases[] = {
        {61440, 61440, "r61440 ", "w61440 "},
        {61441, 61441, "r61440 r1 ", "w61440 w1 "},
        {130000, 0, "b0 c0 e0 b0 r61440 r61440 r7120 ", "w61440 w61440 w7120 "},
        {0, 0, "b0 c0 e0 b0 ", ""},
        {10, 4, "r4 ", "w4 "},
    };
    for (auto const & [size, count, sourceCalls, targetCalls] : cases) {
        RecordingStream source(std::string(size, 'x'));
        RecordingStream target;
        if (count == 0) {
            source.position = static_cast<std::int32_t>(size / 2);
        }
        std::int32_t const copied = count != 0 ? count : static_cast<std::int32_t>(size);
        EXPECT_EQ(target.copyFrom(source, count), copied);
        EXPECT_EQ(source.calls(), sourceCalls);
        EXPECT_EQ(target.calls(), targetCalls);
        EXPECT_EQ(target.bytes, std::string(static_cast<std::size_t>(copied), 'x'));
    }
    RecordingStream source(std::string(70000, 'x'));
    RecordingStream target;
    EXPECT_TRUE(fails([&] { target.copyFrom(source, 70001); }));
    EXPECT_EQ(target.bytes.size(), 61440u);
    EXPECT_TRUE(fails([&] { target.copyFrom(source, -1); }));
    source.seekable = false;
    EXPECT_TRUE(fails([&] { target.copyFrom(source, 0); })) << "a size that nobody can tell";
}

TEST(Stream, BelievesNoStoredLength) {
    auto const stored = [](std::int32_t length, std::size_t size) {
        RecordingStream stream;
        stream.writeLong(length);
        stream.bytes += std::string(size, 'x');
        stream.position = 0;
        stream.calls();
        return stream;
    };
    struct {
        std::int32_t length;
        std::size_t size;
        bool seekable;
        bool succeeds;
        char const * calls;
    } const cases[] = {
        {-1, 10, true, false, "r4 "},
        {smallest, 10, true, false, "r4 "},
        {3, 2, true, false, "r4 r3 "},
        {65536, 65536, true, true, "r4 r65536 "},
        {65537, 65537, true, true, "r4 c0 e0 b4 r65537 "},
        {largest, 10, true, false, "r4 c0 e0 b4 "},
        {largest, 70000, false, false, "r4 c0 e0 b-1 r65536 r65536 "},
        {140000, 140000, false, true, "r4 c0 e0 b-1 r65536 r65536 r8928 "},
    };
    for (auto const & [length, size, seekable, succeeds, calls] : cases) {
        RecordingStream stream = stored(length, size);
        stream.seekable = seekable;
        std::string text;
        EXPECT_EQ(!fails([&] { text = bytesOf(stream.readString()); }), succeeds) << length;
        EXPECT_EQ(text, std::string(succeeds ? size : 0, 'x'));
        EXPECT_EQ(stream.calls(), calls);
    }
    RecordingStream stream("text");
    EXPECT_TRUE(fails([&] { stream.readText(0xFFFFFFFF); }));
    EXPECT_EQ(stream.position, 0);
}

TEST(MemoryStream, MovesWhatLiesInsideItsBlock) {
    struct {
        std::int32_t position, count, moved;
    } const cases[] = {
        {0, 10, 10},      {0, 11, 10},           {4, 6, 6},  {4, largest, 6},        {9, 2, 1}, {10, 1, 0},
        {11, 1, 0},       {largest, largest, 0}, {-1, 5, 0}, {smallest, largest, 0}, {3, 0, 0}, {3, -1, 0},
        {3, smallest, 0},
    };
    for (auto const & [position, count, moved] : cases) {
        unsigned char bytes[10] = {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9'};
        _MemoryStream stream(bytes, 10);
        char buffer[17] = "................";
        EXPECT_EQ(stream.seek(position, _Stream::seekBegin), position);
        EXPECT_EQ(stream.read(buffer, count), moved) << position << ' ' << count;
        EXPECT_EQ(stream.getPosition(), position + moved);
        std::string const inside =
            moved > 0 ? "0123456789"s.substr(static_cast<std::size_t>(position), static_cast<std::size_t>(moved)) : "";
        EXPECT_EQ(std::string(buffer, 16), inside + std::string(16 - inside.size(), '.'));
        stream.setPosition(position);
        EXPECT_EQ(stream.write("xxxxxxxxxxxxxxxx", count), moved);
        EXPECT_EQ(std::count(bytes, bytes + 10, 'x'), moved);
        if (count > moved) {
            std::int32_t const whole = count;
            EXPECT_TRUE(fails([&] { stream.readBuffer(buffer, whole); }));
        }
    }
}

TEST(MemoryStream, SeeksAnywhere) {
    unsigned char bytes[10]{};
    _MemoryStream stream(bytes, 10);
    EXPECT_EQ(stream.seek(-1, _Stream::seekEnd), 9);
    EXPECT_EQ(stream.seek(0, _Stream::seekEnd), 10);
    EXPECT_EQ(stream.seek(5, _Stream::seekCurrent), 15);
    EXPECT_EQ(stream.seek(-20, _Stream::seekCurrent), -5);
    EXPECT_EQ(stream.seek(7, static_cast<_Stream::SeekOrigin>(3)), -5);
    EXPECT_EQ(stream.seek(7, static_cast<_Stream::SeekOrigin>(-1)), -5);
    EXPECT_EQ(stream.seek(largest, _Stream::seekEnd), smallest + 9);
    EXPECT_EQ(stream.seek(smallest, _Stream::seekCurrent), 9);
    EXPECT_EQ(stream.getSize(), 10);
}

TEST(MemoryStream, HoldsNothingWithoutABlock) {
    char buffer[4];
    for (std::int32_t const size : {-1, smallest}) {
        _MemoryStream stream(size);
        EXPECT_EQ(stream.read(buffer, 4), 0);
        EXPECT_EQ(stream.getSize(), size);
        stream.setSize(4);
        EXPECT_EQ(stream.write("text", 4), 4);
        stream.setSize(size);
        stream.setPosition(0);
        EXPECT_EQ(stream.write("text", 4), 0);
    }
    _MemoryStream null(nullptr, 10);
    EXPECT_EQ(null.read(buffer, 4), 0);
    EXPECT_EQ(null.write(buffer, 4), 0);
}

/// The calls of the counted heap since the last question.
struct HeapCalls {
    std::int32_t taken = globalProcessMemory->heapAllocationCount();
    std::int32_t givenBack = globalProcessMemory->heapUnallocationCount();

    std::string news() {
        HeapCalls const now;
        std::string const text = std::to_string(now.taken - taken) + ' ' + std::to_string(now.givenBack - givenBack);
        *this = now;
        return text;
    }
};

TEST(MemoryStream, SharesItsBlockWithItsCopies) {
    HeapCalls calls;
    {
        std::optional<_MemoryStream> first(std::in_place);
        EXPECT_EQ(calls.news(), "1 0");
        EXPECT_EQ(first->getSize(), 1024);
        EXPECT_EQ(bytesOf(first->readText(1024)), std::string(1024, '\0'));
        _MemoryStream second(*first);
        second.setPosition(1);
        first->setPosition(0);
        first->writeText("shared");
        EXPECT_EQ(second.readChar(), 'h');
        _MemoryStream third(4);
        EXPECT_EQ(calls.news(), "1 0");
        third = *first;
        third = *&third;
        first.reset();
        EXPECT_EQ(third.getPosition(), 6);
        third.setPosition(0);
        EXPECT_EQ(bytesOf(third.readText(6)), "shared");
        EXPECT_EQ(calls.news(), "0 0") << "neither a destructor nor an assignment gives back through the counts";
        third.setPosition(8);
        third.setSize(4);
        EXPECT_EQ(calls.news(), "1 0") << "the other stream still stands over the former block";
        EXPECT_EQ(third.getPosition(), 8);
        EXPECT_EQ(second.readChar(), 'a');
        second.setSize(6);
        EXPECT_EQ(calls.news(), "1 1");
        second.setPosition(0);
        EXPECT_EQ(bytesOf(second.readText(6)), std::string(6, '\0'));
    }
    EXPECT_EQ(calls.news(), "0 0");
}

TEST(MemoryStream, LeavesTheBytesOfTheCallerToTheCaller) {
    HeapCalls calls;
    unsigned char bytes[6] = {'c', 'a', 'l', 'l', 'e', 'r'};
    {
        _MemoryStream stream(bytes, 6);
        stream.writeText("C");
        EXPECT_EQ(bytes[0], 'C');
        stream.setSize(3);
        stream.setPosition(0);
        stream.writeText("own");
        EXPECT_EQ(bytes[0], 'C');
        EXPECT_EQ(calls.news(), "1 0");
        stream.set_pointer(bytes);
        stream.set_size(6);
        stream.set_delta(1);
        stream.set_position(3);
        EXPECT_EQ(bytesOf(stream.readText(3)), "ler");
    }
    EXPECT_EQ(calls.news(), "0 0");
}

TEST(FileStream, ReadsAndWritesTheFile) {
    TemporaryFolder const folder;
    FileName const name = folder.put("file", "former text");
    {
        _FileStream stream(name, 0xFFFF);
        EXPECT_EQ(stream.getSize(), 0);
        stream.writeString("text");
        stream.setSize(20);
        EXPECT_EQ(stream.getPosition(), 20);
        stream.setSize(8);
        EXPECT_EQ(stream.getPosition(), 8);
        stream.setPosition(5);
        stream.setSize(-1);
        EXPECT_EQ(stream.getPosition(), 5) << "a size that cannot be cuts nothing";
        EXPECT_EQ(stream.getSize(), 8);
        EXPECT_EQ(stream.write("text", -1), 0);
        EXPECT_TRUE(fails([&] { _FileStream(name, 0); })) << "created without sharing";
    }
    _FileStream stream(name, 0);
    EXPECT_TRUE(fails([&] { stream.writeByte(1); }));
    EXPECT_EQ(bytesOf(stream.readString()), "text");
    EXPECT_EQ(stream.read(nullptr, 1), 0);
    EXPECT_TRUE(fails([&] { stream.readByte(); }));
    stream.setSize(2);
    EXPECT_EQ(stream.getSize(), 8) << "opened for reading";
    for (std::uint32_t const mode : {0u, 3u, 0x50u, 0xFFF0u}) {
        EXPECT_TRUE(fails([&] { _FileStream(folder.name("missing"), mode); }));
    }
    EXPECT_TRUE(fails([&] { _FileStream(folder.name("missing/file"), 0xFFFF); }));
    EXPECT_TRUE(fails([&] { _FileStream(nullptr, 0); }));
}

TEST(FileStream, ClosesOnceWithItsLastCopy) {
    TemporaryFolder const folder;
    FileName const name = folder.put("file", "0123456789");
    FileName const other = folder.put("other", "");
    auto const isOpen = [](FileName const & file) { return fails([&] { _FileStream(file, 0); }); };
    std::optional<_FileStream> first(std::in_place, name, 0u);
    std::optional<_FileStream> second(*first);
    first.reset();
    EXPECT_TRUE(isOpen(name));
    EXPECT_EQ(second->readByte(), '0');
    std::optional<_FileStream> third(std::in_place, other, 0u);
    EXPECT_TRUE(isOpen(other));
    *third = *second;
    *third = *&*third;
    EXPECT_FALSE(isOpen(other));
    second.reset();
    EXPECT_EQ(third->readByte(), '1');
    _HandleStream bare(*third);
    EXPECT_EQ(bare.readByte(), '2');
    third.reset();
    EXPECT_FALSE(isOpen(name));
    EXPECT_EQ(bare.seek(0, _Stream::seekBegin), -1);
}

TEST(HandleStream, WorksOverHandlesOfTheSystem) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    {
        _HandleStream reading(ends[0]);
        _HandleStream writing(ends[1]);
        writing.writeString("text");
        EXPECT_EQ(bytesOf(reading.readString()), "text");
        EXPECT_EQ(reading.seek(0, _Stream::seekCurrent), -1);
        EXPECT_EQ(reading.getSize(), -1);
        writing.setSize(0);
    }
    EXPECT_TRUE(_FileUtility::fileClose(ends[0]));
    EXPECT_TRUE(_FileUtility::fileClose(ends[1]));
    _HandleStream none;
    char byte = 0;
    EXPECT_EQ(none.read(&byte, 1), 0);
    EXPECT_EQ(none.write(&byte, 1), 0);
    EXPECT_EQ(none.seek(0, _Stream::seekBegin), -1);
    none.setSize(1);
}

TEST(HandleStream, ReadsALongTextFromAPipe) {
    TemporaryFolder const folder;
    std::string const text(200000, 'x');
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    fcntl(ends[1], F_SETPIPE_SZ, 1 << 18);
    _HandleStream writing(ends[1]);
    writing.writeString(text.c_str());
    close(ends[1]);
    _HandleStream reading(ends[0]);
    EXPECT_EQ(bytesOf(reading.readString()), text);
    close(ends[0]);
}

} // namespace
