#include <morvane/core/element.h>

_Element::_Element() = default;

_Element::_Element(_Element const &) : _Object() {}

_Element::~_Element() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign.
_Element & _Element::operator=(_Element const &) {
    return *this;
}
