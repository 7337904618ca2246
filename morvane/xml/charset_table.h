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

} // namespace morvane
