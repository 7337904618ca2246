// The binary value format: a value as its bytes, least significant first.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace morvane {

/// The unsigned number of as many bytes as `Value`.
template <typename Value>
using ValueBits =
    std::conditional_t<sizeof(Value) == 1, std::uint8_t,
                       std::conditional_t<sizeof(Value) == 2, std::uint16_t,
                                          std::conditional_t<sizeof(Value) == 4, std::uint32_t, std::uint64_t>>>;

template <typename Value>
void storeValue(Value value, unsigned char * bytes) noexcept {
    auto const bits = std::bit_cast<ValueBits<Value>>(value);
    for (std::size_t index = 0; index < sizeof(Value); ++index) {
        bytes[index] = static_cast<unsigned char>(bits >> index * 8);
    }
}

template <typename Value>
Value loadValue(unsigned char const * bytes) noexcept {
    ValueBits<Value> bits = 0;
    for (std::size_t index = 0; index < sizeof(Value); ++index) {
        bits = static_cast<ValueBits<Value>>(bits | ValueBits<Value>{bytes[index]} << index * 8);
    }
    return std::bit_cast<Value>(bits);
}

} // namespace morvane
