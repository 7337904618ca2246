// The ISO 8859 code pages.
#pragma once

#include <cstddef>
#include <cstdint>
#include <morvane/strings/text_view.h>

class _DataString;
class _WideString;

namespace morvane {

/// One position of a code page.
struct CodePageEntry {
    unsigned short int code;    ///< the byte value
    unsigned short int unicode; ///< the code unit that it stands for
    unsigned short int defined; ///< 1 for a graphic character, 0 for a control or an undefined position
};

/// One code page: constant data.
struct CodePage {
    unsigned short int const * name; ///< 15 units padded with blanks, and a closing zero
    CodePageEntry const * entries;   ///< in ascending order of `code`
    std::size_t entryCount;
    unsigned short int const * units; ///< 256: what each byte decodes to
    /// The low and the high halves of what the upper 128 bytes decode to, at addresses that 64 divides.
    unsigned char const * upperLow;
    unsigned char const * upperHigh;
    unsigned short int const * search; ///< 96: what bytes 0xA0 to 0xFF are the first to stand for; 0 where they are not
    /// For each of these 96 the first and last index of the stretch around it in which the units ascend one by one.
    unsigned char const * stretchFirst;
    unsigned char const * stretchLast;
    bool isIdentity; ///< every byte stands for its own value
};

/// The code page of a text format (16 to 24 and 30); null for every other value.
CodePage const * findCodePage(std::int32_t format) noexcept;

/// Decodes every byte of `text` into `target`, one unit a byte.
void decode(CodePage const & page, DataView text, unsigned short int * target) noexcept;

/// Encodes every unit of `text` into `target`, one byte a unit, "?" where the page has none.
void encode(CodePage const & page, WideView text, char * target) noexcept;

/// The same into a text of exact size. A heap that refuses leaves `result` released.
void decodeTo(CodePage const & page, DataView text, _WideString & result);
void encodeTo(CodePage const & page, WideView text, _DataString & result);

} // namespace morvane
