#include <morvane/components/ipersistent.h>

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign.
COM::_IPersistent & COM::_IPersistent::operator=(_IPersistent const &) {
    return *this;
}
