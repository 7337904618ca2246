#include <morvane/core/crt.h>

CRT::CRT() = default;

CRT::CRT(CRT const &) {}

CRT::~CRT() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign.
CRT & CRT::operator=(CRT const &) {
    return *this;
}
