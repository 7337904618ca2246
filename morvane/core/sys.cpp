#include <morvane/core/sys.h>

SYS::SYS() = default;

SYS::SYS(SYS const &) {}

SYS::~SYS() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign.
SYS & SYS::operator=(SYS const &) {
    return *this;
}
