// One directive made of the input in both text classes, beside the C library's printf.

#include "fuzz_input.h"
#include "text_testing.h"

#include <clocale>

namespace {

void expectPrinted(std::string const & pattern, std::string const & plainPattern, auto... arguments) {
    char told[2000];
    std::snprintf(told, sizeof told, plainPattern.c_str(), arguments...);
    _DataString data;
    data.format(pattern.c_str(), arguments...);
    expect(textOf(data) == told);
    _WideString wide;
    wide.format(_WideString(pattern.c_str()).arg(), arguments...);
    expect(textOf(wide.toDataString()) == told);
}

/// A conversion, and the flags that C gives a meaning in front of it. At `%#g` the C library itself errs.
constexpr struct {
    char name;
    char const * flags;
} conversions[] = {{'d', "-+ 0"},  {'i', "-+ 0"},  {'u', "-0"},    {'o', "-#0"},   {'x', "-#0"},  {'X', "-#0"},
                   {'c', "-"},     {'s', "-"},     {'f', "-+ #0"}, {'F', "-+ #0"}, {'g', "-+ 0"}, {'G', "-+ 0"},
                   {'e', "-+ #0"}, {'E', "-+ #0"}, {'a', "-+ #0"}, {'A', "-+ #0"}};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    std::setlocale(LC_NUMERIC, "C"); // for the C library's sake
    FuzzInput input(data, size);
    auto const [name, flags] = conversions[input.below(std::size(conversions))];
    std::string start = "a%%[%";
    for (std::size_t chosen = input.below(32); char const flag : std::string(flags)) {
        start.append(chosen & 1, flag);
        chosen >>= 1;
    }
    int const width = input.value<std::int16_t>() % 400;
    int const precision = input.value<std::int16_t>() % 400;
    std::size_t const choice = input.below(8);
    std::string const end = std::string(1, name) + "]%d";
    auto const hold = [&](std::string const & length, auto value) {
        std::string const pattern = start + "*.*" + length + end;
        expectPrinted(pattern, pattern, width, precision, value, 7);
        std::string const digits = start + std::to_string(std::abs(width)) + "." + std::to_string(std::abs(precision));
        expectPrinted(digits + length + end, digits + length + end, value, 7);
    };
    if (name == 's') {
        std::string const text(input.bytes(200).c_str());
        expectPrinted(start + "*.*h" + end, start + "*.*" + end, width, precision, text.c_str(), 7);
        _WideString const wide(text.c_str());
        _DataString narrowed;
        narrowed.format((start + "*.*l" + end).c_str(), width, precision, wide.arg(), 7);
        for (std::string const length : {"h", "l", ""}) {
            _WideString made;
            made.format(_WideString((start + "*.*" + length + end).c_str()).arg(), width, precision,
                        length == "h" ? static_cast<void const *>(text.c_str()) : wide.arg(), 7);
            expect(textOf(made.toDataString()) == textOf(narrowed));
        }
    } else if (name == 'c') {
        hold("", 1 + static_cast<int>(input.below(127)));
    } else if (std::strchr("diuoxX", name) != nullptr) {
        char const * const lengths[] = {"", "h", "hh", "", "z", "t", "ll", "j"};
        choice < 4   ? hold(lengths[choice], input.value<int>())
        : choice < 6 ? hold(lengths[choice], input.value<std::ptrdiff_t>())
                     : hold(lengths[choice], input.value<std::int64_t>());
    } else if (choice < 2) {
        hold("L", static_cast<long double>(input.value<double>()) * static_cast<long double>(input.value<long>()));
    } else {
        hold(choice < 4 ? "l" : "", input.value<double>());
    }
    return 0;
}
