#include <morvane/strings/text_storage.h>

#include <cstring>
#include <limits>
#include <morvane/core/lifecycle.h>
#include <morvane/core/memory.h>
#include <new>

namespace morvane {

namespace {

template <typename Unit>
constexpr std::uint64_t largestLength = std::numeric_limits<std::uint32_t>::max() / sizeof(Unit) - 1;

template <typename Unit>
Unit * copyText(TextView<Unit> source) noexcept {
    Unit * const text = allocateText<Unit>(source.length);
    if (text != nullptr) {
        std::memcpy(text, source.data, source.length * sizeof(Unit));
    }
    return text;
}

} // namespace

template <>
unsigned short int * allocateText<unsigned short int>(std::uint64_t length) noexcept {
    if (length > largestLength<unsigned short int> || globalProcessMemory == nullptr) {
        return nullptr;
    }
    auto const bytes = static_cast<std::uint32_t>((length + 1) * sizeof(unsigned short int));
    auto * const text = static_cast<unsigned short int *>(globalProcessMemory->heapAllocate(bytes, false));
    if (text != nullptr) {
        text[length] = 0;
    }
    return text;
}

template <>
char * allocateText<char>(std::uint64_t length) noexcept {
    if (length > largestLength<char>) {
        return nullptr;
    }
    char * const text = new (std::nothrow) char[static_cast<std::size_t>(length) + 1];
    if (text != nullptr) {
        text[length] = 0;
    }
    return text;
}

void releaseText(unsigned short int * text) noexcept {
    if (text != nullptr) {
        globalProcessMemory->heapUnallocate(text);
    }
}

void releaseText(char * text) noexcept {
    delete[] text;
}

void adoptText(_WideString & target, unsigned short int * text, std::uint64_t length) noexcept {
    releaseText(target.get_data());
    auto const units = static_cast<std::uint32_t>(text != nullptr ? length : 0);
    target.set_data(text);
    target.set_length(units);
    target.set_size(text != nullptr ? (units + 1) * static_cast<std::uint32_t>(sizeof(unsigned short int)) : 0);
}

void adoptText(_DataString & target, char * text, std::uint64_t length) noexcept {
    releaseText(target.get_data());
    target.set_data(text);
    target.set_length(static_cast<std::uint32_t>(text != nullptr ? length : 0));
}

bool assignText(_WideString & target, WideView source) noexcept {
    // The source may lie in the buffer that goes, so the copy comes first.
    unsigned short int * const text = copyText(source);
    adoptText(target, text, source.length);
    return text != nullptr;
}

bool assignText(_DataString & target, DataView source) noexcept {
    char * const text = copyText(source);
    adoptText(target, text, source.length);
    return text != nullptr;
}

_WideString makeText(WideView source) noexcept {
    return TextMaker::make(copyText(source), source.length);
}

_DataString makeText(DataView source) noexcept {
    return TextMaker::make(copyText(source), source.length);
}

_DataString TextMaker::make(char * text, std::uint64_t length) noexcept {
    return _DataString(TextMaker{}, text, static_cast<std::uint32_t>(text != nullptr ? length : 0));
}

} // namespace morvane
