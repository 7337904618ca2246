#include <morvane/encodings/string_utility.h>

#include <cstddef>
#include <iterator>
#include <morvane/core/literals.h>
#include <morvane/strings/wide_string.h>

namespace {

using namespace morvane::literals;

/// What is told of a format.
struct FormatRow {
    unsigned short int const * name;
    unsigned short int const * description;
    std::uint32_t flags;
};

constexpr FormatRow noFormat = {u""_w, u""_w, 0};

constexpr FormatRow formatRows[] = {
    {u"ANSI"_w, u"ANSI"_w, 0x08},
    {u"ASCII"_w, u"ASCII"_w, 0x08},
    {u"ASCII Extended"_w, u"ASCII Extended"_w, 0x10},
    {u"ISO-8859"_w, u"ISO-8859"_w, 0x08},
    {u"Unicode (Raw)"_w, u"Unicode Raw"_w, 0x12},
    {u"Unicode"_w, u"Unicode"_w, 0x1B},
    {u"Unicode Big Endian (Raw)"_w, u"Unicode BE Raw"_w, 0x12},
    {u"Unicode Big Endian"_w, u"Unicode BE"_w, 0x03},
    {u"UTF-8 (Raw)"_w, u"UTF-8 Raw, a transformation format of ISO 10646"_w, 0x1D},
    {u"UTF-8"_w, u"UTF-8, a transformation format of ISO 10646"_w, 0x15},
    {u"UTF-16 (Raw)"_w, u"UTF-16 Raw, an encoding of ISO 10646"_w, 0x1E},
    {u"UTF-16"_w, u"UTF-16, an encoding of ISO 10646"_w, 0x17},
    {u"UTF-16BE (Raw)"_w, u"UTF-16BE Raw, an encoding of ISO 10646 (Big-endian)"_w, 0x16},
    {u"UTF-16BE"_w, u"UTF-16BE, an encoding of ISO 10646 (Big-endian)"_w, 0x17},
    {u"UTF-16LE (Raw)"_w, u"UTF-16LE Raw, an encoding of ISO 10646 (Little-endian)"_w, 0x16},
    {u"UTF-16LE"_w, u"UTF-16LE, an encoding of ISO 10646 (Little-endian)"_w, 0x17},
    {u"Latin 1"_w, u"Latin 1"_w, 0x08},
    {u"Latin 2"_w, u"Latin 2"_w, 0x08},
    {u"Latin 3"_w, u"Latin 3"_w, 0x08},
    {u"Latin 4"_w, u"Latin 4"_w, 0x08},
    {u"Cyrillic"_w, u"Cyrillic"_w, 0x08},
    {u"Arabic"_w, u"Arabic"_w, 0x08},
    {u"Greek"_w, u"Greek"_w, 0x08},
    {u"Hebrew"_w, u"Hebrew"_w, 0x08},
    {u"Latin 5"_w, u"Latin 5"_w, 0x08},
    noFormat, // ISO 8859-10 to -14
    noFormat,
    noFormat,
    noFormat,
    noFormat,
    {u"Latin 9"_w, u"Latin 9"_w, 0x08},
};

FormatRow const & rowOf(_StringUtility::StringFileFormat format) {
    auto const index = static_cast<std::size_t>(format);
    return format >= 0 && index < std::size(formatRows) ? formatRows[index] : noFormat;
}

} // namespace

_StringUtility::_StringUtility() = default;

_StringUtility::_StringUtility(_StringUtility const &) {}

_StringUtility::~_StringUtility() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign.
_StringUtility & _StringUtility::operator=(_StringUtility const &) {
    return *this;
}

_WideString _StringUtility::formatName(StringFileFormat format) {
    return rowOf(format).name;
}

_WideString _StringUtility::formatDescription(StringFileFormat format) {
    return rowOf(format).description;
}

std::uint32_t _StringUtility::formatFlags(StringFileFormat format) {
    return rowOf(format).flags;
}
