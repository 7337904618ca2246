#include <morvane/core/system_utility.h>

#include <morvane/platform/debug_output.h>

_SystemUtility::_SystemUtility() = default;

_SystemUtility::_SystemUtility(_SystemUtility const &) {}

_SystemUtility::~_SystemUtility() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign.
_SystemUtility & _SystemUtility::operator=(_SystemUtility const &) {
    return *this;
}

void _SystemUtility::outputDebugString(unsigned short int const * text) {
    morvane::platform::debugOutput(text);
}
