// The buffers of the two text classes: how they are taken, filled and handed over.
#pragma once

#include <cstddef>
#include <cstdint>
#include <morvane/strings/text_view.h>

namespace morvane {

/// A buffer for `length` units, taken as the text class of the unit takes it: from `globalProcessMemory` for 16-bit
/// units, from `new[]` for bytes. Only the closing zero is written. Null when the heap refuses or the bytes would pass
/// 32 bits.
template <typename Unit>
Unit * allocateText(std::uint64_t length) noexcept;
template <>
unsigned short int * allocateText<unsigned short int>(std::uint64_t length) noexcept;
template <>
char * allocateText<char>(std::uint64_t length) noexcept;

/// Gives a buffer back the way it came. Null is ignored.
void releaseText(unsigned short int * text) noexcept;
void releaseText(char * text) noexcept;

/// Makes `text`, a buffer from `allocateText` that holds `length` units, the buffer of `target` and releases the former
/// one. A null `text` leaves `target` released.
void adoptText(_WideString & target, unsigned short int * text, std::uint64_t length) noexcept;
void adoptText(_DataString & target, char * text, std::uint64_t length) noexcept;

/// Makes `target` a copy of `source`, which may lie in its buffer. False when the heap refused: `target` is released
/// then.
bool assignText(_WideString & target, WideView source) noexcept;
bool assignText(_DataString & target, DataView source) noexcept;

/// A live text object of the units of `source`; released when the heap refuses.
_WideString makeText(WideView source) noexcept;
_DataString makeText(DataView source) noexcept;

/// Makes text objects without the empty buffer of their constructors.
struct TextMaker {
    /// An object around `text`, a buffer from `allocateText`; null makes a released one.
    static _WideString make(unsigned short int * text, std::uint64_t length) noexcept {
        return _WideString(TextMaker{}, text, static_cast<std::uint32_t>(text != nullptr ? length : 0));
    }
    static _DataString make(char * text, std::uint64_t length) noexcept;
};

} // namespace morvane

inline _WideString::_WideString(morvane::TextMaker, unsigned short int * text, std::uint32_t count) noexcept
    : data(text), length(count),
      size(text != nullptr ? (count + 1) * static_cast<std::uint32_t>(sizeof(unsigned short int)) : 0) {}
