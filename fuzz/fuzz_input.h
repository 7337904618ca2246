// What the fuzz targets share: values taken out of an input, and the check that ends a run.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

/// What the fuzzer, or replay.cpp, calls with each input.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size);

/// Ends the run with the place of the caller unless `holds`.
inline void expect(bool holds, char const * file = __builtin_FILE(), int line = __builtin_LINE()) {
    if (!holds) {
        std::fprintf(stderr, "%s:%d: this does not hold\n", file, line);
        std::abort();
    }
}

/// Values out of the bytes of an input, one behind the other; zeros and empty texts behind its end.
class FuzzInput {
public:
    FuzzInput(std::uint8_t const * data, std::size_t size) : rest(reinterpret_cast<char const *>(data), size) {}

    bool isEmpty() const { return rest.empty(); }

    /// The next `most` bytes, or what is left of them.
    std::string bytes(std::size_t most) {
        std::string const taken(rest.substr(0, most));
        rest.remove_prefix(taken.size());
        return taken;
    }
    template <typename Value>
    Value value() {
        Value result{};
        std::string const taken = bytes(sizeof result);
        std::memcpy(&result, taken.data(), taken.size());
        return result;
    }
    /// A number below `count`, which is at most 256.
    std::size_t below(std::size_t count) { return value<std::uint8_t>() % count; }

private:
    std::string_view rest;
};
