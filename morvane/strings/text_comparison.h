// Comparing zero-closed texts of unknown length.
#pragma once

#include <cstdint>

namespace morvane {

/// Unit of the left text minus unit of the right one, as unsigned numbers, where the texts differ first up to the first
/// zero of either; 0 where they do not. For `unsigned short int` and `char`. Cost: linear in what is equal, however
/// long the texts are.
template <typename Unit>
std::int32_t compareText(Unit const * left, Unit const * right) noexcept;

/// The same with A to Z taken as a to z on both sides.
template <typename Unit>
std::int32_t compareTextNoCase(Unit const * left, Unit const * right) noexcept;

/// -1, 0 or 1 by the sign.
constexpr std::int32_t signOf(std::int32_t difference) noexcept {
    return (difference > 0 ? 1 : 0) - (difference < 0 ? 1 : 0);
}

/// The same a unit at a step.
namespace plain {

template <typename Unit>
std::int32_t compareText(Unit const * left, Unit const * right) noexcept;
template <typename Unit>
std::int32_t compareTextNoCase(Unit const * left, Unit const * right) noexcept;

} // namespace plain
} // namespace morvane
