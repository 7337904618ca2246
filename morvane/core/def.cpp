#include <morvane/core/def.h>

DEF::DEF() = default;

DEF::DEF(DEF const &) {}

DEF::~DEF() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign.
DEF & DEF::operator=(DEF const &) {
    return *this;
}
