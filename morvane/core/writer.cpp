#include <morvane/core/writer.h>

_Writer::_Writer() = default;

_Writer::_Writer(_Writer const &) : _Object() {}

_Writer::~_Writer() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign.
_Writer & _Writer::operator=(_Writer const &) {
    return *this;
}
