#include <morvane/encodings/ucs.h>

#include <morvane/strings/wide_string.h>

UCS::UCS() = default;

UCS::UCS(UCS const &) {}

UCS::~UCS() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign.
UCS & UCS::operator=(UCS const &) {
    return *this;
}

std::int32_t UCS::scriptCount() {
    return 0;
}

void UCS::scriptArray(std::int32_t, unsigned short int &, unsigned short int &) {}

_WideString UCS::scriptName(std::int32_t) {
    return {};
}

_WideString UCS::scriptDescription(std::int32_t) {
    return {};
}
