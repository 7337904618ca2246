// Typed values and dictionary items out of any bytes, by a stream and by a reader over another stream, and back.

#include "fuzz_input.h"
#include "stream_testing.h"

#include <morvane/morvane.h>

namespace {

/// The next value of a kind, as its bytes.
std::string next(auto & source, std::size_t kind, std::uint32_t count) {
    auto const bytes = [](auto value) { return std::string(reinterpret_cast<char const *>(&value), sizeof value); };
    return kind == 0   ? bytes(source.readByte()) + bytes(source.readBoolean())
           : kind == 1 ? bytes(source.readWord()) + bytes(source.readShort())
           : kind == 2 ? bytes(source.readLong())
           : kind == 3 ? bytes(source.readFloat())
           : kind == 4 ? bytes(source.readDouble())
           : kind == 5 ? bytesOf(source.readText(count))
                       : bytesOf(source.readString());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    FuzzInput input(data, size);
    int const bufferSize = static_cast<int>(input.below(40)) - 1;
    std::string const script = input.bytes(input.below(64));
    std::string const bytes = input.bytes(size);
    auto const length = static_cast<std::int32_t>(bytes.size());
    auto const * const block = reinterpret_cast<unsigned char const *>(bytes.data());
    _MemoryStream plain(block, length);
    _MemoryStream ahead(block, length);
    bool hasFailed = false;
    {
        _Reader reader(ahead, bufferSize);
        for (std::size_t place = 0; place < script.size() && !hasFailed; ++place) {
            auto const choice = static_cast<unsigned char>(script[place]);
            std::string values[2];
            hasFailed = fails([&] { values[0] = next(plain, choice % 7, choice); });
            expect(fails([&] { values[1] = next(reader, choice % 7, choice); }) == hasFailed);
            expect(values[0] == values[1]);
        }
    }
    expect(hasFailed || plain.getPosition() == ahead.getPosition());

    // Items as long as there are some; each is written as it was read, up to its zeros.
    plain.seekToBegin();
    _MutableDictionary dictionary;
    while (!fails([&] { dictionary.add(new _DictionaryItem(plain)); })) {
        _DictionaryItem & item = *dictionary.getItem(dictionary.getCount() - 1);
        RecordingStream written;
        item.saveToStream(written);
        std::string const key(bytesOf(item.getKey()).c_str());
        std::string const value(bytesOf(item.getValue()).c_str());
        expect(written.bytes.size() == 8 + key.size() + value.size() && written.bytes.ends_with(value));
        written.position = 0;
        expect(_DictionaryItem(written).equals(item));
        expect(bytesOf(dictionary.getItem(dictionary.keyIndex(key.c_str()))->getKey()).c_str() == key);
    }
    dictionary.sortBy(_DictionaryItem::sortByValue);
    for (std::int32_t index = 1; index < dictionary.getCount(); ++index) {
        expect(dictionary.getItem(index - 1)->compare(dictionary.getItem(index), _DictionaryItem::sortByValue) <= 0);
    }
    return 0;
}
