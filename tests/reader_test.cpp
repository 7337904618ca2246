#include <gtest/gtest.h>
#include <morvane/streams/file_utility.h>
#include <morvane/streams/persistant.h>
#include <morvane/streams/reader.h>
#include <morvane/strings/data_string.h>
#include <optional>
#include <stream_testing.h>
#include <temporary_folder.h>
#include <tuple>

namespace {

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
    for (std::int32_t const bufferSize : {-5, 0, 3, 64}) {
        RecordingStream plain(numberedBytes(50));
        RecordingStream ahead(plain.bytes);
        {
            _Reader reader(ahead, bufferSize);
            auto const values = [](auto & source) {
                return std::tuple{source.readByte(),     source.readChar(),  source.readBoolean(),
                                  source.readWord(),     source.readShort(), source.readLong(),
                                  source.readLongWord(), source.readFloat(), source.readDouble()};
            };
            EXPECT_EQ(values(reader), values(plain));
            EXPECT_EQ(reader.readValue(), DataType(plain.readLong()));
            EXPECT_EQ(bytesOf(reader.readText(9)), bytesOf(plain.readText(9)));
        }
        EXPECT_EQ(ahead.position, plain.position) << bufferSize;
    }
}

TEST(Reader, FailsBeyondTheEndAsTheStreamDoes) {
    for (std::int32_t const bufferSize : {0, 3, 4, 100}) {
        RecordingStream stream(numberedBytes(10));
        {
            _Reader reader(stream, bufferSize);
            reader.readText(6);
            reader.readByte();
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

TEST(Reader, BelievesNeitherAMissingSizeNorAStoredLength) {
    RecordingStream stream(numberedBytes(20));
    stream.seekable = false;
    _Reader reader(stream, 8);
    EXPECT_EQ(bytesOf(reader.readText(5)), stream.bytes.substr(0, 5));
    EXPECT_EQ(bytesOf(reader.readText(15)), stream.bytes.substr(5));
    EXPECT_TRUE(fails([&] { reader.readByte(); }));
    RecordingStream texts;
    texts.writeString("text");
    texts.writeLong(-1);
    texts.writeLong(0x7FFFFFFF);
    texts.position = 0;
    _Reader other(texts, 6);
    EXPECT_EQ(bytesOf(other.readString()), "text");
    EXPECT_TRUE(fails([&] { other.readString(); }));
    EXPECT_TRUE(fails([&] { other.readString(); }));
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

class Note : public _Persistant {
public:
    bool _loadFromStream(_Stream & stream) override {
        text = bytesOf(stream.readString());
        return true;
    }
    bool _saveToStream(_Stream & stream) override {
        stream.writeString(text.c_str());
        return true;
    }

    std::string text;
};

TEST(Persistant, CarriesAnObjectThroughAFileThatItCloses) {
    TemporaryFolder const folder;
    FileName const name = folder.put("file", "former, longer text");
    auto const isClosed = [&] { return _FileUtility::fileClose(_FileUtility::fileOpen(name, 2)); };
    Note note;
    note.text = "text";
    EXPECT_TRUE(note._saveToFile(name));
    EXPECT_EQ(folder.get("file"), std::string("\4\0\0\0text", 8));
    note.text = "";
    EXPECT_TRUE(note._loadFromFile(name));
    EXPECT_EQ(note.text, "text");
    EXPECT_FALSE(note._loadFromFile(folder.name("missing")));
    EXPECT_TRUE(fails([&] { note._saveToFile(folder.name("missing/file")); }));
    folder.put("file", "\4");
    EXPECT_TRUE(fails([&] { note._loadFromFile(name); }));
    EXPECT_TRUE(isClosed());
    std::int32_t const handle = _FileUtility::fileOpen(name, 0);
    EXPECT_TRUE(fails([&] { note._loadFromFile(name); }));
    EXPECT_TRUE(fails([&] { note._saveToFile(name); }));
    _FileUtility::fileClose(handle);
    _Persistant base;
    EXPECT_FALSE(base._loadFromFile(name) || base._saveToFile(name));
    EXPECT_EQ(folder.get("file"), "");
    EXPECT_TRUE(isClosed());
    EXPECT_EQ(bytesOf(base._toString()), "");
    EXPECT_TRUE(base._deepCopy(_Object()) && base._isEqual(_Object()));
}

} // namespace
