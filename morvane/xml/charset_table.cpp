#include <morvane/xml/charset_table.h>

namespace morvane {

namespace {

/// A name in both widths, in lower case.
struct CharsetName {
    char bytes[16] = {};
    unsigned short int units[16] = {};
    std::size_t length = 0;
    std::uint64_t signs = 0;

    // NOLINTNEXTLINE(google-explicit-constructor): the table below reads as the list of names that it is.
    template <std::size_t Size>
    consteval CharsetName(char const (&text)[Size]) : length(Size - 1) {
        static_assert(Size <= sizeof bytes);
        for (std::size_t index = 0; index < length; ++index) {
            char const byte = text[index];
            bytes[index] = byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : byte;
            units[index] = static_cast<unsigned char>(bytes[index]);
        }
        signs = signsIn(DataView{bytes, length});
    }
};

constexpr CharsetName charsetNames[charsetLimit] = {
    "US-ASCII",    "UTF-8",       "UTF-16",      "ISO-10646-UCS-2", "ISO-10646-UCS-4", "ISO-8859-1",
    "ISO-8859-2",  "ISO-8859-3",  "ISO-8859-4",  "ISO-8859-5",      "ISO-8859-6",      "ISO-8859-7",
    "ISO-8859-8",  "ISO-8859-9",  "ISO-8859-10", "ISO-8859-11",     "ISO-8859-12",     "ISO-8859-13",
    "ISO-8859-14", "ISO-8859-15", "ISO-2022-JP", "Shift_JIS",       "EUC-JP",          "Big5",
    "GB231259-15", "KOI6-R",      "ISO-2022-KR", "EUC-KR",          "ISO-2022-CN"};

} // namespace

WideView charsetName(std::int32_t number) noexcept {
    CharsetName const & name = charsetNames[number];
    return {name.units, name.length};
}

std::uint32_t charsetsOf(std::uint64_t signs) noexcept {
    std::uint32_t charsets = 0;
    for (std::int32_t number = 0; number < charsetLimit; ++number) {
        charsets |= std::uint32_t{(charsetNames[number].signs & ~signs) == 0} << number;
    }
    return charsets;
}

DataView charsetNameBytes(std::int32_t number) noexcept {
    CharsetName const & name = charsetNames[number];
    return {name.bytes, name.length};
}

} // namespace morvane
