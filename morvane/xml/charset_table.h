// The charsets that a document can declare.
#pragma once

#include <cstddef>
#include <cstdint>
#include <morvane/strings/text_view.h>
#include <morvane/xml/dom.h>

namespace morvane {

inline constexpr std::int32_t charsetLimit = 29;

/// What a declaration writes for the charset of that number, in lower case; `number` is below the limit.
WideView charsetName(std::int32_t number) noexcept;

/// The name as bytes.
DataView charsetNameBytes(std::int32_t number) noexcept;

/// A bit for each letter, digit or mark that a text in lower case holds; other units share the bits of these.
template <typename Text>
constexpr std::uint64_t signsIn(Text const & text) noexcept {
    std::uint64_t signs = 0;
    for (auto const unit : text) {
        signs |= std::uint64_t{1} << ((unit & 31) + ((unit & 64) != 0 ? 0 : 32));
    }
    return signs;
}

/// A bit for each charset, by its number, whose name has no other signs than these: a text that has them and no more
/// does not hold the other names.
std::uint32_t charsetsOf(std::uint64_t signs) noexcept;

} // namespace morvane
